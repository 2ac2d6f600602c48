// Prints what one looks up when choosing a window: coherent gain, equivalent noise bandwidth, scalloping loss and the
// highest side lobe, measured on windows of 64 points. Compare with the table in F. J. Harris, "On the use of windows
// for harmonic analysis with the discrete Fourier transform", Proceedings of the IEEE 66, 1978.
#include <passband/passband.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>

namespace {

using namespace passband;
using namespace passband::SignalUtils;
using enum TSignalWindowType;

constexpr std::int32_t kLength = 64;
constexpr std::int32_t kPadding = 64;  // points between two bins of the transform, to see the lobes

struct Row {
  TSignalWindowType window;
  double parameter;
};

// A window is what it makes of a vector of ones.
TVec WindowOf(const Row& row) {
  TVec w;
  w.Size(kLength, TMtxFloatPrecision::DoubleReal);
  w.SetVal(1.0);
  SignalWindow(w, row.window, row.parameter, TSignalWindowMode::wmPeriodic);
  return w;
}

// Magnitude of the transform, kPadding points per bin, 1 at frequency 0.
TVec Spectrum(const TVec& w) {
  TVec spectrum = w;
  spectrum.Resize(kLength * kPadding, true);
  spectrum.FFT();
  TVec magnitude;
  magnitude.Mag(spectrum);
  magnitude.Scale(1 / w.Sum());
  return magnitude;
}

// The largest value behind the main lobe, which ends with the first minimum below its half (the top of a flat-top
// window has minima of its own).
double HighestSideLobe(const TVec& magnitude) {
  std::int32_t k = 1;
  while (k + 1 < magnitude.Length() && (magnitude[k] > 0.5 || magnitude[k + 1] < magnitude[k])) ++k;
  double highest = 0;
  for (; k < magnitude.Length(); ++k) highest = std::max(highest, magnitude[k]);
  return highest;
}

// To three places; adding 0 makes a negative zero positive.
double Decibels(double ratio) { return std::round(20e3 * std::log10(ratio)) / 1e3 + 0.0; }

void Run() {
  constexpr Row kRows[] = {{wtRectangular, 0},    {wtBartlett, 0},      {wtHanning, 0},        {wtHamming, 0},
                           {wtBlackman, -0.16},   {wtBlackmanExact, 0}, {wtBlackmanHarris, 0}, {wtFlatTop, 0},
                           {wtCosineTappered, 0}, {wtKaiser, 6},        {wtKaiser, 9},         {wtChebyshev, 60}};
  std::printf("%-16s %9s %9s %11s %11s %11s\n", "window", "parameter", "gain", "noise bins", "scallop dB", "lobe dB");
  for (const Row& row : kRows) {
    const TVec w = WindowOf(row);
    const TVec magnitude = Spectrum(w);
    const double sum = w.Sum();
    const double noise_bandwidth = kLength * w.DotProd(w) / (sum * sum);
    std::printf("%-16s %9g %9.3f %11.3f %11.3f %11.1f\n", SignalWindowToString(row.window).c_str(), row.parameter,
                sum / kLength, noise_bandwidth, Decibels(1 / magnitude[kPadding / 2]),
                Decibels(HighestSideLobe(magnitude)));
  }
}

}  // namespace

int main() {
  try {
    Run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "window_table: %s\n", error.what());
    return 1;
  }
  return 0;
}
