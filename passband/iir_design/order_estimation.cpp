#include "passband/iir_design/order_estimation.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "passband/foundation/exceptions.h"
#include "passband/iir_design/order_requirement_internal.h"
#include "passband/iir_design/prototype_internal.h"
#include "passband/vector_core/landen_internal.h"

namespace passband::IIRFilters {
namespace {

using detail::Requirement;
using detail::Wide;
using enum SignalUtils::TFilterType;

Wide ButterworthQuotient(const Requirement& requirement) {
  return std::log(requirement.Discrimination()) / std::log(requirement.ratio);
}

Wide ChebyshevQuotient(const Requirement& requirement) {
  return std::acosh(requirement.Discrimination()) / std::acosh(requirement.ratio);
}

// K(1 - m) / K(m), from the arithmetic-geometric means.
Wide PeriodRatio(Wide modulus) {
  using Means = passband::detail::LandenMeans<Wide>;
  const Wide complement = std::sqrt((1 - modulus) * (1 + modulus));
  return Means(complement).limit / Means(modulus).limit;
}

Wide EllipticQuotient(const Requirement& requirement) {
  return PeriodRatio(1 / requirement.Discrimination()) / PeriodRatio(1 / requirement.ratio);
}

// The upper edge of a band with the same centre that is `factor` times as wide.
Wide UpperEdge(const Requirement& requirement, Wide factor) {
  const Wide half = factor * requirement.Width() / 2;
  return half + std::sqrt(half * half + requirement.CentreSquared());
}

// The cut-offs of a lowpass that ends at `factor` times its pass-band edge, taken back to the band.
void StoreScaled(const Requirement& requirement, Wide factor, std::span<double> edges) {
  switch (requirement.type) {
    case ftLowpass:
      return detail::StoreEdges(requirement, factor * requirement.w[0], 0, edges);
    case ftHighpass:
      return detail::StoreEdges(requirement, requirement.w[0] / factor, 0, edges);
    default: {
      const Wide upper = UpperEdge(requirement, requirement.type == ftBandpass ? factor : 1 / factor);
      return detail::StoreEdges(requirement, requirement.CentreSquared() / upper, upper, edges);
    }
  }
}

}  // namespace

std::int32_t ButterOrder(OpenArray CuttoffFreq, double Ripple, double Attenuation, SignalUtils::TFilterType FilterType,
                         std::span<double> BEdges, bool Analog) {
  const Requirement requirement =
      detail::Reduce(CuttoffFreq, std::abs(Ripple), std::abs(Attenuation), FilterType, BEdges, Analog);
  const std::int32_t order = detail::OrderOf(ButterworthQuotient(requirement));
  const Wide cutoff = requirement.ratio / std::pow(requirement.stop_loss, 1 / (2 * static_cast<Wide>(order)));
  StoreScaled(requirement, cutoff, BEdges);
  return order;
}

std::int32_t ChebyshevIOrder(OpenArray CuttoffFreq, double Ripple, double Attenuation,
                             SignalUtils::TFilterType FilterType, std::span<double> BEdges, bool Analog) {
  const Requirement requirement =
      detail::Reduce(CuttoffFreq, std::abs(Ripple), std::abs(Attenuation), FilterType, BEdges, Analog);
  const std::int32_t order = detail::OrderOf(ChebyshevQuotient(requirement));
  detail::StoreEdges(requirement, requirement.w[0], requirement.w[1], BEdges);
  return order;
}

std::int32_t ChebyshevIIOrder(OpenArray CuttoffFreq, double Ripple, double Attenuation,
                              SignalUtils::TFilterType FilterType, std::span<double> BEdges, bool Analog) {
  const Requirement requirement =
      detail::Reduce(CuttoffFreq, std::abs(Ripple), std::abs(Attenuation), FilterType, BEdges, Analog);
  const std::int32_t order = detail::OrderOf(ChebyshevQuotient(requirement));
  const Wide edge = std::cosh(std::acosh(requirement.Discrimination()) / static_cast<Wide>(order));
  StoreScaled(requirement, edge, BEdges);
  return order;
}

std::int32_t EllipticOrder(OpenArray CuttoffFreq, double Ripple, double Attenuation,
                           SignalUtils::TFilterType FilterType, std::span<double> BEdges, bool Analog) {
  const Requirement requirement = detail::Reduce(CuttoffFreq, Ripple, Attenuation, FilterType, BEdges, Analog);
  const std::int32_t order = detail::OrderOf(EllipticQuotient(requirement));
  const auto square = [](Wide x) { return static_cast<double>(x) * static_cast<double>(x); };
  if (1 - square(1 / requirement.Discrimination()) == 1 || square(1 / requirement.ratio) == 1) ERaise("Order = Inf");
  detail::StoreEdges(requirement, requirement.w[0], requirement.w[1], BEdges);
  return order;
}

}  // namespace passband::IIRFilters
