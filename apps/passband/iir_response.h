// The response of an IIR filter, for plots.
#pragma once

#include <string>
#include <vector>

#include "iir_design.h"

namespace passband_cli {

/// What a filter does at one frequency.
struct ResponsePoint {
  double decibels = 0;  ///< of the magnitude
  double degrees = 0;   ///< continuous phase, which jumps by 180 at zeros on the frequency axis only
  double delay = 0;     ///< group delay in seconds
};

/// From zeros and poles, factor by factor. `frequency` is in Hz, of analog filters in rad/s.
ResponsePoint ResponseAt(const ZeroPole& roots, const IirRequirement& requirement, double frequency);

/// Draws magnitude, phase, group delay and the zeros and poles, over a linear or a logarithmic frequency axis.
void DrawIir(const IirDesign& design, bool log_axis, const std::string& path);

}  // namespace passband_cli
