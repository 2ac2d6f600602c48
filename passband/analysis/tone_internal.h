// A tone as the primitives take it, for generators made of tones.
#pragma once

#include <cstdint>

#include "passband/analysis/tone.h"
#include "passband/primitives/tone.h"

namespace passband::SignalUtils::detail {

/// The tone from its next sample on, for blocks of either precision. Single precision rounds frequency, magnitude and phase
/// in the record first.
primitives::ToneOf ToneFrom(TToneState& state, bool is_double);

/// Moves the record on by `count` samples of `tone`.
void AdvanceTone(const primitives::ToneOf& tone, std::int32_t count, bool is_double, TToneState& state);

}  // namespace passband::SignalUtils::detail
