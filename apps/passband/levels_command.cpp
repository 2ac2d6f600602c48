#include "levels_command.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "failure.h"
#include "fir_options.h"
#include "output_file.h"
#include "recording_spectrum.h"

namespace passband_cli {
namespace {

struct Options {
  std::vector<std::string> in;
  std::vector<double> band_hz;
  std::optional<double> rate_hz;
  double guard_hz = 0;
  double resolution_hz = 5;
  std::string format = "table";
};

// The ends of what counts as outside.
double LowerEnd(const Options& options) { return std::max(options.band_hz[0] - options.guard_hz, 0.0); }
double UpperEnd(const Options& options) { return options.band_hz[1] + options.guard_hz; }

// Levels in dB relative to a sine of full scale, or differences of levels in dB.
struct Row {
  std::string name;
  double inside = 0;
  double outside = 0;
  double total = 0;
};

std::vector<Row> RowsOf(const std::string& path, const Options& options) {
  const RecordingSpectrum recording = MeasureRecording(path, options.rate_hz, options.resolution_hz);
  const double rate = recording.rate_hz;
  CheckFrequencies("--band", options.band_hz, rate);
  std::vector<Row> rows;
  for (int c = 0; c < recording.channels; ++c) {
    const std::vector<double> bins = recording.spectrum.Bins(c);
    const double inside = PowerBetween(bins, rate, options.band_hz[0], options.band_hz[1]);
    const double outside =
        PowerBetween(bins, rate, 0, LowerEnd(options)) + PowerBetween(bins, rate, UpperEnd(options), rate / 2);
    const double total = PowerBetween(bins, rate, 0, rate / 2);
    const std::string channel = recording.channels > 1 ? fmt::format(", channel {}", c + 1) : "";
    rows.push_back({path + channel, FullScaleDecibels(inside), FullScaleDecibels(outside), FullScaleDecibels(total)});
  }
  return rows;
}

// What two recordings of the same channels differ by, channel by channel.
std::vector<Row> Changes(const std::vector<Row>& before, const std::vector<Row>& after) {
  std::vector<Row> rows;
  for (std::size_t c = 0; c < before.size(); ++c) {
    const std::string channel = before.size() > 1 ? fmt::format(", channel {}", c + 1) : "";
    rows.push_back({"change in dB" + channel, after[c].inside - before[c].inside, after[c].outside - before[c].outside,
                    after[c].total - before[c].total});
  }
  return rows;
}

std::string FormatTable(const std::vector<Row>& rows, const std::vector<Row>& changes, const Options& options) {
  const std::string band = fmt::format("{}-{} Hz", options.band_hz[0], options.band_hz[1]);
  const std::string heading = "level in dBFS";
  std::size_t width = heading.size();
  for (const Row& row : rows) width = std::max(width, row.name.size());
  for (const Row& row : changes) width = std::max(width, row.name.size());
  const std::size_t column = std::max<std::size_t>(band.size(), 8);
  std::string text = fmt::format("{:<{}}  {:>{}}  {:>8}  {:>8}\n", heading, width, band, column, "outside", "total");
  const std::string rule(text.size() - 1, '-');
  const auto line = [&](const Row& row, bool change) {
    const auto number = [change](double value) {
      const double rounded = std::round(10 * value) / 10 + 0.0;  // no negative zero
      return change ? fmt::format("{:+.1f}", rounded) : fmt::format("{:.1f}", rounded);
    };
    fmt::format_to(std::back_inserter(text), "{:<{}}  {:>{}}  {:>8}  {:>8}\n", row.name, width, number(row.inside),
                   column, number(row.outside), number(row.total));
  };
  text += rule + "\n";
  for (const Row& row : rows) line(row, false);
  if (!changes.empty()) text += rule + "\n";
  for (const Row& row : changes) line(row, true);
  return text + fmt::format("0 dBFS is a sine of full scale; outside: below {} Hz and above {} Hz.\n",
                            LowerEnd(options), UpperEnd(options));
}

std::string FormatJson(const std::vector<Row>& rows, const Options& options) {
  // Silence has no level in dB; JSON has no infinity: null.
  const auto number = [](double value) { return std::isfinite(value) ? nlohmann::ordered_json(value) : nullptr; };
  nlohmann::ordered_json document;
  document["band_hz"] = options.band_hz;
  document["guard_hz"] = options.guard_hz;
  document["unit"] = "dBFS";
  document["levels"] = nlohmann::ordered_json::array();
  for (const Row& row : rows) {
    document["levels"].push_back({{"name", row.name},
                                  {"inside", number(row.inside)},
                                  {"outside", number(row.outside)},
                                  {"total", number(row.total)}});
  }
  return document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

void Run(const Options& options) {
  if (options.band_hz.size() != 2) Fail("--band takes 2 frequencies; {} given", options.band_hz.size());
  if (!(options.guard_hz >= 0 && std::isfinite(options.guard_hz)))
    Fail("--guard: {} Hz is not a width", options.guard_hz);
  CheckResolution(options.resolution_hz);
  std::vector<std::vector<Row>> files;
  for (const std::string& path : options.in) files.push_back(RowsOf(path, options));
  std::vector<Row> all;
  for (const std::vector<Row>& rows : files) all.insert(all.end(), rows.begin(), rows.end());
  const bool comparable = files.size() == 2 && files[0].size() == files[1].size();
  const std::vector<Row> changes = comparable ? Changes(files[0], files[1]) : std::vector<Row>();
  PrintText(options.format == "json" ? FormatJson(all, options) : FormatTable(all, changes, options));
}

}  // namespace

void AddLevelsCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("levels", "Measure the level of recordings inside and outside a band");
  command->add_option("--in", options->in, "Recording; of two, the change is told too")
      ->required()
      ->allow_extra_args(false)
      ->type_name("FILE");
  AddNumberList(*command, "--band", options->band_hz, "Lower and upper end of the band in Hz")->required();
  command->add_option("--guard", options->guard_hz, "Width beside the band that counts as neither inside nor outside")
      ->type_name("HZ")
      ->capture_default_str();
  command->add_option("--rate", options->rate_hz, "Sampling rate of a CSV file")->type_name("HZ");
  command->add_option("--resolution", options->resolution_hz, "Distance of the frequencies measured, at most")
      ->type_name("HZ")
      ->capture_default_str();
  command->add_option("--format", options->format, "table or json")
      ->check(CLI::IsMember({"table", "json"}).description(""))
      ->type_name("NAME")
      ->capture_default_str();
  command->callback([options] { Run(*options); });
}

}  // namespace passband_cli
