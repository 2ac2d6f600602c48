// Multiplication of a signal by the stored values of a window.
#pragma once

#include <cstdint>

#include "passband/foundation/element_types.h"
#include "passband/primitives/status.h"

namespace passband::primitives {

/// x[n] = x[n] w[n], n = 0 .. count - 1; a complex element is scaled by the real w[n]. `x` and `w` must not overlap.
/// Fails with BadSize (count < 0).
template <Element T>
Status WindowMultiply(T* x, const RealOf<T>* w, std::int32_t count) noexcept;

}  // namespace passband::primitives
