// The handle by which a streaming record owns the state of a FIR primitive.
#pragma once

#include <memory>

#include "passband/foundation/export.h"

namespace passband::primitives {

class FirState;  // opaque: taps and delay line of one filter, of one element type

struct FirStateDeleter {
  PASSBAND_EXPORT void operator()(FirState* state) const noexcept;
};

/// Owns a state; empty when no filter has been created.
using FirHandle = std::unique_ptr<FirState, FirStateDeleter>;

}  // namespace passband::primitives
