// The methods by which an FIR filter is designed: each fills in the taps, the marks and the record of a filter whose
// method is chosen and whose options belong to it.
#pragma once

#include <nlohmann/json.hpp>

#include "fir_options.h"
#include "tap_design.h"

namespace passband_cli {

/// A design that is being made.
struct TapDesign {
  const FirOptions& options;
  bool is_double;
  TapSet set;                       // rate_hz is there from the start
  nlohmann::ordered_json record{};  // kind and rate_hz are there from the start
};

// By the window method.
void DesignByWindow(TapDesign& design);
void DesignByKaiser(TapDesign& design);
void DesignFractional(TapDesign& design);
// By the exchange method; tells what has been reached on standard error.
void DesignByRemez(TapDesign& design);
// Without band edges.
void DesignSavGol(TapDesign& design);
void DesignInverse(TapDesign& design);
void DesignNoise(TapDesign& design);

}  // namespace passband_cli
