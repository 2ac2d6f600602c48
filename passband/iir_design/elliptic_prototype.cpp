// Elliptic filters by theta series and Landen's transformation instead of a search for the modulus: Orfanidis, "Lecture
// notes on elliptic filter design", 2006; Abramowitz, Stegun, "Handbook of mathematical functions", 16.27, 17.3.
#include <boost/math/special_functions/ellint_rf.hpp>
#include <cmath>
#include <numbers>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/iir_design/analog_prototypes.h"
#include "passband/iir_design/prototype_internal.h"
#include "passband/vector_core/landen_internal.h"

namespace passband::IIRFilters {
namespace {

using detail::QuarterWave;
using detail::Wide;
using Means = passband::detail::LandenMeans<Wide>;
using Functions = passband::detail::Jacobi<Wide>;

// A modulus and its complement, both to all digits: neither follows from the other where it is small.
struct Modulus {
  Wide k;
  Wide complement;
};

// The pair with the nome q <= exp(-pi), k <= complement, from Jacobi's theta constants.
Modulus FromNome(Wide q) {
  // theta2 = 2 q^(1/4) below, theta3 = above, theta4 = alternating; the terms left out are below q^16 = 1e-22.
  const Wide below = 1 + q * q * (1 + std::pow(q, 4) * (1 + std::pow(q, 6)));
  const Wide square_terms = q + std::pow(q, 9);
  const Wide even_terms = std::pow(q, 4);
  const Wide above = 1 + 2 * (even_terms + square_terms);
  const Wide alternating = 1 + 2 * (even_terms - square_terms);
  const Wide ratio = below / above;
  return {4 * std::sqrt(q) * ratio * ratio, alternating * alternating / (above * above)};
}

// The modulus with K' / K = ratio.
Modulus FromPeriods(Wide ratio) {
  if (ratio >= 1) return FromNome(std::exp(-std::numbers::pi_v<Wide> * ratio));
  const Modulus swapped = FromNome(std::exp(-std::numbers::pi_v<Wide> / ratio));
  return {swapped.complement, swapped.k};
}

// The selectivity of a filter and its pole shift.
struct Shape {
  Modulus modulus;  // the edge of the pass band over that of the stop band
  Functions shift;  // sn, cn, dn of the pole shift, of the complementary modulus
};

Shape ShapeOf(std::int32_t order, double ripple, double attenuation) {
  const Wide pass = detail::ExcessPower(ripple);
  const Wide stop = detail::ExcessPower(attenuation);
  const auto scale = std::numbers::ln10_v<Wide> / 10;
  const Wide excess = std::exp(scale * ripple) * std::expm1(scale * (static_cast<Wide>(attenuation) - ripple));
  const Modulus discrimination{std::sqrt(pass / stop), std::sqrt(excess / stop)};
  const Means means1(discrimination.complement);
  const Means means1_complementary(discrimination.k);
  const Wide n = static_cast<Wide>(order);

  // The degree equation K'(k) / K(k) = K'(k1) / (N K(k1)); K = pi / (2 mean).
  Shape shape;
  shape.modulus = FromPeriods(means1.limit / (n * means1_complementary.limit));
  // The shift is K(k) / (N K(k1)) times the integral r with sc(r) = 1 / eps, of the complement of k1.
  const Wide r = boost::math::ellint_rf(pass, pass + discrimination.k * discrimination.k, 1 + pass);
  const Means means(shape.modulus.complement);
  const Means means_complementary(shape.modulus.k);
  const Wide phase = means_complementary.limit * means1.limit / means.limit * r / n;
  shape.shift = passband::detail::JacobiAtPhase(std::sin(phase), std::cos(phase), means_complementary);
  return shape;
}

// The zeros and poles of the term with the phase pi m / (2 N).
void AddTerm(const Shape& shape, const Means& means, std::int32_t m, std::int32_t order, detail::Prototype& prototype) {
  const Functions& v = shape.shift;
  if (m == 0) {
    prototype.poles.emplace_back(-v.sn / v.cn);
    return;
  }
  const Functions u = passband::detail::JacobiAtPhase(QuarterWave(m, order), QuarterWave(order - m, order), means);
  const detail::WideComplex zero(0, 1 / (shape.modulus.k * u.sn));
  prototype.zeros.push_back(zero);
  prototype.zeros.push_back(std::conj(zero));
  // 1 - dn^2 sn^2, as a sum of positive terms.
  const Wide reach = shape.modulus.k * u.sn * v.sn;
  const Wide below = v.cn * v.cn + reach * reach;
  const detail::WideComplex pole(-u.cn * u.dn * v.sn * v.cn / below, -u.sn * v.dn / below);
  prototype.poles.push_back(pole);
  prototype.poles.push_back(std::conj(pole));
}

// Whether the stop band is so deep that the ripples of both bands cannot be related in double precision.
bool IsOutOfRange(double ripple, double attenuation) {
  const double ck1 = std::sqrt(std::expm1(ripple * std::numbers::ln10 / 10)) /
                     std::sqrt(std::expm1(attenuation * std::numbers::ln10 / 10));
  return std::sqrt(1 - ck1 * ck1) == 1;
}

}  // namespace

void EllipticAnalog(std::int32_t Order, double Ripple, double Attenuation, TVec& z, TVec& p, double& k) {
  detail::CheckPrecisions(z, p);
  if (!CheckRange(1, Order, MaxIirOrder)) ERaise("not (1 < Order < MaxIirOrder)");
  if (Order > 1 && IsOutOfRange(Ripple, Attenuation)) ERaise("Ripple out of range!");
  detail::CheckDecibels(Ripple, "not (0 < Ripple <= 3000)");
  detail::Prototype prototype;
  if (Order == 1) {
    prototype.k = 1 / std::sqrt(detail::ExcessPower(Ripple));
    prototype.poles.emplace_back(-prototype.k);
    return detail::Store(prototype, z, p, k);
  }
  detail::CheckDecibels(Attenuation, "not (0 < Attenuation <= 3000)");
  if (Attenuation <= Ripple) ERaise("not (Ripple < Attenuation)");
  const Shape shape = ShapeOf(Order, Ripple, Attenuation);
  const Means means(shape.modulus.complement);
  for (std::int32_t m = 1 - Order % 2; m < Order; m += 2) AddTerm(shape, means, m, Order, prototype);
  prototype.k = detail::UnitGain(prototype);
  // Zero frequency is at the bottom of the ripples of an even order.
  if (Order % 2 == 0) prototype.k /= std::sqrt(1 + detail::ExcessPower(Ripple));
  detail::Store(prototype, z, p, k);
}

}  // namespace passband::IIRFilters
