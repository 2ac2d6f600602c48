// The exponential window of impact testing.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Multiplies a stretch of `Vec` by the window w[n] = EndValue^(n / (Len - 1)), n = 0 .. Len - 1.
///
/// \param Vec       any precision; a complex element is scaled by the real w[n]; the rest of `Vec` is not touched
/// \param EndValue  w[Len - 1], a ratio, > 0; below 1 the window decays. It is not checked: a negative one or a NaN
/// gives
///                  NaN, and 0 gives 0 but for a NaN at n = 0
/// \param Index     first element of the stretch, from 0
/// \param Len       elements in the stretch, -1: up to the end; 0 does nothing, 1 leaves the element as it is
/// \return          `Vec`
/// \throws ECoreError, text of `TVec::ValidateParams`, when the stretch leaves `Vec`; nothing has changed then
/// Precision: w is computed in double, as exp(n ln(EndValue) / (Len - 1)), and rounded once to the precision of `Vec`.
/// Cost: Len exponentials, one pass over the stretch; allocates nothing once the pool is warm.
/// Literature: Halvorsen, Brown, "Impulse technique for structural frequency response testing", Sound and Vibration,
/// November 1977.
PASSBAND_EXPORT TVec& ExponentWindow(TVec& Vec, double EndValue, std::int32_t Index = 0, std::int32_t Len = -1);

}  // namespace passband::SignalUtils
