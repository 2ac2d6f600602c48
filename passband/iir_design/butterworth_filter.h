// Butterworth filters: the flattest pass band, a monotonic fall from it.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/foundation/open_array.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband::IIRFilters {

/// Designs a Butterworth filter of order N as zeros, poles and gain, H(x) = k prod(x - z[i]) / prod(x - p[i]); x is z of a
/// digital filter, s of an analog one. |H|^2 = 1/2 at the cut-offs; the gain is 1 at zero frequency (lowpass, bandstop),
/// at half the sampling frequency or infinity (highpass), at the centre of a bandpass.
///
/// The analog lowpass prototype (`ButterAnalog`) is moved to the band and made digital by one of three routes:
///
///     ftZeroPoleAnalog    analog band mapping of zeros and poles, then the bilinear transform; the way to go
///     ftStateSpaceAnalog  the same in state space, then back to zeros (exact ones, `ExactIirZeros`), poles and gain
///     ftZeroPoleDiscrete  bilinear transform, then the all-pass substitutions of Constantinides (`LowpassToLowpassZ`);
///                         gain 1 exactly at the reference point; the result is digital whatever `Analog` says
///
/// \param Order       N, 1 .. 1000; bandpass and bandstop filters have 2 N poles
/// \param CutoffFreq  one cut-off for ftLowpass and ftHighpass, two ascending ones for ftBandpass and ftBandstop: in (0, 1),
///                    1 being half the sampling frequency, or, for an analog filter, positive angular frequencies
/// \param FilterType  one of these four; any other gives the prototype at 1 rad/s, made digital if asked for
/// \param Analog      s instead of z
/// \param z, p        out, complex (zeros that all are real may be stored as real), in the precision that they have
/// \param k           out, always in double
/// \returns           the frequency that the band was mapped with: the cut-off, or the geometric mean of both, as angular
///                    frequency of the prewarped analog filter, 4 tan(pi f / 2); of ftZeroPoleDiscrete as it was given;
///                    0 for other types of filter
/// \throws ECoreError "z.IsDouble <> p.IsDouble"; "(Length(CutoffFreq) <> 1)"; "(Length(CutoffFreq) <> 2)"; "not (0 <
///         CutoffFreq < 1)"; "not (0 < CutoffFreq < Inf)"; "not (CutoffFreq[0] < CutoffFreq[1])"; what `ButterAnalog`
///         raises. A refused call writes nothing.
/// Precision: computed in double, rounded once. Zeros and poles of ftZeroPoleAnalog are right to 1e-12 at every order up
/// to 50 in all four bands, those of the state-space route to 1e-9 up to order 20 (docs/accuracy.md).
/// Cost: O(N); of the state-space route O(N^3).
/// Literature: Parks, Burrus, "Digital Filter Design", 1987, ch. 7; Constantinides, "Spectral transformations for
/// digital filters", Proc. IEE 117, 1970.
PASSBAND_EXPORT double ButterFilter(std::int32_t Order, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType,
                                    bool Analog, TVec& z, TVec& p, double& k,
                                    TIirFrequencyTransform Transform = TIirFrequencyTransform::ftZeroPoleAnalog);

/// The same as a transfer function: `num` and `den` are real, in descending powers of s or z, of one length, den[0] = 1.
/// Fragile: the roots of a polynomial of degree n move by about the n-th root of what its coefficients are rounded by. A
/// bandpass of order 5 from 1 to 2 Hz at 200 Hz has poles of magnitude up to 0.9967; rounded to double, the coefficients of
/// its denominator have one of magnitude 1.0054: the response to a sine of amplitude 1 at 1 Hz grows to 16 after 5 s and
/// to 1e8 after 20 s, where 0.7 is right. As sections the design runs right to the last digits.
/// \throws ECoreError "num.IsDouble <> den.IsDouble", first
PASSBAND_EXPORT double ButterFilter(std::int32_t Order, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType,
                                    bool Analog, TVec& num, TVec& den,
                                    TIirFrequencyTransform Transform = TIirFrequencyTransform::ftZeroPoleAnalog);

/// The same as second-order sections (`ZeroPoleToSOS`), the form to filter with: `sos` is real, six coefficients b0 b1 b2
/// a0 a1 a2 a section, the gain in the last one; `IirInitBQ` takes it.
/// \throws what `ZeroPoleToSOS` throws: an analog filter with fewer zeros than poles has no sections
PASSBAND_EXPORT double ButterFilter(std::int32_t Order, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType,
                                    bool Analog, TVec& sos,
                                    TIirFrequencyTransform Transform = TIirFrequencyTransform::ftZeroPoleAnalog);

/// The same in state space, by ftStateSpaceAnalog: A is N by N (2 N by 2 N of a band), real.
/// \throws ECoreError "(A.IsDouble <> B.IsDouble) or (A.IsDouble <> c.IsDouble)", first
PASSBAND_EXPORT double ButterFilter(std::int32_t Order, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType,
                                    bool Analog, TMtx& A, TVec& B, TVec& C, double& D);

}  // namespace passband::IIRFilters
