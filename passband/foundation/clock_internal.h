// Replacing the clock, for tests of what depends on time.
#pragma once

#include "passband/foundation/clock.h"

namespace passband::detail {

/// From now on `Now` returns what `now` returns; null: the present time again.
void ReplaceNow(TDateTime (*now)()) noexcept;

}  // namespace passband::detail
