#include "passband/vector_core/sorting.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "tests/test_support.h"

namespace passband {
namespace {

template <class R>
class SortingTest : public testing::Test {};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(SortingTest, Reals);

TYPED_TEST(SortingTest, AscendsWithNanLastForEveryArrangement) {
  using R = TypeParam;
  const R infinity = std::numeric_limits<R>::infinity();
  const R nan = std::numeric_limits<R>::quiet_NaN();
  const std::vector<R> sorted{-infinity, -2, -2, 0, std::numeric_limits<R>::denorm_min(), 1, infinity, nan, nan};
  std::mt19937 generator(1);
  for (int i = 0; i < 200; ++i) {
    std::vector<R> values = sorted;
    std::shuffle(values.begin(), values.end(), generator);
    QuickSortAsc(values);
    for (std::size_t k = 0; k < sorted.size(); ++k) {
      ASSERT_TRUE(values[k] == sorted[k] || (std::isnan(values[k]) && std::isnan(sorted[k]))) << k;
    }
  }
}

TYPED_TEST(SortingTest, EmptySingleAndPartOfAnArray) {
  using R = TypeParam;
  std::vector<R> none;
  QuickSortAsc(none);
  EXPECT_TRUE(none.empty());
  std::vector<R> values{9, 3, 2, 1, 0};
  QuickSortAsc(std::span<R>(values).subspan(1, 3));
  EXPECT_EQ(values, (std::vector<R>{9, 1, 2, 3, 0}));
}

}  // namespace
}  // namespace passband
