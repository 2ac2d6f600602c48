// Spectra at single frequencies and on arcs, and responses of filters. Goertzel and chirp-z per input sample, responses
// per point. SciPy's and NumPy's rows are joined by run.sh.
#include <cmath>
#include <complex>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/rows.h"
#include "passband/analysis/chirp_z.h"
#include "passband/analysis/frequency_response.h"
#include "passband/analysis/goertzel.h"

namespace passband::bench {
namespace {

constexpr std::int32_t kSamples = 4096;

TVec Signal(bool is_double) {
  TVec x;
  x.Size(kSamples, TMtxFloatPrecision::DoubleReal);
  const std::vector<double> noise = Noise<double>(kSamples);
  std::copy(noise.begin(), noise.end(), x.Values().begin());
  x.SetFloatPrecision(MakePrecision(false, is_double));
  return x;
}

// The recursion of the textbooks.
double PlainGoertzel(const std::vector<double>& x, double frequency) {
  const double factor = 2 * std::cos(2 * std::numbers::pi * frequency);
  double s1 = 0;
  double s2 = 0;
  for (const double sample : x) {
    const double s = sample + factor * s1 - s2;
    s2 = s1;
    s1 = s;
  }
  return s1 * s1 + s2 * s2 - factor * s1 * s2;
}

void MeasureSingleFrequencies(const Rows& rows, bool is_double) {
  const std::string type = is_double ? "type=f64;" : "type=f32;";
  const TVec x = Signal(is_double);
  const std::vector<double> plain = Noise<double>(kSamples);
  const Peer recursion{"plain_recursion", [&] { Keep(PlainGoertzel(plain, 0.1234)); }};
  rows.Measure("goertzel", type + "frequencies=1;samples=4096", {.samples = kSamples},
               [&] { Keep(SignalUtils::Goertz(x, 0.1234)); }, {recursion});
  TVec frequencies;
  frequencies.Size(16, TMtxFloatPrecision::DoubleReal);
  frequencies.Ramp(0.01, 0.025);
  TVec spectrum;
  rows.Measure("goertzel", type + "frequencies=16;samples=4096", {.samples = 16.0 * kSamples, .goal = 0.2},
               [&] { SignalUtils::Goertz(x, frequencies, spectrum); }, {});
}

void MeasureChirpZ(const Rows& rows, bool is_double) {
  const TVec x = Signal(is_double);
  TVec y;
  rows.Measure("chirp_z", std::string(is_double ? "type=f64;" : "type=f32;") + "samples=4096;points=1024",
               {.samples = kSamples, .goal = is_double ? 0.5 : 0}, [&] { SignalUtils::Czt(x, 1024, 0.1, 0.15, y); },
               {});
}

void MeasureResponse(const Rows& rows) {
  const TVec num = {0.1, 0.2, 0.3, 0.2, 0.1, 0.2, 0.3, 0.2, 0.1};
  const TVec den = {1.0, -0.5, 0.3, -0.1, 0.05, 0.02, 0.01, 0.002, 0.001};
  TVec response;
  rows.Measure("frequency_response", "type=f64;order=8;points=4096", {.samples = 4096, .goal = 0.3},
               [&] { SignalUtils::FrequencyResponse(num, &den, response, 910); }, {});
}

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  const passband::bench::Rows rows(argc, argv);
  for (const bool is_double : {false, true}) {
    passband::bench::MeasureSingleFrequencies(rows, is_double);
    passband::bench::MeasureChirpZ(rows, is_double);
  }
  passband::bench::MeasureResponse(rows);
}
