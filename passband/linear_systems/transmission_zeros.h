// The zeros of a system in state space.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband::LinearSystems {

/// The transmission zeros of x' = A x + B u, y = C x + D u, and the gain k of H(s) = k prod(s - z[i]) / det(s I - A).
///
/// As long as there is no feed-through, y = 0 fixes one state: it is turned to the end by a reflection and becomes the new
/// output, its part of B the new feed-through. The zeros are the generalised eigenvalues of what is left, the gain is the
/// product of what was divided out. Given zeros in D and C are taken literally; of later ones rounding is told apart by a
/// tolerance that grows with the order, on a balanced matrix.
///
/// \param z     complex, in the precision of `B`; none where H has none, or is 0 (then k = 0)
/// \param A     n by n, real; a hidden mode appears as a zero that coincides with an eigenvalue of A
/// \param B, C  n elements
/// \throws Exception "a.Rows <> b.Length", "b.Length <> c.Length", "b.IsDouble <> c.IsDouble", "b.IsDouble <> a.IsDouble";
///         ECoreError "LTIZeros: A is not square", "LTIZeros: complex elements", "LTIZeros: an element is not finite";
///         what `GeneralizedEig` raises
/// Precision: in double; simple zeros are those of a system whose elements differ by some eps of their norm, a zero of
/// multiplicity m only by the m-th root of that. Cost: O(n^3).
/// Literature: Emami-Naeini, Van Dooren, "Computation of zeros of linear multivariable systems", Automatica 18, 1982.
PASSBAND_EXPORT void LTIZeros(TVec& z, double& k, const TMtx& A, const TVec& B, const TVec& C, double D);

}  // namespace passband::LinearSystems
