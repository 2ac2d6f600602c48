// Frequencies and phases brought into the ranges that the generators take.
#pragma once

#include "passband/foundation/export.h"

namespace passband::SignalUtils {

/// The frequency in [-0.5, 0.5] that has the same samples: `Freq` less a whole number, exact; |Freq| < 0.5 stays as it is.
/// Ties go to the other side: 0.5 becomes -0.5, -0.5 becomes 0.5. A real signal has no sign of the frequency: its
/// magnitude is returned. NaN and infinities give NaN.
/// \param Freq     relative to the sampling frequency
/// \param Complex  the frequency is one of a complex signal
PASSBAND_EXPORT double CircularFrequency(double Freq, bool Complex = false);

/// The same phase in [0, 2 pi), in radians. NaN and infinities give NaN.
PASSBAND_EXPORT double CircularPhase(double Phase);

}  // namespace passband::SignalUtils
