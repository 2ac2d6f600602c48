// Triangle waves of any asymmetry, computed from the number of each sample in its stream.
#pragma once

#include <cstdint>

#include "passband/foundation/element_types.h"
#include "passband/primitives/status.h"
#include "passband/primitives/stream_phase.h"

namespace passband::primitives {

/// x[n] = magnitude T(alpha[n]) with the phases alpha of a stream. T has the period 2 pi, is 1 at 0, falls linearly to -1
/// at pi + asymmetry and rises linearly to 1 at 2 pi. The imaginary part of complex data is the same wave a quarter of a
/// period later, magnitude T(alpha[n] - pi / 2).
struct TriangleOf {
  StreamPhase at;
  double magnitude = 1;
  double asymmetry = 0;
  bool conjugate = false;  ///< of complex data: the imaginary part with the other sign
};

/// dst[k] = x[position + k], k = 0 .. count - 1. At an asymmetry of -pi the wave jumps from 1 to -1 right after alpha = 0,
/// at pi right before 2 pi.
/// Fails with BadSize (count < 0), BadArgument: not 0 <= frequency < 0.5 (complex data: < 1), not 0 <= phase < 2 pi, not
/// magnitude > 0, |asymmetry| larger than pi and than pi in single precision. Nothing is written then.
template <Element T>
Status Triangle(T* dst, std::int32_t count, const TriangleOf& triangle) noexcept;

}  // namespace passband::primitives
