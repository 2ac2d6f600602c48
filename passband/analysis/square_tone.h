// Square waves without aliases: sums of the odd harmonics below half the sampling frequency, block after block.
#pragma once

#include <cstdint>
#include <vector>

#include "passband/analysis/tone.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

using TToneStateArray = std::vector<TToneState>;

/// A square wave in work. Frequency, magnitude and phase are for reading; the sound is in the tones, which the owner may
/// change like a `TToneState`.
struct TSquareToneState {
  double Freq = 0;           ///< fundamental frequency as given
  double Mag = 0;            ///< amplitude of the square wave as given
  double Phase = 0;          ///< phase as given
  bool Initialized = false;  ///< set by `SquareToneInit`
  TToneStateArray Tones;     ///< the odd harmonics, the fundamental first
};

/// Starts the Fourier series of a square wave, x[n] = (4 / pi) Mag sum sin(h (2 pi f n + Phase)) / h, h = 1, 3, 5 .. 2 K - 1,
/// f the folded frequency of `CircularFrequency`. K = |0.25 / f| rounded to the nearest integer, ties to even, which takes
/// all odd harmonics below 0.5; one at exactly 0.5 alternates. A fundamental of 0 has no harmonics.
///
/// \param MaxHarmonics  K is at most this; 0 or below: no limit
/// \throws ECoreError "SquareToneInit: more than 1048576 harmonics": set `MaxHarmonics`. The state is then as it was.
/// Cost: allocates 100 bytes a harmonic.
/// Literature: Oppenheim, Willsky, "Signals and Systems", 2nd ed., ch. 3.
PASSBAND_EXPORT void SquareToneInit(double Freq, double Phase, double Mag, TSquareToneState& State,
                                    bool Complex = false, std::int32_t MaxHarmonics = 0);

/// Fills `Dst` with the next block. Everything said of `Tone` holds for each harmonic; harmonics that `Tone` would not
/// generate are left out, and when all are, `Dst` stays as it is.
/// \throws ECoreError "State.Initialized = false"; "Length(State.Tones) = 0"; "Dst.Complex <> ToneState.Complex"
/// Precision: the harmonics are summed in double and rounded once to the precision of `Dst`.
/// Cost: two multiplications and additions a sample and harmonic in long blocks; allocates nothing.
PASSBAND_EXPORT void SquareTone(TVec& Dst, TSquareToneState& State);

/// One block of `Len` samples of a square wave that starts with it. `Dst` keeps its `IsDouble`.
/// \throws ECoreError the text of `TVec::Size` for a negative `Len`, and as `SquareToneInit` and `SquareTone`
PASSBAND_EXPORT void SquareTone(TVec& Dst, std::int32_t Len, double Freq, double Phase, double Mag,
                                bool Complex = false, std::int32_t MaxHarmonics = 0);

}  // namespace passband::SignalUtils
