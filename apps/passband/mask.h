// Specification masks: what a response has to keep within, drawn and checked.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "plot.h"

namespace passband_cli {

/// The limits of one stretch of frequencies; infinite where there is none.
struct MaskBand {
  double from_hz = 0;
  double to_hz = 0;
  double lowest_db = 0;
  double highest_db = 0;
};
using Mask = std::vector<MaskBand>;

/// Reads a mask: CSV with the columns from, to (Hz), lowest, highest (dB); -inf and inf stand for no limit.
Mask ReadMask(const std::string& path);

/// What a mask file looks like, for the end of a command's help.
std::string MaskHelp();

/// Adds the limits to a picture, where its frequency axis shows them.
void DrawMask(const Mask& mask, Plot& plot);

/// Raises a `Failure` that tells the worst place where a response leaves the mask. The response is a dense curve in dB over
/// Hz, and a function that evaluates it at the ends of the stretches, between its points.
void CheckMask(const Mask& mask, const Curve& response, const std::function<double(double)>& at);

}  // namespace passband_cli
