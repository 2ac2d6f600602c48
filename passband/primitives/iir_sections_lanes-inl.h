// The plain form of a cascade for one instruction set.
#if defined(PASSBAND_PRIMITIVES_IIR_SECTIONS_LANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_IIR_SECTIONS_LANES_INL_H_
#undef PASSBAND_PRIMITIVES_IIR_SECTIONS_LANES_INL_H_
#else
#define PASSBAND_PRIMITIVES_IIR_SECTIONS_LANES_INL_H_
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
using detail::IirLanes;
using detail::IirSectionsState;
using detail::kIirLanes;
using detail::kIirStretch;

constexpr std::size_t kOneChunk = 64;  // sections that a single sample goes through at a time

// One part of a sample through sections `first` .. `end` - 1, the sums of whole vectors renewed afterwards.
HWY_INLINE double StepSections(const IirLanes& lanes, std::size_t part, std::size_t first, std::size_t end, double x) {
  const hn::CappedTag<double, kIirLanes> d;
  const std::size_t begin = first / kIirLanes * kIirLanes;
  HWY_ALIGN_MAX double inputs[kOneChunk + 1];  // and behind each its output
  double* const z1 = lanes.z1 + part * lanes.length + begin;
  double* const z2 = lanes.z2 + part * lanes.length + begin;
  std::fill_n(inputs, kIirLanes, 0.0);
  for (std::size_t k = first - begin; k < end - begin; ++k) {
    inputs[k] = x;
    x = lanes.b0[begin + k] * x + z1[k];
  }
  inputs[end - begin] = x;
  for (std::size_t k = 0; k < end - begin; k += hn::Lanes(d)) {
    const auto tap = [&](const double* taps) PASSBAND_UNFOLD { return hn::Load(d, taps + begin + k); };
    const auto in = hn::Load(d, inputs + k);
    const auto out = hn::LoadU(d, inputs + k + 1);
    const auto next1 = hn::Add(hn::Sub(hn::Mul(tap(lanes.b1), in), hn::Mul(tap(lanes.a1), out)), hn::Load(d, z2 + k));
    const auto next2 = hn::Sub(hn::Mul(tap(lanes.b2), in), hn::Mul(tap(lanes.a2), out));
    hn::Store(next1, d, z1 + k);
    hn::Store(next2, d, z2 + k);
  }
  return x;
}

// Counts samples; at the end of a stretch silent sections lose what is left in them.
template <Element T>
HWY_INLINE void Advance(IirSectionsState<T>& filter, std::size_t count) {
  filter.place += count;
  if (HWY_LIKELY(filter.place < kIirStretch)) return;
  filter.place = 0;
  const IirLanes& lanes = filter.lanes;
  const hn::CappedTag<double, kIirLanes> d;
  for (std::size_t k = 0; k < IirSectionsState<T>::kParts * lanes.length; k += hn::Lanes(d)) {
    const auto z1 = hn::Load(d, lanes.z1 + k);
    const auto z2 = hn::Load(d, lanes.z2 + k);
    const auto silence = hn::Set(d, kIirSilence);
    const auto silent = hn::And(hn::Lt(hn::Abs(z1), silence), hn::Lt(hn::Abs(z2), silence));
    hn::Store(hn::IfThenZeroElse(silent, z1), d, lanes.z1 + k);
    hn::Store(hn::IfThenZeroElse(silent, z2), d, lanes.z2 + k);
  }
}

template <Element T>
T PlainOne(IirStateOf<T>& state, T input) noexcept {
  using R = RealOf<T>;
  constexpr std::size_t kParts = IirSectionsState<T>::kParts;
  auto& filter = static_cast<IirSectionsState<T>&>(state);
  const IirLanes& lanes = filter.lanes;
  R parts[kParts];
  std::memcpy(parts, &input, sizeof(T));
  for (std::size_t part = 0; part < kParts; ++part) {
    double x = Widen(parts[part]);
    for (std::size_t k = lanes.first; k < lanes.length;) {
      const std::size_t end = std::min(lanes.length, k / kIirLanes * kIirLanes + kOneChunk);
      x = StepSections(lanes, part, k, end, x);
      k = end;
    }
    parts[part] = Narrow<R>(x);
  }
  Advance(filter, 1);
  T output;
  std::memcpy(&output, parts, sizeof(T));
  return output;
}

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128
// kCount vectors of sections, each section kSkew samples behind the one before it: at step t the section with lag l
// takes sample t - l. A lag of two samples keeps the exchange between lanes out of the feedback path, but filling and
// draining the lanes takes twice as many steps.
template <std::size_t kCount, std::size_t kSkew>
class Lanes {
  using D = hn::CappedTag<double, kIirLanes>;
  using V = hn::Vec<D>;
  static constexpr std::size_t kLanes = hn::MaxLanes(D());

 public:
  // The sections from `base` on, whose first one is `first`.
  HWY_INLINE Lanes(const IirLanes& lanes, std::size_t part, std::size_t base, std::size_t first)
      : taps_{lanes.b0 + base, lanes.b1 + base, lanes.b2 + base, lanes.a1 + base, lanes.a2 + base},
        held1_(lanes.z1 + part * lanes.length + base),
        held2_(lanes.z2 + part * lanes.length + base),
        most_lag_(kSkew * (kCount * kLanes - 1 - (first - base))) {
    const D d;
    const V origin = hn::Set(d, static_cast<double>(first - base));
    HWY_ALIGN_MAX double index[kCount * kLanes];
    for (std::size_t i = 0; i < kCount * kLanes; ++i) index[i] = static_cast<double>(i);
    Repeat<kCount>([&](auto v) PASSBAND_UNFOLD {
      lag_[v] = hn::Mul(hn::Sub(hn::Load(d, index + v * kLanes), origin), hn::Set(d, double{kSkew}));
      z1_[v] = hn::Load(d, held1_ + v * kLanes);
      z2_[v] = hn::Load(d, held2_ + v * kLanes);
      x_[v] = hn::Zero(d);
      coming_x_[v] = hn::Zero(d);
    });
  }

  // Runs `count` samples through; one step more for each section makes up for the lags.
  HWY_INLINE void Run(double* samples, std::size_t count) {
    const std::size_t steps = count + most_lag_;
    Enter(samples[0]);
    std::size_t t = 0;
    for (; t < std::min(most_lag_, steps); ++t) Step<true>(samples, count, t);
    for (; t < count; ++t) Step<false>(samples, count, t);
    for (; t < steps; ++t) Step<true>(samples, count, t);
    const D d;
    Repeat<kCount>([&](auto v) PASSBAND_UNFOLD {
      hn::Store(z1_[v], d, held1_ + v * kLanes);
      hn::Store(z2_[v], d, held2_ + v * kLanes);
    });
  }

 private:
  // The input of the first section.
  HWY_INLINE void Enter(double x) {
    const D d;
    x_[0] = hn::IfThenElse(hn::Eq(lag_[0], hn::Zero(d)), hn::Set(d, x), x_[0]);
  }

  template <bool kMasked>
  HWY_INLINE void Step(double* samples, std::size_t count, std::size_t t) {
    const D d;
    V y[kCount];
    Repeat<kCount>([&](auto v) PASSBAND_UNFOLD {
      const auto tap = [&](std::size_t i) PASSBAND_UNFOLD { return hn::Load(d, taps_[i] + v * kLanes); };
      y[v] = hn::Add(hn::Mul(tap(0), x_[v]), z1_[v]);
      V next1 = hn::Add(hn::Sub(hn::Mul(tap(1), x_[v]), hn::Mul(tap(3), y[v])), z2_[v]);
      V next2 = hn::Sub(hn::Mul(tap(2), x_[v]), hn::Mul(tap(4), y[v]));
      if constexpr (kMasked) {
        const V now = hn::Set(d, static_cast<double>(t));
        const auto active =
            hn::And(hn::Le(lag_[v], now), hn::Lt(hn::Sub(now, lag_[v]), hn::Set(d, static_cast<double>(count))));
        next1 = hn::IfThenElse(active, next1, z1_[v]);
        next2 = hn::IfThenElse(active, next2, z2_[v]);
      }
      z1_[v] = next1;
      z2_[v] = next2;
    });
    // Everything moves on by one section; the last output comes to the front.
    const auto rotate = Rotation();
    V rotated[kCount];
    Repeat<kCount>([&](auto v) PASSBAND_UNFOLD { rotated[v] = hn::TableLookupLanes(y[v], rotate); });
    const auto front = hn::Eq(hn::Load(d, kFront), hn::Zero(d));
    Repeat<kCount>([&](auto v) PASSBAND_UNFOLD {
      V x = rotated[v];
      if constexpr (v > 0) x = hn::IfThenElse(front, rotated[v - 1], x);
      x_[v] = kSkew == 1 ? x : coming_x_[v];
      coming_x_[v] = x;
    });
    if (t + 1 < count) Enter(samples[t + 1]);
    if (!kMasked || t >= most_lag_) samples[t - most_lag_] = hn::GetLane(rotated[kCount - 1]);
  }

  HWY_ALIGN_MAX static constexpr double kFront[8]{0, 1, 1, 1, 1, 1, 1, 1};
  static HWY_INLINE auto Rotation() {
    HWY_ALIGN_MAX static constexpr std::int64_t kFrom[8]{kLanes - 1, 0, 1, 2, 3, 4, 5, 6};
    return hn::SetTableIndices(D(), kFrom);
  }

  const double* taps_[5];
  double* held1_;
  double* held2_;
  std::size_t most_lag_;
  V lag_[kCount];
  V x_[kCount];
  V coming_x_[kCount];
  V z1_[kCount];
  V z2_[kCount];
};

template <std::size_t kCount>
void RunLanes(const IirLanes& lanes, std::size_t part, std::size_t base, double* samples, std::size_t count) {
  const std::size_t first = std::max(base, lanes.first);
  if (count < 256) {
    Lanes<kCount, 1>(lanes, part, base, first).Run(samples, count);
  } else {
    Lanes<kCount, 2>(lanes, part, base, first).Run(samples, count);
  }
}

// All sections, as many vectors of them at a time as registers hold.
HWY_INLINE void RunAllLanes(const IirLanes& lanes, std::size_t part, double* samples, std::size_t count) {
  constexpr std::size_t kLanes = hn::MaxLanes(hn::CappedTag<double, kIirLanes>());
  constexpr std::size_t kMost = 4;
  for (std::size_t base = lanes.first / kLanes * kLanes; base < lanes.length;) {
    const std::size_t vectors = std::min(kMost, (lanes.length - base) / kLanes);
    constexpr void (*kRuns[])(const IirLanes&, std::size_t, std::size_t, double*, std::size_t){
        &RunLanes<1>, &RunLanes<2>, &RunLanes<3>, &RunLanes<kMost>};
    kRuns[vectors - 1](lanes, part, base, samples, count);
    base += vectors * kLanes;
  }
}

template <Element T>
void PlainBlock(IirStateOf<T>& state, const T* src, T* dst, std::int32_t count) noexcept {
  using R = RealOf<T>;
  constexpr std::size_t kParts = IirSectionsState<T>::kParts;
  auto& filter = static_cast<IirSectionsState<T>&>(state);
  const IirLanes& lanes = filter.lanes;
  const auto* from = reinterpret_cast<const R*>(src);
  auto* to = reinterpret_cast<R*>(dst);
  HWY_ALIGN_MAX double samples[kParts * kIirStretch];
  for (auto left = static_cast<std::size_t>(count); left > 0;) {
    const std::size_t len = std::min(left, kIirStretch - filter.place);
    const std::size_t in_groups = len / kIirGroup * kIirGroup;
    const auto for_the_rest = [&](auto act) PASSBAND_UNFOLD {
      for (std::size_t n = in_groups; n < len; ++n) {
        for (std::size_t part = 0; part < kParts; ++part) act(kParts * n + part, samples[part * kIirStretch + n]);
      }
    };
    FiniteSoFar finite;  // of no concern here
    for (std::size_t n = 0; n < in_groups; n += kIirGroup) {
      TakeGroup<kParts>(from + kParts * n, samples + n, kIirStretch, finite);
    }
    for_the_rest([&](std::size_t i, double& sample) PASSBAND_UNFOLD { sample = Widen(from[i]); });
    for (std::size_t part = 0; part < kParts; ++part) RunAllLanes(lanes, part, samples + part * kIirStretch, len);
    for (std::size_t n = 0; n < in_groups; n += kIirGroup) {
      GiveGroup<kParts>(samples + n, kIirStretch, to + kParts * n);
    }
    for_the_rest([&](std::size_t i, double sample) PASSBAND_UNFOLD { to[i] = Narrow<R>(sample); });
    from += kParts * len;
    to += kParts * len;
    left -= len;
    Advance(filter, len);
  }
}
#else
template <Element T>
void PlainBlock(IirStateOf<T>& state, const T* src, T* dst, std::int32_t count) noexcept {
  for (std::int32_t n = 0; n < count; ++n) dst[n] = PlainOne(state, src[n]);
}
#endif

template <Element T>
void SetPlainFunctions(IirSectionsState<T>& filter) {
  filter.filter = &PlainBlock<T>;
  filter.one = &PlainOne<T>;
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
