// Searches in real samples, one walk over memory each. A NaN compares with nothing: it is on no side of a level, and no
// step to or from it rises or falls.
#pragma once

#include <cstdint>

#include "passband/foundation/element_types.h"
#include "passband/primitives/status.h"

namespace passband::primitives {

/// How a sample lies to a level: x < level, <=, >=, >.
enum class Relation : std::uint8_t { Below, AtMost, AtLeast, Above };

/// Index of the first (last) of `count` samples in the relation; `count` (-1) when there is none.
/// All routines fail with BadSize (count < 0), NullPointer.
template <RealElement R>
Status FindFirst(const R* x, std::int32_t count, Relation relation, R level, std::int32_t& index) noexcept;
template <RealElement R>
Status FindLast(const R* x, std::int32_t count, Relation relation, R level, std::int32_t& index) noexcept;

/// The first i with x[i + 1] > x[i] (`rising`), or x[i + 1] < x[i], among `count` samples; the last index when there is
/// none, 0 without samples.
template <RealElement R>
Status FindStep(const R* x, std::int32_t count, bool rising, std::int32_t& index) noexcept;

/// Index of the first sample with the smallest |value - x[i]|, computed in R; of samples and values that are not finite,
/// those whose difference is not a NaN are nearer. 0 when all are, and without samples.
template <RealElement R>
Status FindClosest(const R* x, std::int32_t count, R value, std::int32_t& index) noexcept;

}  // namespace passband::primitives
