// Searches and counts on every instruction set: all lengths past a word of 64 samples, against loops that say what is
// meant. The samples take few values, so that levels, plateaus and NaN meet everywhere.
#include "passband/primitives/search.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "passband/primitives/switch_counts.h"
#include "tests/primitives/every_target.h"

namespace passband::primitives {
namespace {

template <class R>
constexpr R kNan = std::numeric_limits<R>::quiet_NaN();

// Samples -2 .. 2, long plateaus among them, and every 40th a NaN; behind them stands what must not be looked at.
template <class R>
std::vector<R> Samples(std::int32_t count, unsigned seed) {
  std::mt19937 generator(seed);
  std::vector<R> x;
  R value = 0;
  for (std::int32_t n = 0; n < count; ++n) {
    if (generator() % 3 != 0) value = static_cast<R>(static_cast<int>(generator() % 5) - 2);
    x.push_back(generator() % 40 == 0 ? kNan<R> : value);
  }
  x.push_back(R(-100));
  x.push_back(R(100));
  return x;
}

bool Holds(Relation relation, double x, double level) {
  switch (relation) {
    case Relation::Below:
      return x < level;
    case Relation::AtMost:
      return x <= level;
    case Relation::AtLeast:
      return x >= level;
    case Relation::Above:
      break;
  }
  return x > level;
}

// 1 for a sample that switches on, -1 off, 0 neither.
Switches Plain(std::int32_t count, bool state, const std::function<int(std::int32_t)>& what) {
  Switches switches;
  for (std::int32_t n = 0; n < count; ++n) {
    if (what(n) > 0 && !state) ++switches.on;
    if (what(n) < 0 && state) ++switches.off;
    if (what(n) != 0) state = what(n) > 0;
  }
  return switches;
}

template <class R>
void CheckSearches(const std::vector<R>& x, std::int32_t count) {
  for (const R level : {R(-3), R(-2), R(0), R(1), R(2), kNan<R>}) {
    for (const Relation relation : {Relation::Below, Relation::AtMost, Relation::AtLeast, Relation::Above}) {
      std::int32_t first = 0;
      while (first < count && !Holds(relation, x[static_cast<std::size_t>(first)], level)) ++first;
      std::int32_t last = count - 1;
      while (last >= 0 && !Holds(relation, x[static_cast<std::size_t>(last)], level)) --last;
      std::int32_t index = -7;
      ASSERT_EQ(FindFirst(x.data(), count, relation, level, index), Status::Ok);
      EXPECT_EQ(index, first);
      ASSERT_EQ(FindLast(x.data(), count, relation, level, index), Status::Ok);
      EXPECT_EQ(index, last);
    }
    std::int32_t closest = 0;
    for (std::int32_t n = 0; n < count; ++n) {
      const R best = std::abs(level - x[static_cast<std::size_t>(closest)]);
      const R distance = std::abs(level - x[static_cast<std::size_t>(n)]);
      if (distance < best || (std::isnan(best) && !std::isnan(distance))) closest = n;
    }
    std::int32_t index = -7;
    ASSERT_EQ(FindClosest(x.data(), count, level, index), Status::Ok);
    EXPECT_EQ(index, closest) << "to " << level;
  }
  for (const bool rising : {false, true}) {
    const auto step = [&](std::int32_t n) {
      const R here = x[static_cast<std::size_t>(n)];
      const R next = x[static_cast<std::size_t>(n) + 1];
      return rising ? next > here : next < here;
    };
    std::int32_t first = 0;
    while (first + 1 < count && !step(first)) ++first;
    std::int32_t index = -7;
    ASSERT_EQ(FindStep(x.data(), count, rising, index), Status::Ok);
    EXPECT_EQ(index, first);
  }
}

template <class R>
void CheckCounts(const std::vector<R>& x, std::int32_t count) {
  const auto expect = [](const Switches& found, const Switches& expected) {
    EXPECT_EQ(found.on, expected.on);
    EXPECT_EQ(found.off, expected.off);
  };
  for (const bool state : {false, true}) {
    Switches switches;
    ASSERT_EQ(CountTurns(x.data(), count, state, switches), Status::Ok);
    expect(switches, Plain(std::max(count - 1, 0), state, [&](std::int32_t n) {
             const R here = x[static_cast<std::size_t>(n)];
             const R next = x[static_cast<std::size_t>(n) + 1];
             return int{next > here} - int{next < here};
           }));
    for (const R level : {R(-2), R(0), R(1), kNan<R>}) {
      for (const Crossing crossing : {Crossing::Either, Crossing::Downward, Crossing::Upward}) {
        ASSERT_EQ(CountCrossings(x.data(), count, crossing, level, state, switches), Status::Ok);
        expect(switches, Plain(count, state, [&](std::int32_t n) {
                 const R v = x[static_cast<std::size_t>(n)];
                 if (crossing == Crossing::Downward) return int{v < level} - int{v >= level};
                 if (crossing == Crossing::Upward) return int{v > level} - int{v <= level};
                 return int{v > level} - int{v < level};
               }));
      }
    }
  }
}

template <class R>
class SearchKernelTest : public testing::Test {};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(SearchKernelTest, Reals);

TYPED_TEST(SearchKernelTest, AgreesWithPlainLoopsOnEveryTarget) {
  using R = TypeParam;
  OnEveryTarget([&] {
    for (std::int32_t count = 0; count <= 140; ++count) {
      SCOPED_TRACE(count);
      const std::vector<R> x = Samples<R>(count, static_cast<unsigned>(count));
      CheckSearches(x, count);
      CheckCounts(x, count);
    }
    for (const std::int32_t count : {2047, 2048, 5001}) {
      SCOPED_TRACE(count);
      CheckSearches(Samples<R>(count, 1), count);
      CheckCounts(Samples<R>(count, 1), count);
      CheckSearches(std::vector<R>(static_cast<std::size_t>(count) + 2, R(3)), count);  // nothing to find
    }
  });
}

TYPED_TEST(SearchKernelTest, NotFiniteSamplesAndRefusals) {
  using R = TypeParam;
  const R infinity = std::numeric_limits<R>::infinity();
  std::vector<R> x(3000, kNan<R>);
  std::int32_t index = -7;
  ASSERT_EQ(FindClosest(x.data(), 3000, R(1), index), Status::Ok);
  EXPECT_EQ(index, 0);
  x[2500] = infinity;
  ASSERT_EQ(FindClosest(x.data(), 3000, R(1), index), Status::Ok);
  EXPECT_EQ(index, 2500);
  x[2600] = R(1e30);
  ASSERT_EQ(FindClosest(x.data(), 3000, R(1), index), Status::Ok);
  EXPECT_EQ(index, 2600);
  ASSERT_EQ(FindClosest(x.data(), 3000, infinity, index), Status::Ok);  // inf - inf is no distance
  EXPECT_EQ(index, 2600);
  index = 5;
  Switches switches{3, 4};
  const R* const none = nullptr;
  EXPECT_EQ(FindFirst(x.data(), -1, Relation::Below, R(0), index), Status::BadSize);
  EXPECT_EQ(FindLast(none, 1, Relation::Below, R(0), index), Status::NullPointer);
  EXPECT_EQ(FindStep(none, 1, true, index), Status::NullPointer);
  EXPECT_EQ(FindClosest(x.data(), -1, R(0), index), Status::BadSize);
  EXPECT_EQ(CountCrossings(none, 1, Crossing::Either, R(0), false, switches), Status::NullPointer);
  EXPECT_EQ(CountTurns(x.data(), -1, false, switches), Status::BadSize);
  EXPECT_EQ(index, 5);
  EXPECT_EQ(switches.on, 3);
}

}  // namespace
}  // namespace passband::primitives
