// Cascades of second-order sections against exact and extended arithmetic, on every instruction set of this machine.
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
#include "passband/primitives/iir_sections_internal.h"

namespace passband::primitives {
namespace {

using detail::IirSectionsState;

struct Cascade {
  std::string name;
  int designed;
  std::vector<double> taps, x, y;
};
const std::vector<Cascade>& Cascades() {
  static const std::vector<Cascade> cascades{
#include "tests/primitives/iir_sections_reference.inc"
  };
  return cascades;
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

template <class R>
std::vector<R> In(const std::vector<double>& taps) {
  return {taps.begin(), taps.end()};
}

// Poles at radii up to 0.95, zeros near the unit circle, gains near 1; a0 = 2 in every other section.
template <class R>
std::vector<R> RandomTaps(std::size_t sections, std::uint32_t seed) {
  const auto random = Noise<double>(3 * sections, seed);
  std::vector<R> taps;
  for (std::size_t k = 0; k < sections; ++k) {
    const double radius = 0.7 + 0.25 * random[3 * k];
    const double a0 = k % 2 == 0 ? 1 : 2;
    const double a1 = -2 * radius * random[3 * k + 1];
    const double b0 = 0.5;
    for (const double v : {b0, random[3 * k + 2] * b0, b0, a0, a0 * a1, a0 * radius * radius}) {
      taps.push_back(static_cast<R>(v));
    }
  }
  return taps;
}

template <Element T>
class Filter {
 public:
  explicit Filter(const std::vector<RealOf<T>>& taps) {
    const auto sections = static_cast<std::int32_t>(taps.size() / 6);
    memory_.assign(IirSectionsStateSize<T>(sections) + 2 * kGuard, std::byte{0x5a});
    EXPECT_EQ(IirSectionsCreate<T>(taps.data(), sections, memory_.data() + kGuard, state_), Status::Ok);
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
  const IirSectionsState<T>& State() const { return static_cast<const IirSectionsState<T>&>(*state_); }

 private:
  static constexpr std::ptrdiff_t kGuard = 24;  // an odd place for the state
  std::vector<std::byte> memory_;
  IirHandle state_;
};

// The plain loop in arithmetic F, one part of the data after the other.
template <class F, Element T, class R>
std::vector<std::vector<F>> Define(const std::vector<R>& taps, const std::vector<T>& x) {
  std::vector<std::vector<F>> y(kParts<T>);
  for (std::size_t part = 0; part < kParts<T>; ++part) {
    for (const T& v : x) y[part].push_back(static_cast<F>(Part(v, part)));
    for (std::size_t k = 0; k < taps.size(); k += 6) {
      const auto tap = [&](std::size_t i) { return static_cast<F>(taps[k + i]) / static_cast<F>(taps[k + 3]); };
      const F b0 = tap(0), b1 = tap(1), b2 = tap(2), a1 = tap(4), a2 = tap(5);
      F z1 = 0;
      F z2 = 0;
      for (F& v : y[part]) {
        const F out = b0 * v + z1;
        z1 = (b1 * v - a1 * out) + z2;
        z2 = b2 * v - a2 * out;
        v = out;
      }
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
                             {3, 0, 0, 100, 2, 0, 33, 31, 0, 1029, 48, 0, 23, 0, 300}};

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

// Any two NaN count as equal.
template <Element T>
void ExpectSame(const std::vector<T>& x, const std::vector<T>& y, const std::string& what) {
  ASSERT_EQ(x.size(), y.size());
  for (std::size_t n = 0; n < x.size(); ++n) {
    for (std::size_t p = 0; p < kParts<T>; ++p) {
      const double u = Part(x[n], p);
      const double v = Part(y[n], p);
      ASSERT_TRUE((std::isnan(u) && std::isnan(v)) || std::memcmp(&u, &v, sizeof u) == 0) << what << ", " << n;
    }
  }
}

// Calls `test` with every instruction set in turn.
template <class Test>
void ForEveryTarget(const Test& test) {
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    SCOPED_TRACE(hwy::TargetName(target));
    hwy::SetSupportedTargetsForTest(target);
    test();
  }
  hwy::SetSupportedTargetsForTest(0);
}

const std::vector<std::size_t> kSectionCounts{1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 25, 33, 70};

template <class T>
class IirSectionsTest : public testing::Test {};
struct TypeNames {
  template <class T>
  static std::string GetName(int) {
    return std::string(IsDoublePrecision(PrecisionOf<T>) ? "Double" : "Single") + (IsComplex<T> ? "Complex" : "Real");
  }
};
using Elements = testing::Types<float, double, TSCplx, TCplx>;
TYPED_TEST_SUITE(IirSectionsTest, Elements, TypeNames);

TEST(IirSections, OutputsAreThoseOfExactArithmetic) {
  std::size_t rows = 0;
  for (const Cascade& cascade : Cascades()) {
    if (cascade.x.empty()) continue;
    ++rows;
    ForEveryTarget([&] {
      Filter<double> filter(cascade.taps);
      const auto y = filter(cascade.x);
      // Every section adds some ten roundings of numbers below 8, hardly amplified by the filters of these rows.
      const double tolerance = 0x1p-53 * 8 * static_cast<double>(cascade.taps.size() / 6);
      for (std::size_t n = 0; n < y.size(); ++n) ASSERT_NEAR(y[n], cascade.y[n], tolerance) << cascade.name << " " << n;
    });
  }
  EXPECT_GT(rows, 5U);
}

TYPED_TEST(IirSectionsTest, AgreesWithTheDefinition) {
  using T = TypeParam;
  using R = RealOf<T>;
  const auto x = Noise<T>(2100, 3);
  for (const std::size_t sections : kSectionCounts) {
    SCOPED_TRACE(sections);
    const auto taps = RandomTaps<R>(sections, 5);
    const auto expected = Define<long double>(taps, x);
    const auto plain = Define<double>(taps, x);
    double error = 0;
    double gain = 0;
    for (std::size_t n = 0; n < x.size(); ++n) {
      for (std::size_t p = 0; p < kParts<T>; ++p) {
        error = std::max(error, std::abs(static_cast<double>(plain[p][n] - expected[p][n])));
        gain = std::max(gain, static_cast<double>(std::abs(expected[p][n])));
      }
    }
    const double tolerance = 4 * error + 0x1p-52 * gain;  // within the errors of a plain loop in double
    ForEveryTarget([&] {
      Filter<T> filter(taps);
      const auto y = filter(x);
      for (std::size_t n = 0; n < x.size(); ++n) {
        for (std::size_t p = 0; p < kParts<T>; ++p) {
          const auto exact = static_cast<double>(expected[p][n]);
          const double rounding = std::numeric_limits<R>::epsilon() / 2 * std::abs(exact);
          ASSERT_NEAR(Part(y[n], p), exact, tolerance + rounding) << n;
        }
      }
    });
  }
}

TYPED_TEST(IirSectionsTest, EveryCutAndEveryInstructionSetGiveTheSameBits) {
  using T = TypeParam;
  using R = RealOf<T>;
  const auto noise = Noise<T>(2500, 4);
  auto hostile = noise;
  constexpr R kLarge = std::numeric_limits<R>::max() / 16;
  hostile[200] = Make<T>(-0.0, -0.0);
  hostile[300] = Make<T>(kLarge, -kLarge);
  hostile[901] = Make<T>(std::numeric_limits<R>::infinity(), 1);
  for (const std::size_t sections : kSectionCounts) {
    SCOPED_TRACE(sections);
    const auto taps = RandomTaps<R>(sections, 5);
    for (const auto& x : {noise, hostile}) {
      std::vector<T> expected;
      ForEveryTarget([&] {
        for (const Cut& cut : kCuts) {
          for (const bool in_place : {false, true}) {
            Filter<T> filter(taps);
            const auto y = Run(filter, x, cut, in_place);
            if (expected.empty()) expected = y;
            ExpectSame(y, expected, std::to_string(cut[0]) + " in place " + std::to_string(in_place));
          }
        }
      });
    }
  }
}

double Rms(const std::vector<long double>& exact, const auto& y) {
  double sum = 0;
  for (std::size_t n = 0; n < exact.size(); ++n) {
    const auto e = static_cast<double>(static_cast<long double>(y[n]) - exact[n]);
    sum += e * e;
  }
  return std::sqrt(sum / static_cast<double>(exact.size()));
}

TEST(IirSections, RoundingErrorsStayWithinThoseOfThePlainLoop) {
  const auto x = Noise<double>(40000, 6);  // the errors of narrow filters change slowly
  std::size_t grouped = 0;
  for (const Cascade& cascade : Cascades()) {
    if (!cascade.x.empty()) continue;
    const auto exact = Define<long double>(cascade.taps, x)[0];
    const double plain = Rms(exact, Define<double>(cascade.taps, x)[0]);
    Filter<double> filter(cascade.taps);
    EXPECT_LE(Rms(exact, filter(x)), 1.1 * plain) << cascade.name;
    grouped += filter.State().last_states > 0;
  }
  EXPECT_GT(grouped, Cascades().size() / 2);
}

// Single precision data lose their last rounding, and nothing else, where the plain loop loses digits.
TEST(IirSections, SinglePrecisionIsComputedInDouble) {
  const auto x = Noise<float>(20000, 7);
  for (const Cascade& cascade : Cascades()) {
    const auto taps = In<float>(cascade.taps);
    const auto exact = Define<long double>(taps, x)[0];
    double power = 0;
    double largest = 0;
    for (const long double v : exact) {
      power += static_cast<double>(v * v) / static_cast<double>(exact.size());
      largest = std::max(largest, static_cast<double>(std::abs(v)));
    }
    if (!(largest < 1e4)) continue;  // taps in single precision have lost the poles
    Filter<float> filter(taps);
    EXPECT_LE(Rms(exact, filter(x)), 0x1p-24 * std::sqrt(power)) << cascade.name;
  }
}

TYPED_TEST(IirSectionsTest, NanAndInfinityReachNoEarlierOutput) {
  using T = TypeParam;
  using R = RealOf<T>;
  const auto x = Noise<T>(60, 8);
  for (const std::size_t sections : std::vector<std::size_t>{1, 2, 3, 4, 6, 8, 9, 25}) {
    SCOPED_TRACE(sections);
    const auto taps = RandomTaps<R>(sections, 9);
    ForEveryTarget([&] {
      Filter<T> clean_filter(taps);
      const auto clean = clean_filter(x);
      for (std::size_t place = 0; place < 20; ++place) {
        for (const R bad : {std::numeric_limits<R>::quiet_NaN(), -std::numeric_limits<R>::infinity()}) {
          auto dirty = x;
          dirty[place] = Make<T>(static_cast<double>(bad), Part(x[place], kParts<T> - 1));
          for (const Cut& cut : {Cut{1 << 20}, Cut{0}, Cut{5, 16, 3, 0, 17}}) {
            Filter<T> filter(taps);
            const auto y = Run(filter, dirty, cut, false);
            ASSERT_EQ(std::memcmp(y.data(), clean.data(), place * sizeof(T)), 0) << place;
            ASSERT_EQ(std::isinf(Part(y[place], 0)), std::isinf(bad)) << place;
            for (std::size_t n = place; n < x.size(); ++n) {
              ASSERT_FALSE(std::isfinite(Part(y[n], 0))) << place << " " << n;
              // The other part of complex data is another stream.
              if (IsComplex<T>) {
                ASSERT_EQ(Part(y[n], kParts<T> - 1), Part(clean[n], kParts<T> - 1)) << place << " " << n;
              }
            }
          }
        }
      }
    });
  }
}

// What a filter keeps between two calls.
template <Element T>
std::vector<double> Kept(const IirSectionsState<T>& state) {
  std::vector<double> kept;
  const auto take = [&](const double* first, std::size_t count) { kept.insert(kept.end(), first, first + count); };
  const auto take_bundle = [&](const auto& bundle) {
    for (const auto& sums : bundle.sums) {
      take(sums.states, std::size(sums.states));
      take(sums.past, std::size(sums.past));
    }
  };
  if (state.last_states == 0) {
    take(state.lanes.z1, 2 * kParts<T> * state.lanes.length);  // and z2
  } else {
    for (std::size_t i = 0; i < state.bundle_count; ++i) take_bundle(state.bundles[i]);
    if (state.last_states == 2) take_bundle(*static_cast<const detail::IirBundleOf<2, kParts<T>>*>(state.last));
    if (state.last_states == 4) take_bundle(*static_cast<const detail::IirBundleOf<4, kParts<T>>*>(state.last));
    if (state.last_states == 8) take_bundle(*static_cast<const detail::IirBundleOf<8, kParts<T>>*>(state.last));
  }
  return kept;
}

// After the signal every filter falls silent, by way of normal numbers only, and leaves the environment alone.
TYPED_TEST(IirSectionsTest, SilenceFollowsTheSignal) {
  using T = TypeParam;
  using R = RealOf<T>;
  for (const std::size_t sections : std::vector<std::size_t>{1, 2, 4, 7, 9, 25}) {
    std::vector<R> taps;
    for (std::size_t k = 0; k < sections; ++k) {  // radius 0.99, all angles
      const double a1 = -1.98 * std::cos(3.1 * static_cast<double>(k) / static_cast<double>(sections));
      for (const double v : {0.1, 0.05, 0.02, 1.0, a1, 0.9801}) taps.push_back(static_cast<R>(v));
    }
    ForEveryTarget([&] {
      const int rounding = std::fegetround();
      Filter<T> filter(taps);
      filter(Noise<T>(300, 10));
      const std::vector<T> zeros(1000);
      bool silent = false;
      for (int block = 0; block < 250 && !silent; ++block) {
        const auto y = block % 2 == 0 ? filter(zeros) : Run(filter, zeros, {0}, false);
        silent = true;
        for (const T& v : y) {
          for (std::size_t p = 0; p < kParts<T>; ++p) {
            ASSERT_NE(std::fpclassify(static_cast<R>(Part(v, p))), FP_SUBNORMAL) << Part(v, p);
            silent = silent && Part(v, p) == 0;
          }
        }
        for (const double v : Kept(filter.State())) {
          ASSERT_NE(std::fpclassify(v), FP_SUBNORMAL) << sections << " sections, " << v;
          silent = silent && v == 0;
        }
      }
      EXPECT_TRUE(silent) << sections;
      EXPECT_EQ(std::fegetround(), rounding);
      volatile double smallest = std::numeric_limits<double>::min();
      EXPECT_GT(smallest / 4, 0);  // the processor still makes subnormal numbers
      const T tiny = Make<T>(std::numeric_limits<double>::denorm_min(), -std::numeric_limits<double>::denorm_min());
      EXPECT_EQ(Part(filter(tiny), 0), 0);
    });
  }
}

// Filters for which the grouped form is not made, or at its limits, behave as the plain loop does.
TEST(IirSections, UnstableAndStrangeFiltersDoWhatTheirTapsSay) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::vector<std::vector<double>> filters{{1, 0, 0, 1, 0, 0},     // identity
                                                 {0, 0, 1, 1, 0, 0},     // delay
                                                 {0, 0, 0, 1, 0, 0},     // nothing
                                                 {1, 0, 0, 1, -1, 0},    // integrator
                                                 {1, 0, 0, 1, -2, 1},    // twice
                                                 {1, 0, 0, 1, 0, 1},     // oscillator
                                                 {1, 1, 0, 1, -1.5, 0},  // grows
                                                 {1, 0, 0, 1, -3, 0},    // grows fast
                                                 {1, 0, 0, 1, 0, 1e6},   // and faster
                                                 {1e-200, 0, 0, 1, 0, 0.5, 1e200, 0, 0, 1, 0.5, 0.25},
                                                 {1, 0, 0, 1, kNan, 0},
                                                 {kInfinity, 0, 0, 1, 0, 0},
                                                 {1, 0, 0, kInfinity, 0, 0}};
  std::vector<double> x = Noise<double>(40, 11);
  for (const auto& taps : filters) {
    SCOPED_TRACE(testing::PrintToString(taps));
    const auto expected = Define<double>(taps, x)[0];
    ForEveryTarget([&] {
      Filter<double> filter(taps);
      const auto y = filter(x);
      double largest = 0;
      for (std::size_t n = 0; n < x.size(); ++n) {
        if (std::isnan(expected[n])) {
          ASSERT_TRUE(std::isnan(y[n])) << n;
          continue;
        }
        if (std::isinf(expected[n])) {
          ASSERT_EQ(y[n], expected[n]) << n;
          continue;
        }
        largest = std::max(largest, std::abs(expected[n]));
        ASSERT_NEAR(y[n], expected[n], 0x1p-46 * largest) << n;
      }
    });
  }
}

TYPED_TEST(IirSectionsTest, NothingOutsideTheBlockIsTouched) {
  using T = TypeParam;
  using R = RealOf<T>;
  constexpr std::size_t kGuard = 70;
  const T guard = Make<T>(-77, 99);
  for (const std::size_t sections : std::vector<std::size_t>{1, 4, 9}) {
    const auto taps = RandomTaps<R>(sections, 13);
    const auto x = Noise<T>(300, 12);
    ForEveryTarget([&] {
      Filter<T> whole(taps);
      const auto expected = whole(x);
      for (std::size_t length = 0; length < 300; length += length < 70 ? 1 : 13) {
        const std::size_t start = kGuard + length % 17;
        // The source ends with its allocation: an address checker sees any read beyond it.
        const std::vector<T> input(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(length));
        std::vector<T> y(start + length + kGuard, guard);
        Filter<T> filter(taps);
        filter(input.data(), y.data() + start, length);
        for (std::size_t i = 0; i < y.size(); ++i) {
          const bool inside = i >= start && i < start + length;
          ASSERT_EQ(Part(y[i], 0), inside ? Part(expected[i - start], 0) : -77) << length << " " << i;
        }
      }
    });
  }
}

TYPED_TEST(IirSectionsTest, RefusedCallsReportWhyAndChangeNothing) {
  using T = TypeParam;
  using R = RealOf<T>;
  const std::vector<R> sum{R{1}, R{0}, R{0}, R{1}, R{-1}, R{0}};
  const std::vector<R> zero{R{1}, R{0}, R{0}, R{0}, R{1}, R{0}};
  std::vector<R> second = sum;
  second.insert(second.end(), zero.begin(), zero.end());
  std::vector<std::byte> memory(IirSectionsStateSize<T>(2));
  std::vector<std::byte> other(IirSectionsStateSize<T>(2));
  IirHandle state;
  EXPECT_EQ(IirSectionsCreate<T>(sum.data(), 0, memory.data(), state), Status::BadSize);
  EXPECT_EQ(IirSectionsCreate<T>(sum.data(), -1, memory.data(), state), Status::BadSize);
  EXPECT_EQ(IirSectionsCreate<T>(nullptr, 1, memory.data(), state), Status::NullPointer);
  EXPECT_EQ(IirSectionsCreate<T>(sum.data(), 1, nullptr, state), Status::NullPointer);
  EXPECT_EQ(IirSectionsCreate<T>(second.data(), 2, memory.data(), state), Status::DivisionByZero);
  EXPECT_EQ(state, nullptr);
  ASSERT_EQ(IirSectionsCreate<T>(sum.data(), 1, memory.data(), state), Status::Ok);
  T y = IirOne(*state, Make<T>(1, 0));
  EXPECT_EQ(IirSectionsCreate<T>(zero.data(), 1, other.data(), state), Status::DivisionByZero);
  EXPECT_EQ(IirFilter(*state, &y, &y, -1), Status::BadSize);
  EXPECT_EQ(IirFilter<T>(*state, nullptr, &y, 1), Status::NullPointer);
  EXPECT_EQ(IirFilter<T>(*state, &y, nullptr, 1), Status::NullPointer);
  EXPECT_EQ(IirFilter<T>(*state, nullptr, nullptr, 0), Status::Ok);
  EXPECT_NEAR(Part(y, 0), 1, 1e-15);
  EXPECT_NEAR(Part(IirOne(*state, Make<T>(2, 0)), 0), 3, 1e-14);
  EXPECT_GT(IirSectionsStateSize<T>(std::numeric_limits<std::int32_t>::max()), std::size_t{1} << 35);
}

}  // namespace
}  // namespace passband::primitives
