// Mirrored spectra.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Extends the half spectrum of a real signal of even length, bins 0 .. L - 1, to all 2 (L - 1) bins: bin 2 (L - 1) - k is
/// the conjugate of bin k, k = 1 .. L - 2.
///
/// \param Vec  complex; an empty vector stays empty
/// \returns `Vec`
/// \throws Exception "not Src.Complex"
PASSBAND_EXPORT TVec& ConjExtend(TVec& Vec);
/// The same into `Dst`, of an odd number of bins, as the half spectrum of a length that is a multiple of 4 has.
/// \throws ECoreError "Src.Complex = false", "Odd(Src.Length) = false"
PASSBAND_EXPORT void ConjExtend(const TVec& Src, TVec& Dst);

/// Mirrors the spectrum: of a complex signal about 0, by conjugation; of a real one about a quarter of the sampling
/// frequency, by negating every second sample, from the second one on.
/// \throws ECoreError "Odd(X.Length) = True!" (real)
PASSBAND_EXPORT void BandFlip(TVec& X);

}  // namespace passband::SignalUtils
