// Sine tones, computed from the number of each sample in its stream.
//
// A sample is cos(a + b) = cos a cos b - sin a sin b, a the phase at the start of its block of 64 samples and b that of
// its place in the block. Every a is computed on its own from the exact phase, so that nothing drifts; the errors of the
// samples stay below 6e-16 times the magnitude, and those of single precision data are half a unit in the last place.
#pragma once

#include <cstdint>

#include "passband/foundation/element_types.h"
#include "passband/primitives/status.h"
#include "passband/primitives/stream_phase.h"

namespace passband::primitives {

/// x[n] = magnitude cos(alpha[n]), or magnitude exp(j alpha[n]) of complex data, with the phases alpha of a stream.
struct ToneOf {
  StreamPhase at;
  double magnitude = 1;
  bool conjugate = false;  ///< of complex data: magnitude exp(-j alpha[n])
};

/// dst[k] = x[position + k], k = 0 .. count - 1.
/// Fails with BadSize (count < 0), BadArgument: not 0 <= frequency <= 0.5 (complex data: < 1), not 0 <= phase < 2 pi, not
/// magnitude > 0. Nothing is written then.
template <Element T>
Status Tone(T* dst, std::int32_t count, const ToneOf& tone) noexcept;

/// dst[k] = dst[k] + x[position + k]. Fails as `Tone`.
template <Element T>
Status ToneAdd(T* dst, std::int32_t count, const ToneOf& tone) noexcept;

}  // namespace passband::primitives
