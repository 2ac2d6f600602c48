#include "zoom_command.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "failure.h"
#include "fir_options.h"
#include "fir_type.h"
#include "mask.h"
#include "output_file.h"
#include "plot.h"
#include "recording_stretch.h"
#include "zoom_spectrum.h"

namespace passband_cli {
namespace {

using namespace passband;
using namespace passband::SignalUtils;

struct Options {
  StretchOptions stretch;
  double from_hz = 0;
  double to_hz = 0;
  std::int32_t points = 1024;
  std::string window = "hanning";
  std::optional<double> param;
  std::string out;
  std::string plot;
  std::string mask;
};

void Draw(const Options& options, const Curve& curve, const Mask& mask) {
  Plot plot;
  plot.title = fmt::format("{}, {} to {} Hz", options.stretch.in, options.from_hz, options.to_hz);
  plot.x_label = "Frequency in Hz";
  plot.y_label = "Level in dBFS";
  plot.x_min = options.from_hz;
  plot.x_max = options.to_hz;
  const auto [low, high] = std::minmax_element(curve.y.begin(), curve.y.end());
  plot.y_max = 10 * std::ceil((*high + 5) / 10);
  plot.y_min = std::clamp(10 * std::floor(*low / 10), plot.y_max - 140, plot.y_max - 20);
  plot.curves.push_back(curve);
  DrawMask(mask, plot);
  DrawSvg(plot, options.plot);
}

void CheckOptions(const Options& options) {
  constexpr std::int32_t kMostPoints = 1 << 24;
  if (!options.plot.empty()) CheckPlotPath(options.plot);
  if (options.points < 2 || options.points > kMostPoints) {
    Fail("--points: {} is not between 2 and {}", options.points, kMostPoints);
  }
}

void Run(const Options& options) {
  CheckOptions(options);
  const Mask mask = options.mask.empty() ? Mask{} : ReadMask(options.mask);
  const Stretch stretch = ReadStretch(options.stretch);
  CheckFrequencies("--from, --to", {options.from_hz, options.to_hz}, stretch.rate_hz);
  const TSignalWindowType window = WindowFromName(options.window);
  const ZoomWindow weights{window, WindowParam(window, options.window, options.param)};
  const Curve curve =
      ZoomSpectrum(stretch.samples, stretch.rate_hz, options.from_hz, options.to_hz, options.points, weights);
  if (!options.plot.empty()) Draw(options, curve, mask);
  std::string text = "frequency_hz,level_dbfs\n";
  for (std::size_t k = 0; k < curve.x.size(); ++k) {
    fmt::format_to(std::back_inserter(text), "{},{:.8g}\n", curve.x[k], curve.y[k]);
  }
  WriteText(options.out, text);
  const auto peak = static_cast<std::size_t>(std::max_element(curve.y.begin(), curve.y.end()) - curve.y.begin());
  fmt::print(stderr, "passband: note: the highest point is {:.2f} dBFS at {:.8g} Hz\n", curve.y[peak], curve.x[peak]);
  // Outside the stretch of frequencies that was asked for nothing is known.
  Mask inside;
  for (MaskBand band : mask) {
    band.from_hz = std::max(band.from_hz, options.from_hz);
    band.to_hz = std::min(band.to_hz, options.to_hz);
    if (band.from_hz <= band.to_hz) inside.push_back(band);
  }
  const double step = (options.to_hz - options.from_hz) / (options.points - 1);
  CheckMask(inside, curve,
            [&](double hz) { return curve.y[static_cast<std::size_t>(std::lround((hz - options.from_hz) / step))]; });
}

}  // namespace

void AddZoomCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command =
      app.add_subcommand("zoom", "Look at a few frequencies of a recording closely (chirp-z transform)");
  AddStretchOptions(*command, options->stretch);
  command->add_option("--from", options->from_hz, "First frequency")->required()->type_name("HZ");
  command->add_option("--to", options->to_hz, "Last frequency")->required()->type_name("HZ");
  command->add_option("--points", options->points, "Number of frequencies")->type_name("NUMBER")->capture_default_str();
  command->add_option("--window", options->window, "Window over the stretch")->type_name("NAME")->capture_default_str();
  command->add_option("--param", options->param, "Its parameter")->type_name("NUMBER");
  command->add_option("--out", options->out, "CSV file to write instead of standard output")->type_name("FILE");
  command->add_option("--plot", options->plot, "Draw the spectrum into this .svg file")->type_name("FILE");
  command->add_option("--mask", options->mask, "Mask to draw and to check (see below)")->type_name("FILE");
  command->footer(
      "Levels are those of a sine, relative to one of full scale. Windows: rectangular, hanning, hamming, flat-top,\n"
      "bartlett, blackman-harris, blackman-exact, cosine-tappered, blackman, kaiser, chebyshev, exponent.\n" +
      MaskHelp() +
      "Example:\n"
      "  passband zoom --in hum.wav --from 49 --to 51 --points 2001 --window flat-top --plot hum.svg");
  command->callback([options] { Run(*options); });
}

}  // namespace passband_cli
