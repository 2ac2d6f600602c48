// Direct FIR over a block: each output has a vector lane of its own and walks the chains of fir_direct_taps.h with
// broadcast taps. Compiled once per instruction set.
#if defined(PASSBAND_PRIMITIVES_FIR_DIRECT_BLOCK_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_FIR_DIRECT_BLOCK_INL_H_
#undef PASSBAND_PRIMITIVES_FIR_DIRECT_BLOCK_INL_H_
#else
#define PASSBAND_PRIMITIVES_FIR_DIRECT_BLOCK_INL_H_
#endif

#include <cstddef>

#include "hwy/highway.h"
#include "passband/primitives/fir_direct_taps.h"

// Instrumented builds keep the loops: unrolled with a check at each access they take minutes to compile.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#undef HWY_UNROLL
#define HWY_UNROLL(factor)
#endif

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;
using detail::FirTaps;

// Keeps a loaded vector in a register: compilers otherwise repeat the load in each multiply-add that uses it.
template <class V>
HWY_INLINE V Pinned(V v) {
#if HWY_ARCH_X86
  auto raw = v.raw;
#if HWY_TARGET <= HWY_AVX3
  asm("" : "+v"(raw));
#else
  asm("" : "+x"(raw));
#endif
  v.raw = raw;
#endif
  return v;
}

// Where registers are few, hides that successive groups of taps read some of the same samples: compilers would carry
// those over and move sums to memory instead.
template <class R>
HWY_INLINE const R* Unrelated(const R* x) {
#if HWY_ARCH_X86 && HWY_TARGET > HWY_AVX3
  asm("" : "+r"(x));
#endif
  return x;
}

// Keeps sums in memory, to leave the registers to those of the chain that comes next.
template <bool kPark, class Sums>
HWY_INLINE void Park(Sums& sums) {
#if HWY_ARCH_X86
  if constexpr (kPark) asm("" : "+m"(sums));
#endif
  static_cast<void>(sums);
}

// (a_re - b_im, a_im + b_re) for interleaved pairs.
template <class V>
HWY_INLINE V JoinParts(V a, V b) {
  const hn::DFromV<V> d;
  const V swapped = hn::Reverse2(d, b);
  return hn::OddEven(hn::Add(a, swapped), hn::Sub(a, swapped));
}

// Rows of the large and the middle tile and taps that are worked on together: with 16 registers eight are for the sums
// of the innermost loop and the rest wait in memory, with 32 all stay.
template <Element T>
struct TileSize {
  static constexpr std::size_t kLarge = IsComplex<T> ? 4 : 8;
  static constexpr std::size_t kMiddle = IsComplex<T> ? 2 : 4;
  static constexpr std::size_t kTaps = IsComplex<T> && HWY_TARGET > HWY_AVX3 ? 2 : 4;
};

// What is known of a filter's chains beforehand: every class has one chain of 4 or of 8 terms; one chain; several.
enum class ChainKind { kFour, kEight, kSingle, kSegmented };

// The outputs of one tile: kRows vectors, kStep elements apart, for which taps kLanes elements apart meet in the same
// loads. Where the hardware vector is narrower than kLanes, the tile is repeated for what lies between.
template <Element T, std::size_t kLanes, std::size_t kRows>
struct Tile {
  using R = RealOf<T>;
  using D = hn::ScalableTag<R>;
  using V = hn::Vec<D>;
  static constexpr std::size_t kWidth = hn::MaxLanes(D());
  static constexpr std::size_t kStep = kLanes > kWidth ? kLanes : kWidth;
  static constexpr std::size_t kParts = IsComplex<T> ? 2 : 1;
  static constexpr std::size_t kGroups = 4 / kParts;
  static constexpr std::size_t kClasses = kLanes / kParts;
  static constexpr std::size_t kShare = kStep / kLanes;
  static constexpr std::size_t kOutputs = kRows * kStep;
  static constexpr bool kFewRegisters = HWY_TARGET > HWY_AVX3;
  using Sums = V[kParts][kRows];

  // Adds kTaps terms to each sum (or starts them): sums[r] += taps[q] x[q kLanes + r kStep], q ascending.
  template <std::size_t kTaps, bool kStart>
  static HWY_INLINE void Terms(const R* HWY_RESTRICT x, const R* HWY_RESTRICT const (&taps)[kParts], std::size_t first,
                               Sums& sums) {
    const D d;
    x = Unrelated(x + first * kLanes);
    V h[kParts][kTaps];
    HWY_UNROLL(2)
    for (std::size_t p = 0; p < kParts; ++p) {
      HWY_UNROLL(8)
      for (std::size_t q = 0; q < kTaps; ++q) h[p][q] = hn::Set(d, taps[p][first + q]);
    }
    HWY_UNROLL(32)
    for (std::size_t k = 0; k < (kRows - 1) * kShare + kTaps; ++k) {
      const V v = Pinned(hn::LoadU(d, x + k * kLanes));
      HWY_UNROLL(8)
      for (std::size_t q = 0; q < kTaps; ++q) {
        if (q > k || (k - q) % kShare != 0 || (k - q) / kShare >= kRows) continue;
        const std::size_t r = (k - q) / kShare;
        HWY_UNROLL(2)
        for (std::size_t p = 0; p < kParts; ++p) {
          sums[p][r] = kStart && q == 0 ? hn::Mul(v, h[p][0]) : hn::MulAdd(v, h[p][q], sums[p][r]);
        }
      }
    }
  }

  // All sums start from -0, which adds nothing: p + -0 = p for every p.
  static HWY_INLINE void Clear(Sums& sums) {
    HWY_UNROLL(2)
    for (std::size_t p = 0; p < kParts; ++p) {
      HWY_UNROLL(8)
      for (std::size_t r = 0; r < kRows; ++r) sums[p][r] = hn::Set(D(), -R{0});
    }
  }
  static HWY_INLINE void Accumulate(const Sums& terms, Sums& sums) {
    HWY_UNROLL(2)
    for (std::size_t p = 0; p < kParts; ++p) {
      HWY_UNROLL(8)
      for (std::size_t r = 0; r < kRows; ++r) sums[p][r] = hn::Add(sums[p][r], terms[p][r]);
    }
  }

  // One chain of `length` terms.
  static HWY_INLINE void Chain(const R* HWY_RESTRICT x, const R* HWY_RESTRICT const (&taps)[kParts], std::size_t length,
                               Sums& sums) {
    constexpr std::size_t kTaps = TileSize<T>::kTaps;
    Clear(sums);
    std::size_t done = length % kTaps;
    if (done == 1) Terms<1, false>(x, taps, 0, sums);
    if constexpr (kTaps == 4) {
      if (done == 2) Terms<2, false>(x, taps, 0, sums);
      if (done == 3) Terms<3, false>(x, taps, 0, sums);
    }
    for (; done < length; done += kTaps) Terms<kTaps, false>(x, taps, done, sums);
  }

  template <ChainKind kKind>
  static HWY_INLINE void Class(const FirTaps<T, kLanes>& g, const R* HWY_RESTRICT x, std::size_t c, Sums& sums) {
    const R* HWY_RESTRICT taps[kParts];
    for (std::size_t p = 0; p < kParts; ++p) taps[p] = g.Chain(p, c);
    x += c * kParts;
    if constexpr (kKind == ChainKind::kFour || kKind == ChainKind::kEight) {
      Terms<kKind == ChainKind::kFour ? 4 : 8, true>(x, taps, 0, sums);
    } else if constexpr (kKind == ChainKind::kSingle) {
      Chain(x, taps, g.LastLength(c), sums);
    } else {
      Clear(sums);
      for (std::size_t a = 0; a < g.segments; ++a) {
        Park<kFewRegisters>(sums);
        Sums chain;
        Chain(x, taps, a + 1 < g.segments ? g.segment_chunks : g.LastLength(c), chain);
        Accumulate(chain, sums);
        x += g.segment_chunks * kLanes;
        for (std::size_t p = 0; p < kParts; ++p) taps[p] += g.segment_chunks;
      }
    }
  }

  template <ChainKind kKind>
  static HWY_INLINE void Run(const FirTaps<T, kLanes>& g, const R* HWY_RESTRICT x, R* HWY_RESTRICT y) {
    constexpr bool kLong = kKind == ChainKind::kSegmented;
    const D d;
    for (std::size_t t = 0; t < kStep; t += kWidth) {
      Sums total;
      Clear(total);
      for (std::size_t i = 0; i < kGroups; ++i) {
        Park<kFewRegisters || kLong>(total);
        Sums group;
        Clear(group);
        for (std::size_t c = i; c < kClasses; c += kGroups) {
          Park<kFewRegisters>(group);
          Sums sums;
          Class<kKind>(g, x + t, c, sums);
          Accumulate(sums, group);
        }
        Accumulate(group, total);
      }
      HWY_UNROLL(8)
      for (std::size_t r = 0; r < kRows; ++r) {
        if constexpr (kParts == 2) total[0][r] = JoinParts(total[0][r], total[1][r]);
        hn::StoreU(total[0][r], d, y + r * kStep + t);
      }
    }
  }
};

// Computes `count` > 0 outputs (lanes) from the window x of the first one. Reads up to kStep - 1 lanes beyond the last
// window, writes y[0 .. count - 1] only.
template <Element T, std::size_t kLanes, ChainKind kKind>
void Block(const FirTaps<T, kLanes>& g, const RealOf<T>* x, RealOf<T>* y, std::size_t count) {
  using Large = Tile<T, kLanes, TileSize<T>::kLarge>;
  using Middle = Tile<T, kLanes, TileSize<T>::kMiddle>;
  using Single = Tile<T, kLanes, 1>;
  constexpr std::size_t kStep = Single::kStep;
  std::size_t n = 0;
  for (; count - n >= Large::kOutputs; n += Large::kOutputs) Large::template Run<kKind>(g, x + n, y + n);
  if (count - n >= Middle::kOutputs) {
    Middle::template Run<kKind>(g, x + n, y + n);
    n += Middle::kOutputs;
  }
  while (n < count) {
    RealOf<T> last[kStep];
    const std::size_t left = std::min(kStep, count - n);
    Single::template Run<kKind>(g, x + n, left == kStep ? y + n : last);
    if (left < kStep) std::copy_n(last, left, y + n);
    n += left;
  }
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
