// Phases without jumps, and with their linear part taken out and put back.
#pragma once

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Removes the jumps by a period P (2 pi, or 360 degrees) from a sampled phase: where it steps up by more than P - T, all
/// that follows goes down by one period, where it steps down by more, up by one; T is the tolerance. Then carries on a
/// running phase, with s = P / (2 ZeroPadding):
///
/// | `RunningPhase` | added to element i | result    |
/// |----------------|--------------------|-----------|
/// | `rpDefault`    | 0                  | 0         |
/// | `rpConstPhase` | s i                | s (N - 1) |
/// | `rpIntegerLag` | r (P / 2) i / N    | r         |
/// | `rpPartial`    | s (i mod q)        | 0         |
///
/// The integer lag r brings the last element e next to 0: ceil(|e| / (P / 2)) with the sign opposite to that of e, 0 when
/// |e| < 1. `rpPartial` removes no jumps, but subtracts P from sums above P / 2; q is ZeroPadding when that is a power of
/// two, else the largest power of two below it, at least 1.
///
/// \param Src          real, N elements
/// \param Dst          N elements in the precision of `Src`; may be `Src`
/// \param ZeroPadding  points of the transform over samples of the signal
/// \param Radians      radians, or degrees
/// \param Tolerance    T in degrees, whatever `Radians`: 180 takes steps of more than half a period for jumps, less keeps
///                     larger steps
/// \throws ECoreError "Src.Complex"; "LargestExp2: n > 2^30" (`rpPartial`). `Dst` is then as it was.
/// Precision: of single precision data P, T and the steps are single, so that jumps are told apart as in the data; every
/// element is rounded once. Cost: one pass.
/// Literature: Oppenheim, Schafer, "Discrete-Time Signal Processing", ch. 13 (the integer lag of the complex cepstrum).
PASSBAND_EXPORT double PhaseUnwrap(const TVec& Src, TVec& Dst, TRunningPhase RunningPhase = TRunningPhase::rpDefault,
                                   double ZeroPadding = 1, bool Radians = true, double Tolerance = 180);

/// Dst[i] = Src[i] - i Lag (P / 2) / N: takes out what `rpIntegerLag` has added with the result `Lag`.
/// \throws ECoreError "Src.Complex"
PASSBAND_EXPORT void PhaseWrap(const TVec& Src, TVec& Dst, double Lag, bool Radians = true);

}  // namespace passband::SignalUtils
