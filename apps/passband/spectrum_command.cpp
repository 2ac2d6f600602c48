#include "spectrum_command.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "failure.h"
#include "fir_options.h"
#include "plot.h"
#include "recording_spectrum.h"

namespace passband_cli {
namespace {

struct Options {
  std::vector<std::string> in;
  std::string out;
  std::vector<double> band_hz;
  std::optional<double> rate_hz;
  double resolution_hz = 15;
};

constexpr double kLowestDb = -250;  // stands for silence

// Power density over frequency, the mean of all channels; without the bin of the mean value, which a logarithmic scale
// cannot show.
Curve SpectrumOf(const std::string& path, const Options& options, double& rate_hz) {
  const RecordingSpectrum recording = MeasureRecording(path, options.rate_hz, options.resolution_hz);
  rate_hz = recording.rate_hz;
  std::vector<double> mean(static_cast<std::size_t>(recording.spectrum.Segment() / 2 + 1));
  for (int c = 0; c < recording.channels; ++c) {
    const std::vector<double> bins = recording.spectrum.Bins(c);
    for (std::size_t k = 0; k < mean.size(); ++k) mean[k] += bins[k] / recording.channels;
  }
  const double spacing = rate_hz / recording.spectrum.Segment();
  Curve curve;
  curve.name = std::filesystem::path(path).filename().string();
  if (recording.channels > 1) curve.name += fmt::format(", mean of {} channels", recording.channels);
  for (std::size_t k = 1; k < mean.size(); ++k) {
    const double decibels = FullScaleDecibels(mean[k] / spacing);
    curve.x.push_back(static_cast<double>(k) * spacing);
    curve.y.push_back(decibels > kLowestDb ? decibels : kLowestDb);
  }
  return curve;
}

// From somewhat above the loudest point down to the quietest, at most 140 dB.
void SetLevels(Plot& plot) {
  double highest = kLowestDb;
  double lowest = std::numeric_limits<double>::max();
  for (const Curve& curve : plot.curves) {
    const auto [low, high] = std::minmax_element(curve.y.begin(), curve.y.end());
    highest = std::max(highest, *high);
    lowest = std::min(lowest, *low);
  }
  plot.y_max = 10 * std::ceil((highest + 5) / 10);
  plot.y_min = std::clamp(10 * std::floor(lowest / 10), plot.y_max - 140, plot.y_max - 20);
}

void Run(const Options& options) {
  constexpr double kLowestHz = 20;  // of what is heard; lower rates begin at a thousandth of theirs
  CheckPlotPath(options.out);
  CheckResolution(options.resolution_hz);
  Plot plot;
  plot.title = "Power spectrum";
  plot.x_label = "Frequency in Hz";
  plot.y_label = "Power density in dBFS per Hz";
  plot.log_x = true;
  plot.marks = options.band_hz;
  plot.x_max = 0;
  for (const std::string& path : options.in) {
    double rate_hz = 0;
    plot.curves.push_back(SpectrumOf(path, options, rate_hz));
    CheckFrequencies("--band", options.band_hz, rate_hz);
    plot.x_max = std::max(plot.x_max, rate_hz / 2);
  }
  plot.x_min = std::min(kLowestHz, plot.x_max / 500);
  SetLevels(plot);
  DrawSvg(plot, options.out);
}

}  // namespace

void AddSpectrumCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("plot-spectrum", "Draw the power spectra of recordings into one picture");
  command->add_option("--in", options->in, "Recording; may be given several times")
      ->required()
      ->allow_extra_args(false)
      ->type_name("FILE");
  command->add_option("--out", options->out, "Picture to write, .svg")->required()->type_name("FILE");
  AddNumberList(*command, "--band", options->band_hz, "Frequencies in Hz to mark");
  command->add_option("--rate", options->rate_hz, "Sampling rate of a CSV file")->type_name("HZ");
  command->add_option("--resolution", options->resolution_hz, "Distance of the frequencies shown, at most")
      ->type_name("HZ")
      ->capture_default_str();
  command->callback([options] { Run(*options); });
}

}  // namespace passband_cli
