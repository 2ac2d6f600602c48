// Autoregressive models before rounding: the fits behind `ar_models.h`, with coefficients in double.
#pragma once

#include <cstdint>
#include <string_view>

#include "passband/vector_core/vec.h"

namespace passband::SignalUtils::detail {

/// Each checks its arguments like the public routine of its name and leaves A in `a`, double, real or complex as `src`.
void FitYuleWalker(const TVec& src, std::int32_t order, TVec& a);
void FitBurg(const TVec& src, std::int32_t order, TVec& a, TVec& reflection, double& variance);
void FitCovariance(const TVec& src, std::int32_t order, TVec& a, double& variance);
void FitModifiedCovariance(const TVec& src, std::int32_t order, TVec& a, double& variance);

/// e such that the parts of x 2^-e are below 2 and the largest is at least 1, within -1000 .. 1000; 0 for zeros.
/// \throws ECoreError "<routine>: an element is not finite"
int BinaryExponent(const TVec& x, std::string_view routine);

/// x 2^-exponent in double.
void WidenScaled(const TVec& x, int exponent, TVec& scaled);

}  // namespace passband::SignalUtils::detail
