// Cosine-sum windows: w[n] = a0 - a1 cos(2 pi n / D) + a2 cos(4 pi n / D), n = 0 .. Len - 1.
//
// The mode sets the denominator. `wmSymmetric` has D = Len - 1 and the same value at both ends: for filter design.
// `wmPeriodic` has D = Len, which is one period, the symmetric window of length Len + 1 without its last point: for a
// discrete Fourier transform.
//
// All of them multiply Vec[Index + n] by w[n] in place and return `Vec`; `Len` = -1 is up to the end. They take any
// precision; a complex element is scaled by the real w[n]; elements outside the stretch are not touched. A stretch that
// leaves `Vec` raises ECoreError with the text of `TVec::ValidateParams`, and nothing changes.
//
// Precision: w is computed in double and rounded once to the precision of `Vec`. Its error in double is below 4e-16
// (6e-16 for `FlatTop`) at every length and, where w goes to 0 at the ends, below 1e-14 w; w[n] = w[D - n] to the last
// bit. Cost: one pass over the stretch; allocates nothing. Literature: Harris, "On the use of windows for harmonic
// analysis with the discrete Fourier transform", Proceedings of the IEEE 66, January 1978.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// w[n] = 0.5 - 0.5 cos(2 pi n / D): zero at the ends, first side lobe at -31.5 dB, falling by 18 dB an octave.
/// Stretches of fewer than 3 elements are left as they are.
PASSBAND_EXPORT TVec& Hanning(TVec& Vec, TSignalWindowMode Mode = TSignalWindowMode::wmSymmetric,
                              std::int32_t Index = 0, std::int32_t Len = -1);

/// w[n] = 0.54 - 0.46 cos(2 pi n / D): 0.08 at the ends, side lobes below -42 dB.
/// Stretches of fewer than 3 elements are left as they are.
PASSBAND_EXPORT TVec& Hamming(TVec& Vec, TSignalWindowMode Mode = TSignalWindowMode::wmSymmetric,
                              std::int32_t Index = 0, std::int32_t Len = -1);

/// w[n] = (Alpha + 1) / 2 - 0.5 cos(2 pi n / D) - Alpha / 2 cos(4 pi n / D): zero at the ends and 1 in the middle for
/// every finite `Alpha`; -0.16 is the classic window (side lobes below -58 dB), 0 is `Hanning`.
/// For single precision data `Alpha` is rounded to single precision first. An `Alpha` that is a NaN or an infinity
/// gives NaN. Stretches of fewer than 4 elements are left as they are.
PASSBAND_EXPORT TVec& Blackman(TVec& Vec, double Alpha = -0.16, TSignalWindowMode Mode = TSignalWindowMode::wmSymmetric,
                               std::int32_t Index = 0, std::int32_t Len = -1);

/// The symmetric window of `Blackman` with Alpha = -0.5 / (1 + cos(2 pi / (Len - 1))), which puts zeros also beside the
/// ends, w[1] = w[Len - 2] = 0 but for rounding (below 1e-16), and so the steepest fall of far side lobes.
/// Stretches of fewer than 4 elements are left as they are.
PASSBAND_EXPORT TVec& BlackmanOptimal(TVec& Vec, std::int32_t Index = 0, std::int32_t Len = -1);

/// a0 = 0.42659071, a1 = 0.49656062, a2 = 0.07684867: Blackman's coefficients with more digits, which put zeros of the
/// transform on the third and fourth side lobe; side lobes below -68 dB. One element is left as it is when symmetric.
PASSBAND_EXPORT TVec& BlackmanExact(TVec& Vec, TSignalWindowMode Mode = TSignalWindowMode::wmSymmetric,
                                    std::int32_t Index = 0, std::int32_t Len = -1);

/// a0 = 0.42323, a1 = 0.49755, a2 = 0.07922: the lowest highest side lobe of all three-term windows, -71 dB.
/// One element is left as it is when symmetric.
PASSBAND_EXPORT TVec& BlackmanHarris(TVec& Vec, TSignalWindowMode Mode = TSignalWindowMode::wmSymmetric,
                                     std::int32_t Index = 0, std::int32_t Len = -1);

/// a0 = 0.2810639, a1 = 0.5208972, a2 = 0.1980399: a main lobe so flat that the amplitude of a tone between two bins of
/// a transform reads true within about 0.02 dB. The ends are negative, the middle is 1.000001.
/// One element is left as it is when symmetric.
/// Literature: Heinzel, Ruediger, Schilling, "Spectrum and spectral density estimation by the discrete Fourier
/// transform (DFT), including a comprehensive list of window functions and some new flat-top windows", Max Planck
/// Institute for Gravitational Physics, 2002.
PASSBAND_EXPORT TVec& FlatTop(TVec& Vec, TSignalWindowMode Mode = TSignalWindowMode::wmSymmetric,
                              std::int32_t Index = 0, std::int32_t Len = -1);

}  // namespace passband::SignalUtils
