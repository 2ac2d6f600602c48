// Triangle waves of adjustable asymmetry, block after block.
#pragma once

#include "passband/analysis/stream_position.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// A triangle wave in work: a plain record of the owner's, who may change its numbers between two blocks.
struct TTriangleState {
  double Freq = 0;             ///< folded frequency, of complex triangles with its sign
  double Mag = 0;              ///< amplitude
  double Phase = 0;            ///< phase of the next sample, in [0, 2 pi)
  double Asym = 0;             ///< asymmetry, -pi .. pi
  bool Complex = false;        ///< the triangle is complex
  bool Initialized = false;    ///< set by `TriangleToneInit`
  TStreamPosition Position{};  ///< kept by the generator
};

/// Starts the triangle wave x[n] = Mag T(2 pi |f| n + Phase), f the folded frequency of `CircularFrequency`. T is 1 at 0,
/// falls linearly to -1 at pi + Asym, and rises linearly to 1 at 2 pi:
///
///      1 |\                   /|
///        |  \                / |
///      0 |----\-------------/--|-- alpha
///        |      \          /   |
///     -1 |        \_______/    |         (Asym < 0 moves the lowest point to the left, Asym > 0 to the right)
///        0      pi + Asym    2 pi
///
/// A complex triangle has the same wave a quarter of a period later as its imaginary part, Mag T(2 pi |f| n + Phase - pi / 2);
/// negative frequencies give its conjugate.
///
/// \param Freq  any; a real triangle of frequency 0.5 is not generated: `TriangleTone` leaves blocks as they are
/// \param Mag   > 0. Beware: with a magnitude of 0 or below `TriangleTone` leaves blocks as they are.
/// \param Asym  in radians, clamped to -pi .. pi, where the wave is a sawtooth
PASSBAND_EXPORT void TriangleToneInit(double Freq, double Phase, double Mag, double Asym, TTriangleState& State,
                                      bool Complex = false);

/// Fills `Dst` with the next block of the wave. `Dst` and `State` as in `Tone`; single precision rounds `Asym` in the record,
/// too.
/// \throws ECoreError "Dst.Complex <> ToneState.Complex"; "not ToneState.Initialized"
/// Precision: as `Tone`, with errors of the phase times the steeper slope of the wave.
/// Cost: one pass of about fifteen operations a sample; allocates nothing.
PASSBAND_EXPORT void TriangleTone(TVec& Dst, TTriangleState& State);

}  // namespace passband::SignalUtils
