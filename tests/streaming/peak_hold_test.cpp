#include "passband/streaming/peak_hold.h"

#include <cmath>
#include <limits>

#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using test::Noise;
using test::SameBits;

class PeakTest : public testing::TestWithParam<TMtxFloatPrecision> {};
INSTANTIATE_TEST_SUITE_P(All, PeakTest, testing::ValuesIn(test::kPrecisions),
                         [](const auto& precision) { return test::Name(precision.param); });

double Magnitude(const TVec& x, std::int32_t n) {
  if (!x.Complex()) return x[n];
  return x.IsDouble() ? CAbs(At(x, n)) : static_cast<double>(CAbs(CplxSingle(At(x, n))));
}

TEST_P(PeakTest, HoldIsTheOneSampleRuleOnEverySample) {
  for (const std::int32_t limit : {-1, 0, 1, 2, 5, 40, std::numeric_limits<std::int32_t>::max()}) {
    // The first element is the output before the stream.
    TVec expected = Noise(401, GetParam(), 8);
    TVec y = test::Slice(expected, 1, 400);
    TSampleAndHoldState state{.Value = At(expected, 0), .Hold = 1};
    std::int32_t count = 1;
    for (std::int32_t n = 1; n <= 400; ++n) {
      if (Magnitude(expected, n) > Magnitude(expected, n - 1)) {
        count = 0;
      } else if (count < limit) {
        test::Put(expected, n, At(expected, n - 1));
        ++count;
      } else {
        count = 1;
      }
    }
    SampleAndHoldFilter(y, state, limit);
    EXPECT_TRUE(SameBits(y, test::Slice(expected, 1, 400))) << limit;
    EXPECT_EQ(state.Value, At(expected, 400));
    EXPECT_EQ(state.Hold, count);
  }
}

TEST(SampleAndHold, HoldsAPeakForItsTime) {
  TSampleAndHoldState state{};
  TVec x = {5, 1, 1, 1, 1};
  SampleAndHoldFilter(x, state, 2);
  EXPECT_TRUE(SameBits(x, TVec{5, 5, 5, 1, 1}));
  EXPECT_EQ(state.Hold, 2);
  EXPECT_EQ(state.Value, TCplx(1, 0));
  TVec none;
  SampleAndHoldFilter(none, state, 2);
  SampleAndDecayFilter(none, state, 2);
  EXPECT_EQ(state.Hold, 2);
  x = {7, 7, 8, 9, -1};  // ties are held, too
  state = {};
  SampleAndHoldFilter(x, state, 1);
  EXPECT_TRUE(SameBits(x, TVec{7, 7, 8, 9, 9}));
  EXPECT_EQ(state.Hold, 1);
}

TEST_P(PeakTest, DecayIsGeometricBelowThePeak) {
  for (const double decay : {0.5, 0.999999}) {
    TVec x;
    x.Size(3000, GetParam());
    x.SetZero();
    test::Put(x, 0, {3, 4});
    test::Put(x, 2500, {30, 40});
    TSampleAndHoldState state{};
    SampleAndDecayFilter(x, state, decay);
    const TCplx peak = x.Complex() ? TCplx{3, 4} : TCplx{3, 0};
    for (const std::int32_t n : {1, 2, 100, 2499, 2501, 2999}) {
      const double left = n < 2500 ? std::pow(decay, n) : 10 * std::pow(decay, n - 2500);
      EXPECT_NEAR(At(x, n).Re, peak.Re * left, peak.Re * left * (test::Epsilon(GetParam()) + 1e-12) + 1e-45);
      EXPECT_NEAR(At(x, n).Im, peak.Im * left, peak.Im * left * (test::Epsilon(GetParam()) + 1e-12) + 1e-45);
    }
    EXPECT_NEAR(state.Value.Re, At(x, 2999).Re, std::abs(At(x, 2999).Re) * test::Epsilon(GetParam()) + 1e-45);
  }
}

TEST(SampleAndDecay, KeepsTheSampleOnATie) {
  TSampleAndHoldState state{};
  TVec x = {8, 0, 0, 3, 1.5, -9};
  SampleAndDecayFilter(x, state, 0.5);
  EXPECT_TRUE(SameBits(x, TVec{8, 4, 2, 3, 1.5, 0.75}));
  TVec tie;  // of equal magnitude, but turned
  tie.Size(2, true, true);
  test::Put(tie, 0, {2, 0});
  test::Put(tie, 1, {0, 1});
  state = {};
  SampleAndDecayFilter(tie, state, 0.5);
  EXPECT_EQ(At(tie, 1), TCplx(0, 1));
}

}  // namespace
}  // namespace passband::SignalUtils
