// Several channels in one vector, their samples in turns.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Dst[ChannelNumber + k ChannelCount] = Src[k]: writes a channel to its place among the others.
///
/// \param Src            any precision
/// \param Dst            Src.Length ChannelCount samples in the precision of `Src`. One that has this size already keeps
///                       its other channels; of another one they are zero
/// \param ChannelCount   >= 1
/// \param ChannelNumber  0 .. ChannelCount - 1
/// \throws Exception "ChannelNumber > ChannelCount-1"; ECoreError "ChannelNumber < 0", "Size: more than 2147483647
///         elements". `Dst` is then as it was.
PASSBAND_EXPORT void Multiplex(const TVec& Src, TVec& Dst, std::int32_t ChannelCount, std::int32_t ChannelNumber);

/// Dst[k] = Src[ChannelNumber + k ChannelCount]: takes a channel out; `Dst` may be `Src`.
/// \throws as `Multiplex`
PASSBAND_EXPORT void Demultiplex(const TVec& Src, TVec& Dst, std::int32_t ChannelCount, std::int32_t ChannelNumber);

}  // namespace passband::SignalUtils
