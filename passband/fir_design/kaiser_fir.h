// Linear-phase FIR design from a ripple: length and window by Kaiser's formulas. Band edges as in windowed_fir.h.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/foundation/open_array.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Kaiser's estimate of the length of a filter with the transition band W[0] .. W[1]: with A = -20 log10(Ripple) and
/// D = |W[1] - W[0]| / (FS/2), round((A - 8) / (2.285 pi D)), ties to even. Nothing is added, so small A give a length
/// of 0 or below.
///
/// \param W       the two edges of a transition band, in the unit of `FS`; no edges: the result is 0
/// \param Ripple  the larger of the deviations in pass and stop band, as a ratio, 0 < Ripple < 1 (not checked)
/// \param FS      sampling frequency
/// \returns the length; estimates beyond 32 bits (a transition band of width 0) are clamped to them, a NaN gives 0
/// \throws Exception "Length(W) <> 2"
/// Literature: J. F. Kaiser, "Nonrecursive digital filter design using the I0-sinh window function", IEEE Int. Symp.
/// Circuits and Systems, 1974.
PASSBAND_EXPORT std::int32_t KaiserFirLength(OpenArray W, double Ripple, double FS = 2);

/// The parameter beta of the Kaiser window for a ripple: with A = -20 log10(Ripple), 0.1102 (A - 8.7) for A > 50,
/// 0.5842 (A - 21)^0.4 + 0.07886 (A - 21) for 21 <= A <= 50, and 0 below.
/// Literature: as `KaiserFirLength`.
PASSBAND_EXPORT double KaiserBetaFir(double Ripple);

/// Designs a filter whose deviation from the ideal stays near `Ripple`, its length estimated from the narrower
/// transition band. Hilbert transformers and differentiators take W[0] as the edge below FS/2 up to which they work:
/// their transition band is 2 (FS/2 - W[0]) wide and their ripple is halved.
///
/// \param H           in: `IsDouble`; out: 4 to 10000 real taps
/// \param W           2 or 4 edges; of two edges a lowpass or highpass takes the transition band, a bandpass or
/// bandstop
///                    its cut-offs (and the length then follows from their distance)
/// \param Ripple      as for `KaiserFirLength`
/// \param FilterType  one of the first eight; odd or even lengths as in `FirImpulse`, before the length is clamped
/// \param Gain        factor of all taps
/// \param FS          sampling frequency
/// \param OddLength   makes an even length odd, after the rule of the type: a type IV filter then has a zero tap at its
///                    centre
/// \throws ECoreError "(Length(W) <> 2) and (Length(W) <> 4)"; "FilterType not supported!"; and what the ideal response
/// of
///         `FirImpulse` raises. `H` is then as it was.
/// Precision: in double, rounded once to the precision of `H`.
PASSBAND_EXPORT void KaiserImpulse(TVec& H, OpenArray W, double Ripple, TFilterType FilterType, double Gain = 1,
                                   double FS = 2, bool OddLength = false);

}  // namespace passband::SignalUtils
