// Local maxima and minima of real vectors. Positions count from 0; a start before the first element (behind the last one)
// is taken as the first (last) one. Elements next to a NaN count as equal to it. An empty vector has no extrema: the
// position becomes 0 and the result false.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Climbs from an element to a local maximum: first to the left for as long as the element there is larger, then to the
/// right. Stops at equal elements.
///
/// \param Index  the start; receives the position of the maximum
/// \returns true when the maximum lies inside, 1 <= Index < Data.Length - 1
/// \throws ECoreError "Data.Complex = True"
PASSBAND_EXPORT bool NearestMaximum(const TVec& Data, std::int32_t& Index);
/// The mirror image: descends to a local minimum.
PASSBAND_EXPORT bool NearestMinimum(const TVec& Data, std::int32_t& Index);

/// Goes on from an element, down as far as the elements do not rise, then up as far as they do not fall: to the next
/// local maximum, of several equal elements the last. Calling it again from there finds the one after.
///
/// \param Index  the start; receives the position of the maximum, or the last one
/// \returns false when the last element has been reached, which is no maximum
/// \throws ECoreError "Src.Complex = True"
PASSBAND_EXPORT bool NextMaximum(const TVec& Src, std::int32_t& Index);
/// The mirror image: up, then down to the next local minimum.
PASSBAND_EXPORT bool NextMinimum(const TVec& Src, std::int32_t& Index);

/// How many maxima `NextMaximum` finds one after the other from `Index` on, before it comes to the last element of the
/// range; that one is not counted.
///
/// \param Index  first element of the range; below 0 it is taken as 0
/// \param Len    elements in the range; -1: up to the end
/// \returns -1 for a range of fewer than two elements
/// \throws ECoreError "Src.Complex = True", "(Index+Len) > Src.Length"
/// Cost: one pass, as fast as memory.
PASSBAND_EXPORT std::int32_t MaximumCount(const TVec& Src, std::int32_t Index = 0, std::int32_t Len = -1);
/// The same of `NextMinimum`.
PASSBAND_EXPORT std::int32_t MinimumCount(const TVec& Src, std::int32_t Index = 0, std::int32_t Len = -1);

}  // namespace passband::SignalUtils
