// Creation of filters in direct form.
#include <algorithm>
#include <cstddef>
#include <new>
#include <tuple>
#include <type_traits>

#include "passband/primitives/iir.h"
#include "passband/primitives/iir_direct_internal.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/iir_direct.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "passband/primitives/iir_direct-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

template <class T>
using Setter = void (*)(IirDirectState<T>&);

const PerElement<Setter>* Setters() {
  static constexpr PerElement<Setter> table{&SetFunctions<float>, &SetFunctions<double>, &SetFunctions<TSCplx>,
                                            &SetFunctions<TCplx>};
  return &table;
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives {
namespace {

using detail::IirDirectState;

HWY_EXPORT(Setters);

// The arrays behind the record, in doubles; each begins on a cache line.
struct Layout {
  std::size_t taps;     // of b and of a
  std::size_t history;  // samples
  std::size_t line;     // of x and of y
  std::size_t held;

  static constexpr std::size_t InLines(std::size_t doubles) {
    constexpr std::size_t kPerLine = kIirStateAlignment / sizeof(double);
    return (doubles + kPerLine - 1) / kPerLine * kPerLine;
  }

  Layout(std::size_t order, std::size_t parts)
      : taps(InLines(std::max<std::size_t>(order, 2) + 1)),
        history(std::max<std::size_t>(order, 2)),
        line(InLines(parts * (history + detail::kIirDirectLine))),
        held(InLines(parts * detail::kIirDirectHeld)) {}

  std::size_t Doubles() const { return 2 * (taps + line) + held; }
};

template <Element T>
constexpr std::size_t kParts = sizeof(T) / sizeof(RealOf<T>);

template <Element T>
constexpr std::size_t kRecordBytes = Layout::InLines((sizeof(IirDirectState<T>) + sizeof(double) - 1) /
                                                     sizeof(double)) *
                                     sizeof(double);

// The last of the coefficients 1 .. order that is not 0; 0 when there is none.
template <class R>
std::size_t LastTap(const R* taps, std::size_t order) {
  while (order > 0 && taps[order] == 0) --order;
  return order;
}

}  // namespace

template <Element T>
std::size_t IirDirectStateSize(std::int32_t order) noexcept {
  const Layout layout(static_cast<std::size_t>(order), kParts<T>);
  return kIirStateAlignment + kRecordBytes<T> + layout.Doubles() * sizeof(double);
}

template <Element T>
Status IirDirectCreate(const RealOf<T>* taps, std::int32_t order, void* memory, IirHandle& state) noexcept {
  static_assert(std::is_trivially_destructible_v<IirDirectState<T>>);
  if (order < 0) return Status::BadSize;
  if (taps == nullptr || memory == nullptr) return Status::NullPointer;
  const auto last = static_cast<std::size_t>(order);
  const RealOf<T>* const denominator = taps + last + 1;
  if (denominator[0] == 0) return Status::DivisionByZero;

  const Layout layout(last, kParts<T>);
  std::byte* const base = AlignIirState(memory);
  auto* const doubles = reinterpret_cast<double*>(base + kRecordBytes<T>);
  std::fill_n(doubles, layout.Doubles(), 0.0);
  auto* const fresh = new (base) IirDirectState<T>;
  fresh->direct = {.forward = LastTap(taps, last),
                   .feedback = LastTap(denominator, last),
                   .history = layout.history,
                   .place = layout.history,
                   .b = doubles,
                   .a = doubles + layout.taps,
                   .x = doubles + 2 * layout.taps,
                   .y = doubles + 2 * layout.taps + layout.line,
                   .held = doubles + 2 * (layout.taps + layout.line)};
  const auto a0 = static_cast<double>(denominator[0]);
  for (std::size_t k = 0; k <= last; ++k) {
    fresh->direct.b[k] = static_cast<double>(taps[k]) / a0;
    fresh->direct.a[k] = static_cast<double>(denominator[k]) / a0;
  }
  std::get<HWY_NAMESPACE::Setter<T>> (*HWY_DYNAMIC_DISPATCH(Setters)())(*fresh);
  state.reset(fresh);
  return Status::Ok;
}

template std::size_t IirDirectStateSize<float>(std::int32_t) noexcept;
template std::size_t IirDirectStateSize<double>(std::int32_t) noexcept;
template std::size_t IirDirectStateSize<TSCplx>(std::int32_t) noexcept;
template std::size_t IirDirectStateSize<TCplx>(std::int32_t) noexcept;

template Status IirDirectCreate<float>(const float*, std::int32_t, void*, IirHandle&) noexcept;
template Status IirDirectCreate<double>(const double*, std::int32_t, void*, IirHandle&) noexcept;
template Status IirDirectCreate<TSCplx>(const float*, std::int32_t, void*, IirHandle&) noexcept;
template Status IirDirectCreate<TCplx>(const double*, std::int32_t, void*, IirHandle&) noexcept;

}  // namespace passband::primitives
#endif  // HWY_ONCE
