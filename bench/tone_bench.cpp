// Tone generators, per sample. NumPy's rows are joined by run.sh.
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>
#include <vector>

#include "bench/rows.h"
#include "passband/analysis/square_tone.h"
#include "passband/analysis/tone.h"
#include "passband/analysis/triangle_tone.h"

namespace passband::bench {
namespace {

// The loop that a host would write: one cosine a sample, of a phase that collects errors.
template <RealElement R>
void PlainTone(std::vector<R>& x, R& phase) {
  constexpr R kStep = static_cast<R>(2 * std::numbers::pi * 0.0123);
  for (R& v : x) {
    v = std::cos(phase);
    phase += kStep;
    if (phase > static_cast<R>(2 * std::numbers::pi)) phase -= static_cast<R>(2 * std::numbers::pi);
  }
}

template <Element T>
void MeasureTone(const Rows& rows, std::int32_t block, double goal) {
  using R = RealOf<T>;
  TVec x;
  x.Size(block, PrecisionOf<T>);
  SignalUtils::TToneState state;
  SignalUtils::ToneInit(0.0123, 0.3, 1, state, IsComplex<T>);
  std::vector<R> plain(static_cast<std::size_t>(block));
  R phase = 0;
  std::vector<Peer> peers;
  if constexpr (!IsComplex<T>) peers.push_back({"libm", [&] { PlainTone(plain, phase); }});
  rows.Measure(
      "tone", std::string("type=") + TypeName<T>() + ";block=" + std::to_string(block),
      {.samples = static_cast<double>(block), .goal = goal}, [&] { SignalUtils::Tone(x, state); }, peers);
}

template <Element T>
void MeasureOthers(const Rows& rows) {
  const std::string params = std::string("type=") + TypeName<T>() + ";block=4096";
  TVec x;
  x.Size(4096, PrecisionOf<T>);
  SignalUtils::TSquareToneState square;
  SignalUtils::SquareToneInit(0.01, 0.3, 1, square, IsComplex<T>);
  const double tones = static_cast<double>(square.Tones.size());
  rows.Measure("square_tone_per_harmonic", params, {.samples = 4096 * tones},
               [&] { SignalUtils::SquareTone(x, square); }, {});
  SignalUtils::TTriangleState triangle;
  SignalUtils::TriangleToneInit(0.0123, 0.3, 1, 0.5, triangle, IsComplex<T>);
  rows.Measure("triangle_tone", params, {.samples = 4096}, [&] { SignalUtils::TriangleTone(x, triangle); }, {});
}

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  using namespace passband;
  using namespace passband::bench;
  const Rows rows(argc, argv);
  for (const std::int32_t block : {1, 64, 512, 4096}) {
    MeasureTone<double>(rows, block, block == 4096 ? 0.25 : 0);
    MeasureTone<float>(rows, block, block == 4096 ? 0.4 : 0);
    MeasureTone<TCplx>(rows, block, 0);
    MeasureTone<TSCplx>(rows, block, 0);
  }
  MeasureOthers<double>(rows);
  MeasureOthers<float>(rows);
  MeasureOthers<TCplx>(rows);
}
