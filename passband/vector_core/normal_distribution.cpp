#include "passband/vector_core/normal_distribution.h"

#include <cmath>
#include <numbers>

#include "passband/foundation/exceptions.h"
#include "passband/vector_core/extended_precision_internal.h"

namespace passband {
namespace {

using detail::TwinDouble;

// (x - mean) / std_dev with the rounding errors of the difference and the quotient in the low part.
TwinDouble Standardised(double x, double mean, double std_dev) {
  const TwinDouble difference = detail::ExactSum(x, -mean);
  const double t = difference.Hi / std_dev;
  if (!std::isfinite(t) || !std::isfinite(difference.Lo)) return {t, 0};
  const double low = (std::fma(-t, std_dev, difference.Hi) + difference.Lo) / std_dev;
  return {t, std::isfinite(low) ? low : 0};
}

}  // namespace

double NormalCDF(double X, double Mean, double StdDev) {
  if (!(StdDev > 0)) ERaise("NormalCDF: not (StdDev > 0)");
  constexpr TwinDouble kHalfRoot{0.70710678118654757, -4.8336466567264567e-17};  // 1 / sqrt 2 in twice the digits
  const TwinDouble t = Standardised(X, Mean, StdDev);
  const double z = -t.Hi * kHalfRoot.Hi;
  double probability = std::erfc(z) / 2;
  if (std::abs(z) < 28) {  // first order in what the rounding of z has left out
    const double rest = std::fma(-t.Hi, kHalfRoot.Hi, -z) - t.Hi * kHalfRoot.Lo - t.Lo * kHalfRoot.Hi;
    probability -= std::exp(-z * z) * std::numbers::inv_sqrtpi * rest;
  }
  return probability;
}

double NormalPDF(double X, double Mean, double StdDev) {
  if (!(StdDev > 0)) ERaise("NormalPDF: not (StdDev > 0)");
  const TwinDouble t = Standardised(X, Mean, StdDev);
  if (!(std::abs(t.Hi) < 60)) return std::isnan(t.Hi) ? t.Hi : 0.0;  // below the smallest double
  const TwinDouble square = detail::ExactProduct(t.Hi, t.Hi);
  const double rest = square.Lo + 2 * t.Hi * t.Lo;
  constexpr double kRootTwoPi = 2.5066282746310002;
  const double root = std::exp(-square.Hi / 4);  // its square may vanish where the quotient does not
  return root / kRootTwoPi / StdDev * (1 - rest / 2) * root;
}

}  // namespace passband
