// Small filters behind one another: medians, means, notches, DC blocking, derivatives and integrals.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <passband/passband.h>

namespace CLI {
class App;
}  // namespace CLI

namespace passband_cli {

/// A filter that works in place, with a stream for each channel.
class FilterStage {
 public:
  virtual ~FilterStage() = default;
  virtual void Run(std::size_t channel, passband::TVec& data) = 0;
};

/// A stage as it was asked for.
struct StageOption {
  std::string name;   ///< of the option, without dashes
  std::string value;  ///< what was given with it, if anything
};

/// Adds the options of all stages to a command, in a group of their own in its help.
void AddStageOptions(CLI::App& command);

/// The stages that were given on the command line, in their order there.
std::vector<StageOption> StagesGiven(const CLI::App& command);

/// Makes a stage for signals of a rate; 0 stands for an unknown one, which some stages refuse.
std::unique_ptr<FilterStage> MakeStage(const StageOption& option, int channels, double rate_hz, bool is_double);

}  // namespace passband_cli
