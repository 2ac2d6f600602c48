// What the kinds of filters have in common, whether their lengths are estimated or their bands laid out.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/open_array.h"

namespace passband::OptimalFir::detail {

/// The lengths that estimates keep to.
inline constexpr std::int32_t kMinLength = 4;
inline constexpr std::int32_t kMaxLength = 10000;

/// True for 4 edges, and for 2 edges of anything but a bandpass or bandstop.
bool HasKind(OpenArray W, SignalUtils::TFilterType type);

/// Odd lengths, antisymmetric taps: 0 at both ends of the frequency axis.
bool IsTypeIII(SignalUtils::TFilterType type);
/// Even lengths, antisymmetric taps.
bool IsTypeIV(SignalUtils::TFilterType type);

/// An odd length, and an even one, next to a length from 4 to 10000 and within them: one more, but 9999 for 10000.
std::int32_t MadeOdd(std::int32_t length);
std::int32_t MadeEven(std::int32_t length);

/// The length that the type asks for.
std::int32_t FittingLength(std::int32_t length, SignalUtils::TFilterType type);

}  // namespace passband::OptimalFir::detail
