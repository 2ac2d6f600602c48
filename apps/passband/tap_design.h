// From the description of an FIR filter to its taps.
#pragma once

#include <string>
#include <vector>

#include <passband/passband.h>

#include "fir_options.h"

namespace passband_cli {

/// The taps of a filter and what is known about them.
struct TapSet {
  passband::TVec taps;           ///< real, double or single precision
  double rate_hz = 0;            ///< sampling rate they are meant for; 0 when unknown
  std::vector<double> edges_hz;  ///< band edges; empty when unknown
  std::string title;             ///< for people, as in "bandpass, kaiser, 870 taps"
  std::string record;            ///< how they were designed, a JSON object for tap files; empty when unknown
};

/// Checks the description and designs the filter. What cannot be designed as it was asked for raises a `Failure`; a
/// length that the type cannot have is moved to the next one, and an equiripple filter tells what it has reached, in
/// notes on standard error.
TapSet DesignTaps(const FirOptions& options, double rate_hz, bool is_double);

}  // namespace passband_cli
