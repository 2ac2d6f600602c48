// The element nearest to a value, and the mean around a position.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// The index of the first element of real `Data` with the smallest |Value - Data[i]|, computed in the precision of `Data`.
/// A NaN is never the nearest; 0 when there is nothing else.
/// \throws ECoreError "Data.Complex = True", "FindNearest: Data.Length = 0"
/// Cost: one pass, as fast as memory.
PASSBAND_EXPORT std::int32_t FindNearest(const TVec& Data, double Value);

/// The mean of the elements around a position: `Data[lo]` to the element at Index + h, both ends kept inside the vector,
/// where h = (Window - 1) / 2 rounded to the nearest integer, ties to the even one, and lo = Index - h.
///
/// \param Data    real, at least one element
/// \param Index   the position, which may lie outside; receives lo + h, kept inside
/// \param Window  elements to average, >= 0; 0 averages one
/// \param Mean    receives the mean
/// \returns true when the new Index has 1 <= Index < Data.Length - 1
/// \throws ECoreError "NearestMean: Data.Complex = True", "NearestMean: Window < 0", "NearestMean: Data.Length = 0".
///         Index and Mean are then as they were.
PASSBAND_EXPORT bool NearestMean(const TVec& Data, std::int32_t& Index, std::int32_t Window, double& Mean);

}  // namespace passband::SignalUtils
