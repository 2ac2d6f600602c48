// Pictures of curves, drawn by gnuplot as SVG.
#pragma once

#include <string>
#include <vector>

namespace passband_cli {

struct Curve {
  std::string name;  ///< stands in the legend; without a name the curve has no entry
  std::vector<double> x;
  std::vector<double> y;  ///< as many as `x`, finite
};

struct Plot {
  std::string title;
  std::string x_label;
  std::string y_label;
  bool log_x = false;
  double x_min = 0;
  double x_max = 1;
  double y_min = 0;
  double y_max = 1;
  std::vector<double> marks;  ///< dashed vertical lines
  std::vector<Curve> curves;
};

/// Raises unless a plot can be written to the path: its extension must be .svg.
void CheckPlotPath(const std::string& path);

/// Draws the plot into an SVG file. Raises when gnuplot is not installed or fails, or the file cannot be written.
void DrawSvg(const Plot& plot, const std::string& path);

}  // namespace passband_cli
