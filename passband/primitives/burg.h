// The walks of Burg's lattice over forward and backward prediction errors.
#pragma once

#include <cstdint>

#include "passband/foundation/complex.h"
#include "passband/foundation/element_types.h"
#include "passband/primitives/status.h"

namespace passband::primitives {

/// What the next reflection coefficient, -2 product / power, is made of: product = sum f[i + 1] conj(b[i]) and
/// power = sum |f[i + 1]|^2 + |b[i]|^2 over the pairs of one order.
struct BurgSums {
  TCplx product;
  double power = 0;
};

/// The sums over i = 0 .. count - 2 of forward errors f and backward errors b, `count` of each.
///
/// Elements are multiplied and added in their own precision, in lanes whose sums go to double every 64 vectors: rounding
/// errors stay about as large as that of one product, relative to the power, and hardly grow with the length. Fails with
/// BadSize (count < 0), NullPointer.
template <Element T>
Status BurgSum(const T* f, const T* b, std::int32_t count, BurgSums& sums) noexcept;

/// One stage of the lattice, with reflection coefficient k, and the sums for the stage after it in the same walk, so
/// that each array is read and written once a stage:
///   f_next[i] = f[i + 1] + k b[i], b_next[i] = b[i] + conj(k) f[i + 1], i = 0 .. count - 2,
/// and `next`, as by BurgSum, of these count - 1 errors. f_next may be f, and b_next may be b. Of real errors the real
/// part of k counts. Fails like BurgSum.
template <Element T>
Status BurgStage(const T* f, const T* b, std::int32_t count, TCplx k, T* f_next, T* b_next, BurgSums& next) noexcept;

}  // namespace passband::primitives
