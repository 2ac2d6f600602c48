// The four element types of vectors and matrices, in the order of `TMtxFloatPrecision`, and what is derived from them.
#pragma once

#include <concepts>
#include <cstdint>
#include <tuple>

#include "passband/foundation/complex.h"

namespace passband {

/// Precision and complex flag of a vector or matrix as one value.
enum class TMtxFloatPrecision : std::uint8_t { SingleReal, DoubleReal, SingleComplex, DoubleComplex };

template <class T>
concept RealElement = std::same_as<T, float> || std::same_as<T, double>;
template <class T>
concept ComplexElement = std::same_as<T, TSCplx> || std::same_as<T, TCplx>;
template <class T>
concept Element = RealElement<T> || ComplexElement<T>;

template <Element T>
inline constexpr bool IsComplex = ComplexElement<T>;

namespace detail {
template <Element T>
struct ElementTraits {
  using Real = T;
  using Complex = BasicCplx<T>;
};
template <class R>
struct ElementTraits<BasicCplx<R>> {
  using Real = R;
  using Complex = BasicCplx<R>;
};
}  // namespace detail

/// The real type of an element's parts, and the complex type with such parts.
template <Element T>
using RealOf = typename detail::ElementTraits<T>::Real;
template <Element T>
using ComplexOf = typename detail::ElementTraits<T>::Complex;

constexpr TMtxFloatPrecision MakePrecision(bool complex, bool is_double) {
  using enum TMtxFloatPrecision;
  if (complex) return is_double ? DoubleComplex : SingleComplex;
  return is_double ? DoubleReal : SingleReal;
}
constexpr bool IsComplexPrecision(TMtxFloatPrecision precision) {
  return precision == TMtxFloatPrecision::SingleComplex || precision == TMtxFloatPrecision::DoubleComplex;
}
constexpr bool IsDoublePrecision(TMtxFloatPrecision precision) {
  return precision == TMtxFloatPrecision::DoubleReal || precision == TMtxFloatPrecision::DoubleComplex;
}

template <Element T>
inline constexpr TMtxFloatPrecision PrecisionOf = MakePrecision(IsComplex<T>, std::same_as<RealOf<T>, double>);

/// Tells a generic lambda its element type: `[&]<Element T>(ElementTag<T>) { ... }`.
template <Element T>
struct ElementTag {
  using Type = T;
};

/// One entry for each element type, found by its type: `std::get<Kernel<T>>(table)`.
template <template <class> class Entry>
using PerElement = std::tuple<Entry<float>, Entry<double>, Entry<TSCplx>, Entry<TCplx>>;

}  // namespace passband
