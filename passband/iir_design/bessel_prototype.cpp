// Bessel filters without their polynomial, whose roots 30 coefficients in double precision do not hold any more.
//
// The reverse Bessel polynomial is theta(s) = s^N sqrt(2 s / pi) e^s K(s), K the modified Bessel function of the order
// nu = N + 1/2. A root s = -x, Re x > 0, is where the analytic continuation of K through the cut vanishes: there
// K(x) / I(x) = -(-1)^N pi. Both functions are computed by recurrences in their stable directions, and the logarithm of
// their quotient is so smooth that Newton's iteration doubles its digits from Debye's expansion on.
// Literature: Abramowitz, Stegun, "Handbook of mathematical functions", 9.6, 9.7; Olver, "The asymptotic expansion of
// Bessel functions of large order", Phil. Trans. A 247, 1954; Thomson, "Delay networks having maximally flat frequency
// characteristics", Proc. IEE 96, 1949.
#include <cmath>
#include <numbers>

#include "passband/iir_design/analog_prototypes.h"
#include "passband/iir_design/prototype_internal.h"

namespace passband::IIRFilters {
namespace {

using detail::Wide;
using detail::WideComplex;

// The exponent of Debye's expansion: K(nu x) / I(nu x) is about pi e^(-2 nu eta(x)).
WideComplex Eta(WideComplex x) {
  const WideComplex r = std::sqrt(Wide(1) + x * x);
  return r + std::log(x / (Wide(1) + r));
}

// The x near `from` with eta(x) = j angle.
WideComplex InverseOfEta(WideComplex from, Wide angle) {
  WideComplex x = from;
  for (int step = 0; step < 6; ++step) {
    x -= (Eta(x) - WideComplex(0, angle)) * x / std::sqrt(Wide(1) + x * x);
  }
  return x;
}

// I of order nu + 1 over I of order nu, by its continued fraction from far enough behind.
WideComplex RatioOfI(std::int32_t order, WideComplex x) {
  const std::int32_t beyond = 30 + static_cast<std::int32_t>(12 * std::cbrt(order));
  WideComplex ratio = 0;
  for (std::int32_t n = order + beyond; n >= order; --n) {
    ratio = Wide(1) / (static_cast<Wide>(2 * n + 3) / x + ratio);
  }
  return ratio;
}

// The step of Newton's iteration for log(-(-1)^N K / (pi I)) = 0. By the Wronskian, 1 / (x I K) is the sum of the ratios
// of neighbouring orders, and the derivative of the logarithm is minus that sum.
WideComplex NewtonStep(std::int32_t order, WideComplex x) {
  // K of order n + 1/2 over that of order 1/2.
  WideComplex before = 1;
  WideComplex k = 1;
  for (std::int32_t n = 0; n < order; ++n) {
    const WideComplex next = before + static_cast<Wide>(2 * n + 1) / x * k;
    before = k;
    k = next;
  }
  const WideComplex ratio_of_k = before / k + static_cast<Wide>(2 * order + 1) / x;
  const WideComplex sum = ratio_of_k + RatioOfI(order, x);
  const Wide sign = order % 2 == 0 ? -1 : 1;
  return std::log(sign * std::exp(-Wide(2) * x) * k * k * sum / Wide(2)) / sum;
}

// The geometric mean of the poles before scaling: ((2 N)! / N!)^(1 / N) / 2.
Wide MeanOfPoles(std::int32_t order) {
  Wide sum = 0;
  for (std::int32_t n = order + 1; n <= 2 * order; ++n) sum += std::log(static_cast<Wide>(n));
  return std::exp(sum / static_cast<Wide>(order)) / 2;
}

}  // namespace

void BesselAnalog(std::int32_t Order, TVec& z, TVec& p, double& k) {
  detail::CheckPrecisions(z, p);
  detail::CheckOrder(Order);
  const Wide nu = static_cast<Wide>(Order) + Wide(0.5);
  const Wide mean = MeanOfPoles(Order);
  detail::Prototype prototype;
  WideComplex start = 0.66274341934918158L;  // eta = 0
  // eta = j pi m / (2 nu), m from the real axis up; each solution starts the search for the next.
  for (std::int32_t m = 1 - Order % 2; m < Order; m += 2) {
    start = InverseOfEta(start, std::numbers::pi_v<Wide> * static_cast<Wide>(m) / (2 * nu));
    WideComplex x = nu * start;
    for (int step = 0; step < 4; ++step) x += NewtonStep(Order, x);
    if (m == 0) {
      prototype.poles.emplace_back(-x.real() / mean);
    } else {
      prototype.poles.push_back(-std::conj(x) / mean);
      prototype.poles.push_back(-x / mean);
    }
  }
  detail::Store(prototype, z, p, k);
}

}  // namespace passband::IIRFilters
