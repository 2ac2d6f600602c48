#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "passband/foundation/exceptions.h"
#include "passband/iir_design/band_edges_internal.h"
#include "passband/iir_design/order_requirement_internal.h"
#include "passband/iir_design/prototype_internal.h"

namespace passband::IIRFilters::detail {
namespace {

using enum SignalUtils::TFilterType;

void CheckEdges(OpenArray edges, bool analog) {
  const double limit = analog ? std::numeric_limits<double>::infinity() : 1;
  for (const double edge : edges) {
    if (!(edge > 0 && edge < limit)) ERaise(analog ? "not (0 < CuttoffFreq < Inf)" : "not (0 < CuttoffFreq < 1)");
  }
  if (!std::is_sorted(edges.begin(), edges.end())) ERaise("not (CuttoffFreq[i] <= CuttoffFreq[i + 1])");
}

// tan(pi f / 2), near the pole from the distance to it.
Wide Prewarp(double frequency) {
  const Wide f = frequency;
  const Wide quarter = std::numbers::pi_v<Wide> / 2;
  return f <= Wide(0.5) ? std::tan(quarter * f) : 1 / std::tan(quarter * (1 - f));
}

// Pass band first: from stop, pass, pass, stop or pass, stop, stop, pass.
void ReadEdges(OpenArray edges, Requirement& requirement) {
  static constexpr std::int32_t kPlaces[][4] = {{0, 1}, {1, 0}, {1, 2, 0, 3}, {0, 3, 1, 2}};
  const auto& places = kPlaces[static_cast<std::size_t>(requirement.type)];
  for (std::int32_t i = 0; i < edges.Length(); ++i) {
    const double edge = edges[places[i]];
    requirement.w[i] = requirement.analog ? static_cast<Wide>(edge) : Prewarp(edge);
  }
}

// The order falls with the smaller of two ratios, one growing and one falling with a pass-band edge: they meet where the
// geometric means of both bands agree. The distance of 1e-12 is kept from the stop band.
void TightenBandstop(Requirement& requirement) {
  auto& w = requirement.w;
  const Wide distance = 1e-12L;
  const Wide stop_squared = w[2] * w[3];
  w[0] = std::max(w[0], std::min(stop_squared / w[1], w[2] - distance));
  w[1] = std::min(w[1], std::max(stop_squared / w[0], w[3] + distance));
}

// (s^2 - w0 w1) / (s (w1 - w0)): the frequency of the equivalent lowpass that the bandpass mapping takes to s.
Wide LowpassFrequency(const Requirement& requirement, Wide s) {
  return std::abs((s - requirement.CentreSquared() / s) / requirement.Width());
}

Wide RatioOf(const Requirement& requirement) {
  const auto& w = requirement.w;
  switch (requirement.type) {
    case ftLowpass:
      return w[1] / w[0];
    case ftHighpass:
      return w[0] / w[1];
    case ftBandpass:
      return std::min(LowpassFrequency(requirement, w[2]), LowpassFrequency(requirement, w[3]));
    default:
      return 1 / std::max(LowpassFrequency(requirement, w[2]), LowpassFrequency(requirement, w[3]));
  }
}

}  // namespace

bool Requirement::HasBand() const { return HasTwoEdges(type); }

Wide Requirement::Discrimination() const { return std::sqrt(stop_loss / pass_loss); }

Requirement Reduce(OpenArray edges, double ripple, double attenuation, SignalUtils::TFilterType type,
                   std::span<const double> result, bool analog) {
  if (result.size() * 2 != edges.Span().size()) ERaise("(Length(CuttoffFreq) div 2) <> Length(BEdges)");
  if (HasOneEdge(type) && edges.Length() != 2) ERaise("Length(Src) <> 2");
  if (HasTwoEdges(type) && edges.Length() != 4) ERaise("Length(Src) <> 4");
  if (!HasOneEdge(type) && !HasTwoEdges(type)) ERaise("not (ftLowpass <= FilterType <= ftBandstop)");
  CheckEdges(edges, analog);
  if (!(ripple > 0 && ripple < attenuation && attenuation <= 3000)) ERaise("not (0 < Ripple < Attenuation <= 3000)");
  if (std::adjacent_find(edges.begin(), edges.end()) != edges.end()) ERaise("Order = Inf");

  Requirement requirement{.type = type, .analog = analog};
  requirement.stop_loss = ExcessPower(attenuation);
  requirement.pass_loss = ExcessPower(ripple);
  ReadEdges(edges, requirement);
  if (type == ftBandstop) TightenBandstop(requirement);
  requirement.ratio = RatioOf(requirement);
  if (!(requirement.ratio > 1)) ERaise("Order = Inf");
  return requirement;
}

std::int32_t OrderOf(Wide quotient) {
  const Wide nearest = std::round(quotient);
  const Wide order = std::abs(quotient - nearest) <= Wide(1e-15) * nearest ? nearest : std::ceil(quotient);
  if (!(order <= static_cast<Wide>(std::numeric_limits<std::int32_t>::max()))) ERaise("Order = Inf");
  return static_cast<std::int32_t>(std::max(order, Wide(1)));
}

void StoreEdges(const Requirement& requirement, Wide first, Wide second, std::span<double> edges) {
  const auto unit = [&](Wide w) {
    return static_cast<double>(requirement.analog ? w : std::atan(w) * 2 / std::numbers::pi_v<Wide>);
  };
  edges[0] = unit(first);
  if (requirement.HasBand()) edges[1] = unit(second);
}

}  // namespace passband::IIRFilters::detail
