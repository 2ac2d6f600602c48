#include <cmath>
#include <vector>

#include "csv_file.h"
#include "failure.h"
#include "fir_methods.h"
#include "fir_type.h"

namespace passband_cli {
namespace {

using namespace passband;
using namespace passband::SignalUtils;

std::int32_t RequiredLength(const FirOptions& options, std::int32_t least) {
  if (!options.length) Fail("--length is required with --method {}", options.method);
  const std::int32_t length = *options.length;
  if (length < least || length > kMostTaps) Fail("--length: {} is not between {} and {}", length, least, kMostTaps);
  return length;
}

// Row `derivative` of the fit gives its coefficient in units of a sample: times k! and rate^k it is the derivative in
// units of a second. A filter meets the samples of a frame in reverse.
void TakeDerivative(const TMtx& fit, std::int32_t derivative, double gain, TapSet& set) {
  double factor = gain;
  for (std::int32_t k = 1; k <= derivative; ++k) factor *= k * set.rate_hz;
  const std::int32_t last = fit.Cols() - 1;
  set.taps.Size(fit.Cols(), false, fit.IsDouble());
  for (std::int32_t n = 0; n <= last; ++n) set.taps.SetDefault(n, factor * fit(derivative, last - n));
}

struct Amplitude {
  std::vector<double> frequencies_hz;
  std::vector<double> decibels;
};

Amplitude ReadAmplitude(const std::string& path) {
  CsvTable table(path);
  if (table.Columns() != 2)
    Fail("{}: amplitudes have 2 columns, frequency and gain in dB; {} found", path, table.Columns());
  Amplitude amplitude;
  for (auto row = table.NextRow(); !row.empty(); row = table.NextRow()) {
    if (!std::isfinite(row[0]) || !std::isfinite(row[1])) Fail("{}: a number is not finite", path);
    if (!amplitude.frequencies_hz.empty() && !(amplitude.frequencies_hz.back() < row[0])) {
      Fail("{}: {} Hz after {} Hz; frequencies must ascend", path, row[0], amplitude.frequencies_hz.back());
    }
    amplitude.frequencies_hz.push_back(row[0]);
    amplitude.decibels.push_back(row[1]);
  }
  return amplitude;
}

}  // namespace

void DesignSavGol(TapDesign& design) {
  const FirOptions& options = design.options;
  const std::int32_t frame = RequiredLength(options, 1);
  if (frame % 2 == 0) Fail("--length: a frame of {} samples has no middle one; it must be odd", frame);
  if (!options.order) Fail("--order is required with --method savgol");
  const std::int32_t order = *options.order;
  if (order < 0 || order >= frame) Fail("--order: {} is not between 0 and {}", order, frame - 1);
  const std::int32_t derivative = options.derivative.value_or(0);
  if (derivative < 0 || derivative > order) Fail("--derivative: {} is not between 0 and --order", derivative);
  TMtx smooth;
  TMtx fit;
  smooth.Size(0, 0, false, design.is_double);
  SavGolayImpulse(smooth, &fit, frame, order);
  TakeDerivative(fit, derivative, options.gain, design.set);
  design.record["order"] = order;
  design.record["derivative"] = derivative;
}

void DesignInverse(TapDesign& design) {
  const FirOptions& options = design.options;
  TapSet& set = design.set;
  const std::int32_t length = RequiredLength(options, 2);
  if (!options.amplitude) Fail("--amplitude is required with --method inverse");
  const Amplitude amplitude = ReadAmplitude(*options.amplitude);
  const auto count = static_cast<std::int32_t>(amplitude.decibels.size());
  constexpr double kTolerance = 1e-5;  // of half the rate
  const double half = set.rate_hz / 2;
  if (count < 2 || std::abs(amplitude.frequencies_hz.front()) > kTolerance * half ||
      std::abs(amplitude.frequencies_hz.back() - half) > kTolerance * half) {
    Fail("{}: the frequencies must reach from 0 to {} Hz, half the sampling rate", *options.amplitude, half);
  }
  TVec gains;
  TVec frequencies;
  gains.Size(count, false, design.is_double);
  frequencies.Size(count, false, design.is_double);
  for (std::int32_t n = 0; n < count; ++n) {
    const double decibels = amplitude.decibels[static_cast<std::size_t>(n)];
    gains.SetDefault(n, options.gain * std::pow(10.0, (options.invert ? -decibels : decibels) / 20));
    frequencies.SetDefault(n, amplitude.frequencies_hz[static_cast<std::size_t>(n)] / half);
  }
  const TSignalWindowType window = WindowFromName(options.window.value_or("hamming"));
  set.taps.Size(length, false, design.is_double);
  InverseFilter(gains, frequencies, set.taps, window);
  design.record["window"] = SignalWindowToString(window);
}

void DesignNoise(TapDesign& design) {
  const FirOptions& options = design.options;
  TapSet& set = design.set;
  if (!options.slope_db) Fail("--slope is required with --method noise");
  const double slope = *options.slope_db;
  if (!std::isfinite(slope) || slope == 0) Fail("--slope: {} dB per decade is no slope", slope);
  CheckFrequencies("--edges", options.edges_hz, set.rate_hz);
  if (options.edges_hz.size() != 1 || !(options.edges_hz[0] > 0) || !(options.edges_hz[0] < set.rate_hz / 2)) {
    Fail("--edges: coloured noise takes 1 frequency above 0 and below half the rate, the start of its slope");
  }
  set.edges_hz = options.edges_hz;
  ColoredNoiseFIR(set.taps, slope, set.edges_hz[0], set.rate_hz);
  set.taps.Scale(options.gain);
  design.record["slope_db"] = slope;
}

}  // namespace passband_cli
