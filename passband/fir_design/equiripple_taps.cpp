#include "passband/fir_design/equiripple_taps_internal.h"

namespace passband::OptimalFir::detail {
namespace {

Twin Scaled(Twin a, double power_of_two) { return {a.Hi * power_of_two, a.Lo * power_of_two}; }

Twin Coefficient(const CosineSum& sum, std::size_t k) { return k == 0 ? Scaled(sum[0], 2) : sum[k]; }

}  // namespace

// The product of c and a cosine is a sum of two cosines or sines, half of each. With a[k] the coefficients, a[0]
// doubled, and m = 0, 1, .. the distance from the middle, the taps left of it are
//
//     odd, symmetric        a[m] / 2                    c = 1
//     even, symmetric       (a[m] + a[m + 1]) / 4       c = cos(pi f)
//     even, antisymmetric   (a[m] - a[m + 1]) / 4       c = sin(pi f)
//     odd, antisymmetric    (a[m - 1] - a[m + 1]) / 4   c = sin(2 pi f); 0 in the middle
//
// The terms may be far larger than their difference.
std::vector<Wide> TapsOf(const CosineSum& sum, std::int32_t length, bool antisymmetric) {
  const auto a = [&](std::size_t k) { return Coefficient(sum, k); };
  const auto taps = static_cast<std::size_t>(length);
  const std::size_t half = taps / 2;
  const bool odd = taps % 2 == 1;
  std::vector<Wide> h(taps);
  const auto put = [&](std::size_t i, Twin tap) {  // i taps from the inner end of a half
    const Wide value = static_cast<Wide>(tap.Hi) + static_cast<Wide>(tap.Lo);
    h[half - 1 - i] = value;
    h[taps - half + i] = antisymmetric ? -value : value;
  };
  if (odd && !antisymmetric) h[half] = static_cast<Wide>(sum[0].Hi) + static_cast<Wide>(sum[0].Lo);
  for (std::size_t i = 0; i < half; ++i) {
    if (odd) {
      put(i, antisymmetric ? Scaled(a(i) + -a(i + 2), 0.25) : Scaled(a(i + 1), 0.5));
    } else {
      put(i, Scaled(a(i) + (antisymmetric ? -a(i + 1) : a(i + 1)), 0.25));
    }
  }
  return h;
}

CosineSum SumOf(std::span<const double> taps, bool antisymmetric) {
  const std::size_t half = taps.size() / 2;
  const bool odd = taps.size() % 2 == 1;
  const bool centred = odd && !antisymmetric;
  CosineSum sum(half + (centred ? 1 : 0));
  for (std::size_t i = half; i-- > 0;) {
    const Twin tap{taps[half - 1 - i], 0};
    if (odd) {
      sum.Set(centred ? i + 1 : i, centred ? Scaled(tap, 2) : Scaled(tap, 4) + sum[i + 2]);
    } else {
      sum.Set(i, Scaled(tap, 4) + (antisymmetric ? sum[i + 1] : -sum[i + 1]));
    }
  }
  sum.Set(0, centred ? Twin{taps[half], 0} : Scaled(sum[0], 0.5));
  return sum;
}

}  // namespace passband::OptimalFir::detail
