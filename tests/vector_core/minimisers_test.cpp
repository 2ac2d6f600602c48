#include "passband/vector_core/minimisers.h"

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <stdexcept>
#include <vector>

#include "passband/vector_core/pool.h"
#include "tests/test_support.h"

namespace passband {
namespace {

constexpr double kEpsilon = 0x1p-52;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Curve {
  const char* name;
  std::function<double(double)> cost;
  double low;
  double high;
  double place;
  double tolerance;  // of the place
  int most_calls;
};

// Smooth minima to the square root of the machine epsilon, kinks to all digits, both within a few dozen steps.
TEST(MinBrentTest, FindsSmoothMinimaAndKinks) {
  const Curve curves[] = {
      {"parabola", [](double x) { return (x - 1.0 / 3) * (x - 1.0 / 3); }, 0, 1, 1.0 / 3, 1e-8, 15},
      {"cosine", [](double x) { return std::cos(x); }, 0, 6, std::numbers::pi, 5e-8, 40},
      {"flat", [](double x) { return std::pow(x - 1, 4); }, 0, 6, 1, 1e-3, 51},
      {"|x - 1/3|", [](double x) { return std::abs(x - 1.0 / 3); }, 0, 1, 1.0 / 3, 2e-16, 40},
      {"|x^3 - 2|", [](double x) { return std::abs(x * x * x - 2); }, -5, 10, std::cbrt(2.0), 4e-16, 51},
      {"unequal slopes above zero", [](double x) { return 3 + std::max(0.7 - x, 10 * (x - 0.7)); }, 0, 1, 0.7, 1e-15,
       51},
      {"at the lower end", [](double x) { return x; }, 1, 6, 1, 1e-9, 51},
      {"at the upper end", [](double x) { return -x; }, 1, 6, 6, 1e-9, 51},
      {"NaN beside the minimum", [](double x) { return x < 2 ? std::nan("") : std::abs(x - 3); }, 0, 10, 3, 1e-15, 51},
  };
  for (const Curve& curve : curves) {
    int calls = 0;
    double x = 0;
    const auto counted = [&](double at) {
      ++calls;
      EXPECT_TRUE(at > curve.low && at < curve.high) << curve.name;
      return curve.cost(at);
    };
    const double cost = MinBrent(counted, curve.low, curve.high, x, 50, kEpsilon);
    EXPECT_NEAR(x, curve.place, curve.tolerance) << curve.name;
    EXPECT_LE(calls, curve.most_calls) << curve.name;
    EXPECT_EQ(cost, curve.cost(x)) << curve.name;
  }
}

TEST(MinBrentTest, EndsAtTheToleranceAndAtTheLimitOfSteps) {
  const auto cost = [](double x) { return std::abs(std::exp(x) - 2); };
  double last_error = 1;
  for (const double tolerance : {1e-2, 1e-5, 1e-9}) {
    double x = 0;
    MinBrent(cost, 0, 1, x, 200, tolerance);
    const double error = std::abs(x - std::numbers::ln2);
    EXPECT_LE(error, 3 * tolerance);
    EXPECT_LE(error, last_error);
    last_error = error;
  }
  for (const std::int32_t limit : {0, 1, 5}) {
    int calls = 0;
    double x = 0;
    MinBrent([&](double at) { return ++calls, cost(at); }, 0, 1, x, limit, 0);
    EXPECT_EQ(calls, limit + 1);
  }
  double x = 0;
  EXPECT_EQ(MinBrent(cost, 0, 0, x, 10, 0), 1);
  EXPECT_EQ(x, 0);
}

TEST(SimplexTest, ClassicalFunctions) {
  struct Case {
    const char* name;
    std::function<double(const TVec&)> cost;
    TVec start;
    TVec place;
    double tolerance;
  };
  const auto rosenbrock = [](const TVec& p) { return std::pow(1 - p[0], 2) + 100 * std::pow(p[1] - p[0] * p[0], 2); };
  const auto powell = [](const TVec& p) {  // singular Hessian at the minimum
    return std::pow(p[0] + 10 * p[1], 2) + 5 * std::pow(p[2] - p[3], 2) + std::pow(p[1] - 2 * p[2], 4) +
           10 * std::pow(p[0] - p[3], 4);
  };
  const auto bowl = [](const TVec& p) {
    double sum = 0;
    for (std::int32_t i = 0; i < p.Length(); ++i) sum += (i + 1) * std::pow(p[i] - i, 2);
    return sum;
  };
  const Case cases[] = {
      {"Rosenbrock", rosenbrock, TVec{-1.2, 1}, TVec{1, 1}, 1e-8},
      {"Powell", powell, TVec{3, -1, 0, 1}, TVec{0, 0, 0, 0}, 1e-3},
      {"bowl of eight variables", bowl, TVec{9, 9, 9, 9, 0, 0, 0, 0}, TVec{0, 1, 2, 3, 4, 5, 6, 7}, 1e-7},
      {"kink", [](const TVec& p) { return std::abs(std::exp(p[0]) - 5); }, TVec{1.3}, TVec{std::log(5.0)}, 1e-14},
      {"undefined half", [](const TVec& p) { return p[0] < 0 ? std::nan("") : std::pow(std::sqrt(p[0]) - 1, 2); },
       TVec{0.01}, TVec{1}, 1e-6},
  };
  for (const auto& [name, cost, start, place, tolerance] : cases) {
    TVec x = start;
    const double minimum = Simplex(cost, x, 20000, 1e-15);
    for (std::int32_t i = 0; i < x.Length(); ++i) EXPECT_NEAR(x[i], place[i], tolerance) << name << i;
    EXPECT_EQ(minimum, cost(x)) << name;
  }
}

TEST(SimplexTest, FewStepsNeverEndWorseThanTheStart) {
  const auto cost = [](const TVec& p) { return std::abs(p[0] - 3); };
  for (const std::int32_t steps : {0, 1, 10, 50}) {
    TVec x{1};
    const double minimum = Simplex(cost, x, steps, kEpsilon);
    EXPECT_LE(minimum, 2);
    EXPECT_EQ(minimum, cost(x));
    EXPECT_NEAR(x[0], 3, steps == 50 ? 1e-13 : 2);
  }
  TVec single{1};
  single.SetFloatPrecision(TMtxFloatPrecision::SingleReal);
  Simplex([](const TVec& p) { return p.IsDouble() ? std::abs(p[0] - 0.1) : kInfinity; }, single, 200, 1e-15);
  EXPECT_EQ(single.SValues()[0], 0.1F);
}

TEST(MinimiserRefusals, NameTheFaultAndChangeNothing) {
  const auto borrowed = PoolStatistics().Borrowed;
  const std::function<double(double)> curve = [](double x) { return x; };
  const std::function<double(const TVec&)> bowl = [](const TVec&) { return 0.0; };
  const double nan = std::nan("");
  double x = 7;
  TVec v{7};
  TVec none;
  TVec bad{1, nan};
  TVec complex{{1, 2}};
  EXPECT_RAISES(MinBrent(nullptr, 0, 1, x, 9, 0), ECoreError, "MinBrent: no cost function");
  EXPECT_RAISES(MinBrent(curve, 0, nan, x, 9, 0), ECoreError, "MinBrent: Low or High is not finite");
  EXPECT_RAISES(MinBrent(curve, -kInfinity, 0, x, 9, 0), ECoreError, "MinBrent: Low or High is not finite");
  EXPECT_RAISES(MinBrent(curve, 1, 0, x, 9, 0), ECoreError, "MinBrent: not (Low <= High)");
  EXPECT_RAISES(MinBrent(curve, 0, 1, x, -1, 0), ECoreError, "MinBrent: MaxIter < 0");
  EXPECT_RAISES(MinBrent(curve, 0, 1, x, 9, nan), ECoreError, "MinBrent: not (Tolerance >= 0)");
  EXPECT_THROW(MinBrent([](double) -> double { throw std::runtime_error("cost"); }, 0, 1, x, 9, 0), std::runtime_error);
  EXPECT_RAISES(Simplex(nullptr, v, 9, 0), ECoreError, "Simplex: no cost function");
  EXPECT_RAISES(Simplex(bowl, complex, 9, 0), ECoreError, "Simplex: complex elements");
  EXPECT_RAISES(Simplex(bowl, none, 9, 0), ECoreError, "Simplex: no elements");
  EXPECT_RAISES(Simplex(bowl, bad, 9, 0), ECoreError, "Simplex: an element is not finite");
  EXPECT_RAISES(Simplex(bowl, v, -1, 0), ECoreError, "Simplex: MaxIter < 0");
  EXPECT_RAISES(Simplex(bowl, v, 9, -1), ECoreError, "Simplex: not (Tolerance >= 0)");
  int calls = 0;
  const auto late = [&](const TVec&) -> double { return ++calls > 5 ? throw std::runtime_error("cost") : 1.0 / calls; };
  EXPECT_THROW(Simplex(late, v, 9, 0), std::runtime_error);
  EXPECT_EQ(x, 7);
  EXPECT_EQ(v[0], 7);
  EXPECT_EQ(PoolStatistics().Borrowed, borrowed);
}

}  // namespace
}  // namespace passband
