// Telling whether a value has stayed the same for a while: a setting that is being dragged, a reading that settles.
#pragma once

#include "passband/foundation/clock.h"
#include "passband/foundation/export.h"

namespace passband::SignalUtils {

/// The value that is watched.
struct TConsistentParam {
  double Param = 0;    ///< the value last seen
  TDateTime Time = 0;  ///< when it was last seen to change, in days as `Now` counts them
};

/// Starts watching at the present time.
PASSBAND_EXPORT void ConsistentParameterInit(double Param, TConsistentParam& State);

/// True when the value has been the same for more than `Time` seconds. A value that differs from the last one, and every NaN
/// or infinity, starts the time anew. The clock is steady: setting the computer's clock neither fakes nor hides a change.
PASSBAND_EXPORT bool ConsistentParameterFilter(double Param, double Time, TConsistentParam& State);

/// The same for a flag, which counts as 0 or 1.
PASSBAND_EXPORT bool ConsistentParameterFilter(bool Param, double Time, TConsistentParam& State);

}  // namespace passband::SignalUtils
