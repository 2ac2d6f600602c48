#include "tone_command.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

#include <passband/passband.h>
#include <CLI/CLI.hpp>

#include "failure.h"
#include "fir_options.h"
#include "progress.h"
#include "sample_format.h"
#include "signal_file.h"

namespace passband_cli {
namespace {

using namespace passband;
using namespace passband::SignalUtils;

struct Options {
  std::string out;
  std::string shape = "sine";
  std::vector<double> frequencies_hz;
  double rate_hz = 48000;
  double duration_s = 1;
  double amplitude = 0.5;
  double phase_degrees = 0;
  double rise = 0.5;
  std::int32_t harmonics = 0;
  bool sweep = false;
  std::string subtype = "pcm24";
};

constexpr double kRadians = std::numbers::pi / 180;
constexpr std::int32_t kBlock = 4096;

// A tone that goes on from block to block.
class Generator {
 public:
  virtual ~Generator() = default;
  virtual void Next(TVec& block) = 0;
  /// The phase of the next sample, with which a tone of another frequency goes on without a jump.
  virtual double Phase() const = 0;
};

class SineGenerator final : public Generator {
 public:
  SineGenerator(double frequency, double phase, double amplitude) { ToneInit(frequency, phase, amplitude, state_); }
  void Next(TVec& block) override { Tone(block, state_); }
  double Phase() const override { return state_.Phase + std::numbers::pi / 2; }  // the record holds that of a cosine

 private:
  TToneState state_;
};

class SquareGenerator final : public Generator {
 public:
  SquareGenerator(double frequency, double phase, double amplitude, std::int32_t harmonics) {
    SquareToneInit(frequency, phase, amplitude, state_, false, harmonics);
  }
  void Next(TVec& block) override { SquareTone(block, state_); }
  double Phase() const override { return state_.Tones.front().Phase + std::numbers::pi / 2; }

 private:
  TSquareToneState state_;
};

class TriangleGenerator final : public Generator {
 public:
  TriangleGenerator(double frequency, double phase, double amplitude, double asymmetry) {
    TriangleToneInit(frequency, phase, amplitude, asymmetry, state_);
  }
  void Next(TVec& block) override { TriangleTone(block, state_); }
  double Phase() const override { return state_.Phase; }

 private:
  TTriangleState state_;
};

std::unique_ptr<Generator> MakeGenerator(const Options& options, double frequency_hz, double phase) {
  const double frequency = frequency_hz / options.rate_hz;
  if (options.shape == "sine") return std::make_unique<SineGenerator>(frequency, phase, options.amplitude);
  if (options.shape == "square") {
    return std::make_unique<SquareGenerator>(frequency, phase, options.amplitude, options.harmonics);
  }
  const double asymmetry = (1 - 2 * options.rise) * std::numbers::pi;
  return std::make_unique<TriangleGenerator>(frequency, phase, options.amplitude, asymmetry);
}

void CheckOptions(const Options& options) {
  constexpr double kMostFrames = 1LL << 40;
  CheckRate(options.rate_hz);
  if (options.frequencies_hz.empty()) Fail("--freq is required");
  for (const double frequency : options.frequencies_hz) {
    if (!(frequency > 0 && frequency < options.rate_hz / 2)) {
      Fail("--freq: {} Hz is not between 0 and {} Hz, half the sampling rate", frequency, options.rate_hz / 2);
    }
  }
  if (!(options.duration_s > 0 && options.duration_s * options.rate_hz <= kMostFrames)) {
    Fail("--duration: {} s is no length of a recording", options.duration_s);
  }
  if (!(options.amplitude > 0 && std::isfinite(options.amplitude))) {
    Fail("--amplitude: {} is not a positive number", options.amplitude);
  }
  if (!std::isfinite(options.phase_degrees)) Fail("--phase: {} is no angle", options.phase_degrees);
  if (!(options.rise >= 0 && options.rise <= 1)) Fail("--rise: {} is not between 0 and 1", options.rise);
  if (options.harmonics < 0) Fail("--harmonics: {} is below 0", options.harmonics);
}

// Writes `frames` frames of all generators together.
void Write(std::vector<std::unique_ptr<Generator>>& generators, std::int64_t frames, SignalWriter& writer,
           Progress& progress, std::int64_t& written) {
  TVec sum;
  TVec tone;
  while (frames > 0) {
    const auto count = static_cast<std::int32_t>(std::min<std::int64_t>(frames, kBlock));
    sum.Size(count, false, true);
    sum.SetZero();
    tone.Size(count, false, true);
    for (const auto& generator : generators) {
      generator->Next(tone);
      sum.Add(tone);
    }
    writer.Write(sum.Values());
    frames -= count;
    written += count;
    progress.Update(written);
  }
}

void Run(const Options& options) {
  CheckOptions(options);
  const auto frames = static_cast<std::int64_t>(std::llround(options.duration_s * options.rate_hz));
  if (frames < 1) Fail("--duration: {} s hold no sample", options.duration_s);
  SignalFormat format;
  format.channels = 1;
  format.rate_hz = options.rate_hz;
  format.frames = frames;
  format.samples = SampleFormatFromName(options.subtype);
  const auto writer = CreateSignal(options.out, format);
  Progress progress(frames);
  std::vector<std::unique_ptr<Generator>> generators;
  double phase = options.phase_degrees * kRadians;
  std::int64_t written = 0;
  const auto count = static_cast<std::int64_t>(options.frequencies_hz.size());
  for (std::int64_t k = 0; k < count; ++k) {
    generators.push_back(MakeGenerator(options, options.frequencies_hz[static_cast<std::size_t>(k)], phase));
    if (!options.sweep) continue;
    Write(generators, frames * (k + 1) / count - frames * k / count, *writer, progress, written);
    phase = generators.front()->Phase();
    generators.clear();
  }
  if (!options.sweep) Write(generators, frames, *writer, progress, written);
  writer->Finish();
  if (writer->SamplesOutOfRange() > 0) {
    fmt::print(stderr, "passband: note: {} samples were beyond full scale and were clipped\n",
               writer->SamplesOutOfRange());
  }
}

}  // namespace

void AddToneCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("tone", "Make test tones: sines, squares, triangles, sums and sweeps of them");
  command->add_option("--out", options->out, "Result: .wav, .w64, .flac, .aif or .csv")->required()->type_name("FILE");
  AddNumberList(*command, "--freq", options->frequencies_hz, "Frequency, or several: F1,F2,...")->required();
  command->add_option("--shape", options->shape, "sine, square or triangle")
      ->check(CLI::IsMember({"sine", "square", "triangle"}).description(""))
      ->type_name("NAME")
      ->capture_default_str();
  command->add_flag("--sweep", options->sweep,
                    "The frequencies one after the other, without a jump, instead of together");
  command->add_option("--rate", options->rate_hz, "Sampling rate")->type_name("HZ")->capture_default_str();
  command->add_option("--duration", options->duration_s, "Length of the result")
      ->type_name("SECONDS")
      ->capture_default_str();
  command->add_option("--amplitude", options->amplitude, "Amplitude of each tone; full scale is 1")
      ->type_name("RATIO")
      ->capture_default_str();
  command
      ->add_option("--phase", options->phase_degrees,
                   "Phase of the first sample; 0 starts a sine or square at 0, a triangle at its top")
      ->type_name("DEGREES")
      ->capture_default_str();
  command->add_option("--rise", options->rise, "triangle: part of the period in which it rises, 0 to 1")
      ->type_name("RATIO")
      ->capture_default_str();
  command->add_option("--harmonics", options->harmonics, "square: at most so many [0: all below half the rate]")
      ->type_name("NUMBER");
  command->add_option("--subtype", options->subtype, "Samples written: pcm8, pcm16, pcm24, pcm32, float, double")
      ->type_name("NAME")
      ->capture_default_str();
  command->footer(
      "Square waves are sums of harmonics below half the sampling rate, so that nothing is mirrored.\n"
      "Examples:\n"
      "  passband tone --freq 1000 --amplitude 0.1 --duration 60 --out reference.wav\n"
      "  passband tone --freq 100,200,400,800 --sweep --duration 8 --out steps.wav");
  command->callback([options] { Run(*options); });
}

}  // namespace passband_cli
