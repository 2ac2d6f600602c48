// Polynomials. Coefficients stand in descending powers: P = [p0, p1, ..., pn] is p0 x^n + p1 x^(n-1) + ... + pn.
#pragma once

#include "passband/foundation/complex.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband {

/// All roots of a polynomial, each as often as its multiplicity.
///
/// The eigenvalues of the balanced companion matrix are polished together by Aberth's iteration, with values of the
/// polynomial computed in twice the digits of a double and in units that fit the size of each root. Orders above 200,
/// and polynomials whose roots differ too much in size for an eigenvalue routine, start from the Newton polygon of the
/// coefficients instead.
///
/// \param P      real or complex coefficients. Leading zeros are ignored; trailing zeros give roots that are exactly
///               zero. A constant, no coefficient, and zeros alone have no roots.
/// \param Roots  complex, single or double like `P`, unordered but for zeros, which come last; may be `P`. Complex
/// roots
///               of real coefficients stand next to their exact conjugates, the one in the upper half plane first, and
///               their real roots have imaginary parts of exactly 0.
/// \throws ECoreError "PolyRoots: a coefficient is not finite", "PolyRoots: no convergence", "PolyRoots: a root is
/// outside the range of a double"
/// Precision: a simple root is that of the given coefficients to about one unit in the last place as long as its
/// condition number stays below 1e15; one of multiplicity m to about 1e-32^(1/m), relative.
/// Cost: order n takes O(n^3) up to 200 (eigenvalues) and O(n^2) for each of some 5 to 30 sweeps.
/// Literature: Aberth, "Iteration methods for finding all zeros of a polynomial simultaneously", Mathematics of
/// Computation 27, 1973; Bini, "Numerical computation of polynomial zeros by means of Aberth's method", Numerical
/// Algorithms 13, 1996; Edelman, Murakami, "Polynomial roots from companion matrix eigenvalues", Mathematics of
/// Computation 64, 1995.
PASSBAND_EXPORT void PolyRoots(const TVec& P, TVec& Roots);

/// The polynomial with the given roots and leading coefficient 1.
///
/// \param Roots  real or complex, finite; none gives [1]
/// \param P      Roots.Length + 1 coefficients, single or double like `Roots`; may be `Roots`. They are real when the
///               roots are, or when every complex root comes with its exact conjugate.
/// \throws ECoreError "PolyCoeff: a root is not finite", "PolyCoeff: a coefficient is outside the range of a double"
/// Precision: the factors are multiplied in twice the digits of a double, in Leja's order, which keeps the partial
/// products small; the coefficients are those of the given roots but for the last rounding wherever the partial
/// products do not exceed them by more than 1e14. Cost: O(n^2).
/// Literature: Calvetti, Reichel, "On the evaluation of polynomial coefficients", Numerical Algorithms 33, 2003.
PASSBAND_EXPORT void PolyCoeff(const TVec& Roots, TVec& P);

/// The characteristic polynomial det(x I - A), from the eigenvalues of A; real for a real matrix.
/// \throws also what `TMtx::Eig` throws
PASSBAND_EXPORT void PolyCoeff(const TMtx& A, TVec& P);

/// P(x) by Horner's scheme in twice the digits of a double, rounded once.
///
/// \param X  real or complex points
/// \param P  real or complex coefficients; none is the zero polynomial
/// \param Y  P at each point, in the precision of X and P, complex when one of them is; may be either
/// \throws ECoreError "the operands have precisions single and double"; the form that returns a double, "PolyEval:
/// complex coefficients"
/// Literature: Graillat, Langlois, Louvet, "Algorithms for accurate, validated and fast polynomial evaluation", Japan
/// J. Indust. Appl. Math. 26, 2009.
PASSBAND_EXPORT void PolyEval(const TVec& X, const TVec& P, TVec& Y);
PASSBAND_EXPORT double PolyEval(double X, const TVec& P);
PASSBAND_EXPORT TCplx PolyEval(TCplx X, const TVec& P);

/// Copies `Src` without its leading zeros; nothing is left of zeros alone. `Dst` may be `Src`.
PASSBAND_EXPORT void StripLeadZeros(const TVec& Src, TVec& Dst);

}  // namespace passband
