// The direct FIR against sums in integers and in extended precision, on every instruction set of this machine.
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "passband/primitives/fir.h"
#include "passband/primitives/fir_state_internal.h"

namespace passband::primitives {
namespace {

// Every length of the short form, of both lane counts and of the ragged chunk; then one, two and four segments.
std::vector<std::int32_t> TapCounts() {
  std::vector<std::int32_t> counts(70);
  for (std::size_t k = 0; k < counts.size(); ++k) counts[k] = static_cast<std::int32_t>(k) + 1;
  for (const std::int32_t taps : {127, 128, 129, 255, 256, 257, 511, 512, 513, 1023, 1024, 1025})
    counts.push_back(taps);
  return counts;
}

template <Element T>
T Make(double re, double im) {
  if constexpr (IsComplex<T>) {
    return T(static_cast<RealOf<T>>(re), static_cast<RealOf<T>>(im));
  } else {
    return static_cast<T>(re);
  }
}

template <Element T>
std::vector<T> Noise(std::int32_t count, std::uint32_t seed) {
  std::mt19937_64 engine(seed);
  std::uniform_real_distribution<double> uniform(-1, 1);
  std::vector<T> x(static_cast<std::size_t>(count));
  for (T& v : x) {
    const double re = uniform(engine);
    v = Make<T>(re, uniform(engine));
  }
  return x;
}

// Whole numbers of at most 7: with 1100 taps every partial sum is below 2^18, exact in every precision and order.
template <Element T>
std::vector<T> Integers(std::int32_t count, std::uint32_t seed) {
  std::mt19937 engine(seed);
  std::vector<T> x(static_cast<std::size_t>(count));
  for (T& v : x) {
    const double re = static_cast<double>(engine() % 15) - 7;
    v = Make<T>(re, static_cast<double>(engine() % 15) - 7);
  }
  return x;
}

using Wide = std::complex<long double>;
template <Element T>
Wide Widen(T x) {
  if constexpr (IsComplex<T>) {
    return {x.Re, x.Im};
  } else {
    return {x, 0};
  }
}

struct Reference {
  std::vector<Wide> sums;              // of h[k] x[n - k]
  std::vector<long double> magnitude;  // of |h[k]| |x[n - k]|
};
template <Element T>
Reference Convolve(const std::vector<T>& h, const std::vector<T>& x) {
  Reference y{std::vector<Wide>(x.size()), std::vector<long double>(x.size())};
  for (std::size_t n = 0; n < x.size(); ++n) {
    for (std::size_t k = 0; k < h.size() && k <= n; ++k) {
      const Wide a = Widen(h[k]);
      const Wide b = Widen(x[n - k]);
      y.sums[n] += Wide(a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real());
      y.magnitude[n] += std::abs(a) * std::abs(b);
    }
  }
  return y;
}

template <Element T>
class Filter {
 public:
  explicit Filter(const std::vector<T>& h) : handle_(NewDirectFir(h.data(), static_cast<std::int32_t>(h.size()))) {}
  void operator()(const T* src, T* dst, std::int32_t count) {
    ASSERT_EQ(FirFilter(*handle_, src, dst, count), Status::Ok);
  }
  T operator()(T x) { return FirOne(*handle_, x); }

 private:
  FirHandle handle_;
};

// Lengths of successive calls; the last one is repeated. 0 stands for the one-sample form.
using Cut = std::vector<std::int32_t>;
const std::vector<Cut> kCuts{{1 << 20},
                             {0},
                             {1},
                             {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 40},
                             {64},
                             {512},
                             {3, 0, 0, 100, 2, 0, 33, 31, 0, 129, 48, 0, 23}};

template <Element T>
std::vector<T> Run(const std::vector<T>& h, const std::vector<T>& x, const Cut& cut, bool in_place = false) {
  Filter<T> filter(h);
  std::vector<T> y = in_place ? x : std::vector<T>(x.size());
  const T* src = in_place ? y.data() : x.data();
  std::size_t n = 0;
  for (std::size_t call = 0; n < x.size(); ++call) {
    const auto length = static_cast<std::size_t>(cut[std::min(call, cut.size() - 1)]);
    if (length == 0) {
      y[n] = filter(src[n]);
      ++n;
    } else {
      const std::size_t count = std::min(length, x.size() - n);
      filter(src + n, y.data() + n, static_cast<std::int32_t>(count));
      n += count;
    }
  }
  return y;
}

template <Element T>
bool SameBits(const T& a, const T& b) {
  return std::equal(reinterpret_cast<const unsigned char*>(&a), reinterpret_cast<const unsigned char*>(&a + 1),
                    reinterpret_cast<const unsigned char*>(&b));
}
template <Element T>
bool SameBits(const std::vector<T>& a, const std::vector<T>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const T& x, const T& y) { return SameBits(x, y); });
}

// Calls `test` with every instruction set in turn.
template <class Test>
void ForEveryTarget(const Test& test) {
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    SCOPED_TRACE(hwy::TargetName(target));
    hwy::SetSupportedTargetsForTest(target);
    test(target);
  }
  hwy::SetSupportedTargetsForTest(0);
}

template <class T>
class FirDirectTest : public testing::Test {};
struct TypeNames {
  template <class T>
  static std::string GetName(int) {
    return std::string(IsDoublePrecision(PrecisionOf<T>) ? "Double" : "Single") + (IsComplex<T> ? "Complex" : "Real");
  }
};
using Elements = testing::Types<float, double, TSCplx, TCplx>;
TYPED_TEST_SUITE(FirDirectTest, Elements, TypeNames);

TYPED_TEST(FirDirectTest, IntegersAreFilteredExactly) {
  using T = TypeParam;
  for (const std::int32_t taps : TapCounts()) {
    SCOPED_TRACE(taps);
    const auto h = Integers<T>(taps, 1);
    const auto x = Integers<T>(2 * taps + 150, 2);
    const auto expected = Convolve(h, x).sums;
    ForEveryTarget([&](std::int64_t) {
      const auto y = Run(h, x, {1 << 20});
      for (std::size_t n = 0; n < x.size(); ++n) ASSERT_EQ(Widen(y[n]), expected[n]) << n;
    });
  }
}

TYPED_TEST(FirDirectTest, EveryCutAndPlaceGivesTheSameBits) {
  using T = TypeParam;
  for (const std::int32_t taps : TapCounts()) {
    SCOPED_TRACE(taps);
    const auto h = Noise<T>(taps, 3);
    const auto x = Noise<T>(700, 4);
    std::vector<T> fused;  // of the first instruction set with a fused multiply-add
    ForEveryTarget([&](std::int64_t target) {
      const auto whole = Run(h, x, kCuts.front());
      for (const Cut& cut : kCuts) {
        EXPECT_TRUE(SameBits(Run(h, x, cut), whole)) << cut[0];
        EXPECT_TRUE(SameBits(Run(h, x, cut, true), whole)) << cut[0] << " in place";
      }
      if (target != HWY_AVX2 && target != HWY_AVX3) return;
      if (fused.empty()) fused = whole;
      EXPECT_TRUE(SameBits(fused, whole));
    });
  }
}

TYPED_TEST(FirDirectTest, LongStreamsPassTheEndOfTheDelayLine) {
  using T = TypeParam;
  for (const std::int32_t taps : {7, 33, 130, 600}) {
    SCOPED_TRACE(taps);
    const auto h = Integers<T>(taps, 5);
    const auto x = Integers<T>(9000, 6);
    const auto expected = Convolve(h, x).sums;
    for (const Cut& cut : {Cut{1 << 20}, Cut{0}, Cut{511}, Cut{1000, 3, 0, 5000, 64}}) {
      const auto y = Run(h, x, cut);
      for (std::size_t n = 0; n < x.size(); ++n) ASSERT_EQ(Widen(y[n]), expected[n]) << n << " cut " << cut[0];
    }
  }
}

// A term passes at most taps / 8 + 16 roundings on its way into the output, each of half an epsilon of a partial sum.
TYPED_TEST(FirDirectTest, ErrorStaysBelowTheDepthOfTheSum) {
  using T = TypeParam;
  const auto epsilon = static_cast<long double>(std::numeric_limits<RealOf<T>>::epsilon());
  for (const std::int32_t taps : TapCounts()) {
    SCOPED_TRACE(taps);
    const auto h = Noise<T>(taps, 7);
    const auto x = Noise<T>(taps + 500, 8);
    const Reference expected = Convolve(h, x);
    long double largest = 0;
    for (const Wide& v : expected.sums) largest = std::max(largest, std::abs(v));
    ForEveryTarget([&](std::int64_t) {
      const auto y = Run(h, x, {64});
      const long double roundings = static_cast<long double>(taps) / 8 + 16;
      for (std::size_t n = 0; n < x.size(); ++n) {
        const long double error = std::abs(Widen(y[n]) - expected.sums[n]);
        ASSERT_LE(error, roundings * epsilon / 2 * expected.magnitude[n]) << n;
        ASSERT_LE(error, 3 * epsilon * largest) << n;
      }
    });
  }
}

template <Element T>
bool IsFinite(T x) {
  return std::isfinite(std::abs(Widen(x)));
}

TYPED_TEST(FirDirectTest, NanAndInfinityReachTheirWindowOnly) {
  using T = TypeParam;
  using R = RealOf<T>;
  for (const std::int32_t taps : {1, 2, 3, 5, 8, 13, 16, 17, 31, 40, 41, 63, 129, 257}) {
    const auto h = Noise<T>(taps, 9);
    const auto x = Noise<T>(3 * taps + 200, 10);
    const auto length = static_cast<std::int32_t>(x.size());
    ForEveryTarget([&](std::int64_t) {
      const auto clean = Run(h, x, {1 << 20});
      for (std::int32_t p = 0; p < length; p += 1 + taps / 16) {
        auto dirty = x;
        const R value = p % 2 == 0 ? std::numeric_limits<R>::quiet_NaN() : std::numeric_limits<R>::infinity();
        dirty[static_cast<std::size_t>(p)] = Make<T>(value, 0);
        for (const Cut& cut : {Cut{1 << 20}, Cut{0}, Cut{5, 64, 3, 0, 17}}) {
          const auto y = Run(h, dirty, cut);
          for (std::int32_t n = 0; n < length; ++n) {
            const auto at = static_cast<std::size_t>(n);
            const bool reached = n >= p && n < p + taps;
            ASSERT_TRUE(reached ? !IsFinite(y[at]) : SameBits(y[at], clean[at]))
                << taps << " taps, at " << p << ", output " << n << ", cut " << cut[0];
          }
        }
      }
    });
  }
}

TYPED_TEST(FirDirectTest, NothingOutsideTheBlockIsTouched) {
  using T = TypeParam;
  constexpr std::size_t kGuard = 80;  // elements before and after, and every start within a cache line
  const T guard = Make<T>(-77, 99);
  for (const std::int32_t taps : {1, 4, 8, 15, 16, 17, 39, 64, 128, 300}) {
    const auto h = Integers<T>(taps, 11);
    for (std::int32_t length = 0; length < 150; length = length < 70 ? length + 1 : length + 13) {
      const auto x = Integers<T>(length, 12);
      const auto expected = Convolve(h, x).sums;
      ForEveryTarget([&](std::int64_t) {
        const std::size_t start = kGuard + static_cast<std::size_t>(length) % 17;
        // The source ends with its allocation: an address checker sees any read beyond it.
        std::vector<T> y(start + x.size() + kGuard, guard);
        Filter<T> filter(h);
        filter(x.data(), y.data() + start, length);
        for (std::size_t i = 0; i < y.size(); ++i) {
          const bool inside = i >= start && i < start + x.size();
          ASSERT_EQ(Widen(y[i]), inside ? expected[i - start] : Widen(guard))
              << taps << " taps, " << length << ", " << i;
        }
      });
    }
  }
}

TYPED_TEST(FirDirectTest, RefusedCallsReportWhyAndChangeNothing) {
  using T = TypeParam;
  const std::array<T, 3> h{Make<T>(1, 0), Make<T>(2, 0), Make<T>(3, 0)};
  FirHandle state;
  EXPECT_EQ(FirCreate(h.data(), 0, state), Status::BadSize);
  EXPECT_EQ(FirCreate(h.data(), -1, state), Status::BadSize);
  EXPECT_EQ(FirCreate<T>(nullptr, 3, state), Status::NullPointer);
  EXPECT_EQ(FirMultiRateCreate(h.data(), 0, 1, 0, 1, 0, state), Status::BadSize);
  EXPECT_EQ(FirMultiRateCreate(h.data(), 3, 0, 0, 1, 0, state), Status::BadFactor);
  EXPECT_EQ(FirMultiRateCreate(h.data(), 3, 1, 0, -2, 0, state), Status::BadFactor);
  EXPECT_EQ(FirMultiRateCreate(h.data(), 3, 2, 2, 1, 0, state), Status::BadPhase);
  EXPECT_EQ(FirMultiRateCreate(h.data(), 3, 2, 0, 3, -1, state), Status::BadPhase);
  EXPECT_EQ(FirMultiRateCreate<T>(nullptr, 3, 2, 0, 3, 1, state), Status::NullPointer);
  EXPECT_EQ(state, nullptr);
  ASSERT_EQ(FirCreate(h.data(), 3, state), Status::Ok);
  T y = FirOne(*state, Make<T>(1, 0));
  EXPECT_EQ(FirCreate(h.data(), 0, state), Status::BadSize);
  EXPECT_EQ(FirFilter(*state, h.data(), &y, -1), Status::BadSize);
  EXPECT_EQ(FirFilter<T>(*state, nullptr, &y, 1), Status::NullPointer);
  EXPECT_EQ(FirFilter<T>(*state, h.data(), nullptr, 1), Status::NullPointer);
  EXPECT_EQ(FirFilter<T>(*state, nullptr, nullptr, 0), Status::Ok);
  EXPECT_EQ(Widen(y), Wide(1));
  EXPECT_EQ(Widen(FirOne(*state, T{})), Wide(2));
}

}  // namespace
}  // namespace passband::primitives
