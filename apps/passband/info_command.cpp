#include "info_command.h"

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "failure.h"
#include "output_file.h"
#include "signal_file.h"

namespace passband_cli {
namespace {

struct Options {
  std::string in;
  std::string only;
};

// CSV files do not say how long they are; their lines are counted.
std::int64_t CountFrames(SignalReader& reader) {
  if (reader.Format().frames >= 0) return reader.Format().frames;
  std::vector<double> block(static_cast<std::size_t>(reader.Format().channels) * 1024);
  std::int64_t frames = 0;
  while (const std::size_t count = reader.Read(block)) frames += static_cast<std::int64_t>(count);
  return frames;
}

void Run(const Options& options) {
  const auto reader = OpenSignal(options.in);
  const SignalFormat& format = reader->Format();
  const std::int64_t frames = CountFrames(*reader);
  if (options.only == "rate") return PrintText(fmt::format("{}\n", format.rate_hz));
  if (options.only == "channels") return PrintText(fmt::format("{}\n", format.channels));
  if (options.only == "frames") return PrintText(fmt::format("{}\n", frames));
  std::string text =
      fmt::format("{}: {} channel{}, {} frames", options.in, format.channels, format.channels == 1 ? "" : "s", frames);
  if (format.rate_hz > 0) {
    text += fmt::format(", {} Hz, {:.3f} s, {} samples", format.rate_hz, static_cast<double>(frames) / format.rate_hz,
                        SampleFormatName(format.samples));
  }
  PrintText(text + "\n");
}

}  // namespace

void AddInfoCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("info", "Tell the rate, channels and length of a recording");
  command->add_option("--in", options->in, "Recording")->required()->type_name("FILE");
  command->add_option("--only", options->only, "Print one number alone: the rate (in Hz), channels or frames")
      ->check(CLI::IsMember({"rate", "channels", "frames"}).description(""))
      ->type_name("NAME");
  command->callback([options] { Run(*options); });
}

}  // namespace passband_cli
