// Exponential averaging in place: y[n] = (1 - weight) y[n - 1] + weight x[n], in double for data of every precision.
//
// An output waits for the one before it through a single multiply-add, fused where the processor can. Each has this one
// order of operations: any cut of the stream gives the same bits.
#pragma once

#include <cstdint>

#include "passband/foundation/element_types.h"

namespace passband::primitives {

/// x[n] becomes y[n] rounded to the precision of the data, n = 0 .. count - 1; count >= 0. `last` is y[-1], and then
/// y[count - 1] before it was rounded; real data use the real part only.
template <Element T>
void ExponentialAverage(T* x, std::int32_t count, double weight, TCplx& last) noexcept;

}  // namespace passband::primitives
