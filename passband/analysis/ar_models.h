// Autoregressive models: x[n] + a1 x[n - 1] + ... + ap x[n - p] = e[n] with white e. Every estimator returns the filter
// A = [1, a1, ..., ap] whose output is the prediction error e.
//
// Common to all: the signal is real or complex, single or double; the results take its precision and complex flag, are
// computed aside and stored together, and may be the signal itself. Order 0 gives A = [1]. The level of the signal does
// not matter: its squares may leave the range of its precision.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// The Yule-Walker (autocorrelation) method: the prediction errors over all time, with zeros outside the signal, are
/// least. Always stable, but biased; a window on the signal helps.
///
/// \param Src    N samples
/// \param Dst    A, of order p = min(Order, N)
/// \param Order  >= 0
/// \throws Exception "ArYuleWalker: Order < 0"; ECoreError "ArYuleWalker: an element is not finite"
/// Precision: the biased autocorrelation and the Levinson-Durbin recursion in double, rounded once.
/// Cost: p N, or a transform when p is large; and p^2.
/// Literature: Kay, "Modern Spectral Estimation", 1988, section 7.3.
PASSBAND_EXPORT void ArYuleWalker(const TVec& Src, TVec& Dst, std::int32_t Order);

/// Burg's method: stage m of a lattice, f[n] + k b[n - 1] and b[n - 1] + conj(k) f[n], has the reflection coefficient
///   k_m = -2 sum f[n] conj(b[n - 1]) / sum |f[n]|^2 + |b[n - 1]|^2,
/// which makes its forward and backward errors together least. Stable, and sharp on short signals.
///
/// \param c      N >= 2 Order samples
/// \param Order  p >= 0
/// \param Dst    A: a_j + k_m conj(a_(m-j)) from order to order
/// \param Refl   k_1 .. k_p, |k_m| <= 1; 0 where the errors have vanished
/// \param Err    variance of e: the mean power of the signal times the product of all 1 - |k_m|^2
/// \throws Exception "ArBurg: Order < 0", "Burg: Order*2 > c.Length"; ECoreError "ArBurg: an element is not finite"
/// Precision: errors in the precision of the signal, sums, coefficients and variance in double, rounded once. Cost: one
/// walk over the errors an order; about 0.25 ns a sample and order in double precision within the caches.
/// Literature: Burg, "Maximum entropy spectral analysis", 1975; Kay, "Modern Spectral Estimation", 1988, section 7.5.
PASSBAND_EXPORT void ArBurg(const TVec& c, std::int32_t Order, TVec& Dst, TVec& Refl, double& Err);

/// The covariance method: sum |e[n]|^2 over n = p .. N - 1, forward errors only, is least. Exact on noiseless decaying
/// exponentials; the model may be unstable.
///
/// \param x      N >= 2 Order samples
/// \param Order  p >= 0
/// \param Dst    A; where the samples do not determine it (a constant signal), that of the least sum |a_j|^2
/// \param Err    variance of e: the sum divided by N - p; 0 when there are no samples
/// \throws Exception "ArCovariance: Order < 0", "x.Length < 2*Order"; ECoreError "ArCovariance: an element is not
///         finite"
/// Precision: least squares by orthogonal transformations in double, rounded once; the variance comes from the residual
/// and keeps its digits however small it is. Cost: 2 N (p + 1)^2 operations; memory does not grow with N.
/// Literature: Kay, "Modern Spectral Estimation", 1988, section 7.4; Golub, Van Loan, "Matrix Computations", 4th ed.,
/// 2013, section 6.5 (appending rows).
PASSBAND_EXPORT void ArCovariance(const TVec& x, std::int32_t Order, TVec& Dst, double& Err);

/// The modified covariance (forward-backward) method: the forward errors and the backward ones,
/// x*[n - p] + a1 x*[n - p + 1] + ... + ap x*[n], over n = p .. N - 1 are least together. The sharpest on sinusoids in
/// noise, without line splitting; the model is not always stable.
///
/// Like `ArCovariance`, with N >= 3/2 Order samples, `Err` the sum divided by 2 (N - p), and twice the cost.
/// \throws Exception "ArMCovariance: Order < 0", "Order*3.0/2.0 > x.Length"; ECoreError "ArMCovariance: an element is
///         not finite"
/// Literature: Marple, "A new autoregressive spectrum analysis algorithm", IEEE Trans. ASSP 28, 1980.
PASSBAND_EXPORT void ArMCovariance(const TVec& x, std::int32_t Order, TVec& Dst, double& Err);

}  // namespace passband::SignalUtils
