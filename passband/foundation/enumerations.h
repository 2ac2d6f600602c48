// The enumerations of the public interface, one byte each, and their display names. The names of the values are part of
// the interface; `EnumInfo` publishes them to hosts.
#pragma once

#include <cstdint>
#include <string>

#include "passband/foundation/export.h"

namespace passband::SignalUtils {

/// Kinds of FIR and IIR filters; IIR design and order estimation act on the first four.
enum class TFilterType : std::uint8_t {
  ftLowpass,
  ftHighpass,
  ftBandpass,
  ftBandstop,
  ftHilbertIII,
  ftHilbertIV,
  ftDifferentiatorIII,
  ftDifferentiatorIV,
  ftDoubleDifferentiatorIII,
  ftDoubleDifferentiatorIV,
  ftIntegratorIII,
  ftIntegratorIV,
  ftDoubleIntegratorIII,
  ftDoubleIntegratorIV,
};
/// The windows that the dispatcher `SignalWindow` selects.
enum class TSignalWindowType : std::uint8_t {
  wtRectangular,
  wtHanning,
  wtHamming,
  wtFlatTop,
  wtBartlett,
  wtBlackman,
  wtBlackmanHarris,
  wtBlackmanExact,
  wtCosineTappered,
  wtKaiser,
  wtChebyshev,
  wtExponent,
};
/// Symmetric windows serve filter design, periodic ones stand before a discrete Fourier transform.
enum class TSignalWindowMode : std::uint8_t { wmSymmetric, wmPeriodic };
/// Scalings of a spectrum.
enum class TSpectrumType : std::uint8_t { spAmplt, spRMS, spPower, spPeakPeak, spRealCepstrum, spComplex };
/// Ready-made fractional-delay filters, named by the level of their error.
enum class TFractionalImpulse : std::uint8_t {
  falp_160dB,
  falp_140dB,
  falp_140dB2,
  falp_100dB,
  falp_60dB,
  falp_50dB,
  falp_50dB2,
};
/// How an unwrapped phase is carried on.
enum class TRunningPhase : std::uint8_t { rpDefault, rpConstPhase, rpIntegerLag, rpPartial };
/// The end of a circular buffer that a monitor looks at.
enum class TMonitorMode : std::uint8_t { mmFromStart, mmFromEnd };
/// Channels of a recording.
enum class TChannel : std::uint8_t { chLeft, chRight, chThird, chFourth, chFifth, chSixth };
/// Families of wavelets.
enum class TWaveletType : std::uint8_t {
  wtHaar,
  wtDaublet,
  wtSymmlet,
  wtCoiflet,
  wtVaidyanathan,
  wtBSpline,
  wtBSplineDual,
  wtLinSpline,
  wtQuadSpline,
  wtByFilter,
};
/// The two outputs of one wavelet decomposition step.
enum class TWaveletDecomp : std::uint8_t { wtApproximation, wtDetail };

/// The name of a window as a person reads it: "Rectangular", "Hanning", "Hamming", "Flat top", "Bartlett", "Blackman",
/// "Blackman-Harris", "Blackman exact", "Cosine tappered", "Kaiser", "Chebyshev", "Exponent down". Empty for an ordinal
/// outside the enumeration.
PASSBAND_EXPORT std::string SignalWindowToString(TSignalWindowType WindowType);

/// The name of a spectrum scaling: "Peak amplitude", "Peak RMS", "Peak power", "Peak-peak", "Real cepstrum", "Complex".
/// Empty for an ordinal outside the enumeration.
PASSBAND_EXPORT std::string SpectrumTypeToString(TSpectrumType SpectrumType);

}  // namespace passband::SignalUtils

namespace passband::OptimalFir {

/// Kinds of equiripple FIR filters.
enum class TRemezType : std::uint8_t {
  rmtBandPass,
  rmtDifferentiator,
  rmtHilbert,
  rmtIntegrator,
  rmtDoubleDifferentiator,
  rmtDoubleIntegrator,
};
/// Symmetry of a linear-phase impulse response.
enum class TFilterSymmetry : std::uint8_t { fsmPositive, fsmNegative };

}  // namespace passband::OptimalFir

namespace passband::IIRFilters {

/// Families of IIR filters.
enum class TIirFilterMethod : std::uint8_t {
  fimButter,
  fimChebyshevI,
  fimChebyshevII,
  fimElliptic,
  fimDC,
  fimNotch,
  fimBessel,
};
/// The route by which an IIR filter gets from the analog prototype to its digital band.
enum class TIirFrequencyTransform : std::uint8_t { ftStateSpaceAnalog, ftZeroPoleAnalog, ftZeroPoleDiscrete };

/// The name of an IIR family: "Butterworth", "Chebyshev type I", "Chebyshev type II", "Elliptic filter", "DC filter",
/// "Notch filter", "Bessel filter". Empty for an ordinal outside the enumeration.
PASSBAND_EXPORT std::string IirFilterMethodToString(TIirFilterMethod Method);

}  // namespace passband::IIRFilters
