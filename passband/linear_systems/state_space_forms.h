// State space: x' = A x + B u, y = C x + D u, or the difference equation of a digital system. A is n by n, B and C are
// vectors of length n, all real; D is a number.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband::LinearSystems {

/// A cascade of blocks of first and second order, each in balanced companion form [[-d1, -d2/w], [w, 0]] with w the
/// geometric mean of the moduli of its poles, each fed by the output of those before it; C is that of the last block.
///
/// \param A, B, C, D  n = p.Length states, in the precision of `p`; without poles empty, D = k
/// \param z, p        real or complex; sorted by `SortConj` and made complex in place; not more zeros than poles
/// \throws Exception "z.Length > p.Length", "z.IsDouble <> p.IsDouble"
/// Precision: computed in double, rounded once. Cost: O(n^2).
/// Literature: Kailath, "Linear Systems", Prentice-Hall, 1980, ch. 2.
PASSBAND_EXPORT void ZeroPoleToStateSpace(TMtx& A, TVec& B, TVec& C, double& D, TVec& z, TVec& p, double k);

/// Poles are the eigenvalues of A, zeros and gain those of `LTIZeros`. Without states k = D, and `z` and `p` stay as they
/// are.
/// \throws what `LTIZeros` and `TMtx::Eig` raise
PASSBAND_EXPORT void StateSpaceToZeroPole(TVec& z, TVec& p, double& k, const TMtx& A, const TVec& B, const TVec& C,
                                          double D);

/// The controllable companion form: the first row of A is -den[1 ..] / den[0], ones stand below its diagonal.
///
/// \param num, den  real, of one length, in descending powers; of length 1, a pure gain: no states, D = num[0] / den[0];
///                  empty: no states, D = 0
/// \throws Exception "Num.Length <> Den.Length", "Num.IsDouble <> den.IsDouble", "Num.Complex <> den.Complex", "complex
///         coefficients have no real state space", "den[0] = 0"
PASSBAND_EXPORT void TransferFunToStateSpace(TMtx& A, TVec& B, TVec& C, double& D, const TVec& num, const TVec& den);

/// den = det(x I - A); num = (det(x I - A + g B C) - den) / g + D den, with g such that both determinants differ about as
/// much as they are large: small gains do not drown in their difference.
///
/// \param num, den  real, n + 1 coefficients each in the precision of `A`; without states num = [D], den = [1]
/// \throws Exception "a.Rows <> b.Length", "b.Length <> c.Length"; what `TMtx::Eig` raises
/// Precision: that of the eigenvalues, about n eps of the largest coefficient. Cost: O(n^3).
PASSBAND_EXPORT void StateSpaceToTransferFun(TVec& num, TVec& den, const TMtx& A, const TVec& B, const TVec& C,
                                             double D);

}  // namespace passband::LinearSystems
