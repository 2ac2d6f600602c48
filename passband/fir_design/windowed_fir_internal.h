// The last step of every design by the window method.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/open_array.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils::detail {

/// The longest filter that the designs make.
inline constexpr std::int64_t kMaxTaps = 10000;

struct WindowChoice {
  TSignalWindowType type;
  double parameter;
};

/// Sizes `H` to `length` real taps of its own `IsDouble` and writes ideal response times window times gain. When the
/// ideal response is refused, `H` is as it was.
void DesignByWindow(TVec& H, std::int32_t length, OpenArray W, TFilterType type, double FS, const WindowChoice& window,
                    double gain);

}  // namespace passband::SignalUtils::detail
