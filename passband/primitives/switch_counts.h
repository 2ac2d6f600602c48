// Counts of the changes of a state along real samples, one walk over memory each. A NaN changes nothing.
#pragma once

#include <cstdint>

#include "passband/foundation/element_types.h"
#include "passband/primitives/status.h"

namespace passband::primitives {

/// How often a state has changed that some samples switch on, some switch off, and the others leave as it is.
struct Switches {
  std::int32_t on = 0;
  std::int32_t off = 0;
};

/// Which samples switch. Either: those above the level on, those below off. Downward: those below on, those at or above
/// off. Upward: those above on, those at or below off.
enum class Crossing : std::uint8_t { Either, Downward, Upward };

/// Both routines fail with BadSize (count < 0), NullPointer.
template <RealElement R>
Status CountCrossings(const R* x, std::int32_t count, Crossing crossing, R level, bool state,
                      Switches& switches) noexcept;

/// Rising steps from sample to sample switch on, falling ones off.
template <RealElement R>
Status CountTurns(const R* x, std::int32_t count, bool state, Switches& switches) noexcept;

}  // namespace passband::primitives
