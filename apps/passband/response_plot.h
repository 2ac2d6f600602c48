// Pictures of the response of a digital filter.
#pragma once

#include <string>

#include "filter_response.h"
#include "mask.h"

namespace passband_cli {

/// Draws magnitude with its mask, phase and group delay, over a linear or a logarithmic frequency axis.
void DrawTable(const ResponseTable& table, const Mask& mask, const std::string& title, bool log_axis,
               const std::string& path);

}  // namespace passband_cli
