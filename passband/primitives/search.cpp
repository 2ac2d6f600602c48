#include "passband/primitives/search.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>
#include <tuple>

#include "passband/primitives/search_internal.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/search.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "passband/primitives/sample_tests-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

template <class R, class Test>
std::size_t First(const R* x, std::size_t count, Test test) {
  const Tag<R> d;
  std::size_t n = 0;
  for (; n + hn::Lanes(d) <= count; n += hn::Lanes(d)) {
    const auto found = test.Many(x + n);
    if (!hn::AllFalse(d, found)) return n + static_cast<std::size_t>(hn::FindFirstTrue(d, found));
  }
  while (n < count && !test.One(x + n)) ++n;
  return n;
}

// One past the last.
template <class R, class Test>
std::size_t Last(const R* x, std::size_t count, Test test) {
  const Tag<R> d;
  for (; count >= hn::Lanes(d); count -= hn::Lanes(d)) {
    const std::size_t first = count - hn::Lanes(d);
    const std::uint64_t found = Bits<R>(test.Many(x + first));
    if (found != 0) return first + 64 - static_cast<std::size_t>(std::countl_zero(found));
  }
  while (count > 0 && !test.One(x + count - 1)) --count;
  return count;
}

// Calls `body` with the test of a relation.
template <class R, class Body>
std::size_t ForRelation(Relation relation, R level, const Body& body) {
  switch (relation) {
    case Relation::Below:
      return body(ToLevel<R, Relation::Below>{level});
    case Relation::AtMost:
      return body(ToLevel<R, Relation::AtMost>{level});
    case Relation::AtLeast:
      return body(ToLevel<R, Relation::AtLeast>{level});
    case Relation::Above:
      break;
  }
  return body(ToLevel<R, Relation::Above>{level});
}

template <class R>
std::size_t FirstInRelation(const R* x, std::size_t count, Relation relation, R level) {
  return ForRelation(relation, level, [=](auto test) { return First(x, count, test); });
}
template <class R>
std::size_t LastInRelation(const R* x, std::size_t count, Relation relation, R level) {
  return ForRelation(relation, level, [=](auto test) { return Last(x, count, test); });
}
template <class R>
std::size_t FirstStep(const R* x, std::size_t steps, bool rising) {
  return rising ? First(x, steps, Step<R, true>()) : First(x, steps, Step<R, false>());
}

// The smallest distance of some samples that is not a NaN, or infinity.
template <class R>
R LeastDistance(const R* x, std::size_t count, R value) {
  const Tag<R> d;
  constexpr std::size_t kChains = 4;
  const std::size_t lanes = hn::Lanes(d);
  const auto wanted = hn::Set(d, value);
  const auto infinity = hn::Set(d, std::numeric_limits<R>::infinity());
  decltype(hn::Zero(d)) least[kChains] = {infinity, infinity, infinity, infinity};
  const auto take = [&](std::size_t at, std::size_t chain) HWY_ATTR {
    const auto distance = hn::Abs(hn::Sub(wanted, hn::LoadU(d, x + at)));
    least[chain] = hn::IfThenElse(hn::Lt(distance, least[chain]), distance, least[chain]);
  };
  std::size_t n = 0;
  for (; n + kChains * lanes <= count; n += kChains * lanes) {
    for (std::size_t chain = 0; chain < kChains; ++chain) take(n + chain * lanes, chain);
  }
  for (; n + lanes <= count; n += lanes) take(n, 0);
  const auto all = hn::Min(hn::Min(least[0], least[1]), hn::Min(least[2], least[3]));
  R result = hn::GetLane(hn::MinOfLanes(d, all));
  for (; n < count; ++n) {
    const R distance = std::abs(value - x[n]);
    if (distance < result) result = distance;
  }
  return result;
}

template <class R>
std::size_t Closest(const R* x, std::size_t count, R value) {
  constexpr std::size_t kBlock = 2048;
  R least = std::numeric_limits<R>::infinity();
  std::size_t block = 0;
  for (std::size_t n = 0; n < count; n += kBlock) {
    const R distance = LeastDistance(x + n, std::min(kBlock, count - n), value);
    if (distance < least) {
      least = distance;
      block = n;
    }
  }
  for (std::size_t n = block; n < count; ++n) {
    if (std::abs(value - x[n]) == least) return n;
  }
  return 0;  // none but NaN
}

template <class R>
constexpr detail::SearchKernels<R> kKernels{&FirstInRelation<R>, &LastInRelation<R>, &FirstStep<R>, &Closest<R>};

const detail::SearchTable* Kernels() {
  static constexpr detail::SearchTable table{kKernels<float>, kKernels<double>};
  return &table;
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives {
namespace {
HWY_EXPORT(Kernels);

template <RealElement R>
const detail::SearchKernels<R>& Chosen() {
  return std::get<detail::SearchKernels<R>>(*HWY_DYNAMIC_DISPATCH(Kernels)());
}

Status Check(const void* x, std::int32_t count) {
  if (count < 0) return Status::BadSize;
  return count > 0 && x == nullptr ? Status::NullPointer : Status::Ok;
}

}  // namespace

template <RealElement R>
Status FindFirst(const R* x, std::int32_t count, Relation relation, R level, std::int32_t& index) noexcept {
  const Status status = Check(x, count);
  if (Failed(status)) return status;
  index = static_cast<std::int32_t>(Chosen<R>().first(x, static_cast<std::size_t>(count), relation, level));
  return status;
}

template <RealElement R>
Status FindLast(const R* x, std::int32_t count, Relation relation, R level, std::int32_t& index) noexcept {
  const Status status = Check(x, count);
  if (Failed(status)) return status;
  index = static_cast<std::int32_t>(Chosen<R>().last(x, static_cast<std::size_t>(count), relation, level)) - 1;
  return status;
}

template <RealElement R>
Status FindStep(const R* x, std::int32_t count, bool rising, std::int32_t& index) noexcept {
  const Status status = Check(x, count);
  if (Failed(status)) return status;
  index = static_cast<std::int32_t>(Chosen<R>().step(x, static_cast<std::size_t>(std::max(count - 1, 0)), rising));
  return status;
}

template <RealElement R>
Status FindClosest(const R* x, std::int32_t count, R value, std::int32_t& index) noexcept {
  const Status status = Check(x, count);
  if (Failed(status)) return status;
  index = static_cast<std::int32_t>(Chosen<R>().closest(x, static_cast<std::size_t>(count), value));
  return status;
}

template Status FindFirst(const float*, std::int32_t, Relation, float, std::int32_t&) noexcept;
template Status FindFirst(const double*, std::int32_t, Relation, double, std::int32_t&) noexcept;
template Status FindLast(const float*, std::int32_t, Relation, float, std::int32_t&) noexcept;
template Status FindLast(const double*, std::int32_t, Relation, double, std::int32_t&) noexcept;
template Status FindStep(const float*, std::int32_t, bool, std::int32_t&) noexcept;
template Status FindStep(const double*, std::int32_t, bool, std::int32_t&) noexcept;
template Status FindClosest(const float*, std::int32_t, float, std::int32_t&) noexcept;
template Status FindClosest(const double*, std::int32_t, double, std::int32_t&) noexcept;

}  // namespace passband::primitives
#endif  // HWY_ONCE
