#include "passband/foundation/scalars.h"

#include <bit>
#include <limits>

#include "passband/foundation/exceptions.h"

namespace passband {
namespace {

// x is integral, or not finite.
std::int32_t ClampToInt32(double x) {
  if (std::isnan(x)) return 0;
  constexpr double kLow = std::numeric_limits<std::int32_t>::min();
  constexpr double kHigh = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::clamp(x, kLow, kHigh));
}

}  // namespace

std::int32_t Ceil(double x) { return ClampToInt32(std::ceil(x)); }
std::int32_t Round(double x) { return ClampToInt32(std::isinf(x) ? x : x - std::remainder(x, 1.0)); }
std::int32_t Trunc(double x) { return ClampToInt32(std::trunc(x)); }

std::int32_t LargestExp2(std::int32_t n) {
  if (n <= 1) return 1;
  if (n > (1 << 30)) ERaise("LargestExp2: n > 2^30");
  return static_cast<std::int32_t>(std::bit_ceil(static_cast<std::uint32_t>(n)));
}

double Power(double x, double y) { return std::pow(x, y); }

double IntPower(double x, std::int32_t n) {
  auto rest = static_cast<std::uint32_t>(n < 0 ? -static_cast<std::int64_t>(n) : n);
  double result = 1;
  for (double square = x; rest != 0; rest >>= 1, square *= square) {
    if ((rest & 1U) != 0) result *= square;
  }
  return n < 0 ? 1 / result : result;
}

double Exp10(double x) { return std::pow(10.0, x); }

}  // namespace passband
