// Logarithmic scales on every instruction set: all lengths past two vectors, guards behind, the whole range.
#include "passband/primitives/log_scale.h"
#include "tests/primitives/every_target.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace passband::primitives {
namespace {

constexpr long double kSlope = 20 / 2.30258509299404568401799145468436421L;  // decibels

LogScale Decibels(double reference, double floor) {
  const long double octave = kSlope * 0.693147180559945309417232121458176568L;
  const double high = 6.021484375;  // 12 bits
  return {.reference = reference,
          .slope = static_cast<double>(kSlope),
          .octave_high = high,
          .octave_low = static_cast<double>(octave - high),
          .floor = floor};
}

template <class R>
class LogScaleTest : public testing::Test {};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(LogScaleTest, Reals);

TYPED_TEST(LogScaleTest, WholeRangeToTheLastDigits) {
  using R = TypeParam;
  const double eps = std::numeric_limits<R>::epsilon();
  std::mt19937_64 generator(3);
  std::uniform_real_distribution<double> uniform(-1, 1);
  OnEveryTarget([&] {
    for (const std::int32_t count : {0, 1, 2, 3, 5, 8, 15, 16, 17, 1000}) {
      for (const double reference : {1.0, 0.3, 1e-200}) {
        std::vector<R> x;
        for (std::int32_t n = 0; n <= count; ++n) {
          const double exponent = std::numeric_limits<R>::max_exponent - 2;
          x.push_back(
              static_cast<R>(n % 2 == 0 ? std::exp2(exponent * uniform(generator)) : 1 + uniform(generator) / 9));
        }
        const std::vector<R> before = x;
        ASSERT_EQ(ToLogScale(x.data(), count, Decibels(reference, -1e5)), Status::Ok);
        for (std::size_t n = 0; n < static_cast<std::size_t>(count); ++n) {
          const double expected = static_cast<double>(
              kSlope * std::log(static_cast<long double>(before[n]) / static_cast<long double>(reference)));
          // One unit of each logarithm of a mantissa, below 0.35, times the slope, and the last rounding.
          const double tolerance = 2.5 * eps * std::abs(expected) + (reference == 1 ? 0 : 6 * eps);
          ASSERT_NEAR(static_cast<double>(x[n]), expected, tolerance) << before[n] << " to " << reference;
        }
        EXPECT_EQ(x.back(), before.back());
      }
    }
    std::vector<R> powers;
    for (int k = -30; k <= 30; ++k) powers.push_back(static_cast<R>(std::pow(10, k)));
    ASSERT_EQ(ToLogScale(powers.data(), 61, Decibels(1, -1e5)), Status::Ok);
    for (int k = -30; k <= 30; ++k) EXPECT_EQ(powers[static_cast<std::size_t>(k + 30)], R(20 * k));
  });
}

TYPED_TEST(LogScaleTest, FloorAndOddValues) {
  using R = TypeParam;
  const R infinity = std::numeric_limits<R>::infinity();
  const R nan = std::numeric_limits<R>::quiet_NaN();
  const R tiny = std::numeric_limits<R>::denorm_min();
  OnEveryTarget([&] {
    for (const double floor : {-96.33, -7000.0}) {
      std::vector<R> x{0, 1, R(-1), nan, infinity, -infinity, tiny, R(1e-5), R(-0.0), R(10), 1, 1, 1, 1, 1, 1, 0};
      ASSERT_EQ(ToLogScale(x.data(), 17, Decibels(1, floor)), Status::Ok);
      const R bottom = static_cast<R>(floor);
      for (const std::size_t n : {0U, 2U, 5U, 8U, 16U}) EXPECT_EQ(x[n], bottom) << n;
      EXPECT_TRUE(std::isnan(x[3]));
      EXPECT_EQ(x[4], infinity);
      EXPECT_EQ(x[1], 0);
      EXPECT_EQ(x[9], 20);
      const double of_tiny = static_cast<double>(kSlope) * std::log(static_cast<double>(tiny));
      EXPECT_NEAR(static_cast<double>(x[6]), std::max(floor, of_tiny), 1e-6 * -of_tiny);
      EXPECT_EQ(x[7], std::max(bottom, R(-100)));
    }
  });
  R x = 7;
  EXPECT_EQ(ToLogScale(&x, -1, Decibels(1, 0)), Status::BadSize);
  EXPECT_EQ(ToLogScale<R>(nullptr, 1, Decibels(1, 0)), Status::NullPointer);
  EXPECT_EQ(x, 7);
}

}  // namespace
}  // namespace passband::primitives
