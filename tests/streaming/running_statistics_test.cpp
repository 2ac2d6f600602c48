#include "passband/streaming/running_statistics.h"

#include <cmath>
#include <limits>
#include <numeric>

#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using test::Noise;
using test::SameBits;

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(RunningAverage, IsTheMeanOfTheBlocksOrExponential) {
  TVec mean;
  RunningAverage(mean, TVec{3}, 0);
  RunningAverage(mean, TVec{5}, 1);
  RunningAverage(mean, TVec{7}, 2);
  EXPECT_EQ(mean[0], 5);
  RunningAverage(mean, TVec{9, 1}, 0, 4);  // the first block is copied
  EXPECT_TRUE(SameBits(mean, TVec{9, 1}));
  RunningAverage(mean, TVec{1, 5}, 1, 4);
  EXPECT_TRUE(SameBits(mean, TVec{7, 2}));
  RunningAverage(mean, TVec{-1, 2}, 77, 2);
  EXPECT_TRUE(SameBits(mean, TVec{3, 2}));
  TMtx rows;
  rows.Size(2, 2, TMtxFloatPrecision::SingleReal);
  rows.SetVal(1.0);
  TMtx average = rows;
  rows.SetVal(4.0);
  RunningAverage(average, rows, 2);
  for (const float v : average.SValues()) EXPECT_EQ(v, 2);
}

TEST(RunningAverage, OfManyBlocksIsTheMeanOfAll) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    constexpr std::int32_t kBlocks = 20000;
    TVec mean;
    std::vector<long double> re(8);
    std::vector<long double> im(8);
    for (std::int32_t count = 0; count < kBlocks; ++count) {
      const TVec block = Noise(8, precision, static_cast<std::uint32_t>(count));
      RunningAverage(mean, block, count);
      for (std::int32_t i = 0; i < 8; ++i) {
        re[static_cast<std::size_t>(i)] += At(block, i).Re;
        im[static_cast<std::size_t>(i)] += At(block, i).Im;
      }
    }
    // Each step rounds a mean of about 0.01 by half a unit; step j still counts j / k.
    const double tolerance = test::Epsilon(precision) * 0.02 * std::sqrt(kBlocks / 3.0) + 1e-17;
    for (std::int32_t i = 0; i < 8; ++i) {
      EXPECT_NEAR(At(mean, i).Re, static_cast<double>(re[static_cast<std::size_t>(i)] / kBlocks), tolerance);
      EXPECT_NEAR(At(mean, i).Im, static_cast<double>(im[static_cast<std::size_t>(i)] / kBlocks), tolerance);
    }
  }
}

TEST(RunningAverage, OfAConstantStaysIt) {
  // Thousand million samples: a thousand elements, up to count 2^31 - 1 in a million steps.
  TVec block;
  block.Size(1000, TMtxFloatPrecision::SingleReal);
  block.SetVal(0.1);
  TVec mean = block;
  for (std::int32_t step = 0; step < 20000; ++step) RunningAverage(mean, block, 1 + step * 107374);
  EXPECT_TRUE(SameBits(mean, block));
}

TEST(RunningAverage, KeepsInfinitiesAndLargeNumbers) {
  TVec mean = {kInf, 1, 1.5e308, -1.5e308, std::nan("")};
  RunningAverage(mean, TVec{1, -kInf, -1.5e308, 1.7e308, 1}, 3);
  EXPECT_EQ(mean[0], kInf);
  EXPECT_EQ(mean[1], -kInf);
  EXPECT_NEAR(mean[2] / 1.5e308, 0.5, 1e-15);
  EXPECT_NEAR(mean[3] / 1e308, -1.5 * 0.75 + 1.7 / 4, 1e-15);
  EXPECT_TRUE(std::isnan(mean[4]));
}

TEST(RunningAverage, RefusesWhatDoesNotFit) {
  TVec mean = {1, 2, 3};
  const TVec before = mean;
  EXPECT_RAISES(RunningAverage(mean, TVec{1, 2}, 1), ECoreError, "TVec: the operands have lengths 3 and 2");
  EXPECT_THROW(RunningAverage(mean, Noise(3, TMtxFloatPrecision::SingleReal, 1), 1), ECoreError);
  EXPECT_TRUE(SameBits(mean, before));
  TMtx a;
  TMtx b;
  a.Size(2, 3, TMtxFloatPrecision::DoubleReal);
  b.Size(3, 2, TMtxFloatPrecision::DoubleReal);
  EXPECT_THROW(RunningAverage(a, b, 1), ECoreError);
}

TEST(StdDev, IsThatOfTheNumbers) {
  // 1 .. n: the variance is n (n + 1) / 12.
  for (const std::int32_t n : {2, 3, 10, 1000}) {
    double squares = 0;
    double sum = 0;
    for (std::int32_t k = 1; k <= n; ++k) {
      squares += static_cast<double>(k) * k;
      sum += k;
    }
    const double expected = std::sqrt(n * (n + 1.0) / 12);
    EXPECT_NEAR(StdDev(squares, sum, n), expected, 2e-16 * expected);
    TVec result;
    StdDev(TVec{squares, 4.0 * squares}, TVec{sum, 2.0 * sum}, n, result);
    EXPECT_NEAR(result[1], 2 * expected, 4e-16 * expected);
  }
  EXPECT_EQ(StdDev(0, 0, 3), 0);
  EXPECT_TRUE(std::isnan(StdDev(1, 10, 5)));
}

TEST(StdDev, LosesNothingThatTheSumsStillHold) {
  // 2e7 + {0, 1, 2, 3, 4}: the sum of squares is exact, n S2 and S1^2 agree in all digits of a double.
  double squares = 0;
  for (int k = 0; k < 5; ++k) squares += (2e7 + k) * (2e7 + k);
  EXPECT_NEAR(StdDev(squares, 1e8 + 10, 5), std::sqrt(2.5), 1e-15);
  TMtx s2;
  TMtx s1;
  s2.Size(1, 1, TMtxFloatPrecision::SingleReal);
  s1.Size(1, 1, TMtxFloatPrecision::SingleReal);
  s2.SetVal(200.0 * 200 + 201 * 201);
  s1.SetVal(401.0);
  StdDev(s2, s1, 2, s1);
  EXPECT_EQ(s1.SValues()[0], static_cast<float>(std::sqrt(0.5)));
}

TEST(StdDev, Refuses) {
  TVec result = {7};
  const char* const kLoss =
      "Detected complete loss of numerical precision within StdDev routine. Consider reducing number of averages!";
  EXPECT_RAISES(StdDev(TVec{55, 1}, TVec{15, 10}, 5, result), ECoreError, kLoss);
  for (const std::int32_t count : {1, 0, -2}) {
    EXPECT_RAISES(StdDev(1, 1, count), ECoreError, "StdDev: Count <= 1");
    EXPECT_RAISES(StdDev(TVec{1}, TVec{1}, count, result), ECoreError, "StdDev: Count <= 1");
  }
  const TVec complex = Noise(1, TMtxFloatPrecision::DoubleComplex, 1);
  EXPECT_RAISES(StdDev(complex, complex, 5, result), ECoreError, "StdDev: complex elements");
  EXPECT_THROW(StdDev(TVec{1, 2}, TVec{1}, 5, result), ECoreError);
  EXPECT_TRUE(SameBits(result, TVec{7}));
}

}  // namespace
}  // namespace passband::SignalUtils
