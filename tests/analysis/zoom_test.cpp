// Goertzel's sums and the chirp-z transform against direct sums in extended precision.
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>

#include "passband/analysis/chirp_z.h"
#include "passband/analysis/goertzel.h"
#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using Wide = std::complex<long double>;

constexpr long double kTurn = 2 * std::numbers::pi_v<long double>;

// exp(-2 pi j t)
Wide Turned(long double turns) { return std::polar(1.0L, -kTurn * (turns - std::nearbyint(turns))); }

Wide WideAt(const TVec& x, std::int32_t i) { return {At(x, i).Re, At(x, i).Im}; }

struct Sum {
  Wide value = 0;
  long double magnitudes = 0;

  Sum(const TVec& x, double frequency) {
    for (std::int32_t n = 0; n < x.Length(); ++n) {
      value += WideAt(x, n) * Turned(static_cast<long double>(frequency) * n);
      magnitudes += std::abs(WideAt(x, n));
    }
  }
  double Error(TCplx found) const {
    return static_cast<double>(std::abs(Wide(found.Re, found.Im) - value) / magnitudes);
  }
};

TEST(Goertzel, AgreesWithTheDirectSumAtEveryFrequencyAndLength) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    for (const std::int32_t length : {1, 2, 7, 16, 33, 255, 256, 257, 511, 513, 4096, 8191, 8193, 40000}) {
      const TVec x = test::Noise(length, precision, 7);
      for (const double wanted : {1e-9, 1e-4, 0.01, 0.125, 0.2500001, 0.4999, 0.5, 0.75, 0.99999}) {
        if (!x.Complex() && wanted >= 0.5) continue;
        const double frequency = x.IsDouble() ? wanted : static_cast<double>(static_cast<float>(wanted));
        EXPECT_LE(Sum(x, frequency).Error(Goertz(x, wanted)), 2 * test::Epsilon(precision))
            << test::Name(precision) << " " << length << " at " << wanted;
      }
    }
  }
}

TEST(Goertzel, PairsAndListsGiveTheSameValues) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    const TVec x = test::Noise(100, precision, 3);
    TVec frequencies = {0.1, 0.2, 0.3, 0.4, 0.05};
    TVec spectrum;
    Goertz(x, frequencies, spectrum);
    ASSERT_EQ(spectrum.FloatPrecision(), MakePrecision(true, x.IsDouble()));
    for (std::int32_t i = 0; i < 5; ++i) {
      const TCplx single = Goertz(x, frequencies[i]);
      TCplx first{};
      TCplx second{};
      GoertzTwo(x, frequencies[i], 0.45, first, second);
      EXPECT_EQ(first, single);
      EXPECT_EQ(second, Goertz(x, 0.45));
      TVec rounded;
      rounded.Size(1, spectrum.FloatPrecision());
      test::Put(rounded, 0, single);
      EXPECT_EQ(At(spectrum, i), At(rounded, 0));
    }
    Goertz(x, frequencies, frequencies);
    EXPECT_TRUE(test::SameBits(frequencies, spectrum));
  }
}

TEST(Goertzel, EmptyDataAndNonFiniteSamples) {
  const TVec none;
  EXPECT_EQ(Goertz(none, 0.1), (TCplx{0, 0}));
  TCplx first{1, 2};
  TCplx second{3, 4};
  GoertzTwo(none, 0.1, 0.2, first, second);
  EXPECT_EQ(first, (TCplx{1, 2}));
  TVec spectrum;
  Goertz(none, {0.1, 0.2}, spectrum);
  EXPECT_EQ(spectrum.Length(), 2);
  EXPECT_EQ(test::MaxAbs(spectrum), 0);
  Goertz({1.0, 2.0}, none, spectrum);
  EXPECT_EQ(spectrum.Length(), 0);
  TVec x = test::Noise(600, TMtxFloatPrecision::DoubleReal, 3);
  x.SetDefault(599, std::numeric_limits<double>::infinity());
  EXPECT_FALSE(std::isfinite(Goertz(x, 0.1).Re));
}

TEST(Goertzel, RefusesWithItsTexts) {
  const TVec real = {1.0, 2.0};
  TVec complex;
  complex.Size(0, TMtxFloatPrecision::SingleComplex);
  TCplx a{1, 0};
  TCplx b{2, 0};
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_RAISES(Goertz(real, 0.5), ELatticaInvalidArgument, "(not Complex) and (Freq >= 0.5)");
  EXPECT_RAISES(Goertz(complex, 2), ELatticaInvalidArgument, "Freq >= 1)");
  EXPECT_RAISES(Goertz(complex, nan), ELatticaInvalidArgument, "Freq >= 1)");
  EXPECT_RAISES(Goertz(real, 0), ELatticaInvalidArgument, "Freq <= 0)");
  EXPECT_RAISES(GoertzTwo(real, 0.5, -1, a, b), ELatticaInvalidArgument, "(not Src.Complex) and (Freq0 >= 0.5)");
  EXPECT_RAISES(GoertzTwo(complex, 1, -1, a, b), ELatticaInvalidArgument, "Freq0 >= 1)");
  EXPECT_RAISES(GoertzTwo(real, -1, 2, a, b), ELatticaInvalidArgument, "Freq0 <= 0)");
  EXPECT_RAISES(GoertzTwo(real, 0.1, 2, a, b), ELatticaInvalidArgument, "(not Src.Complex) and (Freq1 >= 0.5)");
  EXPECT_RAISES(GoertzTwo(complex, 0.6, 2, a, b), ELatticaInvalidArgument, "Freq1 >= 1)");
  EXPECT_RAISES(GoertzTwo(complex, 0.6, 0, a, b), ELatticaInvalidArgument, "Freq1 <= 0)");
  TVec spectrum = {5.0};
  const TVec kept = spectrum;
  EXPECT_RAISES(Goertz(real, {0.1, 0.5}, spectrum), ELatticaInvalidArgument, "(not Src.Complex) and (Freq[i] >= 0.5)");
  EXPECT_RAISES(Goertz(real, {0.1, 0}, spectrum), ELatticaInvalidArgument, "Freq[i] <= 0)");
  EXPECT_RAISES(Goertz(test::Noise(3, TMtxFloatPrecision::DoubleComplex, 1), {0.1, 1}, spectrum),
                ELatticaInvalidArgument, "Freq[i] >= 1)");
  EXPECT_RAISES(Goertz(real, test::Noise(3, TMtxFloatPrecision::DoubleComplex, 1), spectrum), ECoreError,
                "Goertz: complex Freq");
  EXPECT_TRUE(test::SameBits(spectrum, kept));
  EXPECT_EQ(b, (TCplx{2, 0}));
}

// The z transform at radius e^growth and the given angle in turns, in units of the norm of its terms.
double ErrorAt(const TVec& x, const TVec& y, std::int32_t k, long double turns, long double growth) {
  Wide sum = 0;
  long double norm = 0;
  for (std::int32_t n = 0; n < x.Length(); ++n) {
    const Wide term = WideAt(x, n) * Turned(turns * n) * std::exp(-growth * n);
    sum += term;
    norm += std::norm(term);
  }
  return static_cast<double>(std::abs(WideAt(y, k) - sum) / std::sqrt(norm));
}

TEST(ChirpZ, FullCircleAndZoomOfLongDataKeepTheirDigits) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    const TVec x = test::Noise(4096, precision, 5);
    const double tolerance = x.IsDouble() ? 1e-14 : 1e-6;
    TVec y;
    for (const int repeat : {0, 1}) {  // from fresh tables, from kept ones
      Czt(x, 4096, y);
      ASSERT_EQ(y.Length(), 4096);
      ASSERT_EQ(y.FloatPrecision(), MakePrecision(true, x.IsDouble()));
      for (std::int32_t k = repeat; k < 4096; k += 511) EXPECT_LE(ErrorAt(x, y, k, k / 4096.0L, 0), tolerance) << k;
    }
    Czt(x, 1000, 123.4, 130.1, y, 1000);
    for (std::int32_t k = 0; k < 1000; k += 111) {
      const long double frequency =
          (static_cast<long double>(123.4) * (1000 - k) + static_cast<long double>(130.1) * k) / 1000000;
      EXPECT_LE(ErrorAt(x, y, k, frequency, 0), tolerance) << k;
    }
  }
}

TEST(ChirpZ, OffTheCircleNothingIsLost) {
  const TVec x = test::Noise(300, TMtxFloatPrecision::DoubleComplex, 5);
  TVec y;
  for (const auto& [start, stop] : {std::pair{0.9, 1.1}, {1.0, 1.00001}, {0.5, 0.5}, {2.0, 0.1}}) {
    for (const std::int32_t points : {1, 40, 1000}) {
      Czt(x, points, y, start, stop);
      for (std::int32_t k = 0; k < points; k += 1 + points / 7) {
        const long double part = static_cast<long double>(k) / points;
        const long double growth =
            std::log(static_cast<long double>(start)) * (1 - part) + part * std::log(static_cast<long double>(stop));
        EXPECT_LE(ErrorAt(x, y, k, part, growth), 1e-12) << start << " to " << stop << ", " << k << " of " << points;
      }
    }
  }
  // Real ratios: Y[k] = 2^k / 2 for X = [0, 1], A = W = 2.
  Czt({0.0, 1.0}, 40, TCplx{2, 0}, TCplx{2, 0}, y);
  for (std::int32_t k = 0; k < 40; ++k) EXPECT_NEAR(At(y, k).Re, std::ldexp(0.5, k), 1e-13 * std::ldexp(0.5, k));
}

TEST(ChirpZ, ArcIsTheCoreWithItsRatios) {
  const TVec x = test::Noise(50, TMtxFloatPrecision::DoubleReal, 9);
  TVec arc;
  TVec core;
  Czt(x, 20, 0.1, 0.3, arc, 2, 0.9, 1.2);
  const double turn = 2 * std::numbers::pi;
  const std::complex<double> w = std::polar(std::pow(1.2 / 0.9, -1.0 / 20), -turn * 0.2 / 40);
  Czt(x, 20, w, std::polar(0.9, turn * 0.1 / 2), core);
  core.Sub(arc);
  EXPECT_LE(test::MaxAbs(core), 1e-12 * test::MaxAbs(arc));
}

TEST(ChirpZ, EmptyResultsAliasesAndRefusals) {
  TVec y = {1.0, 2.0};
  Czt(y, 2, y);
  EXPECT_NEAR(At(y, 0).Re, 3, 1e-15);
  EXPECT_NEAR(At(y, 1).Re, -1, 1e-15);
  Czt({1.0, 2.0}, -5, y);
  EXPECT_EQ(y.Length(), 0);
  TVec none;
  none.Size(0, TMtxFloatPrecision::SingleReal);
  Czt(none, 7, y);
  EXPECT_EQ(y.Length(), 0);
  EXPECT_EQ(y.FloatPrecision(), TMtxFloatPrecision::SingleComplex);
  y = {4.0};
  const TVec kept = y;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const char* const ratio = "Czt: W or A is 0 or not finite";
  EXPECT_RAISES(Czt(kept, 4, TCplx{0, 0}, TCplx{1, 0}, y), ECoreError, ratio);
  EXPECT_RAISES(Czt(kept, 4, TCplx{1, 0}, TCplx{1, nan}, y), ECoreError, ratio);
  EXPECT_RAISES(Czt(kept, 4, 0.1, 0.2, y, 0), ECoreError, "Czt: not (FS > 0)");
  EXPECT_RAISES(Czt(kept, 4, nan, 0.2, y), ECoreError, "Czt: a frequency is not finite");
  EXPECT_RAISES(Czt(kept, 4, y, 1, -1), ECoreError, "Czt: not (RStart > 0) or not (RStop > 0)");
  EXPECT_RAISES(Czt(kept, 1000000000, y), ECoreError, "Czt: more than 2^28 elements");
  EXPECT_TRUE(test::SameBits(y, kept));
}

}  // namespace
}  // namespace passband::SignalUtils
