// The command line's description of an FIR filter, shared by the commands that design one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace passband_cli {

/// What was said on the command line, unchecked; frequencies in Hz.
struct FirOptions {
  std::string method = "kaiser";
  std::string type;
  std::vector<double> edges_hz;
  std::optional<std::int32_t> length;
  std::optional<std::string> window;
  std::optional<double> param;
  std::optional<double> ripple;
  std::optional<double> attenuation_db;
  std::vector<double> weights;
  std::optional<double> fraction;
  std::optional<std::int32_t> order;
  std::optional<std::int32_t> derivative;
  std::optional<std::string> amplitude;
  std::optional<double> slope_db;
  double gain = 1;
  bool odd = false;
  bool invert = false;
};

/// Adds the options to a command, in a group of their own in its help; returns them, `--type` first.
std::vector<CLI::Option*> AddFirOptions(CLI::App& command, FirOptions& options);

/// What the options' one-line descriptions have no room for, for the end of a command's help.
std::string FirHelp();

/// Adds `--precision double|single`.
void AddPrecisionOption(CLI::App& command, std::string& precision);

/// An option that takes frequencies separated by commas.
CLI::Option* AddNumberList(CLI::App& command, const std::string& name, std::vector<double>& values,
                           const std::string& help);

/// Raises unless the sampling rate is a finite positive number.
void CheckRate(double rate_hz);

/// Raises unless the frequencies ascend and lie between 0 and half the sampling rate; `option` names them.
void CheckFrequencies(const std::string& option, const std::vector<double>& frequencies_hz, double rate_hz);

}  // namespace passband_cli
