#include "zoom_spectrum.h"

#include <cstddef>

#include "decibels.h"
#include "failure.h"

namespace passband_cli {

using namespace passband;
using namespace passband::SignalUtils;

Curve ZoomSpectrum(const TVec& samples, double rate_hz, double from_hz, double to_hz, std::int32_t points,
                   const ZoomWindow& window) {
  TVec weighted;
  weighted.Size(samples.Length(), false, true);
  weighted.SetVal(1);
  SignalWindow(weighted, window.type, window.param, TSignalWindowMode::wmPeriodic);
  const double sum = weighted.Sum();
  if (!(sum > 0)) Fail("the stretch of {} samples is too short for a window", samples.Length());
  weighted.Mul(samples);
  const double step = (to_hz - from_hz) / (points - 1);
  TVec spectrum;
  Czt(weighted, points, from_hz, from_hz + step * points, spectrum, rate_hz);
  Curve curve;
  for (std::int32_t k = 0; k < points; ++k) {
    const double hz = from_hz + k * step;
    const bool at_end = hz == 0 || hz == rate_hz / 2;  // where both halves of a sine fall together
    curve.x.push_back(hz);
    curve.y.push_back(Decibels(CAbs(spectrum.CValues()[static_cast<std::size_t>(k)]) * (at_end ? 1 : 2) / sum));
  }
  return curve;
}

}  // namespace passband_cli
