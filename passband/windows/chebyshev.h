// The equiripple window of Dolph.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Multiplies a stretch of `Vec` by a Dolph-Chebyshev window: the narrowest main lobe for side lobes of one height.
/// With L = Len and
///
///   B = 10^(2.5 Param / 20),  d = log10(B + sqrt(B^2 - 1)),  c = tanh(d / (L - 1))^2
///
/// the weights are v[0] = v[L - 1] = 1 / (L - 1) and, for k = 2 .. L - 1,
///
///   v[k - 1] = c sum over j >= 0 of c^j product over i = 1 .. j of (k - i - 1)(L - k - i) / (i (i + 1)),
///
/// and w = v / max v. Side lobes of exactly A dB need d = arcosh(10^(A / 20)); the d above comes from a decimal
/// logarithm and is near it for usual values only, so `Param` is not exactly the attenuation: the side lobes lie at 20
/// log10(cosh d), about 1.0857 Param - 3.4 dB (40.0 dB for 40, 61.7 for 60, 105.2 for 100).
///
/// \param Vec    any precision; a complex element is scaled by the real w[n]; the rest of `Vec` is not touched
/// \param Param  nominal attenuation of the side lobes in dB, > 0. It is not checked: below 0, where B < 1, and for a
/// NaN
///               the window is NaN
/// \param Index  first element of the stretch, from 0
/// \param Len    elements in the stretch, -1: up to the end; 0 does nothing, 1 leaves the element as it is
/// \return       `Vec`
/// \throws ECoreError, text of `TVec::ValidateParams`, when the stretch leaves `Vec`; nothing has changed then
/// Precision: w is computed in double and rounded once to the precision of `Vec`. All terms are positive: nothing
/// cancels.
/// Cost: the series ends where its terms no longer count, 10 to 40 terms for each of Len / 2 points at usual values.
/// Literature: Dolph, "A current distribution for broadside arrays which optimizes the relationship between beam width
/// and side-lobe level", Proceedings of the IRE 34, June 1946; Bresler, "A new algorithm for calculating the current
/// distributions of Dolph-Chebyshev arrays", IEEE Transactions on Antennas and Propagation 28, November 1980.
PASSBAND_EXPORT TVec& Chebyshev(TVec& Vec, double Param, std::int32_t Index = 0, std::int32_t Len = -1);

}  // namespace passband::SignalUtils
