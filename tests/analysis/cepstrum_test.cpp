// Cepstra against closed forms of products of zeros and against their definition in extended precision.
#include "passband/analysis/cepstrum.h"

#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <numbers>
#include <vector>

#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using Wide = std::complex<long double>;
using WideVector = std::vector<long double>;

constexpr long double kPi = std::numbers::pi_v<long double>;

TVec Rounded(TVec v, bool is_double) {
  v.SetFloatPrecision(MakePrecision(v.Complex(), is_double));
  return v;
}

// The signal with the zeros `inside` the unit circle, and those at 1 / b outside, from which a delay comes:
// A prod (1 - a z^-1) prod (z^-1 - b).
TVec SignalOf(double gain, const std::vector<double>& inside, const std::vector<double>& outside) {
  WideVector x{gain};
  const auto multiply = [&x](long double first, long double second) {
    WideVector product(x.size() + 1);
    for (std::size_t n = 0; n < x.size(); ++n) {
      product[n] += first * x[n];
      product[n + 1] += second * x[n];
    }
    x = product;
  };
  for (const double a : inside) multiply(1, -a);
  for (const double b : outside) multiply(-b, 1);
  TVec v;
  v.Size(static_cast<std::int32_t>(x.size()), TMtxFloatPrecision::DoubleReal);
  for (std::size_t n = 0; n < x.size(); ++n) v.Values()[n] = static_cast<double>(x[n]);
  return v;
}

// Its complex cepstrum at quefrency m: ln A at 0, -sum a^m / m above, sum b^-m / m below.
double CepstrumOf(double gain, const std::vector<double>& inside, const std::vector<double>& outside, int m) {
  if (m == 0) return std::log(gain);
  double sum = 0;
  for (const double z : m > 0 ? inside : outside) sum -= std::pow(z, std::abs(m)) / std::abs(m);
  return sum;
}

struct Model {
  double gain;
  std::vector<double> inside, outside;
};
const std::vector<Model>& Models() {                       // of even length
  static const std::vector<Model> models{{1, {-0.5}, {}},  // minimum phase
                                         {2.5, {0.6, -0.7, 0.2}, {}},
                                         {1, {}, {0.5, -0.3, 0.4}},  // maximum phase
                                         {0.75, {0.5, -0.6, -0.1}, {0.4, -0.65}},
                                         {4, {}, {0.5}}};
  return models;
}

TEST(ComplexCepstrum, OfZerosHasItsClosedFormAndComesBack) {
  for (const Model& model : Models()) {
    for (const bool is_double : {false, true}) {
      const TVec x = Rounded(SignalOf(model.gain, model.inside, model.outside), is_double);
      if (x.Length() % 2 != 0) continue;
      TVec cepstrum;
      const double lag = CplxCepstrum(x, cepstrum, 200);
      EXPECT_EQ(lag, static_cast<double>(model.outside.size()));
      ASSERT_EQ(cepstrum.FloatPrecision(), x.FloatPrecision());
      const std::int32_t n = cepstrum.Length();
      ASSERT_GE(n, 256);
      const double tolerance = is_double ? 1e-13 : 1e-6;
      for (int m = -100; m <= 100; ++m) {
        EXPECT_NEAR(cepstrum[(m + n) % n], CepstrumOf(model.gain, model.inside, model.outside, m), tolerance) << m;
      }
      TVec back;
      CplxCepstrumInv(cepstrum, back, lag, x.Length() + 3);
      ASSERT_EQ(back.Length(), x.Length() + 3);
      for (std::int32_t i = 0; i < back.Length(); ++i) {
        EXPECT_NEAR(back[i], i < x.Length() ? x[i] : 0, 5 * tolerance * model.gain) << i;
      }
    }
  }
}

TEST(ComplexCepstrum, EveryEvenSignalOfPositiveSumComesBack) {
  for (const std::int32_t length : {2, 4, 30, 1000}) {
    TVec x = test::Noise(length, TMtxFloatPrecision::DoubleReal, 7);
    x.SetDefault(0, x[0] + 3 * length);
    TVec cepstrum;
    for (const std::int32_t padding : {1, 5}) {
      const double lag = CplxCepstrum(x, cepstrum, padding);
      EXPECT_EQ(lag, 0);  // the first sample outweighs the others
      CplxCepstrumInv(cepstrum, cepstrum, lag, length);
      for (std::int32_t i = 0; i < length; ++i) EXPECT_NEAR(cepstrum[i], x[i], 1e-13 * 3 * length) << i;
    }
  }
}

TEST(ComplexCepstrum, LagsDelayAlsoByPartsAndFar) {
  TVec back;
  const TVec nothing = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
  for (const double lag : {0.0, 3.0, -2.0, 8000000000003.0, -799999999998.0}) {
    CplxCepstrumInv(nothing, back, lag, 8);
    const auto place = static_cast<std::int32_t>(std::fmod(std::fmod(lag, 8) + 8, 8));
    for (std::int32_t i = 0; i < 8; ++i) EXPECT_NEAR(back[i], i == place ? 1 : 0, 1e-15) << lag;
  }
  CplxCepstrumInv(nothing, back, 2.5, 8);  // between samples: a periodic sinc
  for (std::int32_t i = 0; i < 8; ++i) {
    double expected = 1;
    for (int k = 1; k <= 3; ++k) expected += 2 * std::cos(2 * static_cast<double>(kPi) * k * (i - 2.5) / 8);
    EXPECT_NEAR(back[i], expected / 8, 1e-15);  // the bin at half the sampling frequency is imaginary: it drops out
  }
  CplxCepstrumInv(TVec{}, back, 1, 3);
  EXPECT_TRUE(test::SameBits(back, {0.0, 0.0, 0.0}));
  const TVec tone = test::Noise(16, TMtxFloatPrecision::SingleReal, 1);
  CplxCepstrumInv(tone, back, 0, 4);
  EXPECT_EQ(back.Length(), 4);
  EXPECT_EQ(back.FloatPrecision(), TMtxFloatPrecision::SingleReal);
}

// The definition in extended precision: n points, Hamming windows over the data where asked for.
WideVector LogSpectrum(WideVector x, std::size_t n, bool hamming) {
  for (std::size_t i = 0; hamming && i < x.size(); ++i) {
    x[i] *= 0.54L - 0.46L * std::cos(2 * kPi * static_cast<long double>(i) / static_cast<long double>(x.size()));
  }
  WideVector log;
  for (std::size_t k = 0; k <= n / 2; ++k) {
    Wide sum = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
      sum += x[i] * std::polar(1.0L, -2 * kPi * static_cast<long double>(i * k % n) / static_cast<long double>(n));
    }
    log.push_back(std::abs(sum));
  }
  return log;
}

WideVector Expected(const TVec& src, bool remove_dc, bool hamming, bool magnitude) {
  WideVector x;
  for (std::int32_t i = 0; i < src.Length(); ++i) x.push_back(src[i]);
  const auto remove_mean = [remove_dc](WideVector& v) {
    long double mean = 0;
    for (const long double value : v) mean += value / static_cast<long double>(v.size());
    for (long double& value : v) value -= remove_dc ? mean : 0;
  };
  std::size_t n = 1;
  while (n < x.size()) n *= 2;
  remove_mean(x);
  WideVector log = LogSpectrum(x, n, hamming);
  for (long double& value : log) value = std::log(value);
  remove_mean(log);
  log.pop_back();
  if (magnitude) return LogSpectrum(log, n / 2, hamming);
  WideVector cepstrum;
  for (std::size_t m = 0; m < n / 2; ++m) {
    long double sum = log[0];
    for (std::size_t k = 1; k < log.size(); ++k) {
      sum += 2 * log[k] * std::cos(2 * kPi * static_cast<long double>(k * m % n) / static_cast<long double>(n));
    }
    cepstrum.push_back(sum / static_cast<long double>(n));
  }
  return cepstrum;
}

TEST(RealCepstrum, IsTheInverseTransformOfTheLogarithm) {
  for (const bool is_double : {false, true}) {
    const TVec x = test::Noise(100, MakePrecision(false, is_double), 4);
    for (const bool remove_dc : {false, true}) {
      for (const bool hamming : {false, true}) {
        for (const bool magnitude : {false, true}) {
          SCOPED_TRACE(testing::Message() << is_double << remove_dc << hamming << magnitude);
          const WideVector expected = Expected(x, remove_dc, hamming, magnitude);
          TVec cepstrum = x;
          RealCepstrum(cepstrum, cepstrum, remove_dc,
                       hamming ? TSignalWindowType::wtHamming : TSignalWindowType::wtRectangular, magnitude);
          ASSERT_EQ(cepstrum.FloatPrecision(), x.FloatPrecision());
          ASSERT_EQ(cepstrum.Length(), magnitude ? 33 : 64);
          // Removing the mean leaves rounding errors of 1e-17 at frequency 0, whose logarithm is arbitrary.
          if (remove_dc && !hamming) continue;
          for (std::int32_t m = 0; m < cepstrum.Length(); ++m) {
            const double value = static_cast<double>(expected[static_cast<std::size_t>(m)]);
            EXPECT_NEAR(cepstrum[m], value, (is_double ? 1e-13 : 2e-7) * (1 + std::abs(value))) << m;
          }
        }
      }
    }
  }
}

TEST(RealCepstrum, ZerosInTheSpectrumCountAsOne) {
  TVec cepstrum;
  RealCepstrum({1.0, 0.0, 0.0, 0.0, -1.0, 0.0, 0.0, 0.0}, cepstrum);  // every second bin is 0, the others 2
  const TVec expected = {std::log(2.0) / 2, 0.0, 0.0, 0.0};
  for (std::int32_t m = 0; m < 4; ++m) EXPECT_NEAR(cepstrum[m], expected[m], 1e-16);
  RealCepstrum({0.0, 0.0, 0.0, 0.0}, cepstrum);
  EXPECT_TRUE(test::SameBits(cepstrum, {0.0, 0.0}));
  RealCepstrum({3.0}, cepstrum);
  EXPECT_EQ(cepstrum.Length(), 0);
  RealCepstrum({3.0}, cepstrum, false, TSignalWindowType::wtRectangular, true);
  EXPECT_EQ(cepstrum.Length(), 0);
  // The level is a term at quefrency 0 (and at half the spectrum, whose last bin counts as 0), however large.
  const TVec x = test::Noise(64, TMtxFloatPrecision::DoubleReal, 2);
  TVec scaled = x;
  scaled.Scale(0x1p+600);
  TVec reference;
  RealCepstrum(x, reference);
  RealCepstrum(scaled, cepstrum);
  for (std::int32_t m = 0; m < 32; ++m) {
    const double sum = m == 0 ? 63 : (m % 2 == 0 ? -1 : 1);  // of cos over all bins but one
    EXPECT_NEAR(cepstrum[m], reference[m] + 600 * std::log(2.0) * sum / 64, 1e-12);
  }
}

TEST(Cepstra, RefuseWithTheirTexts) {
  TVec cepstrum = {7.0};
  const TVec x = {1.0, 2.0, 3.0};
  EXPECT_RAISES(RealCepstrum(TVec{}, cepstrum, true), ECoreError, "FrequencyResponse: Num.Length = 0");
  EXPECT_RAISES(CplxCepstrum(TVec{}, cepstrum), ECoreError, "FrequencyResponse: Num.Length = 0");
  EXPECT_RAISES(CplxCepstrum(x, cepstrum, 0), ECoreError, "ZeroPadding < 1");
  EXPECT_RAISES(CplxCepstrum(x, cepstrum, 1 << 30), ECoreError, "LargestExp2: n > 2^30");
  EXPECT_RAISES(CplxCepstrumInv(x, cepstrum, 0, 4), ECoreError, "Src.Length must be even");
  EXPECT_RAISES(CplxCepstrumInv({1.0, 2.0}, cepstrum, 0, -1), ECoreError, "Size: a length is negative");
  EXPECT_TRUE(test::SameBits(cepstrum, {7.0}));
  for (const TMtxFloatPrecision precision : test::kPrecisions) {  // odd and complex signals: lengths, and no failure
    const TVec noise = test::Noise(9, precision, 3);
    CplxCepstrum(noise, cepstrum, 2);
    EXPECT_EQ(cepstrum.Length(), noise.Complex() ? 63 : 33);
    EXPECT_EQ(cepstrum.FloatPrecision(), MakePrecision(false, noise.IsDouble()));
  }
}

}  // namespace
}  // namespace passband::SignalUtils
