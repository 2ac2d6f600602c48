#include "filter_stages.h"

#include <array>
#include <charconv>
#include <cmath>
#include <numbers>
#include <optional>
#include <string_view>

#include <CLI/CLI.hpp>

#include "failure.h"

namespace passband_cli {
namespace {

using namespace passband;
using namespace passband::SignalUtils;

constexpr std::int32_t kMostSamples = 10'000'000;  // of a median or a mean

// A stage for each kind of state: `Init` starts one, `Filter` takes a block from the first vector to the second.
template <class State, class Filter>
class StreamStage final : public FilterStage {
 public:
  template <class Init>
  StreamStage(std::size_t channels, Init init, Filter filter) : states_(channels), filter_(filter) {
    for (State& state : states_) init(state);
  }
  void Run(std::size_t channel, TVec& data) override {
    filter_(data, result_, states_[channel]);
    data.Copy(result_);
  }

 private:
  std::vector<State> states_;
  Filter filter_;
  TVec result_;
};

template <class State, class Init, class Filter>
std::unique_ptr<FilterStage> MakeStream(std::size_t channels, Init init, Filter filter) {
  return std::make_unique<StreamStage<State, Filter>>(channels, init, filter);
}

double NumberOf(const StageOption& option, std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) Fail("--{}: '{}' is not a number", option.name, text);
  return value;
}

std::int32_t SamplesOf(const StageOption& option) {
  const double value = NumberOf(option, option.value);
  if (!(value >= 1 && value <= kMostSamples && value == std::floor(value))) {
    Fail("--{}: {} is not a number of samples between 1 and {}", option.name, option.value, kMostSamples);
  }
  return static_cast<std::int32_t>(value);
}

double RateFor(const StageOption& option, double rate_hz) {
  if (!(rate_hz > 0)) Fail("--rate is required for --{}", option.name);
  return rate_hz;
}

// Numerator and denominator in descending powers of z as one section.
TVec SectionOf(const TVec& numerator, const TVec& denominator, bool is_double) {
  TVec section;
  section.Size(6, false, is_double);
  section.SetZero();
  for (std::int32_t n = 0; n < numerator.Length(); ++n) section.SetDefault(n, numerator[n]);
  for (std::int32_t n = 0; n < denominator.Length(); ++n) section.SetDefault(3 + n, denominator[n]);
  return section;
}

// FREQUENCY or FREQUENCY,WIDTH: a width between the 3 dB points of about (1 - r) rate / pi. The gain far from the notch
// is 1.
TVec NotchSection(const StageOption& option, double rate_hz, bool is_double) {
  const std::size_t comma = option.value.find(',');
  const double frequency = NumberOf(option, std::string_view(option.value).substr(0, comma));
  const double width =
      comma == std::string::npos ? frequency / 30 : NumberOf(option, std::string_view(option.value).substr(comma + 1));
  if (!(frequency > 0 && frequency < rate_hz / 2)) {
    Fail("--notch: {} Hz is not between 0 and {} Hz, half the sampling rate", frequency, rate_hz / 2);
  }
  if (!(width > 0 && width < rate_hz / std::numbers::pi)) Fail("--notch: {} Hz is no width", width);
  const double radius = 1 - std::numbers::pi * width / rate_hz;
  TVec numerator;
  TVec denominator;
  NotchFilter(frequency, radius, numerator, denominator, rate_hz);
  // At the end of the axis that is further away: |1 +- 2 r c + r^2| over |2 +- 2 c|.
  const double cosine = std::cos(2 * std::numbers::pi * frequency / rate_hz);
  const double side = cosine > 0 ? 1 : -1;
  numerator.Scale((1 + side * 2 * radius * cosine + radius * radius) / (2 + side * 2 * cosine));
  return SectionOf(numerator, denominator, is_double);
}

TVec DcSection(const StageOption& option, double rate_hz, bool is_double) {
  const double bandwidth = NumberOf(option, option.value);
  if (!(bandwidth > 0 && bandwidth < rate_hz / std::numbers::pi)) Fail("--dc: {} Hz is no bandwidth", bandwidth);
  TVec numerator;
  TVec denominator;
  DcFilter(bandwidth, rate_hz, numerator, denominator);
  return SectionOf(numerator, denominator, is_double);
}

TVec MeanTaps(const StageOption& option, bool is_double) {
  TVec taps;
  taps.Size(0, false, is_double);
  MovingAverageImpulse(taps, SamplesOf(option));
  return taps;
}

constexpr std::array<std::string_view, 6> kStages{"median", "average", "notch", "dc", "differentiate", "integrate"};

}  // namespace

void AddStageOptions(CLI::App& command) {
  const auto add = [&command](const char* name, const char* type, const char* help) {
    command.add_option(name)
        ->description(help)
        ->type_name(type)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false)
        ->group("Small filters, in the order given, behind the other filter");
  };
  add("--median", "SAMPLES", "Median of the last so many samples");
  add("--average", "SAMPLES", "Mean of the last so many samples");
  add("--notch", "HZ[,HZ]", "Take out a frequency, within a width [a thirtieth of it]");
  add("--dc", "HZ", "Take out what is slower than this");
  for (const char* name : {"--differentiate", "--integrate"}) {
    command.add_flag(name)->group("Small filters, in the order given, behind the other filter");
  }
  command.get_option("--differentiate")->description("Rate of change per second");
  command.get_option("--integrate")->description("Integral over time in seconds");
}

std::vector<StageOption> StagesGiven(const CLI::App& command) {
  std::vector<StageOption> stages;
  std::array<std::size_t, kStages.size()> seen{};
  for (const CLI::Option* option : command.parse_order()) {
    for (std::size_t k = 0; k < kStages.size(); ++k) {
      if (option->get_name() != fmt::format("--{}", kStages[k])) continue;
      const std::vector<std::string>& results = option->results();
      stages.push_back({std::string(kStages[k]), results.at(std::min(seen[k], results.size() - 1))});
      ++seen[k];
    }
  }
  return stages;
}

std::unique_ptr<FilterStage> MakeStage(const StageOption& option, int channels, double rate_hz, bool is_double) {
  const auto count = static_cast<std::size_t>(channels);
  if (option.name == "median") {
    const auto precision = is_double ? TMtxFloatPrecision::DoubleReal : TMtxFloatPrecision::SingleReal;
    return MakeStream<TMedianState>(
        count, [&, mask = SamplesOf(option)](TMedianState& state) { MedianInit(mask, state, precision); },
        [](const TVec& x, TVec& y, TMedianState& state) { MedianFilter(x, y, state); });
  }
  if (option.name == "average") {
    const TVec taps = MeanTaps(option, is_double);
    return MakeStream<TFirState>(
        count, [&taps](TFirState& state) { FirInit(taps, state); },
        [](const TVec& x, TVec& y, TFirState& state) { FirFilter(x, y, state); });
  }
  const double rate = RateFor(option, rate_hz);
  if (option.name == "notch" || option.name == "dc") {
    const TVec section = (option.name == "dc" ? DcSection : NotchSection)(option, rate, is_double);
    return MakeStream<TIirState>(
        count, [&section](TIirState& state) { IirInitBQ(section, state); },
        [](const TVec& x, TVec& y, TIirState& state) { IirFilter(x, y, state); });
  }
  if (option.name == "differentiate") {
    return MakeStream<TDiffState>(
        count, [](TDiffState&) {},
        [rate](const TVec& x, TVec& y, TDiffState& state) { Differentiate(x, y, state, 1 / rate); });
  }
  return MakeStream<TIntegrateState>(
      count, [](TIntegrateState&) {},
      [rate](const TVec& x, TVec& y, TIntegrateState& state) { Integrate(x, y, state, 1 / rate); });
}

}  // namespace passband_cli
