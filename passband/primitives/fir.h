// FIR filters as primitives: y[n] = sum h[k] x[n - k], single-rate or between two rates in one polyphase step. Taps and
// data have the same element type T. The samples before the first call are zero. Any cut of the stream into calls, down
// to single samples, gives the same bits; the choice of the method depends on taps and factors only.
#pragma once

#include <cstdint>

#include "passband/foundation/element_types.h"
#include "passband/primitives/fir_handle.h"
#include "passband/primitives/status.h"

namespace passband::primitives {

/// Creates a single-rate filter with `count` >= 1 taps: direct below 512 taps, from there on a partitioned convolution
/// behind a direct head, where a NaN or an infinity may reach ceil(count / B) B + B - 1 samples far, B its longest block. On failure `state` is left as it was.
/// Fails with BadSize (count < 1), NullPointer, OutOfMemory; throws nothing.
template <Element T>
Status FirCreate(const T* taps, std::int32_t count, FirHandle& state) noexcept;

/// Creates a multi-rate filter. Each input sample is placed at position `up_phase` of its block of `up` samples at the
/// high rate, the rest of the block is zero; the taps filter at the high rate; of each block of `down` high-rate
/// samples the one at position `down_phase` is kept.
/// Fails with BadSize, BadFactor (up or down < 1), BadPhase (not 0 <= phase < factor), NullPointer, OutOfMemory.
template <Element T>
Status FirMultiRateCreate(const T* taps, std::int32_t count, std::int32_t up, std::int32_t up_phase, std::int32_t down,
                          std::int32_t down_phase, FirHandle& state) noexcept;

/// Filters the next `count` samples. `dst` may be `src`. Allocates nothing.
template <Element T>
Status FirFilter(FirState& state, const T* src, T* dst, std::int32_t count) noexcept;

/// Makes `iterations` steps, each of which takes `down` samples from `src` and puts `up` samples to `dst`. `dst` must
/// not overlap `src`. Allocates nothing.
template <Element T>
Status FirMultiRateFilter(FirState& state, const T* src, T* dst, std::int32_t iterations) noexcept;

/// Filters one sample of a single-rate filter: y[n] for x[n] = `x`.
template <Element T>
T FirOne(FirState& state, T x) noexcept;

}  // namespace passband::primitives
