// The group delay of digital filters.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// The group delay -d arg H / d w in samples, tau = Re(FFT(n h[n]) / FFT(h[n])) of the numerator minus that of the
/// denominator, on the frequencies of `FrequencyResponse`.
///
/// \param Dst          real, in the precision of `Num`: n / 2 + 1 values of real coefficients, n of complex ones; may be
///                     `Num` or `*Den`
/// \param Num          coefficients in ascending powers of z^-1, at least one
/// \param Den          the same of the denominator, or nullptr
/// \param ZeroPadding  at least how many times more points than coefficients, >= 1
/// \throws ECoreError "ZeroPadding < 1", "GroupDelay: Num.Length = 0", "LargestExp2: n > 2^30". `Dst` is then as it was.
/// Precision: in double, rounded once; next to a zero of H the delay is as uncertain as the spectrum there. At a bin
/// where the spectrum of a part vanishes (below 4 eps of the sum of its coefficients) its delay counts as 0.
/// Cost: two transforms for each part.
/// Literature: Smith, "Introduction to Digital Filters", 2007, numerical computation of group delay; Shynk, "On the
/// computation of group delay".
PASSBAND_EXPORT void GroupDelay(TVec& Dst, const TVec& Num, const TVec* Den = nullptr, std::int32_t ZeroPadding = 1);

/// A phase slope from the first difference D of the spectrum A: (Re D Im A - Re A Im D) / |A|^2, about the advance of
/// the phase from a bin to the next one, in radians a bin, of an FIR filter. With a denominator both differences are
/// scaled by n over the number of coefficients of their part, and the term of the denominator is subtracted. It is not a
/// delay in samples: use `GroupDelay` for that. The last bin repeats the difference of the one before.
///
/// \param Dst, Num, Den, ZeroPadding  as of `GroupDelay`
/// \throws ECoreError "Num.IsDouble <> Den.IsDouble", "ZeroPadding < 1", "GroupDelay: Num.Length = 0", "LargestExp2: n >
///         2^30". `Dst` is then as it was.
/// Precision: in double, rounded once; 0 where a spectrum vanishes. Cost: one transform for each part.
PASSBAND_EXPORT void GroupDelay2(TVec& Dst, const TVec& Num, const TVec* Den = nullptr, std::int32_t ZeroPadding = 1);

}  // namespace passband::SignalUtils
