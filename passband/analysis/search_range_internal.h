// The range of a count.
#pragma once

#include <cstdint>

#include "passband/vector_core/vec.h"

namespace passband::SignalUtils::detail {

struct SearchRange {
  std::int32_t index = 0;
  std::int32_t length = 0;  // not negative
};

/// Settles Len = -1 and takes a negative index as 0. The index may lie behind the end when the length is 0.
/// \throws ECoreError "Src.Complex = True", "(Index+Len) > Src.Length"
SearchRange RangeOfCount(const TVec& src, std::int32_t index, std::int32_t len);

}  // namespace passband::SignalUtils::detail
