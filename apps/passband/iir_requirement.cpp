#include "iir_requirement.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "failure.h"
#include "fir_options.h"

namespace passband_cli {
namespace {

using namespace passband;
using namespace passband::IIRFilters;
using enum passband::IIRFilters::TIirFilterMethod;
using passband::SignalUtils::TFilterType;

constexpr double kMostDecibels = 3000;  // the library's own limit

constexpr std::array kFamilies{
    IirFamily{"butterworth", fimButter, false, false},    IirFamily{"chebyshev1", fimChebyshevI, true, false},
    IirFamily{"chebyshev2", fimChebyshevII, false, true}, IirFamily{"elliptic", fimElliptic, true, true},
    IirFamily{"bessel", fimBessel, false, false},  // last: its order is not estimated
};

constexpr std::array kTypes{
    IirType{"lowpass", TFilterType::ftLowpass, 1},
    IirType{"highpass", TFilterType::ftHighpass, 1},
    IirType{"bandpass", TFilterType::ftBandpass, 2},
    IirType{"bandstop", TFilterType::ftBandstop, 2},
};

template <class Table>
const auto& FindByName(const Table& table, const std::string& option, const std::string& name) {
  std::string names;
  for (const auto& entry : table) {
    if (entry.name == name) return entry;
    names += fmt::format("{}{}", names.empty() ? "" : ", ", entry.name);
  }
  if (name.empty()) Fail("{} is required: {}", option, names);
  Fail("{}: '{}' is none of {}", option, name, names);
}

// The bilinear transform has no place for an edge at zero frequency or at half the sampling rate.
void CheckEdges(const IirRequirement& requirement) {
  const std::vector<double>& edges = requirement.edges;
  for (std::size_t k = 0; k < edges.size(); ++k) {
    if (!std::isfinite(edges[k])) Fail("--edges: {} is not a frequency", edges[k]);
    if (edges[k] <= 0) Fail("--edges: {} {} is not above 0", edges[k], requirement.Unit());
    if (!requirement.analog && edges[k] >= requirement.rate_hz / 2) {
      Fail("--edges: {} Hz is not below {} Hz, half the sampling rate", edges[k], requirement.rate_hz / 2);
    }
    if (k > 0 && !(edges[k - 1] < edges[k])) {
      Fail("--edges: {1} {2} after {0} {2}; frequencies must ascend", edges[k - 1], edges[k], requirement.Unit());
    }
  }
}

std::int32_t LibraryOrder(TIirFilterMethod method, OpenArray edges, double ripple, double attenuation, TFilterType type,
                          std::span<double> cutoffs, bool analog) {
  switch (method) {
    case fimButter:
      return ButterOrder(edges, ripple, attenuation, type, cutoffs, analog);
    case fimChebyshevI:
      return ChebyshevIOrder(edges, ripple, attenuation, type, cutoffs, analog);
    case fimChebyshevII:
      return ChebyshevIIOrder(edges, ripple, attenuation, type, cutoffs, analog);
    case fimElliptic:
      return EllipticOrder(edges, ripple, attenuation, type, cutoffs, analog);
    default:
      Fail("--order is required: it is not estimated for this family");
  }
}

}  // namespace

std::span<const IirFamily> EstimatedFamilies() { return std::span(kFamilies).first(kFamilies.size() - 1); }

const IirFamily& FamilyFromName(const std::string& name) { return FindByName(kFamilies, "--family", name); }

std::vector<double> IirRequirement::ToLibrary(std::span<const double> frequencies) const {
  std::vector<double> result(frequencies.begin(), frequencies.end());
  if (!analog) std::for_each(result.begin(), result.end(), [this](double& f) { f = 2 * f / rate_hz; });
  return result;
}

std::vector<double> IirRequirement::FromLibrary(std::span<const double> frequencies) const {
  std::vector<double> result(frequencies.begin(), frequencies.end());
  if (!analog) std::for_each(result.begin(), result.end(), [this](double& f) { f = f * rate_hz / 2; });
  return result;
}

IirRequirement CheckRequirement(const IirOptions& options) {
  IirRequirement requirement;
  requirement.type = &FindByName(kTypes, "--type", options.type);
  requirement.analog = options.analog;
  if (options.analog && options.rate_hz) Fail("--rate does not go with --analog, whose edges are in rad/s");
  if (!options.analog && !options.rate_hz) Fail("--rate is required: the sampling rate in Hz");
  if (options.rate_hz) {
    CheckRate(*options.rate_hz);
    requirement.rate_hz = *options.rate_hz;
  }
  requirement.edges = options.edges;
  CheckEdges(requirement);
  return requirement;
}

void CheckDecibels(const IirOptions& options) {
  const auto check = [](const char* name, const std::optional<double>& decibels) {
    if (decibels && !(*decibels > 0 && *decibels <= kMostDecibels)) {
      Fail("{}: {} dB is not between 0 and {}", name, *decibels, kMostDecibels);
    }
  };
  check("--ripple", options.ripple_db);
  check("--attenuation", options.attenuation_db);
  if (options.ripple_db && options.attenuation_db && !(*options.ripple_db < *options.attenuation_db)) {
    Fail("--attenuation: {} dB is not above the ripple of {} dB", *options.attenuation_db, *options.ripple_db);
  }
}

IirOrder EstimateOrder(const IirFamily& family, const IirRequirement& requirement, const IirOptions& options) {
  const IirType& type = *requirement.type;
  if (family.method == fimBessel) Fail("--order is required: that of a bessel filter is not estimated");
  if (requirement.edges.size() != 2 * type.cutoffs) {
    Fail("--edges: the order of a {} is estimated from {} frequencies, the ends of its transition bands; {} given",
         type.name, 2 * type.cutoffs, requirement.edges.size());
  }
  if (!options.ripple_db) Fail("--ripple is required: the largest loss in the pass band, in dB");
  if (!options.attenuation_db) Fail("--attenuation is required: the least loss in the stop band, in dB");
  IirOrder result;
  std::vector<double> cutoffs(type.cutoffs);
  try {
    result.order = LibraryOrder(family.method, requirement.ToLibrary(requirement.edges), *options.ripple_db,
                                *options.attenuation_db, type.type, cutoffs, requirement.analog);
  } catch (const ECoreError& error) {
    Fail("no {} filter can do that: {}", family.name, error.what());
  }
  result.cutoffs = requirement.FromLibrary(cutoffs);
  return result;
}

std::int64_t PolesOf(const IirRequirement& requirement, std::int32_t order) {
  return static_cast<std::int64_t>(requirement.type->cutoffs) * order;
}

}  // namespace passband_cli
