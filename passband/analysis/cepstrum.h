// Cepstra: inverse transforms of logarithmic spectra.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// The real cepstrum: the inverse transform of ln |X|, X being the spectrum of the signal on n points, the power of two
/// from its length on (`FrequencyResponse`). Logarithms that are not finite, of zeros in the spectrum, count as 0.
///
/// Of the spectrum of a real signal the bins 0 .. n / 2 - 1 are used; the one at half the sampling frequency counts as 0.
///
/// \param Src            at least one sample
/// \param Dst            real, in the precision of `Src`; may be `Src`. n / 2 values, quefrencies from 0 in samples; with
///                       `MagnitudeForm` n / 4 + 1
/// \param RemoveDCFlag   takes the mean out of the signal, and out of the logarithm: the cepstrum then begins near 0
/// \param WindowType     window over the signal and, with `MagnitudeForm`, over the logarithm, periodic; its parameter,
///                       where it has one, is 40
/// \param MagnitudeForm  the magnitude of the spectrum of the logarithm (bins 0 .. n / 2 - 1) instead, in the units of a
///                       forward transform
/// \throws what `FrequencyResponse` raises. `Dst` is then as it was.
/// Precision: in double, rounded once. Cost: two transforms, whose plans are kept, and one pass of logarithms.
/// Literature: Bogert, Healy, Tukey, "The quefrency alanysis of time series for echoes", 1963; Oppenheim, Schafer,
/// "Discrete-Time Signal Processing", ch. 13.
PASSBAND_EXPORT void RealCepstrum(const TVec& Src, TVec& Dst, bool RemoveDCFlag = false,
                                  TSignalWindowType WindowType = TSignalWindowType::wtRectangular,
                                  bool MagnitudeForm = false);

/// The complex cepstrum: the inverse transform of ln |X| + j arg X, with the phase unwrapped and freed from its linear
/// part, the delay of the signal in whole samples, which is returned.
///
/// Exact for real signals of even length with a positive sum: `CplxCepstrumInv` gives them back. Of a negative sum the
/// sign is lost; of an odd length the ramp ends beside half the sampling frequency, so that a lag other than 0 is not a
/// delay of whole samples; complex signals have no half spectrum to go back from.
///
/// \param Src          at least one sample
/// \param Dst          real, in the precision of `Src`; may be `Src`. n values, where n is the power of two from
///                     ZeroPadding times the length on (n + 1 of an odd length): quefrencies from 0, the negative ones
///                     from the end. It is aliased unless n is large against the decay of the cepstrum
/// \param ZeroPadding  >= 1
/// \returns the lag r: Src was taken as if r samples earlier
/// \throws what `FrequencyResponse` raises. `Dst` is then as it was.
/// Precision: in double, rounded once; the phase is right where neighbouring bins are less than half a period apart.
/// Literature: Oppenheim, Schafer, "Discrete-Time Signal Processing", ch. 13.
PASSBAND_EXPORT double CplxCepstrum(const TVec& Src, TVec& Dst, std::int32_t ZeroPadding = 1);

/// The signal of a complex cepstrum: the inverse transform of exp(S), S being the spectrum of the cepstrum, delayed by
/// `Lag`.
///
/// \param Src  the cepstrum, of even length
/// \param Lag  the result of `CplxCepstrum`; not only a whole number
/// \param Dst  real, `Len` samples in the precision of `Src`, zeros beyond the length of `Src`; may be `Src`
/// \throws ECoreError "Src.Length must be even", "Size: a length is negative". `Dst` is then as it was.
/// Precision: in double, rounded once. Cost: two transforms, and an exponential a bin.
PASSBAND_EXPORT void CplxCepstrumInv(const TVec& Src, TVec& Dst, double Lag, std::int32_t Len);

}  // namespace passband::SignalUtils
