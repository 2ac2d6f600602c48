// Between zeros and poles, H(x) = k prod(x - z[i]) / prod(x - p[j]), and the transfer function, a quotient of polynomials
// in descending powers of x = s or z; of a digital system the same coefficients read as those of 1, z^-1, z^-2, ...
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::LinearSystems {

/// \param num, den  real, p.Length + 1 coefficients each, in the precision of the roots; den[0] = 1; the numerator stands
///                  at the right, behind zeros where there are fewer zeros than poles
/// \param z, p      real or complex; of the coefficients the real parts count, so complex roots come with their conjugates
/// \throws ECoreError "p.Length = 0", "z.Length > p.Length", "z.IsDouble <> p.IsDouble"; what `PolyCoeff` raises
/// Precision: the coefficients are those of the given roots but for the last rounding (see `PolyCoeff`). They may be a
/// fragile description all the same: close roots move by much more than what rounds the coefficients.
/// Cost: O(n^2).
PASSBAND_EXPORT void ZeroPoleToTransferFun(TVec& num, TVec& den, const TVec& z, const TVec& p, double k);

/// \param z, p  complex, in the precision of the coefficients, unordered as `PolyRoots` gives them
/// \param k     num[i] / den[0] for the first num[i] that is not 0, of complex data its modulus; 0, and no zeros, when the
///              numerator is zero
/// \param num   real or complex; shorter than `den` it gains zeros at its end, hence zeros at the origin; leading zeros
///              are zeros at infinity, which are not stored
/// \throws Exception "num.Length > den.Length", "num.Length = 0", "num.FloatPrecision <> den.FloatPrecision",
///         "abs(den[0]) < EPS", of single precision "abs(den[0]) < EPS_SINGLE"; what `PolyRoots` raises
/// Precision, cost: those of `PolyRoots`.
PASSBAND_EXPORT void TransferFunToZeroPole(TVec& z, TVec& p, double& k, const TVec& num, const TVec& den);

}  // namespace passband::LinearSystems
