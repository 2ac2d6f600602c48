#include "response_plot.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "plot.h"

namespace passband_cli {
namespace {

constexpr double kLogSpan = 1000;  // upper to lower end of a logarithmic frequency axis

Plot Panel(const Plot& frame, const char* title, const char* label, const std::vector<double>& x,
           const std::vector<double>& y) {
  Plot plot = frame;
  plot.title = title;
  plot.y_label = label;
  plot.curves.push_back({"", x, y});
  const auto [low, high] = std::minmax_element(y.begin(), y.end());
  const double span = std::max(*high - *low, 1e-9 * std::abs(*high) + 1e-300);
  plot.y_min = *low - 0.05 * span;
  plot.y_max = *high + 0.05 * span;
  return plot;
}

// Down to below most of the stop band, but not to its zeros.
void SetDecibelRange(Plot& plot) {
  std::vector<double> decibels = plot.curves[0].y;
  plot.y_max = 10 * std::ceil((*std::max_element(decibels.begin(), decibels.end()) + 1) / 10);
  const auto tenth = decibels.begin() + static_cast<std::ptrdiff_t>(decibels.size() / 10);
  std::nth_element(decibels.begin(), tenth, decibels.end());
  plot.y_min = std::clamp(20 * std::floor(*tenth / 20) - 20, plot.y_max - 340, plot.y_max - 20);
}

}  // namespace

void DrawTable(const ResponseTable& table, const Mask& mask, const std::string& title, bool log_axis,
               const std::string& path) {
  Plot frame;
  frame.x_label = "Frequency in Hz";
  frame.log_x = log_axis;
  frame.x_max = table.hz.back();
  frame.x_min = log_axis ? frame.x_max / kLogSpan : 0;
  Plot magnitude = Panel(frame, "Magnitude", "Gain in dB", table.hz, table.decibels);
  SetDecibelRange(magnitude);
  DrawMask(mask, magnitude);
  std::vector<double> milliseconds = table.delay_s;
  for (double& delay : milliseconds) delay *= 1e3;
  DrawSvg(std::vector{magnitude, Panel(frame, "Phase", "Phase in degrees", table.hz, table.degrees),
                      Panel(frame, "Group delay", "Delay in ms", table.hz, milliseconds)},
          title, path);
}

}  // namespace passband_cli
