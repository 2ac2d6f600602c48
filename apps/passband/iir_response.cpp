#include "iir_response.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include <fmt/format.h>

#include "decibels.h"
#include "plot.h"

namespace passband_cli {
namespace {

using Complex = std::complex<double>;

constexpr double kPi = std::numbers::pi;
constexpr std::size_t kPoints = 1200;
constexpr std::size_t kMostRefined = 200;  // poles, each of which adds points
constexpr double kLogSpan = 1000;          // upper to lower end of a logarithmic frequency axis
constexpr double kOnAxis = 1e-9;           // distance from the frequency axis within which a zero lies on it

// One factor x - r on the frequency axis: of a digital filter 1 - r / z at z = e^jw, for which e^jw is the same in
// numerator and denominator; of an analog one jw - r. Its angle is continuous in w as long as r does not leave the left
// half plane or the unit disk.
struct Factor {
  double magnitude;
  double angle;
  double slope;  // d angle / d w
};

Factor DigitalFactor(Complex root, double w) {
  const Complex difference = 1.0 - root * std::polar(1.0, -w);
  const double square = std::norm(difference);
  // Re(u / (1 - u)), u = r / z, is ((1 - |u|^2) / |1 - u|^2 - 1) / 2; of a root on the circle -1/2 everywhere.
  const double distance = 1 - std::norm(root);
  const double slope = std::abs(distance) < kOnAxis ? -0.5 : (distance / square - 1) / 2;
  return {std::sqrt(square), std::arg(difference), slope};
}

Factor AnalogFactor(Complex root, double w) {
  const Complex difference = Complex(0, w) - root;
  const double square = std::norm(difference);
  const bool on_axis = std::abs(root.real()) <= kOnAxis * std::abs(root);
  return {std::sqrt(square), std::arg(difference), on_axis ? 0 : -root.real() / square};
}

// Frequencies over the axis, and more of them where a root makes the response change fast.
std::vector<double> Grid(const ZeroPole& roots, const IirRequirement& requirement, double low, double high, bool log) {
  std::vector<double> grid;
  for (std::size_t n = 0; n <= kPoints; ++n) {
    const double place = static_cast<double>(n) / kPoints;
    grid.push_back(log ? low * std::pow(high / low, place) : low + (high - low) * place);
  }
  const auto refine = [&](Complex root) {
    const double centre = requirement.analog ? root.imag() : std::arg(root);
    const double width = requirement.analog ? std::abs(root.real()) : std::abs(1 - std::abs(root));
    const double unit = requirement.analog ? 1 : requirement.rate_hz / (2 * kPi);
    for (int n = -16; n <= 16; ++n) grid.push_back((centre + n * width / 4) * unit);
  };
  if (roots.poles.size() <= kMostRefined) {
    for (const Complex pole : roots.poles) refine(pole);
    for (const Complex zero : roots.zeros) refine(zero);
  }
  std::erase_if(grid, [low, high](double f) { return !(f >= low && f <= high); });
  std::sort(grid.begin(), grid.end());
  return grid;
}

// The roots, with the number of those that lie upon each other beside them.
Curve RootPicture(const std::vector<Complex>& roots, const std::string& name, Marker marker, Plot& plot) {
  constexpr double kSame = 1e-6;
  Curve curve;
  curve.name = name;
  curve.marker = marker;
  std::vector<Complex> seen;
  for (const Complex root : roots) {
    const auto near = [root](Complex other) { return std::abs(root - other) <= kSame * (std::abs(root) + 1e-300); };
    if (std::any_of(seen.begin(), seen.end(), near)) continue;
    seen.push_back(root);
    curve.x.push_back(root.real());
    curve.y.push_back(root.imag());
    const auto count = std::count_if(roots.begin(), roots.end(), near);
    if (count > 1) plot.labels.push_back({root.real(), root.imag(), fmt::format("{}", count)});
  }
  return curve;
}

Plot RootPlot(const ZeroPole& roots, const IirRequirement& requirement) {
  Plot plot;
  const char* const plane = requirement.analog ? "s" : "z";
  plot.title = "Zeros and poles";
  plot.x_label = fmt::format("Re {}", plane);
  plot.y_label = fmt::format("Im {}", plane);
  plot.same_scales = true;
  Curve axis;  // the unit circle, or the imaginary axis
  double extent = requirement.analog ? 0 : 1;
  for (const Complex root : roots.poles) extent = std::max(extent, std::abs(root));
  for (const Complex root : roots.zeros) {
    extent = std::max(extent, std::min(std::abs(root), requirement.analog ? 1e300 : 3.0));
  }
  plot.x_max = plot.y_max = 1.2 * extent;
  plot.x_min = plot.y_min = -plot.x_max;
  for (int n = 0; n <= 360; ++n) {
    const double turn = 2 * kPi * n / 360;
    axis.x.push_back(requirement.analog ? 0 : std::cos(turn));
    axis.y.push_back(requirement.analog ? plot.y_max * (n / 180.0 - 1) : std::sin(turn));
  }
  plot.curves.push_back(axis);
  plot.curves.push_back(RootPicture(roots.poles, "poles", Marker::Cross, plot));
  if (!roots.zeros.empty()) plot.curves.push_back(RootPicture(roots.zeros, "zeros", Marker::Circle, plot));
  return plot;
}

void SetRange(Plot& plot) {
  const std::vector<double>& values = plot.curves[0].y;
  const auto [low, high] = std::minmax_element(values.begin(), values.end());
  const double span = std::max(*high - *low, 1e-9 * std::abs(*high));
  plot.y_min = *low - 0.05 * span;
  plot.y_max = *high + 0.05 * span;
}

void SetDecibelRange(Plot& plot, double lowest) {
  const std::vector<double>& decibels = plot.curves[0].y;
  plot.y_max = 10 * std::ceil((*std::max_element(decibels.begin(), decibels.end()) + 1) / 10);
  plot.y_min = plot.y_max - 20 * std::ceil((lowest + 30) / 20);
}

// The delay from 0 on, in a unit of which it is more than one.
void SetDelayRange(Plot& plot) {
  std::vector<double>& delay = plot.curves[0].y;
  const double highest = *std::max_element(delay.begin(), delay.end());
  const double scale = highest >= 1 ? 1 : highest >= 1e-3 ? 1e3 : 1e6;
  for (double& value : delay) value *= scale;
  plot.y_label = fmt::format("Delay in {}", highest >= 1 ? "s" : highest >= 1e-3 ? "ms" : "µs");
  SetRange(plot);
  if (plot.y_min > 0) plot.y_min = 0;
}

}  // namespace

ResponsePoint ResponseAt(const ZeroPole& roots, const IirRequirement& requirement, double frequency) {
  const bool analog = requirement.analog;
  const double w = analog ? frequency : 2 * kPi * frequency / requirement.rate_hz;
  const auto lag = static_cast<double>(roots.poles.size()) - static_cast<double>(roots.zeros.size());
  double decibels = 20 * std::log10(std::abs(roots.gain));
  double angle = roots.gain < 0 ? kPi : 0;
  double slope = 0;
  if (!analog) {  // the factors are written in 1 / z
    angle -= lag * w;
    slope -= lag;
  }
  const auto add = [&](Complex root, int sign) {
    const Factor factor = analog ? AnalogFactor(root, w) : DigitalFactor(root, w);
    decibels += sign * 20 * std::log10(factor.magnitude);
    angle += sign * factor.angle;
    slope += sign * factor.slope;
  };
  for (const Complex zero : roots.zeros) add(zero, 1);
  for (const Complex pole : roots.poles) add(pole, -1);
  return {std::max(decibels, kLowestDb), angle * 180 / kPi, analog ? -slope : -slope / requirement.rate_hz};
}

void DrawIir(const IirDesign& design, bool log_axis, const std::string& path) {
  const IirRequirement& requirement = design.requirement;
  const ZeroPole roots = RootsOf(design);
  Plot frame;
  frame.x_label = requirement.analog ? "Angular frequency in rad/s" : "Frequency in Hz";
  frame.log_x = log_axis;
  frame.x_max = requirement.analog ? 4 * design.order.cutoffs.back() : requirement.rate_hz / 2;
  frame.x_min = log_axis ? std::min(frame.x_max / kLogSpan, design.order.cutoffs.front() / 10) : 0;
  for (const double edge : requirement.edges) {
    if (edge > frame.x_min && edge < frame.x_max) frame.marks.push_back(edge);
  }
  frame.curves.resize(1);
  Plot magnitude = frame;
  Plot phase = frame;
  Plot delay = frame;
  for (const double f : Grid(roots, requirement, frame.x_min, frame.x_max, log_axis)) {
    const ResponsePoint point = ResponseAt(roots, requirement, f);
    for (Plot* plot : {&magnitude, &phase, &delay}) plot->curves[0].x.push_back(f);
    magnitude.curves[0].y.push_back(point.decibels);
    phase.curves[0].y.push_back(point.degrees);
    delay.curves[0].y.push_back(point.delay);
  }
  magnitude.title = "Magnitude";
  magnitude.y_label = "Gain in dB";
  SetDecibelRange(magnitude, design.options.attenuation_db.value_or(80));
  phase.title = "Phase";
  phase.y_label = "Phase in degrees";
  SetRange(phase);
  delay.title = "Group delay";
  SetDelayRange(delay);
  DrawSvg(std::vector{magnitude, phase, delay, RootPlot(roots, requirement)}, design.title, path);
}

}  // namespace passband_cli
