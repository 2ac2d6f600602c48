#include "passband/vector_core/elliptic.h"

#include <boost/math/special_functions/ellint_rf.hpp>
#include <boost/math/special_functions/ellint_rg.hpp>
#include <cmath>
#include <limits>

#include "passband/foundation/exceptions.h"
#include "passband/vector_core/landen_internal.h"

namespace passband {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

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
  const detail::LandenMeans<double> means(std::sqrt(1 - M));
  const double phase = means.limit * U;
  const detail::Jacobi<double> at = detail::JacobiAtPhase(std::sin(phase), std::cos(phase), means);
  Sn = at.sn;
  Cn = at.cn;
  Dn = at.dn;
}

}  // namespace passband
