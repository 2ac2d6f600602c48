#include "passband/analysis/phase.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

template <RealElement R>
void RemoveJumps(std::span<const R> x, std::span<R> y, R period, R tolerance) {
  const R largest = period - tolerance;
  double turns = 0;  // counted, so that rounding errors do not add up
  R last = x[0];
  for (std::size_t i = 0; i < x.size(); ++i) {
    const R step = x[i] - last;
    last = x[i];
    if (step > largest) {
      turns -= 1;
    } else if (step < -largest) {
      turns += 1;
    }
    y[i] = static_cast<R>(last + turns * period);
  }
}

template <RealElement R>
void AddRamp(std::span<R> y, double slope) {
  for (std::size_t i = 1; i < y.size(); ++i) y[i] = static_cast<R>(y[i] + slope * static_cast<double>(i));
}

// The slope is not used where i mod q is 0: it may be infinite.
template <RealElement R>
void AddSawtooth(std::span<R> y, double slope, std::int32_t length, double period) {
  std::int32_t place = 0;
  for (R& value : y) {
    double sum = place == 0 ? value : value + slope * place;
    if (sum > period / 2) sum -= period;
    value = static_cast<R>(sum);
    if (++place == length) place = 0;
  }
}

std::int32_t SawtoothLength(double padding) {
  const std::int32_t power = LargestExp2(Trunc(padding));
  return Max(power == padding ? power : power / 2, 1);
}

// Returns the lag that takes the end of an unwrapped phase next to zero.
double IntegerLag(double end, double half_period) {
  if (!(std::abs(end) >= 1)) return 0;
  return std::copysign(std::ceil(std::abs(end) / half_period), -end);
}

}  // namespace

double PhaseUnwrap(const TVec& Src, TVec& Dst, TRunningPhase RunningPhase, double ZeroPadding, bool Radians,
                   double Tolerance) {
  if (Src.Complex()) ERaise("Src.Complex");
  const bool partial = RunningPhase == TRunningPhase::rpPartial;
  const std::int32_t length = partial ? SawtoothLength(ZeroPadding) : 0;
  const Borrowed<TVec> result;
  result->Copy(Src);
  double lag = 0;
  ForReal(Src, [&]<RealElement R>(ElementTag<R>) {
    const std::span<R> y = result->Elements<R>();
    if (y.empty()) return;
    const auto period = static_cast<R>(Radians ? 2 * PI : 360);
    const double slope = period / (2 * ZeroPadding);
    if (partial) return AddSawtooth(y, slope, length, period);
    RemoveJumps<R>(y, y, period, static_cast<R>(Radians ? DegToRad(Tolerance) : Tolerance));
    if (RunningPhase == TRunningPhase::rpConstPhase) {
      AddRamp(y, slope);
      if (y.size() > 1) lag = slope * static_cast<double>(y.size() - 1);
    } else if (RunningPhase == TRunningPhase::rpIntegerLag) {
      lag = IntegerLag(y.back(), period / 2);
      if (lag != 0) AddRamp(y, lag * period / 2 / static_cast<double>(y.size()));
    }
  });
  Dst.Take(*result);
  return lag;
}

void PhaseWrap(const TVec& Src, TVec& Dst, double Lag, bool Radians) {
  if (Src.Complex()) ERaise("Src.Complex");
  const Borrowed<TVec> result;
  result->Copy(Src);
  ForReal(Src, [&]<RealElement R>(ElementTag<R>) {
    AddRamp(result->Elements<R>(), -Lag * (Radians ? PI : 180) / Src.Length());
  });
  Dst.Take(*result);
}

}  // namespace passband::SignalUtils
