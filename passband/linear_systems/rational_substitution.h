// The substitution of a rational function nz / dz for the variable of a system.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::LinearSystems {

/// Replaces each zero and each pole r by the roots of nz - r dz, in place: the points that nz / dz maps to r. The new roots
/// of r stand together, unordered. A root at infinity is left out. k stays as it is.
///
/// \param z, p    real or complex; complex afterwards
/// \param nz, dz  coefficients in descending powers; the shorter one counts as padded with leading zeros
/// \throws ECoreError "(z.IsDouble <> p.IsDouble) or (nz.IsDouble <> dz.IsDouble)", "nz.Length = 0", "dz.Length = 0"; what
///         `PolyRoots` raises. A refused call changes nothing.
/// Precision: that of `PolyRoots`, in double, rounded once to the precision of `p`.
PASSBAND_EXPORT void RationalSubstitution(TVec& z, TVec& p, double& k, const TVec& nz, const TVec& dz);

/// The same for a transfer function: each polynomial b of degree n becomes the sum of b[i] nz^(n - i) dz^i, i = 0 .. n;
/// both are divided by the new den[0].
///
/// \param num, den  real, of one length and precision, in descending powers; in place
/// \param nz, dz    real
/// \throws ECoreError "Complex not suported!", "num.Length <> den.Length", "num.IsDouble <> den.IsDouble", "nz.IsDouble <>
///         dz.IsDouble", "num.Length = 0", "nz.Length = 0", "dz.Length = 0", "the new den[0] is 0"
/// Precision: in double, rounded once; the sum cancels for high orders, where zeros and poles are the better form.
/// Cost: O((n m)^2), m = nz.Length.
PASSBAND_EXPORT void RationalSubstitution(TVec& num, TVec& den, const TVec& nz, const TVec& dz);

}  // namespace passband::LinearSystems
