// Logarithms of spectra.
#pragma once

#include <cstdint>

#include "passband/foundation/complex.h"
#include "passband/primitives/status.h"

namespace passband::primitives {

/// log[k] = ln |z[k]|, k = 0 .. count - 1; 0 where that is not finite: for zeros, infinities and NaN.
/// Within some units in the last place, whatever the size of z. Fails with BadSize (count < 0), NullPointer.
Status LogMagnitude(const TCplx* z, std::int32_t count, double* log) noexcept;

}  // namespace passband::primitives
