// The triangular window.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Multiplies a stretch of `Vec` by the triangle w[n] = 2 n / D for n <= D / 2, 2 - 2 n / D above, D = Len - 1,
/// n = 0 .. Len - 1: zero at both ends.
///
/// \param Vec    any precision; a complex element is scaled by the real w[n]; the rest of `Vec` is not touched
/// \param Index  first element of the stretch, from 0
/// \param Len    elements in the stretch, -1: up to the end; fewer than 3 are left as they are
/// \return       `Vec`
/// \throws ECoreError, text of `TVec::ValidateParams`, when the stretch leaves `Vec`; nothing has changed then
/// Precision: w is the exact ratio, rounded once to double and once to the precision of `Vec`; symmetric to the last
/// bit. Cost: one pass over the stretch; allocates nothing.
/// Literature: Harris, "On the use of windows for harmonic analysis with the discrete Fourier transform", Proceedings
/// of the IEEE 66, January 1978.
PASSBAND_EXPORT TVec& Bartlett(TVec& Vec, std::int32_t Index = 0, std::int32_t Len = -1);

}  // namespace passband::SignalUtils
