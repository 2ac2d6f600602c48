// One channel of a stretch of a recording, in memory.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <passband/passband.h>

namespace CLI {
class App;
}  // namespace CLI

namespace passband_cli {

/// Which stretch, as it was said on the command line, unchecked.
struct StretchOptions {
  std::string in;
  std::optional<double> rate_hz;
  double start_s = 0;
  std::optional<double> duration_s;
  std::int32_t channel = 1;
};

struct Stretch {
  passband::TVec samples;  ///< real, double precision, at least one
  double rate_hz = 0;
  int channels = 0;  ///< of the recording
};

/// Adds the options to a command.
void AddStretchOptions(CLI::App& command, StretchOptions& options);

/// Reads the stretch, after the checks.
Stretch ReadStretch(const StretchOptions& options);

}  // namespace passband_cli
