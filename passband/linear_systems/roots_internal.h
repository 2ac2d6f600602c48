// Zeros and poles of any precision as double complex numbers in work, and back.
#pragma once

#include <span>
#include <vector>

#include "passband/vector_core/vec.h"

namespace passband::LinearSystems::detail {

using Roots = std::vector<TCplx>;

/// The elements widened to double, real ones with imaginary part 0.
Roots ReadRoots(const TVec& v);

/// Sizes `v` to the roots, complex, and rounds them to the precision.
void WriteRoots(TVec& v, std::span<const TCplx> roots, bool is_double);

/// The tolerance within which the elements of `v` count as equal when they are paired: (n |v| 1e6 + 1) eps in double,
/// (n |v| 100 + 1) eps in single precision, |v| the Euclidean norm.
double PairingTolerance(const TVec& v);

/// Sorts a copy into conjugate pairs.
void PairRoots(const TVec& v, TVec& paired);

}  // namespace passband::LinearSystems::detail
