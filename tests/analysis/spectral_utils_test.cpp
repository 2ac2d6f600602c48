// Decibels, levels of spectra, bispectra, symmetries, channels, distinct distributions and texts.
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "passband/analysis/bispectrum.h"
#include "passband/analysis/channels.h"
#include "passband/analysis/decibels.h"
#include "passband/analysis/distinct_distributions.h"
#include "passband/analysis/format_text.h"
#include "passband/analysis/spectrum_rms.h"
#include "passband/analysis/spectrum_symmetry.h"
#include "passband/foundation/scalars.h"
#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using enum TSpectrumType;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr std::int32_t kHuge = std::numeric_limits<std::int32_t>::max();

TVec Rounded(TVec v, bool is_double) {
  v.SetFloatPrecision(MakePrecision(v.Complex(), is_double));
  return v;
}

TEST(Decibels, PowersOfTenAreWholeAndFlooredElementsExact) {
  for (const bool is_double : {false, true}) {
    TVec x = Rounded({1.0, 0.1, 0.0, -3.0, 100.0, 1e-7}, is_double);
    EXPECT_EQ(AmpltToDb(x, 10, 40, 1), -40);
    EXPECT_TRUE(test::SameBits(x, Rounded({0.0, -20.0, -40.0, -40.0, 40.0, -40.0}, is_double)));
    x = Rounded({1.0, 10.0}, is_double);
    AmpltToDb(x, 10, 96.33, 10);
    EXPECT_TRUE(test::SameBits(x, Rounded({-20.0, 0.0}, is_double)));
    x = Rounded({0.0, 10.0}, is_double);
    AmpltToDb(x, 10, 96.33, 10, false);  // relative to 1
    EXPECT_TRUE(test::SameBits(x, Rounded({-96.33, 20.0}, is_double)));
    x = Rounded({8.0, 0.25, 1e-30}, is_double);
    EXPECT_EQ(AmpltToLog(x, 2, 16, 1, 1), -16);
    EXPECT_TRUE(test::SameBits(x, Rounded({3.0, -2.0, -16.0}, is_double)));
    x = Rounded({5.0, 6.0}, is_double);
    for (const double reference : {0.0, -1.0, kNan}) {
      EXPECT_EQ(AmpltToDb(x, -5, 80, reference, false), -80);  // the base does not matter then
      EXPECT_TRUE(test::SameBits(x, Rounded({-80.0, -80.0}, is_double)));
    }
    x = Rounded({0.0}, is_double);
    EXPECT_FALSE(std::signbit(AmpltToDb(x, 10, 0, 1)));
    EXPECT_FALSE(std::signbit(x[0]));
  }
  TMtx m(2, 2, {1, 0.01, 1e-300, 1e300});
  EXPECT_EQ(AmpltToLog(m, 10, 100, 1e-5, 10), -100);
  EXPECT_NEAR(m(0, 0), 50, 1e-14);
  EXPECT_NEAR(m(0, 1), 30, 1e-14);
  EXPECT_EQ(m(1, 0), -100);
  EXPECT_NEAR(m(1, 1), 3050, 1e-12);
  TVec x = {7.0};
  for (const auto& [base, factor] : {std::pair{1.0, 20.0},
                                     {0.0, 20.0},
                                     {-10.0, 20.0},
                                     {0.5, 1.0},
                                     {10.0, -20.0},
                                     {10.0, 0.0},
                                     {kNan, 1.0},
                                     {10.0, kNan}}) {
    EXPECT_RAISES(AmpltToLog(x, base, 60, 1, factor), ECoreError, "AmpltToLog: not (Base^(1/Factor) > 1)");
  }
  EXPECT_TRUE(test::SameBits(x, {7.0}));
  TVec z = test::Noise(3, TMtxFloatPrecision::SingleComplex, 1);
  EXPECT_RAISES(AmpltToDb(z, 10, 60, 0), ECoreError, "AmpltToLog: complex Data");
}

TEST(RmsOfSpectrum, IsTheRmsOfTheSinusoids) {
  // 3 cos + 4 cos: RMS 5 / sqrt 2; the lines in the four ways to draw them.
  const double rms = 5 / std::sqrt(2.0);
  for (const bool is_double : {false, true}) {
    EXPECT_NEAR(RmsOfSpectrum(Rounded({0.0, 3.0, 4.0}, is_double)), rms, 1e-15 * 5);
    EXPECT_NEAR(RmsOfSpectrum(Rounded({6.0, 8.0}, is_double), spPeakPeak), rms, 1e-15 * 5);
    EXPECT_NEAR(RmsOfSpectrum(Rounded({9.0, 16.0}, is_double), spPower), rms, 1e-15 * 5);
    EXPECT_EQ(RmsOfSpectrum(Rounded({3.0, 4.0}, is_double), spRMS), 5);
  }
  const TVec lines = {9.0, 3.0, 4.0, 9.0};
  EXPECT_NEAR(RmsOfSpectrum(lines, spComplex, false, 1, 2), rms, 1e-15 * 5);
  EXPECT_EQ(RmsOfSpectrum(lines, spRMS, true, 3), 9);
  EXPECT_EQ(RmsOfSpectrum(lines, spComplex, true, 9, 0), 0);
  EXPECT_EQ(RmsOfSpectrum(TVec{}), 0);
  EXPECT_EQ(RmsOfSpectrum(lines, static_cast<TSpectrumType>(17)), 0);
  EXPECT_NEAR(RmsOfSpectrum({3e200, 4e200}, spRMS), 5e200, 1e185);
  EXPECT_RAISES(RmsOfSpectrum(lines, spComplex), ECoreError, "RMS of complex or cepstrum SpectrumType not supported!");
  EXPECT_RAISES(RmsOfSpectrum(lines, spRealCepstrum), ECoreError,
                "RMS of complex or cepstrum SpectrumType not supported!");
  for (const auto& [index, len] : {std::pair{0, 5}, {3, 2}, {1, kHuge}, {kHuge, kHuge}}) {
    EXPECT_RAISES(RmsOfSpectrum(lines, spComplex, true, index, len), ECoreError, "(Index+Len) > Amplt.Length");
  }
  EXPECT_THROW(RmsOfSpectrum(lines, spRMS, true, -1, 2), ECoreError);
  EXPECT_THROW(RmsOfSpectrum(lines, spRMS, true, 6), ECoreError);
}

TCplx Bispectrum(const TVec& x, std::int32_t p, std::int32_t q) { return At(x, p) * At(x, q) * Conj(At(x, p + q)); }

void ExpectNear(TCplx found, TCplx expected, TMtxFloatPrecision precision) {
  EXPECT_LE(CAbs(found - expected), 8 * test::Epsilon(precision));
}

TEST(BiSpectrum, SlicesOfAllKinds) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    for (const std::int32_t length : {2, 3, 6, 9, 16}) {
      const TVec x = test::Noise(length, precision, 8);
      for (std::int32_t i = 0; i < length / 2; ++i) {
        TVec slice, full = x;
        BiSpectrum(slice, x, i);
        BiSpectrum(full, full, i, true);
        ASSERT_EQ(slice.Length(), length - 2 * i);
        ASSERT_EQ(full.Length(), length);
        EXPECT_EQ(slice.FloatPrecision(), precision);
        for (std::int32_t j = 0; j < length; ++j) {
          const bool inside = j >= i && j < length - i;
          if (inside) ExpectNear(At(slice, j - i), Bispectrum(x, i, j), precision);
          EXPECT_EQ(At(full, j), inside ? At(slice, j - i) : TCplx{}) << j;
        }
      }
      const std::int32_t half = length / 2;
      for (std::int32_t i = 0; i < length; ++i) {
        SCOPED_TRACE(testing::Message() << length << " " << i);
        TVec slice, full = x;
        BiSpectrumVert(slice, x, i);
        ASSERT_EQ(slice.Length(), i < half ? i + 1 : length - i);
        for (std::int32_t j = 0; j < slice.Length(); ++j) ExpectNear(At(slice, j), Bispectrum(x, j, i), precision);
        if (i > half) continue;
        BiSpectrumVert(full, full, i, true);
        ASSERT_EQ(full.Length(), half);
        const std::int32_t low = i < half ? i + 1 : half;
        for (std::int32_t j = 0; j < half; ++j) {
          ExpectNear(At(full, j), j < low ? Bispectrum(x, j, i) : Bispectrum(x, j - low, half + low), precision);
        }
      }
    }
  }
  TVec slice = {7.0};
  const TVec x = test::Noise(6, TMtxFloatPrecision::SingleReal, 1);
  EXPECT_RAISES(BiSpectrum(slice, x, 3), ECoreError, "Index > (Spectrum.Length div 2) -1");
  EXPECT_RAISES(BiSpectrum(slice, x, kHuge, true), ECoreError, "Index > (Spectrum.Length div 2) -1");
  EXPECT_RAISES(BiSpectrum(slice, x, -1), ECoreError, "Index < 0");
  EXPECT_RAISES(BiSpectrumVert(slice, x, 6), ECoreError, "Index > (Spectrum.Length-1)");
  EXPECT_RAISES(BiSpectrumVert(slice, x, 4, true), ECoreError, "Index > (Spectrum.Length div 2)");
  EXPECT_RAISES(BiSpectrumVert(slice, x, -1, true), ECoreError, "Index < 0");
  EXPECT_TRUE(test::SameBits(slice, {7.0}));
  BiSpectrum(slice, test::Slice(x, 0, 1), 5);  // nothing to take a slice of
  EXPECT_EQ(slice.Length(), 0);
  EXPECT_EQ(slice.FloatPrecision(), TMtxFloatPrecision::SingleReal);
}

TEST(SpectrumSymmetry, HalvesBecomeWholeAndFlipsMirror) {
  for (const bool is_double : {false, true}) {
    TVec x = test::Noise(16, MakePrecision(false, is_double), 3);
    TVec half, full, extended;
    half.FFT(x);
    full.FFT(x, true);
    ConjExtend(half, extended);
    EXPECT_TRUE(test::SameBits(extended, full));
    EXPECT_EQ(&ConjExtend(half), &half);
    EXPECT_TRUE(test::SameBits(half, full));
    // Times (-1)^n: bin k comes from bin k + N / 2.
    BandFlip(x);
    half.FFT(x, true);
    for (std::int32_t k = 0; k < 16; ++k) {
      EXPECT_LE(CAbs(At(half, k) - At(full, (k + 8) % 16)), 20 * test::Epsilon(x.FloatPrecision())) << k;
    }
  }
  TVec z = {{1, 2}, {3, -4}, {5, 6}};
  BandFlip(z);
  EXPECT_TRUE(test::SameBits(z, {{1, -2}, {3, 4}, {5, -6}}));
  TVec even = {{1, 0}, {2, 3}, {4, 5}, {6, 0}};
  ConjExtend(even);
  EXPECT_TRUE(test::SameBits(even, {{1, 0}, {2, 3}, {4, 5}, {6, 0}, {4, -5}, {2, -3}}));
  TVec none;
  none.Size(0, TMtxFloatPrecision::SingleComplex);
  EXPECT_EQ(ConjExtend(none).Length(), 0);
  TVec odd = {1.0, 2.0, 3.0};
  TVec dst = {7.0};
  EXPECT_RAISES(ConjExtend(odd), Exception, "not Src.Complex");
  EXPECT_RAISES(ConjExtend(odd, dst), ECoreError, "Src.Complex = false");
  EXPECT_RAISES(ConjExtend(even, dst), ECoreError, "Odd(Src.Length) = false");
  EXPECT_RAISES(ConjExtend(none, dst), ECoreError, "Odd(Src.Length) = false");
  EXPECT_RAISES(BandFlip(odd), ECoreError, "Odd(X.Length) = True!");
  EXPECT_TRUE(test::SameBits(odd, {1.0, 2.0, 3.0}));
  EXPECT_TRUE(test::SameBits(dst, {7.0}));
  TVec ones = {1.0, 1.0, 1.0, 1.0};
  BandFlip(ones);
  EXPECT_TRUE(test::SameBits(ones, {1.0, -1.0, 1.0, -1.0}));
}

TEST(Channels, ComeOutAsTheyWentIn) {
  TVec out;
  Demultiplex({0.0, 1.0, 2.0, 3.0, 4.0, 5.0}, out, 3, 1);
  EXPECT_TRUE(test::SameBits(out, {1.0, 4.0}));
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    TVec all;
    for (const std::int32_t channel : {0, 1, 2}) {
      Multiplex(test::Noise(5, precision, static_cast<std::uint32_t>(channel)), all, 3, channel);
    }
    ASSERT_EQ(all.Length(), 15);
    for (const std::int32_t channel : {0, 1, 2}) {  // none has been lost
      Demultiplex(all, out, 3, channel);
      EXPECT_TRUE(test::SameBits(out, test::Noise(5, precision, static_cast<std::uint32_t>(channel))));
    }
    TVec in_place = out;
    Multiplex(in_place, in_place, 2, 1);
    for (std::int32_t i = 0; i < 10; ++i) EXPECT_EQ(At(in_place, i), i % 2 == 1 ? At(out, i / 2) : TCplx{});
    Demultiplex(in_place, in_place, 2, 1);
    EXPECT_TRUE(test::SameBits(in_place, out));
    TVec none;
    none.Size(0, precision);
    Multiplex(none, out, 4, 3);
    EXPECT_EQ(out.Length(), 0);
    Demultiplex(test::Noise(3, precision, 1), out, 7, 5);
    EXPECT_EQ(out.Length(), 0);
  }
  const TVec x = {1.0, 2.0};
  out = {7.0};
  for (const auto& [count, number] : {std::pair{3, 3}, {0, 0}, {-5, 0}, {2, kHuge}}) {
    EXPECT_RAISES(Demultiplex(x, out, count, number), Exception, "ChannelNumber > ChannelCount-1");
    EXPECT_RAISES(Multiplex(x, out, count, number), Exception, "ChannelNumber > ChannelCount-1");
  }
  EXPECT_RAISES(Demultiplex(x, out, 3, -1), ECoreError, "ChannelNumber < 0");
  EXPECT_RAISES(Multiplex(x, out, 3, -1), ECoreError, "ChannelNumber < 0");
  EXPECT_RAISES(Multiplex(x, out, kHuge, 0), ECoreError, "Size: more than 2147483647 elements");
  EXPECT_TRUE(test::SameBits(out, {7.0}));
}

TEST(DistinctCDF, OfAValue) {
  EXPECT_NEAR(DistinctCDF(6, 5, 1), 68.268949213708585, 1e-13);
  EXPECT_NEAR(DistinctCDF(3, 5, 1), 95.449973610364158, 1e-13);
  EXPECT_NEAR(DistinctCDF(5 + 0x1p-40, 5, 1) / 0x1p-40, 100 * std::sqrt(2 / PI), 1e-11);  // keeps its digits near 0
  EXPECT_EQ(DistinctCDF(5, 5, 1), 0);
  EXPECT_EQ(DistinctCDF(500, 5, 1), 100);
  EXPECT_EQ(DistinctCDF(5, 5, 0), 0);
  EXPECT_EQ(DistinctCDF(5.001, 5, 0), 100);
  EXPECT_TRUE(std::isnan(DistinctCDF(kNan, 5, 0)));
  EXPECT_TRUE(std::isnan(DistinctCDF(kNan, 5, 2)));
  EXPECT_RAISES(DistinctCDF(5, 5, -1), ECoreError, "NormalCDF: not (StdDev > 0)");
  EXPECT_RAISES(DistinctCDF(5, 5, kNan), ECoreError, "NormalCDF: not (StdDev > 0)");
}

TEST(DistinctCDF, OfSeveralDistributions) {
  const double inside = std::erf(3 / std::sqrt(2.0));  // what lies within three deviations
  EXPECT_NEAR(DistinctCDF({2.0, 2.0}, {1.0, 1.0}, 1000, 100000), 100 * (inside - 1), 1e-3);
  EXPECT_NEAR(DistinctCDF({0.0, 100.0}, {1.0, 1.0}, 1000, 1000000), 100 * ((1 + inside) - 1), 0.2);
  // Two of equal width at distance 2 cross half way: the envelope has 1 + erf(1 / sqrt 2) but for the tails.
  EXPECT_NEAR(DistinctCDF({0.0, 2.0}, {1.0, 1.0}, 10000, 1000000), 100 * (std::erf(1 / std::sqrt(2.0)) + inside - 1),
              1e-2);
  const std::vector<double> means = {0, 50, 100};
  const std::vector<double> deviations = {1, 1, 1};
  EXPECT_NEAR(DistinctCDF(means, deviations, 1000, 1000000), 100, 0.3);
  // The whole points count: 6.05 are not more than 6, and lie at -3 .. 2.
  double sum = 0;
  for (const double t : {3.0, 2.0, 1.0, 0.0, 0.95, 1.95}) sum += NormalPDF(t);
  EXPECT_NEAR(DistinctCDF({0.0, 0.05}, {1.0, 1.0}, 3, 6), 100 * (sum - 1), 1e-12);
  // Spikes: points of the grid, also at its end; all at one place are one.
  EXPECT_NEAR(DistinctCDF({0.0, 1.0, 4.0}, {0.0, 0.0, 0.0}, 100, 1000), 100, 1e-9);
  EXPECT_EQ(DistinctCDF({3.0, 3.0}, {0.0, 0.0}, 100, 1000), 0);
  EXPECT_NEAR(DistinctCDF({0.0, 10.0}, {1e-9, 1.0}, 100, 1000), 100, 1);
  EXPECT_RAISES(DistinctCDF({1.0}, {1.0, 2.0}, 0, 0), Exception, "Length(Means) <> Length(StdDevs)");
  EXPECT_RAISES(DistinctCDF({1.0}, {1.0}, 100, 1000), ECoreError, "DistinctCDF: Length(Means) < 2");
  EXPECT_RAISES(DistinctCDF({1.0, 2.0}, {1.0, 1.0}, 0, 1000), ECoreError, "DistinctCDF: Resolution < 1");
  EXPECT_RAISES(DistinctCDF({1.0, 2.0}, {1.0, 1.0}, 100, 0), ECoreError, "DistinctCDF: MaxPoints < 1");
  for (const double bad : {-1.0, kNan, std::numeric_limits<double>::infinity()}) {
    EXPECT_RAISES(DistinctCDF({1.0, 2.0}, {1.0, bad}, 100, 1000), ECoreError,
                  "DistinctCDF: a mean or a deviation is not finite or below 0");
  }
}

TEST(Texts, DescribeFormatsAndAlign) {
  using enum TMtxFloatPrecision;
  EXPECT_EQ(SignalFormatDescription(44100, DoubleReal, 2), "44100 Hz, double, Ch: 2");
  EXPECT_EQ(SignalFormatDescription(8000.5, SingleComplex, 1, 10), "8000.5 Hz, single complex, Ch: 1, Records: 10");
  EXPECT_EQ(SignalFormatDescription(1e6 / 3, SingleReal, 0, -1), "333333.3 Hz, single, Ch: 0");
  EXPECT_EQ(AlignString("abc", 7, TTextAlign::Center), "  abc  ");
  EXPECT_EQ(AlignString("abc", 8, TTextAlign::Center), "  abc  ");
  EXPECT_EQ(AlignString("abc", 7, TTextAlign::Right), "    abc");
  EXPECT_EQ(AlignString("abc", 7, TTextAlign::Left), "abc    ");
  EXPECT_EQ(AlignString("abc", 7, static_cast<TTextAlign>(3)), "");
  for (const std::int32_t width : {3, 2, 0, -kHuge}) {
    for (const TTextAlign align : {TTextAlign::Center, TTextAlign::Right, TTextAlign::Left}) {
      EXPECT_EQ(AlignString("abc", width, align), "abc");
    }
  }
}

}  // namespace
}  // namespace passband::SignalUtils
