#include "passband/fir_design/fractional_fir.h"

#include <cmath>
#include <complex>
#include <limits>
#include <map>
#include <sstream>

#include "passband/fir_design/kaiser_fir.h"
#include "passband/fir_design/windowed_fir.h"
#include "passband/foundation/scalars.h"
#include "passband/windows/kaiser.h"
#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using enum TFilterType;
using enum TFractionalImpulse;

const std::map<std::string, std::vector<double>>& References() {
  static const std::map<std::string, std::vector<double>> rows{
#include "tests/fir_design/fractional_fir_reference.inc"
  };
  return rows;
}

TVec Empty(bool is_double) {
  TVec h;
  h.Size(0, false, is_double);
  return h;
}

// Of long filters the reference holds 40 taps at the beginning and 40 around the centre.
std::int32_t Place(std::size_t i, std::int32_t length) {
  return static_cast<std::int32_t>(length < 1000 || i < 40 ? i : i + 4940);
}

void ExpectTaps(const TVec& h, const std::vector<double>& expected, double tolerance) {
  ASSERT_EQ(h.Length() < 1000 ? h.Length() : 80, static_cast<std::int32_t>(expected.size()));
  const double largest = test::MaxAbs(h);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_NEAR(At(h, Place(i, h.Length())).Re, expected[i], tolerance * largest) << i;
  }
}

TEST(FractionalFir, AgreesWithFiftyDigitArithmetic) {
  for (const auto& [name, expected] : References()) {
    SCOPED_TRACE(name);
    for (const bool is_double : {true, false}) {
      std::istringstream words(name);
      std::string kind;
      words >> kind;
      TVec h = Empty(is_double);
      double tolerance = is_double ? 1e-15 : 6e-8;
      if (kind == "ideal") {
        std::int32_t n = 0;
        int type = 0;
        double offset = 0;
        double step = 0;
        double fs = 0;
        std::vector<double> edges;
        words >> n >> type >> offset >> step >> fs;
        for (double edge = 0; words >> edge;) edges.push_back(edge);
        FractionalFirImpulse(n, h, edges, offset, step, static_cast<TFilterType>(type), fs);
      } else {
        int preset = 0;
        double delay = 0;
        words >> preset >> delay;
        EXPECT_DOUBLE_EQ(FractionalImpulse(h, delay, static_cast<TFractionalImpulse>(preset)),
                         (static_cast<double>(expected.size()) - 1) / 2 - 1 + delay);
        tolerance *= 2;  // a product of response and window
      }
      ExpectTaps(h, expected, tolerance);
    }
  }
}

// Phase delay in samples of a filter at a frequency relative to half the sampling frequency.
double PhaseDelay(const TVec& h, double frequency) {
  std::complex<double> sum = 0;
  const double centre = (h.Length() - 1) / 2.0;
  for (std::int32_t n = 0; n < h.Length(); ++n) sum += h[n] * std::polar(1.0, -PI * frequency * (n - centre));
  return centre - std::arg(sum) / (PI * frequency);
}

TEST(FractionalFir, DelaysByTheFractionAcrossTheBand) {
  TVec h = Empty(true);
  for (const double fraction : {0.0, 0.25, 0.5, 0.9, 1.0}) {
    const double delay = FractionalImpulse(h, fraction, falp_100dB, 3);
    for (const double frequency : {0.05, 0.3, 0.7}) EXPECT_NEAR(PhaseDelay(h, frequency), delay, 1e-4);
    double sum = 0;
    for (std::int32_t n = 0; n < h.Length(); ++n) sum += h[n];
    EXPECT_NEAR(sum, 3, 1e-4);
  }
}

TEST(FractionalFir, WholePlacesGiveTheOrdinaryDesigns) {
  for (const auto type : {ftLowpass, ftHighpass, ftBandpass, ftBandstop, ftHilbertIII, ftDifferentiatorIV}) {
    TVec plain;
    plain.Size(type == ftDifferentiatorIV ? 24 : 25, false, true);
    const std::vector<double> edges =
        type == ftLowpass || type == ftHighpass ? std::vector<double>{0.4} : std::vector<double>{0.3, 0.6};
    FirImpulse(plain, edges, type);
    TVec h;
    FractionalFirImpulse(plain.Length(), h, edges, 0, 1, type);
    EXPECT_TRUE(test::SameBits(h, plain)) << static_cast<int>(type);
  }
}

TEST(FractionalFir, KaiserLengthFollowsTheTypeAndExtendedLeavesOutTheFirstTaps) {
  TVec h;
  const std::int32_t even = KaiserFirLength({0.2, 0.3}, 0.001);
  ASSERT_EQ(even % 2, 0);
  EXPECT_EQ(FractionalKaiserImpulse(h, {0.2, 0.3}, 0.001, 0.5, 1, ftLowpass), even);
  EXPECT_EQ(h.Length(), even);
  for (const auto type : {ftHighpass, ftBandpass, ftBandstop, ftHilbertIII, ftDifferentiatorIII}) {
    EXPECT_EQ(FractionalKaiserImpulse(h, {0.2, 0.3}, 0.001, 0.5, 1, type), even + 1);
  }
  EXPECT_EQ(FractionalKaiserImpulse(h, {0.2, 0.31, 0.5, 0.6}, 0.001, 0.5, 1, ftBandpass), even + 1);
  EXPECT_EQ(FractionalKaiserImpulse(h, {0.2, 0.3}, 0.001, 0.5, 1, ftHilbertIV), even);
  EXPECT_EQ(FractionalKaiserImpulse(h, {0.2, 0.3}, 2, 0.5, 1, ftLowpass), 4);
  EXPECT_EQ(FractionalKaiserImpulse(h, {0.2, 0.2}, 0.01, 0.5, 1, ftLowpass), 10000);

  // Four taps a sample: the design of two samples more without its first four taps.
  TVec whole;
  FractionalFirImpulse(even + 2, whole, {0.2, 0.3}, 0.5, 0.25, ftLowpass);
  FractionalKaiser(whole, KaiserBetaFir(0.001), 0.5, 0.25);
  whole.Scale(2);
  EXPECT_EQ(FractionalKaiserImpulse(h, {0.2, 0.3}, 0.001, 0.5, 0.25, ftLowpass, true, 2), even);
  EXPECT_TRUE(test::SameBits(h, test::Slice(whole, 4, whole.Length() - 4)));
}

TEST(FractionalFir, TypesWithoutAResponseGiveZeros) {
  TVec h = {1.0};
  FractionalFirImpulse(5, h, {0.2, 0.3}, 0.5, 0.5, ftDoubleDifferentiatorIII);
  EXPECT_EQ(h.Length(), 9);
  EXPECT_EQ(test::MaxAbs(h), 0);
  FractionalFirImpulse(0, h, {0.2}, 0, 1, ftLowpass);
  EXPECT_EQ(h.Length(), 0);
}

TEST(FractionalFir, RefusesWithItsTextsAndWritesNothing) {
  const TVec kept = {1.0, 2.0};
  TVec h = kept;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  for (const double step : {0.0, -1.0, nan}) {
    EXPECT_RAISES(FractionalFirImpulse(9, h, {}, 0, step, ftLowpass), ECoreError, "Step");
    EXPECT_RAISES(FractionalKaiserImpulse(h, {0.1, 0.2}, 0.01, 0, step, ftLowpass), ECoreError, "Step");
  }
  const char* const not_finite = "FractionalFirImpulse: Offset or Step is not finite";
  EXPECT_RAISES(FractionalFirImpulse(9, h, {0.1}, nan, 1, ftLowpass), ECoreError, not_finite);
  EXPECT_RAISES(FractionalFirImpulse(9, h, {0.1}, 0, inf, ftLowpass), ECoreError, not_finite);
  const char* const length = "FractionalFirImpulse: not (0 <= Round((N - 1) / Step) + 1 <= 2147483647)";
  EXPECT_RAISES(FractionalFirImpulse(-2, h, {0.1}, 0, 1, ftLowpass), ECoreError, length);
  EXPECT_RAISES(FractionalFirImpulse(1000000000, h, {0.1}, 0, 0.25, ftLowpass), ECoreError, length);
  EXPECT_RAISES(FractionalFirImpulse(9, h, {0.1}, 0, 1e-300, ftLowpass), ECoreError, length);
  EXPECT_RAISES(FractionalFirImpulse(9, h, {}, 0, 1, ftLowpass), ECoreError, "not (1 < Length(W) < 2)");
  EXPECT_RAISES(FractionalFirImpulse(9, h, {0.1}, 0, 1, ftBandstop), ECoreError, "not (2 < Length(W) < 4)");
  EXPECT_RAISES(FractionalFirImpulse(9, h, {0.1, 0.2, 0.3}, 0, 1, ftHilbertIII), Exception,
                "Length(W) must be 1,2 or 4");
  EXPECT_RAISES(FractionalKaiserImpulse(h, {0.1}, 0.01, 2, 1, ftLowpass), ECoreError,
                "(Length(W) <> 2) and (Length(W) <> 4)");
  EXPECT_RAISES(FractionalKaiserImpulse(h, {0.1, 0.2}, 0.01, 2, 0, ftIntegratorIV), ECoreError,
                "FilterType not supported!");
  for (const double offset : {-0.1, 1.1}) {
    EXPECT_RAISES(FractionalKaiserImpulse(h, {0.1, 0.2}, 0.01, offset, 1, ftLowpass), ECoreError,
                  "FractionalKaiser: Offset parameter must be between 0 and 1!");
  }
  for (const double delay : {-1e-9, 1.1, nan}) {
    EXPECT_RAISES(FractionalImpulse(h, delay, falp_60dB), ECoreError,
                  "FractionalImpulse: FractionalDelay param must be between 0 and 1!");
  }
  EXPECT_RAISES(FractionalImpulse(h, 0.5, static_cast<TFractionalImpulse>(7)), ECoreError,
                "FractionalImpulse: ImpulseType");
  EXPECT_TRUE(test::SameBits(h, kept));
}

}  // namespace
}  // namespace passband::SignalUtils
