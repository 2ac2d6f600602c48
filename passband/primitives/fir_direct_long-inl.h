// The direct filter of more than kMaxShortFir taps: history and block lie in one linear buffer.
#if defined(PASSBAND_PRIMITIVES_FIR_DIRECT_LONG_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_FIR_DIRECT_LONG_INL_H_
#undef PASSBAND_PRIMITIVES_FIR_DIRECT_LONG_INL_H_
#else
#define PASSBAND_PRIMITIVES_FIR_DIRECT_LONG_INL_H_
#endif

#include <cstring>

#include "passband/primitives/fir_direct_block-inl.h"
#include "passband/primitives/fir_state_internal.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

// One output from its window w: virtual lanes in vectors of at most kCap lanes, one accumulator for each segment.
template <Element T, std::size_t kLanes, std::size_t kCap = kLanes>
struct Sample {
  using R = RealOf<T>;
  using D = hn::CappedTag<R, kCap>;
  using V = hn::Vec<D>;
  static constexpr std::size_t kWidth = hn::MaxLanes(D());
  static constexpr std::size_t kVectors = kLanes / kWidth;
  static constexpr std::size_t kParts = IsComplex<T> ? 2 : 1;
  using Sums = V[kParts][kVectors];

  using Chunks = V[2][kVectors];  // the two newest chunks of a window, lanes beyond it 0

  // Adds a chunk to the sums of its segment, or starts them with it.
  template <bool kStart>
  static HWY_INLINE void Add(const FirTaps<T, kLanes>& g, const V (&x)[kVectors], std::size_t q, Sums& sums) {
    const D d;
    HWY_UNROLL(8)
    for (std::size_t v = 0; v < kVectors; ++v) {
      HWY_UNROLL(2)
      for (std::size_t p = 0; p < kParts; ++p) {
        const V h = hn::Load(d, g.rows[p].Data() + q * kLanes + v * kWidth);
        sums[p][v] = kStart ? hn::Mul(x[v], h) : hn::MulAdd(x[v], h, sums[p][v]);
      }
    }
  }
  template <bool kStart>
  static HWY_INLINE void Add(const FirTaps<T, kLanes>& g, const R* HWY_RESTRICT w, std::size_t q, Sums& sums) {
    V x[kVectors];
    HWY_UNROLL(8)
    for (std::size_t v = 0; v < kVectors; ++v) x[v] = hn::LoadU(D(), w + q * kLanes + v * kWidth);
    Add<kStart>(g, x, q, sums);
  }

  // Reads the newest chunks from a window in memory.
  static HWY_INLINE void Read(const FirTaps<T, kLanes>& g, const R* HWY_RESTRICT w, Chunks& newest) {
    const D d;
    w += (g.chunks - 2) * kLanes;
    HWY_UNROLL(8)
    for (std::size_t v = 0; v < kVectors; ++v) {
      newest[0][v] = hn::LoadU(d, w + v * kWidth);
      newest[1][v] = hn::And(hn::LoadU(d, w + kLanes + v * kWidth), hn::Load(d, g.last_mask.Data() + v * kWidth));
    }
  }

  static HWY_INLINE void Write(const Chunks& newest, R* HWY_RESTRICT line) {
    HWY_UNROLL(16)
    for (std::size_t k = 0; k < 2 * kVectors; ++k) {
      hn::Store(newest[k / kVectors][k % kVectors], D(), line + k * kWidth);
    }
  }

  // Moves the newest chunks, kept in `line`, on by one element and puts x in.
  static HWY_INLINE void Shift(const FirTaps<T, kLanes>& g, T x, R* HWY_RESTRICT line, Chunks& newest) {
    const D d;
    V rotated[2 * kVectors + 1];
    rotated[2 * kVectors] = hn::Zero(d);
    HWY_UNROLL(16)
    for (std::size_t k = 0; k < 2 * kVectors; ++k) rotated[k] = Rotate(hn::Load(d, line + k * kWidth));
    HWY_UNROLL(16)
    for (std::size_t k = 0; k < 2 * kVectors; ++k) {
      V v = rotated[k + 1];
      if constexpr (kWidth > kParts) v = hn::IfThenElse(hn::FirstN(d, kWidth - kParts), rotated[k], v);
      if (k >= kVectors) {
        const std::size_t lane = (k - kVectors) * kWidth;
        const V at = hn::Load(d, g.newest_mask.Data() + lane);
        v = hn::And(v, hn::Load(d, g.last_mask.Data() + lane));
        v = hn::IfThenElse(hn::MaskFromVec(at), Fill(x), v);
      }
      hn::Store(v, d, line + k * kWidth);
      newest[k / kVectors][k % kVectors] = v;
    }
  }
  // Each lane takes the next element's; the first element comes last.
  static HWY_INLINE V Rotate(V v) {
    if constexpr (kWidth <= kParts) {
      return v;
    } else {
      const D d;
      using Index = hwy::MakeSigned<R>;
      HWY_ALIGN Index lanes[kWidth];
      for (std::size_t i = 0; i < kWidth; ++i) lanes[i] = static_cast<Index>((i + kParts) % kWidth);
      return hn::TableLookupLanes(v, hn::SetTableIndices(d, lanes));
    }
  }
  static HWY_INLINE V Fill(T x) {
    if constexpr (kParts == 2) {
      return hn::OddEven(hn::Set(D(), x.Im), hn::Set(D(), x.Re));
    } else {
      return hn::Set(D(), x);
    }
  }

  // The four lanes of the groups, added up in order, to the sum of each part.
  static HWY_INLINE void Reduce(const Sums& classes, R (&sums)[kParts][kParts]) {
    const hn::CappedTag < R, kWidth<4 ? kWidth : 4> d4;
    HWY_ALIGN R lanes[kParts][4];
    for (std::size_t p = 0; p < kParts; ++p) {
      if constexpr (kWidth >= 4) {
        auto groups = Quarters(classes[p][0]);
        HWY_UNROLL(4)
        for (std::size_t v = 1; v < kVectors; ++v) groups = AddQuarters(groups, classes[p][v]);
        hn::Store(groups, d4, lanes[p]);
      } else {
        HWY_UNROLL(4)
        for (std::size_t part = 0; part < 4 / kWidth; ++part) {
          auto groups = classes[p][part];
          HWY_UNROLL(8)
          for (std::size_t v = part + 4 / kWidth; v < kVectors; v += 4 / kWidth)
            groups = hn::Add(groups, classes[p][v]);
          hn::Store(groups, d4, lanes[p] + part * kWidth);
        }
      }
      if constexpr (kParts == 1) {
        sums[0][0] = ((lanes[0][0] + lanes[0][1]) + lanes[0][2]) + lanes[0][3];
      } else {
        sums[p][0] = lanes[p][0] + lanes[p][2];
        sums[p][1] = lanes[p][1] + lanes[p][3];
      }
    }
  }

  template <class Wide>
  static HWY_INLINE auto Quarters(Wide v) {
    const hn::DFromV<Wide> d;
    if constexpr (hn::MaxLanes(d) == 4) {
      return v;
    } else {
      const hn::Half<decltype(d)> half;
      return AddQuarters(Quarters(hn::LowerHalf(half, v)), hn::UpperHalf(half, v));
    }
  }
  // ((groups + first quarter) + second quarter) + ...
  template <class Narrow, class Wide>
  static HWY_INLINE Narrow AddQuarters(Narrow groups, Wide v) {
    const hn::DFromV<Wide> d;
    if constexpr (hn::MaxLanes(d) == 4) {
      return hn::Add(groups, v);
    } else {
      const hn::Half<decltype(d)> half;
      return AddQuarters(AddQuarters(groups, hn::LowerHalf(half, v)), hn::UpperHalf(half, v));
    }
  }

  static HWY_INLINE void Accumulate(const Sums& terms, Sums& sums) {
    HWY_UNROLL(2)
    for (std::size_t p = 0; p < kParts; ++p) {
      HWY_UNROLL(8)
      for (std::size_t v = 0; v < kVectors; ++v) sums[p][v] = hn::Add(sums[p][v], terms[p][v]);
    }
  }

  static HWY_INLINE T Finish(const Sums& classes) {
    R sums[kParts][kParts];
    Reduce(classes, sums);
    if constexpr (kParts == 2) {
      return T(sums[0][0] - sums[1][1], sums[0][1] + sums[1][0]);
    } else {
      return sums[0][0];
    }
  }

  template <std::size_t kSegments>
  static HWY_INLINE T Run(const FirTaps<T, kLanes>& g, const R* HWY_RESTRICT w, const Chunks& newest) {
    const std::size_t step = g.segment_chunks;
    const std::size_t last = g.last_chunks - 2;  // at least 1: only filters of more than two chunks come here
    Sums sums[kSegments];
    HWY_UNROLL(4)
    for (std::size_t a = 0; a < kSegments; ++a) Add<true>(g, w, a * step, sums[a]);
    std::size_t q = 1;
    for (; q < last; ++q) {
      HWY_UNROLL(4)
      for (std::size_t a = 0; a < kSegments; ++a) Add<false>(g, w, a * step + q, sums[a]);
    }
    for (; kSegments > 1 && q < step; ++q) {
      HWY_UNROLL(4)
      for (std::size_t a = 0; a + 1 < kSegments; ++a) Add<false>(g, w, a * step + q, sums[a]);
    }
    Add<false>(g, newest[0], g.chunks - 2, sums[kSegments - 1]);
    Add<false>(g, newest[1], g.chunks - 1, sums[kSegments - 1]);
    HWY_UNROLL(4)
    for (std::size_t a = 1; a < kSegments; ++a) Accumulate(sums[a], sums[0]);
    return Finish(sums[0]);
  }
};

template <Element T, std::size_t kLanes>
class LongFir final : public FirStateOf<T> {
  using R = RealOf<T>;
  static constexpr std::size_t kParts = IsComplex<T> ? 2 : 1;
  static constexpr std::size_t kSlack = 64;  // lanes read beyond the newest sample and not used

 public:
  LongFir(const T* h, std::size_t taps)
      : g_(h, taps),
        history_(kParts * (taps - 1)),
        capacity_(history_ + Stretch(history_)),
        line_(capacity_ + kSlack),
        newest_(history_),
        recent_(2 * kLanes),
        block_(ChooseBlock(g_)) {}

  void Filter(const T* src, T* dst, std::int32_t count) noexcept override {
    if (count <= kOneByOne) {
      for (std::int32_t n = 0; n < count; ++n) dst[n] = LongFir::One(src[n]);
      return;
    }
    recent_valid_ = false;
    const R* x = reinterpret_cast<const R*>(src);
    R* y = reinterpret_cast<R*>(dst);
    for (std::size_t left = kParts * static_cast<std::size_t>(count); left > 0;) {
      const std::size_t piece = std::min(left, capacity_ - history_);
      R* const next = Append(piece);
      std::memcpy(next, x, piece * sizeof(R));
      block_(g_, next - history_, y, piece);
      x += piece;
      y += piece;
      left -= piece;
    }
  }

  T One(T x) noexcept override {
    R* const next = Append(kParts);
    std::memcpy(next, &x, sizeof(T));
    const R* const window = next - history_;
    using Sum = Sample<T, kLanes>;
    typename Sum::Chunks newest;
    if (recent_valid_) {
      Sum::Shift(g_, x, recent_.Data(), newest);
    } else {
      Sum::Read(g_, window, newest);
      Sum::Write(newest, recent_.Data());
      recent_valid_ = true;
    }
    if (g_.segments == 1) return Sum::template Run<1>(g_, window, newest);
    if (g_.segments == 2) return Sum::template Run<2>(g_, window, newest);
    return Sum::template Run<4>(g_, window, newest);
  }

 private:
  using BlockKernel = void (*)(const FirTaps<T, kLanes>&, const R*, R*, std::size_t);
  static constexpr std::int32_t kOneByOne = 3;

  // Room for new samples before the history moves back: so much that moving costs little, and never a multiple of 4096
  // bytes, at which loads and earlier stores look alike to the processor.
  static std::size_t Stretch(std::size_t history) {
    const std::size_t bytes = std::max<std::size_t>(8192, 2 * history * sizeof(R));
    return ((bytes + 4095) / 4096 * 4096 + 256) / sizeof(R);
  }

  static BlockKernel ChooseBlock(const FirTaps<T, kLanes>& g) {
    if (g.full_classes == FirTaps<T, kLanes>::kClasses) {
      if (g.chunks == 4) return &Block<T, kLanes, ChainKind::kFour>;
      if (g.chunks == 8) return &Block<T, kLanes, ChainKind::kEight>;
    }
    return g.segments == 1 ? &Block<T, kLanes, ChainKind::kSingle> : &Block<T, kLanes, ChainKind::kSegmented>;
  }

  // Makes room for `lanes` more behind the newest sample and returns where they go.
  R* Append(std::size_t lanes) {
    if (newest_ + lanes > capacity_) {
      std::memmove(line_.Data(), line_.Data() + newest_ - history_, history_ * sizeof(R));
      newest_ = history_;
    }
    R* const next = line_.Data() + newest_;
    newest_ += lanes;
    return next;
  }

  FirTaps<T, kLanes> g_;
  std::size_t history_;   // lanes of the taps - 1 samples before the next one
  std::size_t capacity_;  // lanes of the line
  detail::AlignedArray<R> line_;
  std::size_t newest_;  // the next sample's place in the line
  // The newest chunks of the last window, once more: a vector load that spans single samples just stored would have to
  // wait for them to leave the store queue, one call after the other. Valid while samples come one by one.
  detail::AlignedArray<R> recent_;
  bool recent_valid_ = false;
  BlockKernel block_;
};

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
