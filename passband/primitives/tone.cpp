#include "passband/primitives/tone.h"

#include <cstddef>
#include <tuple>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/tone.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "passband/primitives/stream_phase-inl.h"

#ifndef PASSBAND_PRIMITIVES_TONE_ONCE
#define PASSBAND_PRIMITIVES_TONE_ONCE
namespace passband::primitives {
namespace {

template <class T>
struct ToneKernels {
  void (*fill)(T* dst, std::size_t count, const ToneOf& tone);
  void (*add)(T* dst, std::size_t count, const ToneOf& tone);
};

}  // namespace
}  // namespace passband::primitives
#endif

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

struct Phasors {
  WideVec cosine;
  WideVec sine;
};

// (-1)^k / (2k + kOdd)!, the factorials exact to 18!.
template <int kOdd, int kTerm>
constexpr double Coefficient() {
  double factorial = 1;
  for (int i = 2; i <= 2 * kTerm + kOdd; ++i) factorial *= i;
  return (kTerm % 2 == 0 ? 1 : -1) / factorial;
}

// sum of the coefficients kFirst .. kLast times z^(k - kFirst)
template <int kOdd, int kFirst, int kLast>
HWY_INLINE WideVec Series(WideVec z) {
  const auto c = hn::Set(Wide(), Coefficient<kOdd, kFirst>());
  if constexpr (kFirst == kLast) {
    return c;
  } else {
    return hn::MulAdd(Series<kOdd, kFirst + 1, kLast>(z), z, c);
  }
}

// Cosine and sine of phases in turns, with errors of one unit in the last place of 1. The quarter nearest to the phase is
// taken off exactly; on the eighth of a turn that is left on either side the series end below 1e-17.
HWY_INLINE Phasors PhasorsOf(const WidePair& turns) {
  const Wide d;
  const auto one = hn::Set(d, 1);
  const auto quarter = hn::Round(hn::Mul(turns.high, hn::Set(d, 4)));  // -2 .. 2
  const auto v = hn::Add(hn::NegMulAdd(quarter, hn::Set(d, 0.25), turns.high), turns.low);
  const auto x = hn::MulAdd(v, hn::Set(d, kTurn), hn::Mul(v, hn::Set(d, kTurnRest)));
  const auto z = hn::Mul(x, x);
  const auto sine = hn::MulAdd(hn::Mul(Series<1, 1, 8>(z), z), x, x);
  const auto cosine = hn::MulAdd(hn::MulAdd(Series<0, 2, 8>(z), z, hn::Set(d, -0.5)), z, one);
  const auto size = hn::Abs(quarter);
  const auto odd = hn::Eq(size, one);
  const auto sign = hn::Sub(one, size);
  return {hn::IfThenElse(odd, hn::Neg(hn::Mul(sine, quarter)), hn::Mul(cosine, sign)),
          hn::IfThenElse(odd, hn::Mul(cosine, quarter), hn::Mul(sine, sign))};
}

HWY_INLINE Phasors Turned(const Phasors& a, const Phasors& b) {
  return {hn::NegMulAdd(a.sine, b.sine, hn::Mul(a.cosine, b.cosine)),
          hn::MulAdd(a.sine, b.cosine, hn::Mul(a.cosine, b.sine))};
}

// A tone as Generate wants it.
class ToneWave {
 public:
  ToneWave(const ToneOf& tone, std::size_t count)
      : turns_(tone.at.frequency, tone.at.phase), magnitude_(tone.magnitude), sign_(tone.conjugate ? -1 : 1) {
    Store(tone, Touched(tone.at.position, count));
  }

  void Start(std::int64_t number, std::size_t slot) {
    const Wide d;
    const auto at = PhasorsOf(turns_(Numbers(number * static_cast<std::int64_t>(kBlock), kBlock)));
    hn::Store(hn::Mul(at.cosine, hn::Set(d, magnitude_)), d, start_cosine_[slot]);
    hn::Store(hn::Mul(at.sine, hn::Set(d, sign_ * magnitude_)), d, start_sine_[slot]);
  }

  struct BlockOf {
    HWY_INLINE Samples operator()(std::size_t j) const {
      const Wide d;
      const auto x = Turned(start, {hn::Load(d, wave.cosine_ + j), hn::Load(d, wave.sine_ + j)});
      return {x.cosine, x.sine};
    }
    const ToneWave& wave;
    Phasors start;
  };
  BlockOf Block(std::size_t slot, std::size_t b) const {
    const Wide d;
    return {*this, {hn::Set(d, start_cosine_[slot][b]), hn::Set(d, start_sine_[slot][b])}};
  }

 private:
  static constexpr std::size_t kFine = 8;

  // The phasors 0 .. kBlock - 1 of the places in a block: those of 0 .. kFine - 1 turned by those of the multiples of kFine.
  void Store(const ToneOf& tone, const Touched& touched) {
    const Wide d;
    const std::size_t lanes = hn::Lanes(d);
    const Turns turns(tone.at.frequency, 0);
    HWY_ALIGN_MAX double cosine[kBlock / kFine];
    HWY_ALIGN_MAX double sine[kBlock / kFine];
    for (std::size_t i = 0; i < kBlock / kFine; i += lanes) {
      const auto coarse = PhasorsOf(turns(Numbers(static_cast<std::int64_t>(i * kFine), kFine)));
      hn::Store(coarse.cosine, d, cosine + i);
      hn::Store(coarse.sine, d, sine + i);
    }
    for (std::size_t k = 0; k < kFine; k += lanes) {
      const auto fine = PhasorsOf(turns(Numbers(static_cast<std::int64_t>(k), 1)));
      for (std::size_t j = k; j < kBlock; j += kFine) {
        if (!touched(j)) continue;
        const auto x = Turned({hn::Set(d, cosine[j / kFine]), hn::Set(d, sine[j / kFine])}, fine);
        hn::Store(x.cosine, d, cosine_ + j);
        hn::Store(hn::Mul(x.sine, hn::Set(d, sign_)), d, sine_ + j);
      }
    }
  }

  Turns turns_;
  double magnitude_;
  double sign_;
  HWY_ALIGN_MAX double cosine_[kBlock];
  HWY_ALIGN_MAX double sine_[kBlock];
  HWY_ALIGN_MAX double start_cosine_[2][kMaxLanes];
  HWY_ALIGN_MAX double start_sine_[2][kMaxLanes];
};

template <bool kAdd, class T>
void Run(T* dst, std::size_t count, const ToneOf& tone) {
  ToneWave wave(tone, count);
  Generate<kAdd>(wave, tone.at.position, dst, count);
}

template <class T>
constexpr ToneKernels<T> kKernels{&Run<false, T>, &Run<true, T>};

const PerElement<ToneKernels>* Kernels() {
  static constexpr PerElement<ToneKernels> table{kKernels<float>, kKernels<double>, kKernels<TSCplx>, kKernels<TCplx>};
  return &table;
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives {
namespace {
HWY_EXPORT(Kernels);

template <Element T>
Status Check(std::int32_t count, const ToneOf& tone) {
  if (count < 0) return Status::BadSize;
  const StreamPhase& at = tone.at;
  const bool in_range = at.frequency >= 0 && (IsComplex<T> ? at.frequency < 1 : at.frequency <= 0.5);
  if (!in_range || !(at.phase >= 0 && at.phase < kTurn) || !(tone.magnitude > 0)) return Status::BadArgument;
  return Status::Ok;
}
}  // namespace

template <Element T>
Status Tone(T* dst, std::int32_t count, const ToneOf& tone) noexcept {
  const Status status = Check<T>(count, tone);
  if (Failed(status)) return status;
  std::get<ToneKernels<T>>(*HWY_DYNAMIC_DISPATCH(Kernels)()).fill(dst, static_cast<std::size_t>(count), tone);
  return Status::Ok;
}

template <Element T>
Status ToneAdd(T* dst, std::int32_t count, const ToneOf& tone) noexcept {
  const Status status = Check<T>(count, tone);
  if (Failed(status)) return status;
  std::get<ToneKernels<T>>(*HWY_DYNAMIC_DISPATCH(Kernels)()).add(dst, static_cast<std::size_t>(count), tone);
  return Status::Ok;
}

template Status Tone(float*, std::int32_t, const ToneOf&) noexcept;
template Status Tone(double*, std::int32_t, const ToneOf&) noexcept;
template Status Tone(TSCplx*, std::int32_t, const ToneOf&) noexcept;
template Status Tone(TCplx*, std::int32_t, const ToneOf&) noexcept;
template Status ToneAdd(float*, std::int32_t, const ToneOf&) noexcept;
template Status ToneAdd(double*, std::int32_t, const ToneOf&) noexcept;
template Status ToneAdd(TSCplx*, std::int32_t, const ToneOf&) noexcept;
template Status ToneAdd(TCplx*, std::int32_t, const ToneOf&) noexcept;

}  // namespace passband::primitives
#endif  // HWY_ONCE
