// Polynomials in barycentric form and sums of cosines on every instruction set, against extended precision.
#include "passband/primitives/barycentric.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "passband/primitives/cosine_sum.h"
#include "tests/primitives/every_target.h"

namespace passband::primitives {
namespace {

using Wide = long double;

constexpr double kGuard = 12345;
constexpr Wide kPi = std::numbers::pi_v<Wide>;

// cos(2 pi f) of frequencies, exactly as long as their own vectors: a read behind the end is seen by a sanitizer.
struct Line {
  std::vector<double> hi;
  std::vector<double> lo;

  void Push(Wide f) {
    const Wide x = std::cos(2 * kPi * f);
    hi.push_back(static_cast<double>(x));
    lo.push_back(static_cast<double>(x - static_cast<Wide>(hi.back())));
  }
  std::int32_t Count() const { return static_cast<std::int32_t>(hi.size()); }
  Places Get() const { return {hi.data(), lo.data(), Count()}; }
  Wide At(std::size_t k) const { return static_cast<Wide>(hi[k]) + static_cast<Wide>(lo[k]); }
};

// Frequencies spread over low .. high like the extrema of a Chebyshev polynomial.
Line Spread(std::int32_t count, Wide low, Wide high) {
  Line line;
  for (std::int32_t k = 0; k < count; ++k) {
    const Wide angle = count > 1 ? kPi * k / (count - 1) : 0;
    line.Push(low + (high - low) * (1 - std::cos(angle)) / 2);
  }
  return line;
}

TEST(Barycentric, ReproducesPolynomialsAtAllCounts) {
  OnEveryTarget([] {
    for (std::int32_t nodes = 1; nodes <= 40; ++nodes) {
      const Line line = Spread(nodes, 0.1L, 0.4L);
      std::vector<double> weights(static_cast<std::size_t>(nodes));
      std::int64_t exponent = 0;
      ASSERT_EQ(BarycentricWeights(line.Get(), weights.data(), exponent), Status::Ok);
      const std::int32_t degree = std::min(nodes - 1, 3);
      const auto polynomial = [degree](Wide x) { return degree == 0 ? 2 : 2 + x * (degree == 1 ? 1 : x - degree); };
      std::vector<double> weighted(weights);
      for (std::size_t k = 0; k < weights.size(); ++k) weighted[k] *= static_cast<double>(polynomial(line.At(k)));
      for (std::int32_t points = 0; points <= 35; points += points < 20 ? 1 : 5) {
        Line places;
        for (std::int32_t i = 0; i < points; ++i) places.Push(0.1003L + 0.2991L * i / 35);
        std::vector<double> values(static_cast<std::size_t>(points) + 2, kGuard);
        for (const bool product : {false, true}) {
          if (product) {
            LagrangeValues(line.Get(), weighted.data(), exponent, places.Get(), values.data() + 1);
          } else {
            BarycentricValues(line.Get(), weights.data(), weighted.data(), places.Get(), values.data() + 1);
          }
          for (std::size_t i = 0; i < places.hi.size(); ++i) {
            EXPECT_NEAR(values[i + 1], static_cast<double>(polynomial(places.At(i))), product ? 1e-14 * nodes : 5e-14)
                << nodes << " nodes, " << points << " points, " << i;
          }
          EXPECT_EQ(values.front(), kGuard);
          EXPECT_EQ(values.back(), kGuard);
        }
      }
    }
  });
}

TEST(Barycentric, ThousandsOfNodesInANarrowBandNeitherOverflowNorLoseTheirDigits) {
  // The product of the distances is about 1e-8000, the distances of neighbours go down to 1e-11.
  OnEveryTarget([] {
    const Line line = Spread(5001, 0.1L, 0.12L);
    std::vector<double> weights(5001);
    std::int64_t exponent = 0;
    ASSERT_EQ(BarycentricWeights(line.Get(), weights.data(), exponent), Status::Ok);
    EXPECT_GT(exponent, 20000);
    for (const std::size_t k : {0U, 1U, 2500U, 4999U}) {
      Wide log = 0;
      for (std::size_t j = 0; j < 5001; ++j) {
        if (j != k) log -= std::log2(std::abs((line.hi[k] - line.hi[j]) + (line.lo[k] - line.lo[j])));
      }
      const Wide mine = std::log2(std::abs(static_cast<Wide>(weights[k]))) + static_cast<Wide>(exponent);
      EXPECT_NEAR(static_cast<double>(mine - log), 0, 1e-11) << k;
      EXPECT_EQ(weights[k] > 0, (weights[k + 1] < 0)) << k;
    }
    EXPECT_LE(*std::max_element(weights.begin(), weights.end()), 1);
  });
}

TEST(Barycentric, ProductFormKeepsItsDigitsFarFromTheNodes) {
  // T of degree 20 on a stretch around 0: at x = 1 it is 1e20 times its values at the nodes.
  OnEveryTarget([] {
    const Wide half = 0.1L;
    Line line;
    for (std::int32_t k = 0; k <= 20; ++k) line.Push(std::acos(half * std::cos(kPi * k / 20)) / (2 * kPi));
    std::vector<double> weights(21);
    std::int64_t exponent = 0;
    ASSERT_EQ(BarycentricWeights(line.Get(), weights.data(), exponent), Status::Ok);
    for (std::size_t k = 0; k <= 20; ++k) weights[k] *= k % 2 == 0 ? 1 : -1;
    Line end;
    end.Push(0);
    double value = 0;
    ASSERT_EQ(LagrangeValues(line.Get(), weights.data(), exponent, end.Get(), &value), Status::Ok);
    EXPECT_NEAR(value / static_cast<double>(std::cosh(20 * std::acosh(1 / half))), 1, 1e-13);
  });
}

TEST(Barycentric, RefusesWhatItCannotUse) {
  double x[2] = {0, 1};
  std::int64_t exponent = 0;
  const Places two{x, x, 2};
  EXPECT_EQ(BarycentricWeights({x, x, 0}, x, exponent), Status::BadSize);
  EXPECT_EQ(BarycentricWeights({x, nullptr, 2}, x, exponent), Status::NullPointer);
  EXPECT_EQ(BarycentricValues(two, x, nullptr, two, x), Status::NullPointer);
  EXPECT_EQ(BarycentricValues(two, x, x, {x, x, -1}, x), Status::BadSize);
  EXPECT_EQ(BarycentricValues(two, x, x, {nullptr, nullptr, 0}, nullptr), Status::Ok);
  EXPECT_EQ(LagrangeValues(two, x, 0, {nullptr, x, 1}, x), Status::NullPointer);
  EXPECT_EQ(CosineSums(x, x, 0, two, x, x), Status::BadSize);
  EXPECT_EQ(CosineSums(x, nullptr, 2, two, x, x), Status::NullPointer);
}

TEST(CosineSum, HasTwiceTheDigitsOfDouble) {
  // cos(k pi / 3) is 1, 1/2, -1/2, -1, -1/2, 1/2, ..: at x = 1/2 sums are whole numbers, times powers of two.
  constexpr int kTwice[] = {2, 1, -1, -2, -1, 1};
  OnEveryTarget([&] {
    for (const std::int32_t count : {1, 2, 3, 50, 1000}) {
      std::vector<double> hi;
      std::vector<double> lo;
      std::int64_t whole = 0;
      std::int64_t rest = 0;
      for (std::int32_t k = 0; k < count; ++k) {
        const std::int64_t a = (k * 7919LL) % 10007 - 5000;
        const std::int64_t b = (k * 104729LL) % 10009 - 5000;
        hi.push_back(static_cast<double>(a) * 0x1p-13);
        lo.push_back(static_cast<double>(b) * 0x1p-80);
        whole += a * kTwice[k % 6];
        rest += b * kTwice[k % 6];
      }
      for (std::int32_t points = 0; points <= 70; points += points < 35 ? 1 : 7) {
        const auto size = static_cast<std::size_t>(points);
        const std::vector<double> half(size, 0.5);
        const std::vector<double> zero(size, 0.0);
        std::vector<double> sums(size + 1, kGuard);
        std::vector<double> tails(size + 1, kGuard);
        ASSERT_EQ(
            CosineSums(hi.data(), lo.data(), count, {half.data(), zero.data(), points}, sums.data(), tails.data()),
            Status::Ok);
        for (std::size_t i = 0; i < size; ++i) {
          const double error = (sums[i] - static_cast<double>(whole) * 0x1p-14) + tails[i];
          EXPECT_NEAR(error / 0x1p-81, static_cast<double>(rest), 1e-6 * count) << count << ", " << points;
        }
        EXPECT_EQ(sums.back(), kGuard);
        EXPECT_EQ(tails.back(), kGuard);
      }
    }
  });
}

TEST(CosineSum, LongSumsKeepTheirDigitsAtTheEnds) {
  OnEveryTarget([] {
    const std::int32_t count = 5001;
    std::vector<double> alpha(5001);
    const std::vector<double> zero(5001, 0.0);
    alpha.back() = 1;
    Line line;
    for (const Wide f : {0.0L, 1e-6L, 0.01L, 0.25L, 0.37L, 0.499999L, 0.5L}) line.Push(f);
    std::vector<double> hi(7);
    std::vector<double> lo(7);
    ASSERT_EQ(CosineSums(alpha.data(), zero.data(), count, line.Get(), hi.data(), lo.data()), Status::Ok);
    for (std::size_t i = 0; i < 7; ++i) {
      const Wide expected = std::cos(5000 * std::acos(std::clamp(line.At(i), -1.0L, 1.0L)));
      EXPECT_NEAR(static_cast<double>((static_cast<Wide>(hi[i]) - expected) + static_cast<Wide>(lo[i])), 0, 1e-14) << i;
    }
  });
}

}  // namespace
}  // namespace passband::primitives
