// Sources and destinations that share memory.
#pragma once

#include "passband/vector_core/vec.h"

namespace passband::SignalUtils::detail {

/// True when a pass that reads each element before it writes there cannot work from `src` to `dst`: they overlap without
/// being the same elements.
inline bool NeedsCopy(const TVec& src, const TVec& dst) {
  const auto from = src.Memory();
  const auto to = dst.Memory();
  const bool overlap = from.data() < to.data() + to.size() && to.data() < from.data() + from.size();
  return overlap &&
         (from.data() != to.data() || from.size() != to.size() || src.FloatPrecision() != dst.FloatPrecision());
}

}  // namespace passband::SignalUtils::detail
