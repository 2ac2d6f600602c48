// What the entry points of iir.h know of the methods behind them (direct form, sections): the first member of every
// state names the functions that run it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "passband/foundation/element_types.h"
#include "passband/primitives/iir.h"

namespace passband::primitives {

struct IirState {};

/// A state for data of element type T. Methods derive from it, stay trivially destructible and keep what they need
/// behind it in the same block of memory.
template <Element T>
struct IirStateOf : IirState {
  void (*filter)(IirStateOf& state, const T* src, T* dst, std::int32_t count) noexcept;
  T (*one)(IirStateOf& state, T x) noexcept;
};

inline constexpr std::size_t kIirStateAlignment = 64;

/// The first address at or after `memory` at which a state may begin; state sizes hold the slack for it.
inline std::byte* AlignIirState(void* memory) {
  const auto address = reinterpret_cast<std::uintptr_t>(memory);
  return static_cast<std::byte*>(memory) + (kIirStateAlignment - address % kIirStateAlignment) % kIirStateAlignment;
}

}  // namespace passband::primitives
