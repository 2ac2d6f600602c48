// The one mechanism of element-wise operations: operands that may overlap the result, sizing, and the loop.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "passband/vector_core/dense.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband {
namespace detail {

/// The bytes of a result, to find out which operands writing it would disturb.
struct Memory {
  std::uintptr_t first = 0;
  std::uintptr_t last = 0;  // one past the end

  template <class T>
  explicit Memory(std::span<T> x) : first(reinterpret_cast<std::uintptr_t>(x.data())), last(first + x.size_bytes()) {}

  bool Overlaps(Memory other) const { return first < other.last && other.first < last; }
};

/// An operand as it was before the call: its own elements or, when these are about to be disturbed, a borrowed copy.
template <Element T>
class Operand {
 public:
  Operand(std::span<const T> x, bool disturbed) : first_(x.data()) {
    if (!disturbed) return;
    copy_.emplace();
    (*copy_)->Size(static_cast<std::int32_t>(x.size()), PrecisionOf<T>);
    const auto copied = (*copy_)->template Elements<T>();
    std::copy(x.begin(), x.end(), copied.begin());
    first_ = copied.data();
  }

  const T* First() const { return first_; }

 private:
  const T* first_;
  std::optional<Borrowed<TVec>> copy_;
};

/// True when writing elements of type To there spoils an x[k] that is still to be read. The same elements are no harm
/// when y[k] depends on x[k] alone.
template <Element To, Element From>
bool Disturbs(Memory result, std::span<const From> x, Reading reading) {
  const Memory operand(x);
  if (!result.Overlaps(operand)) return false;
  return reading == Reading::AnyOrder || result.first != operand.first || sizeof(To) != sizeof(From);
}

template <class To, class Value>
void Fill(std::size_t n, To* y, const Value& value) {
  for (std::size_t k = 0; k < n; ++k) y[k] = value(k);
}

/// y[k] = f(a[k]) or f(a[k], b[k]), k < n. An operand is either y itself or apart from it. The loops over y itself are
/// separate because the compilers vectorise only what they see to be apart, or to be the same.
template <class To, class F, class A>
void Loop(std::size_t n, To* y, F f, const A* a) {
  if constexpr (std::same_as<A, To>) {
    if (a == y) return Fill(n, y, [=](std::size_t k) { return f(y[k]); });
  }
  Fill(n, y, [=](std::size_t k) { return f(a[k]); });
}

template <class To, class F, class A, class B>
void Loop(std::size_t n, To* y, F f, const A* a, const B* b) {
  if constexpr (std::same_as<A, To>) {
    if (a == y) return Fill(n, y, [=](std::size_t k) { return f(y[k], b[k]); });
  }
  if constexpr (std::same_as<B, To>) {
    if (b == y) return Fill(n, y, [=](std::size_t k) { return f(a[k], y[k]); });
  }
  Fill(n, y, [=](std::size_t k) { return f(a[k], b[k]); });
}

/// Loop over stretches that may overlap in any way, as if all x had been read before.
template <Element To, class F, Element... From>
void Transform(std::span<To> y, F f, std::span<const From>... x) {
  [&](const Operand<From>&... held) {
    Loop(y.size(), y.data(), f, held.First()...);
  }(Operand<From>(x, Disturbs<To>(Memory(y), x, Reading::ElementByElement))...);
}

/// `len` elements from `index` on; they exist.
template <Element T>
std::span<T> Stretch(TDense& x, std::int32_t index, std::int32_t len) {
  return x.Elements<T>().subspan(static_cast<std::size_t>(index), static_cast<std::size_t>(len));
}
template <Element T>
std::span<const T> Stretch(const TDense& x, std::int32_t index, std::int32_t len) {
  return x.Elements<T>().subspan(static_cast<std::size_t>(index), static_cast<std::size_t>(len));
}

/// Elements as the reals that they lie in memory as: Re, Im, Re, Im, ... of complex ones.
template <class T>
auto Parts(std::span<T> x) {
  using E = std::remove_const_t<T>;
  using R = std::conditional_t<std::is_const_v<T>, const RealOf<E>, RealOf<E>>;
  return std::span<R>(reinterpret_cast<R*>(x.data()), x.size() * (sizeof(E) / sizeof(RealOf<E>)));
}

/// A number in another precision; real becomes complex with imaginary part 0.
template <Element To, Element From>
To Convert(From x) {
  using R = RealOf<To>;
  if constexpr (IsComplex<To> && IsComplex<From>) {
    return {static_cast<R>(x.Re), static_cast<R>(x.Im)};
  } else if constexpr (IsComplex<To>) {
    return {static_cast<R>(x), 0};
  } else if constexpr (IsComplex<From>) {
    return static_cast<R>(x.Re);
  } else {
    return static_cast<R>(x);
  }
}

inline void RequireReal(const TDense& x, std::string_view refusal) {
  if (x.Complex()) ERaise(refusal);
}

}  // namespace detail

template <Element To, class Write, Element... From>
void TDense::Rebuild(std::int32_t rows, std::int32_t cols, detail::Reading reading, Write write,
                     std::span<const From>... x) {
  const auto mine = ForAny(*this, [&]<Element T>(ElementTag<T>) { return detail::Memory(Elements<T>()); });
  const bool stays = rows == rows_ && cols == cols_ && precision_ == PrecisionOf<To>;
  if (!stays) reading = detail::Reading::AnyOrder;  // a new size may move the elements
  [&](const detail::Operand<From>&... held) {
    SetShape(rows, cols, PrecisionOf<To>);
    write(Elements<To>(), held.First()...);
  }(detail::Operand<From>(x, detail::Disturbs<To>(mine, x, reading))...);
}

template <Element To, class F, Element... From>
void TDense::Map(const TDense& like, F f, std::span<const From>... x) {
  const std::int32_t rows = kind_ == Kind::Matrix ? like.rows_ : 1;
  const std::int32_t cols = kind_ == Kind::Matrix ? like.cols_ : like.length_;
  const auto write = [&f](std::span<To> y, const From*... first) { detail::Loop(y.size(), y.data(), f, first...); };
  Rebuild<To>(rows, cols, detail::Reading::ElementByElement, write, x...);
}

template <class F>
void TDense::MapAny(const TDense& src, F f) {
  ForAny(src, [&]<Element T>(ElementTag<T>) { Map<decltype(f(T{}))>(src, f, src.Elements<T>()); });
}

template <class F>
void TDense::MapReal(const TDense& src, std::string_view refusal, F f) {
  detail::RequireReal(src, refusal);
  ForReal(src, [&]<Element R>(ElementTag<R>) { Map<decltype(f(R{}))>(src, f, src.Elements<R>()); });
}

template <class F>
void TDense::Combine(const TDense& a, const TDense& b, F f) {
  a.CheckFits(b);
  a.CheckSamePrecision(b);
  ForAny(a, [&]<Element T>(ElementTag<T>) { Map<T>(a, f, a.Elements<T>(), b.Elements<T>()); });
}

}  // namespace passband
