// One FIR filter stream per channel of a signal.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <passband/passband.h>

namespace passband_cli {

/// Change of the sampling rate by `up` / `down`. Of every `down` samples at the high rate the one at `down_phase`
/// stays.
struct RateChange {
  std::int32_t up = 1;
  std::int32_t down = 1;
  std::int32_t down_phase = 0;
};

class ChannelFilters {
 public:
  ChannelFilters(const passband::TVec& taps, int channels, const RateChange& rate);

  /// Filters interleaved frames, a multiple of `down`, and returns the interleaved output, which stays valid until the
  /// next call. The streams go on from call to call; nothing is allocated once blocks have their size.
  std::span<const double> Filter(std::span<const double> samples);

  /// Time spent in the filters themselves so far.
  double Seconds() const { return seconds_; }

 private:
  template <class R>
  void FilterAs(std::span<const double> samples);

  RateChange rate_;
  bool is_double_;
  std::vector<passband::SignalUtils::TFirState> states_;  // one per channel
  passband::TVec input_;
  passband::TVec output_;
  std::vector<double> interleaved_;
  double seconds_ = 0;
};

}  // namespace passband_cli
