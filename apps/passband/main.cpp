// passband: the library's filters on the command line.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "analyze_command.h"
#include "design_fir.h"
#include "design_iir.h"
#include "filter_command.h"
#include "info_command.h"
#include "levels_command.h"
#include "order_command.h"
#include "output_file.h"
#include "response_command.h"
#include "spectrum_command.h"
#include "tone_command.h"
#include "zoom_command.h"

namespace passband_cli {
namespace {

constexpr int kFailed = 1;

int Report(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  fmt::print(stderr, "passband: {}\n", text);
  return kFailed;
}

void AddCommands(CLI::App& app) {
  app.set_version_flag("--version", "passband " PASSBAND_VERSION);
  app.require_subcommand(1);
  CLI::App* design = app.add_subcommand("design", "Design a filter and print its numbers");
  design->require_subcommand(1);
  AddDesignFirCommand(*design);
  AddDesignIirCommand(*design);
  AddOrderCommand(app);
  AddFilterCommand(app);
  AddAnalyzeCommand(app);
  AddLevelsCommand(app);
  AddResponseCommand(app);
  AddSpectrumCommand(app);
  AddToneCommand(app);
  AddZoomCommand(app);
  AddInfoCommand(app);
  app.footer(
      "'passband COMMAND --help' tells the options of a command. Frequencies are in Hz. A failure is "
      "told in one line and ends with exit code 1.");
}

int Run(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);  // a reader that went away is reported like a full disk
  CLI::App app("Design digital filters and filter recordings with them.", "passband");
  AddCommands(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& request) {
    app.exit(request);  // prints the help or the version
    PrintText("");
  } catch (const CLI::ParseError& error) {
    if (argc > 1 && app.get_subcommands().empty()) {
      return Report(fmt::format("'{}' is no command (see passband --help)", argv[1]));
    }
    return Report(fmt::format("{} (see passband --help)", error.what()));
  }
  return 0;
}

}  // namespace
}  // namespace passband_cli

int main(int argc, char** argv) {
  try {
    return passband_cli::Run(argc, argv);
  } catch (const std::bad_alloc&) {
    return passband_cli::Report("out of memory");
  } catch (const std::exception& error) {
    return passband_cli::Report(error.what());
  }
}
