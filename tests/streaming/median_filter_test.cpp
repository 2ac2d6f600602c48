#include "passband/streaming/median_filter.h"

#include <cmath>
#include <limits>

#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using test::Noise;
using test::SameBits;
using enum TMtxFloatPrecision;

constexpr std::int32_t kHigh = std::numeric_limits<std::int32_t>::max();

TVec Filtered(const TVec& x, std::int32_t mask) {
  TVec y;
  MedianFilter(x, y, mask);
  return y;
}

TEST(MedianFilter, WindowTrailsAndBeginsWithTheFirstSample) {
  const TVec x = {4, 0, 0, 0, 9, 9, 1, 9};
  const TVec expected = {4, 4, 4, 0, 0, 0, 1, 9};  // 4 4 4 4 4 | 0 0 0 9 9 1 9
  EXPECT_TRUE(SameBits(Filtered(x, 5), expected));
  TMedianState state{};
  TVec y;
  MedianInit(5, state, DoubleReal);
  MedianFilter(x, y, state);
  EXPECT_TRUE(SameBits(y, expected));
  TVec in_place = x;
  MedianFilter(in_place, 5);
  EXPECT_TRUE(SameBits(in_place, expected));
}

TEST(MedianFilter, EvenMaskGrowsInTheStreamAndShrinksInOneShot) {
  const TVec x = Noise(40, SingleReal, 3);
  TMedianState state{};
  TVec y;
  MedianInit(4, state, SingleReal);
  MedianFilter(x, y, state);
  EXPECT_TRUE(SameBits(y, Filtered(x, 5)));
  EXPECT_TRUE(SameBits(Filtered(x, 4), Filtered(x, 3)));
  EXPECT_TRUE(SameBits(Filtered(x, 2), x));
}

TEST(MedianFilter, MaskLongerThanTheDestinationBecomesTheLength) {
  const TVec x = Noise(30, DoubleReal, 4);
  EXPECT_TRUE(SameBits(Filtered(x, 31), Filtered(x, 29)));
  EXPECT_TRUE(SameBits(Filtered(x, kHigh), Filtered(x, 29)));
  // In place the first sample has the majority instead.
  TVec y = x;
  MedianFilter(y, kHigh, 0, 30);
  for (std::int32_t n = 0; n < 30; ++n) EXPECT_EQ(y[n], x[0]);
  y = x;
  MedianFilter(y, 59);
  EXPECT_EQ(y[28], x[0]);
  // A stretch of a longer destination keeps the mask that the destination could hold.
  TVec wide;
  wide.Size(50, DoubleReal);
  wide.SetVal(7.0);
  MedianFilter(x, wide, 21, 5, 10, 9);
  TVec part = test::Slice(x, 5, 9);
  MedianFilter(part, 21);
  EXPECT_TRUE(SameBits(test::Slice(wide, 10, 9), part));
  EXPECT_EQ(wide[9], 7);
  EXPECT_EQ(wide[19], 7);
}

TEST(MedianFilter, OneShotFormsWorkInPlaceAndOnOverlaps) {
  const TVec x = Noise(200, DoubleReal, 5);
  const TVec expected = Filtered(test::Slice(x, 20, 100), 7);
  TVec y = x;
  MedianFilter(y, y, 7, 20, 20, 100);
  EXPECT_TRUE(SameBits(test::Slice(y, 20, 100), expected));
  y = x;
  MedianFilter(y, y, 7, 20, 21, 100);
  EXPECT_TRUE(SameBits(test::Slice(y, 21, 100), expected));
  EXPECT_EQ(y[20], x[20]);
  y = x;
  MedianFilter(y, y, 7);
  EXPECT_TRUE(SameBits(y, Filtered(x, 7)));
}

TEST(MedianFilter, NanLeaveNoTrace) {
  TVec x = Noise(500, DoubleReal, 6);
  const TVec clean = Filtered(x, 21);
  for (std::int32_t n = 100; n < 130; ++n) x.SetDefault(n, std::nan(""));
  const TVec y = Filtered(x, 21);
  EXPECT_TRUE(SameBits(test::Slice(y, 0, 100), test::Slice(clean, 0, 100)));
  EXPECT_TRUE(SameBits(test::Slice(y, 150, 350), test::Slice(clean, 150, 350)));
  EXPECT_FALSE(std::isnan(y[109]));  // 10 of 21
  EXPECT_TRUE(std::isnan(y[110]) && std::isnan(y[139]));
  EXPECT_FALSE(std::isnan(y[140]));
}

TEST(MedianFilter, RefusesAndChangesNothing) {
  TMedianState state{};
  TVec y = {1, 2, 3};
  const TVec before = y;
  const TVec x = Noise(9, DoubleReal, 1);
  const TVec complex = Noise(9, DoubleComplex, 1);
  EXPECT_RAISES(MedianInit(0, state, DoubleReal), ECoreError, "MedianInit: MaskSize < 1");
  EXPECT_RAISES(MedianInit(5, state, static_cast<TMtxFloatPrecision>(7)), ECoreError,
                "MedianInit: FloatPrecision is none of the four precisions");
  EXPECT_RAISES(MedianFilter(x, y, state), ECoreError, "MedianFilter: Src.FloatPrecision <> State.FloatPrecision");
  EXPECT_RAISES(MedianFilter(Noise(9, SingleReal, 1), y, state), ECoreError, "MedianFilter: State.State = nil");
  MedianInit(5, state, DoubleComplex);
  EXPECT_RAISES(MedianFilter(complex, y, state), ECoreError, "MedianFilter: Src.Complex = True");
  EXPECT_RAISES(MedianFilter(complex, y, 5), ECoreError, "Src.Complex = True");
  TVec z = complex;
  EXPECT_RAISES(MedianFilter(z, 5), ECoreError, "Data.Complex = True");
  EXPECT_RAISES(MedianFilter(x, y, 0), ECoreError, "MedianFilter: MaskSize < 1");
  EXPECT_RAISES(MedianFilter(x, y, -3, 0, 0, 3), ECoreError, "MedianFilter: MaskSize < 1");
  EXPECT_RAISES(MedianFilter(Noise(9, SingleReal, 1), y, 3, 0, 0, 3), ECoreError,
                "the elements are double, not single");
  EXPECT_THROW(MedianFilter(x, y, 3, 8, 0, 3), ECoreError);
  EXPECT_THROW(MedianFilter(x, y, 3, 0, 1, 3), ECoreError);
  EXPECT_TRUE(SameBits(y, before));
  EXPECT_TRUE(SameBits(z, complex));
  MedianFree(state);
  MedianFree(state);
  MedianFilter(TVec{}, y, state);
  EXPECT_EQ(y.Length(), 0);
  MedianFilter(TVec{}, y, 5);
  EXPECT_EQ(y.Length(), 0);
}

}  // namespace
}  // namespace passband::SignalUtils
