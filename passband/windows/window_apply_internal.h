// What the windows share.
#pragma once

#include <cstdint>
#include <span>

#include "passband/primitives/status.h"
#include "passband/vector_core/vec.h"

namespace passband::detail {

/// data[index + n] = data[index + n] window[n]. The window is rounded once to the precision of the data; the stretch
/// lies inside `data`.
void ApplyWindow(TVec& data, std::int32_t index, std::span<const double> window);

/// Raises the text of a failed status.
void CheckStatus(primitives::Status status);

}  // namespace passband::detail
