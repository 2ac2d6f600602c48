#include "passband/streaming/exponential_average.h"

#include <cmath>
#include <limits>

#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using test::Noise;
using test::SameBits;

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(ExpAverage, DesignHasItsTimeConstant) {
  TVec num;
  TVec den;
  ExpAverageFilter(4, num, den);
  EXPECT_TRUE(SameBits(num, TVec{0.25, 0}));
  EXPECT_TRUE(SameBits(den, TVec{1, -0.75}));
  num.Size(7, TMtxFloatPrecision::SingleComplex);
  ExpAverageFilter(3, num, den);
  EXPECT_EQ(num.FloatPrecision(), TMtxFloatPrecision::SingleReal);
  EXPECT_EQ(num[0], static_cast<double>(1.0F / 3));
  const TVec before = num;
  for (const double bad : {kInf, -1.0, 0.0, 1e-309, std::nan("")}) {
    EXPECT_RAISES(ExpAverageFilter(bad, num, den), ECoreError, "not (1/MAXNUM < Decay < MAXNUM)");
  }
  EXPECT_TRUE(SameBits(num, before));
}

TEST(ExpAverage, OfAStepIsAGeometricApproach) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    for (const double percent : {50.0, 1.0, 1e-3}) {
      TVec x;
      x.Size(20000, precision);
      x.SetVal(2.0);
      double state = 0;
      TCplx complex_state{0, 8};
      if (x.Complex()) {
        ExpAverageFilter(x, complex_state, percent);
      } else {
        ExpAverageFilter(x, state, percent);
      }
      for (const std::int32_t n : {0, 1, 2, 100, 19999}) {
        const double left = std::exp((n + 1) * std::log1p(-percent / 100));
        // The power of the rounded weight, and the sum over half a unit of rounding at every step.
        const double drift = (n + 2) * 0x1p-52 * left + 0x1p-53 * 100 / percent;
        EXPECT_NEAR(At(x, n).Re, 2 * (1 - left), 2 * (drift + test::Epsilon(precision))) << percent << " at " << n;
        if (x.Complex()) {
          EXPECT_NEAR(At(x, n).Im, 8 * left, 8 * (drift + test::Epsilon(precision))) << percent << " at " << n;
        }
      }
      const double last = x.Complex() ? complex_state.Re : state;
      EXPECT_NEAR(last, At(x, 19999).Re, test::Epsilon(precision));
    }
  }
}

TEST(ExpAverage, SamplesAndBlocksGiveTheSameBits) {
  const TVec x = Noise(500, TMtxFloatPrecision::DoubleReal, 3);
  TVec y = x;
  double state = 0.25;
  ExpAverageFilter(y, state, 7);
  double single = 0.25;
  for (std::int32_t n = 0; n < 500; ++n) {
    ExpAverageFilter(x[n], single, 7);
    ASSERT_EQ(single, y[n]);
  }
  EXPECT_EQ(state, single);
  TVec none;
  ExpAverageFilter(none, state, 7);
  EXPECT_EQ(state, single);
}

TEST(ExpAverage, SlowAveragesOfSinglePrecisionKeepMoving) {
  // Steps of 1e-9 of the average are lost in single precision.
  TVec x;
  x.Size(1000, TMtxFloatPrecision::SingleReal);
  double state = 1;
  for (int block = 0; block < 1000; ++block) {
    x.SetVal(1.5);
    ExpAverageFilter(x, state, 1e-7);
  }
  EXPECT_NEAR(state, 1.5 - 0.5 * std::exp(-1e-3), 1e-9);
}

TEST(ExpAverage, Refuses) {
  TVec real = {1, 2};
  TVec complex;
  complex.Size(2, TMtxFloatPrecision::SingleComplex);
  double state = 3;
  TCplx complex_state{3, 4};
  EXPECT_RAISES(ExpAverageFilter(complex, state, -1), ECoreError, "Data.Complex = True");
  EXPECT_RAISES(ExpAverageFilter(real, complex_state, 100), ECoreError, "Data.Complex = false");
  for (const double bad : {0.0, -1.0, std::nan("")}) {
    EXPECT_RAISES(ExpAverageFilter(real, state, bad), ECoreError, "Decay <= 0");
    EXPECT_RAISES(ExpAverageFilter(complex, complex_state, bad), ECoreError, "Decay <= 0");
    EXPECT_RAISES(ExpAverageFilter(1.0, state, bad), ECoreError, "Decay <= 0");
  }
  EXPECT_RAISES(ExpAverageFilter(real, state, 100), ECoreError, "Decay >= 100");
  EXPECT_RAISES(ExpAverageFilter(1.0, state, kInf), ECoreError, "Decay >= 100");
  EXPECT_EQ(state, 3);
  EXPECT_TRUE(SameBits(real, TVec{1, 2}));
}

}  // namespace
}  // namespace passband::SignalUtils
