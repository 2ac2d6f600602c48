// Linear-phase FIR design by the window method: the ideal impulse response, cut off and windowed.
//
// Band edges `W` are in the unit of the sampling frequency `FS`; with FS = 2 they are relative to half of it. One edge
// is a cut-off. Two edges of a lowpass or highpass bound its transition band, whose middle is the cut-off; two edges of
// a bandpass or bandstop are its cut-offs, four bound its two transition bands. Hilbert transformers and
// differentiators use no edges but want 1, 2 or 4 all the same. Edges are not checked against [0, FS/2].
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/foundation/open_array.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Writes the ideal response into the taps of `H`. With L = H.Length, M = (L - 1) / 2, x = n - M, and the cut-offs f1 <
/// f2 relative to FS/2, tap n is
///
///     ftLowpass            sin(pi f1 x) / (pi x)
///     ftHighpass           d(x) - sin(pi f1 x) / (pi x)                       d = 1 at x = 0, else 0
///     ftBandpass           (sin(pi f2 x) - sin(pi f1 x)) / (pi x)
///     ftBandstop           d(x) - (sin(pi f2 x) - sin(pi f1 x)) / (pi x)
///     ftHilbertIII, IV     2 sin^2(pi x / 2) / (pi x)                         0 at x = 0
///     ftDifferentiator..   FS (cos(pi x) / x - sin(pi x) / (pi x^2))          0 at x = 0
///     other types          `H` stays as it is
///
/// with its limit at x = 0. Even lengths of ftHighpass and ftBandstop have no tap at x = 0 and therefore none of the
/// d(x).
///
/// \param H           in: the length and `IsDouble`; out: real taps
/// \param W           1, 2 or 4 edges
/// \param FilterType  see the table
/// \param FS          sampling frequency, the unit of `W`; differentiators give the slope per unit of time
/// \throws ECoreError "not (1 < Length(W) < 2)" for a lowpass or highpass with other than 1 or 2 edges; "not (2 <
///         Length(W) < 4)" for a bandpass or bandstop with other than 2 to 4; Exception "Length(W) must be 1,2 or 4"
/// Precision: in double, rounded once to the precision of `H`; a few eps of each term for every length.
/// Literature: Oppenheim, Schafer, "Discrete-Time Signal Processing", 3rd ed., ch. 7.5; Rabiner, Schafer, "On the
/// behavior of minimax FIR digital Hilbert transformers", Bell Syst. Tech. J. 53, 1974.
PASSBAND_EXPORT void FirImpulse(TVec& H, OpenArray W, TFilterType FilterType, double FS = 2);

/// Designs a filter: the ideal response, times the symmetric window, times `Gain`.
///
/// The length is H.Length, one more where the type asks for it: odd for ftHighpass, ftBandstop, ftHilbertIII and
/// ftDifferentiatorIII, even for ftHilbertIV and ftDifferentiatorIV; then at most 10000. The gain in the pass band is
/// that of the windowed ideal response, close to 1, times `Gain`.
///
/// \param H            in: length (at least 4) and `IsDouble`; out: the taps, real
/// \param WindowParam  parameter of the window, where it has one (`SignalWindow`)
/// \param WindowType   the window
/// \param Gain         factor of all taps
/// \throws ECoreError "H.Length < 4"; "FilterType not supported!" from ftDoubleDifferentiatorIII on; and what the ideal
///         response raises. `H` is then as it was.
/// Precision: in double, rounded once to the precision of `H`.
PASSBAND_EXPORT void FirImpulse(TVec& H, OpenArray W, double WindowParam, TFilterType FilterType,
                                TSignalWindowType WindowType, double Gain = 1, double FS = 2);

}  // namespace passband::SignalUtils
