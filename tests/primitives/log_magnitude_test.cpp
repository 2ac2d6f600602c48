// Logarithms of spectra on every instruction set, of all lengths past two vectors, with guards behind.
#include "passband/primitives/log_magnitude.h"
#include "tests/primitives/every_target.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace passband::primitives {
namespace {

// Magnitudes over the whole range of a double, most of them next to 1, where the logarithm is small.
std::vector<TCplx> Spectrum(std::int32_t count) {
  std::mt19937_64 generator(5);
  std::uniform_real_distribution<double> uniform(-1, 1);
  std::vector<TCplx> z;
  for (std::int32_t n = 0; n < count; ++n) {
    const double scale = n % 3 == 0 ? std::exp2(1020 * uniform(generator)) : 1 + 1e-3 * uniform(generator);
    const double angle = 4 * uniform(generator);
    z.emplace_back(scale * std::cos(angle), scale * std::sin(angle));
  }
  return z;
}

TEST(LogMagnitude, KeepsItsDigitsOverTheWholeRange) {
  OnEveryTarget([&] {
    for (const std::int32_t count : {0, 1, 2, 3, 7, 8, 9, 16, 17, 1000}) {
      const std::vector<TCplx> z = Spectrum(count);
      std::vector<double> log(z.size() + 1, 7);
      ASSERT_EQ(LogMagnitude(z.data(), count, log.data()), Status::Ok);
      for (std::size_t n = 0; n < z.size(); ++n) {
        const double expected = static_cast<double>(
            std::log(std::hypot(static_cast<long double>(z[n].Re), static_cast<long double>(z[n].Im))));
        EXPECT_NEAR(log[n], expected, 1e-15 * std::abs(expected) + 0x1p-52) << z[n];
      }
      EXPECT_EQ(log.back(), 7);
    }
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const TCplx odd : {TCplx{0, 0}, {infinity, 1}, {nan, 1}, {1, -infinity}, {-0.0, 0.0}}) {
      std::vector<TCplx> z(20, TCplx{0, 1e200});
      z[9] = odd;
      std::vector<double> log(z.size());
      ASSERT_EQ(LogMagnitude(z.data(), 20, log.data()), Status::Ok);
      for (std::size_t n = 0; n < z.size(); ++n) EXPECT_NEAR(log[n], n == 9 ? 0 : 200 * std::log(10.0), 1e-12);
    }
  });
  double log = 7;
  const TCplx z{1, 1};
  EXPECT_EQ(LogMagnitude(&z, -1, &log), Status::BadSize);
  EXPECT_EQ(LogMagnitude(nullptr, 1, &log), Status::NullPointer);
  EXPECT_EQ(LogMagnitude(&z, 1, nullptr), Status::NullPointer);
  EXPECT_EQ(log, 7);
}

}  // namespace
}  // namespace passband::primitives
