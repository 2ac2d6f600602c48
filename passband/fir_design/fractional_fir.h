// FIR designs by the window method whose impulse response is sampled off the whole samples: filters that delay by a
// fraction of a sample, and responses sampled several times a sample. Band edges as in windowed_fir.h.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/foundation/open_array.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Samples the ideal response of a type at x = Offset + n Step - (N - 1) / 2, n = 0 .. Round((N - 1) / Step):
///
///     ftLowpass          sin(pi f1 x) / (pi x)
///     ftHighpass         minus that; 1 - f1 at x = 0
///     ftBandpass         (sin(pi f2 x) - sin(pi f1 x)) / (pi x)
///     ftBandstop         minus that; 1 - (f2 - f1) at x = 0
///     ftHilbert..        2 sin^2(pi x / 2) / (pi x)
///     ftDifferentiator.. (cos(pi x) / x - sin(pi x) / (pi x^2)) FS
///
/// with the cut-offs f1, f2 of `FirImpulse`. The allpass part of highpass and bandstop filters stands at x = 0 alone: these
/// types ask for offsets and steps that meet the centre. |pi x| <= 1e-25 counts as 0.
///
/// \param N       nominal length in samples; even or odd lengths are the caller's choice
/// \param H       in: `IsDouble`; out: Round((N - 1) / Step) + 1 real taps, without a window. Types from
///                ftDoubleDifferentiatorIII on have no such response: their taps are 0.
/// \param W       band edges in the unit of `FS`
/// \param Offset  place of the first tap in samples, usually 0 .. 1
/// \param Step    distance of the taps in samples, > 0: 1 for a fractional delay, 1 / k for k taps a sample
/// \throws ECoreError "Step" (also for a NaN), "FractionalFirImpulse: Offset or Step is not finite",
///         "FractionalFirImpulse: not (0 <= Round((N - 1) / Step) + 1 <= 2147483647)", "not (1 < Length(W) < 2)", "not
///         (2 < Length(W) < 4)"; Exception "Length(W) must be 1,2 or 4". `H` is then as it was.
/// Precision: x is formed in extended precision and the sines without the rounding of pi x; taps are right to 1e-15 of
/// the largest one, in single precision rounded once. Cost: one or two sines a tap.
/// Literature: Laakso, Valimaki, Karjalainen, Laine, "Splitting the unit delay", IEEE Signal Processing Magazine 13, 1996.
PASSBAND_EXPORT void FractionalFirImpulse(std::int32_t N, TVec& H, OpenArray W, double Offset, double Step,
                                          TFilterType FilterType, double FS = 2);

/// `FractionalFirImpulse` with the length and the Kaiser window for a ripple: the length of `KaiserFirLength`, of four
/// edges the larger one; odd for ftHighpass, ftBandpass, ftBandstop and the types III, even for the types IV; 4 .. 10000.
///
/// \param W         2 or 4 edges; those of Hilbert transformers and differentiators are taken as they stand
/// \param Extended  designs two samples more and leaves the first Round(1 / Step) taps out: with `Offset` running from 0 to
///                  1 the filters of a bank then share their first input sample
/// \param Gain      factor of all taps
/// \returns the length in samples, without the two of `Extended`
/// \throws ECoreError "(Length(W) <> 2) and (Length(W) <> 4)"; "FilterType not supported!" from ftDoubleDifferentiatorIII
///         on; what `FractionalFirImpulse` raises; "FractionalKaiser: Offset parameter must be between 0 and 1!". `H` is
///         then as it was.
/// Precision: in double, rounded once to the precision of `H`.
PASSBAND_EXPORT std::int32_t FractionalKaiserImpulse(TVec& H, OpenArray W, double Ripple, double Offset, double Step,
                                                     TFilterType FilterType, bool Extended = false, double Gain = 1,
                                                     double FS = 2);

/// A lowpass over nearly the whole band (cut-off at 0.97995 of half the sampling frequency) that delays by a fraction of
/// a sample, windowed by Kaiser's window sampled at the same places.
///
///     ImpulseType   falp_160dB falp_140dB falp_140dB2 falp_100dB falp_60dB falp_50dB falp_50dB2
///     taps N        63         63         163         63         63        17        9
///     beta          17         14         14          10         5         4         4
///
/// \param H                in: `IsDouble`; out: N real taps
/// \param FractionalDelay  0 .. 1; 1 gives symmetric taps
/// \param ImpulseType      the name tells the attenuation behind the band and, with 2, another width of its transition
/// \param Gain             factor of all taps
/// \returns the delay in samples, (N - 1) / 2 - 1 + FractionalDelay
/// \throws ECoreError "FractionalImpulse: FractionalDelay param must be between 0 and 1!" (also for a NaN);
///         "FractionalImpulse: ImpulseType". `H` is then as it was.
/// Precision: in double, rounded once to the precision of `H`.
PASSBAND_EXPORT double FractionalImpulse(TVec& H, double FractionalDelay, TFractionalImpulse ImpulseType,
                                         double Gain = 1);

}  // namespace passband::SignalUtils
