#include <cmath>
#include <cstddef>
#include <cstdint>

#include "passband/foundation/exceptions.h"
#include "passband/linear_systems/analog_transforms.h"
#include "passband/linear_systems/roots_internal.h"
#include "passband/linear_systems/scaled_product_internal.h"
#include "passband/vector_core/pool.h"

namespace passband::LinearSystems {
namespace {

using detail::Roots;

void CheckPrecision(const TVec& z, const TVec& p) {
  if (z.IsDouble() != p.IsDouble()) ERaise("z.IsDouble <> p.IsDouble");
}

// Stores both results, or none: the zeros as complex or as real numbers.
void Store(TVec& z, const Roots& zeros, bool complex_zeros, TVec& p, const Roots& poles) {
  const Borrowed<TVec> new_zeros;
  const Borrowed<TVec> new_poles;
  const bool is_double = p.IsDouble();
  detail::WriteRoots(*new_zeros, zeros, is_double);
  detail::WriteRoots(*new_poles, poles, is_double);
  if (!complex_zeros) new_zeros->SetFloatPrecision(MakePrecision(false, is_double));
  z.Take(*new_zeros);
  p.Take(*new_poles);
}

double Power(double x, std::size_t up, std::size_t down) {
  return std::pow(x, static_cast<double>(up) - static_cast<double>(down));
}

Roots Scaled(const Roots& roots, double factor) {
  Roots scaled = roots;
  for (TCplx& x : scaled) x *= factor;
  return scaled;
}

Roots Inverted(const Roots& roots, double factor) {
  Roots inverted = roots;
  for (TCplx& x : inverted) x = CDiv(factor, x);
  return inverted;
}

detail::ScaledProduct Product(const Roots& roots) {
  detail::ScaledProduct product;
  for (const TCplx x : roots) product.Multiply(x);
  return product;
}

struct Images {
  TCplx larger;
  TCplx smaller;
};

// sqrt(a^2 - wo^2), in the half plane of a. With |a| < wo the form j wo sqrt(1 - (a / wo)^2) keeps the digits of a real
// part that is small, as those of narrow bands are.
TCplx HalfDistance(TCplx a, double wo) {
  TCplx w;
  if (CAbs(a) < wo) {
    const TCplx ratio = (1 / wo) * a;
    const TCplx root = CSqrt(CMul(CSub(1.0, ratio), CAdd(1.0, ratio)));
    w = {-wo * root.Im, wo * root.Re};
  } else {
    const TCplx ratio = CDiv(wo, a);
    w = a * CSqrt(CMul(CSub(1.0, ratio), CAdd(1.0, ratio)));
  }
  return w.Re * a.Re + w.Im * a.Im < 0 ? -w : w;
}

// Both solutions of s^2 - 2 a s + wo^2 = 0. Their product is wo^2: the smaller one, whose difference would cancel, comes from
// the larger one.
Images ImagesOf(TCplx a, double wo) {
  if (a == TCplx{}) return {{0, wo}, {0, -wo}};
  const TCplx larger = a + HalfDistance(a, wo);
  const double share = wo / CAbs(larger);
  return {larger, (share * share) * Conj(larger)};
}

// The first image of each value in its place, the second ones behind.
template <class HalfSum>
Roots Mapped(const Roots& roots, double wo, HalfSum half_sum) {
  Roots mapped(2 * roots.size());
  for (std::size_t i = 0; i < roots.size(); ++i) {
    const Images images = ImagesOf(half_sum(roots[i]), wo);
    mapped[i] = images.larger;
    mapped[i + roots.size()] = images.smaller;
  }
  return mapped;
}

}  // namespace

void LowpassToLowpass(TVec& z, TVec& p, double& k, double Wc) {
  CheckPrecision(z, p);
  const Roots zeros = detail::ReadRoots(z);
  const Roots poles = detail::ReadRoots(p);
  Store(z, Scaled(zeros, Wc), z.Complex(), p, Scaled(poles, Wc));
  k *= Power(Wc, poles.size(), zeros.size());
}

void LowpassToHighpass(TVec& z, TVec& p, double& k, double Wc) {
  CheckPrecision(z, p);
  const Roots zeros = detail::ReadRoots(z);
  const Roots poles = detail::ReadRoots(p);
  const double gain = std::abs(Product(zeros).ReOver(Product(poles)));
  Roots new_zeros = Inverted(zeros, Wc);
  if (zeros.empty() || poles.size() % 2 == 1) new_zeros.resize(poles.size());
  Store(z, new_zeros, z.Complex() && !zeros.empty(), p, Inverted(poles, Wc));
  k *= gain;
}

void LowpassToBandpass(TVec& z, TVec& p, double& k, double Wo, double Bw) {
  CheckPrecision(z, p);
  const Roots zeros = detail::ReadRoots(z);
  const auto half_sum = [&](TCplx x) { return (Bw / 2) * x; };
  const Roots new_poles = Mapped(detail::ReadRoots(p), Wo, half_sum);
  Roots new_zeros = Mapped(zeros, Wo, half_sum);
  const std::size_t np = new_poles.size() / 2;
  if (zeros.empty()) {
    new_zeros.resize(np);
  } else if (np % 2 == 1) {
    new_zeros.emplace_back();
  }
  Store(z, new_zeros, !zeros.empty(), p, new_poles);
  k *= Power(Bw, new_poles.size(), new_zeros.size());
}

void LowpassToBandstop(TVec& z, TVec& p, double& k, double Wo, double Bw) {
  CheckPrecision(z, p);
  const auto half_sum = [&](TCplx x) { return CDiv(Bw / 2, x); };
  const Roots new_poles = Mapped(detail::ReadRoots(p), Wo, half_sum);
  Roots new_zeros = Mapped(detail::ReadRoots(z), Wo, half_sum);
  const std::size_t np = new_poles.size() / 2;
  if (new_zeros.empty()) {
    new_zeros.assign(np, {0, Wo});
    new_zeros.resize(2 * np, {0, -Wo});
  } else if (np % 2 == 1) {
    new_zeros.resize(2 * np);
    new_zeros[2 * np - 2] = {0, -Wo};
    new_zeros[2 * np - 1] = {0, Wo};
  }
  Store(z, new_zeros, true, p, new_poles);
  k = 1;
}

}  // namespace passband::LinearSystems
