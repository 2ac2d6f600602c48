// Frequency responses of digital and analog filters.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// H(e^jw) = Num / Den on n equally spaced frequencies, by transforms of the coefficients filled up with zeros to n, the
/// power of two from ZeroPadding times the longer one on.
///
/// \param Num            coefficients in ascending powers of z^-1, at least one
/// \param Den            the same of the denominator, in the precision of `Num`; nullptr for an FIR filter
/// \param Response       complex, in the precision of `Num`: n / 2 + 1 values from 0 to half the sampling frequency of
///                       real coefficients, n values once round of complex ones; may be `Num` or `*Den`
/// \param ZeroPadding    at least how many times more points than coefficients, >= 1
/// \param ScaleResponse  divides by Num.Length; without a denominator only
/// \param WindowType     window over the coefficients of an FIR filter, periodic, not normalised. With a denominator both
///                       parts are windowed over the whole length of their transforms (n + 2 of real coefficients).
/// \param WindowParam    its parameter
/// \returns n / Num.Length, the padding that was used
/// \throws ECoreError "FrequencyResponse: Num.Length = 0", "ZeroPadding < 1", "Num.IsDouble <> Den.IsDouble",
///         "LargestExp2: n > 2^30"; what `SignalWindow` raises. `Response` is then as it was.
/// Precision: in double, rounded once. Where the spectrum of the denominator vanishes the response is infinite or NaN.
/// Cost: one or two transforms, whose plans are kept.
/// Literature: Oppenheim, Schafer, "Discrete-Time Signal Processing", ch. 5.
PASSBAND_EXPORT double FrequencyResponse(const TVec& Num, const TVec* Den, TVec& Response, std::int32_t ZeroPadding = 1,
                                         bool ScaleResponse = false,
                                         TSignalWindowType WindowType = TSignalWindowType::wtRectangular,
                                         double WindowParam = 40);

/// H(s) = Num(s) / Den(s) of an analog filter at s = Sigma + j Frequencies[k].
///
/// \param Num, Den     coefficients in descending powers of s; real or complex, each in any precision
/// \param Frequencies  real, angular, in any precision; an empty vector gives an empty Response
/// \param Response     complex, in the precision of `Num`; may be any of the others
/// \throws ECoreError "Frequencies.Complex = True!". `Response` is then as it was.
/// Precision: in double, by compensated evaluation (`PolyEval`), rounded once. Cost: O(coefficients) a frequency.
PASSBAND_EXPORT void FrequencyResponseS(const TVec& Num, const TVec& Den, const TVec& Frequencies, TVec& Response,
                                        double Sigma = 0);

}  // namespace passband::SignalUtils
