#include "fir_options.h"

#include <cmath>

#include <CLI/CLI.hpp>

#include "failure.h"

namespace passband_cli {

std::vector<CLI::Option*> AddFirOptions(CLI::App& command, FirOptions& options) {
  std::vector<CLI::Option*> all;
  const auto keep = [&all](CLI::Option* option, const std::string& type_name) {
    option->group("Filter");
    if (!type_name.empty()) option->type_name(type_name);
    all.push_back(option);
  };
  keep(command.add_option("--type", options.type, "lowpass, highpass, bandpass, bandstop, or one of the types below"),
       "NAME");
  keep(AddNumberList(command, "--edges", options.edges_hz, "Band edges in Hz, ascending: F1,F2,... (see below)"), "HZ");
  keep(command.add_option("--method", options.method, "kaiser (length and window follow) or window (both are given)")
           ->check(CLI::IsMember({"kaiser", "window"}).description(""))
           ->capture_default_str(),
       "NAME");
  keep(command.add_option("--attenuation", options.attenuation_db, "kaiser: stopband attenuation in dB [60]"), "DB");
  keep(command.add_option("--ripple", options.ripple, "kaiser: instead, the largest deviation from the ideal, a ratio"),
       "RATIO");
  keep(command.add_flag("--odd", options.odd, "kaiser: an odd length, for a delay of whole samples"), "");
  keep(command.add_option("--length", options.length, "window: number of taps, 4 to 10000"), "TAPS");
  keep(command.add_option("--window", options.window, "window: its name (see below) [hamming]"), "NAME");
  keep(command.add_option("--param", options.param, "window: its parameter (see below)"), "NUMBER");
  keep(command.add_option("--gain", options.gain, "Gain in the passband, a ratio")->capture_default_str(), "RATIO");
  return all;
}

std::string FirHelp() {
  return "Types and their edges:\n"
         "  lowpass, highpass   kaiser: 2, the ends of the transition band; window: those, or 1, the cut-off\n"
         "  bandpass, bandstop  kaiser: 4, the ends of both transition bands; window: those, or 2, the cut-offs\n"
         "  hilbert3, hilbert4, differentiator3, differentiator4 (3: odd length, 4: even length)\n"
         "                      kaiser: 1, the upper end of the band; window: none\n"
         "Windows:\n"
         "  rectangular, hanning, hamming, flat-top, bartlett, blackman-harris, blackman-exact, cosine-tappered,\n"
         "  blackman (parameter: alpha, [-0.16]), kaiser (beta), chebyshev (side lobes in dB), exponent (end value)\n";
}

void AddPrecisionOption(CLI::App& command, std::string& precision) {
  command.add_option("--precision", precision, "double or single: of the taps and of the arithmetic")
      ->check(CLI::IsMember({"double", "single"}).description(""))
      ->type_name("NAME")
      ->capture_default_str();
}

CLI::Option* AddNumberList(CLI::App& command, const std::string& name, std::vector<double>& values,
                           const std::string& help) {
  return command.add_option(name, values, help)->delimiter(',')->allow_extra_args(false)->type_name("HZ");
}

void CheckRate(double rate_hz) {
  if (!(rate_hz > 0 && std::isfinite(rate_hz))) Fail("--rate: {} Hz is not a sampling rate", rate_hz);
}

void CheckFrequencies(const std::string& option, const std::vector<double>& frequencies_hz, double rate_hz) {
  for (std::size_t k = 0; k < frequencies_hz.size(); ++k) {
    const double frequency = frequencies_hz[k];
    if (!std::isfinite(frequency)) Fail("{}: {} is not a frequency", option, frequency);
    if (frequency < 0) Fail("{}: {} Hz is below 0", option, frequency);
    if (frequency > rate_hz / 2) {
      Fail("{}: {} Hz is above {} Hz, half the sampling rate", option, frequency, rate_hz / 2);
    }
    if (k > 0 && !(frequencies_hz[k - 1] < frequency)) {
      Fail("{}: {} Hz after {} Hz; frequencies must ascend", option, frequency, frequencies_hz[k - 1]);
    }
  }
}

}  // namespace passband_cli
