// Spectra of autoregressive models.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// 1 / |A(e^jw)| of the model A of a signal on n equally spaced frequencies once round: the amplitude spectrum of the
/// signal but for the factor sqrt(variance), which is left out.
///
/// \param Src          as for the estimator: `ArYuleWalker`, `ArBurg`, `ArCovariance`, `ArMCovariance`
/// \param Dst          real, in the precision of `Src`: n values, from frequency 0 in steps of 1/n of the sampling
///                     frequency; n is the power of two from ZeroPadding times the length of A on. Of a real signal the
///                     second half mirrors the first. May be `Src`.
/// \param Order        the order of the model; the last three take min(Order, Src.Length div 2)
/// \param ZeroPadding  at least how many times more frequencies than coefficients, >= 1
/// \throws what the estimator throws; ECoreError "ZeroPadding < 1", "LargestExp2: n > 2^30". `Dst` is then as it was.
/// Precision: model, transform and magnitude in double, rounded once; infinite where a zero of A lies on a frequency.
/// Cost: the model and one transform, whose plan is kept.
/// Literature: Kay, "Modern Spectral Estimation", 1988, chapter 7.
PASSBAND_EXPORT void ArYuleWalkerSpectrum(const TVec& Src, TVec& Dst, std::int32_t Order, std::int32_t ZeroPadding = 1);
PASSBAND_EXPORT void ArBurgSpectrum(const TVec& Src, TVec& Dst, std::int32_t Order, std::int32_t ZeroPadding = 1);
PASSBAND_EXPORT void ArCovarianceSpectrum(const TVec& Src, TVec& Dst, std::int32_t Order, std::int32_t ZeroPadding = 1);
PASSBAND_EXPORT void ArMCovarianceSpectrum(const TVec& Src, TVec& Dst, std::int32_t Order,
                                           std::int32_t ZeroPadding = 1);

}  // namespace passband::SignalUtils
