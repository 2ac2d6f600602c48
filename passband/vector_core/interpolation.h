// Interpolation of tabulated functions.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband {

enum class TInterpolationType : std::uint8_t {
  Linear,  ///< straight lines between the points
  Cubic,   ///< cubic spline with continuous second derivative and "not-a-knot" ends
};

/// Evaluates at `NewX` the curve through the points (X[k], Y[k]). Outside the points the first or last piece goes on.
///
/// A cubic spline reproduces cubic polynomials; the third derivative is continuous at the second and the last but one
/// point. Three points give the parabola, two the line, one a constant.
///
/// \param X        real, finite, strictly ascending, at least one point
/// \param Y        real or complex, as long as `X`
/// \param NewX     real, any order; a NaN gives a NaN
/// \param NewY     receives as many elements as `NewX` has, in the precision of `Y`; may be any of the others. At a
///                 point of the table it is the tabulated value exactly.
/// \param SortedX  tells that `NewX` ascends, which saves the search for the piece of each element; the result is the
///                 same when it does not
/// \throws ECoreError "Interpolate: complex X", "Interpolate: X has 3 elements, Y 4", "Interpolate: no points",
/// "Interpolate: X is not finite", "Interpolate: X does not ascend strictly", "the operands have precisions single and
/// double"
/// Precision: double, rounded once.
/// Cost: O(X.Length + NewX.Length), with log(X.Length) per element when not sorted.
/// Literature: de Boor, "A Practical Guide to Splines", revised ed., 2001, chapter IV.
PASSBAND_EXPORT void Interpolate(const TVec& X, const TVec& Y, const TVec& NewX, TVec& NewY,
                                 TInterpolationType Type = TInterpolationType::Linear, bool SortedX = false);

}  // namespace passband
