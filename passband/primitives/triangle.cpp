#include "passband/primitives/triangle.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <tuple>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/triangle.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "passband/primitives/stream_phase-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

// A triangle as Generate wants it. Phases are counted in turns.
class TriangleWave {
 public:
  TriangleWave(const TriangleOf& triangle, std::size_t count)
      : turns_(triangle.at.frequency, triangle.at.phase),
        knee_(std::clamp((std::numbers::pi + triangle.asymmetry) / kTurn, 0.0, 1.0)),
        fall_(knee_ > 0 ? 2 / knee_ : 0),
        rise_(knee_ < 1 ? 2 / (1 - knee_) : 0),
        magnitude_(triangle.magnitude),
        sign_(triangle.conjugate ? -1 : 1) {
    const Wide d;
    const Turns turns(triangle.at.frequency, 0);
    const Touched touched(triangle.at.position, count);
    for (std::size_t j = 0; j < kBlock; j += hn::Lanes(d)) {
      if (touched(j)) Store(turns(Numbers(static_cast<std::int64_t>(j), 1)), place_ + j);
    }
  }

  void Start(std::int64_t number, std::size_t slot) {
    Store(turns_(Numbers(number * static_cast<std::int64_t>(kBlock), kBlock)), start_[slot]);
  }

  struct BlockOf {
    HWY_INLINE Samples operator()(std::size_t j) const {
      const Wide d;
      const auto turns = hn::Add(start, hn::Load(d, wave.place_ + j));
      const auto re = hn::Mul(wave.Value(turns), hn::Set(d, wave.magnitude_));
      const auto late = wave.Value(hn::Sub(turns, hn::Set(d, 0.25)));
      return {re, hn::Mul(late, hn::Set(d, wave.sign_ * wave.magnitude_))};
    }
    const TriangleWave& wave;
    WideVec start;
  };
  BlockOf Block(std::size_t slot, std::size_t b) const { return {*this, hn::Set(Wide(), start_[slot][b])}; }

 private:
  static void Store(const WidePair& turns, double* to) { hn::Store(hn::Add(turns.high, turns.low), Wide(), to); }

  // Both sides are measured from the peak next to them, where the wave is 1.
  HWY_INLINE WideVec Value(WideVec turns) const {
    const Wide d;
    const auto one = hn::Set(d, 1);
    const auto near = hn::Sub(turns, hn::Round(turns));  // -1/2 .. 1/2
    const auto negative = hn::Lt(near, hn::Zero(d));
    const auto after = hn::IfThenElse(negative, hn::Add(near, one), near);
    const auto before = hn::IfThenElse(negative, hn::Neg(near), hn::Sub(one, near));
    const auto falling = hn::Le(after, hn::Set(d, knee_));
    const auto below = hn::IfThenElse(falling, hn::Mul(after, hn::Set(d, fall_)), hn::Mul(before, hn::Set(d, rise_)));
    return hn::Sub(one, below);
  }

  Turns turns_;
  double knee_;  // where the wave is -1
  double fall_;
  double rise_;
  double magnitude_;
  double sign_;
  HWY_ALIGN_MAX double place_[kBlock];
  HWY_ALIGN_MAX double start_[2][kMaxLanes];
};

template <class T>
void Run(T* dst, std::size_t count, const TriangleOf& triangle) {
  TriangleWave wave(triangle, count);
  Generate<false>(wave, triangle.at.position, dst, count);
}

template <class T>
using Kernel = void (*)(T*, std::size_t, const TriangleOf&);

const PerElement<Kernel>* Kernels() {
  static constexpr PerElement<Kernel> table{&Run<float>, &Run<double>, &Run<TSCplx>, &Run<TCplx>};
  return &table;
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives {
namespace {
HWY_EXPORT(Kernels);

constexpr double kMaxAsymmetry = std::numbers::pi_v<float>;  // rounding to single precision has made it larger than pi
}  // namespace

template <Element T>
Status Triangle(T* dst, std::int32_t count, const TriangleOf& triangle) noexcept {
  if (count < 0) return Status::BadSize;
  const StreamPhase& at = triangle.at;
  if (!(at.frequency >= 0 && at.frequency < (IsComplex<T> ? 1 : 0.5))) return Status::BadArgument;
  if (!(at.phase >= 0 && at.phase < kTurn) || !(triangle.magnitude > 0)) return Status::BadArgument;
  if (!(std::abs(triangle.asymmetry) <= kMaxAsymmetry)) return Status::BadArgument;
  const auto kernel = std::get<HWY_NAMESPACE::Kernel<T>>(*HWY_DYNAMIC_DISPATCH(Kernels)());
  kernel(dst, static_cast<std::size_t>(count), triangle);
  return Status::Ok;
}

template Status Triangle(float*, std::int32_t, const TriangleOf&) noexcept;
template Status Triangle(double*, std::int32_t, const TriangleOf&) noexcept;
template Status Triangle(TSCplx*, std::int32_t, const TriangleOf&) noexcept;
template Status Triangle(TCplx*, std::int32_t, const TriangleOf&) noexcept;

}  // namespace passband::primitives
#endif  // HWY_ONCE
