#include "passband/fir_design/inverse_filter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

#include "passband/analysis/frequency_response.h"
#include "passband/analysis/log_ramp.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/vector_core/interpolation.h"
#include "passband/vector_core/pool.h"
#include "passband/windows/signal_window.h"

namespace passband::SignalUtils {
namespace {

void CheckPoints(const TVec& amplitude, const TVec& frequency, std::int32_t length) {
  const std::int32_t count = frequency.Length();
  if (amplitude.Length() != count) ERaise("InverseFilter: Amplt.Length <> Freq.Length");
  if (amplitude.Complex() || frequency.Complex() || amplitude.IsDouble() != frequency.IsDouble()) {
    ERaise("InverseFilter: Amplt.Complex or Freq.Complex");
  }
  if (length == 0) ERaise("InverseFilter: H.Length is zero but should be equal to desired Length on input!");
  constexpr double kTolerance = 1e-5;
  const auto is_near = [](double x, double target) { return std::abs(x - target) <= kTolerance; };
  if (count == 0 || !is_near(frequency[0], 0) || !is_near(frequency[count - 1], 1)) {
    ERaise("InverseFilter: First and last frequency specified must be 0 and 1!");
  }
  for (std::int32_t i = 1; i < count; ++i) {
    if (!(frequency[i] > frequency[i - 1])) ERaise("InverseFilter: Frequency must be monotonic (increasing)!");
  }
}

// Turns the amplitudes A[i] at the frequencies i / n into spectrum values with the phase -pi i (L - 1) / (2 n), reduced
// in whole numbers.
void AddLinearPhase(TVec& spectrum, std::int64_t length) {
  spectrum.SetFloatPrecision(TMtxFloatPrecision::DoubleComplex);
  const std::span<TCplx> bins = spectrum.CValues();
  const auto n = static_cast<std::int64_t>(bins.size()) - 1;
  for (std::int64_t i = 0; i <= n; ++i) {
    const std::int64_t quarter_turns = (length - 1) * i % (4 * n);  // in units of 1 / n
    const double angle = -PI / 2 * static_cast<double>(quarter_turns) / static_cast<double>(n);
    TCplx& bin = bins[static_cast<std::size_t>(i)];
    bin = {bin.Re * std::cos(angle), bin.Re * std::sin(angle)};
  }
}

// The taps, in double. The points have been checked.
void Design(const TVec& amplitude, const TVec& frequency, std::int32_t length, TSignalWindowType window, TVec& taps) {
  const std::int32_t n = LargestExp2(length);
  const Borrowed<TVec> grid;
  grid->Size(n + 1, TMtxFloatPrecision::DoubleReal);
  grid->Ramp(0, 1.0 / n);
  Interpolate(frequency, amplitude, *grid, *grid, TInterpolationType::Linear, true);
  AddLinearPhase(*grid, length);
  taps.IFFTToReal(*grid);
  taps.Resize(length);
  SignalWindow(taps, window, 0, TSignalWindowMode::wmSymmetric, false);
}

// The amplitude of coloured noise on `count` linearly spaced frequencies from 0 to FS / 2, in decibels over `span`.
void ColoredAmplitude(std::int32_t count, double span, bool falls, double start, double fs, TVec& amplitude) {
  const Borrowed<TVec> profile;
  const Borrowed<TVec> places;
  const Borrowed<TVec> grid;
  profile->Size(count, TMtxFloatPrecision::DoubleReal);
  profile->Ramp(falls ? 1 : 0, (falls ? -1.0 : 1.0) / (count - 1));
  profile->Scale(span / 20);
  profile->Exp10();
  places->Size(count, TMtxFloatPrecision::DoubleReal);
  LogRamp(*places, std::log10(start), std::log10(fs / 2));
  grid->Size(count, TMtxFloatPrecision::DoubleReal);
  grid->Ramp(0, fs / 2 / (count - 1));
  Interpolate(*places, *profile, *grid, amplitude, TInterpolationType::Linear, true);
  amplitude.Scale(1 / amplitude.Max());
  amplitude.SetDefault(0, 1e-5);
}

double PeakGain(const TVec& taps) {
  const Borrowed<TVec> response;
  FrequencyResponse(taps, nullptr, *response, 4);
  response->Abs();
  return response->Max();
}

// Rounds to the precision of H.
void Store(TVec& taps, bool is_double, TVec& H) {
  taps.SetFloatPrecision(MakePrecision(false, is_double));
  H.Take(taps);
}

}  // namespace

void InverseFilter(const TVec& Amplt, const TVec& Freq, TVec& H, TSignalWindowType WindowType) {
  CheckPoints(Amplt, Freq, H.Length());
  const Borrowed<TVec> amplitude;
  const Borrowed<TVec> frequency;
  const Borrowed<TVec> taps;
  amplitude->Copy(Amplt);
  amplitude->SetFloatPrecision(TMtxFloatPrecision::DoubleReal);
  frequency->Copy(Freq);
  frequency->SetFloatPrecision(TMtxFloatPrecision::DoubleReal);
  Design(*amplitude, *frequency, H.Length(), WindowType, *taps);
  Store(*taps, Amplt.IsDouble(), H);
}

void ColoredNoiseFIR(TVec& H, double DbPerDecade, double StartBW, double FS) {
  if (DbPerDecade == 0 || std::isnan(DbPerDecade)) ERaise("DbPerDecade = 0!");
  if (!(StartBW > 0)) ERaise("StartBW <= 0!");
  if (!(FS > 0)) ERaise("FS <= 0!");
  if (!(StartBW < FS / 2)) ERaise("ColoredNoiseFIR: not (StartBW < FS / 2)");
  const double slope = std::abs(DbPerDecade);
  const double r = FS / 16384 * slope / 10;
  constexpr double kMostPoints = 0x1p28;
  if (!(r * 1024 <= kMostPoints)) ERaise("ColoredNoiseFIR: DbPerDecade or FS is too large");
  const std::int32_t points = LargestExp2(Round(r)) * 1024;
  std::int32_t length = std::max(Round(r * 512), 512);
  if (length % 2 == 0) --length;

  const Borrowed<TVec> amplitude;
  const Borrowed<TVec> grid;
  const Borrowed<TVec> taps;
  ColoredAmplitude(points, std::log10(FS / 2 / StartBW) * slope, DbPerDecade > 0, StartBW, FS, *amplitude);
  grid->Size(points, TMtxFloatPrecision::DoubleReal);
  grid->Ramp(0, 1.0 / (points - 1));
  Design(*amplitude, *grid, length, TSignalWindowType::wtBlackman, *taps);
  taps->Scale(1 / PeakGain(*taps));
  Store(*taps, H.IsDouble(), H);
}

}  // namespace passband::SignalUtils
