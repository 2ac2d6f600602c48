// Taps in files, as `passband design` writes them.
//
// CSV: the line "tap", then one tap a line. JSON: an object that tells how the taps were designed and holds them in the
// array "taps". Taps have 17 significant digits, from which every double is read back exactly.
#pragma once

#include <string>

#include "tap_design.h"

namespace passband_cli {

enum class TapFormat { Csv, Json };

/// The text of a tap file.
std::string FormatTaps(const TapSet& set, TapFormat format);

/// Reads a tap file of either format (also a JSON array alone, and CSV without its first line or in one row); what the
/// file does not tell stays unknown.
TapSet ReadTaps(const std::string& path, bool is_double);

}  // namespace passband_cli
