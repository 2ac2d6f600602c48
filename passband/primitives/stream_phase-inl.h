// Phases in turns for one instruction set, and the walk over a stream of periodic samples.
#if defined(PASSBAND_PRIMITIVES_STREAM_PHASE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_STREAM_PHASE_INL_H_
#undef PASSBAND_PRIMITIVES_STREAM_PHASE_INL_H_
#else
#define PASSBAND_PRIMITIVES_STREAM_PHASE_INL_H_
#endif

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "hwy/highway.h"
#include "passband/foundation/element_types.h"
#include "passband/primitives/stream_phase.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;
using Wide = hn::CappedTag<double, 8>;
using WideVec = hn::Vec<Wide>;

// Samples whose phases are those of the first one plus a stored one; such blocks begin at multiples of kBlock.
constexpr std::size_t kBlock = 64;
constexpr std::size_t kMaxLanes = hn::MaxLanes(Wide());

// high + low; high is the sum rounded.
struct WidePair {
  WideVec high;
  WideVec low;
};

HWY_INLINE WidePair SumOf(WideVec a, WideVec b) {
  const auto high = hn::Add(a, b);
  const auto b_in_sum = hn::Sub(high, a);
  return {high, hn::Add(hn::Sub(a, hn::Sub(high, b_in_sum)), hn::Sub(b, b_in_sum))};
}

// a = high + low with at most 27 digits each (Veltkamp).
HWY_INLINE WidePair HalvesOf(WideVec a) {
  const auto scaled = hn::Mul(a, hn::Set(Wide(), 0x1p27 + 1));
  const auto high = hn::Sub(scaled, hn::Sub(scaled, a));
  return {high, hn::Sub(a, high)};
}

// The phases of samples by their numbers, in turns: exact to the last digits on processors without a fused operation, too.
class Turns {
 public:
  Turns(double frequency, double phase)
      : frequency_(hn::Set(d_, frequency)), halves_(HalvesOf(frequency_)), start_(InTurns(phase)) {}

  // frequency n + phase / 2 pi less whole turns: high in [-1/2, 1/2], low beside it of at most 2^-4. n < 2^50.
  HWY_INLINE WidePair operator()(WideVec n) const {
    const auto product = hn::Mul(frequency_, n);
    const auto halves = HalvesOf(n);
    auto rest = hn::Sub(hn::Mul(halves_.high, halves.high), product);  // Dekker
    rest = hn::Add(hn::Add(rest, hn::Mul(halves_.high, halves.low)), hn::Mul(halves_.low, halves.high));
    rest = hn::Add(rest, hn::Mul(halves_.low, halves.low));
    const auto sum = SumOf(hn::Sub(product, hn::Round(product)), start_.high);
    return {hn::Sub(sum.high, hn::Round(sum.high)), hn::Add(hn::Add(rest, start_.low), sum.low)};
  }

 private:
  static WidePair InTurns(double phase) {
    constexpr double kPerRadian = 0.15915494309189535;
    constexpr double kPerRadianRest = -9.839338337591243e-18;
    const double high = phase * kPerRadian;
    const double low = std::fma(phase, kPerRadian, -high) + phase * kPerRadianRest;
    return {hn::Set(Wide(), high), hn::Set(Wide(), low)};
  }

  Wide d_;
  WideVec frequency_;
  WidePair halves_;
  WidePair start_;
};

// The numbers of samples `first`, first + step, ..
HWY_INLINE WideVec Numbers(std::int64_t first, std::size_t step) {
  const Wide d;
  return hn::MulAdd(hn::Iota(d, 0), hn::Set(d, static_cast<double>(step)), hn::Set(d, static_cast<double>(first)));
}

// As many parts of type R as there are doubles in a vector.
template <class R>
using PartsOf = hn::Rebind<R, Wide>;

template <class R>
HWY_INLINE hn::Vec<PartsOf<R>> RoundedTo(WideVec x) {
  if constexpr (sizeof(R) == sizeof(double)) {
    return x;
  } else {
    return hn::DemoteTo(PartsOf<R>(), x);
  }
}

struct Samples {
  WideVec re;
  WideVec im;  // of complex streams
};

// Writes samples to dst, or adds them to those that are there.
template <bool kAdd, class T>
HWY_INLINE void Put(const Samples& x, T* dst) {
  using R = RealOf<T>;
  const PartsOf<R> d;
  R* const parts = reinterpret_cast<R*>(dst);
  auto re = RoundedTo<R>(x.re);
  if constexpr (IsComplex<T>) {
    auto im = RoundedTo<R>(x.im);
    if constexpr (kAdd) {
      hn::Vec<decltype(d)> old_re, old_im;
      hn::LoadInterleaved2(d, parts, old_re, old_im);
      re = hn::Add(old_re, re);
      im = hn::Add(old_im, im);
    }
    hn::StoreInterleaved2(re, im, d, parts);
  } else {
    if constexpr (kAdd) re = hn::Add(hn::LoadU(d, parts), re);
    hn::StoreU(re, d, parts);
  }
}

// A part of a block, from its sample `first` on: dst[0 .. count).
template <bool kAdd, class T, class Block>
void PutPart(const Block& block, std::size_t first, std::size_t count, T* dst) {
  const std::size_t lanes = hn::Lanes(Wide());
  HWY_ALIGN_MAX T samples[kBlock];
  for (std::size_t j = first / lanes * lanes; j < first + count; j += lanes) Put<false>(block(j), samples + j);
  for (std::size_t i = 0; i < count; ++i) {
    if constexpr (kAdd) {
      dst[i] += samples[first + i];
    } else {
      dst[i] = samples[first + i];
    }
  }
}

// Walks over the samples from `position` on. wave.Start(number, slot) prepares as many blocks as there are lanes in one of
// two slots, wave.Block(slot, b) is one of them, and block(j) gives its samples from j on. A sample is computed in the same
// way wherever the walk begins. The next slot is prepared before the blocks of this one, so that its long chains of
// operations run beside them.
template <bool kAdd, class T, class Wave>
void Generate(Wave& wave, std::int64_t position, T* dst, std::size_t count) {
  const std::size_t lanes = hn::Lanes(Wide());
  std::int64_t number = position / static_cast<std::int64_t>(kBlock);
  auto first = static_cast<std::size_t>(position) % kBlock;
  wave.Start(number, 0);
  for (std::size_t slot = 0; count > 0; slot = 1 - slot) {
    number += static_cast<std::int64_t>(lanes);
    if (first + count > lanes * kBlock) wave.Start(number, 1 - slot);
    for (std::size_t b = 0; b < lanes && count > 0; ++b) {
      const auto block = wave.Block(slot, b);
      const std::size_t taken = std::min(kBlock - first, count);
      if (taken == kBlock) {
        for (std::size_t j = 0; j < kBlock; j += lanes) Put<kAdd>(block(j), dst + j);
      } else {
        PutPart<kAdd>(block, first, taken, dst);
      }
      dst += taken;
      count -= taken;
      first = 0;
    }
  }
}

// Which samples of a block a walk touches.
class Touched {
 public:
  Touched(std::int64_t position, std::size_t count)
      : first_(static_cast<std::size_t>(position) % kBlock), end_(first_ + std::min(count, kBlock)) {}
  // Any of j .. j + lanes - 1.
  bool operator()(std::size_t j) const {
    const std::size_t lanes = hn::Lanes(Wide());
    return (j < end_ && j + lanes > first_) || j + kBlock < end_;
  }

 private:
  std::size_t first_;
  std::size_t end_;
};

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggled once per target
