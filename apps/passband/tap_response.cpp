#include "tap_response.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

#include "decibels.h"

namespace passband_cli {
namespace {

using namespace passband;

constexpr std::size_t kMostPoints = 8192;
constexpr double kLogSpan = 1000;  // upper to lower end of a logarithmic frequency axis

// The lower end of the picture: below the lobes of the stopband, but not down to its zeros.
double LowerEnd(std::vector<double> decibels) {
  const auto tenth = decibels.begin() + static_cast<std::ptrdiff_t>(decibels.size() / 10);
  std::nth_element(decibels.begin(), tenth, decibels.end());
  return std::max(20 * std::floor(*tenth / 20) - 20, -320.0);
}

}  // namespace

Curve MagnitudeResponse(const TapSet& set, bool log_axis) {
  const auto length = static_cast<std::uint32_t>(set.taps.Length());
  const auto size = static_cast<std::int32_t>(std::bit_ceil(std::max(16 * length, std::uint32_t{16384})));
  TVec response;
  response.Size(size, false, true);
  response.SetZero();
  for (std::int32_t n = 0; n < set.taps.Length(); ++n) response.SetDefault(n, set.taps[n]);
  response.FFT();
  const std::span<const TCplx> bins = response.CValues();

  // Of several points that fall on one place of the picture the highest is shown.
  Curve curve;
  std::size_t stride = std::max<std::size_t>(bins.size() / kMostPoints, 1);
  for (std::size_t k = 0; k < bins.size(); k += stride) {
    if (log_axis) stride = std::max<std::size_t>(k / (kMostPoints / 8), 1);
    double highest = kLowestDb;
    for (std::size_t i = k; i < std::min(k + stride, bins.size()); ++i)
      highest = std::max(highest, Decibels(CAbs(bins[i])));
    curve.x.push_back(set.rate_hz * static_cast<double>(k) / size);
    curve.y.push_back(highest);
  }
  return curve;
}

void DrawResponse(const TapSet& set, const Mask& mask, bool log_axis, const std::string& path) {
  Plot plot;
  plot.title = "Magnitude response: " + set.title;
  plot.x_label = "Frequency in Hz";
  plot.y_label = "Gain in dB";
  plot.log_x = log_axis;
  plot.x_min = log_axis ? set.rate_hz / 2 / kLogSpan : 0;
  plot.x_max = set.rate_hz / 2;
  plot.curves.push_back(MagnitudeResponse(set, log_axis));
  const std::vector<double>& decibels = plot.curves.front().y;
  plot.y_max = 10 * std::ceil((*std::max_element(decibels.begin(), decibels.end()) + 5) / 10);
  plot.y_min = std::min(LowerEnd(decibels), plot.y_max - 20);
  for (const double edge : set.edges_hz) {
    if (edge > plot.x_min && edge < plot.x_max) plot.marks.push_back(edge);
  }
  DrawMask(mask, plot);
  DrawSvg(plot, path);
}

}  // namespace passband_cli
