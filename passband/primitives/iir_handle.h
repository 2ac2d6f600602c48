// The handle by which a streaming record refers to the state of an IIR primitive.
#pragma once

#include <memory>

namespace passband::primitives {

struct IirState;  // opaque: coefficients, tables and delay line of one filter, for data of one element type

/// A state lies in memory that its creator gave, holds nothing else, and ends with that memory.
struct IirStateDeleter {
  void operator()(IirState*) const noexcept {}
};

/// Refers to a state; empty when no filter has been created. The memory behind it belongs to somebody else.
using IirHandle = std::unique_ptr<IirState, IirStateDeleter>;

}  // namespace passband::primitives
