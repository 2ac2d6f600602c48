// FIR filters from an amplitude response that is given at single frequencies.
#pragma once

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Designs a filter of linear phase by frequency sampling: the amplitude, interpolated by straight lines onto a grid of n + 1
/// frequencies, n the power of two from L on, with the phase of a delay of (L - 1) / 2 samples, is transformed back, cut
/// to L taps and windowed.
///
/// \param Amplt       the wanted amplitude at each frequency, real; an inverse filter takes 1 / |H| of what it makes up for
/// \param Freq        real, ascending from 0 to 1, 1 being half the sampling frequency; in the precision of `Amplt`
/// \param H           in: its length L >= 1 is that of the filter; out: L real taps in the precision of `Amplt`
/// \param WindowType  window over the taps, symmetric, parameter 0
/// \throws ECoreError "InverseFilter: Amplt.Length <> Freq.Length"; "InverseFilter: Amplt.Complex or Freq.Complex", also
///         for different precisions; "InverseFilter: H.Length is zero but should be equal to desired Length on input!";
///         "InverseFilter: First and last frequency specified must be 0 and 1!" (within 1e-5), also without frequencies;
///         "InverseFilter: Frequency must be monotonic (increasing)!", also for a NaN. `H` is then as it was.
/// Precision: in double, rounded once. The response meets the grid up to what the window smears. Cost: one transform of 2 n.
/// Literature: Oppenheim, Schafer, "Discrete-Time Signal Processing", ch. 7; Rabiner, Gold, McGonegal, "An approach to
/// the approximation problem for nonrecursive digital filters", IEEE Trans. Audio Electroacoust. 18, 1970.
PASSBAND_EXPORT void InverseFilter(const TVec& Amplt, const TVec& Freq, TVec& H, TSignalWindowType WindowType);

/// Designs a filter that turns white noise into coloured noise: its amplitude falls by `DbPerDecade` decibels a decade (and
/// rises for a negative one) from StartBW to half the sampling frequency; largest gain 1. 10 gives pink noise, 20 brown.
///
/// \param H            in: `IsDouble`; out: L = max(Round(512 r), 512) real taps, made odd, r = FS |DbPerDecade| / 163840
/// \param DbPerDecade  not 0, finite
/// \param StartBW      lower end of the slope, 0 < StartBW < FS / 2; a response that falls stays about level below
/// \param FS           sampling frequency
/// \throws ECoreError "DbPerDecade = 0!", "StartBW <= 0!", "FS <= 0!", also for a NaN; "ColoredNoiseFIR: not (StartBW <
///         FS / 2)"; "ColoredNoiseFIR: DbPerDecade or FS is too large" beyond 2^28 points. `H` is then as it was.
/// Precision: in double, rounded once; the slope is met within 0.1 dB from some multiples of FS / L on.
/// Cost: transforms of about 2048 r and 8 L points.
/// Literature: as `InverseFilter`.
PASSBAND_EXPORT void ColoredNoiseFIR(TVec& H, double DbPerDecade, double StartBW, double FS);

}  // namespace passband::SignalUtils
