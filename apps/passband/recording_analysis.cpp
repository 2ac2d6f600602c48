#include "recording_analysis.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <numeric>
#include <span>

#include <fmt/format.h>

#include "decibels.h"
#include "power_spectrum.h"
#include "zoom_spectrum.h"

namespace passband_cli {
namespace {

using namespace passband;
using namespace passband::SignalUtils;

TVec Part(const TVec& x, std::int32_t index, std::int32_t length) {
  TVec part;
  part.Size(length, TMtxFloatPrecision::DoubleReal);
  part.Copy(x, index, 0, length);
  return part;
}

// The start of the `length` samples of most power, in steps of a quarter of it.
std::int32_t LoudestStart(const TVec& x, std::int32_t length) {
  const auto values = x.Values();
  const std::int32_t step = std::max(length / 4, 1);
  double most = -1;
  std::int32_t best = 0;
  for (std::int32_t start = 0; start + length <= x.Length(); start += step) {
    const auto part = values.subspan(static_cast<std::size_t>(start), static_cast<std::size_t>(length));
    const double power = std::inner_product(part.begin(), part.end(), part.begin(), 0.0);
    if (power > most) {
      most = power;
      best = start;
    }
  }
  return best;
}

void MeasureLevels(const TVec& x, RecordingAnalysis& result) {
  TVec magnitude;
  magnitude.Abs(x);
  const double peak = magnitude.Max();
  result.mean = x.Mean();
  result.peak_db = Decibels(peak);
  result.rms_db = FullScaleDecibels(x.RMS() * x.RMS());
  result.crest_db = peak > 0 ? Decibels(peak / x.RMS()) : 0;
  result.zero_crossings = ZeroCrossingCount(x);
}

// Lowest and highest value of each of some hundred places.
Curve Waveform(const TVec& x, double rate_hz) {
  constexpr std::size_t kPlaces = 900;
  const auto values = x.Values();
  const std::size_t step = std::max<std::size_t>(values.size() / kPlaces, 1);
  Curve curve;
  for (std::size_t n = 0; n < values.size(); n += step) {
    const auto part = values.subspan(n, std::min(step, values.size() - n));
    const auto [low, high] = std::minmax_element(part.begin(), part.end());
    for (const double y : {*low, *high}) {
      curve.x.push_back(static_cast<double>(n) / rate_hz);
      curve.y.push_back(y);
    }
  }
  return curve;
}

Curve Spectrum(const TVec& x, double rate_hz) {
  constexpr double kResolution = 15;  // Hz
  PowerSpectrum power(1, SegmentLength(rate_hz, kResolution));
  power.Add(x.Values());
  power.Finish();
  const std::vector<double> bins = power.Bins(0);
  const double spacing = rate_hz / power.Segment();
  Curve curve;
  curve.name = "measured";
  for (std::size_t k = 1; k < bins.size(); ++k) {
    curve.x.push_back(static_cast<double>(k) * spacing);
    curve.y.push_back(std::max(FullScaleDecibels(bins[k] / spacing), kLowestDb));
  }
  return curve;
}

// The density 2 err / (rate |A|^2) of the model's one side of the spectrum.
Curve ArSpectrum(const TVec& x, double rate_hz) {
  Curve curve;
  curve.name = fmt::format("autoregressive, order {}", kArOrder);
  TVec centred(x);
  centred.Offset(-x.Mean());
  if (x.Length() <= 2 * kArOrder || !(centred.RMS() > 0)) return curve;
  TVec model;
  TVec reflections;
  double error = 0;
  ArBurg(centred, kArOrder, model, reflections, error);
  TVec response;
  FrequencyResponse(model, nullptr, response, 64);
  const auto values = response.CValues();
  for (std::size_t k = 1; k < values.size(); ++k) {
    curve.x.push_back(rate_hz / 2 * static_cast<double>(k) / static_cast<double>(values.size() - 1));
    const double density = 2 * error / (rate_hz * (values[k].Re * values[k].Re + values[k].Im * values[k].Im));
    curve.y.push_back(std::max(FullScaleDecibels(density), kLowestDb));
  }
  return curve;
}

// A sine between two bins, from the ratio of its two largest ones, which a Hanning window gives the shape
// sin(pi d) / (pi d (1 - d^2)) at a distance of d bins. Literature: Grandke, "Interpolation algorithms for discrete
// Fourier transforms of weighted signals", IEEE Trans. Instrum. Meas. 32, 1983.
SpectralPeak BetweenBins(const TVec& magnitude, std::int32_t k, double rate_hz, std::int32_t length) {
  const double side = magnitude[k + 1] >= magnitude[k - 1] ? 1 : -1;
  const double ratio = std::max(magnitude[k + 1], magnitude[k - 1]) / magnitude[k];
  const double shift = (2 * ratio - 1) / (ratio + 1);
  const double angle = std::numbers::pi * shift;
  const double shape = std::abs(angle) < 1e-6 ? 1 : std::sin(angle) / (angle * (1 - shift * shift));
  return {(k + side * shift) * rate_hz / length, Decibels(4 * magnitude[k] / (shape * length))};
}

// The maxima of the spectrum of the loudest million samples that stand apart from higher ones.
std::vector<SpectralPeak> Peaks(const TVec& x, double rate_hz) {
  constexpr std::size_t kMost = 8;
  constexpr double kSpanDb = 60;      // below the highest one nothing counts as a peak
  constexpr std::int32_t kApart = 6;  // bins, beyond the main lobe of the window
  constexpr std::int32_t kMostSamples = 1 << 20;
  const std::int32_t length = std::min(x.Length(), kMostSamples);
  TVec windowed = Part(x, LoudestStart(x, length), length);
  windowed.Offset(-windowed.Mean());
  SignalWindow(windowed, TSignalWindowType::wtHanning, 0, TSignalWindowMode::wmPeriodic);
  windowed.FFT();
  TVec level;
  level.Mag(windowed);
  const std::int32_t half = length / 2;
  std::vector<SpectralPeak> found;
  for (std::int32_t k = 1; k + 1 < half; ++k) {
    if (level[k] > level[k - 1] && level[k] >= level[k + 1]) found.push_back(BetweenBins(level, k, rate_hz, length));
  }
  std::ranges::sort(found, [](const SpectralPeak& a, const SpectralPeak& b) { return a.decibels > b.decibels; });
  std::vector<SpectralPeak> peaks;
  for (const SpectralPeak& peak : found) {
    if (peaks.size() == kMost || peak.decibels < found.front().decibels - kSpanDb || peak.decibels <= kLowestDb) break;
    const bool apart = std::ranges::all_of(peaks, [&](const SpectralPeak& other) {
      return std::abs(other.hz - peak.hz) > std::max(kApart * rate_hz / length, 0.02 * other.hz);
    });
    if (apart) peaks.push_back(peak);
  }
  return peaks;
}

// The cepstrum of the loudest stretch, and its highest peak between 2 and 20 ms, the periods of voices. Literature: Noll,
// "Cepstrum pitch determination", J. Acoust. Soc. Am. 41, 1967.
void Cepstrum(const TVec& x, double rate_hz, RecordingAnalysis& result) {
  constexpr double kStretch = 0.06;  // s
  constexpr double kShortest = 0.002;
  constexpr double kLongest = 0.02;
  constexpr double kClear = 4.3;  // standard deviations
  const auto wanted = static_cast<std::uint32_t>(kStretch * rate_hz);
  const auto length = static_cast<std::int32_t>(std::bit_ceil(std::max(wanted, 64U)));
  if (x.Length() < length) return;
  TVec cepstrum;
  RealCepstrum(Part(x, LoudestStart(x, length), length), cepstrum, true, TSignalWindowType::wtHamming);
  const auto first = static_cast<std::int32_t>(std::ceil(kShortest * rate_hz));
  const auto last = std::min(static_cast<std::int32_t>(kLongest * rate_hz), cepstrum.Length() - 1);
  if (first >= last) return;
  double squares = 0;
  std::int32_t highest = first;
  for (std::int32_t n = first; n <= last; ++n) {
    result.cepstrum.x.push_back(1e3 * n / rate_hz);
    result.cepstrum.y.push_back(cepstrum[n]);
    squares += cepstrum[n] * cepstrum[n];
    if (cepstrum[n] > cepstrum[highest]) highest = n;
  }
  const double deviation = std::sqrt(squares / (last - first + 1));
  if (deviation > 0 && cepstrum[highest] > kClear * deviation) {
    result.pitch = Pitch{highest / rate_hz, cepstrum[highest] / deviation};
  }
}

Plot Spectrogram(const TVec& x, double rate_hz) {
  constexpr std::int32_t kColumns = 600;
  constexpr double kSpanDb = 90;
  const std::int32_t segment = std::min(SegmentLength(rate_hz, 60), std::max(x.Length() / 4 * 2, 2));
  const std::int32_t rows = segment / 2;
  const std::int32_t last = std::max(x.Length() - segment, 0);
  const std::int32_t columns = std::clamp(4 * x.Length() / segment, 1, kColumns);
  Plot plot;
  plot.title = "Spectrogram";
  plot.x_label = "Time in s";
  plot.y_label = "Frequency in Hz";
  plot.x_max = x.Length() / rate_hz;
  plot.y_max = rate_hz / 2;
  Image& image = plot.image;
  image.columns = static_cast<std::size_t>(columns);
  image.values.resize(static_cast<std::size_t>(rows) * image.columns);
  image.label = "Level in dBFS";
  if (x.Length() < segment) return {};
  TVec part;
  for (std::int32_t c = 0; c < columns; ++c) {
    const auto start = static_cast<std::int32_t>(static_cast<std::int64_t>(last) * c / std::max(columns - 1, 1));
    part = Part(x, start, segment);
    SignalWindow(part, TSignalWindowType::wtHanning, 0, TSignalWindowMode::wmPeriodic);
    part.FFT();
    for (std::int32_t r = 0; r < rows; ++r) {
      image.values[static_cast<std::size_t>(r) * image.columns + static_cast<std::size_t>(c)] =
          Decibels(4 * CAbs(part.CValues()[static_cast<std::size_t>(r)]) / segment);
    }
  }
  image.highest = 10 * std::ceil(*std::ranges::max_element(image.values) / 10);
  image.lowest = image.highest - kSpanDb;
  return plot;
}

}  // namespace

RecordingAnalysis AnalyzeRecording(const Stretch& stretch) {
  constexpr double kZoom = 0.05;  // to either side, of the frequency
  constexpr std::int32_t kZoomPoints = 801;
  const TVec& x = stretch.samples;
  const double rate = stretch.rate_hz;
  RecordingAnalysis result;
  result.rate_hz = rate;
  result.duration_s = x.Length() / rate;
  MeasureLevels(x, result);
  result.waveform = Waveform(x, rate);
  result.spectrum = Spectrum(x, rate);
  result.ar_spectrum = ArSpectrum(x, rate);
  result.peaks = Peaks(x, rate);
  Cepstrum(x, rate, result);
  result.spectrogram = Spectrogram(x, rate);
  if (!result.peaks.empty()) {
    const double centre = result.peaks.front().hz;
    TVec centred(x);
    centred.Offset(-x.Mean());
    const double end = std::min(centre * (1 + kZoom), rate / 2);
    result.zoom = ZoomSpectrum(centred, rate, centre * (1 - kZoom), end, kZoomPoints, {});
  }
  return result;
}

}  // namespace passband_cli
