#include "passband/streaming/consistent_parameter.h"

#include "passband/foundation/scalars.h"

namespace passband::SignalUtils {

void ConsistentParameterInit(double Param, TConsistentParam& State) { State = {Param, Now()}; }

bool ConsistentParameterFilter(double Param, double Time, TConsistentParam& State) {
  constexpr double kSecondsPerDay = 86400;
  const TDateTime now = Now();
  if (Param != State.Param || IsNanInf(Param)) {
    State = {Param, now};
    return false;
  }
  return kSecondsPerDay * (now - State.Time) > Time;
}

bool ConsistentParameterFilter(bool Param, double Time, TConsistentParam& State) {
  return ConsistentParameterFilter(Param ? 1.0 : 0.0, Time, State);
}

}  // namespace passband::SignalUtils
