// Date and time as one number.
#pragma once

#include "passband/foundation/export.h"

namespace passband {

/// Days since 1899-12-30 00:00 UTC, the time of day as the fraction.
using TDateTime = double;

/// The present time, taken once from the calendar when the library is first asked and advanced by a steady clock from
/// then on, so that setting the computer's clock never makes it jump.
PASSBAND_EXPORT TDateTime Now();

}  // namespace passband
