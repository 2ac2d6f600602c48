// Text of sample values and precisions, and its place, for descriptions that a person reads.
#pragma once

#include <cstdint>
#include <string>

#include "passband/foundation/element_types.h"
#include "passband/foundation/export.h"

namespace passband {

/// Where a text stands in a field that is wider.
enum class TTextAlign : std::uint8_t { Center, Right, Left };

/// The value with `Precision` significant digits (0: as many as identify the double), without trailing zeros, padded
/// with blanks on the left to at least `Digits` characters. The decimal sign is a point whatever the locale.
PASSBAND_EXPORT std::string SampleToStr(double Value, std::int32_t Digits = 0, std::int32_t Precision = 0);

/// "single", "double", "single complex" or "double complex".
PASSBAND_EXPORT std::string PrecisionToStr(TMtxFloatPrecision Precision);

}  // namespace passband
