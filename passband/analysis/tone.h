// Sine tones that go on seamlessly from block to block, and that stay exact however long they run.
//
// Frequencies are relative to the sampling frequency, phases are in radians. A sample depends on its number in the stream
// only: blocks of any lengths give the same bits, and no error grows with time.
#pragma once

#include <cstdint>

#include "passband/analysis/stream_position.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// A tone in work: a plain record of the owner's, who may read it and between two blocks change its frequency, magnitude
/// or phase. Only `ToneInit` may set the flags.
struct TToneState {
  double Freq = 0;             ///< magnitude of the folded frequency, 0 .. 0.5
  double Mag = 0;              ///< amplitude
  double Phase = 0;            ///< phase of the next sample as that of a cosine, in [0, 2 pi)
  bool Complex = false;        ///< the tone is complex
  bool Negative = false;       ///< the folded frequency of a complex tone is negative
  bool EdgeFreq = false;       ///< the folded frequency is exactly 0 or exactly 0.5
  bool Initialized = false;    ///< set by `ToneInit`
  TStreamPosition Position{};  ///< kept by the generator
};

/// Starts the tone x[n] = Mag sin(2 pi f n + Phase) or, when `Complex`, Mag exp(+-j (2 pi |f| n + Phase - pi / 2)) with the
/// sign of f; f is the folded frequency of `CircularFrequency`. A complex tone of negative frequency is the conjugate of
/// that of the positive one.
///
/// \param Freq     any; of real tones 0 is a constant and 0.5 alternates
/// \param Mag      > 0. Beware: with a magnitude of 0 or below `Tone` leaves blocks as they are instead of silencing them.
/// \param Complex  of the blocks to come
PASSBAND_EXPORT void ToneInit(double Freq, double Phase, double Mag, TToneState& State, bool Complex = false);

/// Fills `Dst` with the next block of the tone.
///
/// \param Dst    sized by the caller; an empty one returns at once. Left as it is when the magnitude is not above 0 or the
///               frequency or phase is not a number, which nothing reports.
/// \param State  `Phase` becomes that of the sample after the block, rounded once. Blocks of single precision round `Freq`,
///               `Mag` and `Phase` in the record to single precision; the tone itself goes on with its exact phase.
/// \throws ECoreError "Dst.Complex <> ToneState.Complex"; "not ToneState.Initialized"
/// Precision: errors below 6e-16 Mag against the exact tone of the frequency and first phase in the record, after any
/// number of samples; single precision data are computed in double and rounded once.
/// Cost: two multiplications and additions a sample in long blocks, as much as six cosines for a block of one; allocates
/// nothing.
/// Literature: Dekker, "A floating-point technique for extending the available precision", Numer. Math. 18, 1971.
PASSBAND_EXPORT void Tone(TVec& Dst, TToneState& State);

/// One block of `Len` samples of a tone that starts with it. `Dst` keeps its `IsDouble` and becomes complex or real.
/// \throws ECoreError the text of `TVec::Size` for a negative `Len`
PASSBAND_EXPORT void Tone(TVec& Dst, std::int32_t Len, double Freq, double Phase, double Mag, bool Complex = false);

}  // namespace passband::SignalUtils
