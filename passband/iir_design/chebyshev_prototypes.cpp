#include <cmath>

#include "passband/iir_design/analog_prototypes.h"
#include "passband/iir_design/prototype_internal.h"

namespace passband::IIRFilters {
namespace {

using detail::Wide;
using detail::WideComplex;

// The poles of a Butterworth filter pressed onto an ellipse with the half-axes sinh(mu) and cosh(mu).
std::vector<WideComplex> PolesOnEllipse(std::int32_t order, Wide mu) {
  const Wide sinh = std::sinh(mu);
  const Wide cosh = std::cosh(mu);
  std::vector<WideComplex> poles;
  for (std::int32_t i = 1; i <= order; ++i) {
    const WideComplex on_circle = detail::ButterworthPole(i, order);
    poles.emplace_back(sinh * on_circle.real(), cosh * on_circle.imag());
  }
  return poles;
}

// 1 / x, its imaginary part exactly 0 for real x.
WideComplex Inverse(WideComplex x) {
  const Wide square = std::norm(x);
  return {x.real() / square, -x.imag() / square};
}

// j / cos(pi m / (2 n)).
WideComplex ZeroOnAxis(std::int32_t m, std::int32_t n) { return {0, 1 / detail::QuarterWave(n - m, n)}; }

}  // namespace

void ChebyshevIAnalog(std::int32_t Order, double Ripple, TVec& z, TVec& p, double& k) {
  detail::CheckPrecisions(z, p);
  detail::CheckOrder(Order);
  detail::CheckDecibels(Ripple, "not (0 < Ripple <= 3000)");
  const Wide eps = std::sqrt(detail::ExcessPower(Ripple));
  detail::Prototype prototype;
  prototype.poles = PolesOnEllipse(Order, std::asinh(1 / eps) / static_cast<Wide>(Order));
  // The product of the poles, of which an even order takes the bottom of the ripple band.
  prototype.k = std::ldexp(1 / eps, 1 - Order);
  detail::Store(prototype, z, p, k);
}

void ChebyshevIIAnalog(std::int32_t Order, double Attenuation, TVec& z, TVec& p, double& k) {
  detail::CheckPrecisions(z, p);
  detail::CheckOrder(Order);
  detail::CheckDecibels(Attenuation, "not (0 < Attenuation <= 3000)");
  detail::Prototype prototype;
  const Wide mu = std::asinh(std::sqrt(detail::ExcessPower(Attenuation))) / static_cast<Wide>(Order);
  prototype.poles = PolesOnEllipse(Order, mu);
  for (WideComplex& pole : prototype.poles) pole = Inverse(pole);
  for (std::int32_t i = 1; i <= Order; ++i) {
    if (Order % 2 == 0) {
      prototype.zeros.push_back(ZeroOnAxis(2 * i - 1, Order));
    } else if (i <= Order / 2) {
      prototype.zeros.push_back(ZeroOnAxis(2 * i - 1, Order));
      prototype.zeros.push_back(std::conj(prototype.zeros.back()));
    }
  }
  prototype.k = detail::UnitGain(prototype);
  detail::Store(prototype, z, p, k);
}

}  // namespace passband::IIRFilters
