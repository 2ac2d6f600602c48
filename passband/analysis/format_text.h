// Texts that describe a signal to a person.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "passband/foundation/element_types.h"
#include "passband/foundation/export.h"
#include "passband/foundation/text.h"

namespace passband::SignalUtils {

/// "44100 Hz, double, Ch: 2": the sampling frequency with 7 significant digits, the precision (`PrecisionToStr`), the
/// channels, and with RecordCount > 0 ", Records: 10".
PASSBAND_EXPORT std::string SignalFormatDescription(double SamplingFrequency, TMtxFloatPrecision Precision,
                                                    std::int32_t ChannelCount, std::int32_t RecordCount = 0);

/// Fills S up to `Width` bytes with blanks: `Center`, the half of them, rounded down, on each side; `Right`, before S;
/// `Left`, behind it. A longer S stays as it is. Any other alignment gives an empty text.
PASSBAND_EXPORT std::string AlignString(std::string_view S, std::int32_t Width, TTextAlign Align);

}  // namespace passband::SignalUtils
