// Places on the real line with twice the digits of double.
#pragma once

#include <cstdint>

namespace passband::primitives {

/// Unevaluated sums hi[k] + lo[k], |lo[k]| at most half a unit in the last place of hi[k]: differences of close places
/// keep all their digits.
struct Places {
  const double* hi;
  const double* lo;
  std::int32_t count;
};

}  // namespace passband::primitives
