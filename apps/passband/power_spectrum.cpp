#include "power_spectrum.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace passband_cli {

using namespace passband;
using namespace passband::SignalUtils;

PowerSpectrum::PowerSpectrum(int channels, std::int32_t segment)
    : segment_(segment), hop_(static_cast<std::size_t>(segment / 4)), channels_(static_cast<std::size_t>(channels)) {
  window_.Size(segment, false, true);
  window_.SetVal(1.0);
  Hanning(window_, TSignalWindowMode::wmPeriodic);
  for (Channel& channel : channels_) {
    channel.history.assign(static_cast<std::size_t>(segment), 0.0);
    channel.power.Size(segment / 2 + 1, false, true);
    channel.power.SetZero();
  }
}

void PowerSpectrum::Add(std::span<const double> samples) {
  const std::size_t count = channels_.size();
  const std::size_t frames = samples.size() / count;
  frames_ += static_cast<std::int64_t>(frames);
  for (std::size_t done = 0; done < frames;) {
    const std::size_t take = std::min(frames - done, hop_ - waiting_);
    for (std::size_t c = 0; c < count; ++c) {
      const auto place = channels_[c].history.end() - static_cast<std::ptrdiff_t>(hop_ - waiting_);
      for (std::size_t n = 0; n < take; ++n) place[static_cast<std::ptrdiff_t>(n)] = samples[(done + n) * count + c];
    }
    done += take;
    waiting_ += take;
    if (waiting_ < hop_) return;
    for (Channel& channel : channels_) TransformSegment(channel);
    waiting_ = 0;
  }
}

// Adds the power of the segment and makes room for the next step; the room is zero, in case nothing follows.
void PowerSpectrum::TransformSegment(Channel& channel) {
  work_.Size(segment_, false, true);
  std::copy(channel.history.begin(), channel.history.end(), work_.Values().begin());
  work_.Mul(window_);
  spectrum_.FFT(work_);
  power_.PowerSpectrum(spectrum_);
  channel.power.Add(power_);
  const auto step = static_cast<std::ptrdiff_t>(hop_);
  std::copy(channel.history.begin() + step, channel.history.end(), channel.history.begin());
  std::fill(channel.history.end() - step, channel.history.end(), 0.0);
}

void PowerSpectrum::Finish() {
  const int segments = waiting_ > 0 ? 4 : 3;  // until the last sample has been in four of them
  for (int s = 0; s < segments; ++s) {
    for (Channel& channel : channels_) TransformSegment(channel);
  }
  waiting_ = 0;
}

std::vector<double> PowerSpectrum::Bins(int channel) const {
  const std::span<const double> sums = channels_[static_cast<std::size_t>(channel)].power.Values();
  std::vector<double> bins(sums.begin(), sums.end());
  if (frames_ == 0) return bins;
  // Four shifts of the squared window add up to 3/2; by Parseval's theorem the bins carry a factor `segment`.
  const double scale = 1 / (1.5 * segment_ * static_cast<double>(frames_));
  for (std::size_t k = 0; k < bins.size(); ++k) bins[k] *= k == 0 || k + 1 == bins.size() ? scale : 2 * scale;
  return bins;
}

std::int32_t SegmentLength(double rate_hz, double resolution_hz) {
  const double length = std::clamp(rate_hz / resolution_hz, 64.0, 1048576.0);
  return static_cast<std::int32_t>(std::bit_ceil(static_cast<std::uint32_t>(std::ceil(length))));
}

double PowerBetween(const std::vector<double>& bins, double rate_hz, double low_hz, double high_hz) {
  const auto last = static_cast<double>(bins.size() - 1);
  const double spacing = rate_hz / 2 / last;
  double power = 0;
  for (std::size_t k = 0; k < bins.size(); ++k) {
    const double from = std::max(static_cast<double>(k) - 0.5, 0.0);
    const double to = std::min(static_cast<double>(k) + 0.5, last);
    const double inside = std::min(to, high_hz / spacing) - std::max(from, low_hz / spacing);
    power += bins[k] * std::clamp(inside / (to - from), 0.0, 1.0);
  }
  return power;
}

double FullScaleDecibels(double mean_square) { return 10 * std::log10(2 * mean_square); }

}  // namespace passband_cli
