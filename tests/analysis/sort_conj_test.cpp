#include "passband/analysis/sort_conj.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;

const TVec kSorted = {{-3, -0.5}, {-3, 0.5}, {-1, -2}, {-1, 2}, {-1, -2}, {-1, 2},
                      {-1, -1},   {-1, 1},   {-5, 0},  {2, 0},  {2, 0}};

TEST(SortConj, AnyOrderOfTheSameValuesIsSortedAlike) {
  std::mt19937 generator(4);
  for (const bool is_double : {true, false}) {
    TVec expected(kSorted);
    expected.SetFloatPrecision(MakePrecision(true, is_double));
    std::vector<std::int32_t> order(static_cast<std::size_t>(kSorted.Length()));
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = static_cast<std::int32_t>(i);
    for (int round = 0; round < 200; ++round) {
      std::shuffle(order.begin(), order.end(), generator);
      TVec v(expected);
      for (std::size_t i = 0; i < order.size(); ++i) test::Put(v, static_cast<std::int32_t>(i), At(kSorted, order[i]));
      SortConj(v, 1e-3);
      ASSERT_TRUE(test::SameBits(v, expected)) << round;
    }
  }
}

TEST(SortConj, ValuesWithinTheToleranceCountAsEqual) {
  // Noise of 1e-9 on a repeated pair and on a real value's imaginary part.
  TVec v = {{-1 + 1e-9, 2}, {-1, 2 + 1e-9}, {-1 - 1e-9, -2 + 1e-9}, {-1, -2}, {3, 1e-9}, {-4, -1e-9}};
  SortConj(v, 1e-8);
  for (const std::int32_t i : {0, 2}) {
    EXPECT_NEAR(At(v, i).Im, -2, 1e-8);
    EXPECT_NEAR(At(v, i + 1).Im, 2, 1e-8);
  }
  EXPECT_EQ(At(v, 4), (TCplx{-4, 0}));
  EXPECT_EQ(At(v, 5), (TCplx{3, 0}));
}

TEST(SortConj, RealDataNanAndStretches) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  TVec v = {3.0, nan, -1.0, 2.0};
  SortConj(v, 0);
  EXPECT_TRUE(test::SameBits(v, {-1.0, 2.0, 3.0, nan}));
  TVec c = {{nan, 1}, {1, 0}, {0, -2}, {0, 2}};
  SortConj(c, 1e-9);
  EXPECT_EQ(At(c, 0), (TCplx{0, -2}));
  EXPECT_EQ(At(c, 1), (TCplx{0, 2}));
  EXPECT_EQ(At(c, 3), (TCplx{1, 0}));
  TVec part = {9.0, 3.0, 2.0, 1.0, 0.0};
  SortConj(part, 1, 3, 0);
  EXPECT_TRUE(test::SameBits(part, {9.0, 1.0, 2.0, 3.0, 0.0}));
  TVec none;
  SortConj(none, 0);
  const TVec kept = part;
  EXPECT_RAISES(SortConj(part, -1), ECoreError, "not (Tol >= 0)");
  EXPECT_RAISES(SortConj(part, nan), ECoreError, "not (Tol >= 0)");
  EXPECT_THROW(SortConj(part, 3, 3, 0), Exception);
  EXPECT_THROW(SortConj(part, -1, 3, 0), Exception);
  EXPECT_THROW(SortConj(part, 2147483647, 2147483647, 0), Exception);
  EXPECT_TRUE(test::SameBits(part, kept));
}

}  // namespace
}  // namespace passband::SignalUtils
