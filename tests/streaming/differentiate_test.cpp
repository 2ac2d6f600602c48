#include "passband/streaming/differentiate.h"

#include <limits>

#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using test::Noise;
using test::SameBits;

class DerivativeTest : public testing::TestWithParam<TMtxFloatPrecision> {};
INSTANTIATE_TEST_SUITE_P(All, DerivativeTest, testing::ValuesIn(test::kPrecisions),
                         [](const auto& precision) { return test::Name(precision.param); });

// A polynomial of degree two, and its conjugate turned by 90 degrees in the imaginary part.
TVec Squares(std::int32_t length, TMtxFloatPrecision precision) {
  TVec v;
  v.Size(length, precision);
  for (std::int32_t i = 0; i < length; ++i) test::Put(v, i, {1.0 * i * i, -2.0 * i * i});
  return v;
}

TEST_P(DerivativeTest, OfASquareIsTwiceItsArgumentOneSampleLate) {
  const TVec x = Squares(9, GetParam());
  TDiffState state{};
  TVec y;
  Differentiate(x, y, state, 0.5);
  EXPECT_EQ(y.FloatPrecision(), GetParam());
  for (std::int32_t i = 2; i < 9; ++i) EXPECT_EQ(At(y, i).Re, 4.0 * (i - 1));
  EXPECT_EQ(At(y, 1).Re, 1);  // the stream begins with zeros
  EXPECT_EQ(state.Start1R, 64);
  EXPECT_EQ(state.Start2R, 49);
  EXPECT_EQ(state.Start1I, x.Complex() ? -128 : 0);
}

TEST_P(DerivativeTest, IntegralIsSimpsonsRunningSum) {
  TVec ones;
  ones.Size(4, GetParam());
  ones.SetVal(1.0);
  TIntegrateState state{};
  TVec y;
  Integrate(ones, y, state, 6);
  const double expected[] = {1, 6, 12, 18};
  for (std::int32_t i = 0; i < 4; ++i) EXPECT_EQ(At(y, i).Re, expected[i]);
  EXPECT_EQ(state.SumR1, 18);
  EXPECT_EQ(state.StartR1 + state.StartR2, 2);
  EXPECT_EQ(state.SumI1, 0);
  // Both parts of complex data alike: the integral of 3 t^2 (and -6 t^2) is t^3, here with t in steps of 1.
  TVec x = Squares(200, GetParam());
  x.Scale(3.0);
  state = {};
  Integrate(x, y, state, 1);
  const double t = 198;
  EXPECT_NEAR(At(y, 199).Re, t * t * t, t * t * 4 + 1);
  if (y.Complex()) {
    EXPECT_EQ(At(y, 199).Im, -2 * At(y, 199).Re);
  }
}

TEST_P(DerivativeTest, AnyCutAndInPlaceGiveTheSameBits) {
  const TVec x = Noise(60, GetParam(), 4);
  TDiffState diff{};
  TIntegrateState sum{};
  TVec derivative;
  TVec integral;
  Differentiate(x, derivative, diff, 0.1);
  Integrate(x, integral, sum, 0.1);
  for (const std::int32_t block : {1, 2, 3, 7, 59}) {
    TDiffState cut_diff{};
    TIntegrateState cut_sum{};
    for (std::int32_t n = 0; n < 60; n += block) {
      const std::int32_t length = std::min(block, 60 - n);
      TVec part = test::Slice(x, n, length);
      Differentiate(part, part, cut_diff, 0.1);
      EXPECT_TRUE(SameBits(part, test::Slice(derivative, n, length))) << block << " at " << n;
      part = test::Slice(x, n, length);
      Integrate(part, part, cut_sum, 0.1);
      EXPECT_TRUE(SameBits(part, test::Slice(integral, n, length))) << block << " at " << n;
    }
    EXPECT_EQ(cut_sum.SumR1, sum.SumR1);
    EXPECT_EQ(cut_diff.Start2I, diff.Start2I);
  }
  // A source that overlaps the result by all but one sample.
  TVec both = Noise(61, GetParam(), 4);
  both.Copy(x, 0, 0, 60);
  TVec from;
  TVec to;
  from.SetSubRange(both, 0, 60);
  to.SetSubRange(both, 1, 60);
  diff = {};
  Differentiate(from, to, diff, 0.1);
  EXPECT_TRUE(SameBits(to, derivative));
}

TEST(Integrate, DoesNotDriftOverALongStream) {
  // 10^7 times 0.1 in single precision data: the plain sum in single precision is off by 8 percent.
  TVec block;
  block.Size(10000, TMtxFloatPrecision::SingleReal);
  block.SetVal(0.1);
  TVec y;
  TIntegrateState state{};
  for (int i = 0; i < 1000; ++i) Integrate(block, y, state, 1);
  const double term = static_cast<double>(0.1F + 4 * 0.1F + 0.1F) / 6;  // one sample's share, but for its own rounding
  EXPECT_NEAR(state.SumR1, 1e7 * term, 1e7 * term * 0x1p-23);
  // In double the compensated sum of 10^7 terms keeps all digits.
  TVec wide;
  wide.Size(10000, TMtxFloatPrecision::DoubleReal);
  wide.SetVal(0.1);
  state = {};
  for (int i = 0; i < 1000; ++i) Integrate(wide, y, state, 6);
  const double share = 0.1 + 4 * 0.1 + 0.1;
  EXPECT_NEAR(state.SumR1, 0.1 + (0.1 * 4 + 0.1) + (1e7 - 2) * share, 1e7 * 0x1p-52);
}

TEST(Integrate, InfinityStays) {
  const double inf = std::numeric_limits<double>::infinity();
  TIntegrateState state{};
  TVec y;
  Integrate({1, inf, 2, 3, 4, 5}, y, state, 1);
  for (std::int32_t i = 1; i < 6; ++i) EXPECT_EQ(y[i], inf);
}

TEST(Differentiate, EmptyBlockLeavesTheState) {
  TDiffState state{1, 2, 3, 4};
  TIntegrateState sum{1, 2, 3, 4, 5, 6};
  TVec y = {1, 2};
  Differentiate(TVec{}, y, state, 1);
  Integrate(TVec{}, y, sum, 1);
  EXPECT_EQ(y.Length(), 0);
  EXPECT_EQ(state.Start1I + sum.StartI2, 10);
}

}  // namespace
}  // namespace passband::SignalUtils
