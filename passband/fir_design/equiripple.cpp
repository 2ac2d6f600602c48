#include "passband/fir_design/equiripple.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "passband/fir_design/equiripple_design_internal.h"
#include "passband/fir_design/equiripple_taps_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/text.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::OptimalFir {

std::int32_t GridDensity = 16;

namespace {

constexpr std::int32_t kMinTaps = 3;
constexpr std::int32_t kMaxTaps = 10000;
constexpr const char* kBadLength = "Too long/short filter specified!";

[[noreturn]] void RaiseNarrowBand(std::int32_t density, double spacing) {
  ERaise("OptimalFir.GridDensity = " + SampleToStr(density) +
         ". This parameter is too small to calculate the filter. GridDensity must be large enough to get at least "
         "two points inside every band. If one of the bands is too narrow (less than " +
         SampleToStr(2 * spacing) +
         " for this GridDensity), you need to increase GridDensity for the entire filter! "
         "The calculation time of the filter however is proportional to the size of the Grid!");
}

std::vector<double> CheckedEdges(OpenArray bands, OpenArray gains, OpenArray weights, double fs) {
  if (weights.Length() != gains.Length()) ERaise("Length(weights) <> Length(gains)");
  if (bands.Span().size() != 2 * gains.Span().size()) ERaise("remez: Length(bands) <> 2*Length(gains)");
  if (gains.Length() == 0) ERaise("remez: no bands");
  std::vector<double> edges;
  for (const double edge : bands) edges.push_back(edge / fs);
  for (std::size_t i = 0; i + 1 < edges.size(); ++i) {
    if (!(edges[i] <= edges[i + 1])) ERaise("Remez: Overlapping bands!");
  }
  return edges;
}

void CheckValues(const detail::BandPlan& bands) {
  const auto in_range = [](double edge) { return edge >= 0 && edge <= 0.5; };
  const auto is_finite = [](double gain) { return std::isfinite(gain); };
  const auto is_positive = [](double weight) { return weight > 0 && std::isfinite(weight); };
  if (!std::all_of(bands.edges.begin(), bands.edges.end(), in_range)) {
    ERaise("remez: a band edge is outside 0 .. FS/2");
  }
  if (!std::all_of(bands.gains.begin(), bands.gains.end(), is_finite)) ERaise("remez: a gain is not finite");
  if (!std::all_of(bands.weights.begin(), bands.weights.end(), is_positive)) {
    ERaise("remez: a weight is not positive and finite");
  }
}

void CheckGrid(const detail::BandPlan& bands, std::int32_t length) {
  if (length < kMinTaps) ERaise(kBadLength);
  const detail::GridPlan grid(bands, length);
  if (!std::all_of(grid.counts.begin(), grid.counts.end(), [](double count) { return count >= 2; })) {
    RaiseNarrowBand(bands.density, grid.spacing);
  }
  if (length > kMaxTaps) ERaise(kBadLength);
}

// Types that turn the phase the other way.
bool IsNegated(TRemezType type) {
  return type == TRemezType::rmtHilbert || type == TRemezType::rmtIntegrator || type == TRemezType::rmtDoubleIntegrator;
}

}  // namespace

std::int32_t remez(TVec& H, OpenArray bands, OpenArray gains, OpenArray weights, TRemezType RemezType,
                   double& Deviation, double FS, bool FixedWeights) {
  Deviation = 0;
  const std::vector<double> edges = CheckedEdges(bands, gains, weights, FS);
  const detail::BandPlan plan{edges, gains.Span(), weights.Span(), RemezType, FixedWeights, GridDensity};
  const std::int32_t length = H.Length();
  CheckGrid(plan, length);
  CheckValues(plan);
  const detail::Approximation approximation = detail::BestApproximation(plan, length);
  const detail::Units units(plan, FS);
  const Borrowed<TVec> taps;
  taps->Size(length, false, H.IsDouble());
  const detail::Wide factor = IsNegated(RemezType) ? -units.amplitude : units.amplitude;
  const std::vector<detail::Wide> h = detail::TapsOf(approximation.sum, length, plan.Antisymmetric());
  ForReal(*taps, [&]<RealElement R>(ElementTag<R>) {
    std::transform(h.begin(), h.end(), taps->Elements<R>().begin(),
                   [factor](detail::Wide tap) { return static_cast<R>(static_cast<double>(factor * tap)); });
  });
  H.Take(*taps);
  Deviation = static_cast<double>(static_cast<detail::Wide>(approximation.deviation) * units.amplitude * units.weight);
  return approximation.iterations;
}

}  // namespace passband::OptimalFir
