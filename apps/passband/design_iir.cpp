#include "design_iir.h"

#include <cstdio>
#include <memory>
#include <string>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "iir_design.h"
#include "iir_file.h"
#include "iir_options.h"
#include "iir_response.h"
#include "output_file.h"
#include "plot.h"

namespace passband_cli {
namespace {

struct Options {
  IirOptions iir;
  std::string format;
  std::string out;
  std::string plot;
  bool log_axis = false;
};

IirFormat FormatOf(const Options& options) {
  const auto is = [&options](const char* name, const char* extension) {
    return options.format.empty() ? options.out.ends_with(extension) : options.format == name;
  };
  if (is("json", ".json")) return IirFormat::Json;
  return is("c", ".c") || is("c", ".h") ? IirFormat::C : IirFormat::Csv;
}

void Run(const Options& options) {
  if (!options.plot.empty()) CheckPlotPath(options.plot);
  const IirDesign design = DesignIir(options.iir);
  const std::string text = FormatIir(design, FormatOf(options));
  if (!options.plot.empty()) DrawIir(design, options.log_axis, options.plot);
  WriteText(options.out, text);
  if (!options.iir.order) fmt::print(stderr, "passband: note: the requirement takes: {}\n", design.title);
  if (design.options.form == "tf") {
    fmt::print(stderr,
               "passband: warning: a transfer function is fragile: rounding its coefficients moves the poles, even "
               "out of the unit circle; filter with sections (--form sos)\n");
  }
}

}  // namespace

void AddDesignIirCommand(CLI::App& design) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = design.add_subcommand("iir", "IIR filters: Butterworth, Chebyshev, elliptic, Bessel");
  AddRequirementOptions(*command, options->iir)
      ->required()
      ->description("butterworth, chebyshev1, chebyshev2, elliptic or bessel");
  AddIirDesignOptions(*command, options->iir);
  command->add_option("--format", options->format, "csv, json or c (arrays) [by the extension of --out, else csv]")
      ->check(CLI::IsMember({"csv", "json", "c"}).description(""))
      ->type_name("NAME");
  command->add_option("--out", options->out, "File to write instead of standard output")->type_name("FILE");
  command
      ->add_option("--plot", options->plot, "Draw magnitude, phase, group delay, zeros and poles into this .svg file")
      ->type_name("FILE");
  command->add_flag("--log", options->log_axis, "A logarithmic frequency axis for --plot");
  command->footer(
      RequirementHelp() +
      "With --order the edges are the cut-offs, 1 or 2: the 3 dB points (butterworth), the ends of the pass band\n"
      "(chebyshev1, elliptic) or of the stop band (chebyshev2); chebyshev1 and elliptic filters take --ripple too,\n"
      "chebyshev2 and elliptic filters --attenuation. bessel filters need --order.\n"
      "Sections are the form to filter with ('passband filter --sections'). A transfer function is fragile: that of a\n"
      "butterworth bandpass of order 5 from 1 to 2 Hz at 200 Hz, rounded to double precision, blows up.\n"
      "Examples:\n"
      "  passband design iir --family elliptic --type bandpass --edges 200,300,3400,4000 --rate 48000 --ripple 1 \\\n"
      "    --attenuation 60 --out sections.json --plot design.svg --log\n"
      "  passband design iir --family butterworth --type lowpass --order 4 --edges 1000 --rate 48000 --format c");
  command->callback([options] { Run(*options); });
}

}  // namespace passband_cli
