#include <algorithm>
#include <span>
#include <string_view>

#include "passband/vector_core/elementwise_internal.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/quotient_internal.h"
#include "passband/vector_core/vec.h"

namespace passband {
namespace {

// The operations on a pair of elements. The second operand is an element of the same type or, where a constant or a
// real vector may stand, a real one beside a complex one.
struct Plus {
  template <Element T>
  T operator()(T a, T b) const {
    return a + b;
  }
  template <RealElement R>
  BasicCplx<R> operator()(BasicCplx<R> a, R b) const {
    return {a.Re + b, a.Im};
  }
};

struct Times {
  template <Element T>
  T operator()(T a, T b) const {
    return a * b;
  }
  template <RealElement R>
  BasicCplx<R> operator()(BasicCplx<R> a, R b) const {
    return a * b;
  }
};

struct Minus {
  template <Element T>
  T operator()(T a, T b) const {
    return a - b;
  }
};

struct Over {
  template <Element T>
  T operator()(T a, T b) const {
    return detail::Quotient(a, b);
  }
};

struct TimesConjugate {
  template <Element T>
  T operator()(T a, T b) const {
    if constexpr (IsComplex<T>) {
      return a * passband::Conj(b);
    } else {
      return a * b;
    }
  }
};

// Takes the constant for the element.
struct Constant {
  template <Element T, Element V>
  T operator()(T, V value) const {
    return detail::Convert<T>(value);
  }
};

// True when `b` is real, `a` complex and both single or both double: what `Mul` takes beside equal precisions.
bool IsRealBesideComplex(const TDense& a, const TDense& b) {
  return a.Complex() && !b.Complex() && a.IsDouble() == b.IsDouble();
}

constexpr std::string_view kComplexValue = "a complex value on real elements";

void CheckValue(const TDense& x, TCplx value) {
  if (!x.Complex() && !(value.Im == 0)) ERaise(kComplexValue);
}

}  // namespace

template <class F>
void TDense::ApplyConstant(std::int32_t index, std::int32_t len, TCplx value, F f) {
  CheckValue(*this, value);
  ForAny(*this, [&]<Element T>(ElementTag<T>) {
    using R = RealOf<T>;
    const auto x = detail::Stretch<T>(*this, index, len);
    const auto run = [&](auto constant) {
      detail::Loop(
          x.size(), x.data(), [f, constant](T element) { return f(element, constant); }, x.data());
    };
    if constexpr (IsComplex<T>) {
      if (value.Im != 0) return run(static_cast<T>(value));
    }
    run(static_cast<R>(value.Re));
  });
}

// Constants

void TDense::SetVal(double Value) { ApplyConstant(0, length_, Cplx(Value), Constant{}); }
void TDense::SetVal(TCplx Value) { ApplyConstant(0, length_, Value, Constant{}); }
void TDense::SetZero() { SetVal(0.0); }
void TDense::Offset(double Value) { ApplyConstant(0, length_, Cplx(Value), Plus{}); }
void TDense::Offset(TCplx Value) { ApplyConstant(0, length_, Value, Plus{}); }
void TDense::Scale(double Factor) { ApplyConstant(0, length_, Cplx(Factor), Times{}); }
void TDense::Scale(TCplx Factor) { ApplyConstant(0, length_, Factor, Times{}); }

void TVec::SetVal(double Value, std::int32_t Index, std::int32_t Len) { SetVal(Cplx(Value), Index, Len); }
void TVec::SetVal(TCplx Value, std::int32_t Index, std::int32_t Len) {
  ValidateParams(Index, Len);
  ApplyConstant(Index, Len, Value, Constant{});
}
void TVec::SetZero(std::int32_t Index, std::int32_t Len) { SetVal(0.0, Index, Len); }
void TVec::Offset(double Value, std::int32_t Index, std::int32_t Len) { Offset(Cplx(Value), Index, Len); }
void TVec::Offset(TCplx Value, std::int32_t Index, std::int32_t Len) {
  ValidateParams(Index, Len);
  ApplyConstant(Index, Len, Value, Plus{});
}
void TVec::Scale(double Factor, std::int32_t Index, std::int32_t Len) { Scale(Cplx(Factor), Index, Len); }
void TVec::Scale(TCplx Factor, std::int32_t Index, std::int32_t Len) {
  ValidateParams(Index, Len);
  ApplyConstant(Index, Len, Factor, Times{});
}

void TDense::SubFrom(double Value) { SubFrom(Value, *this); }
void TDense::SubFrom(double Value, const TDense& Src) {
  MapAny(Src, [Value]<Element T>(T x) -> T {
    const auto value = static_cast<RealOf<T>>(Value);
    if constexpr (IsComplex<T>) {
      return CSub(value, x);
    } else {
      return value - x;
    }
  });
}

void TDense::Mul(const TDense& Src, double Factor) {
  MapAny(Src, [Factor]<Element T>(T x) { return x * static_cast<RealOf<T>>(Factor); });
}

// Two operands of the same shape

void TDense::Add(const TDense& Vec) { Combine(*this, Vec, Plus{}); }
void TDense::Add(const TDense& Vec1, const TDense& Vec2) { Combine(Vec1, Vec2, Plus{}); }
void TDense::Sub(const TDense& Vec) { Combine(*this, Vec, Minus{}); }
void TDense::Sub(const TDense& Vec1, const TDense& Vec2) { Combine(Vec1, Vec2, Minus{}); }
void TDense::Divide(const TDense& Vec) { Combine(*this, Vec, Over{}); }
void TDense::Divide(const TDense& Vec1, const TDense& Vec2) { Combine(Vec1, Vec2, Over{}); }
void TDense::ConjMul(const TDense& Vec) { Combine(*this, Vec, TimesConjugate{}); }

void TDense::Mul(const TDense& Vec) {
  if (!IsRealBesideComplex(*this, Vec)) return Combine(*this, Vec, Times{});
  CheckFits(Vec);
  ForReal(*this, [&]<Element R>(ElementTag<R>) {
    const std::span<const ComplexOf<R>> own = Elements<ComplexOf<R>>();
    Map<ComplexOf<R>>(*this, Times{}, own, Vec.Elements<R>());
  });
}

void TDense::AddScaled(const TDense& Vec, double Factor) {
  Combine(*this, Vec, [Factor]<Element T>(T a, T b) { return a + static_cast<RealOf<T>>(Factor) * b; });
}

void TVec::Mul(const TVec& Vec1, const TVec& Vec2) { Combine(Vec1, Vec2, Times{}); }

// Stretches

template <class F>
void TVec::CombineStretches(const TVec& a, const TVec& b, std::int32_t a_index, std::int32_t b_index,
                            std::int32_t index, std::int32_t len, F f) {
  std::int32_t len_a = len;
  std::int32_t len_b = len;
  ValidateParams(a, a_index, index, len_a);
  ValidateParams(b, b_index, index, len_b);
  len = std::min(len_a, len_b);
  CheckSamePrecision(a);
  CheckSamePrecision(b);
  ForAny(*this, [&]<Element T>(ElementTag<T>) {
    detail::Transform(detail::Stretch<T>(*this, index, len), f, detail::Stretch<T>(a, a_index, len),
                      detail::Stretch<T>(b, b_index, len));
  });
}

void TVec::Add(const TVec& Vec, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len) {
  CombineStretches(*this, Vec, Index, VecIndex, Index, Len, Plus{});
}
void TVec::Add(const TVec& Vec1, const TVec& Vec2, std::int32_t Vec1Index, std::int32_t Vec2Index, std::int32_t Index,
               std::int32_t Len) {
  CombineStretches(Vec1, Vec2, Vec1Index, Vec2Index, Index, Len, Plus{});
}
void TVec::Sub(const TVec& Vec, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len) {
  CombineStretches(*this, Vec, Index, VecIndex, Index, Len, Minus{});
}
void TVec::Sub(const TVec& Vec1, const TVec& Vec2, std::int32_t Vec1Index, std::int32_t Vec2Index, std::int32_t Index,
               std::int32_t Len) {
  CombineStretches(Vec1, Vec2, Vec1Index, Vec2Index, Index, Len, Minus{});
}
void TVec::Mul(const TVec& Vec1, const TVec& Vec2, std::int32_t Vec1Index, std::int32_t Vec2Index, std::int32_t Index,
               std::int32_t Len) {
  CombineStretches(Vec1, Vec2, Vec1Index, Vec2Index, Index, Len, Times{});
}
void TVec::Divide(const TVec& Vec, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len) {
  CombineStretches(*this, Vec, Index, VecIndex, Index, Len, Over{});
}
void TVec::Divide(const TVec& Vec1, const TVec& Vec2, std::int32_t Vec1Index, std::int32_t Vec2Index,
                  std::int32_t Index, std::int32_t Len) {
  CombineStretches(Vec1, Vec2, Vec1Index, Vec2Index, Index, Len, Over{});
}
void TVec::ConjMul(const TVec& Vec, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len) {
  CombineStretches(*this, Vec, Index, VecIndex, Index, Len, TimesConjugate{});
}

void TVec::Mul(const TVec& Vec, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len) {
  if (!IsRealBesideComplex(*this, Vec)) {
    return CombineStretches(*this, Vec, Index, VecIndex, Index, Len, Times{});
  }
  ValidateParams(Vec, VecIndex, Index, Len);
  ForReal(*this, [&]<Element R>(ElementTag<R>) {
    const auto y = detail::Stretch<ComplexOf<R>>(*this, Index, Len);
    detail::Transform(y, Times{}, std::span<const ComplexOf<R>>(y), detail::Stretch<R>(Vec, VecIndex, Len));
  });
}

template <class Value>
void TVec::AddValue(const TVec& vec, Value value, std::int32_t vec_index, std::int32_t index, std::int32_t len) {
  ValidateParams(vec, vec_index, index, len);
  CheckSamePrecision(vec);
  ForAny(*this, [&]<Element T>(ElementTag<T>) {
    const auto constant = detail::Convert<T>(value);
    detail::Transform(
        detail::Stretch<T>(*this, index, len), [constant](T x) { return Plus{}(x, constant); },
        detail::Stretch<T>(vec, vec_index, len));
  });
}

void TVec::Add(const TVec& Vec, double Value, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len) {
  AddValue(Vec, Value, VecIndex, Index, Len);
}
void TVec::Add(const TVec& Vec, TCplx Value, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len) {
  CheckValue(*this, Value);
  AddValue(Vec, Value, VecIndex, Index, Len);
}

}  // namespace passband
