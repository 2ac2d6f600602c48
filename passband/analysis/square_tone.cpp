#include "passband/analysis/square_tone.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>
#include <type_traits>
#include <utility>

#include "passband/analysis/circular.h"
#include "passband/analysis/tone_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/vector_core/dispatch.h"

namespace passband::SignalUtils {
namespace {

constexpr const char* kNoTones = "Length(State.Tones) = 0";
constexpr std::int32_t kMaxHarmonics = 1 << 20;

std::int32_t HarmonicCount(double folded, std::int32_t limit) {
  if (folded == 0) return 0;
  const std::int32_t all = Round(std::abs(0.25 / folded));
  const std::int32_t count = limit > 0 ? std::min(all, limit) : all;
  if (count > kMaxHarmonics) ERaise("SquareToneInit: more than 1048576 harmonics");
  return count;
}

// Samples whose sum is formed at a time: small enough for the first-level cache, long enough for the tones' tables.
constexpr std::size_t kChunk = 1024;

// The next samples of all harmonics, at most kChunk; dst stays as it is when no harmonic can be generated.
template <Element T>
void AddHarmonics(std::span<T> dst, std::span<TToneState> tones) {
  using Sum = std::conditional_t<IsComplex<T>, TCplx, double>;
  constexpr bool kDouble = IsDoublePrecision(PrecisionOf<T>);
  const auto count = static_cast<std::int32_t>(dst.size());
  std::array<Sum, kChunk> sum;
  std::fill_n(sum.begin(), dst.size(), Sum{});
  bool any = false;
  for (TToneState& state : tones) {
    const primitives::ToneOf tone = detail::ToneFrom(state, kDouble);
    if (primitives::Failed(primitives::ToneAdd(sum.data(), count, tone))) continue;
    detail::AdvanceTone(tone, count, kDouble, state);
    any = true;
  }
  if (!any) return;
  std::transform(sum.begin(), sum.begin() + count, dst.begin(), [](Sum x) { return static_cast<T>(x); });
}

}  // namespace

void SquareToneInit(double Freq, double Phase, double Mag, TSquareToneState& State, bool Complex,
                    std::int32_t MaxHarmonics) {
  const double folded = CircularFrequency(Freq, Complex);
  TSquareToneState fresh;
  fresh.Freq = Freq;
  fresh.Mag = Mag;
  fresh.Phase = Phase;
  fresh.Initialized = true;
  fresh.Tones.resize(static_cast<std::size_t>(HarmonicCount(folded, MaxHarmonics)));
  double h = 1;
  for (TToneState& tone : fresh.Tones) {
    ToneInit(folded * h, Phase * h, 4 / PI / h * Mag, tone, Complex);
    h += 2;
  }
  State = std::move(fresh);
}

void SquareTone(TVec& Dst, TSquareToneState& State) {
  if (Dst.Length() == 0) return;
  if (!State.Initialized) ERaise("State.Initialized = false");
  if (State.Tones.empty()) ERaise(kNoTones);
  if (Dst.Complex() != State.Tones.front().Complex) ERaise("Dst.Complex <> ToneState.Complex");
  ForAny(Dst, [&]<Element T>(ElementTag<T>) {
    const auto x = Dst.Elements<T>();
    for (std::size_t n = 0; n < x.size(); n += kChunk) {
      AddHarmonics(x.subspan(n, std::min(kChunk, x.size() - n)), std::span<TToneState>(State.Tones));
    }
  });
}

void SquareTone(TVec& Dst, std::int32_t Len, double Freq, double Phase, double Mag, bool Complex,
                std::int32_t MaxHarmonics) {
  TSquareToneState state;
  SquareToneInit(Freq, Phase, Mag, state, Complex, MaxHarmonics);
  if (Len > 0 && state.Tones.empty()) ERaise(kNoTones);  // before Dst changes
  Dst.Size(Len, Complex, Dst.IsDouble());
  SquareTone(Dst, state);
}

}  // namespace passband::SignalUtils
