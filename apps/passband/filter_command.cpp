#include "filter_command.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "channel_filters.h"
#include "failure.h"
#include "filter_stages.h"
#include "filter_stream.h"
#include "fir_options.h"
#include "output_file.h"
#include "progress.h"
#include "section_file.h"
#include "signal_file.h"
#include "tap_design.h"
#include "tap_file.h"

namespace passband_cli {
namespace {

struct Options {
  std::string in;
  std::string out;
  std::string taps;
  std::string sections;
  FirOptions fir;
  std::optional<double> rate_hz;
  std::int32_t block = 4096;
  RateChange rate;
  bool align = false;
  bool zero_phase = false;
  bool quiet = false;
  std::string precision = "double";
  std::string subtype = "same";
  std::vector<StageOption> stages;
};

// Everything that one run works with.
struct Job {
  std::unique_ptr<SignalReader> reader;
  double rate_hz = 0;  // of the input; 0 when unknown
  RateChange rate;
  std::unique_ptr<ChannelFilters> filters;
  std::string title;       // of the filter, with what it does to the time
  std::int64_t skip = 0;   // output frames that only hold the delay
  std::int64_t block = 1;  // frames
  SignalFormat output;
};

constexpr std::int64_t kMostSamples = std::int64_t{1} << 28;  // at once

double InputRate(const Options& options, const SignalFormat& format) {
  if (!options.rate_hz) return format.rate_hz;
  CheckRate(*options.rate_hz);
  if (format.rate_hz > 0 && format.rate_hz != *options.rate_hz) {
    Fail("--rate: {} has {} Hz, not {} Hz", options.in, format.rate_hz, *options.rate_hz);
  }
  return *options.rate_hz;
}

void TellOtherRate(const char* what, double made_hz, double used_hz) {
  if (made_hz > 0 && used_hz > 0 && made_hz != used_hz) {
    fmt::print(stderr, "passband: note: the {} are made for {} Hz and used at {} Hz; their frequencies move along\n",
               what, made_hz, used_hz);
  }
}

// Savitzky-Golay, inverse and noise filters have no type.
bool DescribesTaps(const Options& options) { return !options.fir.type.empty() || options.fir.method != "kaiser"; }

TapSet Taps(const Options& options, double rate_hz) {
  const bool is_double = options.precision == "double";
  if (options.taps.empty()) {
    if (!DescribesTaps(options)) Fail("a filter is required: --taps FILE, --sections FILE, or --type with its edges");
    if (!(rate_hz > 0)) Fail("--rate is required: {} does not tell its sampling rate", options.in);
    return DesignTaps(options.fir, rate_hz * options.rate.up, is_double);
  }
  TapSet set = ReadTaps(options.taps, is_double);
  TellOtherRate("taps", set.rate_hz, rate_hz * options.rate.up);
  return set;
}

// A linear-phase filter delays everything by half its length; other filters have no one delay to take out.
void CheckLinearPhase(const passband::TVec& taps) {
  constexpr double kTolerance = 1e-6;  // of the largest tap: above the rounding of single precision
  const std::int32_t last = taps.Length() - 1;
  double largest = 0;
  double even = 0;
  double odd = 0;
  for (std::int32_t n = 0; n <= last; ++n) {
    largest = std::max(largest, std::abs(taps[n]));
    even = std::max(even, std::abs(taps[n] - taps[last - n]));
    odd = std::max(odd, std::abs(taps[n] + taps[last - n]));
  }
  if (std::min(even, odd) > kTolerance * largest) Fail("--align: the taps are not symmetric, so there is no one delay");
}

// The delay is (taps - 1) / 2 at the high rate: the phase takes what is left of it beside whole output samples.
void Align(Job& job, const TapSet& set) {
  CheckLinearPhase(set.taps);
  const std::int32_t delay = (set.taps.Length() - 1) / 2;
  job.rate.down_phase = delay % job.rate.down;
  job.skip = delay / job.rate.down;
}

void UseTaps(const Options& options, Job& job) {
  if (options.zero_phase) Fail("--zero-phase goes with --sections; --align takes the delay of an FIR filter out");
  const TapSet set = Taps(options, job.rate_hz);
  if (options.align) Align(job, set);
  const double delay = (set.taps.Length() - 1) / 2.0 / job.rate.down;
  job.title = fmt::format("{}, {} precision, {}", set.title, options.precision,
                          options.align ? "delay taken out" : fmt::format("delay {} samples", delay));
  job.filters = std::make_unique<FirChannels>(set.taps, job.reader->Format().channels, job.rate);
}

void UseSections(const Options& options, Job& job) {
  if (options.align) Fail("--align: sections have no one delay; --zero-phase filters without any");
  if (job.rate.up != 1 || job.rate.down != 1) Fail("--up and --down go with FIR filters, not with --sections");
  const SectionSet set = ReadSections(options.sections, options.precision == "double");
  TellOtherRate("sections", set.rate_hz, job.rate_hz);
  job.title = fmt::format("{}, {} precision{}", set.title, options.precision,
                          options.zero_phase ? ", forward and backward" : "");
  job.filters = std::make_unique<SectionChannels>(set.sections, job.reader->Format().channels, options.zero_phase);
}

void UseStagesAlone(const Options& options, Job& job) {
  if (options.align || options.zero_phase) Fail("--align and --zero-phase go with --taps and --sections");
  if (job.rate.up != 1 || job.rate.down != 1) Fail("--up and --down go with FIR filters");
  job.title = "small filters";
  job.filters = std::make_unique<PlainChannels>(job.reader->Format().channels, options.precision == "double");
}

void ChooseFilter(const Options& options, Job& job) {
  if (!options.sections.empty()) {
    UseSections(options, job);
  } else if (options.taps.empty() && !DescribesTaps(options) && !options.stages.empty()) {
    UseStagesAlone(options, job);
  } else {
    UseTaps(options, job);
  }
  const double rate_hz = job.rate_hz * job.rate.up / job.rate.down;
  for (const StageOption& stage : options.stages) {
    const std::string value = stage.name.ends_with("ate") ? "" : " " + stage.value;
    job.title += fmt::format(", {}{}", stage.name, value);
    job.filters->Append(MakeStage(stage, job.reader->Format().channels, rate_hz, options.precision == "double"));
  }
}

SignalFormat OutputFormat(const Options& options, const Job& job) {
  SignalFormat format = job.reader->Format();
  format.rate_hz = job.rate_hz * job.rate.up / job.rate.down;
  if (format.frames >= 0) format.frames = FramesAfter(format.frames, job.rate);
  if (options.subtype != "same") format.samples = SampleFormatFromName(options.subtype);
  return format;
}

Job Prepare(const Options& options) {
  constexpr std::int32_t kMostFactor = 65536;
  Job job;
  job.rate = options.rate;
  if (job.rate.up < 1 || job.rate.up > kMostFactor) Fail("--up: {} is not between 1 and {}", job.rate.up, kMostFactor);
  if (job.rate.down < 1 || job.rate.down > kMostFactor) {
    Fail("--down: {} is not between 1 and {}", job.rate.down, kMostFactor);
  }
  if (options.block < 1) Fail("--block: {} frames are no block", options.block);
  job.reader = OpenSignal(options.in);
  RefuseSameFile(options.in, options.out);
  job.rate_hz = InputRate(options, job.reader->Format());
  ChooseFilter(options, job);
  job.output = OutputFormat(options, job);
  // A block is not larger than the file.
  const std::int64_t frames = job.reader->Format().frames;
  job.block = frames >= 0 ? std::clamp<std::int64_t>(frames, 1, options.block) : options.block;
  if ((job.block + job.rate.down) * job.rate.up > kMostSamples / job.output.channels) {
    Fail("--block: {} frames of {} channels are too many at once", job.block, job.output.channels);
  }
  return job;
}

std::string Summary(const Options& options, const Job& job, const FilterStream& stream, double seconds) {
  std::string text;
  const auto line = [&text]<class... Args>(fmt::format_string<Args...> format, Args&&... args) {
    fmt::format_to(std::back_inserter(text), format, std::forward<Args>(args)...);
    text += '\n';
  };
  const int channels = job.output.channels;
  const double filter_seconds = job.filters->Seconds();
  line("{}: {} frames, {} channel{}{}", options.out, stream.FramesOut(), channels, channels == 1 ? "" : "s",
       job.output.rate_hz > 0 ? fmt::format(", {} Hz", job.output.rate_hz) : "");
  line("filter: {}", job.title);
  const double real_time = static_cast<double>(stream.FramesIn()) / job.rate_hz / seconds;
  line("time: {:.3g} s{}; the filter itself {:.3g} s, {:.3g} million samples a second", seconds,
       job.rate_hz > 0 ? fmt::format(", {:.0f} times real time", real_time) : "", filter_seconds,
       static_cast<double>(stream.FramesIn()) * channels / filter_seconds / 1e6);
  if (stream.Padding() > 0) {
    line("the last step of {} frames was completed with {} frames of zeros", job.rate.down, stream.Padding());
  }
  return text;
}

// Block by block, or all at once when the filter has to see the end first.
void Feed(const Options& options, const Job& job, FilterStream& stream) {
  const auto channels = static_cast<std::size_t>(job.output.channels);
  Progress progress(job.reader->Format().frames);
  std::vector<double> block(static_cast<std::size_t>(job.block) * channels);
  std::vector<double> whole;
  while (const std::size_t frames = job.reader->Read(block)) {
    const std::span<const double> samples = std::span<const double>(block).first(frames * channels);
    if (options.zero_phase) {
      whole.insert(whole.end(), samples.begin(), samples.end());
      if (whole.size() > kMostSamples) Fail("--zero-phase: {} holds too many samples to filter at once", options.in);
      progress.Update(static_cast<std::int64_t>(whole.size() / channels));
    } else {
      stream.Add(samples);
      progress.Update(stream.FramesIn());
    }
  }
  if (!whole.empty()) stream.Add(whole);
}

void Run(const Options& options) {
  const Job job = Prepare(options);
  const std::unique_ptr<SignalWriter> writer = CreateSignal(options.out, job.output);
  FilterStream stream(*job.filters, *writer, job.output.channels, job.rate, job.skip);
  const auto start = std::chrono::steady_clock::now();
  Feed(options, job, stream);
  stream.Finish();
  writer->Finish();
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  if (writer->SamplesOutOfRange() > 0) {
    fmt::print(stderr,
               "passband: note: {} samples were beyond full scale or not a number and were clipped; "
               "--subtype float keeps them\n",
               writer->SamplesOutOfRange());
  }
  if (!options.quiet) PrintText(Summary(options, job, stream, elapsed.count()));
}

}  // namespace

void AddFilterCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("filter", "Filter a recording, block by block");
  command->add_option("--in", options->in, "Recording: wav, flac, aiff, ... or .csv, one column per channel")
      ->required()
      ->type_name("FILE");
  command->add_option("--out", options->out, "Result: .wav, .w64, .flac, .aif or .csv")->required()->type_name("FILE");
  command->add_option("--taps", options->taps, "Tap file of 'passband design fir'; or describe the filter below")
      ->type_name("FILE");
  command->add_option("--sections", options->sections, "Section file of 'passband design iir', csv or json")
      ->type_name("FILE")
      ->excludes("--taps");
  const std::vector<CLI::Option*> description = AddFirOptions(*command, options->fir);
  AddStageOptions(*command);
  command->add_option("--rate", options->rate_hz, "Sampling rate of a CSV file")->type_name("HZ");
  command->add_option("--block", options->block, "Frames per block; the result is the same for all")
      ->type_name("FRAMES")
      ->capture_default_str();
  command->add_option("--up", options->rate.up, "Raise the sampling rate by this factor, before the filter")
      ->type_name("FACTOR")
      ->capture_default_str();
  command->add_option("--down", options->rate.down, "Lower the sampling rate by this factor, behind the filter")
      ->type_name("FACTOR")
      ->capture_default_str();
  command->add_flag("--align", options->align, "Take out the delay of an FIR filter, which must have linear phase");
  command->add_flag("--zero-phase", options->zero_phase,
                    "Sections forward and backward: no delay, twice the attenuation");
  AddPrecisionOption(*command, options->precision);
  command->add_option("--subtype", options->subtype, "Samples written: pcm8, pcm16, pcm24, pcm32, float, double, same")
      ->type_name("NAME")
      ->capture_default_str();
  command->add_flag("--quiet", options->quiet, "No summary on standard output");
  command->footer(
      FirHelp() +
      "The edges are frequencies of the rate at which the filter runs: that of the recording times --up. "
      "With --up L,\na gain of L keeps the level. The result is as long as the recording; --align makes "
      "up for (taps - 1) / 2\nsamples, exactly when the number of taps is odd.\n"
      "Examples:\n"
      "  passband filter --type bandpass --edges 200,300,3400,3500 --in speech.wav --out phone.wav --align\n"
      "  passband filter --taps taps.json --in speech.wav --out half.wav --down 2\n"
      "  passband filter --sections sections.json --in speech.wav --out phone.wav\n"
      "  passband filter --notch 50 --median 5 --in sensor.csv --rate 1000 --out clean.csv");
  command->callback([options, description, command] {
    options->stages = StagesGiven(*command);
    const bool by_taps = !options->taps.empty();
    for (const CLI::Option* option : description) {
      if ((by_taps || !options->sections.empty()) && option->count() > 0) {
        Fail("{} does not go with {}, which tells the whole filter", option->get_name(),
             by_taps ? "--taps" : "--sections");
      }
    }
    Run(*options);
  });
}

}  // namespace passband_cli
