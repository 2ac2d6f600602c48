// The analytic signal and the envelope in frames.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Turns a real signal into its analytic signal x + j H(x), whose transform has no negative frequencies; its magnitude is
/// the envelope. Taken as one period.
///
/// \param Vec  real; becomes complex in its precision
/// \returns `Vec`
/// \throws Exception "Complex = True"
/// Cost: two transforms, whose plans are kept.
/// Literature: Oppenheim, Schafer, "Discrete-Time Signal Processing", ch. 12.
PASSBAND_EXPORT TVec& Hilbert(TVec& Vec);

/// Dst[i] = the mean of |Src| over the samples i FrameSize .. (i + 1) FrameSize - 1.
///
/// \param Src        real or complex, a whole number of frames
/// \param Dst        real, one value a frame, in the precision of `Src`; may be `Src`
/// \param FrameSize  samples in a frame, >= 1
/// \throws ECoreError "FrameSize < 1", "(Src.Length mod FrameSize) <> 0"
/// Precision: summed in double, rounded once. Cost: one pass.
PASSBAND_EXPORT void EnvelopeDetector(const TVec& Src, TVec& Dst, std::int32_t FrameSize);

}  // namespace passband::SignalUtils
