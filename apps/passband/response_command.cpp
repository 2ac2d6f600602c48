#include "response_command.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "failure.h"
#include "filter_response.h"
#include "fir_options.h"
#include "mask.h"
#include "output_file.h"
#include "plot.h"
#include "response_plot.h"
#include "section_file.h"
#include "tap_file.h"

namespace passband_cli {
namespace {

struct Options {
  std::string taps;
  std::string sections;
  std::optional<double> rate_hz;
  std::int32_t points = 512;
  std::string out;
  std::string plot;
  std::string mask;
  bool log_axis = false;
};

// The filter of the file that was named, its rate and its title.
struct Subject {
  FilterResponse response;
  double rate_hz;
  std::string title;
};

double RateOf(const Options& options, double rate_hz, const std::string& path) {
  if (options.rate_hz) CheckRate(*options.rate_hz);
  const double rate = options.rate_hz.value_or(rate_hz);
  if (!(rate > 0)) Fail("--rate is required: {} does not tell its sampling rate", path);
  return rate;
}

Subject Read(const Options& options) {
  if (!options.sections.empty()) {
    const SectionSet set = ReadSections(options.sections, true);
    const double rate = RateOf(options, set.rate_hz, options.sections);
    return {FilterResponse(set, rate), rate, set.title};
  }
  if (options.taps.empty()) Fail("a filter is required: --taps FILE or --sections FILE");
  TapSet set = ReadTaps(options.taps, true);
  set.rate_hz = RateOf(options, set.rate_hz, options.taps);
  return {FilterResponse(set), set.rate_hz, set.title};
}

// Every so many rows of a dense table, both ends among them.
std::string FormatTable(const ResponseTable& table, std::size_t intervals) {
  const std::size_t step = std::max<std::size_t>((table.hz.size() - 1) / intervals, 1);
  std::string text = "frequency_hz,gain_db,phase_deg,delay_s\n";
  for (std::size_t k = 0; k < table.hz.size(); k += step) {
    fmt::format_to(std::back_inserter(text), "{},{:.10g},{:.10g},{:.10g}\n", table.hz[k], table.decibels[k],
                   table.degrees[k], table.delay_s[k]);
  }
  return text;
}

void Run(const Options& options) {
  constexpr std::int32_t kMostPoints = 1 << 20;
  if (options.points < 1 || options.points > kMostPoints) {
    Fail("--points: {} is not between 1 and {}", options.points, kMostPoints);
  }
  if (!options.plot.empty()) CheckPlotPath(options.plot);
  const Mask mask = options.mask.empty() ? Mask{} : ReadMask(options.mask);
  const Subject subject = Read(options);
  const auto intervals = static_cast<std::int32_t>(std::bit_ceil(static_cast<std::uint32_t>(options.points)));
  const ResponseTable table = subject.response.Table(std::max(intervals, 4096));
  if (!options.plot.empty()) DrawTable(table, mask, subject.title, options.log_axis, options.plot);
  WriteText(options.out, FormatTable(table, static_cast<std::size_t>(intervals)));
  if (mask.empty()) return;
  const Curve curve{"", table.hz, table.decibels};
  CheckMask(mask, curve, [&](double hz) { return subject.response.DecibelsAt(hz); });
}

}  // namespace

void AddResponseCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("response", "Tell what a filter does over frequency");
  CLI::Option* taps = command->add_option("--taps", options->taps, "Tap file of 'passband design fir'");
  taps->type_name("FILE");
  command->add_option("--sections", options->sections, "Section file of 'passband design iir'")
      ->type_name("FILE")
      ->excludes(taps);
  command->add_option("--rate", options->rate_hz, "Sampling rate, when the file does not tell it")->type_name("HZ");
  command->add_option("--points", options->points, "Frequency intervals of the table, made a power of two")
      ->type_name("NUMBER")
      ->capture_default_str();
  command->add_option("--out", options->out, "CSV file to write instead of standard output")->type_name("FILE");
  command->add_option("--plot", options->plot, "Draw magnitude, phase and group delay into this .svg file")
      ->type_name("FILE");
  command->add_flag("--log", options->log_axis, "A logarithmic frequency axis for --plot");
  command->add_option("--mask", options->mask, "Mask to draw and to check (see below)")->type_name("FILE");
  command->footer(
      MaskHelp() +
      "Example:\n"
      "  passband response --sections sections.json --mask mask.csv --plot response.svg --out response.csv");
  command->callback([options] { Run(*options); });
}

}  // namespace passband_cli
