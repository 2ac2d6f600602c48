// Responses and group delays against sums in extended precision and closed forms.
#include "passband/analysis/frequency_response.h"

#include <cmath>
#include <complex>
#include <limits>
#include <numbers>

#include "passband/analysis/group_delay.h"
#include "passband/analysis/log_ramp.h"
#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using enum TSignalWindowType;
using Wide = std::complex<long double>;

const TVec kNum = {0.2, -0.5, 0.25};
const TVec kDen = {1.0, -0.9, 0.5, 0.125};

TVec As(const TVec& v, TMtxFloatPrecision precision) {
  TVec converted(v);
  converted.SetFloatPrecision(precision);
  return converted;
}

Wide Z(std::int32_t k, std::int32_t n) {
  return std::polar(1.0L,
                    -2 * std::numbers::pi_v<long double> * static_cast<long double>(k) / static_cast<long double>(n));
}

Wide Value(const TVec& taps, Wide z, bool slope = false) {
  Wide sum = 0;
  for (std::int32_t i = taps.Length() - 1; i >= 0; --i) {
    sum = sum * z + Wide(At(taps, i).Re, At(taps, i).Im) * (slope ? static_cast<long double>(i) : 1.0L);
  }
  return sum;
}

TEST(FrequencyResponse, IsTheQuotientOfTheSums) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    const TVec num = As(kNum, precision);
    const TVec den = As(kDen, precision);
    TVec response;
    EXPECT_EQ(FrequencyResponse(num, &den, response, 16), 64.0 / 3);
    ASSERT_EQ(response.Length(), num.Complex() ? 64 : 33);
    ASSERT_EQ(response.FloatPrecision(), MakePrecision(true, num.IsDouble()));
    for (std::int32_t k = 0; k < response.Length(); ++k) {
      const Wide expected = Value(num, Z(k, 64)) / Value(den, Z(k, 64));
      EXPECT_LE(std::abs(Wide(At(response, k).Re, At(response, k).Im) - expected), 8 * test::Epsilon(precision)) << k;
    }
  }
}

TEST(FrequencyResponse, WindowsTheCoefficientsAndScales) {
  TVec response;
  TVec taps;
  taps.Size(10, false, true);
  taps.SetVal(1);
  EXPECT_EQ(FrequencyResponse(taps, nullptr, response, 8), 12.8);
  EXPECT_EQ(response.Length(), 65);
  EXPECT_NEAR(At(response, 0).Re, 10, 1e-14);
  FrequencyResponse(taps, nullptr, response, 8, true);
  EXPECT_NEAR(At(response, 0).Re, 1, 1e-15);
  // A periodic Hann window has the sum of half its length.
  FrequencyResponse(taps, nullptr, response, 8, false, wtHanning);
  EXPECT_NEAR(At(response, 0).Re, 5, 1e-14);
  // With a denominator the window runs over the n + 2 places of both: sin^2(pi i / 18) for n = 16.
  TVec one = {0.0, 1.0};
  TVec two = {0.0, 0.0, 1.0};
  FrequencyResponse(one, &two, response, 5, true, wtHanning);
  const double expected = std::pow(std::sin(std::numbers::pi / 18) / std::sin(std::numbers::pi / 9), 2);
  for (std::int32_t k = 0; k < response.Length(); ++k) EXPECT_NEAR(CAbs(At(response, k)), expected, 1e-13);
  FrequencyResponse(taps, nullptr, taps);  // in place
  EXPECT_EQ(taps.Length(), 9);
}

TEST(FrequencyResponseS, EvaluatesTheQuotientOnTheAxis) {
  const TVec w = {0.0, 0.5, 1.0, 1e6};
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    TVec response;
    FrequencyResponseS(As({2.0, 1.0}, precision), As({1.0, 3.0, 0.5}, precision), w, response, -0.125);
    ASSERT_EQ(response.FloatPrecision(), MakePrecision(true, IsDoublePrecision(precision)));
    for (std::int32_t k = 0; k < 4; ++k) {
      const std::complex<double> s(-0.125, w[k]);
      const std::complex<double> expected = (2.0 * s + 1.0) / ((s + 3.0) * s + 0.5);
      EXPECT_LE(std::abs(std::complex<double>(At(response, k)) - expected),
                4 * test::Epsilon(precision) * std::abs(expected));
    }
  }
  TVec response = {1.0};
  FrequencyResponseS({1.0}, {1.0, 1.0}, TVec(), response);
  EXPECT_EQ(response.Length(), 0);
}

TEST(GroupDelay, IsTheSlopeOfThePhase) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    const TVec num = As(kNum, precision);
    const TVec den = As(kDen, precision);
    TVec delay;
    GroupDelay(delay, num, &den, 16);
    ASSERT_EQ(delay.FloatPrecision(), MakePrecision(false, num.IsDouble()));
    ASSERT_EQ(delay.Length(), num.Complex() ? 64 : 33);
    for (std::int32_t k = 0; k < delay.Length(); ++k) {
      const Wide z = Z(k, 64);
      const long double expected = (Value(num, z, true) / Value(num, z) - Value(den, z, true) / Value(den, z)).real();
      EXPECT_NEAR(delay[k], static_cast<double>(expected), 50 * test::Epsilon(precision)) << k;
    }
  }
}

TEST(GroupDelay, OfSymmetricFiltersIsHalfTheirLengthAndZeroWhereTheSpectrumVanishes) {
  TVec delay;
  GroupDelay(delay, {0.0, 0.0, 1.0}, nullptr, 4);
  for (std::int32_t k = 0; k < delay.Length(); ++k) EXPECT_NEAR(delay[k], 2, 1e-14);
  // Eight equal taps on 32 points: the spectrum vanishes at every fourth bin but the first.
  GroupDelay(delay, {1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0}, nullptr, 4);
  for (std::int32_t k = 0; k < delay.Length(); ++k) {
    EXPECT_NEAR(delay[k], k > 0 && k % 4 == 0 ? 0 : 3.5, 1e-12) << k;
  }
}

TEST(GroupDelay2, FollowsItsDifferenceFormula) {
  const TVec num = {0.0, 0.0, 1.0};
  TVec slope;
  GroupDelay2(slope, num, nullptr, 16);  // A[k] = exp(-4 pi j k / 64)
  ASSERT_EQ(slope.Length(), 33);
  for (std::int32_t k = 0; k + 1 < 33; ++k) EXPECT_NEAR(slope[k], std::sin(4 * std::numbers::pi / 64), 1e-14);
  // The last difference, from bin 31 to 32, against A[32].
  EXPECT_NEAR(slope[32], std::sin(4 * std::numbers::pi / 64), 1e-14);
  const TVec den = {1.0};
  GroupDelay2(slope, num, &den, 16);
  EXPECT_NEAR(slope[5], std::sin(4 * std::numbers::pi / 64) * 64 / 3, 1e-13);
}

TEST(LogRamp, RunsFromPowerToPower) {
  for (const bool is_double : {true, false}) {
    TVec axis;
    axis.Size(3, true, is_double);
    LogRamp(axis, 0, 2);
    EXPECT_TRUE(test::SameBits(axis, As({1.0, 10.0, 100.0}, MakePrecision(false, is_double))));
    axis.Size(1, false, is_double);
    LogRamp(axis, -1, 7);
    EXPECT_NEAR(axis[0], 0.1, 1e-8);
    axis.Size(0, false, is_double);
    LogRamp(axis, -1, 7);
    EXPECT_EQ(axis.Length(), 0);
  }
}

TEST(FrequencyResponse, RefusesWithItsTextsAndWritesNothing) {
  TVec result = {7.0};
  const TVec kept = result;
  const TVec none;
  const TVec single = As(kDen, TMtxFloatPrecision::SingleReal);
  EXPECT_RAISES(FrequencyResponse(none, nullptr, result), ECoreError, "FrequencyResponse: Num.Length = 0");
  EXPECT_RAISES(FrequencyResponse(kNum, nullptr, result, 0), ECoreError, "ZeroPadding < 1");
  EXPECT_RAISES(FrequencyResponse(kNum, nullptr, result, 1000000000), ECoreError, "LargestExp2: n > 2^30");
  EXPECT_RAISES(FrequencyResponse(kNum, &single, result), ECoreError, "Num.IsDouble <> Den.IsDouble");
  EXPECT_RAISES(FrequencyResponseS(kNum, kDen, As(kNum, TMtxFloatPrecision::DoubleComplex), result), ECoreError,
                "Frequencies.Complex = True!");
  EXPECT_RAISES(GroupDelay(result, kNum, nullptr, 0), ECoreError, "ZeroPadding < 1");
  EXPECT_RAISES(GroupDelay(result, none), ECoreError, "GroupDelay: Num.Length = 0");
  EXPECT_RAISES(GroupDelay2(result, kNum, &single, 0), ECoreError, "Num.IsDouble <> Den.IsDouble");
  EXPECT_RAISES(GroupDelay2(result, kNum, &kDen, -1), ECoreError, "ZeroPadding < 1");
  EXPECT_TRUE(test::SameBits(result, kept));
}

}  // namespace
}  // namespace passband::SignalUtils
