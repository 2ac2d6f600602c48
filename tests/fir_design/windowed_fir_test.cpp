#include "passband/fir_design/windowed_fir.h"

#include <limits>

#include "passband/fir_design/kaiser_fir.h"
#include "passband/foundation/scalars.h"
#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using enum TFilterType;
using enum TSignalWindowType;

constexpr double kAny = std::numeric_limits<double>::quiet_NaN();  // a value that the reference leaves open

enum Kind { kIdeal, kWindowed, kKaiser };

struct Reference {
  int kind;
  int type;
  std::vector<double> edges;
  std::int32_t length;
  int window;
  double parameter;
  double gain;
  double fs;
  double ripple;
  bool odd;
  std::vector<double> taps;
};

const std::vector<Reference>& References() {
  static const std::vector<Reference> references{
#include "tests/fir_design/windowed_fir_reference.inc"
  };
  return references;
}

void Design(const Reference& row, TVec& h) {
  const auto type = static_cast<TFilterType>(row.type);
  if (row.kind == kIdeal) {
    FirImpulse(h, row.edges, type, row.fs);
  } else if (row.kind == kWindowed) {
    FirImpulse(h, row.edges, row.parameter, type, static_cast<TSignalWindowType>(row.window), row.gain, row.fs);
  } else {
    KaiserImpulse(h, row.edges, row.ripple, type, row.gain, row.fs, row.odd);
  }
}

TEST(WindowedFir, AgreesWithFiftyDigitArithmetic) {
  for (const bool is_double : {true, false}) {
    const double eps = is_double ? 0x1p-52 : 0x1p-23;
    for (const Reference& row : References()) {
      TVec h;
      h.Size(row.kind == kKaiser ? 7 : row.length, false, is_double);
      Design(row, h);
      SCOPED_TRACE(testing::Message() << "kind " << row.kind << ", type " << row.type << ", length " << row.length
                                      << ", window " << row.window);
      ASSERT_EQ(h.Length(), static_cast<std::int32_t>(row.taps.size()));
      EXPECT_EQ(h.IsDouble(), is_double);
      // Every term of a tap is at most about gain, or gain times FS for a differentiator.
      const double scale = (row.kind == kIdeal ? 1 : row.gain) * (row.type >= 6 ? row.fs : 1);
      for (std::int32_t n = 0; n < h.Length(); ++n) {
        const double expected = row.taps[static_cast<std::size_t>(n)];
        if (std::isnan(expected)) continue;
        EXPECT_NEAR(h[n], expected, 4 * eps * scale) << n;
      }
    }
  }
}

TEST(WindowedFir, LongFiltersKeepTheirDigits) {
  // Far from the centre pi f x is some ten thousand; tap n of a lowpass with f = 1/3 repeats with period 6 up to 1/x.
  TVec h;
  h.Size(10001, TMtxFloatPrecision::DoubleReal);
  FirImpulse(h, {1.0 / 3}, ftLowpass);
  const double slope = std::sqrt(3.0) / 2 / PI;
  for (std::int32_t x = 4999; x >= 4990; --x) {
    const double sign = x % 3 == 0 ? 0 : (x / 3 % 2 == 0 ? 1 : -1);
    EXPECT_NEAR(h[5000 + x], sign * slope / x, 1e-16) << x;  // 1/3 itself is rounded, by 1.9e-17
    EXPECT_EQ(h[5000 + x], h[5000 - x]);
  }
}

TEST(WindowedFir, ExactZerosAndSymmetry) {
  TVec h;
  h.Size(31, TMtxFloatPrecision::DoubleReal);
  FirImpulse(h, {0.3}, 0, ftHilbertIII, wtRectangular);
  for (std::int32_t n = 0; n < 31; ++n) {
    EXPECT_EQ(h[n], -h[30 - n]);
    if ((n - 15) % 2 != 0) continue;
    EXPECT_EQ(h[n], 0) << n;
  }
  h.Size(9, TMtxFloatPrecision::DoubleReal);
  FirImpulse(h, {0.3}, ftDifferentiatorIV);  // an odd length: the centre is 0/0 in the formula
  EXPECT_EQ(h[4], 0);
  h.Size(9, TMtxFloatPrecision::DoubleComplex);
  FirImpulse(h, {0.25}, ftLowpass);
  EXPECT_FALSE(h.Complex());
  EXPECT_EQ(h[4], 0.25);
}

TEST(WindowedFir, Lengths) {
  struct Row {
    TFilterType type;
    std::int32_t asked;
    std::int32_t designed;
  };
  for (const Row& row : std::vector<Row>{{ftLowpass, 10, 10},
                                         {ftHighpass, 10, 11},
                                         {ftBandstop, 10, 11},
                                         {ftHilbertIII, 10, 11},
                                         {ftHilbertIV, 11, 12},
                                         {ftDifferentiatorIV, 11, 12},
                                         {ftHilbertIV, 4, 4},
                                         {ftLowpass, 10001, 10000},
                                         {ftHighpass, 10000, 10000},
                                         {ftHilbertIV, 20001, 10000}}) {
    TVec h;
    h.Size(row.asked, TMtxFloatPrecision::SingleReal);
    FirImpulse(h, {0.2, 0.4}, 0, row.type, wtHamming);
    EXPECT_EQ(h.Length(), row.designed);
    EXPECT_FALSE(h.IsDouble());
  }
}

TEST(WindowedFir, UnsupportedTypeLeavesTheIdealResponseAlone) {
  TVec h{1, 2, 3};
  FirImpulse(h, {0.1}, ftIntegratorIII);
  EXPECT_TRUE(test::SameBits(h, TVec{1, 2, 3}));
  EXPECT_RAISES(FirImpulse(h, {}, ftIntegratorIII), Exception, "Length(W) must be 1,2 or 4");
}

TEST(WindowedFir, Refusals) {
  TVec h{1, 2, 3, 4};
  const TVec before = h;
  EXPECT_RAISES(FirImpulse(h, {}, ftLowpass), ECoreError, "not (1 < Length(W) < 2)");
  EXPECT_RAISES(FirImpulse(h, {1, 2, 3}, ftHighpass), ECoreError, "not (1 < Length(W) < 2)");
  EXPECT_RAISES(FirImpulse(h, {1}, ftBandpass), ECoreError, "not (2 < Length(W) < 4)");
  EXPECT_RAISES(FirImpulse(h, {1, 2, 3, 4, 5}, ftBandstop), ECoreError, "not (2 < Length(W) < 4)");
  EXPECT_RAISES(FirImpulse(h, {1, 2, 3}, ftBandpass), Exception, "Length(W) must be 1,2 or 4");
  EXPECT_RAISES(FirImpulse(h, {}, ftHilbertIV), Exception, "Length(W) must be 1,2 or 4");
  EXPECT_RAISES(FirImpulse(h, {0.1}, 0, ftIntegratorIII, wtHamming), ECoreError, "FilterType not supported!");
  EXPECT_RAISES(FirImpulse(h, {0.1, 0.2, 0.3}, 0, ftLowpass, wtHamming), ECoreError, "not (1 < Length(W) < 2)");
  EXPECT_RAISES(KaiserImpulse(h, {0.1}, 0.01, ftLowpass), ECoreError, "(Length(W) <> 2) and (Length(W) <> 4)");
  EXPECT_RAISES(KaiserImpulse(h, {0.1, 0.2}, 0.01, ftDoubleIntegratorIV), ECoreError, "FilterType not supported!");
  EXPECT_RAISES(KaiserImpulse(h, {0.1, 0.2, 0.3, 0.4}, 0.01, ftLowpass), ECoreError, "not (1 < Length(W) < 2)");
  EXPECT_RAISES(KaiserFirLength({0.1, 0.2, 0.3}, 0.01), Exception, "Length(W) <> 2");
  EXPECT_TRUE(test::SameBits(h, before));
  h.Size(3, TMtxFloatPrecision::DoubleReal);
  EXPECT_RAISES(FirImpulse(h, {0.1}, 0, ftIntegratorIII, wtHamming), ECoreError, "H.Length < 4");
}

TEST(KaiserFir, LengthsStayInsideTheirLimits) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(KaiserFirLength({}, 0.001), 0);
  EXPECT_EQ(KaiserFirLength({0.2, 0.3}, 0.001), 72);
  EXPECT_EQ(KaiserFirLength({200, 300}, 0.001, 2000), 72);
  EXPECT_LT(KaiserFirLength({0.2, 0.3}, 0.9), 0);
  EXPECT_EQ(KaiserFirLength({0.2, 0.2}, 0.001), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(KaiserFirLength({0.2, 0.2 + 1e-13}, 0.001), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(KaiserFirLength({0.2, kNan}, 0.001), 0);
  struct Row {
    std::vector<double> edges;
    double ripple;
    TFilterType type;
    std::int32_t length;
  };
  for (const Row& row : std::vector<Row>{{{0.2, 0.2}, 0.001, ftLowpass, 10000},
                                         {{0.2, 0.2}, 0.001, ftHighpass, 10000},
                                         {{0.2, 0.3}, 0.9, ftLowpass, 4},
                                         {{0.2, kNan}, 0.001, ftLowpass, 4},
                                         {{0.2, kInf}, 0.001, ftLowpass, 4},
                                         {{0.2, 0.3}, kNan, ftHighpass, 4},
                                         {{0.1, 0.3, 0.5, 0.5}, 0.001, ftBandpass, 10000}}) {
    TVec h;
    KaiserImpulse(h, row.edges, row.ripple, row.type);
    EXPECT_EQ(h.Length(), row.length);
  }
}

TEST(KaiserFir, CallersEdgesStay) {
  const std::vector<double> edges{0.8, 0.9};
  TVec h;
  KaiserImpulse(h, edges, 0.01, ftHilbertIII);
  EXPECT_EQ(edges, (std::vector<double>{0.8, 0.9}));
}

TEST(KaiserFir, Beta) {
  EXPECT_EQ(KaiserBetaFir(0.5), 0);
  EXPECT_NEAR(KaiserBetaFir(1e-3), 0.1102 * 51.3, 1e-14);                              // 60 dB
  EXPECT_NEAR(KaiserBetaFir(1e-2), 0.5842 * std::pow(19, 0.4) + 0.07886 * 19, 1e-14);  // 40 dB
}

}  // namespace
}  // namespace passband::SignalUtils
