#include "passband/streaming/differentiate.h"

#include <array>
#include <cmath>
#include <cstddef>

#include "passband/streaming/overlap_internal.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

// Real and imaginary part of one complex number of a record.
using Parts = std::array<double*, 2>;

// Complex data are two interleaved streams of reals.
template <Element T>
inline constexpr std::size_t kParts = sizeof(T) / sizeof(RealOf<T>);

template <RealElement R, std::size_t kStep>
void Difference(const R* x, R* y, std::size_t count, const Parts& start2, const Parts& start1, R factor) {
  // Before y overwrites it: the last sample, and the one before it (of a block of one sample, that of the state).
  std::array<double, kStep> last1;
  std::array<double, kStep> last2;
  for (std::size_t p = 0; p < kStep; ++p) {
    last1[p] = static_cast<double>(x[count - kStep + p]);
    last2[p] = count > kStep ? static_cast<double>(x[count - 2 * kStep + p]) : *start1[p];
  }
  // Downward, so that y may be x.
  for (std::size_t i = count; i > 2 * kStep; --i) y[i - 1] = (x[i - 1] - x[i - 1 - 2 * kStep]) * factor;
  for (std::size_t p = 0; p < kStep; ++p) {
    if (count > kStep) y[kStep + p] = (x[kStep + p] - static_cast<R>(*start1[p])) * factor;
    y[p] = (x[p] - static_cast<R>(*start2[p])) * factor;
    *start1[p] = last1[p];
    *start2[p] = last2[p];
  }
}

struct Integral {
  double high;
  double low;
  double last1;
  double last2;
};

// The sum goes on from its two parts unless its owner has given it another value.
Integral From(double sum, double high, double low, double last1, double last2) {
  if (sum == high + low) return {high, low, last1, last2};
  return {sum, 0, last1, last2};
}

// One part of the data, every `step`-th number. Only one addition waits for the one before it: the rounding errors are found
// (Knuth) and summed up aside.
template <RealElement R>
void Sum(const R* x, R* y, std::size_t count, std::size_t step, Integral& state, R factor) {
  Integral s = state;
  R x2 = static_cast<R>(s.last2);
  R x1 = static_cast<R>(s.last1);
  for (std::size_t i = 0; i < count; i += step) {
    const R x0 = x[i];
    const double term = static_cast<double>((x2 + R{4} * x1 + x0) * factor);
    const double sum = s.high + term;
    const double added = sum - s.high;
    const double lost = (s.high - (sum - added)) + (term - added);
    s.low += std::isfinite(lost) ? lost : 0;  // else the sum has become infinite and stays so
    s.high = sum;
    y[i] = static_cast<R>(sum + s.low);
    x2 = x1;
    x1 = x0;
  }
  s.last2 = static_cast<double>(x2);
  s.last1 = static_cast<double>(x1);
  state = s;
}

}  // namespace

void Differentiate(const TVec& Src, TVec& Dst, TDiffState& State, double dt) {
  if (detail::NeedsCopy(Src, Dst)) {
    const Borrowed<TVec> copy;
    copy->Copy(Src);
    return Differentiate(*copy, Dst, State, dt);
  }
  Dst.Size(Src);
  if (Src.Length() == 0) return;
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    using R = RealOf<T>;
    const auto x = Src.Elements<T>();
    Difference<R, kParts<T>>(reinterpret_cast<const R*>(x.data()), reinterpret_cast<R*>(Dst.Elements<T>().data()),
                             x.size() * kParts<T>, {&State.Start2R, &State.Start2I}, {&State.Start1R, &State.Start1I},
                             static_cast<R>(1 / (2 * dt)));
  });
}

void Integrate(const TVec& Src, TVec& Dst, TIntegrateState& State, double dt) {
  if (detail::NeedsCopy(Src, Dst)) {
    const Borrowed<TVec> copy;
    copy->Copy(Src);
    return Integrate(*copy, Dst, State, dt);
  }
  Dst.Size(Src);
  if (Src.Length() == 0) return;
  Integral re = From(State.SumR1, State.HighR, State.LowR, State.StartR1, State.StartR2);
  Integral im = From(State.SumI1, State.HighI, State.LowI, State.StartI1, State.StartI2);
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    using R = RealOf<T>;
    const R* const x = reinterpret_cast<const R*>(Src.Elements<T>().data());
    R* const y = reinterpret_cast<R*>(Dst.Elements<T>().data());
    const std::size_t count = static_cast<std::size_t>(Src.Length()) * kParts<T>;
    const auto factor = static_cast<R>(dt / 6);
    Sum(x, y, count, kParts<T>, re, factor);
    if constexpr (IsComplex<T>) Sum(x + 1, y + 1, count - 1, kParts<T>, im, factor);
  });
  State = {re.high + re.low, im.high + im.low, re.last1, im.last1, re.last2,
           im.last2,         re.high,          re.low,   im.high,  im.low};
}

}  // namespace passband::SignalUtils
