// The form in which a digital filter runs: a cascade of second-order sections.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::LinearSystems {

/// Writes H(z) = k prod(z - z[i]) / prod(z - p[i]) as sections of six coefficients each, one after the other:
///
///     b0 b1 b2 a0 a1 a2      (b0 + b1 z^-1 + b2 z^-2) / (a0 + a1 z^-1 + a2 z^-2),  a0 = 1
///
/// After `SortConj` section i takes zeros and poles 2 i and 2 i + 1, so that conjugate pairs give real coefficients. Of an
/// odd number of poles the last one makes a section of first order, [1, -z, 0, 1, -p, 0]. The gain multiplies b0, b1 and b2
/// of the last section.
///
/// \param sos   real, (n + 1) div 2 sections of n poles, in the precision of `z`
/// \param z, p  real or complex, of one number and precision; sorted in place
/// \throws ECoreError "p.Length = 0", "z.Length <> p.Length", "z.IsDouble <> p.IsDouble", "p.Length > 715827882"
/// Precision: coefficients are computed from the given roots in double and rounded once; each is right to one unit in the
/// last place. Cost: O(n log n).
PASSBAND_EXPORT void ZeroPoleToSOS(TVec& sos, TVec& z, TVec& p, double k);

}  // namespace passband::LinearSystems
