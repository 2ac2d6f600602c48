// How generators read and advance their position, and what single precision does to the numbers in their records.
#pragma once

#include <cstdint>

#include "passband/analysis/stream_position.h"
#include "passband/primitives/stream_phase.h"

namespace passband::SignalUtils::detail {

/// The stream that a record with this frequency (>= 0) and phase is in.
primitives::StreamPhase StreamOf(const TStreamPosition& position, double freq, double phase);

/// Moves on by `count` samples of the stream `at`; `phase` becomes the phase of the next sample, rounded to single
/// precision unless `is_double`.
void Advance(primitives::StreamPhase at, std::int32_t count, bool is_double, TStreamPosition& position, double& phase);

/// `value` in single precision, and back inside [0, limit) if rounding has left it: a frequency becomes the next lower
/// number, a phase less a whole turn.
double SingleFrequency(double freq, double limit);
double SinglePhase(double phase);

}  // namespace passband::SignalUtils::detail
