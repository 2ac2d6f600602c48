// The magnitude response of an FIR filter, for plots.
#pragma once

#include <string>

#include "mask.h"
#include "plot.h"
#include "tap_design.h"

namespace passband_cli {

/// |H(f)| in dB from 0 to half the sampling rate, dense enough to show every lobe, over either kind of axis.
Curve MagnitudeResponse(const TapSet& set, bool log_axis);

/// Draws the magnitude response with its band edges and a mask, over a linear or a logarithmic frequency axis.
void DrawResponse(const TapSet& set, const Mask& mask, bool log_axis, const std::string& path);

}  // namespace passband_cli
