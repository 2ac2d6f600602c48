// Minimisation without derivatives.
#pragma once

#include <cstdint>
#include <functional>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband {

/// A local minimum of a function of one variable on [Low, High]; the minimum is returned, its place written to `X`.
///
/// Brent's method: golden sections, and parabolas through the best three points where they converge. Where the function
/// has a kink, as |g| has at a root of g, the lines of both sides are intersected instead, so that such a minimum is
/// found to full precision in about as many steps as a smooth one. `Cost` is never called at `Low` or `High`
/// themselves; a minimum there is approached to the tolerance. A smooth minimum cannot be located better than to about
/// the square root of the machine epsilon.
///
/// \param Cost       the function; a NaN counts as infinite
/// \param MaxIter    calls of `Cost` after the first, >= 0; the search ends there without complaint
/// \param Tolerance  wanted relative accuracy of X, >= 0; at least half the machine epsilon is used
/// \throws ECoreError "MinBrent: no cost function", "MinBrent: Low or High is not finite", "MinBrent: not (Low <=
/// High)", "MinBrent: MaxIter < 0", "MinBrent: not (Tolerance >= 0)"; what `Cost` throws passes, and `X` is unchanged
/// Literature: Brent, "Algorithms for Minimization without Derivatives", 1973, chapter 5; kinks: Mifflin, Strodiot, "A
/// rapidly convergent five-point algorithm for univariate minimization", Mathematical Programming 62, 1993.
PASSBAND_EXPORT double MinBrent(const std::function<double(double)>& Cost, double Low, double High, double& X,
                                std::int32_t MaxIter = 200, double Tolerance = 1e-10);

/// A local minimum of a function of several variables by the simplex method of Nelder and Mead; the minimum is
/// returned.
///
/// The first simplex has its corners at the start and, for each variable, 5 percent further along it (0.00025 where the
/// start is zero). The search ends when the simplex is smaller than Tolerance times the size of X and of the first
/// simplex.
///
/// \param Cost       the function; it gets a double real vector as long as `X`; a NaN counts as infinite
/// \param X          start and result, real, not empty
/// \param MaxIter    steps (reflections with what follows from them), >= 0; the search ends there without complaint
/// \param Tolerance  relative size of the last simplex, >= 0
/// \throws ECoreError "Simplex: no cost function", "Simplex: complex elements", "Simplex: no elements", "Simplex: an
/// element is not finite", "Simplex: MaxIter < 0", "Simplex: not (Tolerance >= 0)"; what `Cost` throws passes, and `X`
/// is unchanged
/// Literature: Nelder, Mead, "A simplex method for function minimization", The Computer Journal 7, 1965; coefficients
/// for many variables: Gao, Han, "Implementing the Nelder-Mead simplex algorithm with adaptive parameters",
/// Computational Optimization and Applications 51, 2012.
PASSBAND_EXPORT double Simplex(const std::function<double(const TVec&)>& Cost, TVec& X, std::int32_t MaxIter = 1000,
                               double Tolerance = 1e-10);

}  // namespace passband
