// The types of FIR filters that are described by band edges.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <passband/passband.h>

#include "fir_options.h"

namespace passband_cli {

struct FirType {
  std::string_view name;
  passband::SignalUtils::TFilterType type;
  std::size_t cutoffs;  ///< how many it has; 0: a type without a stop band
  bool only_remez;      ///< designed by the exchange method alone
};

inline constexpr std::int32_t kMostTaps = 10000;  // the library's own limit

/// The type of that name, or a `Failure` that lists the names.
const FirType& FirTypeFromName(const std::string& name);

/// The window of that name in lower case with or without signs between its words, or a `Failure`.
passband::SignalUtils::TSignalWindowType WindowFromName(const std::string& name);

/// The parameter of a window, after the checks of its range.
double WindowParam(passband::SignalUtils::TSignalWindowType window, const std::string& name,
                   const std::optional<double>& param);

/// The largest deviation that `--ripple` or `--attenuation` asks for, a ratio.
double RippleOf(const FirOptions& options);

/// Whether filters of a type have an odd (even) length only.
bool OddOnly(const FirType& type);
bool EvenOnly(const FirType& type);

}  // namespace passband_cli
