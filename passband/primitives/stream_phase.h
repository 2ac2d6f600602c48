// The phase of a periodic signal at any sample of its stream, without an error that grows with the stream.
//
// 2 pi f n is never accumulated: the product f n is split into whole turns, which fall away exactly, and the rest, which
// is known to twice the precision of a double. Hence every sample depends on its number in the stream alone, and blocks of
// any lengths give the same bits.
#pragma once

#include <cstdint>

namespace passband::primitives {

/// A place in a stream: the next sample is number `position`, whose phase is 2 pi frequency position + phase.
struct StreamPhase {
  double frequency = 0;  ///< relative to the sampling frequency
  double phase = 0;      ///< of sample 0, in radians
  std::int64_t position = 0;
};

/// Up to this sample the phases are exact to the last digits: years at any rate.
inline constexpr std::int64_t kLastPosition = std::int64_t{1} << 50;

inline constexpr double kTurn = 6.283185307179586;          // 2 pi rounded
inline constexpr double kTurnRest = 2.449293598294706e-16;  // what rounding has taken from it

/// The phase of the next sample, in [0, 2 pi), rounded once. Of 0 <= phase < 2 pi and 0 <= frequency <= 1.
double PhaseOf(const StreamPhase& at) noexcept;

}  // namespace passband::primitives
