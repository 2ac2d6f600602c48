#include "passband/fir_design/equiripple_places_internal.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace passband::OptimalFir::detail {
namespace {

constexpr Wide kPi = std::numbers::pi_v<Wide>;

// Horner's scheme for 1 - y / c[0] (1 - y / c[1] (..)), the series of a sine or cosine; c[k] are products of two
// factors of the factorials.
template <std::size_t kCount>
double Series(double y, const double (&c)[kCount]) {
  double sum = 1;
  for (std::size_t k = kCount; k-- > 0;) sum = 1 - y * c[k] * sum;
  return sum;
}

constexpr double kSine[] = {1.0 / 6, 1.0 / 20, 1.0 / 42, 1.0 / 72, 1.0 / 110, 1.0 / 156, 1.0 / 210};
constexpr double kCosine[] = {1.0 / 2, 1.0 / 12, 1.0 / 30, 1.0 / 56, 1.0 / 90, 1.0 / 132, 1.0 / 182, 1.0 / 240};

}  // namespace

Place PlaceOf(Wide f) {
  const Wide root = std::sin(kPi * std::min(f, 0.5L - f));
  const Wide distance = 2 * root * root;  // from the nearer end
  const auto hi = static_cast<double>(1 - distance);
  const auto lo = static_cast<double>((1 - static_cast<Wide>(hi)) - distance);
  return f <= 0.25L ? Place{hi, lo} : Place{-hi, -lo};
}

// Without branches and calls, so that compilers take several frequencies at a time.
PlaceSet::PlaceSet(std::span<const double> frequencies)
    : hi(frequencies.size()), lo(frequencies.size()), sine(frequencies.size()), cosine(frequencies.size()) {
  const double* const f = frequencies.data();
  double* const to_hi = hi.data();
  double* const to_lo = lo.data();
  double* const to_sine = sine.data();
  double* const to_cosine = cosine.data();
  for (std::size_t i = 0; i < frequencies.size(); ++i) {
    const double from_end = 0.5 - f[i];
    const double sign = std::copysign(1.0, from_end - f[i]);
    const double x = std::numbers::pi * (f[i] < from_end ? f[i] : from_end);
    const double y = x * x;
    const double root = x * Series(y, kSine);
    const double other = Series(y, kCosine);
    to_sine[i] = sign > 0 ? root : other;
    to_cosine[i] = sign > 0 ? other : root;
    // x = +-(1 - 2 root^2): the square and the difference with their errors (Dekker).
    const double square = root * root;
    const double split = root * 0x1.0000002p27;
    const double upper = split - (split - root);
    const double lower = root - upper;
    const double square_error = ((upper * upper - square) + 2 * upper * lower) + lower * lower;
    const double difference = 1 - 2 * square;
    const double rest = ((1 - difference) - 2 * square) - 2 * square_error;
    to_hi[i] = sign * difference;
    to_lo[i] = sign * rest;
  }
}

}  // namespace passband::OptimalFir::detail
