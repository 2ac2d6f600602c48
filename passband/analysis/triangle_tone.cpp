#include "passband/analysis/triangle_tone.h"

#include <cmath>

#include "passband/analysis/circular.h"
#include "passband/analysis/stream_position_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/primitives/triangle.h"
#include "passband/vector_core/dispatch.h"

namespace passband::SignalUtils {

void TriangleToneInit(double Freq, double Phase, double Mag, double Asym, TTriangleState& State, bool Complex) {
  TTriangleState fresh;
  fresh.Freq = CircularFrequency(Freq, Complex);
  fresh.Mag = Mag;
  fresh.Phase = CircularPhase(Phase);
  fresh.Asym = EnsureRange(-PI, Asym, PI);
  fresh.Complex = Complex;
  fresh.Initialized = true;
  State = fresh;
}

void TriangleTone(TVec& Dst, TTriangleState& State) {
  if (Dst.Length() == 0) return;
  if (Dst.Complex() != State.Complex) ERaise("Dst.Complex <> ToneState.Complex");
  if (!State.Initialized) ERaise("not ToneState.Initialized");
  const bool negative = State.Complex && State.Freq < 0;
  if (!Dst.IsDouble()) {
    const double sign = negative ? -1 : 1;
    State.Freq = sign * detail::SingleFrequency(sign * State.Freq, State.Complex ? 1 : 0.5);
    State.Mag = ToSingle(State.Mag);
    State.Phase = detail::SinglePhase(State.Phase);
    State.Asym = ToSingle(State.Asym);
  }
  const double freq = negative ? -State.Freq : State.Freq;
  const primitives::TriangleOf triangle{detail::StreamOf(State.Position, freq, State.Phase), State.Mag, State.Asym,
                                        negative};
  ForAny(Dst, [&]<Element T>(ElementTag<T>) {
    const primitives::Status status = primitives::Triangle(Dst.Elements<T>().data(), Dst.Length(), triangle);
    if (primitives::Failed(status)) return;
    detail::Advance(triangle.at, Dst.Length(), Dst.IsDouble(), State.Position, State.Phase);
  });
}

}  // namespace passband::SignalUtils
