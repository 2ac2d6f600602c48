// What an IIR filter has to do, and the order that it takes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <passband/passband.h>

#include "iir_options.h"

namespace passband_cli {

/// A family of filters and what its designs are given beside their order and edges.
struct IirFamily {
  std::string_view name;
  passband::IIRFilters::TIirFilterMethod method;
  bool has_ripple;       ///< in the pass band
  bool has_attenuation;  ///< of its own, in the stop band
};

/// Those whose order can be estimated.
std::span<const IirFamily> EstimatedFamilies();

/// The family of that name, Bessel included; raises for any other.
const IirFamily& FamilyFromName(const std::string& name);

struct IirType {
  std::string_view name;
  passband::SignalUtils::TFilterType type;
  std::size_t cutoffs;
};

/// The checked facts that all families share.
struct IirRequirement {
  const IirType* type = nullptr;
  bool analog = false;
  double rate_hz = 0;         ///< 0 of analog filters
  std::vector<double> edges;  ///< as given: in Hz, of analog filters in rad/s

  std::string_view Unit() const { return analog ? "rad/s" : "Hz"; }
  /// Edges as the library takes them: relative to half the rate, of analog filters as they are.
  std::vector<double> ToLibrary(std::span<const double> frequencies) const;
  std::vector<double> FromLibrary(std::span<const double> frequencies) const;
};

/// Checks type, rate and that edges ascend inside the band, not yet their number.
IirRequirement CheckRequirement(const IirOptions& options);

/// Raises unless ripple and attenuation, as far as they are given, are such and do not contradict each other.
void CheckDecibels(const IirOptions& options);

/// An order and the cut-offs to design it with, in the unit of the edges.
struct IirOrder {
  std::int32_t order = 0;
  std::vector<double> cutoffs;
};

/// The lowest order of the family that meets the requirement. Raises when ripple, attenuation or edges are missing.
IirOrder EstimateOrder(const IirFamily& family, const IirRequirement& requirement, const IirOptions& options);

/// Poles of a filter of this order.
std::int64_t PolesOf(const IirRequirement& requirement, std::int32_t order);

}  // namespace passband_cli
