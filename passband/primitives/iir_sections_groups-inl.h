// The grouped form of a cascade for one instruction set.
#if defined(PASSBAND_PRIMITIVES_IIR_SECTIONS_GROUPS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_IIR_SECTIONS_GROUPS_INL_H_
#undef PASSBAND_PRIMITIVES_IIR_SECTIONS_GROUPS_INL_H_
#else
#define PASSBAND_PRIMITIVES_IIR_SECTIONS_GROUPS_INL_H_
#endif

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "hwy/highway.h"
#include "passband/primitives/iir_sections_internal.h"
#include "passband/primitives/iir_sections_rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
using detail::IirBundle;
using detail::IirBundleOf;
using detail::IirBundleSums;
using detail::IirSectionsState;

// The lanes that a row of kLength doubles has, of a vector with the same number in all lanes.
template <std::size_t kLength, class V>
HWY_INLINE typename Row<kLength>::V Shortened(V v) {
  if constexpr (std::is_same_v<V, typename Row<kLength>::V>) {
    return v;
  } else {
    return Shortened<kLength>(hn::LowerHalf(v));
  }
}

// The states of a bundle: in a register where up to four of them fill a vector, for storing them and loading them one by
// one would take most of the time between two groups; else in memory.
template <std::size_t kStates>
class States {
  using D = typename Row<kStates>::D;
  static constexpr bool kInRegister = Row<kStates>::kLanes == kStates && kStates <= 4;

 public:
  HWY_INLINE explicit States(double* memory) : memory_(memory), row_(Row<kStates>::Load(memory)) {}

  HWY_INLINE const Row<kStates>& All() const { return row_; }
  HWY_INLINE void Renew(const Row<kStates>& fresh) {
    row_ = fresh;
    if constexpr (!kInRegister) row_.Store(memory_);
  }
  HWY_INLINE void Keep() const { row_.Store(memory_); }

  // State k in all lanes of the vectors of a row.
  template <std::size_t kLength, std::size_t k>
  HWY_INLINE typename Row<kLength>::V Get() const {
#if HWY_TARGET != HWY_SCALAR
    if constexpr (kInRegister) {
      const auto both = hn::Broadcast<k % 2>(row_.v[0]);
      if constexpr (kStates == 2) {
        return Spread<kLength>(both);
      } else if constexpr (k < 2) {
        return Spread<kLength>(hn::ConcatLowerLower(D(), both, both));
      } else {
        return Spread<kLength>(hn::ConcatUpperUpper(D(), both, both));
      }
    }
#endif
    return Broadcast<kLength>(memory_ + k);
  }

 private:
  template <std::size_t kLength, class V>
  static HWY_INLINE typename Row<kLength>::V Spread(V v) {
    if constexpr (Row<kLength>::kLanes == kStates) {
      return v;
    } else {
      return hn::Set(typename Row<kLength>::D(), hn::GetLane(v));
    }
  }

  double* memory_;
  Row<kStates> row_;
};

// The sum of columns kFirst .. kFirst + kCount - 1 times the states, as a balanced tree.
template <std::size_t kLength, std::size_t kStates, std::size_t kCount = kStates, std::size_t kFirst = 0>
HWY_INLINE Row<kLength> SumOverStates(const double* columns, const States<kStates>& states) {
  if constexpr (kCount == 1) {
    return Row<kLength>::Load(columns + kFirst * kLength) * states.template Get<kLength, kFirst>();
  } else {
    return SumOverStates<kLength, kStates, kCount / 2, kFirst>(columns, states) +
           SumOverStates<kLength, kStates, kCount / 2, kFirst + kCount / 2>(columns, states);
  }
}

// `v`, outputs from `first` of a group on, where they are later than `place`; else 0.
HWY_INLINE Samples::V OnlyLater(Samples::V v, std::size_t first, std::size_t place) {
  const Samples::D d;
  HWY_ALIGN_MAX static constexpr double kIndex[kIirGroup]{0, 1, 2, 3, 4, 5, 6, 7};
  return hn::IfThenElseZero(hn::Gt(hn::Load(d, kIndex + first), hn::Set(d, static_cast<double>(place))), v);
}

// Adds the column of sample j, x, to the sums of the later outputs.
template <bool kMasked, std::size_t j>
HWY_INLINE void AddDirect(const double* column, typename Samples::V x, Samples& sums) {
  using D = Samples::D;
  Repeat<Samples::kVectors, (j + 1) / Samples::kLanes>([&](auto i) PASSBAND_UNFOLD {
    constexpr std::size_t first = i * Samples::kLanes;
    auto product = hn::Mul(hn::Load(D(), column + first), x);
    if constexpr (kMasked && first <= j) product = OnlyLater(product, first, j);
    sums.v[i] = hn::Add(sums.v[i], product);
  });
}

// The new states at the end of a group.
template <std::size_t kStates>
HWY_INLINE void Renew(const IirBundle<kStates>& tables, const Row<kStates>& inflow, States<kStates>& states) {
  using R = Row<kStates>;
  const auto rest = R::Load(tables.rest[0]) * states.All() + R::Load(tables.rest[1]) * states.All().Swapped();
  auto fresh = (rest + inflow) + SumOverStates<kStates>(tables.power[0], states);
  fresh.Silence();
  states.Renew(fresh);
}

template <std::size_t kStates>
HWY_INLINE Samples Past(const IirBundle<kStates>& tables, const States<kStates>& states) {
  return SumOverStates<kIirGroup>(tables.past[0], states);
}

// One group of one part: the outputs for the inputs x; states are renewed.
template <bool kMasked, std::size_t kStates>
HWY_INLINE Samples RunGroup(const IirBundle<kStates>& tables, const double* x, States<kStates>& states) {
  auto direct = Samples::Zero();
  auto inflow = Row<kStates>::Zero();
  Repeat<kIirGroup>([&](auto j) PASSBAND_UNFOLD {
    const auto sample = Broadcast<kIirGroup>(x + j);
    if constexpr (j + 1 < kIirGroup) AddDirect<kMasked, j>(tables.direct[j], sample, direct);
    inflow = inflow + Row<kStates>::Load(tables.inflow[j]) * Shortened<kStates>(sample);
  });
  const auto y = (direct + Past(tables, states)) + Samples::Load(x) * Broadcast<kIirGroup>(&tables.gain);
  Renew(tables, inflow, states);
  return y;
}

constexpr std::size_t kGroupsAtOnce = 64;
constexpr std::size_t kSamplesAtOnce = kGroupsAtOnce * kIirGroup;

// Samples on their way through the bundles. Groups are taken long before they are used: what has
// just been stored as a vector is slow to load sample by sample.
template <std::size_t kParts>
struct Passing {
  HWY_ALIGN_MAX double x[kParts * kSamplesAtOnce];  // one part behind the other
  bool finite;
};

// Runs whole groups through one bundle. The outputs go to y; they may take the places of the inputs, and must when there
// are two parts.
template <bool kMasked, std::size_t kStates, std::size_t kParts>
void RunGroups(IirBundleOf<kStates, kParts>& bundle, Passing<kParts>& passing, double* y, std::size_t groups) {
  const IirBundle<kStates> tables = bundle.tables;  // which no output can overwrite: it may stay in registers
  States<kStates> re(bundle.sums[0].states);
  States<kStates> im(bundle.sums[kParts - 1].states);
  FiniteSoFar finite;
  const auto run = [&](std::size_t n, States<kStates>& states) PASSBAND_UNFOLD {
    const Samples outputs = RunGroup<kMasked>(tables, passing.x + n, states);
    for (std::size_t i = 0; i < Samples::kVectors; ++i) {
      const auto v = WithoutLeast(outputs.v[i]);
      finite.See(v);
      hn::StoreU(v, Samples::D(), y + n + i * Samples::kLanes);
    }
  };
  for (std::size_t n = 0; n < groups * kIirGroup; n += kIirGroup) {
    run(n, re);
    if constexpr (kParts == 2) run(kSamplesAtOnce + n, im);
  }
  passing.finite = finite.All();
  re.Keep();
  if constexpr (kParts == 2) im.Keep();
}

template <std::size_t kStates, std::size_t kParts>
HWY_INLINE void RunBundle(IirBundleOf<kStates, kParts>& bundle, Passing<kParts>& passing, double* y,
                          std::size_t groups) {
  passing.finite ? RunGroups<false>(bundle, passing, y, groups) : RunGroups<true>(bundle, passing, y, groups);
}

// Prepares the sums for single samples after a group.
template <std::size_t kStates, std::size_t kParts>
void BeginGroup(IirBundleOf<kStates, kParts>& bundle) {
  for (std::size_t part = 0; part < kParts; ++part) {
    auto& sums = bundle.sums[part];
    Past(bundle.tables, States<kStates>(sums.states)).Store(sums.past);
    Samples::Zero().Store(sums.direct);
    Row<kStates>::Zero().Store(sums.inflow);
  }
}

template <std::size_t kStates, std::size_t kParts>
HWY_NOINLINE void EndGroup(IirBundleOf<kStates, kParts>& bundle) {
  for (auto& sums : bundle.sums) {
    States<kStates> states(sums.states);
    Renew(bundle.tables, Row<kStates>::Load(sums.inflow), states);
    states.Keep();
  }
  BeginGroup(bundle);
}

// One part of sample `place` of a group through one bundle.
template <std::size_t kStates>
HWY_INLINE double StepBundle(const IirBundle<kStates>& tables, IirBundleSums<kStates>& sums, std::size_t place,
                             double x) {
  using D = Samples::D;
  using R = Row<kStates>;
  const double y = (sums.direct[place] + sums.past[place]) + tables.gain * x;
  const auto inflow = R::Load(sums.inflow) + R::Load(tables.inflow[place]) * Broadcast<kStates>(&x);
  inflow.Store(sums.inflow);
  if (place + 1 == kIirGroup) return y;
  const double* const column = tables.direct[place];
  Repeat<Samples::kVectors>([&](auto i) PASSBAND_UNFOLD {
    constexpr std::size_t k = i * Samples::kLanes;
    const auto product = hn::Mul(hn::Load(D(), column + k), Broadcast<kIirGroup>(&x));
    hn::Store(hn::Add(hn::Load(D(), sums.direct + k), OnlyLater(product, k, place)), D(), sums.direct + k);
  });
  return y;
}

// All parts of a sample; between bundles, too, small numbers become 0.
template <std::size_t kStates, std::size_t kParts>
HWY_INLINE void StepBundleOf(IirBundleOf<kStates, kParts>& bundle, std::size_t place, double (&x)[kParts]) {
  for (std::size_t part = 0; part < kParts; ++part) {
    x[part] = StepBundle(bundle.tables, bundle.sums[part], place, Widen(x[part]));
  }
  if (place + 1 == kIirGroup) EndGroup(bundle);
}

template <Element T, std::size_t kStates>
T GroupedOne(IirStateOf<T>& state, T input) noexcept {
  using R = RealOf<T>;
  auto& filter = static_cast<IirSectionsState<T>&>(state);
  constexpr std::size_t kParts = IirSectionsState<T>::kParts;
  R parts[kParts];
  std::memcpy(parts, &input, sizeof(T));
  double x[kParts];
  for (std::size_t part = 0; part < kParts; ++part) x[part] = static_cast<double>(parts[part]);
  for (std::size_t i = 0; i < filter.bundle_count; ++i) StepBundleOf(filter.bundles[i], filter.place, x);
  StepBundleOf(*static_cast<IirBundleOf<kStates, kParts>*>(filter.last), filter.place, x);
  filter.place = (filter.place + 1) % kIirGroup;
  for (std::size_t part = 0; part < kParts; ++part) parts[part] = Narrow<R>(x[part]);
  T output;
  std::memcpy(&output, parts, sizeof(T));
  return output;
}

// Whole groups through all bundles.
template <Element T, std::size_t kStates>
HWY_INLINE void RunAllBundles(IirSectionsState<T>& filter, const T* src, T* dst, std::size_t groups) {
  using R = RealOf<T>;
  constexpr std::size_t kParts = IirSectionsState<T>::kParts;
  auto& last = *static_cast<IirBundleOf<kStates, kParts>*>(filter.last);
  const auto* from = reinterpret_cast<const R*>(src);
  auto* to = reinterpret_cast<R*>(dst);
  Passing<kParts> passing;
  for (std::size_t done = 0; done < groups; done += kGroupsAtOnce) {
    const std::size_t len = std::min(kGroupsAtOnce, groups - done);
    FiniteSoFar finite;
    for (std::size_t n = 0; n < len * kIirGroup; n += kIirGroup) {
      TakeGroup<kParts>(from + kParts * n, passing.x + n, kSamplesAtOnce, finite);
    }
    passing.finite = finite.All();
    for (std::size_t i = 0; i < filter.bundle_count; ++i) RunBundle(filter.bundles[i], passing, passing.x, len);
    if constexpr (std::is_same_v<T, double>) {
      RunBundle(last, passing, to, len);
    } else {
      RunBundle(last, passing, passing.x, len);
      for (std::size_t n = 0; n < len * kIirGroup; n += kIirGroup) {
        GiveGroup<kParts>(passing.x + n, kSamplesAtOnce, to + kParts * n);
      }
    }
    from += len * kParts * kIirGroup;
    to += len * kParts * kIirGroup;
  }
}

template <Element T, std::size_t kStates>
void GroupedBlock(IirStateOf<T>& state, const T* src, T* dst, std::int32_t count) noexcept {
  constexpr std::size_t kParts = IirSectionsState<T>::kParts;
  auto& filter = static_cast<IirSectionsState<T>&>(state);
  const auto samples = static_cast<std::size_t>(count);
  std::size_t n = 0;
  const auto singles = [&](std::size_t end) PASSBAND_UNFOLD {
    for (; n < end; ++n) dst[n] = GroupedOne<T, kStates>(state, src[n]);
  };
  singles(std::min(samples, (kIirGroup - filter.place) % kIirGroup));
  const std::size_t groups = (samples - n) / kIirGroup;
  if (groups > 0) {
    RunAllBundles<T, kStates>(filter, src + n, dst + n, groups);
    n += groups * kIirGroup;
    for (std::size_t i = 0; i < filter.bundle_count; ++i) BeginGroup(filter.bundles[i]);
    BeginGroup(*static_cast<IirBundleOf<kStates, kParts>*>(filter.last));
  }
  singles(samples);
}

template <Element T>
void SetGroupedFunctions(IirSectionsState<T>& filter) {
  const auto set = [&](auto states) HWY_ATTR {
    filter.filter = &GroupedBlock<T, states>;
    filter.one = &GroupedOne<T, states>;
  };
  switch (filter.last_states) {
    case 2:
      return set(std::integral_constant<std::size_t, 2>());
    case 4:
      return set(std::integral_constant<std::size_t, 4>());
    default:
      return set(std::integral_constant<std::size_t, 8>());
  }
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
