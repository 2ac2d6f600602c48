#include "passband/analysis/decibels.h"

#include <cmath>
#include <limits>
#include <numbers>

#include "passband/foundation/exceptions.h"
#include "passband/primitives/log_scale.h"
#include "passband/vector_core/dispatch.h"

namespace passband::SignalUtils {
namespace {

// Units for each factor of e, to more digits than a double has.
long double Slope(double base, double factor) {
  return static_cast<long double>(factor) / std::log(static_cast<long double>(base));
}

primitives::LogScale ScaleOf(long double slope, double reference, double floor) {
  const long double octave = slope * std::numbers::ln2_v<long double>;
  int exponent = 0;  // of the first 12 bits
  const double mantissa = std::frexp(static_cast<double>(octave), &exponent);
  const double high = std::ldexp(std::nearbyint(std::ldexp(mantissa, 12)), exponent - 12);
  return {.reference = reference,
          .slope = static_cast<double>(slope),
          .octave_high = high,
          .octave_low = static_cast<double>(octave - high),
          .floor = floor};
}

}  // namespace

double AmpltToLog(TDense& Data, double Base, double Span, double Reference, double Factor, bool UseReference) {
  if (Data.Complex()) ERaise("AmpltToLog: complex Data");
  const double floor = 0 - Span;  // not -0
  if (!(Reference > 0)) {
    Data.SetVal(floor);
    return floor;
  }
  const long double slope = Slope(Base, Factor);
  if (!(slope > 0 && slope < std::numeric_limits<float>::max())) ERaise("AmpltToLog: not (Base^(1/Factor) > 1)");
  const primitives::LogScale scale = ScaleOf(slope, UseReference ? Reference : 1, floor);
  ForReal(Data, [&]<RealElement R>(ElementTag<R>) {
    // The status is Ok: pointer and count are sound.
    static_cast<void>(primitives::ToLogScale(Data.Elements<R>().data(), Data.Length(), scale));
  });
  return floor;
}

double AmpltToDb(TDense& Data, double Base, double Span, double Reference, bool UseReference) {
  return AmpltToLog(Data, Base, Span, Reference, 20, UseReference);
}

}  // namespace passband::SignalUtils
