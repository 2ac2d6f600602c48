#include "passband/streaming/peak_hold.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <type_traits>

#include "passband/vector_core/dispatch.h"

namespace passband::SignalUtils {
namespace {

// What samples compare by.
template <Element T>
auto SizeOf(T x) {
  if constexpr (IsComplex<T>) {
    return CAbs(x);
  } else {
    return x;
  }
}

template <Element T>
TCplx Widened(T x) {
  if constexpr (IsComplex<T>) {
    return static_cast<TCplx>(x);
  } else {
    return Cplx(static_cast<double>(x));
  }
}

template <Element T>
T From(TCplx z) {
  if constexpr (IsComplex<T>) {
    return static_cast<T>(z);
  } else {
    return static_cast<T>(z.Re);
  }
}

template <Element T>
void Hold(std::span<T> x, TSampleAndHoldState& state, std::int32_t limit) {
  T peak = From<T>(state.Value);
  auto size = SizeOf(peak);
  for (std::size_t n = 0; n < x.size();) {
    // What may still be held, up to a greater sample.
    const std::int64_t room = std::max<std::int64_t>(static_cast<std::int64_t>(limit) - state.Hold, 0);
    const std::size_t end = n + std::min(x.size() - n, static_cast<std::size_t>(room));
    std::size_t next = n;
    while (next < end && !(SizeOf(x[next]) > size)) ++next;
    std::fill(x.begin() + static_cast<std::ptrdiff_t>(n), x.begin() + static_cast<std::ptrdiff_t>(next), peak);
    state.Hold += static_cast<std::int32_t>(next - n);
    n = next;
    if (n == x.size()) break;
    state.Hold = SizeOf(x[n]) > size ? 0 : 1;
    peak = x[n++];
    size = SizeOf(peak);
  }
  state.Value = Widened(peak);
}

template <Element T>
void Decline(std::span<T> x, TSampleAndHoldState& state, double decay) {
  using Wide = std::conditional_t<IsComplex<T>, TCplx, double>;
  Wide y = From<Wide>(state.Value);
  for (T& v : x) {
    const auto sample = static_cast<Wide>(v);
    const Wide declined = decay * y;
    y = SizeOf(declined) > SizeOf(sample) ? declined : sample;
    v = static_cast<T>(y);
  }
  state.Value = Widened(y);
}

}  // namespace

void SampleAndHoldFilter(TVec& Data, TSampleAndHoldState& State, std::int32_t HoldCount) {
  if (Data.Length() == 0) return;
  ForAny(Data, [&]<Element T>(ElementTag<T>) { Hold(Data.Elements<T>(), State, HoldCount); });
}

void SampleAndDecayFilter(TVec& Data, TSampleAndHoldState& State, double Decay) {
  if (Data.Length() == 0) return;
  ForAny(Data, [&]<Element T>(ElementTag<T>) { Decline(Data.Elements<T>(), State, Decay); });
}

}  // namespace passband::SignalUtils
