// Spectra of the coefficients of filters, filled up with zeros.
#pragma once

#include <cstdint>
#include <string_view>

#include "passband/vector_core/vec.h"

namespace passband::SignalUtils::detail {

/// The points of a transform of the longer of numerator and denominator, `padding` times as many as that at least: a
/// power of two.
/// \throws ECoreError "ZeroPadding < 1"; `empty` when the numerator has no coefficients; "LargestExp2: n > 2^30"
std::int32_t TransformLength(const TVec& num, const TVec* den, std::int32_t padding, std::string_view empty);

/// Whether one of them is complex: the spectra then have all bins.
bool HasComplex(const TVec& num, const TVec* den);

/// Copies the coefficients in double, complex if asked for, with zeros up to `length`.
void PadInDouble(const TVec& coefficients, bool complex, std::int32_t length, TVec& padded);

}  // namespace passband::SignalUtils::detail
