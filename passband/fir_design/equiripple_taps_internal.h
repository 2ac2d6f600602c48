// Taps from the coefficients of the reduced problem, and back.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "passband/fir_design/equiripple_approximation_internal.h"

namespace passband::OptimalFir::detail {

/// The impulse response of `length` taps, symmetric or antisymmetric, whose amplitude is c(f) times the sum, c the
/// factor of its kind.
std::vector<Wide> TapsOf(const CosineSum& sum, std::int32_t length, bool antisymmetric);

/// The sum that belongs to such taps: the inverse.
CosineSum SumOf(std::span<const double> taps, bool antisymmetric);

}  // namespace passband::OptimalFir::detail
