// The one place where the precision of run-time typed data becomes a type.
#pragma once

#include <utility>

#include "passband/vector_core/dense.h"

namespace passband {

/// Calls `body(ElementTag<T>{})` with the element type T of `precision`.
template <class Body>
decltype(auto) ForAny(TMtxFloatPrecision precision, Body&& body) {
  switch (precision) {
    case TMtxFloatPrecision::SingleReal:
      return std::forward<Body>(body)(ElementTag<float>{});
    case TMtxFloatPrecision::SingleComplex:
      return std::forward<Body>(body)(ElementTag<TSCplx>{});
    case TMtxFloatPrecision::DoubleComplex:
      return std::forward<Body>(body)(ElementTag<TCplx>{});
    case TMtxFloatPrecision::DoubleReal:
      break;
  }
  return std::forward<Body>(body)(ElementTag<double>{});
}
template <class Body>
decltype(auto) ForAny(const TDense& data, Body&& body) {
  return ForAny(data.FloatPrecision(), std::forward<Body>(body));
}

/// Calls `body(ElementTag<R>{})` with the real type R of the data, complex or not.
template <class Body>
decltype(auto) ForReal(bool is_double, Body&& body) {
  if (is_double) return std::forward<Body>(body)(ElementTag<double>{});
  return std::forward<Body>(body)(ElementTag<float>{});
}
template <class Body>
decltype(auto) ForReal(const TDense& data, Body&& body) {
  return ForReal(data.IsDouble(), std::forward<Body>(body));
}

}  // namespace passband
