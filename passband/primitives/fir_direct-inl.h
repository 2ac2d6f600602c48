// Chooses the form of a direct filter by its number of taps. Compiled once per instruction set, for one element type at
// a time, by the four fir_direct_*.cpp.
#if defined(PASSBAND_PRIMITIVES_FIR_DIRECT_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_FIR_DIRECT_INL_H_
#undef PASSBAND_PRIMITIVES_FIR_DIRECT_INL_H_
#else
#define PASSBAND_PRIMITIVES_FIR_DIRECT_INL_H_
#endif

#include <cstdint>
#include <utility>

#include "hwy/highway.h"
#include "passband/primitives/fir_state_internal.h"
// The two targets without vector registers: g++ builds the one, clang the other.
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
#include "passband/primitives/fir_direct_plain.h"
#else
#include "passband/primitives/fir_direct_long-inl.h"
#include "passband/primitives/fir_direct_short-inl.h"
#endif

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128
template <Element T, std::size_t kTaps>
FirState* NewShort(const T* h) {
  return new ShortFir<T, kTaps>(h);
}

template <Element T, std::size_t... kIndex>
FirState* NewShort(const T* h, std::size_t taps, std::index_sequence<kIndex...>) {
  static constexpr FirState* (*kNew[])(const T*) = {&NewShort<T, kIndex + 1>...};
  return kNew[taps - 1](h);
}
#endif

template <Element T>
FirState* NewDirect(const T* h, std::int32_t count) {
  const auto taps = static_cast<std::size_t>(count);
  const std::size_t lanes = detail::FirLanes<T>(taps);
  constexpr std::size_t kFew = detail::FirLanes<T>(detail::kMaxShortFir + 1);
  constexpr std::size_t kMany = detail::FirLanes<T>(std::size_t{1} << 20);
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
  constexpr std::size_t kFewest = detail::FirLanes<T>(1);
  if (lanes == kFewest) return new PlainFir<T, kFewest>(h, taps);
  if (lanes == kFew) return new PlainFir<T, kFew>(h, taps);
  return new PlainFir<T, kMany>(h, taps);
#else
  if (taps <= detail::kMaxShortFir) return NewShort<T>(h, taps, std::make_index_sequence<detail::kMaxShortFir>());
  if (lanes == kFew) return new LongFir<T, kFew>(h, taps);
  return new LongFir<T, kMany>(h, taps);
#endif
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
