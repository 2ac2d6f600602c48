#include "passband/analysis/nearest_element.h"

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/primitives/search.h"
#include "passband/vector_core/dispatch.h"

namespace passband::SignalUtils {

std::int32_t FindNearest(const TVec& Data, double Value) {
  if (Data.Complex()) ERaise("Data.Complex = True");
  if (Data.Length() == 0) ERaise("FindNearest: Data.Length = 0");
  std::int32_t index = 0;
  ForReal(Data, [&]<RealElement R>(ElementTag<R>) {
    // The status is Ok: pointer and count are sound.
    static_cast<void>(primitives::FindClosest(Data.Elements<R>().data(), Data.Length(), static_cast<R>(Value), index));
  });
  return index;
}

bool NearestMean(const TVec& Data, std::int32_t& Index, std::int32_t Window, double& Mean) {
  if (Data.Complex()) ERaise("NearestMean: Data.Complex = True");
  if (Window < 0) ERaise("NearestMean: Window < 0");
  if (Data.Length() == 0) ERaise("NearestMean: Data.Length = 0");
  const std::int64_t half = Round((Window - 1.0) / 2);
  const std::int64_t last = Data.Length() - 1;
  const std::int64_t low = EnsureRange<std::int64_t>(0, Index - half, last);
  const std::int64_t high = EnsureRange<std::int64_t>(0, Index + half, last);
  Mean = Data.Mean(static_cast<std::int32_t>(low), static_cast<std::int32_t>(high - low + 1));
  Index = static_cast<std::int32_t>(EnsureRange<std::int64_t>(0, low + half, last));
  return Index >= 1 && Index < last;
}

}  // namespace passband::SignalUtils
