// Logarithmically spaced axes.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Dst[i] = 10^(Start + i (Stop - Start) / (m - 1)), i = 0 .. m - 1: from 10^Start to 10^Stop, both exactly when those
/// powers are. One element becomes 10^Start.
/// \param Dst  in: length m and precision; out: real
/// Precision: in double, rounded once.
PASSBAND_EXPORT void LogRamp(TVec& Dst, double Start, double Stop);

}  // namespace passband::SignalUtils
