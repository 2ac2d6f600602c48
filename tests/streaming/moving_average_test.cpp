#include "passband/streaming/moving_average.h"

#include <cmath>
#include <limits>

#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using test::SameBits;

// Noise of multiples of 1/512, of which every sum of a few thousand is exact.
TVec Multiples(std::int32_t length, TMtxFloatPrecision precision) {
  TVec x = test::Noise(length, precision, 9);
  for (std::int32_t n = 0; n < length; ++n) {
    test::Put(x, n, {std::floor(512 * At(x, n).Re) / 512, std::floor(512 * At(x, n).Im) / 512});
  }
  return x;
}

// The definition, in extended precision.
TCplx Mean(const TVec& x, std::int32_t n, std::int32_t order) {
  long double re = 0;
  long double im = 0;
  for (std::int32_t k = n + order / 2 - order + 1; k <= n + order / 2; ++k) {
    if (k < 0 || k >= x.Length()) continue;
    re += At(x, k).Re;
    im += At(x, k).Im;
  }
  return {static_cast<double>(re / order), static_cast<double>(im / order)};
}

TEST(MovingAverage, IsTheMeanAroundEachElement) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    for (const std::int32_t length : {1, 2, 7, 40, 333}) {
      const TVec x = Multiples(length, precision);
      for (const std::int32_t order : {1, 2, 3, 4, 7, 39, 40, 41, 79, 80, 81, 1000}) {
        TVec y = x;
        MovingAverageFilter(y, order);
        for (std::int32_t n = 0; n < length; ++n) {
          const TCplx mean = Mean(x, n, order);
          ASSERT_NEAR(At(y, n).Re, mean.Re, test::Epsilon(precision)) << length << ", order " << order << " at " << n;
          ASSERT_NEAR(At(y, n).Im, mean.Im, test::Epsilon(precision)) << length << ", order " << order << " at " << n;
        }
      }
    }
  }
}

TEST(MovingAverage, StretchHasZerosAroundIt) {
  const TVec x = Multiples(60, TMtxFloatPrecision::SingleComplex);
  TVec y = x;
  MovingAverageFilter(y, 7, 5, 20);
  TVec alone = test::Slice(x, 5, 20);
  MovingAverageFilter(alone, 7);
  EXPECT_TRUE(SameBits(test::Slice(y, 5, 20), alone));
  EXPECT_TRUE(SameBits(test::Slice(y, 0, 5), test::Slice(x, 0, 5)));
  EXPECT_TRUE(SameBits(test::Slice(y, 25, 35), test::Slice(x, 25, 35)));
}

TEST(MovingAverage, FullLengthIgnoresTheIndex) {
  const TVec x = Multiples(60, TMtxFloatPrecision::DoubleReal);
  TVec expected = x;
  MovingAverageFilter(expected, 5);
  for (const auto& [index, len] : {std::pair{17, 60}, {-4, 60}, {0, -1}, {99, -7}}) {
    TVec y = x;
    MovingAverageFilter(y, 5, index, len);
    EXPECT_TRUE(SameBits(y, expected)) << index << ", " << len;
  }
  TVec y = x;
  MovingAverageFilter(y, 5, 17, 0);
  EXPECT_TRUE(SameBits(y, x));
}

TEST(MovingAverage, NonFiniteElementsStayInTheirMeans) {
  const double inf = std::numeric_limits<double>::infinity();
  TVec x = Multiples(300, TMtxFloatPrecision::DoubleReal);
  TVec clean = x;
  MovingAverageFilter(clean, 9);
  x.SetDefault(100, inf);
  x.SetDefault(150, std::nan(""));
  MovingAverageFilter(x, 9);
  for (std::int32_t n = 0; n < 300; ++n) {
    if (std::abs(n - 100) <= 4) {
      EXPECT_EQ(x[n], inf);
    } else if (std::abs(n - 150) <= 4) {
      EXPECT_TRUE(std::isnan(x[n]));
    } else {
      EXPECT_EQ(x[n], clean[n]);
    }
  }
}

TEST(MovingAverage, DoesNotDrift) {
  // A running sum of differences would carry the rounding errors next to the large numbers into the small ones.
  TVec x;
  x.Size(200000, TMtxFloatPrecision::DoubleReal);
  for (std::int32_t n = 0; n < 200000; ++n) x.SetDefault(n, n < 100000 ? 1e15 * std::sin(n) : 0.1);
  MovingAverageFilter(x, 100);
  EXPECT_NEAR(x[199000], 0.1, 1e-15);
}

TEST(MovingAverage, ImpulseIsFlatAndOrdersAreChecked) {
  TVec h;
  h.Size(3, TMtxFloatPrecision::SingleComplex);
  MovingAverageImpulse(h, 5);
  ASSERT_EQ(h.FloatPrecision(), TMtxFloatPrecision::SingleReal);
  ASSERT_EQ(h.Length(), 5);
  for (std::int32_t k = 0; k < 5; ++k) EXPECT_EQ(h[k], static_cast<double>(0.2F));
  for (const std::int32_t order : {0, -3}) {
    EXPECT_RAISES(MovingAverageImpulse(h, order), ECoreError, "MovingAverageImpulse: Order <= 0");
    EXPECT_RAISES(MovingAverageFilter(h, order), ECoreError, "MovingAverageFilter: Order <= 0");
  }
  EXPECT_THROW(MovingAverageFilter(h, 3, 3, 4), ECoreError);
  EXPECT_EQ(h[4], static_cast<double>(0.2F));
  TVec none;
  MovingAverageFilter(none, 3);
  MovingAverageFilter(h, std::numeric_limits<std::int32_t>::max());
  EXPECT_LT(h[0], 1e-9);
}

}  // namespace
}  // namespace passband::SignalUtils
