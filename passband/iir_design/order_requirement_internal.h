// A requirement on a filter, checked and reduced to that on a lowpass.
#pragma once

#include <cstdint>
#include <span>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/open_array.h"

namespace passband::IIRFilters::detail {

/// In extended precision: the order is a quotient of logarithms of numbers close to 1.
struct Requirement {
  using Wide = long double;

  SignalUtils::TFilterType type{};
  bool analog = false;
  Wide w[4] = {};      // edges of the pass band, then those of the stop band; two of each, or one; prewarped
  Wide ratio = 0;      // edge of the stop band over that of the pass band of the equivalent lowpass
  Wide stop_loss = 0;  // 10^(Attenuation / 10) - 1
  Wide pass_loss = 0;  // 10^(Ripple / 10) - 1

  bool HasBand() const;
  Wide Discrimination() const;  // sqrt(stop_loss / pass_loss)
  Wide Width() const { return w[1] - w[0]; }
  Wide CentreSquared() const { return w[0] * w[1]; }
};

/// \throws ECoreError what the docstring of `ButterOrder` lists
Requirement Reduce(OpenArray edges, double ripple, double attenuation, SignalUtils::TFilterType type,
                   std::span<const double> result, bool analog);

/// The least whole number not below `quotient`, which may be wrong in its last digits.
/// \throws ECoreError "Order = Inf" beyond 2^31 - 1
std::int32_t OrderOf(Requirement::Wide quotient);

/// Writes frequencies in the unit of the requirement; `second` only where there are two.
void StoreEdges(const Requirement& requirement, Requirement::Wide first, Requirement::Wide second,
                std::span<double> edges);

}  // namespace passband::IIRFilters::detail
