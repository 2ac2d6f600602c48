// The inner loops of the multi-rate FIR filter for all instruction sets.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "passband/primitives/fir_multirate_internal.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/fir_multirate_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;
using detail::BankGroup;
using detail::BankSegment;
using detail::BankTables;
using detail::DotsBatch;
using detail::kChains;
using detail::kDotsBatch;
using detail::kParts;
using detail::Row;

// Small fixed loops are unrolled, or their arrays would stay in memory; but instrumented code would grow far too long.
constexpr int kUnroll = HWY_IS_ASAN || HWY_IS_MSAN || HWY_IS_TSAN || HWY_TARGET == HWY_SCALAR ? 1 : 8;

// The hardware's view of a row: kVectors vectors of kLanes lanes.
template <class T>
struct Layout {
  using R = RealOf<T>;
  using D = hn::CappedTag<R, detail::kRowBytes / sizeof(R)>;
  using V = hn::Vec<D>;
  static constexpr std::size_t kRowLanes = detail::kRowBytes / sizeof(R);
  static constexpr std::size_t kLanes = hn::MaxLanes(D());
  static constexpr std::size_t kVectors = kRowLanes / kLanes;
};

// `steps` steps of kPass chains in kCycles cycles; the pointers are those of the first chain of the pass.
template <class T, bool kMasked, std::size_t kCycles, std::size_t kPass>
HWY_INLINE void BankSteps(const RealOf<T>* HWY_RESTRICT taps, const RealOf<T>* HWY_RESTRICT masks,
                          const RealOf<T>* HWY_RESTRICT x, std::size_t x_stride, std::size_t steps,
                          typename Layout<T>::V (&chain)[kPass][kCycles]) {
  using L = Layout<T>;
  const typename L::D d;
  for (std::size_t n = 0; n < steps; n += kChains) {
    HWY_UNROLL(kUnroll)
    for (std::size_t c = 0; c < kPass; ++c) {
      [[maybe_unused]] auto mask = hn::Zero(d);
      if constexpr (kMasked) mask = hn::Load(d, masks + (n + c) * L::kRowLanes);
      HWY_UNROLL(kUnroll)
      for (std::size_t part = 0; part < kParts<T>; ++part) {
        const auto tap = hn::Load(d, taps + ((n + c) * kParts<T> + part) * L::kRowLanes);
        HWY_UNROLL(kUnroll)
        for (std::size_t k = 0; k < kCycles; ++k) {
          auto input = hn::Set(d, x[k * x_stride + (n + c) * kParts<T> + part]);
          if constexpr (kMasked) input = hn::And(input, mask);
          chain[c][k] = hn::MulAdd(tap, input, chain[c][k]);
        }
      }
    }
  }
}

// Adds kPass neighbouring chains of a segment to the total: chains 0 and 1 together, then 2 and 3 together.
template <class T, std::size_t kCycles, std::size_t kPass>
HWY_INLINE void AddSegment(const BankSegment& segment, const RealOf<T>* taps, const RealOf<T>* masks,
                           const RealOf<T>* x, std::size_t x_stride, typename Layout<T>::V (&total)[kCycles]) {
  using L = Layout<T>;
  const typename L::D d;
  typename L::V chain[kPass][kCycles];
  HWY_UNROLL(kUnroll)
  for (std::size_t c = 0; c < kPass; ++c) {
    HWY_UNROLL(kUnroll)
    for (std::size_t k = 0; k < kCycles; ++k) chain[c][k] = hn::Zero(d);
  }
  BankSteps<T, true, kCycles, kPass>(taps, masks, x, x_stride, segment.head, chain);
  taps += segment.head * kParts<T> * L::kRowLanes;
  masks += segment.head * L::kRowLanes;
  x += segment.head * kParts<T>;
  BankSteps<T, false, kCycles, kPass>(taps, nullptr, x, x_stride, segment.full, chain);
  taps += segment.full * kParts<T> * L::kRowLanes;
  x += segment.full * kParts<T>;
  BankSteps<T, true, kCycles, kPass>(taps, masks, x, x_stride, segment.tail, chain);
  HWY_UNROLL(kUnroll)
  for (std::size_t c = 0; c < kPass; c += 2) {
    HWY_UNROLL(kUnroll)
    for (std::size_t k = 0; k < kCycles; ++k) total[k] = hn::Add(total[k], hn::Add(chain[c][k], chain[c + 1][k]));
  }
}

// One vector of a group in kCycles cycles at once, which share the taps they load.
template <class T, std::size_t kCycles>
HWY_INLINE void BankVector(const BankTables<T>& bank, const BankGroup& group, const T* cycle, std::size_t vector,
                           typename Layout<T>::V (&total)[kCycles]) {
  using L = Layout<T>;
  using R = RealOf<T>;
  constexpr std::size_t kPass = HWY_TARGET == HWY_AVX3 ? kChains : kChains / 2;  // by the number of registers
  const std::size_t x_stride = static_cast<std::size_t>(bank.inputs) * kParts<T>;
  const R* taps = reinterpret_cast<const R*>(bank.taps.data() + group.tap_row) + vector * L::kLanes;
  const R* masks = reinterpret_cast<const R*>(bank.masks.data() + group.mask_row) + vector * L::kLanes;
  const R* x = reinterpret_cast<const R*>(cycle + group.first_input);
  HWY_UNROLL(kUnroll)
  for (std::size_t k = 0; k < kCycles; ++k) total[k] = hn::Zero(typename L::D());
  for (std::size_t s = group.first_segment; s < group.last_segment; ++s) {
    const BankSegment segment = bank.segments[s];
    for (std::size_t first = 0; first < kChains; first += kPass) {
      AddSegment<T, kCycles, kPass>(segment, taps + first * kParts<T> * L::kRowLanes, masks + first * L::kRowLanes,
                                    x + first * kParts<T>, x_stride, total);
    }
    const std::size_t steps = segment.head + segment.full + segment.tail;
    taps += steps * kParts<T> * L::kRowLanes;
    masks += (segment.head + segment.tail) * L::kRowLanes;
    x += steps * kParts<T>;
  }
}

template <class T, std::size_t kCycles>
HWY_NOINLINE void BankCycles(const BankTables<T>& bank, const BankGroup& group, const T* x, T* y) {
  using L = Layout<T>;
  using R = RealOf<T>;
  const typename L::D d;
  const bool whole = group.lanes == Row<T>::kElements;
  const std::int64_t y_stride = bank.outputs;
  alignas(detail::kRowBytes) R out[kCycles][L::kRowLanes];
  for (std::size_t v = 0; v < L::kVectors; ++v) {
    typename L::V total[kCycles];
    BankVector<T, kCycles>(bank, group, x, v, total);
    HWY_UNROLL(kUnroll)
    for (std::size_t k = 0; k < kCycles; ++k) {
      R* const to = whole ? reinterpret_cast<R*>(y + static_cast<std::int64_t>(k) * y_stride) : out[k];
      hn::StoreU(total[k], d, to + v * L::kLanes);
    }
  }
  if (whole) return;
  for (std::size_t k = 0; k < kCycles; ++k) {
    std::copy_n(out[k], group.lanes * kParts<T>, reinterpret_cast<R*>(y + static_cast<std::int64_t>(k) * y_stride));
  }
}

template <class T>
void Bank(const BankTables<T>& bank, const BankGroup& group, const T* x, T* y, std::size_t cycles) {
  constexpr std::size_t kTogether = 4;
  for (; cycles >= kTogether; cycles -= kTogether) {
    BankCycles<T, kTogether>(bank, group, x, y);
    x += kTogether * static_cast<std::size_t>(bank.inputs);
    y += kTogether * static_cast<std::size_t>(bank.outputs);
  }
  for (; cycles > 0; --cycles) {
    BankCycles<T, 1>(bank, group, x, y);
    x += bank.inputs;
    y += bank.outputs;
  }
}

// Adds the upper half of a vector to the lower one down to 16 bytes.
template <class D, class V>
HWY_INLINE void FoldTo16Bytes(D d, V v, hn::TFromD<D>* HWY_RESTRICT to) {
#if HWY_TARGET != HWY_SCALAR  // which has no halves
  if constexpr (hn::MaxLanes(d) * sizeof(hn::TFromD<D>) > 16) {
    const hn::Half<D> half;
    FoldTo16Bytes(half, hn::Add(hn::LowerHalf(half, v), hn::UpperHalf(half, v)), to);
    return;
  }
#endif
  hn::Store(v, d, to);
}

// The sum of all lanes of a row, halves first: 16 lanes become 8, 4, 2, 1.
template <class T>
HWY_INLINE RealOf<T> RowSum(typename Layout<T>::V (&row)[Layout<T>::kVectors]) {
  using L = Layout<T>;
  using R = RealOf<T>;
  constexpr std::size_t kFew = 16 / sizeof(R);
  constexpr std::size_t kStop = L::kLanes >= kFew ? 1 : kFew / L::kLanes;
  const typename L::D d;
  for (std::size_t half = L::kVectors / 2; half >= kStop; half /= 2) {
    for (std::size_t v = 0; v < half; ++v) row[v] = hn::Add(row[v], row[v + half]);
  }
  alignas(16) R few[kFew];
  for (std::size_t v = 0; v < kStop; ++v) FoldTo16Bytes(d, row[v], few + v * L::kLanes);
  if constexpr (kFew == 2) {
    return few[0] + few[1];
  } else {
    return (few[0] + few[2]) + (few[1] + few[3]);
  }
}

template <class T>
void Dots(const DotsBatch<T>& batch, std::size_t chunks) {
  using L = Layout<T>;
  using R = RealOf<T>;
  const typename L::D d;
  typename L::V sums[kDotsBatch][kParts<T>][L::kVectors];
  HWY_UNROLL(kUnroll)
  for (std::size_t v = 0; v < L::kVectors; ++v) {
    typename L::V sum[kDotsBatch][kParts<T>];
    HWY_UNROLL(kUnroll)
    for (std::size_t k = 0; k < kDotsBatch; ++k) {
      const auto mask = hn::Load(d, batch.mask[k]->lanes.data() + v * L::kLanes);
      const auto x = hn::And(hn::LoadU(d, reinterpret_cast<const R*>(batch.x[k]) + v * L::kLanes), mask);
      HWY_UNROLL(kUnroll)
      for (std::size_t part = 0; part < kParts<T>; ++part) {
        sum[k][part] = hn::Mul(hn::Load(d, batch.taps[k][part].lanes.data() + v * L::kLanes), x);
      }
    }
    for (std::size_t n = 1; n < chunks; ++n) {
      HWY_UNROLL(kUnroll)
      for (std::size_t k = 0; k < kDotsBatch; ++k) {
        const auto x = hn::LoadU(d, reinterpret_cast<const R*>(batch.x[k]) + n * L::kRowLanes + v * L::kLanes);
        HWY_UNROLL(kUnroll)
        for (std::size_t part = 0; part < kParts<T>; ++part) {
          const auto tap = hn::Load(d, batch.taps[k][n * kParts<T> + part].lanes.data() + v * L::kLanes);
          sum[k][part] = hn::MulAdd(tap, x, sum[k][part]);
        }
      }
    }
    HWY_UNROLL(kUnroll)
    for (std::size_t k = 0; k < kDotsBatch; ++k) {
      HWY_UNROLL(kUnroll)
      for (std::size_t part = 0; part < kParts<T>; ++part) sums[k][part][v] = sum[k][part];
    }
  }
  HWY_UNROLL(kUnroll)
  for (std::size_t k = 0; k < kDotsBatch; ++k) {
    R* y = reinterpret_cast<R*>(batch.y[k]);
    HWY_UNROLL(kUnroll)
    for (std::size_t part = 0; part < kParts<T>; ++part) y[part] = RowSum<T>(sums[k][part]);
  }
}

template <class T>
using KernelsOf = detail::MultiRateKernels<T>;

const PerElement<KernelsOf>* Kernels() {
  static constexpr PerElement<KernelsOf> table{
      KernelsOf<float>{&Bank<float>, &Dots<float>}, KernelsOf<double>{&Bank<double>, &Dots<double>},
      KernelsOf<TSCplx>{&Bank<TSCplx>, &Dots<TSCplx>}, KernelsOf<TCplx>{&Bank<TCplx>, &Dots<TCplx>}};
  return &table;
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives::detail {
namespace {
HWY_EXPORT(Kernels);
}  // namespace

template <Element T>
const MultiRateKernels<T>& ChooseMultiRateKernels() {
  return std::get<MultiRateKernels<T>>(*HWY_DYNAMIC_DISPATCH(Kernels)());
}
template const MultiRateKernels<float>& ChooseMultiRateKernels();
template const MultiRateKernels<double>& ChooseMultiRateKernels();
template const MultiRateKernels<TSCplx>& ChooseMultiRateKernels();
template const MultiRateKernels<TCplx>& ChooseMultiRateKernels();

}  // namespace passband::primitives::detail
#endif
