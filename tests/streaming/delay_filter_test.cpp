#include "passband/streaming/delay_filter.h"

#include <limits>
#include <random>
#include <utility>

#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::Noise;
using test::SameBits;
using test::Slice;

class DelayTest : public testing::TestWithParam<TMtxFloatPrecision> {};
INSTANTIATE_TEST_SUITE_P(All, DelayTest, testing::ValuesIn(test::kPrecisions),
                         [](const auto& precision) { return test::Name(precision.param); });

// `delay` zeros, then x.
TVec Delayed(const TVec& x, std::int32_t delay) {
  TVec y;
  y.Size(x.Length() + delay, x);
  y.SetZero();
  y.Copy(x, 0, delay, x.Length());
  return y;
}

TEST_P(DelayTest, OutputsAreTheInputsBehindZerosAndTheLineHoldsTheNewest) {
  std::mt19937 random(3);
  for (const std::int32_t delay : {1, 3, 64, 1000, 5000}) {
    const TVec x = Noise(30000, GetParam(), 5);
    const TVec expected = Delayed(x, delay);
    for (const std::uint32_t longest : {1U, 7U, 900U, 12000U}) {
      TDelayFilterState state{};
      DelayInit(delay, state, GetParam());
      TVec y;
      const std::int32_t length = longest == 1 ? 12000 : 30000;
      for (std::int32_t n = 0; n < length;) {
        const auto taken = std::min(length - n, static_cast<std::int32_t>(random() % longest) + 1);
        DelayFilter(Slice(x, n, taken), y, state);
        ASSERT_TRUE(SameBits(y, Slice(expected, n, taken))) << delay << " at " << n;
        n += taken;
        if (longest > 1 || n % 1000 == 0) {
          ASSERT_TRUE(SameBits(state.Data, Slice(expected, n, delay))) << delay << " at " << n;
        }
      }
    }
  }
}

TEST_P(DelayTest, InPlaceAndOverlapping) {
  const TVec x = Noise(9000, GetParam(), 5);
  for (const std::int32_t delay : {2, 500, 9001}) {
    const TVec expected = Slice(Delayed(x, delay), 0, 9000);
    TDelayFilterState state{};
    DelayInit(delay, state, GetParam());
    TVec y = x;
    DelayFilter(y, y, state);
    EXPECT_TRUE(SameBits(y, expected));
    TVec memory = Delayed(x, 1);
    TVec src;
    TVec dst;
    src.SetSubRange(memory, 1, 9000);
    dst.SetSubRange(memory, 0, 9000);
    DelayInit(delay, state, GetParam());
    DelayFilter(src, dst, state);
    EXPECT_TRUE(SameBits(dst, expected));
  }
}

TEST_P(DelayTest, WithoutDelayItCopies) {
  const TVec x = Noise(9, GetParam(), 5);
  for (const std::int32_t delay : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
    TDelayFilterState state{};
    DelayInit(delay, state, GetParam());
    EXPECT_EQ(state.SampleCount, delay);
    TVec y;
    DelayFilter(x, y, state);
    EXPECT_TRUE(SameBits(y, x));
    DelayFilter(y, y, state);
    EXPECT_TRUE(SameBits(y, x));
  }
}

TEST_P(DelayTest, RefusedAndEmptyBlocksLeaveTheLine) {
  TDelayFilterState state{};
  DelayInit(3, state, GetParam());
  TVec y;
  DelayFilter(Noise(5, GetParam(), 5), y, state);
  const TVec line = TVec(static_cast<const TVec&>(state.Data));
  TVec other = Noise(4, MakePrecision(IsComplexPrecision(GetParam()), !IsDoublePrecision(GetParam())), 5);
  y = other;
  EXPECT_RAISES(DelayFilter(other, y, state), ECoreError,
                "DelayFilter: Src.FloatPrecision <> State.Data.FloatPrecision");
  EXPECT_TRUE(SameBits(y, other));
  other.Size(0, GetParam());
  DelayFilter(other, y, state);
  EXPECT_EQ(y.Length(), 0);
  EXPECT_TRUE(SameBits(state.Data, line));
  EXPECT_RAISES(DelayInit(std::numeric_limits<std::int32_t>::max(), state, GetParam()), ECoreError,
                "SampleCount > 2147479551");
  EXPECT_TRUE(SameBits(state.Data, line));
}

TEST(Delay, FollowsItsRecord) {
  TDelayFilterState state{.SampleCount = 3, .Data = {1.0, 2.0, 3.0}, .Line = {}};
  TVec y;
  DelayFilter({4, 5}, y, state);
  EXPECT_TRUE(SameBits(y, TVec{1, 2}));
  state.Data.SetDefault(0, 30);
  TDelayFilterState moved = std::move(state);
  DelayFilter({6, 7}, y, moved);
  EXPECT_TRUE(SameBits(y, TVec{30, 4}));
  TDelayFilterState copy = moved;
  DelayFilter({8}, y, copy);
  DelayFilter({9}, y, moved);
  EXPECT_TRUE(SameBits(y, TVec{5}));
  EXPECT_TRUE(SameBits(moved.Data, TVec{6, 7, 9}));
  moved.SampleCount = 5;  // two more samples, zeros
  DelayFilter({10}, y, moved);
  EXPECT_TRUE(SameBits(y, TVec{6}));
  EXPECT_TRUE(SameBits(moved.Data, TVec{7, 9, 0, 0, 10}));
  DelayFree(moved);
  DelayFree(moved);
  EXPECT_EQ(moved.Data.Length(), 0);
  DelayFilter({1}, y, moved);
  EXPECT_TRUE(SameBits(y, TVec{0}));
}

}  // namespace
}  // namespace passband::SignalUtils
