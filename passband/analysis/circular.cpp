#include "passband/analysis/circular.h"

#include <cmath>

#include "passband/foundation/scalars.h"

namespace passband::SignalUtils {

double CircularFrequency(double Freq, bool Complex) {
  double folded = Freq;
  if (!(std::abs(Freq) < 0.5)) {
    folded = std::remainder(Freq, 1.0);
    if (std::abs(folded) == 0.5) folded = std::copysign(0.5, -Freq);
  }
  return Complex ? folded : std::abs(folded);
}

double CircularPhase(double Phase) {
  const double rest = Rem(Phase, 2 * PI);
  const double folded = rest < 0 ? rest + 2 * PI : rest;
  return folded >= 2 * PI ? 0 : folded;  // a tiny negative phase has rounded to a whole turn
}

}  // namespace passband::SignalUtils
