// Where real vectors cross a level. The level is rounded to the precision of the vector. Elements on the level, and NaN,
// belong to no side: they neither make a crossing nor end one. Positions count from 0; a start before the first element
// (behind the last one) is taken as the first (last) one.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Goes on from an element to the first one on the other side of the level `DC`: above it the first one below, otherwise
/// (on the level, too) the first one above; to the last element when there is none.
///
/// \param Index  the start; receives the position, 0 in an empty vector
/// \throws ECoreError "Src.Complex = True"
PASSBAND_EXPORT void NextDCCrossing(const TVec& Src, std::int32_t& Index, double DC);
PASSBAND_EXPORT void NextZeroCrossing(const TVec& Src, std::int32_t& Index);

/// How many crossings `NextDCCrossing` finds one after the other from `Index` on, before it comes to the last element of
/// the range; one there is not counted.
///
/// \param Index  first element of the range; below 0 it is taken as 0
/// \param Len    elements in the range; -1: up to the end
/// \returns -1 for a range of fewer than two elements
/// \throws ECoreError "Src.Complex = True", "(Index+Len) > Src.Length"
/// Cost: one pass, as fast as memory.
PASSBAND_EXPORT std::int32_t DCCrossingCount(const TVec& Src, double DC, std::int32_t Index = 0, std::int32_t Len = -1);
PASSBAND_EXPORT std::int32_t ZeroCrossingCount(const TVec& Src, std::int32_t Index = 0, std::int32_t Len = -1);

/// Crossings in one direction: how often the elements come to lie below `DC` after having been on it or above, or, not
/// `Downward`, above it after having been on it or below. The first element of the range is no crossing, the last one may
/// be. The other arguments are as above; an empty range has none.
PASSBAND_EXPORT std::int32_t DCCrossingCount(const TVec& Src, double DC, bool Downward, std::int32_t Index = 0,
                                             std::int32_t Len = -1);

/// The crossing next to a position, on the side to which the curve leads: the pair of neighbours i, i + 1 with the level
/// between them (or on them).
///
/// From the element nearest to `Pos` the search goes forward where the curve leads towards the level (below and rising,
/// above and falling, from there to the next element, from the last one by the step to it), backward where it comes from
/// it. Where the curve is flat, i is the start itself. Without a crossing i is the last pair forward, the first backward.
///
/// \param Pos          the start; receives i; with `Interpolate`, where the line through both elements meets the level,
///                     or 0 when they are equal
/// \param Value        receives Data[i]; with `Interpolate` the level, or Data[i + 1] when both elements are equal
/// \throws ECoreError "Data.Complex = True", "NearestDCCrossing: Data.Length = 0". Pos and Value are then as they were.
/// A single element gives Pos = 0 and its value.
PASSBAND_EXPORT void NearestDCCrossing(const TVec& Data, double& Pos, double& Value, double DC,
                                       bool Interpolate = false);
PASSBAND_EXPORT void NearestZeroCrossing(const TVec& Data, double& Pos, double& Value, bool Interpolate = false);

}  // namespace passband::SignalUtils
