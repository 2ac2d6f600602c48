#include "channel_filters.h"

#include <chrono>
#include <type_traits>

namespace passband_cli {
namespace {

using namespace passband;
using namespace passband::SignalUtils;

template <class R>
auto ElementsOf(TVec& data) {
  if constexpr (std::is_same_v<R, double>) {
    return data.Values();
  } else {
    return data.SValues();
  }
}

}  // namespace

ChannelFilters::ChannelFilters(int channels, bool is_double, const RateChange& rate)
    : channels_(static_cast<std::size_t>(channels)), is_double_(is_double), rate_(rate) {}

std::span<const double> ChannelFilters::Filter(std::span<const double> samples) {
  const std::size_t frames = samples.size() / channels_;
  const auto rise = static_cast<std::size_t>(rate_.up);
  const auto fall = static_cast<std::size_t>(rate_.down);
  interleaved_.resize(frames / fall * rise * channels_);
  if (is_double_) {
    FilterAs<double>(samples);
  } else {
    FilterAs<float>(samples);
  }
  return interleaved_;
}

template <class R>
void ChannelFilters::FilterAs(std::span<const double> samples) {
  using Clock = std::chrono::steady_clock;
  input_.Size(static_cast<std::int32_t>(samples.size() / channels_), false, is_double_);
  for (std::size_t c = 0; c < channels_; ++c) {
    const auto x = ElementsOf<R>(input_);
    for (std::size_t n = 0; n < x.size(); ++n) x[n] = static_cast<R>(samples[n * channels_ + c]);
    const auto start = Clock::now();
    FilterChannel(c, input_, output_);
    for (const auto& stage : stages_) stage->Run(c, output_);
    seconds_ += std::chrono::duration<double>(Clock::now() - start).count();
    const auto y = ElementsOf<R>(output_);
    for (std::size_t n = 0; n < y.size(); ++n) interleaved_[n * channels_ + c] = static_cast<double>(y[n]);
  }
}

FirChannels::FirChannels(const TVec& taps, int channels, const RateChange& rate)
    : ChannelFilters(channels, taps.IsDouble(), rate), states_(static_cast<std::size_t>(channels)) {
  for (TFirState& state : states_) FirInitReal(taps, state, rate.up, 0, rate.down, rate.down_phase);
}

void FirChannels::FilterChannel(std::size_t channel, TVec& input, TVec& output) {
  FirFilter(input, output, states_[channel]);
}

SectionChannels::SectionChannels(const TVec& sections, int channels, bool zero_phase)
    : ChannelFilters(channels, sections.IsDouble(), {}),
      zero_phase_(zero_phase),
      states_(static_cast<std::size_t>(channels)) {
  for (TIirState& state : states_) IirInitBQ(sections, state);
}

void SectionChannels::FilterChannel(std::size_t channel, TVec& input, TVec& output) {
  if (zero_phase_) {
    output.Copy(input);
    IirFilter(output, states_[channel], true);
  } else {
    IirFilter(input, output, states_[channel]);
  }
}

}  // namespace passband_cli
