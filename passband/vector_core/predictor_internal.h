// The step that linear prediction takes from one order to the next.
#pragma once

#include <cstddef>
#include <span>

#include "passband/vector_core/double_data_internal.h"

namespace passband::detail {

constexpr double Conjugate(double x) { return x; }
constexpr TCplx Conjugate(TCplx z) { return Conj(z); }

/// Raises the order of a predictor a[0] = 1, a[1], ..., a[m - 1] to m by reflection coefficient k: a[m] = k, and
/// a[j] + k conj(a[m - j]) for j = 1 .. m - 1, in place from both ends.
template <DoubleElement T>
void RaiseOrder(std::span<T> a, std::size_t m, T k) {
  for (std::size_t i = 1, j = m - 1; i <= j; ++i, --j) {
    const T low = a[i];
    const T high = a[j];
    a[i] = low + k * Conjugate(high);
    if (i != j) a[j] = high + k * Conjugate(low);
  }
  a[m] = k;
}

}  // namespace passband::detail
