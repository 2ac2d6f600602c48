// The grouped form of a cascade for one instruction set.
#if defined(PASSBAND_PRIMITIVES_IIR_SECTIONS_GROUPS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_IIR_SECTIONS_GROUPS_INL_H_
#undef PASSBAND_PRIMITIVES_IIR_SECTIONS_GROUPS_INL_H_
#else
#define PASSBAND_PRIMITIVES_IIR_SECTIONS_GROUPS_INL_H_
#endif

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

#include "hwy/highway.h"
#include "passband/primitives/iir_sections_internal.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;
using detail::IirBundle;
using detail::IirBundleOf;
using detail::IirBundleSums;
using detail::IirSectionsState;
using detail::kIirGroup;
using detail::kIirLeast;
using detail::kIirSilence;

// For lambdas that stand for lines of the function around them.
#undef PASSBAND_UNFOLD
#define PASSBAND_UNFOLD HWY_ATTR __attribute__((always_inline))

// Calls body(k) for k = kFirst .. kCount - 1 as compile-time constants.
template <std::size_t kCount, std::size_t kFirst = 0, class Body>
HWY_INLINE void Repeat(const Body& body) {
  if constexpr (kFirst < kCount) {
    body(std::integral_constant<std::size_t, kFirst>());
    Repeat<kCount, kFirst + 1>(body);
  }
}

// kLength doubles in the vectors of this instruction set.
template <std::size_t kLength>
struct Row {
  using D = hn::CappedTag<double, kLength>;
  using V = hn::Vec<D>;
  static constexpr std::size_t kLanes = hn::MaxLanes(D());
  static constexpr std::size_t kVectors = kLength / kLanes;
  V v[kVectors];

  static HWY_INLINE Row Load(const double* p) {
    Row row;
    Repeat<kVectors>([&](auto i) PASSBAND_UNFOLD { row.v[i] = hn::Load(D(), p + i * kLanes); });
    return row;
  }
  static HWY_INLINE Row Zero() {
    Row row;
    Repeat<kVectors>([&](auto i) PASSBAND_UNFOLD { row.v[i] = hn::Zero(D()); });
    return row;
  }
  HWY_INLINE void Store(double* p) const {
    Repeat<kVectors>([&](auto i) PASSBAND_UNFOLD { hn::Store(v[i], D(), p + i * kLanes); });
  }
  HWY_INLINE Row operator+(const Row& other) const {
    Row row;
    Repeat<kVectors>([&](auto i) PASSBAND_UNFOLD { row.v[i] = hn::Add(v[i], other.v[i]); });
    return row;
  }
  HWY_INLINE Row operator*(const Row& other) const {
    Row row;
    Repeat<kVectors>([&](auto i) PASSBAND_UNFOLD { row.v[i] = hn::Mul(v[i], other.v[i]); });
    return row;
  }
  HWY_INLINE Row operator*(V factor) const {
    Row row;
    Repeat<kVectors>([&](auto i) PASSBAND_UNFOLD { row.v[i] = hn::Mul(v[i], factor); });
    return row;
  }
  // The elements 2 k and 2 k + 1 exchanged.
  HWY_INLINE Row Swapped() const {
    Row row;
    Repeat<kVectors>([&](auto i) PASSBAND_UNFOLD {
#if HWY_TARGET == HWY_SCALAR
      row.v[i] = v[i ^ 1];
#else
      row.v[i] = hn::Shuffle01(v[i]);
#endif
    });
    return row;
  }
  // Small numbers become 0.
  HWY_INLINE void Silence() {
    bool none = true;
    Repeat<kVectors>([&](auto i) PASSBAND_UNFOLD {
      none = none && hn::AllFalse(D(), hn::Lt(hn::Abs(v[i]), hn::Set(D(), kIirSilence)));
    });
    if (HWY_LIKELY(none)) return;
    Repeat<kVectors>([&](auto i) PASSBAND_UNFOLD {
      v[i] = hn::IfThenZeroElse(hn::Lt(hn::Abs(v[i]), hn::Set(D(), kIirSilence)), v[i]);
    });
  }
};

using Samples = Row<kIirGroup>;

template <std::size_t kLength>
HWY_INLINE typename Row<kLength>::V Broadcast(const double* p) {
  return hn::Set(typename Row<kLength>::D(), *p);
}

// The sum of columns k .. k + kCount - 1 times the states, as a balanced tree.
template <std::size_t kLength, std::size_t kCount, std::size_t kFirst = 0>
HWY_INLINE Row<kLength> SumOverStates(const double* columns, const double* states) {
  if constexpr (kCount == 1) {
    return Row<kLength>::Load(columns + kFirst * kLength) * Broadcast<kLength>(states + kFirst);
  } else {
    return SumOverStates<kLength, kCount / 2, kFirst>(columns, states) +
           SumOverStates<kLength, kCount / 2, kFirst + kCount / 2>(columns, states);
  }
}

// Adds the column of sample j, x, to the sums of the later outputs.
template <bool kMasked, std::size_t j>
HWY_INLINE void AddDirect(const double* column, typename Samples::V x, Samples& sums) {
  using D = Samples::D;
  HWY_ALIGN_MAX static constexpr double kIndex[kIirGroup]{0, 1, 2, 3, 4, 5, 6, 7};
  Repeat<Samples::kVectors, (j + 1) / Samples::kLanes>([&](auto i) PASSBAND_UNFOLD {
    auto product = hn::Mul(hn::Load(D(), column + i * Samples::kLanes), x);
    if constexpr (kMasked && i * Samples::kLanes <= j) {
      const auto index = hn::Load(D(), kIndex + i * Samples::kLanes);
      product = hn::IfThenElseZero(hn::Gt(index, hn::Set(D(), static_cast<double>(j))), product);
    }
    sums.v[i] = hn::Add(sums.v[i], product);
  });
}

// The new states at the end of a group.
template <std::size_t kStates>
HWY_INLINE void Renew(const IirBundle<kStates>& tables, const Row<kStates>& inflow, double* states) {
  using States = Row<kStates>;
  const auto old = States::Load(states);
  const auto rest = States::Load(tables.rest[0]) * old + States::Load(tables.rest[1]) * old.Swapped();
  auto fresh = (rest + inflow) + SumOverStates<kStates, kStates>(tables.power[0], states);
  fresh.Silence();
  fresh.Store(states);
}

template <std::size_t kStates>
HWY_INLINE Samples Past(const IirBundle<kStates>& tables, const double* states) {
  return SumOverStates<kIirGroup, kStates>(tables.past[0], states);
}

// One group of one part: the outputs for the inputs x; states are renewed.
template <bool kMasked, std::size_t kStates>
HWY_INLINE Samples RunGroup(const IirBundle<kStates>& tables, const double* x, double* states) {
  auto direct = Samples::Zero();
  auto inflow = Row<kStates>::Zero();
  Repeat<kIirGroup>([&](auto j) PASSBAND_UNFOLD {
    if constexpr (j + 1 < kIirGroup) AddDirect<kMasked, j>(tables.direct[j], Broadcast<kIirGroup>(x + j), direct);
    inflow = inflow + Row<kStates>::Load(tables.inflow[j]) * Broadcast<kStates>(x + j);
  });
  const auto y = (direct + Past(tables, states)) + Samples::Load(x) * Broadcast<kIirGroup>(&tables.gain);
  Renew(tables, inflow, states);
  return y;
}

HWY_INLINE double Widen(double x) { return x > -kIirLeast && x < kIirLeast ? 0.0 : x; }
HWY_INLINE double Widen(float x) { return static_cast<double>(x); }

template <class R>
constexpr double kLeastOutput = std::is_same_v<R, float> ? 0x1p-126 : kIirLeast;

template <class R>
HWY_INLINE R Narrow(double y) {
  return y > -kLeastOutput<R> && y < kLeastOutput<R> ? R{0} : static_cast<R>(y);
}

// Takes eight samples; their parts go to x, x + stride. False when some of them are not finite.
template <std::size_t kParts, class R>
HWY_INLINE bool TakeGroup(const R* src, double* x, std::size_t stride) {
  using D = Samples::D;
  const D d;
  bool finite = true;
  const auto put = [&](auto v, std::size_t part, std::size_t i) PASSBAND_UNFOLD {
    if constexpr (std::is_same_v<R, double>) {
      v = hn::IfThenZeroElse(hn::Lt(hn::Abs(v), hn::Set(d, kIirLeast)), v);
    }
    hn::Store(v, d, x + part * stride + i);
    finite = finite && hn::AllTrue(d, hn::Eq(hn::Sub(v, v), hn::Zero(d)));
  };
  Repeat<Samples::kVectors>([&](auto v) PASSBAND_UNFOLD {
    constexpr std::size_t i = v * Samples::kLanes;
    const hn::Rebind<R, D> narrow;
    const auto wide = [&](auto loaded) PASSBAND_UNFOLD {
      if constexpr (std::is_same_v<R, double>) {
        return loaded;
      } else {
        return hn::PromoteTo(d, loaded);
      }
    };
    if constexpr (kParts == 1) {
      put(wide(hn::LoadU(narrow, src + i)), 0, i);
    } else {
      hn::Vec<decltype(narrow)> re, im;
      hn::LoadInterleaved2(narrow, src + 2 * i, re, im);
      put(wide(re), 0, i);
      put(wide(im), 1, i);
    }
  });
  return finite;
}

// Gives eight samples.
template <std::size_t kParts, class R>
HWY_INLINE void GiveGroup(const Samples (&y)[kParts], R* dst) {
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128  // whose conversion stops at the largest float
  HWY_ALIGN_MAX double outputs[kIirGroup];
  for (std::size_t part = 0; part < kParts; ++part) {
    y[part].Store(outputs);
    for (std::size_t n = 0; n < kIirGroup; ++n) dst[kParts * n + part] = Narrow<R>(outputs[n]);
  }
#else
  Repeat<Samples::kVectors>([&](auto v) PASSBAND_UNFOLD {
    constexpr std::size_t i = v * Samples::kLanes;
    const Samples::D d;
    const hn::Rebind<R, Samples::D> narrow;
    const auto audible = [&](std::size_t part) PASSBAND_UNFOLD {
      const auto output = hn::IfThenZeroElse(hn::Lt(hn::Abs(y[part].v[v]), hn::Set(d, kLeastOutput<R>)), y[part].v[v]);
      if constexpr (std::is_same_v<R, double>) {
        return output;
      } else {
        return hn::DemoteTo(narrow, output);
      }
    };
    if constexpr (kParts == 1) {
      hn::StoreU(audible(0), narrow, dst + i);
    } else {
      hn::StoreInterleaved2(audible(0), audible(1), narrow, dst + 2 * i);
    }
  });
#endif
}

// Runs whole groups through one bundle; `dst` may be `src`.
template <std::size_t kStates, std::size_t kParts, class In, class Out>
void RunGroups(IirBundleOf<kStates, kParts>& bundle, const In* src, Out* dst, std::size_t groups) {
  HWY_ALIGN_MAX double x[kParts][kIirGroup];
  Samples y[kParts];
  for (std::size_t group = 0; group < groups; ++group) {
    const bool finite = TakeGroup<kParts>(src, x[0], kIirGroup);
    Repeat<kParts>([&](auto part) PASSBAND_UNFOLD {
      double* const states = bundle.sums[part].states;
      if (HWY_LIKELY(finite)) {
        y[part] = RunGroup<false>(bundle.tables, x[part], states);
      } else {
        y[part] = RunGroup<true>(bundle.tables, x[part], states);
      }
    });
    GiveGroup<kParts>(y, dst);
    src += kParts * kIirGroup;
    dst += kParts * kIirGroup;
  }
}

// Prepares the sums for single samples after a group.
template <std::size_t kStates, std::size_t kParts>
HWY_INLINE void BeginGroup(IirBundleOf<kStates, kParts>& bundle) {
  for (std::size_t part = 0; part < kParts; ++part) {
    auto& sums = bundle.sums[part];
    Past(bundle.tables, sums.states).Store(sums.past);
    Samples::Zero().Store(sums.direct);
    Row<kStates>::Zero().Store(sums.inflow);
  }
}

// One part of sample `place` of a group through one bundle.
template <std::size_t kStates>
HWY_INLINE double StepBundle(const IirBundle<kStates>& tables, IirBundleSums<kStates>& sums, std::size_t place,
                             double x) {
  using D = Samples::D;
  using States = Row<kStates>;
  const double y = (sums.direct[place] + sums.past[place]) + tables.gain * x;
  const auto inflow = States::Load(sums.inflow) + States::Load(tables.inflow[place]) * Broadcast<kStates>(&x);
  inflow.Store(sums.inflow);
  if (place + 1 == kIirGroup) return y;
  HWY_ALIGN_MAX static constexpr double kIndex[kIirGroup]{0, 1, 2, 3, 4, 5, 6, 7};
  const double* const column = tables.direct[place];
  Repeat<Samples::kVectors>([&](auto i) PASSBAND_UNFOLD {
    constexpr std::size_t k = i * Samples::kLanes;
    const auto later = hn::Gt(hn::Load(D(), kIndex + k), hn::Set(D(), static_cast<double>(place)));
    const auto product = hn::Mul(hn::Load(D(), column + k), Broadcast<kIirGroup>(&x));
    hn::Store(hn::Add(hn::Load(D(), sums.direct + k), hn::IfThenElseZero(later, product)), D(), sums.direct + k);
  });
  return y;
}

// All parts of a sample; between bundles, too, small numbers become 0.
template <std::size_t kStates, std::size_t kParts>
HWY_INLINE void StepBundleOf(IirBundleOf<kStates, kParts>& bundle, std::size_t place, double (&x)[kParts]) {
  for (std::size_t part = 0; part < kParts; ++part) {
    x[part] = StepBundle(bundle.tables, bundle.sums[part], place, Widen(x[part]));
  }
  if (place + 1 < kIirGroup) return;
  for (std::size_t part = 0; part < kParts; ++part) {
    auto& sums = bundle.sums[part];
    Renew(bundle.tables, Row<kStates>::Load(sums.inflow), sums.states);
  }
  BeginGroup(bundle);
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
  constexpr std::size_t kChunk = 64 / kParts;  // groups
  auto& last = *static_cast<IirBundleOf<kStates, kParts>*>(filter.last);
  const auto* from = reinterpret_cast<const R*>(src);
  auto* to = reinterpret_cast<R*>(dst);
  if (filter.bundle_count == 0) {
    RunGroups(last, from, to, groups);
    return;
  }
  HWY_ALIGN_MAX double between[kChunk * kParts * kIirGroup];
  for (std::size_t done = 0; done < groups; done += kChunk) {
    const std::size_t len = std::min(kChunk, groups - done);
    RunGroups(filter.bundles[0], from, between, len);
    for (std::size_t i = 1; i < filter.bundle_count; ++i) {
      RunGroups(filter.bundles[i], static_cast<const double*>(between), between, len);
    }
    RunGroups(last, static_cast<const double*>(between), to, len);
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
