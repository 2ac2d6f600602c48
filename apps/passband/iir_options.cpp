#include "iir_options.h"

#include <CLI/CLI.hpp>

#include "fir_options.h"

namespace passband_cli {

CLI::Option* AddRequirementOptions(CLI::App& command, IirOptions& options) {
  CLI::Option* family = command.add_option("--family", options.family, "butterworth, chebyshev1, chebyshev2, elliptic")
                            ->type_name("NAME");
  command.add_option("--type", options.type, "lowpass, highpass, bandpass or bandstop")->required()->type_name("NAME");
  AddNumberList(command, "--edges", options.edges, "Band edges in Hz, ascending: F1,F2,... (see below)")->required();
  command.add_option("--rate", options.rate_hz, "Sampling rate")->type_name("HZ");
  command.add_option("--ripple", options.ripple_db, "Largest loss in the pass band")->type_name("DB");
  command.add_option("--attenuation", options.attenuation_db, "Least loss in the stop band")->type_name("DB");
  command.add_flag("--analog", options.analog, "An analog filter: edges in rad/s, no --rate");
  return family;
}

void AddIirDesignOptions(CLI::App& command, IirOptions& options) {
  command.add_option("--order", options.order, "Order, of which band filters have twice as many poles [estimated]")
      ->type_name("NUMBER");
  command.add_option("--form", options.form, "sos (sections), zpk, ss or tf [sos; of analog filters zpk]")
      ->check(CLI::IsMember({"sos", "zpk", "ss", "tf"}).description(""))
      ->type_name("NAME");
  command
      .add_option("--route", options.route,
                  "zero-pole-analog, state-space-analog or zero-pole-discrete [the first; of ss the second]")
      ->type_name("NAME");
  AddPrecisionOption(command, options.precision);
}

std::string RequirementHelp() {
  return "Edges of a requirement, from which the order is estimated; --ripple and --attenuation are given too:\n"
         "  lowpass   2: end of the pass band, start of the stop band\n"
         "  highpass  2: end of the stop band, start of the pass band\n"
         "  bandpass  4: stop, pass, pass, stop\n"
         "  bandstop  4: pass, stop, stop, pass\n";
}

}  // namespace passband_cli
