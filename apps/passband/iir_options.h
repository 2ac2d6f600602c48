// The command line's description of an IIR filter, shared by the commands that design one or estimate its order.
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

/// What was said on the command line, unchecked; frequencies in Hz, of analog filters in rad/s.
struct IirOptions {
  std::string family;
  std::string type;
  std::vector<double> edges;
  std::optional<double> rate_hz;
  std::optional<double> ripple_db;
  std::optional<double> attenuation_db;
  bool analog = false;
  std::optional<std::int32_t> order;
  std::string form;   // empty: sections, of analog filters zeros and poles
  std::string route;  // empty: the one that suits the form
  std::string precision = "double";
};

/// Adds what makes a requirement: family, type, edges, rate, ripple, attenuation, analog. Returns `--family`.
CLI::Option* AddRequirementOptions(CLI::App& command, IirOptions& options);

/// Adds what a design has beside its requirement: order, form, route, precision.
void AddIirDesignOptions(CLI::App& command, IirOptions& options);

/// What the options' one-line descriptions have no room for, for the end of a command's help.
std::string RequirementHelp();

}  // namespace passband_cli
