#include "passband/fir_design/inverse_filter.h"

#include <cmath>
#include <complex>
#include <limits>

#include "passband/foundation/scalars.h"
#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using enum TSignalWindowType;

TVec Length(std::int32_t length, bool is_double = true) {
  TVec h;
  h.Size(length, false, is_double);
  return h;
}

TVec Single(const TVec& v) {
  TVec rounded(v);
  rounded.SetFloatPrecision(MakePrecision(v.Complex(), false));
  return rounded;
}

std::complex<double> Response(const TVec& h, double frequency) {
  std::complex<double> sum = 0;
  for (std::int32_t n = h.Length() - 1; n >= 0; --n) sum = sum * std::polar(1.0, -PI * frequency) + At(h, n).Re;
  return sum;
}

double Decibels(double x) { return 20 * std::log10(x); }

TEST(InverseFilter, AFlatAmplitudeIsADelay) {
  for (const std::int32_t length : {1, 2, 9, 33, 64, 65}) {
    TVec h = Length(length);
    InverseFilter({1.0, 1.0}, {0.0, 1.0}, h, wtRectangular);
    ASSERT_EQ(h.Length(), length);
    for (std::int32_t n = 0; n < length && length % 2 == 1; ++n) {
      EXPECT_NEAR(h[n], n == length / 2 ? 1 : 0, 4e-16) << length;
    }
    for (std::int32_t n = 0; n < length; ++n) EXPECT_NEAR(h[n], h[length - 1 - n], 1e-16 * length) << length;
  }
}

TEST(InverseFilter, MeetsTheAmplitudeWithLinearPhase) {
  const TVec frequency = {0.0, 0.25, 0.5, 1.0};
  const TVec amplitude = {1.0, 2.0, 0.5, 0.75};
  const auto wanted = [&](double f) {
    std::int32_t i = f < 0.25 ? 0 : (f < 0.5 ? 1 : 2);
    return amplitude[i] + (amplitude[i + 1] - amplitude[i]) * (f - frequency[i]) / (frequency[i + 1] - frequency[i]);
  };
  TVec h = Length(301, false);  // becomes as precise as the amplitude
  InverseFilter(amplitude, frequency, h, wtHamming);
  EXPECT_TRUE(h.IsDouble());
  for (const double f : {0.05, 0.2, 0.3, 0.45, 0.6, 0.9}) {
    const std::complex<double> turned = Response(h, f) * std::polar(1.0, PI * f * 150);
    EXPECT_NEAR(turned.real(), wanted(f), 2e-3) << f;
    EXPECT_NEAR(turned.imag(), 0, 1e-13) << f;
  }
  TVec single = Length(301);
  InverseFilter(Single(amplitude), Single(frequency), single, wtHamming);
  EXPECT_TRUE(test::SameBits(single, Single(h)));
}

TEST(InverseFilter, RefusesWithItsTextsAndWritesNothing) {
  TVec h = Length(5);
  h.SetVal(3);
  const TVec kept = h;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const TVec ones = {1.0, 1.0, 1.0};
  TVec complex = ones;
  complex.SetFloatPrecision(TMtxFloatPrecision::DoubleComplex);
  TVec none = Length(0);
  const char* const kind = "InverseFilter: Amplt.Complex or Freq.Complex";
  const char* const ends = "InverseFilter: First and last frequency specified must be 0 and 1!";
  const char* const monotonic = "InverseFilter: Frequency must be monotonic (increasing)!";
  EXPECT_RAISES(InverseFilter(complex, {0.0, 1.0}, none, wtHanning), ECoreError,
                "InverseFilter: Amplt.Length <> Freq.Length");
  EXPECT_RAISES(InverseFilter(complex, ones, none, wtHanning), ECoreError, kind);
  EXPECT_RAISES(InverseFilter(Single(ones), ones, none, wtHanning), ECoreError, kind);
  EXPECT_RAISES(InverseFilter(ones, ones, none, wtHanning), ECoreError,
                "InverseFilter: H.Length is zero but should be equal to desired Length on input!");
  EXPECT_RAISES(InverseFilter(ones, {0.0, 2.0, 1.01}, h, wtHanning), ECoreError, ends);
  EXPECT_RAISES(InverseFilter(ones, {nan, 0.5, 1.0}, h, wtHanning), ECoreError, ends);
  EXPECT_RAISES(InverseFilter(Length(0), Length(0), h, wtHanning), ECoreError, ends);
  EXPECT_RAISES(InverseFilter({1.0, 1.0, 1.0, 1.0}, {0.0, 0.5, 0.4, 1.0}, h, wtHanning), ECoreError, monotonic);
  EXPECT_RAISES(InverseFilter(ones, {0.0, nan, 1.0}, h, wtHanning), ECoreError, monotonic);
  EXPECT_TRUE(test::SameBits(h, kept));
}

TEST(ColoredNoise, FallsOrRisesByTheDecade) {
  for (const auto& [slope, start, rate] :
       {std::tuple{20.0, 100.0, 100000.0}, {10.0, 50.0, 48000.0}, {-20.0, 10.0, 8000.0}}) {
    TVec h;
    ColoredNoiseFIR(h, slope, start, rate);
    double largest = 0;
    for (int i = 0; i <= 2000; ++i) largest = std::max(largest, std::abs(Response(h, i / 2000.0)));
    EXPECT_NEAR(largest, 1, 2e-2);
    const double low = Decibels(std::abs(Response(h, 0.05)));
    EXPECT_NEAR(Decibels(std::abs(Response(h, 0.5))) - low, -slope, 0.2) << slope;
  }
}

TEST(ColoredNoise, LengthFollowsSlopeAndRate) {
  TVec h = Length(1, false);
  ColoredNoiseFIR(h, 20, 10, 100000);
  EXPECT_EQ(h.Length(), 6249);
  EXPECT_FALSE(h.IsDouble());
  ColoredNoiseFIR(h, -3, 10, 100);
  EXPECT_EQ(h.Length(), 511);
}

TEST(ColoredNoise, RefusesWithItsTextsAndWritesNothing) {
  TVec h = {1.0, 2.0};
  const TVec kept = h;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_RAISES(ColoredNoiseFIR(h, 0, -1, -1), ECoreError, "DbPerDecade = 0!");
  EXPECT_RAISES(ColoredNoiseFIR(h, nan, 1, 8), ECoreError, "DbPerDecade = 0!");
  EXPECT_RAISES(ColoredNoiseFIR(h, 1, 0, -1), ECoreError, "StartBW <= 0!");
  EXPECT_RAISES(ColoredNoiseFIR(h, 1, 1, nan), ECoreError, "FS <= 0!");
  EXPECT_RAISES(ColoredNoiseFIR(h, 1, 4, 8), ECoreError, "ColoredNoiseFIR: not (StartBW < FS / 2)");
  EXPECT_RAISES(ColoredNoiseFIR(h, inf, 1, 8), ECoreError, "ColoredNoiseFIR: DbPerDecade or FS is too large");
  EXPECT_RAISES(ColoredNoiseFIR(h, 20, 1, 1e12), ECoreError, "ColoredNoiseFIR: DbPerDecade or FS is too large");
  EXPECT_TRUE(test::SameBits(h, kept));
}

}  // namespace
}  // namespace passband::SignalUtils
