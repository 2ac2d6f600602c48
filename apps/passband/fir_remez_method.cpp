#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "failure.h"
#include "fir_methods.h"
#include "fir_type.h"
#include "tap_response.h"

namespace passband_cli {
namespace {

using namespace passband;
using namespace passband::SignalUtils;
using OptimalFir::TRemezType;

// What the exchange is asked for: bands with a gain and a weight each.
struct Problem {
  TRemezType type = TRemezType::rmtBandPass;
  std::vector<double> bands_hz;
  std::vector<double> gains;
  std::vector<double> weights;
};

TRemezType ShapeOf(const FirType& type) {
  using enum TRemezType;
  if (type.name.starts_with("hilbert")) return rmtHilbert;
  if (type.name.starts_with("differentiator")) return rmtDifferentiator;
  if (type.name.starts_with("integrator")) return rmtIntegrator;
  return type.name.starts_with("double-d") ? rmtDoubleDifferentiator : rmtDoubleIntegrator;
}

std::vector<double> EdgesOf(const TapDesign& design, const FirType& type) {
  const std::vector<double>& edges = design.options.edges_hz;
  CheckFrequencies("--edges", edges, design.set.rate_hz);
  const std::size_t count = type.cutoffs == 0 ? 2 : 2 * type.cutoffs;
  if (edges.size() == count) return edges;
  Fail("--edges: a {} by remez takes {} frequencies, the ends of its {}; {} given", type.name, count,
       type.cutoffs == 0 ? "band" : "transition bands", edges.size());
}

Problem ProblemOf(const TapDesign& design, const FirType& type) {
  const std::vector<double>& edges = design.set.edges_hz;
  const double gain = design.options.gain;
  Problem problem;
  problem.bands_hz = edges;
  if (type.cutoffs == 0) {
    problem.type = ShapeOf(type);
    problem.gains = {gain};
  } else {
    problem.bands_hz.insert(problem.bands_hz.begin(), 0.0);
    problem.bands_hz.push_back(design.set.rate_hz / 2);
    const bool passes_first = type.type == TFilterType::ftLowpass || type.type == TFilterType::ftBandstop;
    for (std::size_t band = 0; band <= type.cutoffs; ++band) {
      problem.gains.push_back((band % 2 == 0) == passes_first ? gain : 0.0);
    }
  }
  problem.weights = design.options.weights;
  if (problem.weights.empty()) problem.weights.assign(problem.gains.size(), 1.0);
  if (problem.weights.size() != problem.gains.size()) {
    Fail("--weights: a {} has {} bands; {} weights given", type.name, problem.gains.size(), problem.weights.size());
  }
  for (const double weight : problem.weights) {
    if (!(weight > 0 && std::isfinite(weight))) Fail("--weights: {} is not a positive weight", weight);
  }
  return problem;
}

std::int32_t GivenLength(const FirOptions& options, const FirType& type) {
  if (options.ripple || options.attenuation_db) Fail("--length, or --ripple or --attenuation; not both");
  const std::int32_t length = *options.length;
  if (length < 3 || length > kMostTaps) Fail("--length: {} is not between 3 and {}", length, kMostTaps);
  if ((OddOnly(type) && length % 2 == 0) || (EvenOnly(type) && length % 2 != 0)) {
    Fail("--length: a {} has an {} number of taps", type.name, OddOnly(type) ? "odd" : "even");
  }
  return length;
}

// The next length from `length` on that the type, and --odd, can have.
std::int32_t Allowed(std::int32_t length, const FirOptions& options, const FirType& type) {
  const bool odd = options.odd || OddOnly(type);
  if ((odd && length % 2 == 0) || (EvenOnly(type) && length % 2 != 0)) ++length;
  if (length < kMostTaps) return length;
  Fail("the filter would need {} taps or more; widen its transition bands or ask for less attenuation", kMostTaps);
}

// Between the bands nothing is asked of the response, and it may rise above all of them.
void WarnOfOvershoot(const TapSet& set, const Problem& problem) {
  constexpr double kTolerableDb = 1;
  if (problem.type != TRemezType::rmtBandPass) return;
  double highest = 0;
  for (const double gain : problem.gains) highest = std::max(highest, std::abs(gain));
  if (highest == 0) return;
  const Curve response = MagnitudeResponse(set, false);
  for (std::size_t band = 1; band + 1 < problem.bands_hz.size(); band += 2) {
    double peak_db = -1000;
    double peak_hz = 0;
    for (std::size_t n = 0; n < response.x.size(); ++n) {
      if (response.x[n] < problem.bands_hz[band] || response.x[n] > problem.bands_hz[band + 1]) continue;
      if (response.y[n] > peak_db) {
        peak_db = response.y[n];
        peak_hz = response.x[n];
      }
    }
    const double over_db = peak_db - 20 * std::log10(highest);
    if (over_db > kTolerableDb) {
      fmt::print(stderr,
                 "passband: warning: between {} and {} Hz, where nothing was asked of it, the response rises {:.1f} dB "
                 "above the passband (at {:.6g} Hz); narrow the wider transition band\n",
                 problem.bands_hz[band], problem.bands_hz[band + 1], over_db, peak_hz);
    }
  }
}

// What the exchange has reached.
struct Result {
  double deviation = 0;
  std::int32_t iterations = 0;
};

Result Exchange(TapSet& set, const Problem& problem) {
  Result result;
  result.iterations = OptimalFir::remez(set.taps, problem.bands_hz, problem.gains, problem.weights, problem.type,
                                        result.deviation, set.rate_hz);
  result.deviation = std::abs(result.deviation);
  return result;
}

// The estimate of the length is good to a few percent: longer filters follow until the ripple is met.
Result ExchangeForRipple(TapDesign& design, const FirType& type, const Problem& problem) {
  constexpr int kMostTries = 12;
  constexpr double kOffset = 8;  // dB: the attenuation of a filter without transition, as in Kaiser's formula
  const FirOptions& options = design.options;
  TapSet& set = design.set;
  const double ripple = RippleOf(options);
  const double wanted = ripple * std::abs(options.gain);
  std::int32_t length = OptimalFir::RemezFirLength(set.edges_hz, ripple, type.type, set.rate_hz);
  Result result;
  for (int attempt = 0; attempt < kMostTries; ++attempt) {
    length = Allowed(length, options, type);
    set.taps.Size(length, false, design.is_double);
    result = Exchange(set, problem);
    if (!(result.deviation > wanted)) break;
    const double missing_db = 20 * std::log10(result.deviation / wanted);
    const double more = length * missing_db / (kOffset - 20 * std::log10(ripple));
    length += std::max(1, static_cast<std::int32_t>(std::min(more, double{kMostTaps})));
  }
  design.record["ripple"] = ripple;
  return result;
}

}  // namespace

void DesignByRemez(TapDesign& design) {
  constexpr std::int32_t kMostIterations = 50;  // the library's own limit
  const FirOptions& options = design.options;
  TapSet& set = design.set;
  const FirType& type = FirTypeFromName(options.type);
  design.record["type"] = type.name;
  if (options.odd && EvenOnly(type)) Fail("--odd: a {} has an even number of taps", type.name);
  set.edges_hz = EdgesOf(design, type);
  const Problem problem = ProblemOf(design, type);
  Result result;
  if (options.length) {
    set.taps.Size(GivenLength(options, type), false, design.is_double);
    result = Exchange(set, problem);
  } else {
    result = ExchangeForRipple(design, type, problem);
  }
  design.record["weights"] = problem.weights;
  design.record["deviation"] = result.deviation;
  design.record["iterations"] = result.iterations;
  fmt::print(stderr, "passband: note: {} taps, deviation {:.6g} ({:.2f} dB) times 1 / weight, {} iterations\n",
             set.taps.Length(), result.deviation, 20 * std::log10(result.deviation), result.iterations);
  if (result.iterations >= kMostIterations) {
    fmt::print(stderr, "passband: warning: the exchange did not converge; the filter is not optimal\n");
  }
  WarnOfOvershoot(set, problem);
}

}  // namespace passband_cli
