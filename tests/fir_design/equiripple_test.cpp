#include "passband/fir_design/equiripple.h"

#include <hwy/targets.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <sstream>
#include <vector>

#include "tests/test_support.h"

namespace passband::OptimalFir {
namespace {

using enum TRemezType;
using test::At;
using Wide = long double;

// What `remez` is asked for.
struct Task {
  TRemezType type;
  std::int32_t taps;
  std::vector<double> bands;
  std::vector<double> gains;
  std::vector<double> weights;
  double fs = 1;
  std::int32_t density = 16;
  bool fixed = false;
};

struct Outcome {
  TVec taps;
  double deviation = -1;
  std::int32_t iterations = 0;
};

class WithDensity {
 public:
  explicit WithDensity(std::int32_t density) : before_(GridDensity) { GridDensity = density; }
  ~WithDensity() { GridDensity = before_; }
  WithDensity(const WithDensity&) = delete;
  WithDensity& operator=(const WithDensity&) = delete;

 private:
  std::int32_t before_;
};

Outcome Solve(const Task& task, TMtxFloatPrecision precision = TMtxFloatPrecision::DoubleReal) {
  const WithDensity density(task.density);
  Outcome out;
  out.taps.Size(task.taps, precision);
  out.iterations = remez(out.taps, task.bands, task.gains, task.weights, task.type, out.deviation, task.fs, task.fixed);
  return out;
}

// The weighted errors of taps on the design grid, in extended precision, by direct sums of cosines or sines.
std::vector<double> WeightedErrors(const Task& task, const TVec& taps, std::size_t stride = 1) {
  constexpr int kPowers[] = {0, 1, 0, -1, 2, -2};
  constexpr Wide kPi = std::numbers::pi_v<Wide>;
  const int power = kPowers[static_cast<int>(task.type)];
  const bool antisymmetric = task.type != rmtBandPass;
  const bool negated = task.type == rmtHilbert || power < 0;
  const std::int32_t half = task.taps / 2;
  const double spacing = 0.5 / (static_cast<double>(task.density) * half);
  std::vector<double> errors;
  for (std::size_t j = 0; j < task.gains.size(); ++j) {
    double low = task.bands[2 * j] / task.fs;
    double high = task.bands[2 * j + 1] / task.fs;
    if (antisymmetric && j == 0) low = std::max(low, spacing);
    if (antisymmetric && j + 1 == task.gains.size() && task.taps % 2 == 1) high = std::min(high, 0.5 - spacing);
    const auto count = static_cast<std::size_t>((high - low) / spacing);
    const double step = (high - low) / static_cast<double>(count - 1);
    for (std::size_t i = 0; i < count; i += stride) {
      const double f = i + 1 == count ? high : low + step * static_cast<double>(i);
      const Wide offset = task.taps % 2 == 1 ? 0 : 0.5L;
      Wide amplitude = task.taps % 2 == 1 && !antisymmetric ? static_cast<Wide>(taps[half]) : 0;
      for (std::int32_t k = 0; k < half; ++k) {
        const Wide turns = static_cast<Wide>(f) * (k + 1 - offset);
        const Wide angle = 2 * kPi * (turns - std::rint(turns));
        amplitude += 2 * static_cast<Wide>(taps[half - 1 - k]) * (antisymmetric ? std::sin(angle) : std::cos(angle));
      }
      const Wide desired = task.gains[j] * std::pow(2 * kPi * task.fs * f, static_cast<Wide>(power));
      const double shape = task.fixed || f <= 1e-6 ? 1 : std::pow(f, -power);
      const Wide error = desired - (negated ? -amplitude : amplitude);
      errors.push_back(static_cast<double>(error) * task.weights[j] * shape);
    }
  }
  return errors;
}

double Largest(const std::vector<double>& values) {
  double largest = 0;
  for (const double v : values) largest = std::max(largest, std::abs(v));
  return largest;
}

// Changes of sign among the errors of at least this size.
std::size_t Alternations(const std::vector<double>& errors, double size) {
  std::size_t count = 0;
  double last = 0;
  for (const double e : errors) {
    if (std::abs(e) < size || e * last > 0) continue;
    last = e;
    ++count;
  }
  return count;
}

// By Chebyshev's theorem an error that alternates once more often than there are functions belongs to the best
// approximation.
void ExpectOptimal(const Task& task) {
  SCOPED_TRACE(testing::Message() << "type " << static_cast<int>(task.type) << ", " << task.taps << " taps, density "
                                  << task.density);
  const Outcome out = Solve(task);
  EXPECT_LT(out.iterations, 30);
  const std::vector<double> errors = WeightedErrors(task, out.taps);
  EXPECT_NEAR(Largest(errors) / out.deviation, 1, 1e-6);
  const auto functions = static_cast<std::size_t>(task.taps / 2 + (task.taps % 2 == 1 && task.type == rmtBandPass));
  EXPECT_GE(Alternations(errors, out.deviation * (1 - 1e-6)), functions + 1);
  for (std::int32_t n = 0; n < task.taps; ++n) {
    const double mirrored = out.taps[task.taps - 1 - n];
    ASSERT_EQ(out.taps[n], task.type == rmtBandPass ? mirrored : -mirrored) << n;
  }
}

TEST(Remez, AgreesWithDesignsInFortyDigits) {
  static const std::map<std::string, std::vector<double>> rows{
#include "tests/fir_design/equiripple_reference.inc"
  };
  for (const auto& [name, expected] : rows) {
    SCOPED_TRACE(name);
    std::istringstream words(name);
    int type = 0;
    std::size_t bands = 0;
    Task task{};
    words >> type >> task.taps >> task.density >> task.fixed >> task.fs >> bands;
    task.type = static_cast<TRemezType>(type);
    const auto read = [&](std::vector<double>& values, std::size_t count) {
      values.resize(count);
      for (double& v : values) words >> v;
    };
    read(task.bands, 2 * bands);
    read(task.gains, bands);
    read(task.weights, bands);
    for (const auto precision : {TMtxFloatPrecision::DoubleReal, TMtxFloatPrecision::SingleReal}) {
      const Outcome out = Solve(task, precision);
      EXPECT_LT(out.iterations, 50);
      EXPECT_NEAR(out.deviation, expected[0], 1e-10 * expected[0] + 1e-16);
      ASSERT_EQ(out.taps.Length() + 1, static_cast<std::int32_t>(expected.size()));
      EXPECT_EQ(out.taps.FloatPrecision(), precision);
      const double largest = Largest({expected.begin() + 1, expected.end()});
      const double tolerance = largest * (IsDoublePrecision(precision) ? 1e-9 : 6e-8);
      for (std::int32_t n = 0; n < task.taps; ++n) {
        EXPECT_NEAR(out.taps[n], expected[static_cast<std::size_t>(n) + 1], tolerance) << n;
      }
    }
  }
}

TEST(Remez, FindsThePublishedLowpassOf24Taps) {
  // McClellan, Parks, Rabiner, "A computer program for designing optimum FIR linear phase digital filters", IEEE Trans.
  // Audio Electroacoustics 21, 1973, example 1. Their grid lies a little differently.
  const Outcome out = Solve({rmtBandPass, 24, {0, 0.08, 0.16, 0.5}, {1, 0}, {1, 1}});
  const double published[] = {0.00337409,  0.0149383,   0.01056936, 0.00254151, -0.01592925, -0.03408534,
                              -0.03811218, -0.01462917, 0.04008954, 0.1154071,  0.1885075,   0.2335461};
  EXPECT_NEAR(out.deviation, 0.01243364, 5e-5);
  for (std::int32_t n = 0; n < 12; ++n) EXPECT_NEAR(out.taps[n], published[n], 5e-5) << n;
}

TEST(Remez, LevelsTheErrorOfEveryTypeAtBothParities) {
  for (const std::int32_t taps : {6, 7, 50, 51, 200, 201}) {
    for (const std::int32_t density : {4, 16, 256}) {
      if ((taps < 10 && density < 16) || (taps > 20 && density > 16)) continue;  // too coarse, too slow
      const double q = 1.5 / taps;
      const double end = taps % 2 == 1 ? 0.5 - q : 0.5;
      ExpectOptimal({rmtBandPass, taps, {0, 0.25 - q / 2, 0.25 + q / 2, 0.5}, {1, 0}, {1, 10}, 1, density});
      ExpectOptimal({rmtDifferentiator, taps, {0, 0.5 - q}, {1}, {1}, 1, density});
      ExpectOptimal({rmtHilbert, taps, {44100 * q, 44100 * end}, {1}, {1}, 44100, density});
      ExpectOptimal({rmtIntegrator, taps, {q, end}, {2}, {1}, 1, density});
      ExpectOptimal({rmtDoubleDifferentiator, taps, {0, end}, {1}, {3}, 1, density});
      ExpectOptimal({rmtDoubleIntegrator, taps, {q, end}, {1}, {1}, 1, density});
      ExpectOptimal({rmtIntegrator, taps, {q, end}, {1}, {1}, 1, density, true});
    }
  }
}

TEST(Remez, LevelsErrorsFarBelowTheNoiseOfPlainInterpolation) {
  for (const double transition : {0.05, 0.07, 0.085}) {  // 1e-6 to 2e-9
    ExpectOptimal({rmtBandPass, 151, {0, 0.2, 0.2 + transition, 0.5}, {1, 0}, {1, 1}});
  }
  ExpectOptimal({rmtHilbert, 201, {0.02, 0.48}, {1}, {1}});
  ExpectOptimal({rmtBandPass, 101, {0, 0.2, 0.21, 0.3, 0.45, 0.5}, {0, 1, 0}, {1, 1, 1}});  // 1e7 in the wide gap
  ExpectOptimal({rmtBandPass, 131, {0, 0.2, 0.22, 0.5}, {1, 0}, {1, 1e6}});
}

TEST(Remez, LongFiltersConvergeInFewIterations) {
  const std::int32_t taps = 9999;
  const double q = 2.0 / taps;
  const Task tasks[] = {{rmtBandPass, taps, {0, 0.2, 0.2 + q, 0.3, 0.3 + q, 0.5}, {0, 1, 0}, {1, 1, 1}},
                        {rmtBandPass, taps + 1, {0, 0.01, 0.01 + 2 * q, 0.5}, {1, 0}, {1, 10}, 1, 256},
                        {rmtDifferentiator, taps, {0, 0.5 - q}, {1}, {1}},
                        {rmtDoubleIntegrator, taps + 1, {q, 0.5}, {1}, {1}}};
  for (const Task& task : tasks) {
    SCOPED_TRACE(static_cast<int>(task.type));
    const Outcome out = Solve(task);
    EXPECT_LT(out.iterations, 30);
    const auto stride = static_cast<std::size_t>(37 * task.density);  // some 400 frequencies
    EXPECT_LE(Largest(WeightedErrors(task, out.taps, stride)), out.deviation * (1 + 1e-6));
    EXPECT_GE(Largest(WeightedErrors(task, out.taps, stride)), out.deviation * 0.9);
  }
}

TEST(Remez, ReachesTheRoundingOfTapsWhereTheOptimumLiesBelow) {
  // Most of these optima are far below 1e-20.
  const Task tasks[] = {{rmtBandPass, 401, {0, 0.2, 0.25, 0.5}, {1, 0}, {1, 1}},
                        {rmtBandPass, 1001, {0, 0.2, 0.25, 0.5}, {1, 0}, {1, 1}},
                        {rmtBandPass, 1000, {0, 0.2, 0.22, 0.5}, {1, 0}, {1, 1}},
                        {rmtDifferentiator, 401, {0.01, 0.45}, {1}, {1}},
                        {rmtHilbert, 801, {0.02, 0.48}, {1}, {1}},
                        {rmtHilbert, 41, {0.2, 0.3}, {1}, {1}}};
  for (const Task& task : tasks) {
    SCOPED_TRACE(testing::Message() << static_cast<int>(task.type) << ", " << task.taps);
    const Outcome out = Solve(task);
    const double largest = Largest(WeightedErrors(task, out.taps, 3));
    EXPECT_LE(largest, 2.5e-15);
    EXPECT_NEAR(out.deviation, largest, 1e-15);
  }
}

TEST(Remez, EveryInstructionSetFindsTheSameFilter) {
  const Task tasks[] = {{rmtBandPass, 151, {0, 0.2, 0.285, 0.5}, {1, 0}, {1, 1}},
                        {rmtIntegrator, 64, {0.02, 0.5}, {1}, {1}}};
  for (const Task& task : tasks) {
    const Outcome best = Solve(task);
    for (const auto target : hwy::SupportedAndGeneratedTargets()) {
      hwy::SetSupportedTargetsForTest(target);
      SCOPED_TRACE(hwy::TargetName(target));
      const Outcome out = Solve(task);
      EXPECT_NEAR(out.deviation / best.deviation, 1, 1e-9);
      for (std::int32_t n = 0; n < task.taps; ++n) EXPECT_NEAR(out.taps[n], best.taps[n], 1e-9) << n;
    }
    hwy::SetSupportedTargetsForTest(0);
  }
}

TEST(Remez, MeetsWhatItCanMeetExactly) {
  Outcome out = Solve({rmtBandPass, 31, {0, 0.2, 0.3, 0.5}, {2.5, 2.5}, {1, 3}});
  EXPECT_EQ(out.deviation, 0);
  EXPECT_LT(out.iterations, 50);
  for (std::int32_t n = 0; n < 31; ++n) EXPECT_EQ(out.taps[n], n == 15 ? 2.5 : 0) << n;
  for (const TRemezType type : {rmtBandPass, rmtHilbert, rmtDoubleIntegrator}) {
    out = Solve({type, 10000, {0.1, 0.2, 0.3, 0.4}, {0, 0}, {1, 1}});
    EXPECT_EQ(out.deviation, 0);
    EXPECT_LT(out.iterations, 50);
    EXPECT_EQ(test::MaxAbs(out.taps), 0);
  }
}

TEST(Remez, TouchingBandsEndWithTheErrorThatTheirStepForces) {
  Task task{rmtBandPass, 51, {0, 0.2, 0.2, 0.5}, {1, 0}, {1, 3}};
  Outcome out = Solve(task);
  EXPECT_LT(out.iterations, 50);
  EXPECT_DOUBLE_EQ(out.deviation, 0.75);  // 1 / (1/1 + 1/3)
  EXPECT_NEAR(Largest(WeightedErrors(task, out.taps)), 0.75, 1e-5);
  // Without a step they are one band.
  const Outcome one = Solve({rmtBandPass, 51, {0, 0.3, 0.35, 0.5}, {1, 0}, {1, 1}});
  out = Solve({rmtBandPass, 51, {0, 0.2, 0.2, 0.3, 0.35, 0.5}, {1, 1, 0}, {1, 1, 1}});
  EXPECT_NEAR(out.deviation, one.deviation, 1e-2 * one.deviation);  // the grids differ
}

TEST(Remez, EvenSymmetricFiltersAreZeroAtHalfTheSamplingFrequency) {
  const Task task{rmtBandPass, 32, {0, 0.2, 0.3, 0.5}, {0, 0.5}, {1, 3}};
  const Outcome out = Solve(task);
  EXPECT_DOUBLE_EQ(out.deviation, 1.5);
  EXPECT_NEAR(Largest(WeightedErrors(task, out.taps)), 1.5, 1e-12);
}

TEST(Remez, TooFewPointsGiveFiniteTapsThatAreNotTheOptimum) {
  const Task tasks[] = {{rmtBandPass, 101, {0, 0.1, 0.2, 0.25}, {1, 0}, {1, 1}, 1, 1},
                        {rmtBandPass, 30, {0, 0.1, 0.4, 0.5}, {1, 0}, {1, 1}, 1, 1},
                        {rmtDoubleIntegrator, 8, {0.4, 0.5}, {1}, {1}, 1, 4}};
  for (const Task& task : tasks) {
    const Outcome out = Solve(task);
    EXPECT_EQ(out.iterations, 50);
    EXPECT_TRUE(std::isfinite(test::MaxAbs(out.taps)));
    EXPECT_NEAR(Largest(WeightedErrors(task, out.taps)), out.deviation, 1e-6 * out.deviation);
  }
}

TEST(Remez, ManyBandsAndExtremeUnits) {
  std::vector<double> bands;
  std::vector<double> gains;
  for (int j = 0; j < 50; ++j) {
    bands.insert(bands.end(), {0.01 * j, 0.01 * j + 0.006});
    gains.push_back(j % 2);
  }
  const Task comb{rmtBandPass, 501, bands, gains, std::vector<double>(50, 1.0)};
  const Outcome out = Solve(comb);
  EXPECT_LT(out.iterations, 30);
  EXPECT_NEAR(Largest(WeightedErrors(comb, out.taps)) / out.deviation, 1, 1e-6);
  const Outcome unit = Solve({rmtDoubleDifferentiator, 31, {0, 0.45}, {1}, {1}});
  const Outcome scaled = Solve({rmtDoubleDifferentiator, 31, {0, 0.45e9}, {1e-30}, {1e200}, 1e9});
  EXPECT_NEAR(scaled.deviation / 1e188 / unit.deviation, 1, 1e-12);
  EXPECT_NEAR(scaled.taps[0] / 1e-12 / unit.taps[0], 1, 1e-9);
}

TEST(Remez, RefusesWithItsTextsAndWritesNoTap) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInf = std::numeric_limits<double>::infinity();
  TVec h = test::Noise(31, TMtxFloatPrecision::DoubleReal, 1);
  const TVec kept = h;
  double deviation = 0;
  const auto call = [&](OpenArray bands, OpenArray gains, OpenArray weights) {
    remez(h, bands, gains, weights, rmtBandPass, deviation, 1);
  };
  EXPECT_RAISES(call({0, 0.2}, {1}, {1, 1}), ECoreError, "Length(weights) <> Length(gains)");
  EXPECT_RAISES(call({0, 0.2, 0.3}, {1}, {1}), ECoreError, "remez: Length(bands) <> 2*Length(gains)");
  EXPECT_RAISES(call({}, {}, {}), ECoreError, "remez: no bands");
  EXPECT_RAISES(call({0, 0.3, 0.2, 0.5}, {1, 0}, {1, 1}), ECoreError, "Remez: Overlapping bands!");
  EXPECT_RAISES(call({0, kNan, 0.2, 0.5}, {1, 0}, {1, 1}), ECoreError, "Remez: Overlapping bands!");
  EXPECT_RAISES(call({0, 0.2, 0.3, 0.6}, {1, 0}, {1, 1}), ECoreError, "remez: a band edge is outside 0 .. FS/2");
  EXPECT_RAISES(call({-0.1, 0.2}, {1}, {1}), ECoreError, "remez: a band edge is outside 0 .. FS/2");
  EXPECT_RAISES(call({0, 0.2}, {kInf}, {1}), ECoreError, "remez: a gain is not finite");
  for (const double weight : {0.0, -1.0, kNan, kInf}) {
    EXPECT_RAISES(call({0, 0.2}, {1}, {weight}), ECoreError, "remez: a weight is not positive and finite");
  }
  const std::string narrow =
      ". This parameter is too small to calculate the filter. GridDensity must be large enough to get at least two "
      "points inside every band. If one of the bands is too narrow (less than ";
  const std::string advice =
      " for this GridDensity), you need to increase GridDensity for the entire filter! The calculation time of the "
      "filter however is proportional to the size of the Grid!";
  EXPECT_RAISES(call({0, 0.2, 0.3, 0.303, 0.4, 0.5}, {1, 0, 1}, {1, 1, 1}), ECoreError,
                ("OptimalFir.GridDensity = 16" + narrow + "0.004166666666666667" + advice).c_str());
  for (const std::int32_t density : {0, -16}) {
    const WithDensity set(density);
    EXPECT_THROW(call({0, 0.2}, {1}, {1}), ECoreError);
  }
  EXPECT_TRUE(test::SameBits(h, kept));
  for (const std::int32_t length : {0, 1, 2, 10001, 100000000}) {
    TVec other;
    other.Size(length, TMtxFloatPrecision::DoubleReal);
    EXPECT_RAISES(remez(other, {0, 0.2, 0.3, 0.5}, {1, 0}, {1, 1}, rmtBandPass, deviation, 1), ECoreError,
                  "Too long/short filter specified!");
    EXPECT_EQ(other.Length(), length);
  }
}

}  // namespace
}  // namespace passband::OptimalFir
