// The direct form of IIR filters against exact and extended arithmetic, on every instruction set of this machine.
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "passband/primitives/iir.h"

namespace passband::primitives {
namespace {

struct Design {
  std::string name;
  std::vector<double> b, a;
};
const std::vector<Design>& Designs() {
  static const std::vector<Design> designs{
#include "tests/primitives/iir_direct_reference.inc"
  };
  return designs;
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
constexpr std::size_t kParts = IsComplex<T> ? 2 : 1;
template <Element T>
double Part(const T& x, std::size_t part) {
  RealOf<T> parts[kParts<T>];
  std::memcpy(parts, &x, sizeof(T));
  return static_cast<double>(parts[part]);
}

template <Element T>
std::vector<T> Noise(std::size_t count, std::uint32_t seed) {
  std::mt19937_64 engine(seed);
  std::uniform_real_distribution<double> uniform(-1, 1);
  std::vector<T> x(count);
  for (T& v : x) {
    const double re = uniform(engine);
    v = Make<T>(re, uniform(engine));
  }
  return x;
}

// Whole numbers from -range to range.
template <Element T>
std::vector<T> Integers(std::size_t count, std::uint32_t seed, std::uint32_t range = 5) {
  std::mt19937 engine(seed);
  const auto draw = [&] { return static_cast<double>(engine() % (2 * range + 1)) - range; };
  std::vector<T> x(count);
  for (T& v : x) {
    const double re = draw();
    v = Make<T>(re, draw());
  }
  return x;
}

template <Element T>
class Filter {
 public:
  using Taps = std::vector<RealOf<T>>;

  Filter(const Taps& b, const Taps& a) {
    const std::size_t count = std::max(b.size(), a.size());
    Taps taps(2 * count);
    std::copy(b.begin(), b.end(), taps.begin());
    std::copy(a.begin(), a.end(), taps.begin() + static_cast<std::ptrdiff_t>(count));
    const auto order = static_cast<std::int32_t>(count) - 1;
    memory_.assign(IirDirectStateSize<T>(order) + 2 * kGuard, std::byte{0x5a});
    EXPECT_EQ(IirDirectCreate<T>(taps.data(), order, memory_.data() + kGuard, state_), Status::Ok);
  }
  ~Filter() {
    const auto whole = [](std::byte b) { return b == std::byte{0x5a}; };
    EXPECT_TRUE(std::all_of(memory_.begin(), memory_.begin() + kGuard, whole));
    EXPECT_TRUE(std::all_of(memory_.end() - kGuard, memory_.end(), whole));
  }
  void operator()(const T* src, T* dst, std::size_t count) {
    ASSERT_EQ(IirFilter(*state_, src, dst, static_cast<std::int32_t>(count)), Status::Ok);
  }
  T operator()(T x) { return IirOne(*state_, x); }
  std::vector<T> operator()(const std::vector<T>& x) {
    std::vector<T> y(x.size());
    (*this)(x.data(), y.data(), x.size());
    return y;
  }

 private:
  static constexpr std::ptrdiff_t kGuard = 24;  // an odd place for the state
  std::vector<std::byte> memory_;
  IirHandle state_;
};

// y[n] by the definition in extended precision, one part of the data after the other.
template <Element T, class R>
std::vector<std::vector<long double>> Define(const std::vector<R>& b, const std::vector<R>& a,
                                             const std::vector<T>& x) {
  std::vector<std::vector<long double>> y(kParts<T>, std::vector<long double>(x.size()));
  for (std::size_t part = 0; part < kParts<T>; ++part) {
    for (std::size_t n = 0; n < x.size(); ++n) {
      long double sum = 0;
      for (std::size_t k = 0; k < b.size() && k <= n; ++k) {
        sum += static_cast<long double>(b[k]) * static_cast<long double>(Part(x[n - k], part));
      }
      for (std::size_t k = 1; k < a.size() && k <= n; ++k) sum -= static_cast<long double>(a[k]) * y[part][n - k];
      y[part][n] = sum / static_cast<long double>(a[0]);
    }
  }
  return y;
}

// Lengths of successive calls; the last one is repeated. 0 stands for the one-sample form.
using Cut = std::vector<std::size_t>;
const std::vector<Cut> kCuts{{1 << 20},
                             {0},
                             {1},
                             {7},
                             {1, 2, 3, 4, 5, 6, 8, 9, 15, 16, 17, 31, 33, 127, 128, 129},
                             {3, 0, 0, 100, 2, 0, 33, 31, 0, 129, 48, 0, 23, 0, 300}};

template <Element T>
std::vector<T> Run(Filter<T>& filter, const std::vector<T>& x, const Cut& cut, bool in_place) {
  std::vector<T> y = in_place ? x : std::vector<T>(x.size());
  const T* const src = in_place ? y.data() : x.data();
  std::size_t n = 0;
  for (std::size_t call = 0; n < x.size(); ++call) {
    const std::size_t length = cut[std::min(call, cut.size() - 1)];
    if (length == 0) {
      y[n] = filter(src[n]);
      ++n;
    } else {
      const std::size_t count = std::min(length, x.size() - n);
      filter(src + n, y.data() + n, count);
      n += count;
    }
  }
  return y;
}

template <Element T>
bool SameBits(const std::vector<T>& x, const std::vector<T>& y) {
  return x.size() == y.size() && std::memcmp(x.data(), y.data(), x.size() * sizeof(T)) == 0;
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

// Orders of numerator and denominator: every form in registers, the forms in the line, and both unequal.
const std::vector<std::pair<std::size_t, std::size_t>> kOrders{
    {0, 0}, {1, 0},  {2, 0}, {3, 0}, {20, 0},  {0, 1},   {0, 4},  {0, 9},   {1, 1},  {2, 1},     {5, 1},
    {2, 2}, {1, 2},  {7, 2}, {3, 3}, {1, 3},   {12, 3},  {4, 4},  {5, 5},   {6, 6},  {7, 7},     {8, 8},
    {2, 8}, {30, 8}, {9, 9}, {3, 9}, {15, 15}, {16, 16}, {4, 17}, {40, 23}, {5, 40}, {200, 200}, {400, 3}};

// b and a with all poles within 1/2 of the origin.
template <class R>
std::pair<std::vector<R>, std::vector<R>> StableTaps(std::size_t forward, std::size_t feedback, std::uint32_t seed) {
  std::pair<std::vector<R>, std::vector<R>> taps{Noise<R>(forward + 1, seed), Noise<R>(feedback + 1, seed + 1)};
  taps.second[0] = R{4};
  double scale = 1;
  for (std::size_t k = 1; k <= feedback; ++k) {
    scale /= 2;
    taps.second[k] *= static_cast<R>(std::max(scale, 1e-3 / static_cast<double>(feedback)));
  }
  return taps;
}

template <class T>
class IirDirectTest : public testing::Test {};
struct TypeNames {
  template <class T>
  static std::string GetName(int) {
    return std::string(IsDoublePrecision(PrecisionOf<T>) ? "Double" : "Single") + (IsComplex<T> ? "Complex" : "Real");
  }
};
using Elements = testing::Types<float, double, TSCplx, TCplx>;
TYPED_TEST_SUITE(IirDirectTest, Elements, TypeNames);

// Whole numbers, with feedback that repeats (periodic sums) instead of growing: exact in every order of summation.
TYPED_TEST(IirDirectTest, WholeNumbersAreFilteredExactly) {
  using T = TypeParam;
  using R = RealOf<T>;
  const auto x = Integers<T>(700, 2);
  for (const auto& orders : kOrders) {
    const std::size_t forward = orders.first;  // names that lambdas may capture
    const std::size_t feedback = orders.second;
    SCOPED_TRACE(std::to_string(forward) + ", " + std::to_string(feedback));
    const auto b = Integers<R>(forward + 1, 1, 3);
    std::vector<R> a(feedback + 1);
    a[0] = R{1};
    if (feedback > 0) a[feedback] = R{-1};  // y[n] = .. + y[n - N]
    const auto expected = Define(b, a, x);
    ForEveryTarget([&](std::int64_t) {
      Filter<T> filter(b, a);
      const auto y = filter(x);
      for (std::size_t n = 0; n < x.size(); ++n) {
        for (std::size_t p = 0; p < kParts<T>; ++p) ASSERT_EQ(Part(y[n], p), static_cast<double>(expected[p][n])) << n;
      }
    });
  }
}

TYPED_TEST(IirDirectTest, AgreesWithTheDefinition) {
  using T = TypeParam;
  using R = RealOf<T>;
  const auto x = Noise<T>(900, 3);
  for (const auto& orders : kOrders) {
    const std::size_t forward = orders.first;  // names that lambdas may capture
    const std::size_t feedback = orders.second;
    SCOPED_TRACE(std::to_string(forward) + ", " + std::to_string(feedback));
    const auto taps = StableTaps<R>(forward, feedback, 5);
    const auto expected = Define(taps.first, taps.second, x);
    // Sums of |b| + |a| |y| stay below 2 (M + 2); feedback of less than 1/2 at most doubles an error.
    const double tolerance =
        4 * static_cast<double>(forward + 2) * 0x1p-53 * static_cast<double>(forward + feedback + 4);
    ForEveryTarget([&](std::int64_t) {
      Filter<T> filter(taps.first, taps.second);
      const auto y = filter(x);
      for (std::size_t n = 0; n < x.size(); ++n) {
        for (std::size_t p = 0; p < kParts<T>; ++p) {
          const auto exact = static_cast<double>(expected[p][n]);
          ASSERT_NEAR(Part(y[n], p), exact, tolerance + std::numeric_limits<R>::epsilon() / 2 * std::abs(exact)) << n;
        }
      }
    });
  }
}

TYPED_TEST(IirDirectTest, EveryCutGivesTheSameBits) {
  using T = TypeParam;
  using R = RealOf<T>;
  const auto x = Noise<T>(1500, 4);
  for (const auto& orders : kOrders) {
    const std::size_t forward = orders.first;  // names that lambdas may capture
    const std::size_t feedback = orders.second;
    SCOPED_TRACE(std::to_string(forward) + ", " + std::to_string(feedback));
    const auto taps = StableTaps<R>(forward, feedback, 5);
    std::vector<T> fused;  // of the first instruction set with a fused multiply-add
    ForEveryTarget([&](std::int64_t target) {
      Filter<T> whole(taps.first, taps.second);
      const auto expected = whole(x);
      for (const Cut& cut : kCuts) {
        for (const bool in_place : {false, true}) {
          Filter<T> filter(taps.first, taps.second);
          EXPECT_TRUE(SameBits(Run(filter, x, cut, in_place), expected)) << cut[0] << " in place " << in_place;
        }
      }
      if (target != HWY_AVX2 && target != HWY_AVX3) return;
      if (fused.empty()) fused = expected;
      EXPECT_TRUE(SameBits(fused, expected));
    });
  }
}

double Rms(const std::vector<double>& errors) {
  double sum = 0;
  for (const double e : errors) sum += e * e;
  return std::sqrt(sum / static_cast<double>(errors.size()));
}

// The transposed form in plain arithmetic, as most programs have it.
std::vector<double> Transposed(const Design& design, const std::vector<double>& x) {
  const std::size_t order = design.b.size() - 1;
  std::vector<double> z(order + 1);
  std::vector<double> y;
  for (const double v : x) {
    y.push_back(z[0] + design.b[0] * v);
    for (std::size_t k = 0; k < order; ++k) z[k] = z[k + 1] + v * design.b[k + 1] - y.back() * design.a[k + 1];
  }
  return y;
}

TEST(IirDirect, RoundingErrorsStayBelowThoseOfTheTransposedForm) {
  const auto x = Noise<double>(40000, 6);  // the errors of narrow filters change slowly
  for (const Design& design : Designs()) {
    const auto exact = Define(design.b, design.a, x)[0];
    const auto errors = [&](const std::vector<double>& y) {
      std::vector<double> e;
      for (std::size_t n = 0; n < y.size(); ++n) {
        e.push_back(static_cast<double>(static_cast<long double>(y[n]) - exact[n]));
      }
      return Rms(e);
    };
    const double plain = errors(Transposed(design, x));
    ForEveryTarget([&](std::int64_t target) {
      Filter<double> filter(design.b, design.a);
      const bool fused = target == HWY_AVX2 || target == HWY_AVX3;
      EXPECT_LE(errors(filter(x)), (fused ? 1.0 : 1.2) * plain) << design.name;
    });
  }
}

// Single precision data lose their last rounding, whatever the filter.
TEST(IirDirect, SinglePrecisionIsComputedInDouble) {
  const auto x = Noise<float>(8000, 7);
  for (const Design& design : Designs()) {
    const std::vector<float> b(design.b.begin(), design.b.end());
    const std::vector<float> a(design.a.begin(), design.a.end());
    const auto exact = Define(b, a, x)[0];
    Filter<float> filter(b, a);
    const auto y = filter(x);
    double gain = 0;
    for (const long double v : exact) gain = std::max(gain, static_cast<double>(std::abs(v)));
    if (gain > 1e3) continue;  // the single precision taps have lost the poles
    for (std::size_t n = 0; n < x.size(); ++n) {
      const auto value = static_cast<double>(exact[n]);
      ASSERT_NEAR(static_cast<double>(y[n]), value, 0x1p-24 * std::abs(value) + 1e-9 * gain) << design.name << " " << n;
    }
  }
}

template <Element T>
bool IsFinite(const T& x) {
  return std::isfinite(Part(x, 0)) && std::isfinite(Part(x, kParts<T> - 1));
}

TYPED_TEST(IirDirectTest, NanAndInfinityReachNoEarlierOutput) {
  using T = TypeParam;
  using R = RealOf<T>;
  const auto x = Noise<T>(400, 8);
  for (const auto& orders : kOrders) {
    const std::size_t forward = orders.first;  // names that lambdas may capture
    const std::size_t feedback = orders.second;
    SCOPED_TRACE(std::to_string(forward) + ", " + std::to_string(feedback));
    const auto taps = StableTaps<R>(forward, feedback, 9);
    ForEveryTarget([&](std::int64_t) {
      Filter<T> clean_filter(taps.first, taps.second);
      const auto clean = clean_filter(x);
      for (const std::size_t place : {0U, 1U, 7U, 8U, 130U, 131U, 255U, 256U, 300U}) {
        for (const R bad : {std::numeric_limits<R>::quiet_NaN(), -std::numeric_limits<R>::infinity()}) {
          auto dirty = x;
          dirty[place] = Make<T>(static_cast<double>(bad), 0);
          for (const Cut& cut : {Cut{1 << 20}, Cut{0}, Cut{5, 64, 3, 0, 17}}) {
            Filter<T> filter(taps.first, taps.second);
            const auto y = Run(filter, dirty, cut, false);
            for (std::size_t n = 0; n < x.size(); ++n) {
              const bool reached = feedback > 0 ? n >= place : n >= place && n <= place + forward;
              ASSERT_EQ(IsFinite(y[n]), !reached) << place << " " << n;
              if (reached) continue;
              ASSERT_EQ(std::memcmp(&y[n], &clean[n], sizeof(T)), 0) << place << " " << n;
            }
            // The correction of rounding errors does not make an infinity a NaN.
            ASSERT_EQ(std::isinf(Part(y[place], 0)), std::isinf(bad)) << place;
          }
        }
      }
    });
  }
}

// After the signal every filter falls silent, by way of normal numbers only, and leaves the environment alone.
TYPED_TEST(IirDirectTest, SilenceFollowsTheSignal) {
  using T = TypeParam;
  using R = RealOf<T>;
  const std::vector<std::pair<std::vector<R>, std::vector<R>>> filters{
      {{R{1}}, {R{1}, static_cast<R>(-0.99)}},
      {{R{1}, R{2}, R{1}}, {R{1}, static_cast<R>(-1.98), static_cast<R>(0.9802)}},
      {{R{1}}, {R{1}, 0, 0, static_cast<R>(0.97)}},
      {{R{1}}, {R{1}, 0, 0, 0, 0, 0, 0, 0, 0, static_cast<R>(0.97)}},
      {{R{1}}, {R{1}, static_cast<R>(0.01), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, static_cast<R>(0.9)}}};
  for (const auto& taps : filters) {
    const std::vector<R>& b = taps.first;
    const std::vector<R>& a = taps.second;
    ForEveryTarget([&](std::int64_t) {
      const int rounding = std::fegetround();
      Filter<T> filter(b, a);
      filter(Noise<T>(300, 10));
      const std::vector<T> zeros(1000);
      bool silent = false;
      for (int block = 0; block < 500 && !silent; ++block) {
        const auto y = block % 2 == 0 ? filter(zeros) : Run(filter, zeros, {0}, false);
        silent = true;
        for (const T& v : y) {
          for (std::size_t p = 0; p < kParts<T>; ++p) {
            ASSERT_NE(std::fpclassify(static_cast<R>(Part(v, p))), FP_SUBNORMAL) << Part(v, p);
            silent = silent && Part(v, p) == 0;
          }
        }
      }
      EXPECT_TRUE(silent);
      EXPECT_EQ(std::fegetround(), rounding);
      // Subnormal numbers are nothing to a filter.
      const T tiny = Make<T>(std::numeric_limits<double>::denorm_min(), -std::numeric_limits<double>::denorm_min());
      EXPECT_EQ(Part(filter(tiny), 0), 0);
    });
  }
}

TYPED_TEST(IirDirectTest, NothingOutsideTheBlockIsTouched) {
  using T = TypeParam;
  using R = RealOf<T>;
  constexpr std::size_t kGuard = 70;
  const T guard = Make<T>(-77, 99);
  const std::vector<R> b{R{1}, R{2}, R{3}};
  const std::vector<R> a{R{1}, 0, 0, R{-1}};
  ForEveryTarget([&](std::int64_t) {
    for (std::size_t length = 0; length < 300; length += length < 70 ? 1 : 13) {
      const auto x = Integers<T>(length, 12);
      const auto expected = Define(b, a, x);
      const std::size_t start = kGuard + length % 17;
      // The source ends with its allocation: an address checker sees any read beyond it.
      std::vector<T> y(start + length + kGuard, guard);
      Filter<T> filter(b, a);
      filter(x.data(), y.data() + start, length);
      for (std::size_t i = 0; i < y.size(); ++i) {
        const bool inside = i >= start && i < start + length;
        ASSERT_EQ(Part(y[i], 0), inside ? static_cast<double>(expected[0][i - start]) : -77) << length << " " << i;
      }
    }
  });
}

TYPED_TEST(IirDirectTest, RefusedCallsReportWhyAndChangeNothing) {
  using T = TypeParam;
  using R = RealOf<T>;
  const std::vector<R> sum{R{1}, R{0}, R{1}, R{-1}};
  const std::vector<R> zero{R{1}, R{0}, R{0}, R{1}};
  std::vector<std::byte> memory(IirDirectStateSize<T>(1));
  std::vector<std::byte> other(IirDirectStateSize<T>(1));
  IirHandle state;
  EXPECT_EQ(IirDirectCreate<T>(sum.data(), -1, memory.data(), state), Status::BadSize);
  EXPECT_EQ(IirDirectCreate<T>(nullptr, 1, memory.data(), state), Status::NullPointer);
  EXPECT_EQ(IirDirectCreate<T>(sum.data(), 1, nullptr, state), Status::NullPointer);
  EXPECT_EQ(IirDirectCreate<T>(zero.data(), 1, memory.data(), state), Status::DivisionByZero);
  EXPECT_EQ(state, nullptr);
  ASSERT_EQ(IirDirectCreate<T>(sum.data(), 1, memory.data(), state), Status::Ok);
  T y = IirOne(*state, Make<T>(1, 0));
  EXPECT_EQ(IirDirectCreate<T>(zero.data(), 1, other.data(), state), Status::DivisionByZero);
  EXPECT_EQ(IirFilter(*state, &y, &y, -1), Status::BadSize);
  EXPECT_EQ(IirFilter<T>(*state, nullptr, &y, 1), Status::NullPointer);
  EXPECT_EQ(IirFilter<T>(*state, &y, nullptr, 1), Status::NullPointer);
  EXPECT_EQ(IirFilter<T>(*state, nullptr, nullptr, 0), Status::Ok);
  EXPECT_EQ(Part(y, 0), 1);
  EXPECT_EQ(Part(IirOne(*state, Make<T>(2, 0)), 0), 3);
  EXPECT_GT(IirDirectStateSize<T>(std::numeric_limits<std::int32_t>::max() / 2), std::size_t{1} << 34);
}

}  // namespace
}  // namespace passband::primitives
