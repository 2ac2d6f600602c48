// Running medians on every instruction set against the definition: the middle one of the sorted window.
#include "passband/primitives/median.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/primitives/every_target.h"

namespace passband::primitives {
namespace {

template <class R>
class MedianKernelTest : public testing::Test {};

struct RealNames {
  template <class R>
  static std::string GetName(int) {
    return sizeof(R) == sizeof(double) ? "Double" : "Single";
  }
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(MedianKernelTest, Reals, RealNames);

// -infinity .. -0, +0 .. infinity, NaN
template <class R>
bool Before(R a, R b) {
  if (std::isnan(a) || std::isnan(b)) return !std::isnan(a) && std::isnan(b);
  return a < b || (a == b && std::signbit(a) && !std::signbit(b));
}

// The medians of windows that start at a stretch of the first sample.
template <class R>
std::vector<R> Medians(const std::vector<R>& x, std::int32_t mask) {
  const std::size_t odd = static_cast<std::size_t>(mask - (mask + 1) % 2);
  std::vector<R> sorted(odd, x[0]);
  std::vector<R> y;
  for (std::size_t n = 0; n < x.size(); ++n) {
    const R oldest = n >= odd ? x[n - odd] : x[0];
    sorted.erase(std::lower_bound(sorted.begin(), sorted.end(), oldest, Before<R>));
    sorted.insert(std::upper_bound(sorted.begin(), sorted.end(), x[n], Before<R>), x[n]);
    y.push_back(sorted[odd / 2]);
  }
  return y;
}

template <class R>
bool SameBits(const R* a, const R* b, std::size_t count) {
  for (std::size_t n = 0; n < count; ++n) {
    if (std::isnan(a[n]) ? !std::isnan(b[n]) : std::memcmp(a + n, b + n, sizeof(R)) != 0) return false;
  }
  return true;
}

enum class Data { Noise, Ascending, Descending, Ties, Constant, Waves, NonFinite };

template <class R>
std::vector<R> Samples(Data data, std::int32_t mask, std::size_t count) {
  std::mt19937 engine(7);
  std::uniform_real_distribution<double> uniform(-1, 1);
  std::vector<R> x(count);
  for (std::size_t n = 0; n < count; ++n) {
    const double u = uniform(engine);
    const auto place = static_cast<double>(n);
    double v = u;
    if (data == Data::Ascending) v = place;
    if (data == Data::Descending) v = -place;
    if (data == Data::Ties) v = std::copysign(std::floor(3 * std::abs(u)), u);  // zeros of both signs among them
    if (data == Data::Constant) v = n < count / 2 ? 2.5 : -1;
    if (data == Data::Waves) v = std::sin(place * 5 / mask) + 0.01 * u;  // the runs of a window come and go
    if (data == Data::NonFinite && std::abs(u) > 0.8) v = u > 0 ? INFINITY : -INFINITY;
    const bool stretch = n > count / 2 && n < count / 2 + static_cast<std::size_t>(mask);
    if (data == Data::NonFinite && (stretch || (u > 0 && u < 0.2))) v = std::nan("");
    x[n] = static_cast<R>(v);
  }
  return x;
}

TYPED_TEST(MedianKernelTest, IsTheMiddleOfTheSortedWindowHoweverTheStreamIsCut) {
  using R = TypeParam;
  for (const std::int32_t mask : {1, 2, 3, 4, 5, 7, 9, 11, 31, 32, 65, 191, 255, 700, 4095}) {
    const std::size_t count = 3 * static_cast<std::size_t>(mask) + 5000;
    for (const Data data :
         {Data::Noise, Data::Ascending, Data::Descending, Data::Ties, Data::Constant, Data::Waves, Data::NonFinite}) {
      const std::vector<R> x = Samples<R>(data, mask, count);
      const std::vector<R> expected = Medians(x, mask);
      OnEveryTarget([&] {
        std::mt19937 random(5);
        for (const std::size_t block : {std::size_t{1}, std::size_t{64}, std::size_t{0}, count}) {
          MedianHandle state;
          ASSERT_EQ(MedianCreate<R>(mask, state), Status::Ok);
          std::vector<R> y = x;  // in place
          for (std::size_t n = 0; n < count;) {
            const std::size_t length = std::min(count - n, block > 0 ? block : random() % 5000);
            ASSERT_EQ(MedianFilter(*state, &y[n], &y[n], static_cast<std::int32_t>(length)), Status::Ok);
            n += length;
          }
          ASSERT_TRUE(SameBits(y.data(), expected.data(), count))
              << "mask " << mask << ", data " << static_cast<int>(data) << ", block " << block;
        }
      });
    }
  }
}

TYPED_TEST(MedianKernelTest, WritesNothingBeyondTheBlock) {
  using R = TypeParam;
  OnEveryTarget([] {
    for (const std::int32_t mask : {1, 5, 9, 11, 101}) {
      MedianHandle state;
      ASSERT_EQ(MedianCreate<R>(mask, state), Status::Ok);
      for (std::int32_t count = 0; count < 70; ++count) {
        std::vector<R> x(static_cast<std::size_t>(count) + 2, R{3});
        x.front() = x.back() = R{7};
        ASSERT_EQ(MedianFilter(*state, x.data() + 1, x.data() + 1, count), Status::Ok);
        ASSERT_TRUE(x.front() == R{7} && x.back() == R{7}) << count;
        ASSERT_TRUE(std::all_of(x.begin() + 1, x.end() - 1, [](R v) { return v == R{3}; })) << count;
      }
    }
  });
}

TYPED_TEST(MedianKernelTest, StateLiesInTheMemoryThatItIsGiven) {
  using R = TypeParam;
  const std::vector<R> x = Samples<R>(Data::Noise, 101, 3000);
  const std::vector<R> expected = Medians(x, 101);
  const std::size_t size = MedianStateSize<R>(101);
  for (const std::size_t shift : {0U, 8U, 40U}) {
    std::vector<unsigned char> memory(size + shift + 1, 0xA5);
    MedianState* state = nullptr;
    ASSERT_EQ(MedianCreate<R>(101, memory.data() + shift, state), Status::Ok);
    std::vector<R> y(x.size());
    for (const auto& [first, count] : {std::pair<std::size_t, std::int32_t>{0, 1500}, {1500, 20}, {1520, 1480}}) {
      ASSERT_EQ(MedianFilter(*state, &x[first], &y[first], count), Status::Ok);
    }
    EXPECT_TRUE(SameBits(y.data(), expected.data(), x.size()));
    EXPECT_EQ(memory.back(), 0xA5);
  }
}

TYPED_TEST(MedianKernelTest, RefusesWithAStatus) {
  using R = TypeParam;
  MedianHandle state;
  MedianState* placed = nullptr;
  EXPECT_EQ(MedianCreate<R>(0, state), Status::BadSize);
  EXPECT_EQ(MedianCreate<R>(-5, &placed, placed), Status::BadSize);
  EXPECT_EQ(MedianCreate<R>(5, nullptr, placed), Status::NullPointer);
  EXPECT_EQ(state, nullptr);
  ASSERT_EQ(MedianCreate<R>(5, state), Status::Ok);
  R x = 7;
  EXPECT_EQ(MedianFilter(*state, &x, &x, -1), Status::BadSize);
  std::conditional_t<sizeof(R) == sizeof(double), float, double> other = 7;
  EXPECT_EQ(MedianFilter(*state, &other, &other, 1), Status::BadArgument);
}

}  // namespace
}  // namespace passband::primitives
