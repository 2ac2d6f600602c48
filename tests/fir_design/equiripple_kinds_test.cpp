#include <cmath>
#include <vector>

#include "passband/fir_design/equiripple.h"
#include "passband/fir_design/equiripple_impulse.h"
#include "passband/fir_design/equiripple_length.h"
#include "tests/test_support.h"

namespace passband::OptimalFir {
namespace {

using enum SignalUtils::TFilterType;
using enum TRemezType;

TVec Empty(std::int32_t length, bool is_double = true) {
  TVec h;
  h.Size(length, false, is_double);
  h.SetZero();
  return h;
}

TEST(RemezImpulse, LaysOutTheBandsOfEachKind) {
  struct Row {
    SignalUtils::TFilterType kind;
    std::int32_t taps;
    std::vector<double> edges;
    TRemezType type;
    std::vector<double> bands;
    std::vector<double> gains;
  };
  const double fs = 1000;
  const std::vector<double> two{50, 430};
  const std::vector<double> four{100, 150, 300, 350};
  const std::vector<double> inside{50, 430};
  const std::vector<double> to_end{50, 500};
  const std::vector<double> three{0, 100, 150, 300, 350, 500};
  const Row rows[] = {
      {ftLowpass, 31, {200, 250}, rmtBandPass, {0, 200, 250, 500}, {3, 0}},
      {ftHighpass, 31, {200, 250}, rmtBandPass, {0, 200, 250, 500}, {0, 3}},
      {ftHilbertIII, 31, two, rmtHilbert, inside, {3}},
      {ftHilbertIV, 30, two, rmtHilbert, inside, {3}},
      {ftDifferentiatorIII, 31, two, rmtDifferentiator, inside, {3}},
      {ftDifferentiatorIV, 30, two, rmtDifferentiator, to_end, {3}},
      {ftDoubleDifferentiatorIII, 31, two, rmtDoubleDifferentiator, inside, {3}},
      {ftDoubleDifferentiatorIV, 30, two, rmtDoubleDifferentiator, to_end, {3}},
      {ftIntegratorIII, 31, two, rmtIntegrator, inside, {3}},
      {ftIntegratorIV, 30, two, rmtIntegrator, to_end, {3}},
      {ftDoubleIntegratorIII, 31, two, rmtDoubleIntegrator, inside, {3}},
      {ftDoubleIntegratorIV, 30, two, rmtDoubleIntegrator, to_end, {3}},
      {ftBandpass, 31, four, rmtBandPass, three, {0, 3, 0}},
      {ftBandstop, 31, four, rmtBandPass, three, {3, 0, 3}},
      {ftHilbertIII, 31, four, rmtBandPass, three, {0, 0, 0}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(static_cast<int>(row.kind));
    TVec h = Empty(row.taps);
    EXPECT_TRUE(RemezImpulse(h, row.edges, row.kind, 3, fs));
    TVec expected = Empty(row.taps);
    double deviation = 0;
    remez(expected, row.bands, row.gains, std::vector<double>(row.gains.size(), 1.0), row.type, deviation, fs);
    EXPECT_TRUE(test::SameBits(h, expected));
  }
}

TEST(RemezImpulse, TakesTheEstimatedLength) {
  TVec h = Empty(5, false);
  EXPECT_TRUE(RemezImpulse(h, {200, 250}, 0.001, ftLowpass, 1, 1000));
  EXPECT_EQ(h.Length(), 66);
  EXPECT_FALSE(h.IsDouble());
  EXPECT_TRUE(RemezImpulse(h, {200, 250}, 0.001, ftLowpass, 1, 1000, true));
  EXPECT_EQ(h.Length(), 67);
  EXPECT_TRUE(RemezImpulse(h, {50, 430}, 0.01, ftIntegratorIV, 1, 1000, true));
  EXPECT_EQ(h.Length() % 2, 0);  // a type IV filter stays even
  h = Empty(5);
  EXPECT_TRUE(RemezImpulse(h, {0.4, 0.4003}, 0.01, ftLowpass, 1, 2, true));
  EXPECT_EQ(h.Length(), 9999);  // 10000 made odd
}

TEST(RemezImpulse, RefusesWithItsTextsAndWritesNothing) {
  TVec h = test::Noise(31, TMtxFloatPrecision::SingleReal, 1);
  const TVec kept = h;
  const std::vector<double> three{0.1, 0.2, 0.3};
  for (const auto kind : {ftLowpass, ftHilbertIII}) {
    EXPECT_RAISES(RemezImpulse(h, three, kind), ECoreError, "(LengthW <> 4) and (LengthW <> 2)");
    EXPECT_RAISES(RemezImpulse(h, {}, kind), ECoreError, "(LengthW <> 4) and (LengthW <> 2)");
    EXPECT_RAISES(RemezImpulse(h, three, 0.1, kind), ECoreError, "(Length(W) <> 4) and (Length(W) <> 2)");
  }
  for (const auto kind : {ftBandpass, ftBandstop}) {  // their two edges bound no transition
    EXPECT_RAISES(RemezImpulse(h, {0.1, 0.2}, kind), ECoreError, "(LengthW <> 4) and (LengthW <> 2)");
    EXPECT_RAISES(RemezImpulse(h, {0.1, 0.2}, 0.1, kind), ECoreError, "(Length(W) <> 4) and (Length(W) <> 2)");
    EXPECT_RAISES(RemezFirLength({0.1, 0.2}, 0.1, kind), ECoreError, "(Length(W) <> 4) and (Length(W) <> 2)");
  }
  EXPECT_RAISES(RemezImpulse(h, {0.3, 0.2}, 0.1, ftLowpass), ECoreError, "Remez: Overlapping bands!");
  EXPECT_TRUE(test::SameBits(h, kept));
}

TEST(RemezLength, FollowsTheFormula) {
  TVec weights = Empty(3, false);
  EXPECT_EQ(RemezLength({0, 0.2, 0.25, 0.5}, {1, 0}, {0.01, 0.001}, weights, 1), 53);  // 52.76
  ASSERT_EQ(weights.Length(), 2);
  EXPECT_TRUE(weights.IsDouble());
  EXPECT_DOUBLE_EQ(weights[0], 1);
  EXPECT_DOUBLE_EQ(weights[1], 10);
  EXPECT_EQ(RemezLength({0, 0.2, 0.25, 0.5}, {0, 1}, {0.001, 0.01}, weights, 1), 53);  // odd for a gain at the end
  EXPECT_EQ(RemezLength({0, 400, 500, 1000}, {10, 0}, {0.1, 0.001}, weights, 2000), 53);
  EXPECT_DOUBLE_EQ(weights[1], 100);
  EXPECT_EQ(RemezLength({0, 0.1, 0.4, 0.5}, {1, 0}, {0.3, 0.3}, weights, 1), 3);
  EXPECT_EQ(RemezLength({0, 0.5}, {1}, {0.1}, weights, 1), 3);  // no transition
  EXPECT_EQ(RemezLength({}, {}, {}, weights), 3);
  EXPECT_EQ(weights.Length(), 0);
  EXPECT_EQ(RemezLength({0, 0.2, 0.2, 0.5}, {1, 0}, {0.1, 0.1}, weights, 1), 2147483647);
}

TEST(RemezLength, RefusesWithItsTextsAndWritesNothing) {
  TVec weights = test::Noise(3, TMtxFloatPrecision::SingleReal, 1);
  const TVec kept = weights;
  EXPECT_RAISES(RemezLength({0, 1}, {1}, {1, 1}, weights), ECoreError, "Length(gains) <> Length(weigth)");
  EXPECT_RAISES(RemezLength({0, 1, 2}, {1}, {1}, weights), ECoreError, "Length(bands) <> 2*Length(gains)");
  for (const double deviation : {0.0, -0.1, std::nan("")}) {
    EXPECT_RAISES(RemezLength({0, 1}, {1}, {deviation}, weights), ECoreError,
                  "RemezLength: a deviation is not positive");
  }
  EXPECT_TRUE(test::SameBits(weights, kept));
}

TEST(RemezFirLength, StaysInItsLimitsAndKeepsTheParityOfTheKind) {
  EXPECT_EQ(RemezFirLength({0.2, 0.25}, 0.001, ftLowpass, 1), 66);
  EXPECT_EQ(RemezFirLength({0.1, 0.45}, 0.4, ftHighpass, 1), 4);
  EXPECT_EQ(RemezFirLength({0.05, 0.44}, 0.001, ftIntegratorIII, 1), 37);
  EXPECT_EQ(RemezFirLength({0.2, 0.2}, 0.01, ftLowpass, 1), 10000);
  EXPECT_EQ(RemezFirLength({0, 0.4999}, 1e-6, ftHilbertIII, 1), 9999);
  for (const auto kind :
       {ftHilbertIII, ftDifferentiatorIII, ftDoubleDifferentiatorIII, ftIntegratorIII, ftDoubleIntegratorIII,
        ftHilbertIV, ftDifferentiatorIV, ftDoubleDifferentiatorIV, ftIntegratorIV, ftDoubleIntegratorIV}) {
    const bool odd = (static_cast<int>(kind) - static_cast<int>(ftHilbertIII)) % 2 == 0;
    for (const double edge : {0.3, 0.45, 0.4999}) {
      const std::int32_t length = RemezFirLength({0.5 - edge, edge}, 0.01, kind, 1);
      EXPECT_EQ(length % 2 == 1, odd) << static_cast<int>(kind);
      EXPECT_GE(length, 4);
      EXPECT_LE(length, 10000);
    }
    EXPECT_EQ(RemezFirLength({0.1, 0.15, 0.3, 0.35}, 0.01, kind, 1) % 2 == 1, odd);
  }
}

}  // namespace
}  // namespace passband::OptimalFir
