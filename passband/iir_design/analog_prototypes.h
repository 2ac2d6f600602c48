// Analog lowpass filters with their cut-off at 1 rad/s, from which filters of all bands are made.
//
// H(s) = k prod(s - z[i]) / prod(s - p[i]). The zeros and poles are stored in the orders told below; second-order
// sections inherit them.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::IIRFilters {

/// The largest order of elliptic filters and of the designs in state space that check it.
inline constexpr std::int32_t MaxIirOrder = 50;

/// The Butterworth filter: |H|^2 = 1 / (1 + w^(2 N)), half the power at 1 rad/s; gain 1 at zero frequency.
///
/// \param Order  N, 1 .. 1000
/// \param z      out, empty; real or complex as it was
/// \param p      out, N complex poles e^(j a), a = pi (2 i - 1) / (2 N) + pi / 2, i = 1 .. N / 2, each followed by its
///               conjugate; -1 last for odd N
/// \param k      out, 1, in double
/// \throws ECoreError "z.IsDouble <> p.IsDouble"; "not (1 <= Order <= 1000)". A refused call writes nothing.
/// Precision: real and imaginary parts are right to one unit in the last place of the precision of `p`; exact zeros and
/// conjugates. Cost: O(N).
/// Literature: Butterworth, "On the theory of filter amplifiers", Wireless Engineer 7, 1930.
PASSBAND_EXPORT void ButterAnalog(std::int32_t Order, TVec& z, TVec& p, double& k);

/// The Chebyshev filter of type I: |H|^2 = 1 / (1 + eps^2 T_N(w)^2), eps^2 = 10^(Ripple / 10) - 1. The gain runs between
/// 1 and 10^(-Ripple / 20) up to 1 rad/s; at zero frequency it is 1 for odd N, the lower bound for even N.
///
/// \param Order   N, 1 .. 1000
/// \param Ripple  in dB, from peak to peak, 0 < Ripple <= 3000
/// \param z       out, empty; real or complex as it was
/// \param p       out, N complex poles sinh(mu) cos(a) + j cosh(mu) sin(a), a = pi (2 i - 1) / (2 N) + pi / 2,
///                mu = arsinh(1 / eps) / N: once round the left half plane from the upper end to the lower end, the real
///                one of odd N in the middle
/// \param k       out, 2^(1 - N) / eps, in double
/// \throws ECoreError "z.IsDouble <> p.IsDouble"; "not (1 <= Order <= 1000)"; "not (0 < Ripple <= 3000)"
/// Precision, cost: as `ButterAnalog`.
/// Literature: Weinberg, "Network analysis and synthesis", 1962, ch. 11.
PASSBAND_EXPORT void ChebyshevIAnalog(std::int32_t Order, double Ripple, TVec& z, TVec& p, double& k);

/// The Chebyshev filter of type II: |H|^2 = 1 / (1 + v^2 / T_N(1 / w)^2), v^2 = 10^(Attenuation / 10) - 1: falling
/// monotonically from the gain 1 at zero frequency, at most 10^(-Attenuation / 20) from 1 rad/s on.
///
/// \param Order        N, 1 .. 1000
/// \param Attenuation  in dB, 0 < Attenuation <= 3000
/// \param z            out, complex, on the imaginary axis: j / cos(pi m / (2 N)), m = 1, 3 .. 2 N - 1. For even N in
///                     this order (the upper half of the axis first), for odd N without m = N, each followed by its
///                     conjugate: N - 1 zeros
/// \param p            out, complex: the inverse values of the poles of type I with mu = arsinh(v) / N, in their order
/// \param k            out, Re(prod(-p) / prod(-z)), in double
/// \throws ECoreError "z.IsDouble <> p.IsDouble"; "not (1 <= Order <= 1000)"; "not (0 < Attenuation <= 3000)"
/// Precision, cost, literature: as `ChebyshevIAnalog`.
PASSBAND_EXPORT void ChebyshevIIAnalog(std::int32_t Order, double Attenuation, TVec& z, TVec& p, double& k);

/// The elliptic (Cauer) filter: ripples of `Ripple` dB up to 1 rad/s, `Attenuation` dB in the stop band, and between
/// both the narrowest transition that a filter of this order can have. The gain at zero frequency is 1 for odd N, the
/// bottom of the ripples for even N.
///
/// With k1^2 = (10^(Ripple / 10) - 1) / (10^(Attenuation / 10) - 1), the modulus k follows from the degree equation
/// K'(k) / K(k) = K'(k1) / (N K(k1)) by theta series in the smaller nome; the zeros are j / (k sn(j K / N)), and the pole
/// shift comes from Carlson's integral RF. Order 1 has the pole of the Chebyshev filter and ignores `Attenuation`.
///
/// \param Order        N, 1 .. 50
/// \param Ripple       in dB, 0 < Ripple <= 3000
/// \param Attenuation  in dB, Ripple < Attenuation, such that k1^2 does not vanish beside 1
/// \param z            out, N (even) or N - 1 (odd) complex zeros on the imaginary axis, each above its conjugate
/// \param p            out, N complex poles; the real one of odd N first, then pairs, the lower one first
/// \param k            out, Re(prod(-p) / prod(-z)), for even N divided by 10^(Ripple / 20), in double
/// \throws ECoreError "z.IsDouble <> p.IsDouble"; "not (1 < Order < MaxIirOrder)" (orders 1 and 50 are allowed); "Ripple
///         out of range!" when sqrt(1 - k1^2) rounds to 1; "not (0 < Ripple <= 3000)"; "not (0 < Attenuation <= 3000)";
///         "not (Ripple < Attenuation)". A refused call writes nothing.
/// Precision: relative errors of zeros, poles and gain below 4 eps (docs/accuracy.md). Cost: O(N).
/// Literature: Cauer, "Theorie der linearen Wechselstromschaltungen", 1941; Orfanidis, "Lecture notes on elliptic filter
/// design", 2006; Carlson, "Numerical computation of real or complex elliptic integrals", Numerical Algorithms 10, 1995.
PASSBAND_EXPORT void EllipticAnalog(std::int32_t Order, double Ripple, double Attenuation, TVec& z, TVec& p, double& k);

/// The Bessel filter: the group delay is as flat as it can be at zero frequency, where the gain is 1. Scaled so that it
/// falls off like the Butterworth filter of the same order, |H| -> w^(-N).
///
/// The poles are the roots of the reverse Bessel polynomial, divided by ((2 N)! / N!)^(1 / N) / 2.
///
/// \param Order  N, 1 .. 1000
/// \param z      out, empty; real or complex as it was
/// \param p      out, N complex poles; the real one of odd N first, then pairs up the axis, the upper one first
/// \param k      out, 1, in double
/// \throws ECoreError "z.IsDouble <> p.IsDouble"; "not (1 <= Order <= 1000)". A refused call writes nothing.
/// Precision: relative errors below 1 eps (docs/accuracy.md). Cost: O(N^2).
/// Literature: Thomson, "Delay networks having maximally flat frequency characteristics", Proc. IEE 96, 1949; Orchard,
/// "The roots of the maximally flat-delay polynomials", IEEE Trans. Circuit Theory 12, 1965.
PASSBAND_EXPORT void BesselAnalog(std::int32_t Order, TVec& z, TVec& p, double& k);

}  // namespace passband::IIRFilters
