// What can be said of a recording: levels, peaks, crossings, spectra, cepstrum.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plot.h"
#include "recording_stretch.h"

namespace passband_cli {

struct SpectralPeak {
  double hz = 0;
  double decibels = 0;  ///< level of a sine, relative to one of full scale
};

struct Pitch {
  double period_s = 0;
  double height = 0;  ///< of the cepstral peak, in its standard deviations
};

struct RecordingAnalysis {
  double rate_hz = 0;
  double duration_s = 0;
  double mean = 0;
  double peak_db = 0;   ///< largest sample, relative to full scale
  double rms_db = 0;    ///< relative to a sine of full scale
  double crest_db = 0;  ///< peak over effective value
  std::int64_t zero_crossings = 0;
  std::vector<SpectralPeak> peaks;  ///< the highest first
  std::optional<Pitch> pitch;       ///< when the cepstrum of the loudest stretch has a clear peak

  Curve waveform;     ///< over seconds, lowest and highest value of each place
  Curve spectrum;     ///< power density in dBFS per Hz
  Curve ar_spectrum;  ///< the same of an autoregressive model
  Curve cepstrum;     ///< of the loudest stretch, over quefrency in ms
  Curve zoom;         ///< levels around the highest peak
  Plot spectrogram;
};

/// The order of the autoregressive model.
inline constexpr std::int32_t kArOrder = 48;

RecordingAnalysis AnalyzeRecording(const Stretch& stretch);

}  // namespace passband_cli
