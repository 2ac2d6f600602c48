#include "passband/primitives/burg.h"

#include <algorithm>
#include <cstddef>
#include <tuple>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/burg.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "passband/primitives/burg_lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

// Makes `count` errors, at least a vector, from those before, x = f + 1 and y = b, and sums their pairs. Without kReflects
// x and y are the errors themselves.
template <class T, bool kReflects>
class Walk {
  using L = Vectors<T>;
  using R = typename L::R;
  using V = typename L::V;

 public:
  HWY_INLINE Walk(const T* x, const T* y, std::size_t count, TCplx k, T* f_next, T* b_next)
      : x_(x), y_(y), count_(count), f_next_(f_next), b_next_(b_next), reflection_(k), next_(L::Down(1)) {}

  HWY_INLINE BurgSums Run() {
    constexpr std::size_t kBlock = 64;  // vectors whose sums stay in the precision of the data
    typename L::Totals direct = hn::Zero(wide_);
    typename L::Totals crossed = hn::Zero(wide_);
    typename L::Totals power = hn::Zero(wide_);
    Start();
    for (std::size_t v = 1;;) {
      LaneSums<T> even, odd;
      for (const std::size_t end = std::min(v + kBlock, whole_); v + 2 <= end; v += 2) {
        Make(v * step_);
        Add(even);
        Make((v + 1) * step_);
        Add(odd);
      }
      const bool last = v + 2 > whole_;
      if (last) Finish(v, even);
      even.AddTo(odd, direct, crossed, power);
      if (last) break;
    }
    BurgSums sums;
    sums.product.Re = hn::GetLane(hn::SumOfLanes(wide_, direct));
    sums.power = hn::GetLane(hn::SumOfLanes(wide_, power));
    if constexpr (IsComplex<T>) {
      sums.product.Im = hn::GetLane(hn::SumOfLanes(wide_, hn::OddEven(crossed, hn::Neg(crossed))));
    }
    return sums;
  }

 private:
  HWY_INLINE void Compute(std::size_t at, V& f, V& b) const {
    const V x = hn::LoadU(d_, reinterpret_cast<const R*>(x_ + at));
    const V y = hn::LoadU(d_, reinterpret_cast<const R*>(y_ + at));
    f = kReflects ? reflection_.Forward(x, y) : x;
    b = kReflects ? reflection_.Backward(y, x) : y;
  }
  HWY_INLINE void Store(std::size_t at, V f, V b) const {
    if constexpr (kReflects) {
      hn::StoreU(f, d_, reinterpret_cast<R*>(f_next_ + at));
      hn::StoreU(b, d_, reinterpret_cast<R*>(b_next_ + at));
    }
  }
  HWY_INLINE void Make(std::size_t at) {
    Compute(at, f_, b_);
    Store(at, f_, b_);
  }

  // What is less than a vector at the end is computed as the end of a whole one, as long as the errors before are there.
  HWY_INLINE void Start() {
    Compute(count_ - step_, f_end_, b_end_);
    Make(0);
    f_turned_ = hn::TableLookupLanes(f_, next_);
    b_last_ = b_;
  }
  // The forward error of a pair lies one place further on: a vector of pairs is summed when the next errors are there.
  HWY_INLINE void Add(LaneSums<T>& sums) {
    const V turned = hn::TableLookupLanes(f_, next_);
    sums.Add(hn::IfThenElse(all_but_last_, f_turned_, turned), b_last_);
    f_turned_ = turned;
    b_last_ = b_;
  }
  // From vector v on: at most one whole one, and the rest. The last backward error has no partner.
  HWY_INLINE void Finish(std::size_t v, LaneSums<T>& sums) {
    if (v < whole_) {
      Make(v * step_);
      Add(sums);
    }
    std::size_t left = count_ - whole_ * step_;
    if (left > 0) {
      Store(count_ - step_, f_end_, b_end_);
      const auto to_front = L::Down(step_ - left);
      const auto inside = hn::FirstN(d_, left * L::kParts);
      f_ = hn::IfThenElseZero(inside, hn::TableLookupLanes(f_end_, to_front));
      b_ = hn::IfThenElseZero(inside, hn::TableLookupLanes(b_end_, to_front));
      Add(sums);
    } else {
      left = step_;
    }
    f_ = hn::Zero(d_);
    b_last_ = hn::IfThenElseZero(hn::FirstN(d_, (left - 1) * L::kParts), b_last_);
    Add(sums);
  }

  typename L::D d_;
  typename L::Wide wide_;
  const T* x_;
  const T* y_;
  std::size_t count_;
  T* f_next_;
  T* b_next_;
  const std::size_t step_ = hn::Lanes(d_) / L::kParts;
  const std::size_t whole_ = count_ / step_;  // vectors
  Reflection<T> reflection_;
  decltype(L::Down(1)) next_;
  hn::Mask<typename L::D> all_but_last_ = hn::FirstN(d_, hn::Lanes(d_) - L::kParts);
  V f_;  // the latest errors
  V b_;
  V f_turned_;  // those before, forward ones each a place down
  V b_last_;
  V f_end_;
  V b_end_;
};

template <class T>
TCplx Widened(T x) {
  if constexpr (IsComplex<T>) {
    return static_cast<TCplx>(x);
  } else {
    return {static_cast<double>(x), 0};
  }
}
template <class T>
void Store(TCplx z, T& x) {
  if constexpr (IsComplex<T>) {
    x = static_cast<T>(z);
  } else {
    x = static_cast<T>(z.Re);
  }
}

// The same element by element, in double, a block of sums after the other.
template <class T, bool kReflects>
BurgSums WalkOneByOne(const T* x, const T* y, std::size_t count, TCplx k, T* f_next, T* b_next) {
  constexpr std::size_t kBlock = 256;
  BurgSums sums;
  TCplx b_last;
  for (std::size_t i = 0; i < count;) {
    BurgSums block;
    for (const std::size_t end = std::min(i + kBlock, count); i < end; ++i) {
      TCplx f = Widened(x[i]);
      TCplx b = Widened(y[i]);
      if constexpr (kReflects) {
        Store(f + k * b, f_next[i]);
        Store(b + Conj(k) * f, b_next[i]);
        f = Widened(f_next[i]);
        b = Widened(b_next[i]);
      }
      if (i > 0) {
        block.product += f * Conj(b_last);
        block.power += (f * Conj(f) + b_last * Conj(b_last)).Re;
      }
      b_last = b;
    }
    sums.product += block.product;
    sums.power += block.power;
  }
  return sums;
}

template <class T, bool kReflects>
BurgSums Run(const T* x, const T* y, std::size_t count, TCplx k, T* f_next, T* b_next) {
  if constexpr (Vectors<T>::kWideEnough) {
    if (count >= Vectors<T>::Elements()) return Walk<T, kReflects>(x, y, count, k, f_next, b_next).Run();
  }
  return WalkOneByOne<T, kReflects>(x, y, count, k, f_next, b_next);
}

template <class T>
using Kernel = BurgSums (*)(const T*, const T*, std::size_t, TCplx, T*, T*);

template <bool kReflects>
const PerElement<Kernel>* Table() {
  static constexpr PerElement<Kernel> table{&Run<float, kReflects>, &Run<double, kReflects>, &Run<TSCplx, kReflects>,
                                            &Run<TCplx, kReflects>};
  return &table;
}
const PerElement<Kernel>* Sums() { return Table<false>(); }
const PerElement<Kernel>* Stages() { return Table<true>(); }

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives {
namespace {
HWY_EXPORT(Sums);
HWY_EXPORT(Stages);
}  // namespace

template <Element T>
Status BurgSum(const T* f, const T* b, std::int32_t count, BurgSums& sums) noexcept {
  if (count < 0) return Status::BadSize;
  if (count > 0 && (f == nullptr || b == nullptr)) return Status::NullPointer;
  sums = {};
  if (count < 2) return Status::Ok;
  const auto kernel = std::get<HWY_NAMESPACE::Kernel<T>>(*HWY_DYNAMIC_DISPATCH(Sums)());
  sums = kernel(f, b, static_cast<std::size_t>(count), {}, nullptr, nullptr);
  return Status::Ok;
}

template <Element T>
Status BurgStage(const T* f, const T* b, std::int32_t count, TCplx k, T* f_next, T* b_next, BurgSums& next) noexcept {
  if (count < 0) return Status::BadSize;
  if (count > 0 && (f == nullptr || b == nullptr || f_next == nullptr || b_next == nullptr)) return Status::NullPointer;
  next = {};
  if (count < 2) return Status::Ok;
  const auto kernel = std::get<HWY_NAMESPACE::Kernel<T>>(*HWY_DYNAMIC_DISPATCH(Stages)());
  next = kernel(f + 1, b, static_cast<std::size_t>(count) - 1, k, f_next, b_next);
  return Status::Ok;
}

template Status BurgSum(const float*, const float*, std::int32_t, BurgSums&) noexcept;
template Status BurgSum(const double*, const double*, std::int32_t, BurgSums&) noexcept;
template Status BurgSum(const TSCplx*, const TSCplx*, std::int32_t, BurgSums&) noexcept;
template Status BurgSum(const TCplx*, const TCplx*, std::int32_t, BurgSums&) noexcept;
template Status BurgStage(const float*, const float*, std::int32_t, TCplx, float*, float*, BurgSums&) noexcept;
template Status BurgStage(const double*, const double*, std::int32_t, TCplx, double*, double*, BurgSums&) noexcept;
template Status BurgStage(const TSCplx*, const TSCplx*, std::int32_t, TCplx, TSCplx*, TSCplx*, BurgSums&) noexcept;
template Status BurgStage(const TCplx*, const TCplx*, std::int32_t, TCplx, TCplx*, TCplx*, BurgSums&) noexcept;

}  // namespace passband::primitives
#endif  // HWY_ONCE
