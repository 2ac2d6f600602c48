#include "passband/primitives/stream_phase.h"

#include <cmath>

namespace passband::primitives {
namespace {

// A number as the sum of two, high being the sum rounded.
struct Pair {
  double high;
  double low;
};

Pair Product(double a, double b) {
  const double high = a * b;
  return {high, std::fma(a, b, -high)};
}

Pair Sum(double a, double b) {
  const double high = a + b;
  const double b_in_sum = high - a;
  return {high, (a - (high - b_in_sum)) + (b - b_in_sum)};
}

}  // namespace

double PhaseOf(const StreamPhase& at) noexcept {
  const Pair turns = Product(at.frequency, static_cast<double>(at.position));
  const double part = turns.high - std::nearbyint(turns.high);  // exact
  const Pair advance = Product(part, kTurn);
  const Pair sum = Sum(at.phase, advance.high);
  const double low = sum.low + (advance.low + (part * kTurnRest + turns.low * kTurn));
  const double phase = sum.high + low;
  if (phase >= 0 && phase < kTurn) return phase;
  const double whole = phase < 0 ? 1 : -1;
  const Pair folded = Sum(sum.high, whole * kTurn);
  const double inside = folded.high + (folded.low + (low + whole * kTurnRest));
  return inside >= 0 && inside < kTurn ? inside : 0;
}

}  // namespace passband::primitives
