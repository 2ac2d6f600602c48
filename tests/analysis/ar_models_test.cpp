// Autoregressive models against their definitions in 50 digits and published results, and their spectra.
#include "passband/analysis/ar_models.h"

#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "passband/analysis/ar_spectra.h"
#include "passband/foundation/scalars.h"
#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;

const std::vector<double>& Reference(const std::string& name) {
  static const std::map<std::string, std::vector<double>> table{
#include "tests/analysis/ar_models_reference.inc"
  };
  return table.at(name);
}

TVec AsVec(const std::string& name, bool complex) {
  TVec v;
  v.SetIt(complex, Reference(name));
  return v;
}

TVec Signal(const std::string& name) { return AsVec(name + ".x", name == "marple"); }

TVec Rounded(const TVec& v, bool is_double) {
  TVec rounded = v;
  rounded.SetFloatPrecision(MakePrecision(v.Complex(), is_double));
  return rounded;
}

double Difference(const TVec& a, const TVec& b) {
  TVec difference = a;
  difference.SetFloatPrecision(MakePrecision(a.Complex(), true));
  difference.Sub(Rounded(b, true));
  return test::MaxAbs(difference);
}

// The estimators in one form; NaN where one returns no variance.
struct Method {
  std::string name;
  std::function<double(const TVec&, std::int32_t, TVec&)> fit;
  std::function<void(const TVec&, TVec&, std::int32_t, std::int32_t)> spectrum;
};
const std::vector<Method>& Methods() {
  static const std::vector<Method> methods{
      {"yule_walker",
       [](const TVec& x, std::int32_t order, TVec& a) {
         ArYuleWalker(x, a, order);
         return std::nan("");
       },
       ArYuleWalkerSpectrum},
      {"burg",
       [](const TVec& x, std::int32_t order, TVec& a) {
         TVec reflection;
         double variance = -1;
         ArBurg(x, order, a, reflection, variance);
         return variance;
       },
       ArBurgSpectrum},
      {"covariance",
       [](const TVec& x, std::int32_t order, TVec& a) {
         double variance = -1;
         ArCovariance(x, order, a, variance);
         return variance;
       },
       ArCovarianceSpectrum},
      {"modified",
       [](const TVec& x, std::int32_t order, TVec& a) {
         double variance = -1;
         ArMCovariance(x, order, a, variance);
         return variance;
       },
       ArMCovarianceSpectrum},
  };
  return methods;
}

TEST(ArModels, AgreeWithTheirDefinitions) {
  struct Case {
    std::string signal;
    std::int32_t order;
    double tolerance;  // epsilon times the condition of the least-squares problems
    double of_variance;
  };
  for (const Case& c :
       {Case{"marple", 15, 2e-12, 1e-12}, {"process", 6, 1e-12, 1e-12}, {"sinusoids", 4, 1e-13, 1e-6}}) {
    const TVec x = Signal(c.signal);
    for (const Method& method : Methods()) {
      SCOPED_TRACE(c.signal + " " + method.name);
      const std::string name = c.signal + "." + method.name;
      TVec a;
      const double variance = method.fit(x, c.order, a);
      ASSERT_EQ(a.Length(), c.order + 1);
      EXPECT_EQ(At(a, 0), (TCplx{1, 0}));
      EXPECT_LE(Difference(a, AsVec(name, x.Complex())), c.tolerance * test::MaxAbs(a));
      if (method.name == "yule_walker") continue;
      const double expected = Reference(name + "_variance")[0];
      EXPECT_NEAR(variance, expected, c.of_variance * expected);
    }
    TVec a, reflection;
    double variance = 0;
    ArBurg(x, c.order, a, reflection, variance);
    EXPECT_LE(Difference(reflection, AsVec(c.signal + ".reflection", x.Complex())), c.tolerance);
  }
}

// Printed for Marple's samples and order 15 by the programs of his book and by the Python package "spectrum" (Cokelaer,
// Hasch, Journal of Open Source Software 2, 2017).
TEST(ArModels, MarplesSequenceGivesThePublishedResults) {
  TVec a, reflection;
  double variance = 0;
  ArBurg(Signal("marple"), 15, a, reflection, variance);
  const TVec published{{2.70936368, -0.77610302}, {5.17482864, -2.73293024}, {7.03527787, -6.15070038}};
  for (std::int32_t i = 0; i < 3; ++i) EXPECT_LE(CAbs(At(a, i + 1) - At(published, i)), 7e-9);
  EXPECT_LE(CAbs(At(a, 15) - TCplx{-0.35565856, 0.14754881}), 7e-9);
  EXPECT_NEAR(variance, 0.0054379699, 1e-10);
  ArCovariance(Signal("marple"), 15, a, variance);
  EXPECT_NEAR(variance, 0.0031358526, 1e-10);
}

TEST(ArModels, SinglePrecisionKeepsItsDigits) {
  for (const char* const signal : {"marple", "process"}) {
    const TVec single = Rounded(Signal(signal), false);
    const TVec wide = Rounded(single, true);
    const std::int32_t order = single.Complex() ? 15 : 6;
    for (const Method& method : Methods()) {
      SCOPED_TRACE(std::string(signal) + " " + method.name);
      TVec a, exact;
      const double variance = method.fit(single, order, a);
      const double expected = method.fit(wide, order, exact);
      ASSERT_EQ(a.FloatPrecision(), single.FloatPrecision());
      if (method.name == "burg") {  // the lattice itself is single
        EXPECT_LE(Difference(a, exact), 20 * 0x1p-23 * test::MaxAbs(exact));
        EXPECT_NEAR(variance, expected, 20 * 0x1p-23 * expected);
      } else {
        EXPECT_TRUE(test::SameBits(a, Rounded(exact, false)));
        EXPECT_TRUE(variance == expected || std::isnan(expected));
      }
    }
  }
}

TEST(ArModels, LongSignalsLoseNothing) {
  const TVec noise = test::Noise(100000, TMtxFloatPrecision::DoubleReal, 11);
  TVec x = noise;
  for (std::int32_t n = 1; n < x.Length(); ++n) x.SetDefault(n, 0.9 * x[n - 1] + noise[n]);
  for (const bool is_double : {true, false}) {
    TVec a, reflection, reference;
    double variance = 0;
    const TVec signal = Rounded(x, is_double);
    ArBurg(signal, 1, a, reflection, variance);
    EXPECT_NEAR(a[1], -0.9, 0.005);
    EXPECT_NEAR(variance, 1.0 / 3, 0.01);  // of the uniform noise
    // The one coefficient is a quotient of sums: computed here in extended precision.
    long double product = 0, power = 0;
    for (std::int32_t n = 1; n < signal.Length(); ++n) {
      const long double f = signal[n], b = signal[n - 1];
      product += f * b;
      power += f * f + b * b;
    }
    EXPECT_NEAR(reflection[0], static_cast<double>(-2 * product / power), 4 * test::Epsilon(signal.FloatPrecision()));
    ArBurg(signal, 24, a, reflection, variance);
    ArMCovariance(Rounded(x, true), 24, reference, variance);
    EXPECT_LE(Difference(a, reference), 2e-4);  // the methods differ by their ends only
  }
}

TEST(ArModels, LevelDoesNotMatter) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    const TVec x = test::Noise(40, precision, 3);
    for (const int exponent : {-130, 60, -900, 900}) {
      if (!x.IsDouble() && std::abs(exponent) > 130) continue;
      TVec scaled = Rounded(x, true);
      scaled.Scale(std::ldexp(1.0, exponent));
      scaled.SetFloatPrecision(precision);
      for (const Method& method : Methods()) {
        SCOPED_TRACE(test::Name(precision) + " " + method.name + " " + std::to_string(exponent));
        TVec a, expected;
        const double variance = method.fit(scaled, 5, a);
        const double unscaled = method.fit(x, 5, expected);
        const double tolerance = x.IsDouble() ? 1e-14 : (exponent < 0 ? 1e-4 : 1e-6);
        EXPECT_LE(Difference(a, expected), tolerance);
        if (std::abs(exponent) < 500 && !std::isnan(unscaled)) {
          EXPECT_NEAR(std::ldexp(variance, -2 * exponent), unscaled, tolerance * unscaled);
        }
      }
    }
  }
}

TEST(ArModels, DegenerateSignals) {
  TVec a, reflection;
  double variance = -1;
  ArBurg({0.0, 0.0, 0.0, 0.0}, 2, a, reflection, variance);  // no errors at all: no reflection
  EXPECT_TRUE(test::SameBits(a, {1.0, 0.0, 0.0}));
  EXPECT_TRUE(test::SameBits(reflection, {0.0, 0.0}));
  EXPECT_EQ(variance, 0);
  ArBurg({3.0, 3.0, 3.0, 3.0, 3.0, 3.0}, 3, a, reflection, variance);
  EXPECT_TRUE(test::SameBits(a, {1.0, -1.0, 0.0, 0.0}));
  EXPECT_EQ(variance, 0);
  ArBurg({1.0, 0.0, 0.0, 1.0}, 1, a, reflection, variance);  // orthogonal errors
  EXPECT_EQ(a[1], 0);
  EXPECT_EQ(variance, 0.5);
  // A constant is predicted by every filter whose coefficients sum to -1; the shortest one is taken.
  for (const bool modified : {false, true}) {
    modified ? ArMCovariance(TVec({5.0, 5.0, 5.0, 5.0, 5.0, 5.0}), 3, a, variance)
             : ArCovariance(TVec({5.0, 5.0, 5.0, 5.0, 5.0, 5.0}), 3, a, variance);
    for (std::int32_t i = 1; i <= 3; ++i) EXPECT_NEAR(a[i], -1.0 / 3, 1e-14);
    EXPECT_NEAR(variance, 0, 1e-28);
  }
  // A sinusoid in more coefficients than it needs: rounding errors of its samples are no equations.
  TVec sinusoid;
  sinusoid.Size(100, TMtxFloatPrecision::DoubleReal);
  for (std::int32_t n = 0; n < 100; ++n) sinusoid.SetDefault(n, static_cast<double>(std::cos(0.7L * n)));
  for (const bool modified : {false, true}) {
    modified ? ArMCovariance(sinusoid, 10, a, variance) : ArCovariance(sinusoid, 10, a, variance);
    double sum = 0;
    for (std::int32_t i = 1; i <= 10; ++i) sum += a[i] * a[i];
    EXPECT_NEAR(sum, 0.19894077553748809, 1e-12);  // the least sum of squares with A = 0 at both poles
    EXPECT_LE(variance, 1e-29);
  }
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    for (const Method& method : Methods()) {
      TVec none;
      none.Size(0, precision);
      method.fit(none, 0, a);
      EXPECT_EQ(a.Length(), 1);
      EXPECT_EQ(a.FloatPrecision(), precision);
      EXPECT_EQ(At(a, 0), (TCplx{1, 0}));
      const TVec x = test::Noise(9, precision, 5);
      const double power = method.fit(x, 0, a);
      EXPECT_EQ(a.Length(), 1);
      if (!std::isnan(power)) {
        EXPECT_NEAR(power, std::pow(x.RMS(), 2), 4 * test::Epsilon(precision));
      }
      TVec in_place = x;
      method.fit(in_place, 4, in_place);
      method.fit(x, 4, a);
      EXPECT_TRUE(test::SameBits(in_place, a));
    }
  }
  ArYuleWalker({1.0, 2.0, 4.0}, a, 1000000000);  // the order is that of the signal
  EXPECT_EQ(a.Length(), 4);
}

TEST(ArModels, RefuseWithTheirTexts) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const TVec x = test::Noise(5, TMtxFloatPrecision::SingleReal, 1);
  TVec a{7.0}, reflection{8.0};
  double err = 9;
  for (const std::int32_t order : {3, 1000000000, std::numeric_limits<std::int32_t>::max()}) {
    EXPECT_RAISES(ArBurg(x, order, a, reflection, err), Exception, "Burg: Order*2 > c.Length");
    EXPECT_RAISES(ArCovariance(x, order, a, err), Exception, "x.Length < 2*Order");
    EXPECT_RAISES(ArMCovariance(x, order + (order == 3 ? 1 : 0), a, err), Exception, "Order*3.0/2.0 > x.Length");
  }
  ArMCovariance(test::Noise(6, TMtxFloatPrecision::SingleReal, 1), 4, a, err);
  a = {7.0};
  err = 9;
  EXPECT_RAISES(ArYuleWalker(x, a, -1), Exception, "ArYuleWalker: Order < 0");
  EXPECT_RAISES(ArBurg(x, -1, a, reflection, err), Exception, "ArBurg: Order < 0");
  EXPECT_RAISES(ArCovariance(x, -1, a, err), Exception, "ArCovariance: Order < 0");
  EXPECT_RAISES(ArMCovariance(x, -1, a, err), Exception, "ArMCovariance: Order < 0");
  const TVec bad{1.0, 2.0, 3.0, 4.0, nan};
  EXPECT_RAISES(ArYuleWalker(bad, a, 1), ECoreError, "ArYuleWalker: an element is not finite");
  EXPECT_RAISES(ArBurg(bad, 1, a, reflection, err), ECoreError, "ArBurg: an element is not finite");
  EXPECT_RAISES(ArCovariance(bad, 1, a, err), ECoreError, "ArCovariance: an element is not finite");
  EXPECT_RAISES(ArMCovariance(bad, 1, a, err), ECoreError, "ArMCovariance: an element is not finite");
  for (const Method& method : Methods()) {
    EXPECT_RAISES(method.spectrum(x, a, 2, 0), ECoreError, "ZeroPadding < 1");
    EXPECT_RAISES(method.spectrum(x, a, 2, 1 << 30), ECoreError, "LargestExp2: n > 2^30");
    EXPECT_THROW(method.spectrum(x, a, -1, 1), Exception);
  }
  EXPECT_TRUE(test::SameBits(a, {7.0}));
  EXPECT_TRUE(test::SameBits(reflection, {8.0}));
  EXPECT_EQ(err, 9);
}

TEST(ArSpectra, AreTheInverseOfTheModelsResponse) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    const TVec x = test::Noise(24, precision, 2);
    for (const Method& method : Methods()) {
      SCOPED_TRACE(test::Name(precision) + " " + method.name);
      TVec a, spectrum;
      method.fit(Rounded(x, true), 6, a);
      method.spectrum(x, spectrum, 6, 3);
      ASSERT_EQ(spectrum.Length(), 32);
      ASSERT_EQ(spectrum.FloatPrecision(), MakePrecision(false, x.IsDouble()));
      for (std::int32_t k = 0; k < 32; ++k) {
        TCplx sum{};
        for (std::int32_t n = 0; n <= 6; ++n) sum += At(a, n) * Expj(-2 * PI * k * n / 32);
        EXPECT_NEAR(spectrum[k] * CAbs(sum), 1, 100 * test::Epsilon(precision)) << k;
        if (!x.Complex() && k > 0) {
          EXPECT_EQ(spectrum[k], spectrum[32 - k]);
        }
      }
      TVec in_place = x;
      method.spectrum(in_place, in_place, 6, 3);
      EXPECT_TRUE(test::SameBits(in_place, spectrum));
      const TVec eight = test::Slice(x, 0, 8);
      method.spectrum(eight, spectrum, 10, 100);
      EXPECT_EQ(spectrum.Length(), method.name == "yule_walker" ? 1024 : 512);  // orders 8 and 4
    }
  }
}

}  // namespace
}  // namespace passband::SignalUtils
