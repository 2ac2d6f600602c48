// The arithmetic of Burg's lattice on vectors, for one instruction set.
#if defined(PASSBAND_PRIMITIVES_BURG_LANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_BURG_LANES_INL_H_
#undef PASSBAND_PRIMITIVES_BURG_LANES_INL_H_
#else
#define PASSBAND_PRIMITIVES_BURG_LANES_INL_H_
#endif

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "hwy/highway.h"
#include "passband/foundation/element_types.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

// Vectors of elements T, complex ones as Re, Im, Re, Im, ... They have 32 bytes at most: a stage is bound by its stores
// and by memory, and wider ones are slower where they are stored in halves.
template <class T>
struct Vectors {
  using R = RealOf<T>;
  using D = hn::CappedTag<R, 32 / sizeof(R)>;
  using V = hn::Vec<D>;
  using Wide = hn::CappedTag<double, 4>;
  using Totals = hn::Vec<Wide>;
  static constexpr std::size_t kParts = IsComplex<T> ? 2 : 1;
  static constexpr bool kWideEnough = hn::MaxLanes(D()) >= 2 * kParts;  // not on processors without vectors

  static std::size_t Elements() { return hn::Lanes(D()) / kParts; }
  // Real and imaginary parts in each other's places.
  static HWY_INLINE V Crossed(V x) { return hn::Reverse2(D(), x); }
  // Indices that bring each element some places down, less than a vector has, and the lowest ones to the other end.
  static HWY_INLINE auto Down(std::size_t places) {
    using Index = std::conditional_t<sizeof(R) == 4, std::int32_t, std::int64_t>;
    constexpr std::size_t kLanes = hn::MaxLanes(D());
    static constexpr auto kTurns = [] {
      std::array<Index, 2 * kLanes> lanes{};
      for (std::size_t i = 0; i < lanes.size(); ++i) lanes[i] = static_cast<Index>(i % kLanes);
      return lanes;
    }();
    return hn::SetTableIndices(D(), kTurns.data() + places * kParts);
  }
};

// x + k y and x + conj(k) y of vectors.
template <class T>
class Reflection {
  using L = Vectors<T>;
  using V = typename L::V;

 public:
  explicit HWY_INLINE Reflection(TCplx k) {
    const typename L::D d;
    re_ = hn::Set(d, static_cast<typename L::R>(k.Re));
    im_ = hn::Set(d, static_cast<typename L::R>(k.Im));
    if constexpr (IsComplex<T>) im_ = hn::OddEven(im_, hn::Neg(im_));
  }
  HWY_INLINE V Forward(V x, V y) const {
    const V sum = hn::MulAdd(re_, y, x);
    if constexpr (IsComplex<T>) return hn::MulAdd(im_, L::Crossed(y), sum);
    return sum;
  }
  HWY_INLINE V Backward(V x, V y) const {
    const V sum = hn::MulAdd(re_, y, x);
    if constexpr (IsComplex<T>) return hn::NegMulAdd(im_, L::Crossed(y), sum);
    return sum;
  }

 private:
  V re_;
  V im_;
};

// The sums over pairs in lanes.
template <class T>
class LaneSums {
  using L = Vectors<T>;
  using V = typename L::V;

 public:
  HWY_INLINE LaneSums() { direct_ = crossed_ = of_f_ = of_b_ = hn::Zero(typename L::D()); }
  HWY_INLINE void Add(V f, V b) {
    direct_ = hn::MulAdd(f, b, direct_);
    if constexpr (IsComplex<T>) crossed_ = hn::MulAdd(f, L::Crossed(b), crossed_);
    of_f_ = hn::MulAdd(f, f, of_f_);
    of_b_ = hn::MulAdd(b, b, of_b_);
  }
  // The sums of the lanes of both, added to totals in double.
  HWY_INLINE void AddTo(const LaneSums& other, typename L::Totals& direct, typename L::Totals& crossed,
                        typename L::Totals& power) const {
    direct = hn::Add(direct, Widened(hn::Add(direct_, other.direct_)));
    if constexpr (IsComplex<T>) crossed = hn::Add(crossed, Widened(hn::Add(crossed_, other.crossed_)));
    power = hn::Add(power, Widened(hn::Add(hn::Add(of_f_, other.of_f_), hn::Add(of_b_, other.of_b_))));
  }

 private:
  static HWY_INLINE typename L::Totals Widened(V x) {
#if HWY_TARGET != HWY_SCALAR  // which has no halves, and does not come here
    if constexpr (sizeof(typename L::R) == 4) {
      const typename L::Wide d;
      const hn::Half<typename L::D> half;
      return hn::Add(hn::PromoteTo(d, hn::LowerHalf(half, x)), hn::PromoteTo(d, hn::UpperHalf(half, x)));
    } else
#endif
      return x;
  }

  V direct_;   // f b, the parts of Re f conj(b)
  V crossed_;  // f and b with its parts exchanged, those of Im f conj(b) with alternating signs
  V of_f_;
  V of_b_;
};

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
