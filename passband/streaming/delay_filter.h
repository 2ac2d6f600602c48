// A pure delay of a stream.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// A delay line in work.
struct TDelayFilterState {
  std::int32_t SampleCount = 0;  ///< the delay D in samples; below 1: none
  TVec Data;                     ///< the last D samples, the oldest first; the owner may change their values
  TVec Line{};                   ///< the memory in which `Data` moves along; kept by the filter
};

/// Starts a delay of `SampleCount` samples with zeros. What the record held before is released; when the call is refused, the
/// record stays as it was.
/// \param SampleCount     D; below 1 no delay
/// \param FloatPrecision  of the stream
/// \throws ECoreError "SampleCount > 2147479551"
/// Cost: allocates 2 D samples, 4096 + D when that is more.
PASSBAND_EXPORT void DelayInit(std::int32_t SampleCount, TDelayFilterState& State, TMtxFloatPrecision FloatPrecision);

/// Delays the next block: the outputs of all calls are the inputs of all calls behind D zeros, whatever the block lengths.
///
/// \param Src    the block
/// \param Dst    sized like `Src`; may be `Src`
/// \param State  a `Data` of another length than D, as after `DelayFree`, is cut or continued with zeros first
/// \throws ECoreError "DelayFilter: Src.FloatPrecision <> State.Data.FloatPrecision", of an empty block too; `Dst` and the
///         line are then as they were
/// Cost: two copies of the block, and at most one of a sample for each sample to move the line along, however short the
/// blocks are; allocates nothing once warm.
PASSBAND_EXPORT void DelayFilter(const TVec& Src, TVec& Dst, TDelayFilterState& State);

/// Releases the delay line; harmless on a record that holds none.
PASSBAND_EXPORT void DelayFree(TDelayFilterState& State);

}  // namespace passband::SignalUtils
