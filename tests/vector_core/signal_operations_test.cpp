#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <vector>

#include "tests/test_support.h"

namespace passband {
namespace {

using test::At;
using test::Epsilon;
using test::Noise;
using enum TMtxFloatPrecision;

using Wide = BasicCplx<long double>;

std::vector<Wide> Widen(const TVec& v) {
  std::vector<Wide> wide;
  for (std::int32_t i = 0; i < v.Length(); ++i) wide.push_back(static_cast<Wide>(At(v, i)));
  return wide;
}

// Largest distance of the elements, relative to the largest element of `want` and the precision of `got`.
double ErrorInEps(const TVec& got, const std::vector<Wide>& want) {
  if (got.Length() != static_cast<std::int32_t>(want.size())) return 1e300;
  long double error = 0;
  long double largest = 0;
  for (std::int32_t i = 0; i < got.Length(); ++i) {
    const Wide w = want[static_cast<std::size_t>(i)];
    const Wide difference = w + -static_cast<Wide>(At(got, i));
    error = std::max(error, std::hypot(difference.Re, difference.Im));
    largest = std::max(largest, std::hypot(w.Re, w.Im));
  }
  return static_cast<double>(error / largest) / Epsilon(got.FloatPrecision());
}

std::vector<Wide> Dft(const std::vector<Wide>& x) {
  std::vector<Wide> X(x.size());
  for (std::size_t k = 0; k < x.size(); ++k) {
    for (std::size_t n = 0; n < x.size(); ++n) {
      const long double turns = static_cast<long double>(n * k % x.size()) / static_cast<long double>(x.size());
      const long double angle = -2 * std::numbers::pi_v<long double> * turns;
      X[k] += x[n] * Wide{std::cos(angle), std::sin(angle)};
    }
  }
  return X;
}

std::vector<Wide> Convolution(const std::vector<Wide>& x, const std::vector<Wide>& h) {
  std::vector<Wide> y(x.size() + h.size() - 1);
  for (std::size_t n = 0; n < x.size(); ++n) {
    for (std::size_t k = 0; k < h.size(); ++k) y[n + k] += x[n] * h[k];
  }
  return y;
}

constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

class SignalOperationsTest : public ::testing::TestWithParam<TMtxFloatPrecision> {};
INSTANTIATE_TEST_SUITE_P(Precisions, SignalOperationsTest, ::testing::ValuesIn(test::kPrecisions),
                         [](const auto& tested) { return test::Name(tested.param); });

TEST_P(SignalOperationsTest, FftIsTheSumHalfOfItForRealData) {
  for (const std::int32_t length : {1, 2, 3, 4, 5, 12, 37, 64, 105, 256}) {
    const TVec x = Noise(length, GetParam(), 1);
    const auto all = Dft(Widen(x));
    TVec X;
    X.FFT(x, true);
    EXPECT_EQ(X.FloatPrecision(), MakePrecision(true, x.IsDouble()));
    EXPECT_LT(ErrorInEps(X, all), 8) << length;
    auto bins = all;
    if (!x.Complex()) bins.resize(static_cast<std::size_t>(length / 2 + 1));
    X.FFT(x);
    EXPECT_LT(ErrorInEps(X, bins), 8) << length;
    TVec in_place = x;
    in_place.FFT();
    EXPECT_TRUE(test::SameBits(in_place, X)) << length;
  }
}

TEST_P(SignalOperationsTest, InverseBringsTheSignalBack) {
  if (IsComplexPrecision(GetParam())) return;
  for (const std::int32_t length : {1, 2, 3, 4, 5, 12, 37, 64, 105, 1001}) {
    const TVec x = Noise(length, GetParam(), 2);
    TVec y;
    y.FFT(x);
    y.IFFTToReal(y, length % 2 == 1);
    EXPECT_EQ(y.FloatPrecision(), GetParam());
    EXPECT_LT(ErrorInEps(y, Widen(x)), 8) << length;
  }
}

TEST_P(SignalOperationsTest, AnalyticSignalTurnsEachToneByAQuarter) {
  if (IsComplexPrecision(GetParam())) return;
  for (const std::int32_t length : {1, 2, 3, 8, 15, 64, 225}) {
    TVec x;
    x.Size(length, GetParam());
    std::vector<Wide> want(static_cast<std::size_t>(length));
    for (std::int32_t n = 0; n < length; ++n) {
      long double re = 0.5;  // a mean and, at half the sampling rate, a tone that have no quadrature
      if (length % 2 == 0) re += n % 2 == 0 ? 0.25 : -0.25;
      long double im = 0;
      for (const std::int32_t k : {1, 3, 6}) {
        if (2 * k >= length) continue;
        const long double angle =
            2 * std::numbers::pi_v<long double> * (k * n % length) / static_cast<long double>(length) + 0.3L * k;
        re += std::cos(angle) / k;
        im += std::sin(angle) / k;
      }
      test::Put(x, n, {static_cast<double>(re), 0});
      want[static_cast<std::size_t>(n)] = {re, im};
    }
    TVec z;
    z.Hilbert(x);
    EXPECT_EQ(z.FloatPrecision(), MakePrecision(true, x.IsDouble()));
    EXPECT_LT(ErrorInEps(z, want), 8) << length;
    for (std::int32_t n = 0; n < length; ++n) EXPECT_EQ(At(z, n).Re, At(x, n).Re);
    x.Hilbert(x);
    EXPECT_TRUE(test::SameBits(x, z)) << length;
  }
}

TEST_P(SignalOperationsTest, ConvolutionIsTheSumForRealAndComplexOperandsOfAnyLength) {
  const std::vector<std::pair<std::int32_t, std::int32_t>> lengths = {
      {1, 1}, {1, 9}, {2, 2}, {7, 3}, {63, 63}, {64, 64}, {65, 200}, {40, 1000}, {300, 63}, {64, 2000}, {700, 1200}};
  for (const auto& [length, taps] : lengths) {
    for (const bool complex : {false, true}) {
      const TVec x = Noise(length, GetParam(), 3);
      const TVec h = Noise(taps, MakePrecision(complex, x.IsDouble()), 4);
      TVec y;
      y.Convolve(x, h);
      EXPECT_EQ(y.Complex(), x.Complex() || complex);
      EXPECT_LT(ErrorInEps(y, Convolution(Widen(x), Widen(h))), 8) << length << " by " << taps;
      TVec in_place = h;
      in_place.Convolve(x, in_place);
      EXPECT_TRUE(test::SameBits(in_place, y)) << length << " by " << taps;
    }
  }
}

TEST_P(SignalOperationsTest, ShortConvolutionsOfIntegersAreExact) {
  TVec power;
  power.Size(1, GetParam());
  power.SetVal(1.0);
  TVec factor;
  factor.Size(2, GetParam());
  factor.SetVal(1.0);
  for (int n = 0; n < 20; ++n) power.Convolve(power, factor);
  ASSERT_EQ(power.Length(), 21);
  EXPECT_EQ(At(power, 10), Cplx(184756));  // 20 over 10
  EXPECT_EQ(At(power, 19), Cplx(20));
}

TEST_P(SignalOperationsTest, AutocorrelationIsTheBiasedEstimate) {
  for (const std::int32_t length : {1, 2, 50, 64, 65, 700, 3000}) {
    for (const std::int32_t lags : {0, 1, 63, 64, 65, 300, 4000}) {
      const TVec x = Noise(length, GetParam(), 5);
      const auto wide = Widen(x);
      std::vector<Wide> want(static_cast<std::size_t>(lags) + 1);
      for (std::size_t k = 0; k < want.size(); ++k) {
        for (std::size_t n = 0; n + k < wide.size(); ++n) want[k] += wide[n + k] * Wide{wide[n].Re, -wide[n].Im};
        want[k] *= 1 / static_cast<long double>(length);
      }
      TVec r;
      r.AutoCorrBiased(x, lags);
      EXPECT_EQ(r.FloatPrecision(), GetParam());
      EXPECT_LT(ErrorInEps(r, want), 4) << length << " samples, " << lags << " lags";
      for (std::int32_t k = length; k <= lags; ++k) ASSERT_EQ(At(r, k), Cplx(0));
    }
  }
}

TEST_P(SignalOperationsTest, OperandsMayBeViewsOfTheResult) {
  const TVec all = Noise(300, GetParam(), 6);
  TVec first = all;
  TVec view;
  view.SetSubRange(first, 3, 200);
  const TVec part = test::Slice(all, 3, 200);
  first.Convolve(view, first);
  TVec want;
  want.Convolve(part, all);
  EXPECT_TRUE(test::SameBits(first, want));
  EXPECT_TRUE(test::SameBits(view, part));
}

TEST_P(SignalOperationsTest, EmptyOperandsGiveEmptyResults) {
  const TVec some = Noise(5, GetParam(), 7);
  TVec empty;
  empty.Size(0, GetParam());
  TVec y = some;
  y.FFT(empty, true);
  EXPECT_EQ(y.Length(), 0);
  EXPECT_TRUE(y.Complex());
  y = some;
  y.Convolve(some, empty);
  EXPECT_EQ(y.Length(), 0);
  EXPECT_EQ(y.FloatPrecision(), GetParam());
  y.AutoCorrBiased(empty, 2);
  ASSERT_EQ(y.Length(), 3);
  EXPECT_EQ(At(y, 0), Cplx(0));
  if (some.Complex()) {
    y.IFFTToReal(empty);
    EXPECT_EQ(y.FloatPrecision(), MakePrecision(false, some.IsDouble()));
  } else {
    y.Hilbert(empty);
    EXPECT_EQ(y.FloatPrecision(), MakePrecision(true, some.IsDouble()));
  }
  EXPECT_EQ(y.Length(), 0);
}

TEST_P(SignalOperationsTest, RefusedCallsChangeNothing) {
  const TVec x = Noise(6, GetParam(), 8);
  TVec y = x;
  EXPECT_RAISES(y.AutoCorrBiased(x, -1), ECoreError, "AutoCorrBiased: Lags < 0");
  EXPECT_RAISES(y.AutoCorrBiased(x, kMax), ECoreError, "Size: more than 2147483647 elements");
  if (x.Complex()) {
    EXPECT_RAISES(y.Hilbert(x), ECoreError, "Hilbert: complex elements");
  } else {
    EXPECT_RAISES(y.IFFTToReal(x), ECoreError, "IFFTToReal: real elements");
  }
  if (x.IsDouble()) {
    EXPECT_RAISES(y.Convolve(x, Noise(3, SingleReal, 1)), ECoreError,
                  x.Complex() ? "the operands have precisions double complex and single"
                              : "the operands have precisions double and single");
  }
  EXPECT_TRUE(test::SameBits(y, x));
}

}  // namespace
}  // namespace passband
