// The handle by which a streaming record owns the state of a median primitive.
#pragma once

#include <memory>

#include "passband/foundation/export.h"

namespace passband::primitives {

struct MedianState;  // opaque: window and history of one running median, for data of one real type

struct MedianStateDeleter {
  PASSBAND_EXPORT void operator()(MedianState* state) const noexcept;
};

/// Owns a state; empty when no filter has been created.
using MedianHandle = std::unique_ptr<MedianState, MedianStateDeleter>;

}  // namespace passband::primitives
