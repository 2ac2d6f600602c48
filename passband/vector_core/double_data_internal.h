// Run-time typed data as double precision elements and back: the numerical routines compute in double throughout and
// round once.
#pragma once

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <type_traits>

#include "passband/foundation/text.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/matrix_types.h"
#include "passband/vector_core/mtx.h"

namespace passband::detail {

template <class T>
concept DoubleElement = std::same_as<T, double> || std::same_as<T, TCplx>;

inline bool IsFiniteElement(double x) { return std::isfinite(x); }
inline bool IsFiniteElement(TCplx z) { return std::isfinite(z.Re) && std::isfinite(z.Im); }

template <DoubleElement To, Element From>
constexpr To WidenElement(From x) {
  if constexpr (IsComplex<From> && IsComplex<To>) {
    return static_cast<TCplx>(x);
  } else if constexpr (IsComplex<From>) {
    return static_cast<double>(x.Re);
  } else if constexpr (IsComplex<To>) {
    return {static_cast<double>(x), 0.0};
  } else {
    return static_cast<double>(x);
  }
}

/// The elements of `src` in `out`, which is as long.
template <DoubleElement T>
void Widen(const TDense& src, std::span<T> out) {
  ForAny(src, [&]<Element S>(ElementTag<S>) {
    const auto x = src.Elements<S>();
    std::transform(x.begin(), x.end(), out.begin(), WidenElement<T, S>);
  });
}

/// Writes `values` into `dst`, which is as long and complex when they are, with one rounding.
template <DoubleElement T>
void StoreRounded(std::span<const T> values, TDense& dst) {
  ForReal(dst, [&]<class R>(ElementTag<R>) {
    using To = std::conditional_t<IsComplex<T>, ComplexOf<R>, R>;
    std::transform(values.begin(), values.end(), dst.Elements<To>().begin(), [](T x) { return static_cast<To>(x); });
  });
}
template <DoubleElement T>
void StoreRounded(std::span<T> values, TDense& dst) {
  StoreRounded(std::span<const T>(values), dst);
}

inline bool AllFinite(const TDense& x) {
  return ForAny(x, [&]<Element T>(ElementTag<T>) {
    return std::ranges::all_of(x.Elements<T>(), [](T e) {
      return IsFiniteElement(WidenElement<std::conditional_t<IsComplex<T>, TCplx, double>>(e));
    });
  });
}

/// Real and complex operands may be mixed, single and double ones may not.
inline void RequireSameIsDouble(const TDense& a, const TDense& b) {
  if (a.IsDouble() == b.IsDouble()) return;
  ERaise("the operands have precisions " + PrecisionToStr(a.FloatPrecision()) + " and " +
         PrecisionToStr(b.FloatPrecision()));
}

/// Calls `body(ElementTag<TCplx>{})` when `complex`, else `body(ElementTag<double>{})`.
template <class Body>
decltype(auto) ForDouble(bool complex, Body&& body) {
  if (complex) return std::forward<Body>(body)(ElementTag<TCplx>{});
  return std::forward<Body>(body)(ElementTag<double>{});
}

/// "2 x 3".
inline std::string ShapeText(std::int32_t rows, std::int32_t cols) {
  return std::to_string(rows) + " x " + std::to_string(cols);
}

/// Fills the triangle that the type of a square matrix leaves open.
template <DoubleElement T>
void FillByType(std::span<T> a, std::size_t n, TMtxType type) {
  for (std::size_t i = 0; i < n; ++i) {
    if constexpr (IsComplex<T>) {
      if (type == TMtxType::Hermitian) a[i * n + i].Im = 0;
    }
    for (std::size_t j = i + 1; j < n; ++j) {
      T& upper = a[i * n + j];
      T& lower = a[j * n + i];
      if (type == TMtxType::Symmetric) upper = lower;
      if (type == TMtxType::LowerTriangular) upper = T{};
      if (type == TMtxType::UpperTriangular) lower = T{};
      if (type == TMtxType::Hermitian) {
        if constexpr (IsComplex<T>) {
          upper = Conj(lower);
        } else {
          upper = lower;
        }
      }
    }
  }
}

/// `src` as a general matrix of T: itself when it is one already, else a copy in `work`. A matrix of another type than
/// the general one is square.
template <DoubleElement T>
const TMtx& FullMatrix(const TMtx& src, TMtxType type, TMtx& work) {
  if (type == TMtxType::General && src.FloatPrecision() == PrecisionOf<T>) return src;
  work.Size(src.Rows(), src.Cols(), PrecisionOf<T>);
  Widen(src, work.Elements<T>());
  if (type != TMtxType::General) FillByType(work.Elements<T>(), static_cast<std::size_t>(src.Rows()), type);
  return work;
}

}  // namespace passband::detail
