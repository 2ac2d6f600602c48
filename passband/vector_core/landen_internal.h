// Jacobi's elliptic functions by the descending Landen transformation, for any floating-point type.
#pragma once

#include <array>
#include <cmath>
#include <concepts>
#include <cstddef>

namespace passband::detail {

/// The pairs of arithmetic and geometric means that begin with 1 and the complementary modulus sqrt(1 - m); they meet
/// quadratically, at pi / (2 K(m)).
template <std::floating_point Real>
struct LandenMeans {
  static constexpr std::size_t kMaxSteps = 24;
  std::array<Real, kMaxSteps> a{};
  std::array<Real, kMaxSteps> b{};
  std::size_t steps = 0;
  Real limit = 1;

  explicit LandenMeans(Real complementary_modulus) {
    Real arithmetic = 1;
    Real geometric = complementary_modulus;
    while (steps < kMaxSteps) {
      a[steps] = arithmetic;
      b[steps] = geometric;
      ++steps;
      limit = (arithmetic + geometric) / 2;
      // The next pair agrees in all digits: the distance is squared and divided by 8.
      if (std::abs(arithmetic - geometric) <= Real(1e-9) * arithmetic) break;
      geometric = std::sqrt(arithmetic * geometric);
      arithmetic = limit;
    }
  }
};

template <std::floating_point Real>
struct Jacobi {
  Real sn = 0;
  Real cn = 1;
  Real dn = 1;
};

/// sn, cn, dn at the argument u, given sine and cosine of the phase u pi / (2 K(m)) and the means that belong to m.
template <std::floating_point Real>
Jacobi<Real> JacobiAtPhase(Real sine, Real cosine, const LandenMeans<Real>& means) {
  if (std::abs(sine) < Real(1e-100)) {  // the squares below would overflow; the functions are straight lines here
    return {sine / means.limit, std::copysign(Real(1), cosine), Real(1)};
  }
  // c is a[n] cn / sn and d is dn of the functions at step n. All sums below are of positive terms.
  Real c = means.limit * (cosine / sine);
  Real d = 1;
  Real next = means.limit;
  for (std::size_t n = means.steps; n-- > 0;) {
    const Real t = c * c / next;
    c *= d;
    d = (means.b[n] + t) / (means.a[n] + t);
    next = means.a[n];
  }
  const Real sn = std::copysign(1 / std::hypot(Real(1), c), sine);
  return {sn, c * sn, d};
}

}  // namespace passband::detail
