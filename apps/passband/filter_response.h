// The frequency response of digital filters, from taps or sections.
#pragma once

#include <string>
#include <vector>

#include <passband/passband.h>

#include "plot.h"
#include "section_file.h"
#include "tap_design.h"

namespace passband_cli {

/// A response on equally spaced frequencies from 0 to half the sampling rate.
struct ResponseTable {
  std::vector<double> hz;
  std::vector<double> decibels;
  std::vector<double> degrees;  ///< continuous phase, which jumps by 180 at zeros on the unit circle
  std::vector<double> delay_s;  ///< group delay
};

class FilterResponse {
 public:
  explicit FilterResponse(const TapSet& set);
  explicit FilterResponse(const SectionSet& set, double rate_hz);

  /// At least `intervals` between neighbouring frequencies, a power of two; more when the filter is long.
  ResponseTable Table(std::int32_t intervals) const;
  /// The gain at one frequency, which need not be on the grid.
  double DecibelsAt(double hz) const;

 private:
  // One quotient of polynomials in 1 / z; without a denominator an FIR filter.
  struct Part {
    passband::TVec numerator;
    passband::TVec denominator;
  };
  std::vector<Part> parts_;
  double rate_hz_;
};

}  // namespace passband_cli
