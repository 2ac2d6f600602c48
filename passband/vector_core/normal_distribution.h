// The normal distribution.
#pragma once

#include "passband/foundation/export.h"

namespace passband {

/// The probability that a normal variable of the given mean and standard deviation is at most X,
/// erfc((Mean - X) / (StdDev sqrt 2)) / 2.
///
/// \param StdDev  > 0
/// \throws ECoreError "NormalCDF: not (StdDev > 0)"; a NaN in the other arguments gives a NaN
/// Precision: a few units in the last place, in the lower tail too (the rounding of the argument, which the tail would
/// magnify, is corrected for). For the upper tail use the symmetry 1 - F(Mean + d) = F(Mean - d).
PASSBAND_EXPORT double NormalCDF(double X, double Mean = 0, double StdDev = 1);

/// The density exp(-t^2 / 2) / (StdDev sqrt(2 pi)), t = (X - Mean) / StdDev.
///
/// \param StdDev  > 0
/// \throws ECoreError "NormalPDF: not (StdDev > 0)"; a NaN in the other arguments gives a NaN
/// Precision: a few units in the last place, in the tails too.
PASSBAND_EXPORT double NormalPDF(double X, double Mean = 0, double StdDev = 1);

}  // namespace passband
