// The direct form for one instruction set: sums over the input in vectors of successive outputs, and the recursion.
#if defined(PASSBAND_PRIMITIVES_IIR_DIRECT_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_IIR_DIRECT_INL_H_
#undef PASSBAND_PRIMITIVES_IIR_DIRECT_INL_H_
#else
#define PASSBAND_PRIMITIVES_IIR_DIRECT_INL_H_
#endif

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

#include "hwy/highway.h"
#include "passband/primitives/iir_direct_internal.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;
using detail::IirDirect;
using detail::IirDirectState;

// For lambdas that stand for lines of the function around them.
#undef PASSBAND_UNFOLD
#define PASSBAND_UNFOLD HWY_ATTR __attribute__((always_inline))

constexpr double kSilence = 0x1p-1010;   // products with taps down to 2^-12 stay normal numbers
constexpr std::size_t kInRegisters = 8;  // highest order of the filters that keep their sums in registers
constexpr std::size_t kScalar = 15;      // older outputs than that are summed for several outputs together
constexpr std::size_t kChunk = 128;      // samples that a block is walked through with
constexpr std::size_t kGroup = 16;       // samples whose sums over the input are formed together

template <Element T>
constexpr std::size_t kParts = sizeof(T) / sizeof(RealOf<T>);

// What the input contributes to an output: s, f and c of iir_direct_internal.h.
template <class V>
struct Sums {
  V s, f, c;
};
template <std::size_t kCount>
struct SumsInMemory {
  HWY_ALIGN_MAX double s[kCount];
  HWY_ALIGN_MAX double f[kCount];
  HWY_ALIGN_MAX double c[kCount];

  template <class D>
  HWY_INLINE void Store(D d, std::size_t i, const Sums<hn::Vec<D>>& sums) {
    hn::StoreU(sums.s, d, s + i);
    hn::StoreU(sums.f, d, f + i);
    hn::StoreU(sums.c, d, c + i);
  }
};

// Calls body(k) for k = kFirst, kFirst - 1, .. kLast as compile-time constants.
template <std::size_t kFirst, std::size_t kLast, class Body>
HWY_INLINE void CountDown(const Body& body) {
  if constexpr (kFirst >= kLast) {
    body(std::integral_constant<std::size_t, kFirst>());
    CountDown<kFirst - 1, kLast>(body);
  }
}

// The sum of two products; what rounding takes from it is added to `lost`. `sum` may hold anything but has been rounded
// once.
template <class V>
HWY_INLINE V AddProduct(V tap, V x, V sum, V& lost) {
  const V product = hn::Mul(tap, x);
  const V total = hn::Add(sum, product);
  const V product_seen = hn::Sub(total, sum);
  const V sum_lost = hn::Sub(sum, hn::Sub(total, product_seen));
  const V product_lost = hn::Add(hn::Sub(product, product_seen), hn::MulSub(tap, x, product));
  lost = hn::Add(lost, hn::Add(sum_lost, product_lost));
  return total;
}

// The sums of the outputs at the elements from `x` on, whose inputs are `newest`. kOrder = N; kInRegisters + 1 for all
// orders from there on. A filter that keeps its sums in registers takes s for the output N samples later.
template <std::size_t kParts, std::size_t kOrder, class D, class V = hn::Vec<D>>
HWY_INLINE Sums<V> SumInputs(D d, const IirDirect& filter, const double* x, V newest) {
  const std::size_t order = kOrder > kInRegisters ? filter.feedback : kOrder;
  const std::size_t ahead = kOrder > 2 && kOrder <= kInRegisters ? kOrder : 0;
  Sums<V> sums;
  sums.s = hn::Zero(d);
  for (std::size_t k = filter.forward; k > std::max<std::size_t>(order, 2); --k) {
    sums.s = hn::MulAdd(hn::Set(d, filter.b[k]), hn::LoadU(d, x - kParts * (k - ahead)), sums.s);
  }
  if (kOrder > 2) {
    const V input = ahead > 0 ? newest : hn::LoadU(d, x - kParts * order);
    sums.s = hn::MulAdd(hn::Set(d, filter.b[order]), input, sums.s);
  }
  const V b0 = hn::Set(d, filter.b[0]);
  sums.f = hn::Mul(b0, newest);
  sums.c = hn::MulSub(b0, newest, sums.f);
  // Without feedback an input must not reach further than the taps do, be it a NaN.
  const std::size_t last = kOrder > 0 ? 2 : std::min<std::size_t>(filter.forward, 2);
  for (std::size_t k = 1; k <= last; ++k) {
    sums.f = AddProduct(hn::Set(d, filter.b[k]), hn::LoadU(d, x - kParts * k), sums.f, sums.c);
  }
  // An infinite sum has lost nothing that could be made up for.
  const V zero = hn::Zero(d);
  sums.c = hn::IfThenElseZero(hn::Eq(hn::Sub(sums.c, sums.c), zero), sums.c);
  return sums;
}

template <std::size_t kParts, std::size_t kOrder>
HWY_INLINE void SumInputs(const IirDirect& filter, std::size_t place, std::size_t count,
                          SumsInMemory<kParts * kGroup>& sums) {
  const hn::ScalableTag<double> d;
  const hn::CappedTag<double, 1> one;
  const double* const x = filter.x + kParts * place;
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= kParts * count; i += hn::Lanes(d)) {
    sums.Store(d, i, SumInputs<kParts, kOrder>(d, filter, x + i, hn::LoadU(d, x + i)));
  }
  for (; i < kParts * count; ++i) {
    sums.Store(one, i, SumInputs<kParts, kOrder>(one, filter, x + i, hn::LoadU(one, x + i)));
  }
}

// The operations of the recursion on one part of the samples: plain numbers, which take operands from memory.
struct OnePart {
  using V = double;
  static constexpr std::size_t kWidth = 1;

  static HWY_INLINE V Load(const double* p) { return *p; }
  static HWY_INLINE void Store(V v, double* p) { *p = v; }
  static HWY_INLINE V Set(double v) { return v; }
  static HWY_INLINE V Add(V a, V b) { return a + b; }
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
  static HWY_INLINE V MulAdd(V a, V b, V c) { return __builtin_fma(a, b, c); }
  static HWY_INLINE V NegMulAdd(V a, V b, V c) { return __builtin_fma(-a, b, c); }
#else
  static HWY_INLINE V MulAdd(V a, V b, V c) { return c + a * b; }
  static HWY_INLINE V NegMulAdd(V a, V b, V c) { return c - a * b; }
#endif
  // An output that is too small becomes 0. A branch takes no time in normal work.
  static HWY_INLINE V Audible(V y) {
    if (HWY_LIKELY(std::abs(y) >= kSilence)) return y;
    return y == y ? 0 : y;
  }
};

// On both parts of complex samples, where the processor has such vectors.
struct BothParts {
  using D = hn::CappedTag<double, 2>;
  using V = hn::Vec<D>;
  static constexpr std::size_t kWidth = hn::MaxLanes(D());

  static HWY_INLINE V Load(const double* p) { return hn::LoadU(D(), p); }
  static HWY_INLINE void Store(V v, double* p) { hn::StoreU(v, D(), p); }
  static HWY_INLINE V Set(double v) { return hn::Set(D(), v); }
  static HWY_INLINE V Add(V a, V b) { return hn::Add(a, b); }
  static HWY_INLINE V MulAdd(V a, V b, V c) { return hn::MulAdd(a, b, c); }
  static HWY_INLINE V NegMulAdd(V a, V b, V c) { return hn::NegMulAdd(a, b, c); }
  static HWY_INLINE V Audible(V y) {
    const V silence = Set(kSilence);
    if (HWY_LIKELY(hn::AllTrue(D(), hn::Or(hn::Ge(hn::Abs(y), silence), hn::Eq(y, hn::Zero(D())))))) return y;
    return hn::IfThenZeroElse(hn::Lt(hn::Abs(y), silence), y);
  }
};

template <std::size_t kParts>
using Operations = std::conditional_t<kParts == 2 && BothParts::kWidth == 2, BothParts, OnePart>;

// The recursion of a filter of low order N = kOrder. As soon as an output is there, its terms enter the sums s of the N
// next outputs: coming[i] is the sum of output n + i up to the delay 3, sums[k] that of output n + k before the terms of
// delay k.
template <std::size_t kParts, std::size_t kOrder>
class Recursion {
  using Op = Operations<kParts>;
  using V = typename Op::V;
  static constexpr std::size_t kTaps = std::max<std::size_t>(kOrder, 2);

 public:
  HWY_INLINE Recursion(const IirDirect& filter, std::size_t part) : held_(filter.held + part) {
    past1_ = Op::Load(held_);
    past2_ = Op::Load(held_ + kParts);
    if constexpr (kOrder > 2) {
      CountDown<3, 1>([&](auto i) PASSBAND_UNFOLD { coming_[i - 1] = Op::Load(held_ + kParts * (1 + i)); });
    }
    CountDown<kOrder, 1>([&](auto k) PASSBAND_UNFOLD {
      a_[k] = Op::Set(filter.a[k]);
      b_[k] = Op::Set(filter.b[k]);
      if constexpr (k > 2) sums_[k] = Op::Load(held_ + kParts * (2 + k));
    });
  }

  // y[n] for the input x[n]; s, f, c as in Sums.
  HWY_INLINE void Step(const double* x, const double* s, const double* f, const double* c, double* y) {
    V sum = kOrder > 2 ? coming_[0] : Op::Load(s);
    if constexpr (kOrder > 1) sum = Op::NegMulAdd(a_[2], past2_, sum);
    sum = Op::Add(sum, Op::Load(c));
    if constexpr (kOrder > 0) sum = Op::NegMulAdd(a_[1], past1_, sum);
    past2_ = past1_;
    past1_ = Op::Audible(Op::Add(sum, Op::Load(f)));
    Op::Store(past1_, y);
    if constexpr (kOrder > 2) {
      coming_[0] = coming_[1];
      coming_[1] = coming_[2];
      const V input = Op::Load(x);
      // From the lowest k on: every sum is read before the next one takes its place.
      CountDown<kOrder, 3>([&](auto down) PASSBAND_UNFOLD {
        constexpr std::size_t k = kOrder + 3 - down;
        const V before = k == kOrder ? Op::Load(s) : Op::MulAdd(b_[k], input, sums_[k]);
        (k == 3 ? coming_[2] : sums_[k - 1]) = Op::NegMulAdd(a_[k], past1_, before);
      });
    }
  }

  HWY_INLINE void Keep() const {
    Op::Store(past1_, held_);
    Op::Store(past2_, held_ + kParts);
    if constexpr (kOrder > 2) {
      CountDown<3, 1>([&](auto i) PASSBAND_UNFOLD { Op::Store(coming_[i - 1], held_ + kParts * (1 + i)); });
    }
    CountDown<kOrder, 3>([&](auto k) PASSBAND_UNFOLD { Op::Store(sums_[k], held_ + kParts * (2 + k)); });
  }

 private:
  double* held_;
  V past1_, past2_;
  V coming_[3];
  V sums_[kTaps + 1];
  V a_[kTaps + 1];
  V b_[kTaps + 1];
};

// The part(s) of the next `count` outputs that begin at element `part` of a sample, for low orders.
template <std::size_t kParts, std::size_t kOrder>
void RunInRegisters(const IirDirect& filter, std::size_t part, std::size_t count) {
  Recursion<kParts, kOrder> recursion(filter, part);
  // Ahead by one group: what has just been stored in long vectors is slow to load in short ones.
  SumsInMemory<kParts * kGroup> sums[2];
  const auto sum = [&](std::size_t begin, SumsInMemory<kParts * kGroup>& group) PASSBAND_UNFOLD {
    SumInputs<kParts, kOrder>(filter, filter.place + begin, std::min(kGroup, count - begin), group);
  };
  sum(0, sums[0]);
  const double* x = filter.x + kParts * filter.place + part;
  double* y = filter.y + kParts * filter.place + part;
  for (std::size_t done = 0; done < count; done += kGroup) {
    const auto& group = sums[done / kGroup % 2];
    if (count - done > kGroup) sum(done + kGroup, sums[(done / kGroup + 1) % 2]);
    const auto step = [&](std::size_t n) PASSBAND_UNFOLD {
      const std::size_t i = kParts * n;
      recursion.Step(x + i, group.s + i + part, group.f + i + part, group.c + i + part, y + i);
    };
    const std::size_t len = std::min(kGroup, count - done);
    std::size_t n = 0;
    for (; n + 4 <= len; n += 4) {
      step(n);
      step(n + 1);
      step(n + 2);
      step(n + 3);
    }
    for (; n < len; ++n) step(n);
    x += kParts * len;
    y += kParts * len;
  }
  recursion.Keep();
}

// The sums of the outputs from `element` of the line on, with the terms k = N .. kScalar + 1 added. Vectors hold at most
// kScalar + 1 outputs: the ones that they take must be there.
template <std::size_t kParts, class D, class V = hn::Vec<D>>
HWY_INLINE V AddOldOutputs(D d, const IirDirect& filter, std::size_t element, V s) {
  const double* const x = filter.x + element;
  const double* const y = filter.y + element;
  for (std::size_t k = filter.feedback; k > kScalar; --k) {
    s = hn::NegMulAdd(hn::Set(d, filter.a[k]), hn::LoadU(d, y - kParts * k), s);
    s = hn::MulAdd(hn::Set(d, filter.b[k - 1]), hn::LoadU(d, x - kParts * (k - 1)), s);
  }
  return s;
}

// The output at `element` of the line, from the outputs in the line, for high orders.
template <std::size_t kParts>
HWY_INLINE void StepInLine(const IirDirect& filter, std::size_t element, const double* s, const double* f,
                           const double* c) {
  using Op = Operations<kParts>;
  const double* const x = filter.x + element;
  double* const y = filter.y + element;
  auto sum = Op::Load(s);
  const auto subtract = [&](std::size_t k) PASSBAND_UNFOLD {
    sum = Op::NegMulAdd(Op::Set(filter.a[k]), Op::Load(y - kParts * k), sum);
  };
  for (std::size_t k = std::min(filter.feedback, kScalar); k > 3; --k) {
    subtract(k);
    sum = Op::MulAdd(Op::Set(filter.b[k - 1]), Op::Load(x - kParts * (k - 1)), sum);
  }
  subtract(3);
  subtract(2);
  sum = Op::Add(sum, Op::Load(c));
  subtract(1);
  Op::Store(Op::Audible(Op::Add(sum, Op::Load(f))), y);
}

template <std::size_t kParts>
void RunInLine(const IirDirect& filter, std::size_t count) {
  constexpr std::size_t kTogether = 8;
  SumsInMemory<kParts * kGroup> sums;
  for (std::size_t done = 0; done < count; done += kTogether) {
    const std::size_t len = std::min(kTogether, count - done);
    const std::size_t place = filter.place + done;
    SumInputs<kParts, kInRegisters + 1>(filter, place, len, sums);
    const auto add = [&](auto tag) HWY_ATTR {
      for (std::size_t i = 0; i < kParts * len; i += hn::Lanes(tag)) {
        const auto s = hn::LoadU(tag, sums.s + i);
        hn::StoreU(AddOldOutputs<kParts>(tag, filter, kParts * place + i, s), tag, sums.s + i);
      }
    };
    if (len == kTogether) {
      add(hn::CappedTag<double, kTogether>());
    } else {
      add(hn::CappedTag<double, 1>());
    }
    for (std::size_t i = 0; i < kParts * len; i += Operations<kParts>::kWidth) {
      StepInLine<kParts>(filter, kParts * place + i, sums.s + i, sums.f + i, sums.c + i);
    }
  }
}

// Moves the history to the beginning of the lines, when they are full.
template <std::size_t kParts>
HWY_INLINE void MakeRoom(IirDirect& filter) {
  if (HWY_LIKELY(filter.place < filter.history + detail::kIirDirectLine)) return;
  for (double* const line : {filter.x, filter.y}) {
    std::memmove(line, line + kParts * detail::kIirDirectLine, kParts * filter.history * sizeof(double));
  }
  filter.place = filter.history;
}

// Inputs too small for the recursion to keep enter as 0: their products would be subnormal numbers.
HWY_INLINE double Widen(double x) { return x > -kSilence && x < kSilence ? 0.0 : x; }
HWY_INLINE double Widen(float x) { return static_cast<double>(x); }

HWY_INLINE void Narrow(double y, double& result) { result = y; }
HWY_INLINE void Narrow(double y, float& result) {
  constexpr double kSmallest = 0x1p-126;
  result = y > -kSmallest && y < kSmallest ? 0.0F : static_cast<float>(y);
}

template <class R>
void Take(const R* src, std::size_t count, double* line) {
  const hn::ScalableTag<double> d;
  const hn::Rebind<R, hn::ScalableTag<double>> narrow;
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    if constexpr (std::is_same_v<R, double>) {
      const auto x = hn::LoadU(d, src + i);
      hn::StoreU(hn::IfThenZeroElse(hn::Lt(hn::Abs(x), hn::Set(d, kSilence)), x), d, line + i);
    } else {
      hn::StoreU(hn::PromoteTo(d, hn::LoadU(narrow, src + i)), d, line + i);
    }
  }
  for (; i < count; ++i) line[i] = Widen(src[i]);
}

template <class R>
void Give(const double* line, std::size_t count, R* dst) {
  std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128  // whose conversion stops at the largest float
  const hn::ScalableTag<double> d;
  const hn::Rebind<R, hn::ScalableTag<double>> narrow;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    const auto y = hn::LoadU(d, line + i);
    if constexpr (std::is_same_v<R, double>) {
      hn::StoreU(y, d, dst + i);
    } else {
      const auto audible = hn::IfThenZeroElse(hn::Lt(hn::Abs(y), hn::Set(d, 0x1p-126)), y);
      hn::StoreU(hn::DemoteTo(narrow, audible), narrow, dst + i);
    }
  }
#endif
  for (; i < count; ++i) Narrow(line[i], dst[i]);
}

template <Element T, std::size_t kOrder>
void FilterBlock(IirStateOf<T>& state, const T* src, T* dst, std::int32_t count) noexcept {
  using R = RealOf<T>;
  constexpr std::size_t kP = kParts<T>;
  IirDirect& filter = static_cast<IirDirectState<T>&>(state).direct;
  for (auto left = static_cast<std::size_t>(count); left > 0;) {
    MakeRoom<kP>(filter);
    const std::size_t len = std::min({left, kChunk, filter.history + detail::kIirDirectLine - filter.place});
    Take(reinterpret_cast<const R*>(src), kP * len, filter.x + kP * filter.place);
    if constexpr (kOrder > kInRegisters) {
      RunInLine<kP>(filter, len);
    } else {
      for (std::size_t part = 0; part < kP; part += Operations<kP>::kWidth) {
        RunInRegisters<kP, kOrder>(filter, part, len);
      }
    }
    Give(filter.y + kP * filter.place, kP * len, reinterpret_cast<R*>(dst));
    filter.place += len;
    src += len;
    dst += len;
    left -= len;
  }
}

template <Element T, std::size_t kOrder>
T FilterOne(IirStateOf<T>& state, T input) noexcept {
  using R = RealOf<T>;
  constexpr std::size_t kP = kParts<T>;
  const hn::CappedTag<double, kP> d;
  IirDirect& filter = static_cast<IirDirectState<T>&>(state).direct;
  MakeRoom<kP>(filter);
  double* const x = filter.x + kP * filter.place;
  double* const y = filter.y + kP * filter.place;
  R parts[kP];
  std::memcpy(parts, &input, sizeof(T));
  for (std::size_t part = 0; part < kP; ++part) x[part] = Widen(parts[part]);
  SumsInMemory<kP> sums;
  for (std::size_t part = 0; part < kP; part += hn::Lanes(d)) {
    auto of_input = SumInputs<kP, kOrder>(d, filter, x + part, hn::LoadU(d, x + part));
    if constexpr (kOrder > kInRegisters) {
      of_input.s = AddOldOutputs<kP>(d, filter, kP * filter.place + part, of_input.s);
    }
    sums.Store(d, part, of_input);
  }
  for (std::size_t part = 0; part < kP; part += Operations<kP>::kWidth) {
    if constexpr (kOrder > kInRegisters) {
      StepInLine<kP>(filter, kP * filter.place + part, sums.s + part, sums.f + part, sums.c + part);
    } else {
      Recursion<kP, kOrder> recursion(filter, part);
      recursion.Step(x + part, sums.s + part, sums.f + part, sums.c + part, y + part);
      recursion.Keep();
    }
  }
  for (std::size_t part = 0; part < kP; ++part) Narrow(y[part], parts[part]);
  ++filter.place;
  T output;
  std::memcpy(&output, parts, sizeof(T));
  return output;
}

template <Element T>
void SetFunctions(IirDirectState<T>& state) {
  [&]<std::size_t... kOrder>(std::index_sequence<kOrder...>) {
    static constexpr decltype(state.filter) kFilters[] = {&FilterBlock<T, kOrder>...};
    static constexpr decltype(state.one) kOnes[] = {&FilterOne<T, kOrder>...};
    const std::size_t form = std::min(state.direct.feedback, kInRegisters + 1);
    state.filter = kFilters[form];
    state.one = kOnes[form];
  }
  (std::make_index_sequence<kInRegisters + 2>());
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
