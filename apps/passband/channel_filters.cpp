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

ChannelFilters::ChannelFilters(const TVec& taps, int channels, const RateChange& rate)
    : rate_(rate), is_double_(taps.IsDouble()), states_(static_cast<std::size_t>(channels)) {
  for (TFirState& state : states_) FirInitReal(taps, state, rate.up, 0, rate.down, rate.down_phase);
}

std::span<const double> ChannelFilters::Filter(std::span<const double> samples) {
  const std::size_t frames = samples.size() / states_.size();
  const auto rise = static_cast<std::size_t>(rate_.up);
  const auto fall = static_cast<std::size_t>(rate_.down);
  interleaved_.resize(frames / fall * rise * states_.size());
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
  const std::size_t channels = states_.size();
  input_.Size(static_cast<std::int32_t>(samples.size() / channels), false, is_double_);
  for (std::size_t c = 0; c < channels; ++c) {
    const auto x = ElementsOf<R>(input_);
    for (std::size_t n = 0; n < x.size(); ++n) x[n] = static_cast<R>(samples[n * channels + c]);
    const auto start = Clock::now();
    FirFilter(input_, output_, states_[c]);
    seconds_ += std::chrono::duration<double>(Clock::now() - start).count();
    const auto y = ElementsOf<R>(output_);
    for (std::size_t n = 0; n < y.size(); ++n) interleaved_[n * channels + c] = static_cast<double>(y[n]);
  }
}

}  // namespace passband_cli
