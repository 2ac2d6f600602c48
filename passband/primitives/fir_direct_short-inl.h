// The direct filter of up to kMaxShortFir taps, one instance for each number: all taps in registers, blocks read from
// the caller's memory, single samples shifted through the delay line in registers.
#if defined(PASSBAND_PRIMITIVES_FIR_DIRECT_SHORT_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_FIR_DIRECT_SHORT_INL_H_
#undef PASSBAND_PRIMITIVES_FIR_DIRECT_SHORT_INL_H_
#else
#define PASSBAND_PRIMITIVES_FIR_DIRECT_SHORT_INL_H_
#endif

#include <cstring>
#include <utility>

#include "passband/primitives/fir_direct_long-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

// What follows from element type and number of taps.
template <Element T, std::size_t kTaps>
struct ShortSizes {
  using R = RealOf<T>;
  static constexpr std::size_t kParts = IsComplex<T> ? 2 : 1;
  static constexpr std::size_t kLanes = detail::FirLanes<T>(kTaps);
  static constexpr std::size_t kWidth = hn::MaxLanes(hn::ScalableTag<R>());
  static constexpr std::size_t kBlock = 16 / sizeof(R);  // lanes of the blocks within which vectors can be shifted
  static constexpr std::size_t kHistory = kParts * (kTaps - 1);
  static constexpr std::size_t kChunks = detail::CeilDiv(kParts * kTaps, kLanes);
};

// A vector of outputs, one in each lane, all taps in registers.
template <Element T, std::size_t kTaps>
class ShortKernel : ShortSizes<T, kTaps> {
  using Sizes = ShortSizes<T, kTaps>;
  using R = RealOf<T>;
  using D = hn::ScalableTag<R>;
  using V = hn::Vec<D>;
  using Sizes::kBlock;
  using Sizes::kParts;
  static constexpr std::size_t kGroups = 4 / kParts;
  static constexpr std::size_t kClasses = 4;
  static constexpr std::size_t kLoads = detail::CeilDiv(Sizes::kHistory, kBlock) + 1;

 public:
  explicit HWY_INLINE ShortKernel(const FirTaps<T, Sizes::kLanes>& g) {
    HWY_UNROLL(2)
    for (std::size_t p = 0; p < kParts; ++p) {
      HWY_UNROLL(16)
      for (std::size_t j = 0; j < kTaps; ++j) taps_[p][j] = hn::Set(D(), g.rows[p].Data()[j * kParts]);
    }
  }

  // `newest` is the newest sample of the first output. Reads whole blocks back from there, hence up to kBlock - 1 lanes
  // older than the window.
  HWY_INLINE V operator()(const R* newest) const {
    V blocks[kLoads];
    HWY_UNROLL(18)
    for (std::size_t m = 0; m < kLoads; ++m) blocks[m] = Pinned(hn::LoadU(D(), newest - m * kBlock));
    V sums[kParts][kClasses];
    Terms(blocks, sums, std::make_index_sequence<kTaps>());
    V y[kParts];
    HWY_UNROLL(2)
    for (std::size_t p = 0; p < kParts; ++p) {
      HWY_UNROLL(4)
      for (std::size_t i = 0; i < kGroups && i < kTaps; ++i) {
        if (i + kGroups < kClasses && i + kGroups < kTaps) sums[p][i] = hn::Add(sums[p][i], sums[p][i + kGroups]);
        y[p] = i == 0 ? sums[p][0] : hn::Add(y[p], sums[p][i]);
      }
    }
    if constexpr (kParts == 2) {
      return JoinParts(y[0], y[1]);
    } else {
      return y[0];
    }
  }

 private:
  template <std::size_t... kJ>
  HWY_INLINE void Terms(const V (&blocks)[kLoads], V (&sums)[kParts][kClasses], std::index_sequence<kJ...>) const {
    (Term<kJ>(blocks, sums), ...);
  }
  template <std::size_t kJ>
  HWY_INLINE void Term(const V (&blocks)[kLoads], V (&sums)[kParts][kClasses]) const {
    constexpr std::size_t kAge = kParts * (kTaps - 1 - kJ);
    constexpr std::size_t kLoad = detail::CeilDiv(kAge, kBlock);
    constexpr std::size_t kShift = kLoad * kBlock - kAge;
    V x = blocks[kLoad];
    if constexpr (kShift != 0) x = hn::CombineShiftRightBytes<kShift * sizeof(R)>(D(), blocks[kLoad - 1], x);
    HWY_UNROLL(2)
    for (std::size_t p = 0; p < kParts; ++p) {
      V& sum = sums[p][kJ % kClasses];
      if constexpr (kJ < kClasses) {
        sum = hn::Mul(x, taps_[p][kJ]);
      } else {
        sum = hn::MulAdd(x, taps_[p][kJ], sum);
      }
    }
  }

  V taps_[kParts][kTaps];
};

template <Element T, std::size_t kTaps>
class ShortFir final : public FirStateOf<T>, ShortSizes<T, kTaps> {
  using Sizes = ShortSizes<T, kTaps>;
  using R = RealOf<T>;
  using Kernel = ShortKernel<T, kTaps>;
  using Sizes::kBlock;
  using Sizes::kHistory;
  using Sizes::kLanes;
  using Sizes::kParts;
  using Sizes::kWidth;
  // Outputs whose windows reach back before the block, rounded up to whole vectors.
  static constexpr std::size_t kStitched = detail::CeilDiv(kHistory + kBlock - 1, kWidth) * kWidth;
  static constexpr std::size_t kShortest = kStitched + kWidth;  // lanes from which a block is read in place

 public:
  explicit ShortFir(const T* h) : g_(h, kTaps) {}

  void Filter(const T* src, T* dst, std::int32_t count) noexcept override {
    const std::size_t lanes = kParts * static_cast<std::size_t>(count);
    const R* x = reinterpret_cast<const R*>(src);
    R* y = reinterpret_cast<R*>(dst);
    if (lanes >= kShortest) return FilterInPlace(x, y, lanes);
    if (count > 2) return FilterCopied(x, y, lanes);
    for (std::int32_t n = 0; n < count; ++n) dst[n] = ShortFir::One(src[n]);
  }

  T One(T x) noexcept override {
    using Sum = Sample<T, kLanes, kBlock>;
    typename Sum::Sums sums;
    Shift(reinterpret_cast<const R*>(&x), sums);
    return Sum::Finish(sums);
  }

 private:
  // From the last output back to the first, so that dst may be src: no output is written before the last window that
  // holds its place has been read. The vectors that start at kStitched and at 0 are computed first and stored last: the
  // one overlaps its successor, the others need the history.
  void FilterInPlace(const R* x, R* y, std::size_t lanes) {
    const hn::ScalableTag<R> d;
    const Kernel kernel(g_);
    R* const history = Newest();
    std::memcpy(history, x, kStitched * sizeof(R));
    hn::Vec<decltype(d)> first[kStitched / kWidth + 1];
    const auto lowest = kernel(x + kStitched);
    HWY_UNROLL(16)
    for (std::size_t k = 0; k < kStitched / kWidth; ++k) first[k] = kernel(history + k * kWidth);
    std::memcpy(history - kHistory, x + lanes - kHistory, kHistory * sizeof(R));
    for (std::size_t n = lanes - kWidth; n > kStitched; n -= std::min(kWidth, n - kStitched)) {
      hn::StoreU(kernel(x + n), d, y + n);
    }
    hn::StoreU(lowest, d, y + kStitched);
    HWY_UNROLL(16)
    for (std::size_t k = 0; k < kStitched / kWidth; ++k) hn::StoreU(first[k], d, y + k * kWidth);
  }

  // For short blocks: through the line, the last vector stored in part.
  void FilterCopied(const R* x, R* y, std::size_t lanes) {
    const hn::ScalableTag<R> d;
    const Kernel kernel(g_);
    R* const newest = Newest();
    std::copy_n(x, lanes, newest);
    HWY_ALIGN R last[kWidth];
    std::size_t n = 0;
    for (; lanes - n >= kWidth; n += kWidth) hn::StoreU(kernel(newest + n), d, y + n);
    if (n < lanes) {
      hn::Store(kernel(newest + n), d, last);
      std::copy_n(last, lanes - n, y + n);
    }
    std::memmove(newest - kHistory, newest + lanes - kHistory, kHistory * sizeof(R));
  }

  // Moves the window on by one sample and starts the classes' sums.
  HWY_INLINE void Shift(const R* x, typename Sample<T, kLanes, kBlock>::Sums& sums) {
    using Sum = Sample<T, kLanes, kBlock>;
    const typename Sum::D d;
    constexpr std::size_t kVectors = Sizes::kChunks * Sum::kVectors;
    R* const window = line_ + kPad;
    typename Sum::V w[kVectors + 1];
    HWY_UNROLL(17)
    for (std::size_t k = 0; k < kVectors; ++k) w[k] = hn::Load(d, window + k * kBlock);
    w[kVectors] = hn::Zero(d);
    HWY_UNROLL(17)
    for (std::size_t k = 0; k < kVectors; ++k) {
      if constexpr (kParts < kBlock) {
        w[k] = hn::CombineShiftRightBytes<kParts * sizeof(R)>(d, w[k + 1], w[k]);
      } else {
        w[k] = w[k + 1];
      }
      if (k == kHistory / kBlock) {
        const auto old = hn::FirstN(d, kHistory % kBlock);
        const auto all = hn::FirstN(d, kHistory % kBlock + kParts);
        w[k] = hn::IfThenElseZero(all, hn::IfThenElse(old, w[k], Newest(d, x)));
      } else if (k > kHistory / kBlock) {
        w[k] = hn::Zero(d);
      }
      hn::Store(w[k], d, window + k * kBlock);
      HWY_UNROLL(2)
      for (std::size_t p = 0; p < kParts; ++p) {
        const auto h = hn::Load(d, g_.rows[p].Data() + k * kBlock);
        auto& sum = sums[p][k % Sum::kVectors];
        sum = k < Sum::kVectors ? hn::Mul(w[k], h) : hn::MulAdd(w[k], h, sum);
      }
    }
  }
  template <class D>
  static HWY_INLINE hn::Vec<D> Newest(D d, const R* x) {
    if constexpr (kParts == 1) {
      return hn::Set(d, *x);
    } else {
      return hn::OddEven(hn::Set(d, x[1]), hn::Set(d, x[0]));
    }
  }

  R* Newest() { return line_ + kPad + kParts * kTaps; }

  static constexpr std::size_t kPad = 64 / sizeof(R);
  FirTaps<T, kLanes> g_;
  // The window of the last output from kPad on, its oldest sample first; then room for the start of a block.
  alignas(64) R line_[kPad + kParts * kTaps + kShortest + 2 * kWidth + kLanes] = {};
};

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
