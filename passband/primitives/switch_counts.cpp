#include "passband/primitives/switch_counts.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <tuple>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/switch_counts.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "passband/primitives/sample_tests-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

// The test of 64 samples or less as bits.
template <class R, class Test>
HWY_INLINE std::uint64_t Word(const R* x, std::size_t count, Test test) {
  const Tag<R> d;
  std::uint64_t bits = 0;
  std::size_t n = 0;
  for (; n + hn::Lanes(d) <= count; n += hn::Lanes(d)) bits |= Bits<R>(test.Many(x + n)) << n;
  for (; n < count; ++n) bits |= static_cast<std::uint64_t>(test.One(x + n)) << n;
  return bits;
}

// The state after each of 64 samples comes from one addition: a carry is born where a sample switches on, dies where one
// switches off, and runs on through the others.
template <class R, class On, class Off>
Switches Count(const R* x, std::size_t count, bool state, On switches_on, Off switches_off) {
  Switches switches;
  std::uint64_t before = state ? 1 : 0;
  for (std::size_t n = 0; n < count; n += 64) {
    const std::size_t size = std::min<std::size_t>(64, count - n);
    const std::uint64_t on = Word(x + n, size, switches_on);
    const std::uint64_t alive = ~Word(x + n, size, switches_off);
    const std::uint64_t states = on | (alive & ~(alive + on + before));
    const std::uint64_t earlier = states << 1 | before;
    switches.on += std::popcount(states & ~earlier);
    switches.off += std::popcount(earlier & ~states);
    before = states >> 63;
  }
  return switches;
}

template <class R>
Switches Crossings(const R* x, std::size_t count, Crossing crossing, R level, bool state) {
  using enum Relation;
  switch (crossing) {
    case Crossing::Downward:
      return Count(x, count, state, ToLevel<R, Below>{level}, ToLevel<R, AtLeast>{level});
    case Crossing::Upward:
      return Count(x, count, state, ToLevel<R, Above>{level}, ToLevel<R, AtMost>{level});
    case Crossing::Either:
      break;
  }
  return Count(x, count, state, ToLevel<R, Above>{level}, ToLevel<R, Below>{level});
}
template <class R>
Switches Turns(const R* x, std::size_t steps, bool state) {
  return Count(x, steps, state, Step<R, true>(), Step<R, false>());
}

template <class R>
using CrossingKernel = Switches (*)(const R*, std::size_t, Crossing, R, bool);
template <class R>
using TurnKernel = Switches (*)(const R*, std::size_t, bool);
using Table = std::tuple<CrossingKernel<float>, CrossingKernel<double>, TurnKernel<float>, TurnKernel<double>>;

const Table* Kernels() {
  static constexpr Table table{&Crossings<float>, &Crossings<double>, &Turns<float>, &Turns<double>};
  return &table;
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives {
namespace {
HWY_EXPORT(Kernels);

Status Check(const void* x, std::int32_t count) {
  if (count < 0) return Status::BadSize;
  return count > 0 && x == nullptr ? Status::NullPointer : Status::Ok;
}

}  // namespace

template <RealElement R>
Status CountCrossings(const R* x, std::int32_t count, Crossing crossing, R level, bool state,
                      Switches& switches) noexcept {
  const Status status = Check(x, count);
  if (Failed(status)) return status;
  switches = std::get<HWY_NAMESPACE::CrossingKernel<R>>(*HWY_DYNAMIC_DISPATCH(Kernels)())(
      x, static_cast<std::size_t>(count), crossing, level, state);
  return status;
}

template <RealElement R>
Status CountTurns(const R* x, std::int32_t count, bool state, Switches& switches) noexcept {
  const Status status = Check(x, count);
  if (Failed(status)) return status;
  switches = std::get<HWY_NAMESPACE::TurnKernel<R>>(*HWY_DYNAMIC_DISPATCH(Kernels)())(
      x, static_cast<std::size_t>(std::max(count - 1, 0)), state);
  return status;
}

template Status CountCrossings(const float*, std::int32_t, Crossing, float, bool, Switches&) noexcept;
template Status CountCrossings(const double*, std::int32_t, Crossing, double, bool, Switches&) noexcept;
template Status CountTurns(const float*, std::int32_t, bool, Switches&) noexcept;
template Status CountTurns(const double*, std::int32_t, bool, Switches&) noexcept;

}  // namespace passband::primitives
#endif  // HWY_ONCE
