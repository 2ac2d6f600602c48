// Extrema, crossings, nearest elements and peak measures: closed forms, and counts against the searches themselves.
#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "passband/analysis/crossings.h"
#include "passband/analysis/extrema.h"
#include "passband/analysis/nearest_element.h"
#include "passband/analysis/peak_measures.h"
#include "passband/foundation/scalars.h"
#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TVec Rounded(TVec v, bool is_double) {
  v.SetFloatPrecision(MakePrecision(v.Complex(), is_double));
  return v;
}

// Noise in steps of 1/4, with equal neighbours and elements on every level of the tests.
TVec Steps(std::int32_t length, bool is_double, std::uint32_t seed) {
  TVec v = test::Noise(length, TMtxFloatPrecision::DoubleReal, seed);
  for (std::int32_t i = 0; i < length; ++i) v.SetDefault(i, std::round(4 * v[i]) / 4);
  return Rounded(v, is_double);
}

TVec Sine(std::int32_t length, double frequency, double phase) {
  TVec v;
  v.Size(length, TMtxFloatPrecision::DoubleReal);
  for (std::int32_t n = 0; n < length; ++n) v.SetDefault(n, std::sin(2 * PI * frequency * n + phase));
  return v;
}

// The number of times that a search stops before the last element of a range.
std::int32_t CountBySearching(std::int32_t index, std::int32_t len, const std::function<void(std::int32_t&)>& next) {
  const std::int32_t end = index + len;
  if (index >= end - 1) return -1;
  std::int32_t count = -1;
  for (std::int32_t position = index; position < end - 1; ++count) next(position);
  return count;
}

TEST(PeakMeasures, TakeTheLargerExcursion) {
  EXPECT_EQ(Peak(5, -1, 1), 4);
  EXPECT_EQ(Peak(3, -4, 0), 4);
  EXPECT_EQ(Peak(TCplx{3, 4}, TCplx{0, 0}, TCplx{0, 0}), 5);
  EXPECT_EQ(Peak(TCplx{1, 0}, TCplx{0, -2}, TCplx{0, 0}), 2);
  EXPECT_EQ(Crest(2, 5), 2.5);
  EXPECT_EQ(Crest(0, 5), 0);
  EXPECT_EQ(Crest(-0.0, 5), 0);
  EXPECT_EQ(Crest(TCplx{0, 2}, TCplx{3, 4}), 2.5);
  EXPECT_EQ(Crest(TCplx{0, -0.0}, TCplx{3, 4}), 0);
}

TEST(NearestElement, FirstOfTheNearestInThePrecisionOfTheData) {
  for (const bool is_double : {false, true}) {
    EXPECT_EQ(FindNearest(Rounded({1.0, 4.0, 2.0, 8.0}, is_double), 3), 1);
    EXPECT_EQ(FindNearest(Rounded({kNan, 7.0, kNan, 3.0}, is_double), 3), 3);
    EXPECT_EQ(FindNearest(Rounded({kNan, kNan}, is_double), 3), 0);
    const TVec x = Rounded(test::Noise(10000, TMtxFloatPrecision::DoubleReal, 3), is_double);
    for (const std::int32_t i : {0, 17, 2048, 9999}) EXPECT_EQ(FindNearest(x, x[i]), i);
    EXPECT_EQ(FindNearest(x, 1), FindNearest(x, x.Max()));
  }
  EXPECT_EQ(FindNearest(Rounded({0.1, 0.3}, false), 0.1), 0);  // 0.1 rounded to single is the element
}

TEST(NearestElement, MeanOfAWindowAroundThePosition) {
  const TVec x = {8.0, 2.0, 5.0, 1.0, 4.0};
  struct Case {
    std::int32_t index, window;
    double mean;
    std::int32_t moved;
    bool inside;
  };
  const std::int32_t far = std::numeric_limits<std::int32_t>::max();
  for (const Case& c : {Case{2, 1, 5, 2, true},
                        {2, 3, 8.0 / 3, 2, true},
                        {2, 4, 4, 2, true},  // 1.5 rounds to 2
                        {2, 2, 5, 2, true},  // 0.5 rounds to 0
                        {0, 3, 5, 1, true},
                        {4, 3, 2.5, 4, false},
                        {-3, 1, 8, 0, false},
                        {9, 1, 4, 4, false},
                        {2, far, 4, 4, false},
                        {-far, 3, 8, 1, true},
                        {far, far, 4, 4, false}}) {
    for (const bool is_double : {false, true}) {
      std::int32_t index = c.index;
      double mean = kNan;
      EXPECT_EQ(NearestMean(Rounded(x, is_double), index, c.window, mean), c.inside) << c.index << " " << c.window;
      EXPECT_NEAR(mean, c.mean, 1e-15 * 8) << c.index << " " << c.window;
      EXPECT_EQ(index, c.moved) << c.index << " " << c.window;
    }
  }
}

TEST(Extrema, ClimbToTheNearest) {
  const TVec x = {1.0, 3.0, 2.0, 5.0, 4.0};
  struct Case {
    std::int32_t start, maximum;
    bool max_inside;
    std::int32_t minimum;
    bool min_inside;
  };
  for (const Case& c : {Case{0, 1, true, 0, false},
                        {2, 1, true, 2, true},
                        {3, 3, true, 2, true},
                        {4, 3, true, 4, false},
                        {-7, 1, true, 0, false},
                        {99, 3, true, 4, false}}) {
    std::int32_t index = c.start;
    EXPECT_EQ(NearestMaximum(x, index), c.max_inside) << c.start;
    EXPECT_EQ(index, c.maximum) << c.start;
    index = c.start;
    EXPECT_EQ(NearestMinimum(Rounded(x, false), index), c.min_inside) << c.start;
    EXPECT_EQ(index, c.minimum) << c.start;
  }
}

TEST(Extrema, GoOnToTheNextAndEnd) {
  const TVec x = {3.0, 2.0, 1.0, 2.0, 3.0, 2.0};
  std::int32_t index = 0;
  EXPECT_TRUE(NextMaximum(x, index));
  EXPECT_EQ(index, 4);
  EXPECT_FALSE(NextMaximum(x, index));
  EXPECT_EQ(index, 5);
  EXPECT_FALSE(NextMaximum(x, index));
  EXPECT_EQ(MaximumCount(x), 1);
  EXPECT_EQ(MinimumCount(x), 1);
  const TVec plateau = {0.0, 1.0, 1.0, 0.0, 0.0, 1.0};
  index = 0;
  EXPECT_TRUE(NextMaximum(plateau, index));
  EXPECT_EQ(index, 2);  // the last of equal ones
  index = 0;
  EXPECT_TRUE(NextMinimum(plateau, index));
  EXPECT_EQ(index, 4);
  // Nothing goes round for ever: not at a NaN, not behind the end, not in an empty vector.
  for (const TVec& odd : {TVec{1.0, kNan, 2.0}, TVec{kNan, kNan}, TVec{}, TVec{kNan}}) {
    index = odd.Length() == 0 ? 5 : -5;
    for (int turns = 0; NextMaximum(odd, index); ++turns) ASSERT_LT(turns, 5);
    EXPECT_EQ(index, std::max(odd.Length() - 1, 0));
    EXPECT_LE(MaximumCount(odd), 1);
    EXPECT_LE(DCCrossingCount(odd, 1), 2);
    NextZeroCrossing(odd, index = 99);
    EXPECT_EQ(index, std::max(odd.Length() - 1, 0));
  }
}

TEST(Extrema, CountsAreThoseOfTheSearches) {
  for (const bool is_double : {false, true}) {
    const TVec x = Steps(700, is_double, 5);
    for (const auto& [index, len] :
         {std::pair{0, 700}, {0, 0}, {0, 1}, {1, 2}, {3, 5}, {17, 600}, {100, 64}, {699, 1}}) {
      SCOPED_TRACE(testing::Message() << index << " " << len);
      const auto count = [i = index, n = len](const auto& next) { return CountBySearching(i, n, next); };
      EXPECT_EQ(MaximumCount(x, index, len), count([&](std::int32_t& i) { NextMaximum(x, i); }));
      EXPECT_EQ(MinimumCount(x, index, len), count([&](std::int32_t& i) { NextMinimum(x, i); }));
      EXPECT_EQ(ZeroCrossingCount(x, index, len), count([&](std::int32_t& i) { NextZeroCrossing(x, i); }));
      EXPECT_EQ(DCCrossingCount(x, 0.5, index, len), count([&](std::int32_t& i) { NextDCCrossing(x, i, 0.5); }));
    }
    EXPECT_EQ(MaximumCount(x), MaximumCount(x, 0, 700));
    EXPECT_EQ(MaximumCount(x, -3, -1), MaximumCount(x));
    EXPECT_EQ(MaximumCount(x, 700), -1);
  }
  const TVec sine = Sine(100005, 0.0123, 0.1);  // 1230 periods and a little more
  EXPECT_EQ(MaximumCount(sine), 1230);
  EXPECT_EQ(MinimumCount(sine), 1230);
  EXPECT_EQ(ZeroCrossingCount(sine), 2460);
  EXPECT_EQ(DCCrossingCount(sine, 0.9, true), 1230);
  EXPECT_EQ(DCCrossingCount(sine, 0.9, false), 1230);
  EXPECT_EQ(DCCrossingCount(sine, 1.1), 0);
}

TEST(Crossings, ElementsOnTheLevelBelongToNoSide) {
  const TVec x = {1.0, 2.0, -1.0, -2.0, 3.0};
  std::int32_t index = 0;
  NextZeroCrossing(x, index);
  EXPECT_EQ(index, 2);
  NextZeroCrossing(x, index);
  EXPECT_EQ(index, 4);
  EXPECT_EQ(ZeroCrossingCount(x), 1);  // the second one is on the last element
  EXPECT_EQ(ZeroCrossingCount({1.0, 0.0, 0.0, 2.0, 0.0, -1.0, 0.0}), 1);
  EXPECT_EQ(ZeroCrossingCount({0.0, -1.0, 1.0, 1.0}), 1);  // on the level: as if below
  const TVec square = {1.0, -1.0, 1.0, -1.0};
  EXPECT_EQ(DCCrossingCount(square, 0, true), 2);
  EXPECT_EQ(DCCrossingCount(square, 0, false), 1);
  EXPECT_EQ(DCCrossingCount({1.0, -1.0, 0.0, -1.0}, 0, true), 2);  // it has been back on the level
  EXPECT_EQ(DCCrossingCount({1.0, -1.0, kNan, -1.0}, 0, true), 1);
  EXPECT_EQ(DCCrossingCount(square, 0, true, 1), 1);
  EXPECT_EQ(DCCrossingCount(square, 0, true, 1, 0), 0);
  const TVec single = Rounded({0.1, 0.2}, false);  // the level is rounded like the data: neither is below it
  EXPECT_EQ(DCCrossingCount(single, 0.1, true), 0);
}

TEST(Crossings, NearestOnTheWayOfTheCurve) {
  const TVec x = {-2.0, -1.0, 0.5, 2.0, 3.0, 2.5, 1.0, -0.5, -3.0, -2.0, -1.5, 1.0, 4.0, 4.0, 4.0, 2.0};
  struct Case {
    double start, level, left, crossing;
  };
  for (const Case& c : {Case{0.5, 0, 1, 1 + 1 / 1.5},  // below and rising: forward; a half rounds to the even element
                        {4, 0, 6, 6 + 1 / 1.5},        // above and falling: forward
                        {3.4, 0, 1, 1 + 1 / 1.5},      // above and rising: back
                        {7, 0, 6, 6 + 1 / 1.5},        // below and falling: back
                        {-1e300, 0, 1, 1 + 1 / 1.5},
                        {kNan, 0, 1, 1 + 1 / 1.5},
                        {15, 3, 14, 14.5},  // the last element: by the step to it, back
                        {2, 0.5, 2, 2},     // on the level
                        {0, 9, 14, 11.5},   // none forward: the line through the last two
                        {9, -9, 0, -7}}) {  // none back: the first two
    for (const bool is_double : {false, true}) {
      double position = c.start;
      double value = 77;
      NearestDCCrossing(Rounded(x, is_double), position, value, c.level);
      EXPECT_EQ(position, c.left) << c.start << " " << c.level;
      EXPECT_EQ(value, x[static_cast<std::int32_t>(c.left)]);
      position = c.start;
      NearestDCCrossing(Rounded(x, is_double), position, value, c.level, true);
      EXPECT_NEAR(position, c.crossing, 1e-14) << c.start << " " << c.level;
      EXPECT_EQ(value, c.level);
    }
  }
  double position = 13;
  double value = 0;
  NearestZeroCrossing(x, position, value, true);  // flat
  EXPECT_EQ(position, 0);
  EXPECT_EQ(value, 4);
  NearestDCCrossing({5.0}, position = 3, value, 0, true);
  EXPECT_EQ(position, 0);
  EXPECT_EQ(value, 5);
  // Far from the start of a long vector the position keeps its digits.
  TVec late;
  late.Size(30000000, TMtxFloatPrecision::SingleReal);
  late.SetVal(-1);
  late.SetDefault(29999999, 2);
  NearestZeroCrossing(late, position = 29999998, value, true);
  EXPECT_NEAR(position, 29999998 + 1.0 / 3, 4e-9);
}

TEST(Search, RefusesWithItsTexts) {
  const TVec complex = test::Noise(5, TMtxFloatPrecision::SingleComplex, 1);
  const TVec x = {1.0, 2.0, 3.0};
  std::int32_t index = 2;
  double position = 1.5;
  double value = 7;
  EXPECT_RAISES(FindNearest(complex, 0), ECoreError, "Data.Complex = True");
  EXPECT_RAISES(FindNearest(TVec{}, 0), ECoreError, "FindNearest: Data.Length = 0");
  EXPECT_RAISES(NearestMean(complex, index, -1, value), ECoreError, "NearestMean: Data.Complex = True");
  EXPECT_RAISES(NearestMean(x, index, -1, value), ECoreError, "NearestMean: Window < 0");
  EXPECT_RAISES(NearestMean(TVec{}, index, 1, value), ECoreError, "NearestMean: Data.Length = 0");
  EXPECT_RAISES(NearestMaximum(complex, index), ECoreError, "Data.Complex = True");
  EXPECT_RAISES(NearestMinimum(complex, index), ECoreError, "Data.Complex = True");
  EXPECT_RAISES(NextMaximum(complex, index), ECoreError, "Src.Complex = True");
  EXPECT_RAISES(NextMinimum(complex, index), ECoreError, "Src.Complex = True");
  EXPECT_RAISES(NextDCCrossing(complex, index, 0), ECoreError, "Src.Complex = True");
  EXPECT_RAISES(NextZeroCrossing(complex, index), ECoreError, "Src.Complex = True");
  EXPECT_RAISES(NearestDCCrossing(complex, position, value, 0), ECoreError, "Data.Complex = True");
  EXPECT_RAISES(NearestZeroCrossing(TVec{}, position, value), ECoreError, "NearestDCCrossing: Data.Length = 0");
  EXPECT_EQ(index, 2);
  EXPECT_EQ(position, 1.5);
  EXPECT_EQ(value, 7);
  const std::int32_t far = std::numeric_limits<std::int32_t>::max();
  const char* const range = "(Index+Len) > Src.Length";
  for (const auto& [first, len] : {std::pair{0, 4}, {2, 2}, {far, far}, {1, far}, {4, 0}}) {
    EXPECT_RAISES(MaximumCount(x, first, len), ECoreError, range);
    EXPECT_RAISES(MinimumCount(x, first, len), ECoreError, range);
    EXPECT_RAISES(ZeroCrossingCount(x, first, len), ECoreError, range);
    EXPECT_RAISES(DCCrossingCount(x, 1, first, len), ECoreError, range);
    EXPECT_RAISES(DCCrossingCount(x, 1, true, first, len), ECoreError, range);
  }
  EXPECT_RAISES(MaximumCount(complex, 9, 9), ECoreError, "Src.Complex = True");
  EXPECT_RAISES(DCCrossingCount(complex, 0, false), ECoreError, "Src.Complex = True");
  EXPECT_EQ(MaximumCount(x, 1, -far), -1);
  EXPECT_EQ(DCCrossingCount(x, 2, true, 1, -far), 0);
}

}  // namespace
}  // namespace passband::SignalUtils
