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
  keep(command.add_option("--method", options.method, "kaiser, window, remez, fractional, savgol, inverse or noise")
           ->check(
               CLI::IsMember({"kaiser", "window", "remez", "fractional", "savgol", "inverse", "noise"}).description(""))
           ->capture_default_str(),
       "NAME");
  keep(command.add_option("--attenuation", options.attenuation_db,
                          "kaiser, fractional, remez: stopband attenuation in dB [60]"),
       "DB");
  keep(command.add_option("--ripple", options.ripple, "instead, the largest deviation from the ideal, a ratio"),
       "RATIO");
  keep(command.add_flag("--odd", options.odd, "kaiser, remez: an odd length, for a delay of whole samples"), "");
  keep(command.add_option("--length", options.length, "window, remez, savgol, inverse: number of taps, to 10000"),
       "TAPS");
  keep(command.add_option("--window", options.window, "window, inverse: its name (see below) [hamming]"), "NAME");
  keep(command.add_option("--param", options.param, "window: its parameter (see below)"), "NUMBER");
  keep(AddNumberList(command, "--weights", options.weights, "remez: weight of the error in each band, W1,W2,... [1]"),
       "NUMBER");
  keep(command.add_option("--fraction", options.fraction, "fractional: part of a sample, 0 to 1, by which it delays"),
       "SAMPLES");
  keep(command.add_option("--order", options.order, "savgol: degree of the polynomial"), "NUMBER");
  keep(command.add_option("--derivative", options.derivative, "savgol: 1 for the slope of the signal, ... [0]"),
       "NUMBER");
  keep(command.add_option("--amplitude", options.amplitude, "inverse: CSV file of frequencies in Hz and gains in dB"),
       "FILE");
  keep(command.add_flag("--invert", options.invert, "inverse: make up for these gains"), "");
  keep(command.add_option("--slope", options.slope_db, "noise: fall of the gain in dB per decade, 10 for pink"), "DB");
  keep(command.add_option("--gain", options.gain, "Gain in the passband, a ratio")->capture_default_str(), "RATIO");
  return all;
}

std::string FirHelp() {
  return "Methods:\n"
         "  kaiser      ideal response and Kaiser window; length and window follow from --edges and --attenuation\n"
         "  window      ideal response and a window; --length, --window\n"
         "  remez       equiripple, the shortest for a deviation; --length, or it is estimated from --attenuation\n"
         "  fractional  like kaiser, with a delay of (taps - 1) / 2 - 1 samples plus --fraction\n"
         "  savgol      Savitzky-Golay: a polynomial of degree --order fitted to --length samples\n"
         "  inverse     gains at single frequencies from 0 to half the rate; --amplitude, --length, --window\n"
         "  noise       makes coloured noise of white noise; --slope from the frequency in --edges on\n"
         "Types and their edges:\n"
         "  lowpass, highpass   2, the ends of the transition band; window: those, or 1, the cut-off\n"
         "  bandpass, bandstop  4, the ends of both transition bands; window: those, or 2, the cut-offs\n"
         "  hilbert3, hilbert4, differentiator3, differentiator4 (3: odd length, 4: even length)\n"
         "                      remez: 2, the ends of the band; kaiser, fractional: its upper end; window: none\n"
         "  integrator3, integrator4, double-differentiator3, double-differentiator4, double-integrator3,\n"
         "  double-integrator4  remez: 2, the ends of the band\n"
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
