#include <algorithm>

#include "passband/analysis/search_range_internal.h"
#include "passband/foundation/exceptions.h"

namespace passband::SignalUtils::detail {

SearchRange RangeOfCount(const TVec& src, std::int32_t index, std::int32_t len) {
  if (src.Complex()) ERaise("Src.Complex = True");
  index = std::max(index, 0);
  const std::int64_t end = len == -1 ? src.Length() : std::int64_t{index} + len;
  if (end > src.Length()) ERaise("(Index+Len) > Src.Length");
  return {index, static_cast<std::int32_t>(std::max<std::int64_t>(end - index, 0))};
}

}  // namespace passband::SignalUtils::detail
