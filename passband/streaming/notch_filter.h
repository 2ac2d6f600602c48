// A filter that takes out one frequency.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Coefficients of the notch filter with zeros exp(+-j w) on the unit circle and poles r exp(+-j w) right behind them,
/// w = 2 pi NotchFrequency / FS: Num = {1, -2 cos w, 1}, Den = {1, -2 r cos w, r^2}.
///
/// \param NotchFrequency  0 .. FS / 2
/// \param r               0 .. 1; the notch is about (1 - r) FS / pi wide (at 3 dB), the filter rings for some 1 / (1 - r) samples.
///                        Away from the notch the gain is not exactly 1: ((2 + 2 cos w) / (1 + 2 r cos w + r^2)) at FS / 2.
/// \param Num, Den        three real elements each, in their precision; for `IirInit`
/// \param FS              sampling frequency
/// \throws ECoreError "not (0 < r < 1)"; "not (0 < NotchFrequency < FS/2)". The ends are accepted; r = 1 leaves no filter.
/// Literature: Hirano, Nishimura, Mitra, "Design of digital notch filters", IEEE Trans. Circuits Syst. 21, 1974.
PASSBAND_EXPORT void NotchFilter(double NotchFrequency, double r, TVec& Num, TVec& Den, double FS = 2);

}  // namespace passband::SignalUtils
