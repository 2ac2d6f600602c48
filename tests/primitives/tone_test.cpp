// Tone and triangle kernels on every instruction set, against 60-digit arithmetic and far into their streams.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <numbers>
#include <string>
#include <vector>

#include "passband/primitives/tone.h"
#include "passband/primitives/triangle.h"
#include "tests/primitives/every_target.h"

namespace passband::primitives {
namespace {

const std::vector<double>& Reference(const std::string& name) {
  static const std::map<std::string, std::vector<double>> table{
#include "tests/primitives/tone_reference.inc"
  };
  return table.at(name);
}

// The distance of two phases around the circle.
double PhaseError(double a, double b) { return std::abs(std::remainder(a - b, 2 * std::numbers::pi)); }

TEST(StreamPhase, IsRightToTheLastDigitAtAnySample) {
  const auto& rows = Reference("tone");
  for (std::size_t i = 0; i < rows.size(); i += 6) {
    const double phase = PhaseOf({rows[i], rows[i + 1], static_cast<std::int64_t>(rows[i + 2])});
    EXPECT_LE(PhaseError(phase, rows[i + 5]), 0x1p-51) << rows[i] << " at " << rows[i + 2];
    EXPECT_GE(phase, 0);
    EXPECT_LT(phase, 2 * std::numbers::pi);
  }
  EXPECT_EQ(PhaseOf({0, 1.2345, 1 << 30}), 1.2345);
  EXPECT_EQ(PhaseOf({0.25, 1, 4}), 1);
}

TEST(ToneKernel, IsRightFarIntoTheStream) {
  OnEveryTarget([] {
    const auto& rows = Reference("tone");
    for (std::size_t i = 0; i < rows.size(); i += 6) {
      ToneOf tone{{rows[i], rows[i + 1], static_cast<std::int64_t>(rows[i + 2])}, 1.5, false};
      TCplx z;
      TSCplx single;
      double x = 0;
      ASSERT_EQ(Tone(&z, 1, tone), Status::Ok);
      ASSERT_EQ(Tone(&single, 1, tone), Status::Ok);
      ASSERT_EQ(Tone(&x, 1, tone), Status::Ok);
      EXPECT_NEAR(z.Re, 1.5 * rows[i + 3], 9e-16) << rows[i] << " at " << rows[i + 2];
      EXPECT_NEAR(z.Im, 1.5 * rows[i + 4], 9e-16) << rows[i] << " at " << rows[i + 2];
      EXPECT_EQ(x, z.Re);
      EXPECT_EQ(single, static_cast<TSCplx>(z));
      tone.conjugate = true;
      ASSERT_EQ(Tone(&single, 1, tone), Status::Ok);
      EXPECT_EQ(single, static_cast<TSCplx>(Conj(z)));
    }
  });
}

// The long blocks start inside and at the start of a table's block, and cross several of them.
TEST(ToneKernel, BlocksOfAnyLengthHoldTheSameSamplesAndNothingBeyond) {
  OnEveryTarget([] {
    constexpr std::int64_t kFirst = 1000003;
    constexpr std::int32_t kCount = 1500;
    ToneOf tone{{0.0123456, 0.7, kFirst}, 0.8, false};
    std::vector<double> expected(kCount);
    for (std::int64_t n = 0; n < kCount; ++n) {
      tone.at.position = kFirst + n;
      Tone(&expected[static_cast<std::size_t>(n)], 1, tone);
    }
    for (const std::int32_t skip : {0, 1, 17, 61, 64}) {
      for (const std::int32_t count : {0, 1, 2, 7, 8, 9, 60, 63, 64, 65, 127, 128, 200, 512, 520, 1100}) {
        tone.at.position = kFirst + skip;
        std::vector<double> x(static_cast<std::size_t>(count) + 2, 7.0);
        ASSERT_EQ(Tone(x.data() + 1, count, tone), Status::Ok);
        ASSERT_EQ(x.front(), 7);
        ASSERT_EQ(x.back(), 7);
        ASSERT_TRUE(std::equal(x.begin() + 1, x.end() - 1, expected.begin() + skip)) << count << " from " << skip;
        ASSERT_EQ(ToneAdd(x.data() + 1, count, tone), Status::Ok);
        ASSERT_TRUE(std::equal(x.begin() + 1, x.end() - 1, expected.begin() + skip,
                               [](double a, double b) { return a == b + b; }));
      }
    }
  });
}

TEST(TriangleKernel, IsRightFarIntoTheStream) {
  OnEveryTarget([] {
    const auto& rows = Reference("triangle");
    for (std::size_t i = 0; i < rows.size(); i += 6) {
      TriangleOf wave{{rows[i], rows[i + 1], static_cast<std::int64_t>(rows[i + 3])}, 2, rows[i + 2], false};
      // The steeper side carries an error of the phase, in turns, with its slope.
      const double slope = 4 * std::numbers::pi / (std::numbers::pi - std::abs(rows[i + 2]));
      TCplx z;
      TCplx conjugate;
      TSCplx single;
      double x = 0;
      ASSERT_EQ(Triangle(&z, 1, wave), Status::Ok);
      ASSERT_EQ(Triangle(&x, 1, wave), Status::Ok);
      ASSERT_EQ(Triangle(&single, 1, wave), Status::Ok);
      wave.conjugate = true;
      ASSERT_EQ(Triangle(&conjugate, 1, wave), Status::Ok);
      EXPECT_NEAR(z.Re, 2 * rows[i + 4], 2 * (slope + 1) * 0x1p-52) << i;
      EXPECT_NEAR(z.Im, 2 * rows[i + 5], 2 * (slope + 1) * 0x1p-52) << i;
      EXPECT_EQ(x, z.Re);
      EXPECT_EQ(single, static_cast<TSCplx>(z));
      EXPECT_EQ(conjugate, Conj(z));
    }
    // The sawtooths, from their peak and just past it.
    double x[2];
    const double pi = std::numbers::pi;
    Triangle(x, 2, {{0.125, 0, 0}, 1, -pi, false});
    EXPECT_EQ(x[0], 1);
    EXPECT_EQ(x[1], -0.75);
    Triangle(x, 2, {{0.125, 0, 0}, 1, pi, false});
    EXPECT_EQ(x[0], 1);
    EXPECT_EQ(x[1], 0.75);
  });
}

TEST(ToneKernel, RefusesWhatIsOutOfRangeAndWritesNothing) {
  const double nan = std::nan("");
  const double turn = 2 * std::numbers::pi;
  const ToneOf bad[] = {{{-0.1, 0, 0}, 1, false},    {{0.6, 0, 0}, 1, false},    {{nan, 0, 0}, 1, false},
                        {{0.1, -1e-9, 0}, 1, false}, {{0.1, turn, 0}, 1, false}, {{0.1, nan, 0}, 1, false},
                        {{0.1, 0, 0}, 0, false},     {{0.1, 0, 0}, -1, false},   {{0.1, 0, 0}, nan, false}};
  for (const ToneOf& tone : bad) {
    double x = 7;
    EXPECT_EQ(Tone(&x, 1, tone), Status::BadArgument);
    EXPECT_EQ(ToneAdd(&x, 1, tone), Status::BadArgument);
    EXPECT_EQ(Triangle(&x, 1, {tone.at, tone.magnitude, 0, false}), Status::BadArgument);
    EXPECT_EQ(x, 7);
  }
  double x = 7;
  TCplx z{7, 7};
  EXPECT_EQ(Tone(&x, -1, {}), Status::BadSize);
  EXPECT_EQ(Triangle(&x, -1, {}), Status::BadSize);
  EXPECT_EQ(Tone(&z, 1, {{1, 0, 0}, 1, false}), Status::BadArgument);
  EXPECT_EQ(Triangle(&x, 1, {{0.5, 0, 0}, 1, 0, false}), Status::BadArgument);
  EXPECT_EQ(Triangle(&x, 1, {{0.1, 0, 0}, 1, 3.15, false}), Status::BadArgument);
  EXPECT_EQ(x, 7);
  EXPECT_EQ(z, (TCplx{7, 7}));
  EXPECT_EQ(Tone(&x, 1, {{0.5, 0, 1}, 1, false}), Status::Ok);  // alternates
  EXPECT_EQ(x, -1);
  EXPECT_EQ(Tone(&z, 1, {{0.75, 0, 1}, 1, false}), Status::Ok);
  EXPECT_NEAR(z.Im, -1, 1e-15);
}

}  // namespace
}  // namespace passband::primitives
