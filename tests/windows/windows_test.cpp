// Windows against 50-digit references, in all precisions and through the dispatcher.
#include <cmath>
#include <cstdint>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

#include "passband/foundation/scalars.h"
#include "passband/windows/windows.h"
#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using enum TSignalWindowMode;
using enum TSignalWindowType;

struct Reference {
  int kind;
  int periodic;
  double parameter;
  double offset;
  double step;
  std::vector<double> values;
};

const Reference kReferences[] = {
#include "tests/windows/windows_reference.inc"
};
constexpr int kOptimal = 12;
constexpr int kFractional = 13;
constexpr int kBessel = 14;
constexpr int kKaiserEnds = 15;

std::int32_t Length(const Reference& r) { return static_cast<std::int32_t>(r.values.size()); }
TSignalWindowType Type(const Reference& r) { return static_cast<TSignalWindowType>(r.kind); }

void ApplyReference(const Reference& r, TVec& x, std::int32_t index) {
  if (r.kind == kOptimal) {
    BlackmanOptimal(x, index, Length(r));
  } else if (r.kind == kFractional) {
    FractionalKaiser(x, r.parameter, r.offset, r.step, index, Length(r));
  } else if (Type(r) == wtCosineTappered) {
    CosineTappered(x, r.parameter, index, Length(r));
  } else {
    SignalWindow(x, Type(r), r.parameter, r.periodic != 0 ? wmPeriodic : wmSymmetric, false, index, Length(r));
  }
}

// Error of a window value in double. Cosine sums: 4e-16. Kaiser: rounding of the terms around the largest of the
// series, number |Beta| / 2, or of an exponent up to |Beta|. Chebyshev: of products of about 2 k factors, k terms.
double Tolerance(const Reference& r, double w) {
  const bool kaiser = r.kind == kFractional || Type(r) == wtKaiser;
  if (kaiser) return 0x1p-52 * (4 + std::abs(r.parameter)) * std::abs(w);
  if (Type(r) == wtChebyshev) return 0x1p-52 * 100 * std::abs(w);
  if (Type(r) == wtExponent) return 0x1p-52 * 8 * std::abs(w);
  return 4e-16;
}

class WindowsTest : public testing::TestWithParam<TMtxFloatPrecision> {};
INSTANTIATE_TEST_SUITE_P(AllPrecisions, WindowsTest, testing::ValuesIn(test::kPrecisions),
                         [](const auto& instance) { return test::Name(instance.param); });

TEST_P(WindowsTest, ValuesAgreeWithTheReferenceAndNothingElseChanges) {
  constexpr std::int32_t kBefore = 3;
  const double eps = test::Epsilon(GetParam());
  for (const Reference& r : kReferences) {
    if (r.kind >= kBessel) continue;
    const std::int32_t len = Length(r);
    const TVec x = test::Noise(kBefore + len + 2, GetParam(), 7);
    TVec y = x;
    ApplyReference(r, y, kBefore);
    for (std::int32_t i = 0; i < x.Length(); ++i) {
      const bool inside = i >= kBefore && i < kBefore + len;
      const double w = inside ? r.values[static_cast<std::size_t>(i - kBefore)] : 1;
      const TCplx a = test::At(x, i);
      const TCplx b = test::At(y, i);
      // The window is rounded once, the product once; ends of Kaiser windows below eps / 10000 become 0.
      const double tolerance = inside ? Tolerance(r, w) + 1.01 * eps * std::abs(w) + 1e-4 * eps : 0;
      ASSERT_NEAR(b.Re, w * a.Re, tolerance * std::abs(a.Re)) << "kind " << r.kind << ", length " << len << " at " << i;
      ASSERT_NEAR(b.Im, w * a.Im, tolerance * std::abs(a.Im)) << "kind " << r.kind << ", length " << len << " at " << i;
    }
  }
}

TEST_P(WindowsTest, ShortStretchesAndSinglePointsStayAsTheyAre) {
  const auto unchanged = [](std::int32_t length, const auto& apply) {
    const TVec x = test::Noise(length, GetParam(), 3);
    TVec y = x;
    EXPECT_EQ(&apply(y), &y);
    return test::SameBits(x, y);
  };
  for (const auto mode : {wmSymmetric, wmPeriodic}) {
    EXPECT_TRUE(unchanged(2, [&](TVec& v) -> TVec& { return Hanning(v, mode); }));
    EXPECT_FALSE(unchanged(3, [&](TVec& v) -> TVec& { return Hanning(v, mode); }));
    EXPECT_TRUE(unchanged(2, [&](TVec& v) -> TVec& { return Hamming(v, mode); }));
    EXPECT_TRUE(unchanged(3, [&](TVec& v) -> TVec& { return Blackman(v, -0.16, mode); }));
    EXPECT_TRUE(unchanged(0, [&](TVec& v) -> TVec& { return FlatTop(v, mode); }));
  }
  EXPECT_TRUE(unchanged(3, [](TVec& v) -> TVec& { return BlackmanOptimal(v); }));
  EXPECT_TRUE(unchanged(2, [](TVec& v) -> TVec& { return Bartlett(v); }));
  for (const std::int32_t length : {0, 1}) {
    EXPECT_TRUE(unchanged(length, [](TVec& v) -> TVec& { return BlackmanExact(v); }));
    EXPECT_TRUE(unchanged(length, [](TVec& v) -> TVec& { return BlackmanHarris(v); }));
    EXPECT_TRUE(unchanged(length, [](TVec& v) -> TVec& { return FlatTop(v); }));
    EXPECT_TRUE(unchanged(length, [](TVec& v) -> TVec& { return Kaiser(v, 5); }));
    EXPECT_TRUE(unchanged(length, [](TVec& v) -> TVec& { return FractionalKaiser(v, 5, 0.5, 1); }));
    EXPECT_TRUE(unchanged(length, [](TVec& v) -> TVec& { return Chebyshev(v, 40); }));
    EXPECT_TRUE(unchanged(length, [](TVec& v) -> TVec& { return ExponentWindow(v, 0.01); }));
    EXPECT_TRUE(unchanged(length, [](TVec& v) -> TVec& { return CosineTappered(v, 100); }));
  }
  for (std::int32_t length = 1; length <= 14; ++length) {  // flanks of at most one point
    EXPECT_TRUE(unchanged(length, [](TVec& v) -> TVec& {
      SignalWindow(v, wtCosineTappered);
      return v;
    })) << length;
  }
}

TEST_P(WindowsTest, RefusedCallsChangeNothing) {
  constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
  const TVec x = test::Noise(5, GetParam(), 1);
  TVec y = x;
  for (const auto& [index, len] : {std::pair{-1, 3}, {0, 6}, {3, 3}, {6, 0}, {1, kMost}, {kMost, kMost}, {0, -2}}) {
    for (std::uint8_t type = 0; type <= static_cast<std::uint8_t>(wtExponent); ++type) {
      EXPECT_THROW(SignalWindow(y, TSignalWindowType{type}, 5, wmPeriodic, true, index, len), ECoreError);
    }
    EXPECT_THROW(BlackmanOptimal(y, index, len), ECoreError);
    EXPECT_THROW(FractionalKaiser(y, 5, 0.5, 1, index, len), ECoreError);
  }
  const double nan = std::nan("");
  for (const double offset : {-1e-9, 1.0000001, nan}) {  // reported before the range
    EXPECT_RAISES(FractionalKaiser(y, 5, offset, 1, 9, 9), ECoreError,
                  "FractionalKaiser: Offset parameter must be between 0 and 1!");
  }
  for (const double percent : {-1e-9, 100.0001, nan}) {
    EXPECT_RAISES(CosineTappered(y, percent, 9, 9), ECoreError, "not (0 < Percent < 100)");
  }
  EXPECT_RAISES(SignalWindow(y, TSignalWindowType{12}), ECoreError, "SignalWindow: no such window");
  EXPECT_TRUE(test::SameBits(x, y));
}

TEST_P(WindowsTest, PeriodicIsTheLongerSymmetricWindowWithoutItsEnd) {
  for (const auto type : {wtHanning, wtHamming, wtFlatTop, wtBlackman, wtBlackmanHarris, wtBlackmanExact}) {
    for (const std::int32_t length : {4, 31, 64}) {
      const TVec x = test::Noise(length + 1, GetParam(), 2);
      TVec symmetric = x;
      TVec periodic = x;
      SignalWindow(symmetric, type, -0.16, wmSymmetric);
      SignalWindow(periodic, type, -0.16, wmPeriodic, false, 0, length);
      EXPECT_TRUE(test::SameBits(test::Slice(symmetric, 0, length), test::Slice(periodic, 0, length)));
    }
  }
}

TEST_P(WindowsTest, NormalizingGivesAMeanOfOne) {
  for (std::uint8_t type = 1; type <= static_cast<std::uint8_t>(wtExponent); ++type) {
    const double parameter = TSignalWindowType{type} == wtExponent ? 0.01 : 6;
    TVec plain = test::Noise(40, GetParam(), 4);
    plain.Offset(1.5);  // a mean that is not small
    TVec scaled = plain;
    SignalWindow(plain, TSignalWindowType{type}, parameter, wmSymmetric, false, 5, 30);
    SignalWindow(scaled, TSignalWindowType{type}, parameter, wmSymmetric, true, 5, 30);
    TCplx mean;
    for (std::int32_t i = 5; i < 35; ++i) mean += (1.0 / 30) * test::At(scaled, i);
    const double tolerance = 30 * test::Epsilon(GetParam());
    EXPECT_NEAR(mean.Re, 1, tolerance) << int{type};
    EXPECT_NEAR(mean.Im, 0, tolerance) << int{type};
    const TCplx ratio = CDiv(test::At(plain, 20), test::At(scaled, 20));  // one factor for all of them
    EXPECT_LT(CAbs(CSub(CDiv(test::At(plain, 13), test::At(scaled, 13)), ratio)), tolerance * CAbs(ratio));
    EXPECT_TRUE(test::SameBits(test::Slice(plain, 0, 5), test::Slice(scaled, 0, 5)));
  }
  const TVec x = test::Noise(6, GetParam(), 5);
  TVec y = x;
  SignalWindow(y, wtRectangular, 0, wmSymmetric, true);
  SignalWindow(y, wtHanning, 0, wmSymmetric, true, 6, 0);  // an empty stretch has no mean
  EXPECT_TRUE(test::SameBits(x, y));
}

TEST_P(WindowsTest, NanAndInfinityStayWhereTheyAre) {
  for (std::uint8_t type = 1; type <= static_cast<std::uint8_t>(wtExponent); ++type) {
    TVec clean = test::Noise(70, GetParam(), 6);
    TVec hurt = clean;
    test::Put(hurt, 20, Cplx(std::nan("")));
    test::Put(hurt, 41, Cplx(HUGE_VAL));
    SignalWindow(clean, TSignalWindowType{type}, 5);
    SignalWindow(hurt, TSignalWindowType{type}, 5);
    EXPECT_TRUE(std::isnan(test::At(hurt, 20).Re));
    EXPECT_EQ(std::abs(test::At(hurt, 41).Re), HUGE_VAL);
    for (const std::int32_t i : {20, 41}) test::Put(hurt, i, test::At(clean, i));
    EXPECT_TRUE(test::SameBits(clean, hurt)) << int{type};
  }
}

TEST(WindowShapeTest, BlackmanRoundsAlphaToThePrecisionOfTheData) {
  TVec a{std::vector<float>(9, 1.0F)};
  TVec b = a;
  EXPECT_TRUE(test::SameBits(Blackman(a, 16777217), Blackman(b, 16777216)));  // 2^24 + 1 is not a single
  TVec c{std::vector<double>(9, 1.0)};
  TVec d = c;
  EXPECT_FALSE(test::SameBits(Blackman(c, 16777217), Blackman(d, 16777216)));
}

TEST(WindowShapeTest, OddlyFilledTapersOverlapInTheMiddleOnly) {
  for (std::int32_t length = 2; length <= 40; ++length) {
    for (const double percent : {99.0, 99.9, 100.0}) {
      TVec x;
      x.Size(length + 2, TMtxFloatPrecision::DoubleReal);
      x.SetVal(1);
      CosineTappered(x, percent, 1, length);
      EXPECT_EQ(x[0], 1);
      EXPECT_EQ(x[length + 1], 1);
      for (std::int32_t n = 0; n < length; ++n) EXPECT_EQ(x[1 + n], x[length - n]) << length << ' ' << n;
    }
  }
}

// The height of the side lobes against the main lobe, by the sum at frequencies k / 8 bins.
double HighestSideLobe(const TVec& w) {
  const auto magnitude = [&w](double f) {
    TCplx sum;
    for (std::int32_t n = 0; n < w.Length(); ++n) sum += w[n] * Expj(-2 * PI * f * n);
    return CAbs(sum);
  };
  const double step = 0.125 / w.Length();
  double f = 0;
  while (magnitude(f + step) < magnitude(f)) f += step;
  double highest = 0;
  for (; f <= 0.5; f += step) highest = std::max(highest, magnitude(f));
  return 20 * std::log10(highest / magnitude(0));
}

TEST(ChebyshevTest, SideLobesLieWhereTheDocumentationSays) {
  for (const auto& [param, level] : {std::pair{40.0, 40.0}, {60.0, 61.7}, {100.0, 105.2}}) {
    TVec w;
    w.Size(41, TMtxFloatPrecision::DoubleReal);
    w.SetVal(1);
    Chebyshev(w, param);
    EXPECT_NEAR(HighestSideLobe(w), -level, 0.15);
  }
}

TEST(KaiserTest, EndPointsFollowTheRoundingOfTheirPlace) {
  std::vector<double> lit;
  for (std::int32_t length = 2; length <= 200; ++length) {
    TVec w;
    w.Size(length, TMtxFloatPrecision::DoubleReal);
    w.SetVal(1);
    Kaiser(w, 1);
    EXPECT_EQ(w.GetFirst(), w.GetLast());
    if (w.GetFirst() != 0) lit.push_back(length);
  }
  for (const Reference& r : kReferences) {
    if (r.kind == kKaiserEnds) {
      EXPECT_EQ(lit, r.values);
    }
  }
}

TEST(KaiserTest, EndPointsBelowThePrecisionOfTheDataAreZero) {
  const auto end = [](double beta, TMtxFloatPrecision precision) {
    TVec w;
    w.Size(50, precision);  // a length at which u is not 0
    w.SetVal(1);
    return Kaiser(w, beta).GetLast();
  };
  for (const auto& [beta, single, precise] : {std::tuple{5.0, true, true}, {30.0, false, true}, {60.0, false, false}}) {
    EXPECT_EQ(end(beta, TMtxFloatPrecision::SingleReal) != 0, single) << beta;  // 1 / I0 = 0.04, 1.3e-12, 1.7e-25
    EXPECT_EQ(end(beta, TMtxFloatPrecision::DoubleReal) != 0, precise) << beta;
  }
}

TEST(KaiserTest, BetaWithoutAValueEndsInNan) {
  for (const double beta : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
    TVec w{1, 1, 1, 1, 1};
    Kaiser(w, beta);
    EXPECT_TRUE(std::isnan(w[2])) << beta;
  }
  TVec w{1, 1, 1, 1, 1};
  FractionalKaiser(w, 5, 0, std::nan(""));
  EXPECT_EQ(w[2], 0);  // no sample is inside the window
}

TEST(KaiserTest, BesselI0AgreesWithTheReference) {
  for (const Reference& r : kReferences) {
    if (r.kind == kBessel) {
      const double tolerance = 0x1p-52 * (2 + std::abs(r.parameter) / 4) * r.values[0];
      EXPECT_NEAR(BesselI0(r.parameter), r.values[0], tolerance) << r.parameter;
    }
  }
  EXPECT_EQ(BesselI0(714), HUGE_VAL);
  EXPECT_EQ(BesselI0(1e200), HUGE_VAL);
  EXPECT_EQ(BesselI0(-HUGE_VAL), HUGE_VAL);
  EXPECT_TRUE(std::isnan(BesselI0(std::nan(""))));
}

TEST(KaiserTest, BetaForAnAttenuation) {
  EXPECT_EQ(KaiserBetaWindowAtt(10), 0);
  EXPECT_EQ(KaiserBetaWindowAtt(13.2599), 0);
  EXPECT_NEAR(KaiserBetaWindowAtt(23.26), 0.76609 * 2.5118864315095801 + 0.9834, 1e-14);  // 10^0.4
  EXPECT_NEAR(KaiserBetaWindowAtt(100), 13.221594, 1e-14);
  EXPECT_EQ(KaiserBetaWindowAtt(500), KaiserBetaWindowAtt(300));
  EXPECT_NEAR(KaiserBetaWindow(1e-5), 13.221594, 1e-13);
  EXPECT_EQ(KaiserBetaWindow(0), KaiserBetaWindowAtt(300));
  EXPECT_EQ(KaiserBetaWindow(2), 0);
  EXPECT_TRUE(std::isnan(KaiserBetaWindow(-1)));
  EXPECT_TRUE(std::isnan(KaiserBetaWindowAtt(std::nan(""))));
}

}  // namespace
}  // namespace passband::SignalUtils
