#include "recording_stretch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include <CLI/CLI.hpp>

#include "failure.h"
#include "fir_options.h"
#include "signal_file.h"

namespace passband_cli {
namespace {

using namespace passband;

std::int64_t FramesOf(double seconds, double rate_hz) {
  constexpr double kMostFrames = 1LL << 40;
  return static_cast<std::int64_t>(std::llround(std::min(seconds * rate_hz, kMostFrames)));
}

}  // namespace

void AddStretchOptions(CLI::App& command, StretchOptions& options) {
  command.add_option("--in", options.in, "Recording")->required()->type_name("FILE");
  command.add_option("--start", options.start_s, "Start of the stretch")->type_name("SECONDS")->capture_default_str();
  command.add_option("--duration", options.duration_s, "Length of the stretch [to the end]")->type_name("SECONDS");
  command.add_option("--channel", options.channel, "Channel, from 1 on")->type_name("NUMBER")->capture_default_str();
  command.add_option("--rate", options.rate_hz, "Sampling rate of a CSV file")->type_name("HZ");
}

Stretch ReadStretch(const StretchOptions& options) {
  constexpr std::int64_t kMostSamples = std::int64_t{1} << 26;
  constexpr std::size_t kBlock = 4096;
  if (options.rate_hz) CheckRate(*options.rate_hz);
  if (!(options.start_s >= 0)) Fail("--start: {} s is not in the recording", options.start_s);
  if (options.duration_s && !(*options.duration_s > 0)) Fail("--duration: {} s is no stretch", *options.duration_s);
  const auto reader = OpenSignal(options.in);
  const SignalFormat& format = reader->Format();
  Stretch stretch;
  stretch.rate_hz = format.rate_hz > 0 ? format.rate_hz : options.rate_hz.value_or(0.0);
  if (!(stretch.rate_hz > 0)) Fail("--rate is required: {} does not tell its sampling rate", options.in);
  if (options.channel < 1 || options.channel > format.channels) {
    Fail("--channel: {} has {} channels, not {}", options.in, format.channels, options.channel);
  }
  stretch.channels = format.channels;
  const std::int64_t first = FramesOf(options.start_s, stretch.rate_hz);
  const std::int64_t count = options.duration_s ? FramesOf(*options.duration_s, stretch.rate_hz)
                                                : std::numeric_limits<std::int64_t>::max() / 2;
  std::vector<double> samples;
  const auto channels = static_cast<std::size_t>(format.channels);
  std::vector<double> block(kBlock * channels);
  std::int64_t frame = 0;
  while (const std::size_t frames = frame < first + count ? reader->Read(block) : 0) {
    for (std::size_t n = 0; n < frames; ++n, ++frame) {
      if (frame < first || frame >= first + count) continue;
      samples.push_back(block[n * channels + static_cast<std::size_t>(options.channel - 1)]);
    }
    if (static_cast<std::int64_t>(samples.size()) > kMostSamples) {
      Fail("--duration: the stretch holds more than {} samples", kMostSamples);
    }
  }
  if (samples.empty()) Fail("{} holds no samples from {} s on", options.in, options.start_s);
  stretch.samples = TVec(samples);
  return stretch;
}

}  // namespace passband_cli
