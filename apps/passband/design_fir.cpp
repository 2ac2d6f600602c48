#include "design_fir.h"

#include <cstdint>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "failure.h"
#include "filter_response.h"
#include "fir_options.h"
#include "mask.h"
#include "output_file.h"
#include "plot.h"
#include "tap_design.h"
#include "tap_file.h"
#include "tap_response.h"

namespace passband_cli {
namespace {

struct Options {
  FirOptions fir;
  double rate_hz = 0;
  std::string format;
  std::string out;
  std::string plot;
  std::string mask;
  bool log_axis = false;
  std::string precision = "double";
};

TapFormat FormatOf(const Options& options) {
  if (!options.format.empty()) return options.format == "json" ? TapFormat::Json : TapFormat::Csv;
  return options.out.ends_with(".json") ? TapFormat::Json : TapFormat::Csv;
}

void Run(const Options& options) {
  if (!options.plot.empty()) CheckPlotPath(options.plot);
  const Mask mask = options.mask.empty() ? Mask{} : ReadMask(options.mask);
  const TapSet set = DesignTaps(options.fir, options.rate_hz, options.precision == "double");
  const std::string text = FormatTaps(set, FormatOf(options));
  if (!options.plot.empty()) DrawResponse(set, mask, options.log_axis, options.plot);
  WriteText(options.out, text);
  if (mask.empty()) return;
  constexpr std::int32_t kIntervals = 4096;
  const FilterResponse response(set);
  const ResponseTable table = response.Table(kIntervals);
  CheckMask(mask, {"", table.hz, table.decibels}, [&](double hz) { return response.DecibelsAt(hz); });
}

}  // namespace

void AddDesignFirCommand(CLI::App& design) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = design.add_subcommand("fir", "FIR filters: windowed, equiripple, fractional delay, fitted");
  AddFirOptions(*command, options->fir);
  command->add_option("--rate", options->rate_hz, "Sampling rate")->required()->type_name("HZ");
  AddPrecisionOption(*command, options->precision);
  command->add_option("--format", options->format, "csv or json [by the extension of --out, else csv]")
      ->check(CLI::IsMember({"csv", "json"}).description(""))
      ->type_name("NAME");
  command->add_option("--out", options->out, "File to write instead of standard output")->type_name("FILE");
  command->add_option("--plot", options->plot, "Draw the magnitude response into this .svg file")->type_name("FILE");
  command->add_flag("--log", options->log_axis, "A logarithmic frequency axis for --plot");
  command->add_option("--mask", options->mask, "Mask to draw and to check (see below)")->type_name("FILE");
  command->footer(
      FirHelp() + MaskHelp() +
      "Examples:\n"
      "  passband design fir --type lowpass --edges 3000,3500 --rate 48000 --attenuation 80\n"
      "  passband design fir --type bandpass --edges 200,300,3400,3500 --rate 48000 --out taps.json --plot taps.svg\n"
      "  passband design fir --method window --window blackman --length 101 --type highpass --edges 80 --rate 8000\n"
      "  passband design fir --method remez --type lowpass --edges 3000,3500 --rate 48000 --attenuation 80 --mask "
      "m.csv");
  command->callback([options] { Run(*options); });
}

}  // namespace passband_cli
