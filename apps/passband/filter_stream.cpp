#include "filter_stream.h"

#include <algorithm>
#include <limits>

namespace passband_cli {

std::int64_t FramesAfter(std::int64_t frames, const RateChange& rate) {
  return (frames * rate.up + rate.down - 1) / rate.down;
}

FilterStream::FilterStream(ChannelFilters& filters, SignalWriter& writer, int channels, const RateChange& rate,
                           std::int64_t skip)
    : filters_(filters),
      writer_(writer),
      channels_(static_cast<std::size_t>(channels)),
      rate_(rate),
      skip_(skip),
      most_out_(std::numeric_limits<std::int64_t>::max()) {}

void FilterStream::Add(std::span<const double> samples) {
  frames_in_ += static_cast<std::int64_t>(samples.size() / channels_);
  const std::size_t step = static_cast<std::size_t>(rate_.down) * channels_;
  if (waiting_.empty() && samples.size() % step == 0) {
    FeedWholeSteps(samples);
    return;
  }
  waiting_.insert(waiting_.end(), samples.begin(), samples.end());
  const std::size_t whole = waiting_.size() / step * step;
  FeedWholeSteps(std::span<const double>(waiting_).first(whole));
  waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(whole));
}

void FilterStream::Finish() {
  most_out_ = FramesAfter(frames_in_, rate_);
  const std::size_t step = static_cast<std::size_t>(rate_.down) * channels_;
  if (!waiting_.empty()) {
    padding_ = static_cast<std::int64_t>((step - waiting_.size()) / channels_);
    waiting_.resize(step, 0.0);
    FeedWholeSteps(waiting_);
  }
  constexpr std::size_t kSteps = 256;
  while (frames_out_ < most_out_) {
    waiting_.assign(kSteps * step, 0.0);
    FeedWholeSteps(waiting_);
  }
}

void FilterStream::FeedWholeSteps(std::span<const double> samples) {
  if (samples.empty()) return;
  std::span<const double> output = filters_.Filter(samples);
  const auto frames = static_cast<std::int64_t>(output.size() / channels_);
  const std::int64_t dropped = std::min(skip_, frames);
  const std::int64_t kept = std::min(frames - dropped, most_out_ - frames_out_);
  skip_ -= dropped;
  frames_out_ += kept;
  writer_.Write(
      output.subspan(static_cast<std::size_t>(dropped) * channels_, static_cast<std::size_t>(kept) * channels_));
}

}  // namespace passband_cli
