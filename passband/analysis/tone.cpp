#include "passband/analysis/tone.h"

#include <cmath>

#include "passband/analysis/circular.h"
#include "passband/analysis/stream_position_internal.h"
#include "passband/analysis/tone_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/vector_core/dispatch.h"

namespace passband::SignalUtils {
namespace detail {

primitives::ToneOf ToneFrom(TToneState& state, bool is_double) {
  if (!is_double) {
    // Half the sampling frequency itself is an edge, where a real tone belongs that began there.
    const double limit = state.Complex || state.EdgeFreq ? 1 : 0.5;
    state.Freq = SingleFrequency(state.Freq, limit);
    state.Mag = ToSingle(state.Mag);
    state.Phase = SinglePhase(state.Phase);
  }
  return {StreamOf(state.Position, state.Freq, state.Phase), state.Mag, state.Negative};
}

void AdvanceTone(const primitives::ToneOf& tone, std::int32_t count, bool is_double, TToneState& state) {
  Advance(tone.at, count, is_double, state.Position, state.Phase);
}

}  // namespace detail

void ToneInit(double Freq, double Phase, double Mag, TToneState& State, bool Complex) {
  const double folded = CircularFrequency(Freq, Complex);
  TToneState fresh;
  fresh.Freq = std::abs(folded);
  fresh.Mag = Mag;
  fresh.Phase = CircularPhase(Phase - PI / 2);
  fresh.Complex = Complex;
  fresh.Negative = folded < 0;
  fresh.EdgeFreq = folded == 0 || folded == 0.5;
  fresh.Initialized = true;
  State = fresh;
}

void Tone(TVec& Dst, TToneState& State) {
  if (Dst.Length() == 0) return;
  if (Dst.Complex() != State.Complex) ERaise("Dst.Complex <> ToneState.Complex");
  if (!State.Initialized) ERaise("not ToneState.Initialized");
  const primitives::ToneOf tone = detail::ToneFrom(State, Dst.IsDouble());
  ForAny(Dst, [&]<Element T>(ElementTag<T>) {
    const primitives::Status status = primitives::Tone(Dst.Elements<T>().data(), Dst.Length(), tone);
    if (!primitives::Failed(status)) detail::AdvanceTone(tone, Dst.Length(), Dst.IsDouble(), State);
  });
}

void Tone(TVec& Dst, std::int32_t Len, double Freq, double Phase, double Mag, bool Complex) {
  Dst.Size(Len, Complex, Dst.IsDouble());
  TToneState state;
  ToneInit(Freq, Phase, Mag, state, Complex);
  Tone(Dst, state);
}

}  // namespace passband::SignalUtils
