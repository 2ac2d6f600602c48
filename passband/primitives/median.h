// Running medians: y[n] is the median of x[n - M + 1] .. x[n], M odd. Samples before the first one count as equal to it.
//
// Values are ordered as -infinity .. -0, +0 .. infinity, NaN; every NaN counts as the same one. As the median of a window
// depends on nothing but the window, any cut of the stream into calls gives the same bits.
#pragma once

#include <cstddef>
#include <cstdint>

#include "passband/foundation/element_types.h"
#include "passband/primitives/median_handle.h"
#include "passband/primitives/status.h"

namespace passband::primitives {

/// The bytes that a state needs, wherever its memory begins: `mask` >= 1.
template <RealElement R>
std::size_t MedianStateSize(std::int32_t mask) noexcept;

/// Makes the state of a median over `mask` samples, of an even number one less, in memory of its own.
/// Fails with BadSize (mask < 1), OutOfMemory; `state` is then left as it was.
template <RealElement R>
Status MedianCreate(std::int32_t mask, MedianHandle& state) noexcept;

/// The same in `memory` of MedianStateSize bytes, with which the state ends. Fails with BadSize, NullPointer.
template <RealElement R>
Status MedianCreate(std::int32_t mask, void* memory, MedianState*& state) noexcept;

/// Filters the next `count` samples. `dst` may be `src`. Allocates nothing.
template <RealElement R>
Status MedianFilter(MedianState& state, const R* src, R* dst, std::int32_t count) noexcept;

}  // namespace passband::primitives
