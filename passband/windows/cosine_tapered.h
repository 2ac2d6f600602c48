// The flat window with half-cosine flanks.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Multiplies a stretch of `Vec` by a window that is 1 but for a half cosine at each end (Tukey's window). Each flank
/// takes T points, T = Len Percent / 200 rounded to the nearest integer, ties to even:
///
///   w[n] = w[Len - 1 - n] = 0.5 (1 - cos(pi n / (T - 1))),  n = 0 .. T - 1
///
/// so that the flank itself contains a 0 and a 1. A flank of one point is a single 1 and, like T = 0, changes nothing.
///
/// \param Vec      any precision; a complex element is scaled by the real w[n]; the rest of `Vec` is not touched
/// \param Percent  share of the stretch that is tapered, both flanks together, 0 .. 100
/// \param Index    first element of the stretch, from 0
/// \param Len      elements in the stretch, -1: up to the end
/// \return         `Vec`
/// \throws ECoreError "not (0 < Percent < 100)" when `Percent` is outside [0, 100] or a NaN (0 and 100 are taken),
/// before
///         anything else; then ECoreError, text of `TVec::ValidateParams`, when the stretch leaves `Vec`
/// Precision: w is computed in double, error below 3e-16, and rounded once to the precision of `Vec`.
/// Cost: one pass over the flanks; allocates nothing once the pool is warm.
/// Literature: Harris, "On the use of windows for harmonic analysis with the discrete Fourier transform", Proceedings
/// of the IEEE 66, January 1978.
PASSBAND_EXPORT TVec& CosineTappered(TVec& Vec, double Percent, std::int32_t Index = 0, std::int32_t Len = -1);

}  // namespace passband::SignalUtils
