// One filter stream per channel of a signal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <passband/passband.h>

#include "filter_stages.h"

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
  virtual ~ChannelFilters() = default;

  /// Filters interleaved frames, a multiple of `down`, and returns the interleaved output, which stays valid until the
  /// next call. The streams go on from call to call; nothing is allocated once blocks have their size.
  std::span<const double> Filter(std::span<const double> samples);

  /// Has a small filter work on everything that comes out.
  void Append(std::unique_ptr<FilterStage> stage) { stages_.push_back(std::move(stage)); }

  /// Time spent in the filters themselves so far.
  double Seconds() const { return seconds_; }

 protected:
  ChannelFilters(int channels, bool is_double, const RateChange& rate);

 private:
  virtual void FilterChannel(std::size_t channel, passband::TVec& input, passband::TVec& output) = 0;

  template <class R>
  void FilterAs(std::span<const double> samples);

  std::size_t channels_;
  bool is_double_;
  RateChange rate_;
  passband::TVec input_;
  passband::TVec output_;
  std::vector<std::unique_ptr<FilterStage>> stages_;
  std::vector<double> interleaved_;
  double seconds_ = 0;
};

/// No filter at all; for the small ones that are appended.
class PlainChannels final : public ChannelFilters {
 public:
  PlainChannels(int channels, bool is_double) : ChannelFilters(channels, is_double, {}) {}

 private:
  void FilterChannel(std::size_t /*channel*/, passband::TVec& input, passband::TVec& output) override {
    output.Copy(input);
  }
};

/// FIR filters, also between two sampling rates.
class FirChannels final : public ChannelFilters {
 public:
  FirChannels(const passband::TVec& taps, int channels, const RateChange& rate);

 private:
  void FilterChannel(std::size_t channel, passband::TVec& input, passband::TVec& output) override;

  std::vector<passband::SignalUtils::TFirState> states_;
};

/// Cascades of second-order sections. With `zero_phase` the one call filters a whole signal, forward and backward.
class SectionChannels final : public ChannelFilters {
 public:
  SectionChannels(const passband::TVec& sections, int channels, bool zero_phase);

 private:
  void FilterChannel(std::size_t channel, passband::TVec& input, passband::TVec& output) override;

  bool zero_phase_;
  std::vector<passband::SignalUtils::TIirState> states_;
};

}  // namespace passband_cli
