#include "passband/vector_core/elliptic.h"

#include <array>
#include <boost/math/special_functions/ellint_rf.hpp>
#include <boost/math/special_functions/ellint_rg.hpp>
#include <cmath>
#include <cstddef>
#include <limits>

#include "passband/foundation/exceptions.h"

namespace passband {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Means of the descending Landen transformation: a[n], b[n] are the arithmetic and geometric means of the pair before,
// starting with 1 and sqrt(1 - m); they meet quadratically.
struct LandenMeans {
  static constexpr std::size_t kMaxSteps = 16;
  std::array<double, kMaxSteps> a{};
  std::array<double, kMaxSteps> b{};
  std::size_t steps = 0;
  double limit = 1;

  explicit LandenMeans(double complementary) {
    double arithmetic = 1;
    double geometric = std::sqrt(complementary);
    while (steps < kMaxSteps) {
      a[steps] = arithmetic;
      b[steps] = geometric;
      ++steps;
      limit = (arithmetic + geometric) / 2;
      if (std::abs(arithmetic - geometric) <= 1e-9 * arithmetic) break;  // the next pair agrees in all digits
      geometric = std::sqrt(arithmetic * geometric);
      arithmetic = limit;
    }
  }
};

}  // namespace

void EllipComplete(double M, double& K, double& E) {
  if (!(M <= 1)) ERaise("EllipComplete: not (M <= 1)");
  if (M == 1 || M == -kInfinity) {
    K = M == 1 ? kInfinity : 0;
    E = M == 1 ? 1 : kInfinity;
    return;
  }
  K = boost::math::ellint_rf(0.0, 1 - M, 1.0);
  E = 2 * boost::math::ellint_rg(0.0, 1 - M, 1.0);
}

double EllipComplete(double M) {
  double k = 0;
  double e = 0;
  EllipComplete(M, k, e);
  return k;
}

void EllipJacoby(double U, double M, double& Sn, double& Cn, double& Dn) {
  if (!(M <= 1) || M == -kInfinity) ERaise("EllipJacoby: not (M <= 1)");
  if (!std::isfinite(U)) ERaise("EllipJacoby: U is not finite");
  if (M == 1) {
    Sn = std::tanh(U);
    Cn = 1 / std::cosh(U);
    Dn = Cn;
    return;
  }
  const LandenMeans means(1 - M);
  const double phase = means.limit * U;
  const double sine = std::sin(phase);
  const double cosine = std::cos(phase);
  if (std::abs(sine) < 1e-100) {  // the squares below would overflow; the functions are straight lines here
    Sn = sine / means.limit;
    Cn = std::copysign(1.0, cosine);
    Dn = 1;
    return;
  }
  // c is a[n] cn / sn and d is dn of the functions at step n. All sums below are of positive terms.
  double c = means.limit * (cosine / sine);
  double d = 1;
  double next = means.limit;
  for (std::size_t n = means.steps; n-- > 0;) {
    const double t = c * c / next;
    c *= d;
    d = (means.b[n] + t) / (means.a[n] + t);
    next = means.a[n];
  }
  Sn = std::copysign(1 / std::hypot(1.0, c), sine);
  Cn = c * Sn;
  Dn = d;
}

}  // namespace passband
