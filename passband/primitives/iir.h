// IIR filters as primitives: one rational transfer function in direct form, or a cascade of second-order sections. The
// coefficients are real, the data of element type T are real or complex (then both parts are filtered alike). A state
// lies in one block of memory that the caller gives. The samples before the first call are zero. Any cut of the stream
// into calls, down to single samples, gives the same bits; the choice of the method depends on the coefficients only.
#pragma once

#include <cstddef>
#include <cstdint>

#include "passband/foundation/element_types.h"
#include "passband/primitives/iir_handle.h"
#include "passband/primitives/status.h"

namespace passband::primitives {

/// The bytes that the state of a filter needs, wherever its memory begins: `order` >= 0, `sections` >= 1.
template <Element T>
std::size_t IirDirectStateSize(std::int32_t order) noexcept;
template <Element T>
std::size_t IirSectionsStateSize(std::int32_t sections) noexcept;

/// Builds a filter of the given order with `taps` b0 .. bN, a0 .. aN in `memory`:
/// y[n] = (sum b[k] x[n - k] - sum a[k] y[n - k], k >= 1) / a0.
/// Fails with BadSize (order < 0), NullPointer, DivisionByZero (a0 = 0); `state` is then left as it was.
template <Element T>
Status IirDirectCreate(const RealOf<T>* taps, std::int32_t order, void* memory, IirHandle& state) noexcept;

/// Builds a cascade of `sections` second-order sections with six taps b0, b1, b2, a0, a1, a2 each in `memory`.
/// Fails with BadSize (sections < 1), NullPointer, DivisionByZero (an a0 = 0); `state` is then left as it was.
template <Element T>
Status IirSectionsCreate(const RealOf<T>* taps, std::int32_t sections, void* memory, IirHandle& state) noexcept;

/// Filters the next `count` samples. `dst` may be `src`. Allocates nothing.
template <Element T>
Status IirFilter(IirState& state, const T* src, T* dst, std::int32_t count) noexcept;

/// Filters one sample: y[n] for x[n] = `x`.
template <Element T>
T IirOne(IirState& state, T x) noexcept;

}  // namespace passband::primitives
