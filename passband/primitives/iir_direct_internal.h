// The direct form of a rational transfer function: its order of operations and its state.
//
// y[n] = sum b[k] x[n - k], k = 0 .. M, minus sum a[k] y[n - k], k = 1 .. N, all taps divided by a[0]. Everything is
// done in double, also for single precision data; the parts of complex data are filtered alike. Per part:
//
//   s = b[M] x[n - M] + ... + b[N + 1] x[n - N - 1]     from the far end; for N < 3 down to b[3] x[n - 3]
//   for k = N .. 3
//     s = s + b[k] x[n - k]
//     s = s - a[k] y[n - k]
//   s = s - a[2] y[n - 2]
//   s = s + c
//   s = s - a[1] y[n - 1]
//   y[n] = s + f
//
// where f + c = b[0] x[n] + b[1] x[n - 1] + b[2] x[n - 2], f the sum and c what rounding has taken from it. Products are
// added by fused operations where the processor has them. Taking the terms of equal delay together keeps the partial
// sums as small as those of the transposed form, and the large terms at the end are exact: the errors are 0.4 to 0.95
// times those of the transposed form in plain operations. The newest output enters through one multiply-add and one
// addition. Every output has this one order of operations, hence the same bits however the stream is cut; only
// processors without a fused multiply-add give other last digits.
//
// An output of magnitude below 2^-1010 becomes 0, so that a filter falls silent without subnormal numbers.
#pragma once

#include <cstddef>

#include "passband/foundation/element_types.h"
#include "passband/primitives/iir_state_internal.h"

namespace passband::primitives::detail {

/// New samples that the lines of a filter hold before the history moves back to their beginning.
inline constexpr std::size_t kIirDirectLine = 256;

/// Elements that a filter of low order needs for each part between two calls.
inline constexpr std::size_t kIirDirectHeld = 12;

/// Taps and delay lines of a filter. Elements of the lines are the parts of samples.
struct IirDirect {
  std::size_t forward;   // M, trailing zeros of b left out
  std::size_t feedback;  // N, trailing zeros of a left out
  std::size_t history;   // samples before the next one that the lines keep
  std::size_t place;     // index of the next sample in the lines
  double* b;             // b[0] .. b[max(M, N, 2)], zeros beyond M
  double* a;             // a[0] = 1 .. a[max(N, 2)], zeros beyond N
  double* x;
  double* y;
  double* held;  // kIirDirectHeld sums and outputs of each part that filters of low order keep in registers
};

template <Element T>
struct IirDirectState : IirStateOf<T> {
  IirDirect direct;
};

}  // namespace passband::primitives::detail
