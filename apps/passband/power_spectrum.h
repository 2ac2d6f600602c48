// The power of a signal over frequency.
//
// The estimate averages the power of overlapping segments under a Hanning window (Welch, "The use of fast Fourier
// transform for the estimation of power spectra", IEEE Trans. Audio Electroacoust. 15, 1967). Segments overlap by three
// quarters and start before the signal and end behind it, so that the squares of the windows add up to the same number
// over every sample: the powers of all bins together are exactly the mean square of the signal.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <passband/passband.h>

namespace passband_cli {

class PowerSpectrum {
 public:
  /// `segment` samples are transformed at a time, a multiple of 4; bins lie rate / segment apart.
  PowerSpectrum(int channels, std::int32_t segment);

  /// Adds interleaved frames, any number at a time.
  void Add(std::span<const double> samples);
  /// Ends the signal.
  void Finish();

  std::int64_t Frames() const { return frames_; }
  std::int32_t Segment() const { return segment_; }
  /// Mean square of each bin 0 .. segment / 2, positive and negative frequencies together; after `Finish`.
  std::vector<double> Bins(int channel) const;

 private:
  struct Channel {
    std::vector<double> history;  // the last `segment_` samples
    passband::TVec power;         // sum over the segments so far
  };
  void TransformSegment(Channel& channel);

  std::int32_t segment_;
  std::size_t hop_;
  std::size_t waiting_ = 0;  // new samples in each history since the last transform
  std::int64_t frames_ = 0;
  std::vector<Channel> channels_;
  passband::TVec window_;
  passband::TVec work_;
  passband::TVec spectrum_;
  passband::TVec power_;
};

/// The segment length that resolves `resolution_hz`: a power of two.
std::int32_t SegmentLength(double rate_hz, double resolution_hz);

/// The power between two frequencies. A bin covers half the distance to its neighbours; bins across an edge count with
/// the part that lies inside.
double PowerBetween(const std::vector<double>& bins, double rate_hz, double low_hz, double high_hz);

/// 10 log10 of a mean square relative to a sine of full scale: such a sine, of amplitude 1, has 0 dB.
double FullScaleDecibels(double mean_square);

}  // namespace passband_cli
