#include "passband/primitives/median.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <limits>
#include <new>
#include <tuple>
#include <type_traits>

#include "passband/primitives/median_state_internal.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/median.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "passband/primitives/median_keys-inl.h"
#include "passband/primitives/median_lanes-inl.h"
#include "passband/primitives/median_network-inl.h"
#include "passband/primitives/median_runs-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

// Puts the next samples into the line behind those of the window.
template <class R>
void Append(MedianStateOf<R>& state, const R* x, std::size_t count) {
  if (state.place + count > state.line_size) {
    std::copy(state.line + (state.place - state.mask), state.line + state.place, state.line);
    state.place = state.mask;
  }
  KeyOf<R>* const next = state.line + state.place;
  ToKeys(x, next, count);
  if (state.started) return;
  state.started = true;
  std::fill(next - state.mask, next, next[0]);
  state.window = next - state.mask;
  state.window_step = 1;
}

// True when the lanes are faster than the runs. They take steps in proportion to the window, and before the first one
// each has to sort a window, which costs as much as a third of a window of steps; the factor is measured.
template <class R>
bool LanesPay(std::size_t mask, std::size_t count) {
  using Key = KeyOf<R>;
  const std::size_t lanes = hn::Lanes(Keys<Key>());
  if (mask > detail::kMedianPerLane * lanes || count < lanes) return false;
  return mask * (3 * LanesWalk<Key>::StretchOf(count) + mask) < 38 * count;
}

template <class R>
void ByLanes(MedianStateOf<R>& state, R* y, std::size_t count) {
  LanesWalk<KeyOf<R>> walk(state.lanes, state.mask);
  walk.Run(state.line + state.place, y, count);
  state.window = walk.Window();
  state.window_step = walk.WindowStep();
}

template <class R>
void ByRuns(MedianStateOf<R>& state, R* y, std::size_t count) {
  RunsWindow<KeyOf<R>> window(state.runs);
  if (state.window != nullptr) window.Build(state.window, state.window_step, state.mask);
  state.window = nullptr;
  const KeyOf<R>* const line = state.line + state.place;
  // The search for the next sample goes on while the runs of this one are passed over.
  const auto find = [&](std::size_t n) HWY_ATTR { return window.Find(*(line + n - state.mask), line[n]); };
  auto keys = find(0);
  for (std::size_t n = 0; n < count; ++n) {
    const std::size_t next = n + 1 < count ? n + 1 : n;
    auto next_keys = find(next);
    if (!window.Replace(keys)) next_keys = find(next);
    y[n] = SampleFrom<R>(window.AtRank(state.mask / 2));
    keys = next_keys;
  }
  state.runs = window.Runs();
}

template <class R>
void Filter(MedianStateOf<R>& state, const R* x, R* y, std::size_t count) {
  while (count > 0) {
    const std::size_t taken = std::min(count, detail::kMedianPiece);
    Append(state, x, taken);
    if (state.mask <= detail::kMedianNetwork) {
      ByNetwork<R>(state.mask, state.line + state.place, y, taken);
    } else if (LanesPay<R>(state.mask, taken)) {
      ByLanes(state, y, taken);
    } else {
      ByRuns(state, y, taken);
    }
    state.place += taken;
    x += taken;
    y += taken;
    count -= taken;
  }
}

template <class R>
using Kernel = void (*)(MedianStateOf<R>&, const R*, R*, std::size_t);
using KernelTable = std::tuple<Kernel<float>, Kernel<double>>;

const KernelTable* Kernels() {
  static constexpr KernelTable table{&Filter<float>, &Filter<double>};
  return &table;
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives {
namespace {
HWY_EXPORT(Kernels);

using detail::kMedianRow;

// Hands out arrays behind each other, each on a cache line. Without memory it counts only.
class Arena {
 public:
  explicit Arena(std::byte* memory) : memory_(memory) {}

  template <class T>
  T* Take(std::size_t count) {
    std::byte* const array = memory_ == nullptr ? nullptr : memory_ + used_;
    used_ += (count * sizeof(T) + detail::kMedianAlignment - 1) / detail::kMedianAlignment * detail::kMedianAlignment;
    return reinterpret_cast<T*>(array);
  }
  std::size_t Used() const { return used_; }

 private:
  std::byte* memory_;
  std::size_t used_ = 0;
};

// Searching costs as much as passing over a run when there are about as many vectors of heads as of keys in a run.
template <class Key>
std::size_t RunCapacity(std::size_t mask) {
  std::size_t capacity = 2 * kMedianRow<Key>;
  while (capacity * capacity < mask / 16) capacity *= 2;
  return capacity;
}

template <class Key>
detail::MedianLanes<Key> PlaceLanes(std::size_t mask, Arena& arena) {
  constexpr std::size_t kRow = kMedianRow<Key>;
  if (mask <= detail::kMedianNetwork || mask > detail::kMedianPerLane * kRow) return {};
  return {.columns = arena.Take<Key>((mask + 1) * kRow + detail::kMedianPiece),
          .sorted = arena.Take<Key>(mask * kRow),
          .medians = arena.Take<Key>(kRow + detail::kMedianPiece)};
}

// Room for the runs of a window. Each has guards behind its keys, and the ones of the run below before them.
template <class Key>
struct RunsLayout {
  static constexpr std::size_t kRow = kMedianRow<Key>;

  explicit RunsLayout(std::size_t mask)
      : capacity(RunCapacity<Key>(mask)), stride(capacity + kRow), most(4 * mask / capacity + 4) {}

  std::size_t capacity;
  std::size_t stride;
  std::size_t most;  // any two neighbours hold half of the capacity
};

template <class Key>
detail::MedianRuns<Key> PlaceRuns(std::size_t mask, Arena& arena) {
  if (mask <= detail::kMedianNetwork) return {};
  const RunsLayout<Key> layout(mask);
  constexpr std::size_t kRow = layout.kRow;
  Key* const keys = arena.Take<Key>(kRow + layout.most * layout.stride);
  auto* const runs = arena.Take<detail::MedianRun<Key>>(layout.most + 2);
  detail::MedianRuns<Key> window{.capacity = layout.capacity,
                                 .runs = nullptr,
                                 .separators = arena.Take<Key>(layout.most + 2 * kRow),
                                 .heads = arena.Take<Key>(layout.most / kRow + 2 * kRow),
                                 .spare = arena.Take<Key*>(layout.most),
                                 .count = 0,
                                 .spare_count = layout.most,
                                 .middle = 0,
                                 .before = 0};
  if (keys == nullptr) return window;
  window.runs = runs + 1;
  runs[0] = {nullptr, detail::kMedianNoRun};
  std::fill_n(window.separators, layout.most + 2 * kRow, std::numeric_limits<Key>::max());
  std::fill_n(window.heads, layout.most / kRow + 2 * kRow, std::numeric_limits<Key>::max());
  for (std::size_t r = 0; r < layout.most; ++r) window.spare[r] = keys + kRow + r * layout.stride;
  return window;
}

template <RealElement R>
MedianStateOf<R>* Place(std::size_t mask, Arena& arena) {
  using Key = detail::MedianKey<R>;
  auto* const memory = arena.Take<MedianStateOf<R>>(1);
  MedianStateOf<R> state{};
  state.is_double = sizeof(R) == sizeof(double);
  state.mask = mask;
  state.line_size = mask + mask / 2 + detail::kMedianPiece;
  state.line = arena.Take<Key>(state.line_size + kMedianRow<Key>);
  state.place = mask;
  state.lanes = PlaceLanes<Key>(mask, arena);
  state.runs = PlaceRuns<Key>(mask, arena);
  return memory == nullptr ? nullptr : new (memory) MedianStateOf<R>(state);
}

std::size_t OddMask(std::int32_t mask) { return static_cast<std::size_t>(mask - (mask % 2 == 0 ? 1 : 0)); }

// `memory` is aligned.
template <RealElement R>
MedianState* Make(std::int32_t mask, std::byte* memory) {
  static_assert(std::is_trivially_destructible_v<MedianStateOf<R>>);
  Arena arena(memory);
  return Place<R>(OddMask(mask), arena);
}

constexpr std::align_val_t kAlignment{detail::kMedianAlignment};
}  // namespace

void MedianStateDeleter::operator()(MedianState* state) const noexcept { ::operator delete(state, kAlignment); }

template <RealElement R>
std::size_t MedianStateSize(std::int32_t mask) noexcept {
  Arena arena(nullptr);
  Place<R>(OddMask(mask), arena);
  return arena.Used() + detail::kMedianAlignment;
}

template <RealElement R>
Status MedianCreate(std::int32_t mask, void* memory, MedianState*& state) noexcept {
  if (mask < 1) return Status::BadSize;
  if (memory == nullptr) return Status::NullPointer;
  std::size_t space = MedianStateSize<R>(mask);
  std::align(detail::kMedianAlignment, space - detail::kMedianAlignment, memory, space);
  state = Make<R>(mask, static_cast<std::byte*>(memory));
  return Status::Ok;
}

template <RealElement R>
Status MedianCreate(std::int32_t mask, MedianHandle& state) noexcept {
  if (mask < 1) return Status::BadSize;
  void* const memory = ::operator new(MedianStateSize<R>(mask), kAlignment, std::nothrow);
  if (memory == nullptr) return Status::OutOfMemory;
  state.reset(Make<R>(mask, static_cast<std::byte*>(memory)));
  return Status::Ok;
}

template <RealElement R>
Status MedianFilter(MedianState& state, const R* src, R* dst, std::int32_t count) noexcept {
  if (count < 0) return Status::BadSize;
  if (state.is_double != (sizeof(R) == sizeof(double))) return Status::BadArgument;
  const auto kernel = std::get<HWY_NAMESPACE::Kernel<R>>(*HWY_DYNAMIC_DISPATCH(Kernels)());
  kernel(static_cast<MedianStateOf<R>&>(state), src, dst, static_cast<std::size_t>(count));
  return Status::Ok;
}

template std::size_t MedianStateSize<float>(std::int32_t) noexcept;
template std::size_t MedianStateSize<double>(std::int32_t) noexcept;
template Status MedianCreate<float>(std::int32_t, void*, MedianState*&) noexcept;
template Status MedianCreate<double>(std::int32_t, void*, MedianState*&) noexcept;
template Status MedianCreate<float>(std::int32_t, MedianHandle&) noexcept;
template Status MedianCreate<double>(std::int32_t, MedianHandle&) noexcept;
template Status MedianFilter(MedianState&, const float*, float*, std::int32_t) noexcept;
template Status MedianFilter(MedianState&, const double*, double*, std::int32_t) noexcept;

}  // namespace passband::primitives
#endif  // HWY_ONCE
