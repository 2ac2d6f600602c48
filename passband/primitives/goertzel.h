// The spectrum of a block at one frequency.
#pragma once

#include <cstdint>

#include "passband/foundation/complex.h"
#include "passband/foundation/element_types.h"
#include "passband/primitives/status.h"

namespace passband::primitives {

/// value = sum x[n] exp(-2 pi j f n), n = 0 .. count - 1, for `frequency` = f relative to the sampling frequency, of any
/// size and sign (it is reduced exactly).
///
/// Goertzel's recursion s[n] = x[n] + 2 cos(w) s[n - 1] - s[n - 2] multiplies rounding errors by up to 1 / sin(w). This is
/// Horner's scheme with the rotation itself instead, in 16 to 128 parallel chains that advance by a whole group of
/// samples: a rotation keeps errors as large as they are. Blocks of 8192 values are summed apart and put together in
/// double, so that errors do not grow with the length: they stay within some eps of the sum of magnitudes.
/// Fails with BadSize (count < 0), NullPointer.
template <Element T>
Status Goertzel(const T* src, std::int32_t count, double frequency, TCplx& value) noexcept;

}  // namespace passband::primitives
