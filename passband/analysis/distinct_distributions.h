// How far values and distributions stand apart, in percent.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/foundation/open_array.h"

namespace passband::SignalUtils {

/// The share of a normal distribution that lies closer to the mean than `X`, 100 erf(|X - Mean| / (StdDev sqrt 2)): 0 at
/// the mean, 68.27 at one deviation, approaching 100 far from it.
///
/// \param StdDev  > 0; 0 is a distribution at the mean only: 0 there, 100 elsewhere
/// \throws ECoreError "NormalCDF: not (StdDev > 0)"; a NaN in the other arguments gives a NaN
PASSBAND_EXPORT double DistinctCDF(double X, double Mean, double StdDev);

/// How distinct n normal distributions are: the area under the upper envelope of their densities, less 1, over n - 1. 0
/// when they coincide, 100 when they do not overlap.
///
/// The densities are summed on a grid from the lowest of all Means[i] - 3 StdDevs[i] to the highest of all Means[i] + 3
/// StdDevs[i] in steps s of 3 min(StdDevs) / Resolution, or of the MaxPoints-th part of the whole where that would make
/// more than MaxPoints points. A distribution with s > 3/2 StdDevs[i] is too narrow for the grid and counts as one point
/// of height 1 / s. What the distributions have beyond three deviations is missing: two of equal width give -0.3 when they
/// coincide and 99.5 far apart.
///
/// \param Means, StdDevs  n >= 2 of each; deviations >= 0
/// \param Resolution      steps for three of the smallest deviations, >= 1
/// \param MaxPoints       >= 1
/// \throws Exception "Length(Means) <> Length(StdDevs)"; ECoreError "DistinctCDF: Length(Means) < 2", "DistinctCDF:
///         Resolution < 1", "DistinctCDF: MaxPoints < 1", "DistinctCDF: a mean or a deviation is not finite or below 0"
/// Cost: an exponential for each distribution and point.
PASSBAND_EXPORT double DistinctCDF(OpenArray Means, OpenArray StdDevs, std::int32_t Resolution, std::int32_t MaxPoints);

}  // namespace passband::SignalUtils
