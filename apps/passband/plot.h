// Pictures of curves, drawn by gnuplot as SVG.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace passband_cli {

enum class Marker { Line, Circle, Cross, Limit };

struct Curve {
  std::string name;  ///< stands in the legend; without a name the curve has no entry
  std::vector<double> x;
  std::vector<double> y;  ///< as many as `x`, finite; a NaN interrupts the line
  Marker marker = Marker::Line;
};

/// A word beside a point.
struct Label {
  double x = 0;
  double y = 0;
  std::string text;
};

/// Colours over a rectangle, as of a spectrogram.
struct Image {
  std::vector<double> values;  ///< row by row from the bottom; finite
  std::size_t columns = 0;
  double lowest = 0;  ///< values at the ends of the palette
  double highest = 1;
  std::string label;  ///< of the palette
};

struct Plot {
  std::string title;
  std::string x_label;
  std::string y_label;
  bool log_x = false;
  bool same_scales = false;  ///< a circle is round
  double x_min = 0;
  double x_max = 1;
  double y_min = 0;
  double y_max = 1;
  std::vector<double> marks;  ///< dashed vertical lines
  std::vector<Curve> curves;
  std::vector<Label> labels;
  Image image;  ///< fills the axes, behind the curves; empty: none
};

/// Raises unless a plot can be written to the path: its extension must be .svg.
void CheckPlotPath(const std::string& path);

/// Draws the plot into an SVG file. Raises when gnuplot is not installed or fails, or the file cannot be written.
void DrawSvg(const Plot& plot, const std::string& path);

/// The same as the text of an SVG document, with names in it that begin with `prefix`.
std::string SvgOf(const Plot& plot, const std::string& prefix);

/// Draws plots side by side, two in a row, below a title of their own.
void DrawSvg(std::span<const Plot> panels, const std::string& title, const std::string& path);

}  // namespace passband_cli
