#include <cmath>

#include "passband/analysis/stream_position_internal.h"

namespace passband::SignalUtils::detail {

primitives::StreamPhase StreamOf(const TStreamPosition& position, double freq, double phase) {
  const bool goes_on = position.Count >= 0 && position.Count <= primitives::kLastPosition && position.Freq == freq &&
                       position.Phase == phase;
  if (goes_on) return {freq, position.Start, position.Count};
  return {freq, phase, 0};
}

void Advance(primitives::StreamPhase at, std::int32_t count, bool is_double, TStreamPosition& position, double& phase) {
  at.position += count;
  const double next = primitives::PhaseOf(at);
  phase = is_double ? next : SinglePhase(next);
  position = {at.phase, at.position, at.frequency, phase};
}

double SingleFrequency(double freq, double limit) {
  const auto rounded = static_cast<float>(freq);
  const auto end = static_cast<float>(limit);
  return freq < limit && rounded >= end ? std::nextafter(end, 0.0F) : rounded;
}

double SinglePhase(double phase) {
  const double rounded = static_cast<float>(phase);
  const bool left = phase < primitives::kTurn && rounded >= primitives::kTurn;
  return left ? static_cast<float>(rounded - primitives::kTurn) : rounded;
}

}  // namespace passband::SignalUtils::detail
