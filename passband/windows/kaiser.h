// The Kaiser window and its parameter.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Multiplies a stretch of `Vec` by the Kaiser window, with M = (Len - 1) / 2 and I0 the modified Bessel function,
///
///   w[n] = I0(Beta sqrt(u)) / I0(Beta),  u = 1 - t^2,  t = (n - M) / M,  n = 0 .. Len - 1
///
/// and w[n] = 0 where u <= 0. The first and the last point, where u is 0 or a rounding error of either sign, are thus
/// either 0 or 1 / I0(Beta), by the rounding of (n - M) (1 / M) in double: 0 for most lengths, not 0 for 50, for
/// example. There a value below 2.2e-20 (double data) or 1.2e-11 (single data) is replaced by 0.
///
/// \param Vec    any precision; a complex element is scaled by the real w[n]; the rest of `Vec` is not touched
/// \param Beta   shape: 0 is rectangular (but for the ends), 5 to 14 are usual; only its magnitude counts. See
///               `KaiserBetaWindow`. No limit: values whose I0 leaves the range of a double are taken too. An infinity
///               or a NaN gives NaN where u > 0
/// \param Index  first element of the stretch, from 0
/// \param Len    elements in the stretch, -1: up to the end; 0 does nothing, 1 leaves the element as it is
/// \return       `Vec`
/// \throws ECoreError, text of `TVec::ValidateParams`, when the stretch leaves `Vec`; nothing has changed then
/// Precision: w is computed in double, relative error about 1e-16 (1 + |Beta|), and rounded once to the precision of
/// `Vec`.
/// Cost: the power series of I0 in u has about 20 + |Beta| terms, a multiplication and an addition each, for Len / 2
/// points; one pass over the stretch; allocates nothing once the pool is warm.
/// Literature: Kaiser, "Nonrecursive digital filter design using the I0-sinh window function", IEEE International
/// Symposium on Circuits and Systems, 1974.
PASSBAND_EXPORT TVec& Kaiser(TVec& Vec, double Beta, std::int32_t Index = 0, std::int32_t Len = -1);

/// The Kaiser window sampled off its grid: t = (Offset + Step n - M) / M, for filters that delay by a fraction.
///
/// \param Offset  place of the first sample in samples, 0 .. 1
/// \param Step    distance of the samples, 1 for the usual grid; w is 0 outside the window's span
/// \throws ECoreError "FractionalKaiser: Offset parameter must be between 0 and 1!" when `Offset` is outside [0, 1] or
/// a
///         NaN, before anything else; then as `Kaiser`
/// Cost: as `Kaiser`, for Len points.
PASSBAND_EXPORT TVec& FractionalKaiser(TVec& Vec, double Beta, double Offset, double Step, std::int32_t Index = 0,
                                       std::int32_t Len = -1);

/// I0(X), the modified Bessel function of the first kind and order 0, by its power series, the sum of
/// ((X / 2)^k / k!)^2 over k >= 0, to about 1e-16 relative error; infinite from |X| = 714 on, NaN for a NaN.
/// Cost: about 20 + |X| terms.
PASSBAND_EXPORT double BesselI0(double X);

/// The `Beta` for side lobes `Att` dB below the main lobe of the window's transform. `Att` is clamped to [13, 300]:
///
///   0 below 13.26 dB,  0.76609 (Att - 13.26)^0.4 + 0.09834 (Att - 13.26) to 60 dB,  0.12438 (Att + 6.3) above
///
/// A NaN stays one.
/// Literature: Kaiser, Schafer, "On the use of the I0-sinh window for spectrum analysis", IEEE Transactions on
/// Acoustics, Speech, and Signal Processing 28, February 1980.
PASSBAND_EXPORT double KaiserBetaWindowAtt(double Att);

/// The `Beta` for side lobes of height `Ripple`, a ratio to the main lobe: KaiserBetaWindowAtt(-20 log10(Ripple)). A
/// zero is taken as -300 dB; a negative value or a NaN gives NaN.
PASSBAND_EXPORT double KaiserBetaWindow(double Ripple);

}  // namespace passband::SignalUtils
