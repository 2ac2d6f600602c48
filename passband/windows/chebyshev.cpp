#include "passband/windows/chebyshev.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "passband/vector_core/pool.h"
#include "passband/windows/window_apply_internal.h"

namespace passband::SignalUtils {
namespace {

// v[k - 1] for 2 <= k <= L / 2 + 1. The ratio of two terms falls with j; once it is below 1/2 and the term no longer
// changes the sum, what remains is smaller than the term.
double Weight(double c, std::int32_t k, std::int32_t length) {
  double term = c;
  double sum = 0;
  for (std::int32_t j = 1; j <= k - 2; ++j) {
    const double ratio = c * (k - j - 1.0) * (length - k - j) / (j * (j + 1.0));
    term *= ratio;
    sum += term;
    if (ratio < 0.5 && term < 0x1p-55 * sum) break;
  }
  return c + sum;
}

}  // namespace

TVec& Chebyshev(TVec& Vec, double Param, std::int32_t Index, std::int32_t Len) {
  Vec.ValidateParams(Index, Len);
  if (Len < 2) return Vec;  // a window of one point is a single 1
  const double b = std::pow(10, Param * 2.5 / 20);
  const double d = std::log10(b + std::sqrt(b * b - 1));
  const double root = std::tanh(d / (Len - 1));
  const double c = root * root;

  Borrowed<TVec> work;
  work->Size(Len, TMtxFloatPrecision::DoubleReal);
  const auto w = work->Values();
  const std::size_t last = w.size() - 1;
  w[0] = w[last] = 1.0 / (Len - 1);
  double largest = w[0];
  for (std::int32_t k = 2; k <= (Len + 1) / 2; ++k) {
    const auto n = static_cast<std::size_t>(k) - 1;
    w[n] = w[last - n] = Weight(c, k, Len);
    largest = std::max(largest, w[n]);
  }
  for (double& value : w) value /= largest;
  detail::ApplyWindow(Vec, Index, w);
  return Vec;
}

}  // namespace passband::SignalUtils
