// The multi-rate FIR filter against its definition: zeros put between the inputs, filtering at the high rate, samples
// thrown away.
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <numeric>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "passband/primitives/fir_multirate_internal.h"
#include "passband/primitives/fir_state_internal.h"

namespace passband::primitives {
namespace {

struct Case {
  std::int32_t up, up_phase, down, down_phase, taps, iterations;
};

std::ostream& operator<<(std::ostream& out, const Case& c) {
  return out << "up " << c.up << " at " << c.up_phase << ", down " << c.down << " at " << c.down_phase << ", " << c.taps
             << " taps, " << c.iterations << " iterations";
}

// Small factors with all their phases, then one case for each way in which factors and taps relate.
std::vector<Case> Cases() {
  std::vector<Case> cases;
  for (const auto& [up, down] : {std::pair{1, 1}, {2, 1}, {1, 2}, {3, 2}, {2, 3}, {2, 2}, {4, 6}}) {
    for (std::int32_t u = 0; u < up; ++u) {
      for (std::int32_t d = 0; d < down; ++d) {
        for (const std::int32_t taps : {1, 2, 5, 40, 67}) cases.push_back({up, u, down, d, taps, 60});
      }
    }
  }
  const Case more[] = {
      {1, 0, 1, 0, 700, 900},       // several segments
      {8, 0, 1, 0, 256, 150},       // interpolation
      {8, 7, 1, 0, 19, 80},         //
      {1, 0, 8, 0, 256, 150},       // decimation, windows that overlap much
      {1, 0, 8, 7, 255, 150},       //
      {1, 0, 32, 5, 64, 40},        // windows that overlap little
      {1, 0, 100, 99, 37, 20},      // inputs that no output needs
      {1, 0, 100, 0, 1000, 40},     //
      {3, 1, 100, 42, 200, 20},     //
      {160, 3, 147, 100, 5120, 4},  // coprime, long
      {147, 146, 160, 0, 4704, 4},  //
      {160, 0, 147, 146, 50, 4},    // fewer taps than phases
      {17, 16, 16, 3, 300, 40},     // rows that a period does not fill
      {441, 0, 320, 0, 2000, 3},    //
      {1000, 999, 1, 0, 300, 3},    // few taps, most outputs zero
      {1000, 0, 1, 0, 100, 3},      //
      {1000, 1, 999, 998, 90, 3},   //
      {12, 5, 18, 11, 400, 50},     // common divisor 6
      {12, 5, 18, 4, 3, 50},        // whose phase has no tap
      {1000, 7, 1000, 3, 4500, 2},  // single-rate once reduced
      {1000, 3, 1000, 7, 4500, 2},  //
      {1 << 18, 5, (1 << 18) + 3, 9, 7, 1},
  };
  cases.insert(cases.end(), std::begin(more), std::end(more));
  return cases;
}

template <Element T>
T Make(double re, double im) {
  if constexpr (IsComplex<T>) {
    return T(static_cast<RealOf<T>>(re), static_cast<RealOf<T>>(im));
  } else {
    return static_cast<T>(re);
  }
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

template <Element T>
std::vector<T> Noise(std::size_t count, unsigned seed) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<double> uniform(-1, 1);
  std::vector<T> x(count);
  for (T& v : x) {
    const double re = uniform(engine);
    v = Make<T>(re, uniform(engine));
  }
  return x;
}

template <Element T>
class Filter {
 public:
  Filter(const Case& c, const std::vector<T>& taps)
      : state_(NewMultiRateFir<T>(taps.data(), c.taps, c.up, c.up_phase, c.down, c.down_phase)) {}

  void Run(const T* src, T* dst, std::int32_t iterations) {
    static_cast<FirStateOf<T>&>(*state_).Filter(src, dst, iterations);
  }

 private:
  std::unique_ptr<FirState> state_;
};

template <Element T>
std::vector<T> Inputs(const Case& c) {
  return Noise<T>(static_cast<std::size_t>(c.iterations) * static_cast<std::size_t>(c.down), 2);
}

template <Element T>
std::vector<T> Taps(const Case& c) {
  return Noise<T>(static_cast<std::size_t>(c.taps), 1);
}

template <Element T>
std::vector<T> RunWhole(const Case& c, const std::vector<T>& taps, const std::vector<T>& x) {
  std::vector<T> y(static_cast<std::size_t>(c.iterations) * static_cast<std::size_t>(c.up));
  Filter<T>(c, taps).Run(x.data(), y.data(), c.iterations);
  return y;
}

template <Element T>
bool SameBits(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

// Calls visit(output, tap, input) for all products of the definition.
template <class Visit>
void ForEachProduct(const Case& c, const Visit& visit) {
  for (std::int64_t j = 0; j < std::int64_t{c.iterations} * c.up; ++j) {
    const std::int64_t m = j * c.down + c.down_phase;
    for (std::int64_t k = 0; k < c.taps && k <= m; ++k) {
      if ((m - k) % c.up != c.up_phase) continue;  // a zero that was put in
      visit(static_cast<std::size_t>(j), static_cast<std::size_t>(k), static_cast<std::size_t>((m - k) / c.up));
    }
  }
}

template <class T>
class FirMultiRateTest : public testing::Test {
 protected:
  static constexpr double kEpsilon = std::numeric_limits<RealOf<T>>::epsilon();

  // Every output within the rounding of a sum in any order: u (n + 1) sum |h| |x|, twice that for complex products.
  static void ExpectNearDefinition(const Case& c) {
    const auto taps = Taps<T>(c);
    const auto x = Inputs<T>(c);
    const auto y = RunWhole(c, taps, x);
    std::vector<Wide> expected(y.size());
    std::vector<double> magnitude(y.size()), terms(y.size());
    ForEachProduct(c, [&](std::size_t j, std::size_t k, std::size_t i) {
      expected[j] += Widen(taps[k]) * Widen(x[i]);
      magnitude[j] += static_cast<double>(std::abs(Widen(taps[k])) * std::abs(Widen(x[i])));
      terms[j] += IsComplex<T> ? 2 : 1;
    });
    for (std::size_t j = 0; j < y.size(); ++j) {
      const double tolerance = kEpsilon / 2 * (terms[j] + 1) * magnitude[j] * (IsComplex<T> ? 2 : 1);
      ASSERT_LE(std::abs(Widen(y[j]) - expected[j]), tolerance) << c << ", output " << j;
    }
  }
};

class TypeNames {
 public:
  template <class T>
  static std::string GetName(int) {
    return std::string(std::is_same_v<RealOf<T>, double> ? "Double" : "Single") + (IsComplex<T> ? "Complex" : "Real");
  }
};
using ElementTypes = testing::Types<float, double, TSCplx, TCplx>;
TYPED_TEST_SUITE(FirMultiRateTest, ElementTypes, TypeNames);

class EveryTarget {
 public:
  ~EveryTarget() { hwy::SetSupportedTargetsForTest(0); }

  template <class Body>
  void Run(const Body& body) const {
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
      hwy::SetSupportedTargetsForTest(target);
      SCOPED_TRACE(hwy::TargetName(target));
      body(target);
    }
  }
};

TYPED_TEST(FirMultiRateTest, FollowsTheDefinitionOnEveryInstructionSet) {
  EveryTarget().Run([](std::int64_t) {
    for (const Case& c : Cases()) TestFixture::ExpectNearDefinition(c);
  });
}

TYPED_TEST(FirMultiRateTest, TheCasesTakeBothForms) {
  int banks = 0, dots = 0;
  for (const Case& c : Cases()) {
    const auto rates =
        detail::ReduceRateChange(Taps<TypeParam>(c).data(), c.taps, c.up, c.up_phase, c.down, c.down_phase);
    ++(detail::BankIsBetter(rates) ? banks : dots);
  }
  EXPECT_GT(banks, 10);
  EXPECT_GT(dots, 10);
}

TYPED_TEST(FirMultiRateTest, TargetsWithFusedMultiplyAddGiveTheSameBits) {
  std::vector<std::vector<TypeParam>> first;
  EveryTarget().Run([&](std::int64_t target) {
    if (target != HWY_AVX2 && target != HWY_AVX3) return;
    std::vector<std::vector<TypeParam>> outputs;
    for (const Case& c : Cases()) outputs.push_back(RunWhole(c, Taps<TypeParam>(c), Inputs<TypeParam>(c)));
    if (first.empty()) first = outputs;
    for (std::size_t n = 0; n < outputs.size(); ++n) EXPECT_TRUE(SameBits(outputs[n], first[n])) << Cases()[n];
  });
}

TYPED_TEST(FirMultiRateTest, AnyCutGivesTheSameBits) {
  std::mt19937 engine(3);
  auto cases = Cases();
  for (Case& c : cases) {  // long enough for the inner buffers to move on several times
    c.iterations = std::max(c.iterations, std::min(15000 / c.down, 100000 / c.up));
  }
  for (const Case& c : cases) {
    const auto taps = Taps<TypeParam>(c);
    const auto x = Inputs<TypeParam>(c);
    const auto whole = RunWhole(c, taps, x);
    for (const std::int32_t longest : {1, 3, 50, 2000}) {
      Filter<TypeParam> filter(c, taps);
      std::vector<TypeParam> y(whole.size());
      for (std::int32_t done = 0; done < c.iterations;) {
        const std::int32_t now =
            std::min(c.iterations - done, static_cast<std::int32_t>(engine() % static_cast<unsigned>(longest + 1)));
        filter.Run(x.data() + std::int64_t{done} * c.down, y.data() + std::int64_t{done} * c.up, now);
        done += now;
      }
      ASSERT_TRUE(SameBits(y, whole)) << c << " in calls of up to " << longest;
    }
  }
}

// The bad input stands at the first or last place of the window of some output, or one place beside it.
TYPED_TEST(FirMultiRateTest, NanAndInfinityReachExactlyTheOutputsWhoseWindowsHoldThem) {
  using R = RealOf<TypeParam>;
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN(), kInfinity = std::numeric_limits<double>::infinity();
  std::mt19937 engine(4);
  for (const Case& c : Cases()) {
    const auto taps = Taps<TypeParam>(c);
    auto x = Inputs<TypeParam>(c);
    std::vector<std::pair<std::size_t, std::size_t>> windows(static_cast<std::size_t>(c.iterations) *
                                                             static_cast<std::size_t>(c.up));
    std::ranges::fill(windows, std::pair{x.size(), std::size_t{0}});
    ForEachProduct(c, [&](std::size_t j, std::size_t, std::size_t i) {
      windows[j] = {std::min(windows[j].first, i), std::max(windows[j].second, i)};
    });
    EveryTarget().Run([&](std::int64_t) {
      for (const int place : {0, 1, 2, 3}) {
        const auto [first, last] = windows[engine() % windows.size()];
        const std::size_t at = std::array{first - 1, first, last, last + 1}[static_cast<std::size_t>(place)];
        if (at >= x.size()) continue;
        const double bad = engine() % 2 == 0 ? kNan : kInfinity;
        const TypeParam good = std::exchange(x[at], Make<TypeParam>(bad, bad));
        const auto y = RunWhole(c, taps, x);
        x[at] = good;
        for (std::size_t j = 0; j < y.size(); ++j) {
          const R* parts = reinterpret_cast<const R*>(&y[j]);
          const bool finite =
              std::all_of(parts, parts + detail::kParts<TypeParam>, [](R v) { return std::isfinite(v); });
          const bool reached = windows[j].first <= at && at <= windows[j].second;
          ASSERT_EQ(finite, !reached) << c << ", " << bad << " at " << at << ", output " << j;
        }
      }
    });
  }
}

TYPED_TEST(FirMultiRateTest, WritesItsOutputsAndNothingElse) {
  const auto guard = Make<TypeParam>(-7, -7);
  EveryTarget().Run([guard](std::int64_t) {
    for (const Case& c : Cases()) {
      const auto taps = Taps<TypeParam>(c);
      const auto x = Inputs<TypeParam>(c);
      const auto expected = RunWhole(c, taps, x);
      std::vector<TypeParam> y(expected.size() + 2, guard);  // one off alignment
      Filter<TypeParam>(c, taps).Run(x.data(), y.data() + 1, c.iterations);
      EXPECT_EQ(y.front(), guard) << c;
      EXPECT_EQ(y.back(), guard) << c;
      EXPECT_TRUE(SameBits({y.begin() + 1, y.end() - 1}, expected)) << c;
    }
  });
}

// A plain loop over 255 taps has a largest error of 4 to 6 epsilon of the largest output.
TYPED_TEST(FirMultiRateTest, RoundingStaysFarBelowThatOfAPlainLoop) {
  for (const Case& c : {Case{1, 0, 8, 0, 255, 500},
                        {3, 0, 2, 0, 765, 1000},
                        {1, 0, 2, 0, 4000, 3000},
                        {1, 0, 200, 0, 255, 500},
                        {160, 0, 147, 0, 160 * 255, 5}}) {
    const auto taps = Taps<TypeParam>(c);
    const auto x = Inputs<TypeParam>(c);
    const auto y = RunWhole(c, taps, x);
    std::vector<Wide> expected(y.size());
    ForEachProduct(c,
                   [&](std::size_t j, std::size_t k, std::size_t i) { expected[j] += Widen(taps[k]) * Widen(x[i]); });
    long double error = 0, largest = 0;
    for (std::size_t j = 0; j < y.size(); ++j) {
      error = std::max(error, std::abs(Widen(y[j]) - expected[j]));
      largest = std::max(largest, std::abs(expected[j]));
    }
    EXPECT_LE(error, 3 * TestFixture::kEpsilon * largest) << c;
  }
}

TYPED_TEST(FirMultiRateTest, HugeFactorsWithFewTapsTakeLittleMemory) {
  constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
  for (const Case& c : {Case{kMost, kMost - 1, 1, 0, 5, 0},
                        {1, 0, kMost, kMost - 1, 5, 0},
                        {kMost, 0, kMost - 1, 7, 5, 0},
                        {kMost - 1, kMost - 2, kMost, 0, 5, 0},
                        {kMost, 3, kMost, 0, 5, 0}}) {
    const auto taps = Taps<TypeParam>(c);
    const auto rates = detail::ReduceRateChange(taps.data(), c.taps, c.up, c.up_phase, c.down, c.down_phase);
    ASSERT_FALSE(detail::BankIsBetter(rates)) << c;
    EXPECT_LE(detail::MakeDots(rates).jobs.size(), taps.size()) << c;
    Filter<TypeParam>(c, taps).Run(nullptr, nullptr, 0);
  }
}

// Output j of a period of 2^31 - 1 outputs has phase (j down + offset) mod up; the table lists those below 5.
TYPED_TEST(FirMultiRateTest, IndexesOfHugeFactorsAreExact) {
  constexpr std::int64_t kUp = std::numeric_limits<std::int32_t>::max(), kDown = kUp - 1;
  const auto taps = Noise<TypeParam>(5, 1);
  const auto rates = detail::ReduceRateChange<TypeParam>(taps.data(), 5, kUp, 2, kDown, kDown - 1);
  const auto dots = detail::MakeDots(rates);
  ASSERT_EQ(dots.jobs.size(), 5u);
  for (const detail::DotsJob& job : dots.jobs) {
    const std::int64_t m = job.output * kDown + (kDown - 1);  // at the high rate
    const std::int64_t tap = m - 2 - job.newest * kUp;
    EXPECT_TRUE(tap >= 0 && tap < 5) << job.output;
    EXPECT_TRUE(job.output >= 0 && job.output < kUp);
  }
}

}  // namespace
}  // namespace passband::primitives
