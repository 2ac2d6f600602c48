// A window of any length as sorted runs. Putting a key in or taking one out costs a search among the separators and one
// pass over a run, both by vectors and without a branch on the data, so that neither order nor ties matter.
//
// The runs are the leaves of a B-tree of two levels (Bayer, McCreight, "Organization and maintenance of large ordered
// indices", Acta Informatica 1, 1972).
#if defined(PASSBAND_PRIMITIVES_MEDIAN_RUNS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_MEDIAN_RUNS_INL_H_
#undef PASSBAND_PRIMITIVES_MEDIAN_RUNS_INL_H_
#else
#define PASSBAND_PRIMITIVES_MEDIAN_RUNS_INL_H_
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "hwy/highway.h"
#include "passband/primitives/median_keys-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

template <class Key>
class RunsWindow {
  using D = Keys<Key>;
  using V = hn::Vec<D>;
  using Run = detail::MedianRun<Key>;
  static constexpr std::size_t kGroup = detail::kMedianRow<Key>;

 public:
  explicit RunsWindow(const detail::MedianRuns<Key>& runs)
      : runs_(runs),
        up_(Turn(hn::Lanes(D()) - 1)),
        down_(Turn(1)),
        first_lane_(hn::FirstN(D(), 1)),
        last_lane_(hn::Not(hn::FirstN(D(), hn::Lanes(D()) - 1))) {}

  const detail::MedianRuns<Key>& Runs() const { return runs_; }

  // The window of `count` ascending keys, `step` apart.
  void Build(const Key* sorted, std::size_t step, std::size_t count) {
    const std::size_t filling = runs_.capacity * 3 / 4;
    Release();
    runs_.count = 0;
    for (std::size_t n = 0; n < count; n += filling) {
      const std::size_t taken = std::min(filling, count - n);
      const std::size_t r = runs_.count++;
      NewRun(r);
      for (std::size_t k = 0; k < taken; ++k) runs_.runs[r].keys[k] = sorted[(n + k) * step];
      runs_.runs[r].count = taken;
      runs_.separators[r] = runs_.runs[r].keys[taken - 1];
    }
    runs_.separators[runs_.count - 1] = kHighest<Key>;
    EndRuns();
    SetHeads(0);
    runs_.middle = 0;
    runs_.before = 0;
  }

  // Two keys, the old one of which is to be replaced by the new one, and the first runs that may hold as large ones.
  struct Exchange {
    Key old;
    Key fresh;
    std::size_t from;
    std::size_t to;
  };

  Exchange Find(Key old, Key fresh) const {
    Exchange found{old, fresh, 0, 0};
    Search(old, fresh, found.from, found.to);
    return found;
  }

  // Takes the old key, which is there, out of the window and puts the new one in. False when runs have come or gone, so
  // that what has been found for others holds no more.
  bool Replace(const Exchange& keys) {
    // Of ties with a separator the run below may have none left; of an empty run the guard is looked at.
    Run* from = runs_.runs + keys.from;
    while (*(from->keys + from->count - 1) < keys.old) ++from;
    Run* const to = runs_.runs + keys.to;
    if (from == to) {
      ReplaceIn(from->keys, keys.old, keys.fresh);
      return true;
    }
    // Branches that are hardly ever taken; one on a count alone could not be foreseen.
    const bool full = to->count == runs_.capacity;
    const bool sparse = from->count + std::min((from - 1)->count, (from + 1)->count) <= runs_.capacity * 3 / 4;
    if (full || sparse) {
      ReplaceRarely(keys, static_cast<std::size_t>(from - runs_.runs));
      return false;
    }
    TakeOut(*from, keys.old);
    PutIn(*to, keys.fresh);
    return true;
  }

  // The key with `rank` smaller or equal ones before it.
  Key AtRank(std::size_t rank) {
    const Run* const runs = runs_.runs;
    while (runs_.before > rank) runs_.before -= runs[--runs_.middle].count;
    while (runs_.before + runs[runs_.middle].count <= rank) runs_.before += runs[runs_.middle++].count;
    return runs[runs_.middle].keys[rank - runs_.before];
  }

 private:
  // With a split or merge of runs.
  void ReplaceRarely(const Exchange& keys, std::size_t from) {
    TakeOut(runs_.runs[from], keys.old);
    MergeAround(from);
    const Exchange found = Find(keys.old, keys.fresh);
    std::size_t to = found.to;
    if (runs_.runs[to].count == runs_.capacity) {
      Split(to, SplitPoint(to, keys.fresh));
      if (keys.fresh > runs_.separators[to]) ++to;
    }
    PutIn(runs_.runs[to], keys.fresh);
  }

  bool Below(const Run& run) const { return &run < runs_.runs + runs_.middle; }

  // The first runs whose keys may be as large as these.
  void Search(Key key_a, Key key_b, std::size_t& run_a, std::size_t& run_b) const {
    const D d;
    const V a = hn::Set(d, key_a);
    const V b = hn::Set(d, key_b);
    std::size_t group_a = 0;
    std::size_t group_b = 0;
    for (std::size_t g = 0; g * kGroup < runs_.count; g += hn::Lanes(d)) {
      const V heads = hn::Load(d, runs_.heads + g);
      group_a += hn::CountTrue(d, hn::Lt(heads, a));
      group_b += hn::CountTrue(d, hn::Lt(heads, b));
    }
    run_a = group_a * kGroup;
    run_b = group_b * kGroup;
    const Key* const from_a = runs_.separators + run_a;
    const Key* const from_b = runs_.separators + run_b;
    for (std::size_t k = 0; k < kGroup; k += hn::Lanes(d)) {
      run_a += hn::CountTrue(d, hn::Lt(hn::Load(d, from_a + k), a));
      run_b += hn::CountTrue(d, hn::Lt(hn::Load(d, from_b + k), b));
    }
  }

  void PutIn(Run& run, Key key) {
    ++run.count;
    runs_.before += Below(run) ? 1 : 0;
    Key* const a = run.keys;
    const D d;
    const V x = hn::Set(d, key);
    V turned_below = hn::Set(d, kLowest<Key>);
    for (std::size_t k = 0; k < runs_.capacity; k += hn::Lanes(d)) {
      const V here = hn::Load(d, a + k);
      const V turned = hn::TableLookupLanes(here, up_);
      const V below = hn::IfThenElse(first_lane_, turned_below, turned);
      hn::Store(hn::Max(below, hn::Min(here, x)), d, a + k);
      turned_below = turned;
    }
  }

  void TakeOut(Run& run, Key key) {
    --run.count;
    runs_.before -= Below(run) ? 1 : 0;
    Key* const a = run.keys;
    const D d;
    const V x = hn::Set(d, key);
    V here = hn::Load(d, a);
    V turned = hn::TableLookupLanes(here, down_);
    for (std::size_t k = 0; k < runs_.capacity; k += hn::Lanes(d)) {
      const V next = hn::Load(d, a + k + hn::Lanes(d));  // of the last one it is the guards
      const V turned_next = hn::TableLookupLanes(next, down_);
      const V above = hn::IfThenElse(last_lane_, turned_next, turned);
      hn::Store(hn::IfThenElse(hn::Lt(here, x), here, above), d, a + k);
      here = next;
      turned = turned_next;
    }
  }

  // Both at once: without the old key the run is d[k], with the new one it is max(d[k - 1], min(d[k], fresh)).
  void ReplaceIn(Key* a, Key old, Key fresh) const {
    const D d;
    const V x = hn::Set(d, old);
    const V y = hn::Set(d, fresh);
    V here = hn::Load(d, a);
    V turned = hn::TableLookupLanes(here, down_);
    V turned_below = hn::Set(d, kLowest<Key>);
    for (std::size_t k = 0; k < runs_.capacity; k += hn::Lanes(d)) {
      const V next = hn::Load(d, a + k + hn::Lanes(d));
      const V turned_next = hn::TableLookupLanes(next, down_);
      const V above = hn::IfThenElse(last_lane_, turned_next, turned);
      const V kept = hn::IfThenElse(hn::Lt(here, x), here, above);
      const V turned_kept = hn::TableLookupLanes(kept, up_);
      const V below = hn::IfThenElse(first_lane_, turned_below, turned_kept);
      hn::Store(hn::Max(below, hn::Min(kept, y)), d, a + k);
      here = next;
      turned = turned_next;
      turned_below = turned_kept;
    }
  }

  // After a change of the separators from `first` on.
  void SetHeads(std::size_t first) {
    for (std::size_t g = first / kGroup; g * kGroup <= runs_.count; ++g) {
      runs_.heads[g] = runs_.separators[g * kGroup + kGroup - 1];
    }
  }

  void Release() {
    for (std::size_t r = 0; r < runs_.count; ++r) runs_.spare[runs_.spare_count++] = runs_.runs[r].keys;
    std::fill_n(runs_.separators, runs_.count, kHighest<Key>);
    SetHeads(0);
  }

  void EndRuns() { runs_.runs[runs_.count] = {nullptr, detail::kMedianNoRun}; }

  // An empty run between guards.
  void NewRun(std::size_t r) {
    Key* const keys = runs_.spare[--runs_.spare_count];
    *(keys - 1) = kLowest<Key>;
    std::fill_n(keys, runs_.capacity + 1, kHighest<Key>);
    runs_.runs[r] = {keys, 0};
  }

  // Where a full run is cut for a key to go into it. At the ends of the window, which rising and falling data push on, most
  // keys stay together.
  std::size_t SplitPoint(std::size_t r, Key key) const {
    const Run& run = runs_.runs[r];
    if (r + 1 == runs_.count && key > run.keys[run.count - 1]) return runs_.capacity * 7 / 8;
    if (r == 0 && key < run.keys[0]) return runs_.capacity / 8;
    return runs_.capacity / 2;
  }

  // The keys of a full run from place `at` on become a run of its own.
  void Split(std::size_t r, std::size_t at) {
    const auto move_up = [this, r](auto* array) {
      std::copy_backward(array + r, array + runs_.count, array + runs_.count + 1);
    };
    move_up(runs_.separators);
    move_up(runs_.runs);
    ++runs_.count;
    EndRuns();
    NewRun(r + 1);
    Run& lower = runs_.runs[r];
    Run& upper = runs_.runs[r + 1];
    lower.count = at;
    upper.count = runs_.capacity - lower.count;
    Key* const half = lower.keys + lower.count;
    std::copy(half, half + upper.count, upper.keys);
    std::fill(half, half + upper.count, kHighest<Key>);
    runs_.separators[r] = *(half - 1);
    SetHeads(r);
    if (r < runs_.middle) ++runs_.middle;
  }

  // Joins a run with its neighbours when one run has room for both, and some to spare.
  void MergeAround(std::size_t r) {
    const std::size_t most = runs_.capacity * 3 / 4;
    const Run* const run = runs_.runs + r;
    if (run->count + (run + 1)->count <= most) Merge(r);
    if ((run - 1)->count + run->count <= most) Merge(r - 1);
  }

  // Run r takes the keys of the next one.
  void Merge(std::size_t r) {
    Run& lower = runs_.runs[r];
    const Run upper = runs_.runs[r + 1];
    std::copy(upper.keys, upper.keys + upper.count, lower.keys + lower.count);
    if (runs_.middle == r + 1) runs_.before -= lower.count;
    if (runs_.middle > r) --runs_.middle;
    lower.count += upper.count;
    runs_.separators[r] = runs_.separators[r + 1];
    runs_.spare[runs_.spare_count++] = upper.keys;
    const auto move_down = [this, r](auto* array) { std::copy(array + r + 2, array + runs_.count, array + r + 1); };
    move_down(runs_.separators);
    move_down(runs_.runs);
    --runs_.count;
    EndRuns();
    runs_.separators[runs_.count] = kHighest<Key>;
    SetHeads(r);
  }

  // Lane l takes lane l + step, counted around the vector.
  static auto Turn(std::size_t step) {
    const D d;
    HWY_ALIGN_MAX Key lanes[hn::MaxLanes(d)];
    for (std::size_t l = 0; l < hn::Lanes(d); ++l) lanes[l] = static_cast<Key>((l + step) % hn::Lanes(d));
    return hn::SetTableIndices(d, lanes);
  }

  detail::MedianRuns<Key> runs_;
  decltype(Turn(1)) up_;
  decltype(Turn(1)) down_;
  hn::Mask<D> first_lane_;
  hn::Mask<D> last_lane_;
};

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggled once per target
