#include "passband/streaming/consistent_parameter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "passband/foundation/clock_internal.h"

namespace passband::SignalUtils {
namespace {

double seconds = 0;

// A clock that stands still until the test moves it.
class ConsistentParameterTest : public testing::Test {
 protected:
  ConsistentParameterTest() {
    seconds = 0;
    passband::detail::ReplaceNow([]() -> TDateTime { return 45000 + seconds / 86400; });
  }
  ~ConsistentParameterTest() override { passband::detail::ReplaceNow(nullptr); }
};

TEST_F(ConsistentParameterTest, IsTrueOnceTheValueHasBeenTheSameForLonger) {
  TConsistentParam state{};
  ConsistentParameterInit(3, state);
  EXPECT_EQ(state.Time, 45000);
  seconds = 2;
  EXPECT_FALSE(ConsistentParameterFilter(3.0, 2.5, state));
  seconds = 3;
  EXPECT_TRUE(ConsistentParameterFilter(3.0, 2.5, state));
  EXPECT_FALSE(ConsistentParameterFilter(4.0, 2.5, state));  // a change
  EXPECT_EQ(state.Param, 4);
  seconds = 5;
  EXPECT_FALSE(ConsistentParameterFilter(4.0, 2.5, state));
  seconds = 6;
  EXPECT_TRUE(ConsistentParameterFilter(4.0, 2.5, state));
  EXPECT_TRUE(ConsistentParameterFilter(4.0, -1, state));
  EXPECT_FALSE(ConsistentParameterFilter(4.0, std::nan(""), state));
}

TEST_F(ConsistentParameterTest, NanAndInfinityNeverSettle) {
  TConsistentParam state{};
  for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    for (seconds = 0; seconds < 50; seconds += 10) EXPECT_FALSE(ConsistentParameterFilter(bad, 1, state));
  }
}

TEST_F(ConsistentParameterTest, FlagsCountAsZeroAndOne) {
  TConsistentParam state{};
  ConsistentParameterInit(0, state);
  seconds = 5;
  EXPECT_TRUE(ConsistentParameterFilter(false, 1, state));
  EXPECT_FALSE(ConsistentParameterFilter(true, 1, state));
  EXPECT_EQ(state.Param, 1);
}

TEST(ConsistentParameter, GoesByTheSteadyClockAgain) {
  TConsistentParam state{};
  ConsistentParameterInit(0, state);
  EXPECT_FALSE(ConsistentParameterFilter(0.0, 3600, state));
}

}  // namespace
}  // namespace passband::SignalUtils
