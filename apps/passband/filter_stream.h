// The way of a signal through the filters into a file.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "channel_filters.h"
#include "signal_file.h"

namespace passband_cli {

/// Feeds the filters in whole steps of `rate.down` frames, however the signal arrives, and writes what comes out. The
/// first `skip` frames that come out are dropped. The output is as long in time as the input: ceil(frames up / down)
/// frames; zeros are fed behind the end until they are there.
class FilterStream {
 public:
  FilterStream(ChannelFilters& filters, SignalWriter& writer, int channels, const RateChange& rate, std::int64_t skip);

  void Add(std::span<const double> samples);
  void Finish();

  std::int64_t FramesIn() const { return frames_in_; }
  std::int64_t FramesOut() const { return frames_out_; }
  /// Frames of zeros that completed the last step.
  std::int64_t Padding() const { return padding_; }

 private:
  void FeedWholeSteps(std::span<const double> samples);

  ChannelFilters& filters_;
  SignalWriter& writer_;
  std::size_t channels_;
  RateChange rate_;
  std::int64_t skip_;
  std::int64_t frames_in_ = 0;
  std::int64_t frames_out_ = 0;
  std::int64_t most_out_;  // known at the end
  std::int64_t padding_ = 0;
  std::vector<double> waiting_;  // fewer than `rate.down` frames
};

/// Frames that an input of `frames` becomes.
std::int64_t FramesAfter(std::int64_t frames, const RateChange& rate);

}  // namespace passband_cli
