// The inner loops of long FIR filters for all instruction sets. Each point passes through the same operations whatever
// the width of the vectors, so that all instruction sets with a fused multiply-add give the same bits.
#include <cstddef>
#include <cstdint>
#include <tuple>

#include "passband/primitives/fir_partitioned_internal.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/fir_partitioned_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;
using detail::kProductVectors;
using detail::PartitionKernels;
using detail::ProductSum;
using detail::TransformTables;

// Keeps a loaded vector in its register: compilers would load it again for each of its uses.
template <class V>
HWY_INLINE V Pinned(V v) {
#if HWY_TARGET == HWY_AVX3 && HWY_COMPILER_GCC_ACTUAL
  asm("" : "+v"(v.raw));
#elif HWY_TARGET == HWY_AVX2 && HWY_COMPILER_GCC_ACTUAL
  asm("" : "+x"(v.raw));
#endif
  return v;
}

// Some points: real and imaginary parts.
template <class R>
struct Points {
  using D = hn::CappedTag<R, 64 / sizeof(R)>;
  using V = hn::Vec<D>;
  static constexpr std::size_t kLanes = hn::MaxLanes(D());
  V re;
  V im;

  static HWY_INLINE Points Load(const R* from) {
    return {Pinned(hn::Load(D(), from)), Pinned(hn::Load(D(), from + kLanes))};
  }
  static HWY_INLINE Points Set(R re, R im) { return {hn::Set(D(), re), hn::Set(D(), im)}; }
  HWY_INLINE void Store(R* to) const {
    hn::Store(re, D(), to);
    hn::Store(im, D(), to + kLanes);
  }
};

// (a, b) becomes (a + w b, a - w b).
template <class R>
HWY_INLINE void Split(Points<R>& a, Points<R>& b, const Points<R>& w) {
  const auto re = hn::NegMulAdd(w.im, b.im, hn::Mul(w.re, b.re));
  const auto im = hn::MulAdd(w.im, b.re, hn::Mul(w.re, b.im));
  b = {hn::Sub(a.re, re), hn::Sub(a.im, im)};
  a = {hn::Add(a.re, re), hn::Add(a.im, im)};
}

// Undoes `Split`, times 2.
template <class R>
HWY_INLINE void Join(Points<R>& a, Points<R>& b, const Points<R>& w) {
  const auto re = hn::Sub(a.re, b.re);
  const auto im = hn::Sub(a.im, b.im);
  a = {hn::Add(a.re, b.re), hn::Add(a.im, b.im)};
  b = {hn::MulAdd(w.im, im, hn::Mul(w.re, re)), hn::NegMulAdd(w.im, re, hn::Mul(w.re, im))};
}

// Exchanges the upper part of u with the lower part of v in each group of 2 kDistance lanes; its own inverse.
template <std::size_t kDistance, class R, class V>
HWY_INLINE void ExchangeHalves(V& u, V& v) {
#if HWY_TARGET == HWY_SCALAR
  (void)u;
  (void)v;
#else
  const typename Points<R>::D d;
  constexpr std::size_t kBlock = 16 / sizeof(R);
  const V a = u;
  const V b = v;
  if constexpr (kDistance >= kBlock && 2 * kDistance == Points<R>::kLanes) {
    u = hn::ConcatLowerLower(d, b, a);
    v = hn::ConcatUpperUpper(d, b, a);
  } else if constexpr (kDistance >= kBlock) {
    static_assert(kDistance == kBlock, "vectors of more than four blocks");
    u = hn::OddEvenBlocks(hn::SwapAdjacentBlocks(b), a);
    v = hn::OddEvenBlocks(b, hn::SwapAdjacentBlocks(a));
  } else if constexpr (kDistance * sizeof(R) == 8) {
    const hn::Repartition<double, typename Points<R>::D> halves;
    u = hn::BitCast(d, hn::InterleaveLower(halves, hn::BitCast(halves, a), hn::BitCast(halves, b)));
    v = hn::BitCast(d, hn::InterleaveUpper(halves, hn::BitCast(halves, a), hn::BitCast(halves, b)));
  } else {
    u = hn::OddEven(hn::DupEven(b), a);
    v = hn::OddEven(b, hn::DupOdd(a));
  }
#endif
}

// The halvings within a pair of vectors, from kDistance = lanes / 2 down to 1, and back.
template <std::size_t kDistance, class R>
HWY_INLINE void SplitLanes(Points<R>& u, Points<R>& v, const R* HWY_RESTRICT factors) {
  if constexpr (kDistance > 0) {
    ExchangeHalves<kDistance, R>(u.re, v.re);
    ExchangeHalves<kDistance, R>(u.im, v.im);
    Split(u, v, Points<R>::Load(factors));
    SplitLanes<kDistance / 2>(u, v, factors + 2 * Points<R>::kLanes);
  }
}
template <std::size_t kDistance, class R>
HWY_INLINE void JoinLanes(Points<R>& u, Points<R>& v, const R* HWY_RESTRICT factors) {
  if constexpr (kDistance > 0) {
    JoinLanes<kDistance / 2>(u, v, factors + 2 * Points<R>::kLanes);
    Join(u, v, Points<R>::Load(factors));
    ExchangeHalves<kDistance, R>(u.re, v.re);
    ExchangeHalves<kDistance, R>(u.im, v.im);
  }
}

template <class R>
constexpr std::size_t LaneFactorsOfPair() {
  std::size_t halvings = 0;
  while ((std::size_t{1} << halvings) < Points<R>::kLanes) ++halvings;
  return halvings * 2 * Points<R>::kLanes;
}

template <class R>
HWY_INLINE Points<R> Node(const TransformTables<R>& tables, std::size_t node) {
  return Points<R>::Set(tables.nodes[2 * node], tables.nodes[2 * node + 1]);
}

// Where a pass finds its points and puts them; vectors are counted from the start of the transform. The halves are
// told apart, as they come from the older and the newer block when they are samples.
template <class R>
struct Spectrum {
  R* data;
  HWY_INLINE Points<R> Lower(std::size_t vector) const {
    return Points<R>::Load(data + vector * 2 * Points<R>::kLanes);
  }
  HWY_INLINE Points<R> Upper(std::size_t vector) const { return Lower(vector); }
  HWY_INLINE void PutLower(std::size_t vector, const Points<R>& p) const {
    p.Store(data + vector * 2 * Points<R>::kLanes);
  }
  HWY_INLINE void PutUpper(std::size_t vector, const Points<R>& p) const { PutLower(vector, p); }
};

template <class T>
struct Samples {
  using R = RealOf<T>;
  using P = Points<R>;
  const T* older;
  const T* newer;
  T* result;
  std::size_t half;  // vectors in each half of the transform

  HWY_INLINE P Lower(std::size_t vector) const { return IsComplex<T> ? Parts(older, vector) : Both(vector); }
  HWY_INLINE P Upper(std::size_t vector) const { return IsComplex<T> ? Parts(newer, vector - half) : Both(vector); }
  HWY_INLINE void PutLower(std::size_t vector, const P& p) const {
    if constexpr (!IsComplex<T>) hn::Store(p.im, typename P::D(), result + vector * P::kLanes);
  }
  HWY_INLINE void PutUpper(std::size_t vector, const P& p) const {
    if constexpr (IsComplex<T>) {
      R* const to = reinterpret_cast<R*>(result) + (vector - half) * 2 * P::kLanes;
      hn::StoreInterleaved2(p.re, p.im, typename P::D(), to);
    } else {
      PutLower(vector, p);
    }
  }

 private:
  HWY_INLINE P Both(std::size_t vector) const {
    const std::size_t at = vector * P::kLanes;
    const typename P::D d;
    return {Pinned(hn::Load(d, reinterpret_cast<const R*>(older) + at)),
            Pinned(hn::Load(d, reinterpret_cast<const R*>(newer) + at))};
  }
  static HWY_INLINE P Parts(const T* block, std::size_t vector) {
    P p;
    hn::LoadInterleaved2(typename P::D(), reinterpret_cast<const R*>(block) + vector * 2 * P::kLanes, p.re, p.im);
    return p;
  }
};

// One halving of the whole transform.
template <class R, class From>
HWY_INLINE void SplitOnce(const TransformTables<R>& tables, const From& from, const Spectrum<R>& to, std::size_t half) {
  const auto w = Node(tables, 1);
  for (std::size_t v = 0; v < half; ++v) {
    auto a = from.Lower(v);
    auto b = from.Upper(v + half);
    Split(a, b, w);
    to.PutLower(v, a);
    to.PutUpper(v + half, b);
  }
}
template <class R, class To>
HWY_INLINE void JoinOnce(const TransformTables<R>& tables, const Spectrum<R>& from, const To& to, std::size_t half) {
  const auto w = Node(tables, 1);
  for (std::size_t v = 0; v < half; ++v) {
    auto a = from.Lower(v);
    auto b = from.Upper(v + half);
    Join(a, b, w);
    to.PutLower(v, a);
    to.PutUpper(v + half, b);
  }
}

// Two halvings of the stretch of a node, 4 * quarter vectors from `first`.
template <class R, class From>
HWY_INLINE void SplitTwice(const TransformTables<R>& tables, std::size_t node, const From& from, const Spectrum<R>& to,
                           std::size_t first, std::size_t quarter) {
  const auto w = Node(tables, node);
  const auto left = Node(tables, 2 * node);
  const auto right = Node(tables, 2 * node + 1);
  for (std::size_t v = first; v < first + quarter; ++v) {
    auto a = from.Lower(v);
    auto b = from.Lower(v + quarter);
    auto c = from.Upper(v + 2 * quarter);
    auto e = from.Upper(v + 3 * quarter);
    Split(a, c, w);
    Split(b, e, w);
    Split(a, b, left);
    Split(c, e, right);
    to.PutLower(v, a);
    to.PutLower(v + quarter, b);
    to.PutUpper(v + 2 * quarter, c);
    to.PutUpper(v + 3 * quarter, e);
  }
}
template <class R, class To>
HWY_INLINE void JoinTwice(const TransformTables<R>& tables, std::size_t node, const Spectrum<R>& from, const To& to,
                          std::size_t first, std::size_t quarter) {
  const auto w = Node(tables, node);
  const auto left = Node(tables, 2 * node);
  const auto right = Node(tables, 2 * node + 1);
  for (std::size_t v = first; v < first + quarter; ++v) {
    auto a = from.Lower(v);
    auto b = from.Lower(v + quarter);
    auto c = from.Upper(v + 2 * quarter);
    auto e = from.Upper(v + 3 * quarter);
    Join(a, b, left);
    Join(c, e, right);
    Join(a, c, w);
    Join(b, e, w);
    to.PutLower(v, a);
    to.PutLower(v + quarter, b);
    to.PutUpper(v + 2 * quarter, c);
    to.PutUpper(v + 3 * quarter, e);
  }
}

// log2 is odd: 2, 8, 32, ...
HWY_INLINE bool IsOddPower(std::size_t power_of_two) { return (power_of_two & 0xAAAAAAAAAAAAAAAAU) != 0; }

template <class T>
void Forward(const TransformTables<RealOf<T>>& tables, const T* older, const T* newer, RealOf<T>* spectrum) {
  using R = RealOf<T>;
  constexpr std::size_t kLanes = Points<R>::kLanes;
  const std::size_t vectors = tables.length / kLanes;
  const Samples<T> samples{older, newer, nullptr, vectors / 2};
  const Spectrum<R> points{spectrum};
  std::size_t stretch = vectors;
  if (IsOddPower(vectors)) {
    SplitTwice(tables, 1, samples, points, 0, vectors / 4);
    stretch /= 4;
  } else {
    SplitOnce(tables, samples, points, vectors / 2);
    stretch /= 2;
  }
  for (; stretch > 2; stretch /= 4) {
    std::size_t node = vectors / stretch;
    for (std::size_t first = 0; first < vectors; first += stretch, ++node) {
      SplitTwice(tables, node, points, points, first, stretch / 4);
    }
  }
  const R* factors = tables.lane_factors.data();
  for (std::size_t v = 0; v < vectors; v += 2, factors += LaneFactorsOfPair<R>()) {
    auto a = points.Lower(v);
    auto b = points.Lower(v + 1);
    Split(a, b, Node(tables, (vectors + v) / 2));
    SplitLanes<kLanes / 2>(a, b, factors);
    points.PutLower(v, a);
    points.PutLower(v + 1, b);
  }
}

template <class T>
void Inverse(const TransformTables<RealOf<T>>& tables, RealOf<T>* spectrum, T* newer) {
  using R = RealOf<T>;
  constexpr std::size_t kLanes = Points<R>::kLanes;
  const std::size_t vectors = tables.length / kLanes;
  const Samples<T> samples{nullptr, nullptr, newer, vectors / 2};
  const Spectrum<R> points{spectrum};
  const R* factors = tables.lane_factors.data();
  for (std::size_t v = 0; v < vectors; v += 2, factors += LaneFactorsOfPair<R>()) {
    auto a = points.Lower(v);
    auto b = points.Lower(v + 1);
    JoinLanes<kLanes / 2>(a, b, factors);
    Join(a, b, Node(tables, (vectors + v) / 2));
    points.PutLower(v, a);
    points.PutLower(v + 1, b);
  }
  const std::size_t last = IsOddPower(vectors) ? vectors / 4 : vectors / 2;  // stretches when one pass is left
  for (std::size_t stretch = 8; stretch <= last; stretch *= 4) {
    std::size_t node = vectors / stretch;
    for (std::size_t first = 0; first < vectors; first += stretch, ++node) {
      JoinTwice(tables, node, points, points, first, stretch / 4);
    }
  }
  if (IsOddPower(vectors)) {
    JoinTwice(tables, 1, points, samples, 0, vectors / 4);
  } else {
    JoinOnce(tables, points, samples, vectors / 2);
  }
}

template <class R>
void Multiply(const ProductSum<R>& sum, std::size_t length, R* HWY_RESTRICT product) {
  using P = Points<R>;
  constexpr std::size_t kGroup = kProductVectors * 2 * P::kLanes;
  const R* HWY_RESTRICT taps = sum.taps;
  for (std::size_t at = 0; at < 2 * length; at += kGroup) {
    P total[kProductVectors];
    const R* x = sum.spectra + sum.oldest * sum.stride + at;
    HWY_UNROLL(4)
    for (std::size_t v = 0; v < kProductVectors; ++v) {
      const P h = P::Load(taps + v * 2 * P::kLanes);
      const P p = P::Load(x + v * 2 * P::kLanes);
      total[v] = {hn::NegMulAdd(h.im, p.im, hn::Mul(h.re, p.re)), hn::MulAdd(h.im, p.re, hn::Mul(h.re, p.im))};
    }
    taps += kGroup;
    for (std::size_t j = 1; j < sum.count; ++j, taps += kGroup) {
      x = sum.oldest + j == sum.count ? sum.spectra + at : x + sum.stride;
      HWY_UNROLL(4)
      for (std::size_t v = 0; v < kProductVectors; ++v) {
        const P h = P::Load(taps + v * 2 * P::kLanes);
        const P p = P::Load(x + v * 2 * P::kLanes);
        total[v].re = hn::NegMulAdd(h.im, p.im, hn::MulAdd(h.re, p.re, total[v].re));
        total[v].im = hn::MulAdd(h.im, p.re, hn::MulAdd(h.re, p.im, total[v].im));
      }
    }
    HWY_UNROLL(4)
    for (std::size_t v = 0; v < kProductVectors; ++v) total[v].Store(product + at + v * 2 * P::kLanes);
  }
}

template <class T>
void Add(T* x, const T* y, std::size_t count) {
  using R = RealOf<T>;
  const typename Points<R>::D d;
  R* const sum = reinterpret_cast<R*>(x);
  const R* const term = reinterpret_cast<const R*>(y);
  const std::size_t size = count * (sizeof(T) / sizeof(R));
  std::size_t n = 0;
  for (; n + hn::Lanes(d) <= size; n += hn::Lanes(d)) {
    hn::StoreU(hn::Add(hn::LoadU(d, sum + n), hn::LoadU(d, term + n)), d, sum + n);
  }
  for (; n < size; ++n) sum[n] += term[n];
}

template <class T>
constexpr PartitionKernels<T> KernelsOf() {
  return {Points<RealOf<T>>::kLanes, &Forward<T>, &Multiply<RealOf<T>>, &Inverse<T>, &Add<T>};
}

const PerElement<PartitionKernels>* Kernels() {
  static constexpr PerElement<PartitionKernels> table{KernelsOf<float>(), KernelsOf<double>(), KernelsOf<TSCplx>(),
                                                      KernelsOf<TCplx>()};
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
const PartitionKernels<T>& ChoosePartitionKernels() {
  return std::get<PartitionKernels<T>>(*HWY_DYNAMIC_DISPATCH(Kernels)());
}

template const PartitionKernels<float>& ChoosePartitionKernels();
template const PartitionKernels<double>& ChoosePartitionKernels();
template const PartitionKernels<TSCplx>& ChoosePartitionKernels();
template const PartitionKernels<TCplx>& ChoosePartitionKernels();
}  // namespace passband::primitives::detail
#endif
