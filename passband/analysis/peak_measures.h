// Peak value and crest factor.
#pragma once

#include "passband/foundation/complex.h"
#include "passband/foundation/export.h"

namespace passband::SignalUtils {

/// The crest factor PeakValue / Rms; 0 when Rms is 0. Of complex numbers the magnitude of the quotient.
PASSBAND_EXPORT double Crest(double Rms, double PeakValue);
PASSBAND_EXPORT double Crest(TCplx Rms, TCplx PeakValue);

/// The larger excursion from the mean, max(|MaxValue - MeanValue|, |MeanValue - MinValue|).
PASSBAND_EXPORT double Peak(double MaxValue, double MinValue, double MeanValue);
PASSBAND_EXPORT double Peak(TCplx MaxValue, TCplx MinValue, TCplx MeanValue);

}  // namespace passband::SignalUtils
