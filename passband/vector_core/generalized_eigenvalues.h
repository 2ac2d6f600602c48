// Eigenvalues of a pencil of two matrices.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband {

/// The generalised eigenvalues Alpha[i] / Beta[i] of A x = lambda B x, by the QZ algorithm. B may be singular: a Beta of 0
/// stands for an infinite eigenvalue.
///
/// \param A, B   real, square, of one shape and precision
/// \param Alpha  complex, in that precision; complex eigenvalues come in conjugate pairs
/// \param Beta   real, in that precision
/// \throws ECoreError "GeneralizedEig: a matrix of 2 x 3 is not square", "GeneralizedEig: matrices of 2 x 2 and 3 x 3",
///         "GeneralizedEig: complex elements", "GeneralizedEig: an element is not finite", "GeneralizedEig: no convergence"
/// Precision: in double; those of a pencil whose elements differ by some eps of the norms of A and B. Cost: O(n^3).
/// Literature: Moler, Stewart, "An algorithm for generalized matrix eigenvalue problems", SIAM J. Numer. Anal. 10, 1973.
PASSBAND_EXPORT void GeneralizedEig(const TMtx& A, const TMtx& B, TVec& Alpha, TVec& Beta);

}  // namespace passband
