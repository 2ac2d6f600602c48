// Followers of peaks: one that holds a peak for a time, one that lets it decay.
#pragma once

#include <cstdint>

#include "passband/foundation/complex.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// What a peak follower carries on; zero at the start of a stream.
struct TSampleAndHoldState {
  TCplx Value;            ///< the last output; real data use the real part
  std::int32_t Hold = 0;  ///< samples held so far (`SampleAndHoldFilter` only)
};

/// Holds peaks, in place. A sample that is greater than the output before it goes through. Another one is replaced by that
/// output, at most `HoldCount` times in a row; then a sample goes through whatever it is, and the count begins with it.
///
/// \param Data       any precision; complex samples compare by magnitude. An empty block changes nothing.
/// \param State      after the call the last output and the count; any cut into blocks gives the same bits
/// \param HoldCount  below 1: every sample goes through
/// Cost: one comparison a sample, of complex data one magnitude; allocates nothing.
PASSBAND_EXPORT void SampleAndHoldFilter(TVec& Data, TSampleAndHoldState& State, std::int32_t HoldCount);

/// Follows peaks, in place: y[n] = x[n], or Decay y[n - 1] where that is greater.
///
/// \param Data   any precision; complex samples compare by magnitude and decay as complex numbers. An empty block changes
///               nothing.
/// \param State  `Value` after the call is the last output, not rounded to the precision of `Data`; `Hold` is not used. Any cut
///               into blocks gives the same bits.
/// Precision: in double throughout, outputs are rounded once. Cost: 5 to 6 cycles a sample, of complex data two magnitudes;
/// allocates nothing.
PASSBAND_EXPORT void SampleAndDecayFilter(TVec& Data, TSampleAndHoldState& State, double Decay);

}  // namespace passband::SignalUtils
