// A ring of samples between a producer and a consumer that work in blocks of different sizes, and a sliding window.
//
// The samples lie in a vector of the caller's, the buffer; the record holds where they begin and how many there are. One
// thread at a time: producer and consumer on two threads serialise their calls.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// The bookkeeping of a ring. A plain value; the write position is (ReadPosition + DataLen) mod BufferSize.
struct TCircularBufferState {
  std::int32_t ReadPosition = 0;  ///< index of the oldest unread sample, 0 .. BufferSize - 1
  std::int32_t BufferSize = 0;    ///< samples that the ring holds
  std::int32_t DataLen = 0;       ///< samples written and not yet consumed
  bool IsBufferOverrun = false;   ///< sticky: a write of fixed size overwrote unread samples
  bool IsBufferUnderrun = false;  ///< sticky: a read asked for more than there was
  double IncrementStep = 1;       ///< growth of the self-resizing write, 1 .. 10
};

/// Starts an empty ring with both flags down. `IncrementStep` is clamped into [1, 10]; a NaN becomes 1. A `BufferSize`
/// below 1 is accepted: such a ring can only grow, by a write with `AutoResize`. The buffer is not touched.
PASSBAND_EXPORT void InitCircularBuffer(std::int32_t BufferSize, double IncrementStep, TCircularBufferState& State);

/// Empties the ring and lowers both flags; size and growth stay.
PASSBAND_EXPORT void ResetCircularBuffer(TCircularBufferState& State);

/// Gives the ring another size and keeps the oldest unread samples that fit, which come to the front of the buffer; new
/// room is zero. The same size changes nothing. Lowers `IsBufferOverrun`, and sets `IsBufferUnderrun` exactly when the
/// ring held `NewSize` samples or more.
/// \throws ECoreError "NewSize < 1", "State.DataLen < 0"
/// Cost: one copy of the buffer; allocates.
PASSBAND_EXPORT void ResizeCircularBuffer(std::int32_t NewSize, TCircularBufferState& State, TVec& Buffer);

/// Appends a block of n samples. The buffer takes the precision of `Data`, converting what it holds.
///
/// With `AutoResize` a block that does not fit makes the ring grow to Ceil((DataLen + n) IncrementStep) samples, which
/// lowers `IsBufferOverrun` and may set `IsBufferUnderrun` as `ResizeCircularBuffer` does; a block that fits needs a
/// buffer of BufferSize samples. Without it the buffer is sized to BufferSize, the block overwrites the oldest samples
/// where it has to, and:
///
///     n > BufferSize      the last BufferSize samples fill the buffer from index 0, DataLen = BufferSize, overrun;
///                         ReadPosition stays, so that the oldest of them is found only if it is 0
///     else                overrun when n exceeds the room between the write and the read position; where both
///                         coincide the whole ring counts as room, so that overwriting a full ring raises no flag
///
/// \param Data  may be the buffer itself; an empty block changes nothing but the precision and size of the buffer
/// \throws ECoreError "BufferSize < 1"; "Buffer.Length <> BufferSize" (AutoResize, no growth, too short a buffer);
///         "BufferSize > 2147483647" (growth); "State.ReadPosition is outside the buffer", "State.DataLen < 0". A
///         refused call changes nothing.
/// Cost: one copy of the block; allocates only to grow or to convert.
PASSBAND_EXPORT void WriteToCircularBuffer(TVec& Buffer, const TVec& Data, TCircularBufferState& State,
                                           bool AutoResize = false);

/// Copies the oldest Dst.Length samples and consumes `Advance` of them, clamped into 1 .. Dst.Length; -1 stands for all.
/// Fewer than are copied give overlapping reads. The copy takes Dst.Length samples whatever DataLen is, and sets
/// `IsBufferUnderrun` when they are more than remain between the read and the write position after the advance of DataLen
/// (where both coincide: more than the whole ring).
///
/// \param Dst  length and precision say how much is wanted, and of which precision; empty: nothing is consumed
/// \throws ECoreError "Dst.Length > State.BufferSize", "Buffer.Length <> BufferSize", "BufferSize < 1",
///         "State.ReadPosition is outside the buffer", "State.DataLen < 0", and the text of `TVec::Copy` for precisions that
///         differ. A refused call changes nothing.
PASSBAND_EXPORT void ReadFromCircularBuffer(const TVec& Buffer, TVec& Dst, TCircularBufferState& State,
                                            std::int32_t Advance = -1);

/// Copies samples without consuming them: the oldest Dst.Length ones (`mmFromStart`), or the newest ones, ending just
/// before the write position (`mmFromEnd`). May set `IsBufferUnderrun`, as a read from that position would. Any other mode
/// does nothing.
/// \throws as `ReadFromCircularBuffer`
PASSBAND_EXPORT void MonitorCircularBuffer(const TVec& Buffer, TVec& Dst, TCircularBufferState& State,
                                           TMonitorMode Mode);

/// Consumes samples without copying them. ReadPosition advances by all of `SamplesToSkip`, also beyond what is there; the
/// flags stay.
/// \throws ECoreError "SamplesToSkip < 0", "BufferSize < 1"
PASSBAND_EXPORT void AdvanceCircularBuffer(std::int32_t SamplesToSkip, TCircularBufferState& State);

/// The number of samples that are there: DataLen.
PASSBAND_EXPORT std::int32_t PeekCircularBuffer(const TCircularBufferState& State);

/// The index at which the next block begins, -1 when BufferSize < 1.
PASSBAND_EXPORT std::int32_t WritePositionCircularBuffer(const TCircularBufferState& State);

/// Keeps the newest samples of a stream in a plain vector, at most `BufferLength`, the oldest first. A buffer that is
/// longer than that is emptied first.
///
/// \param Buffer        in and out; takes the precision of `Data` while it is being filled
/// \param Data          the next block; may be `Buffer`
/// \param BufferLength  >= 0
/// \throws ECoreError "BufferLength < 0"; "Buffer.FloatPrecision <> Data.FloatPrecision" once samples have to be shifted
/// Cost: one pass over the buffer; allocates nothing once it is full.
PASSBAND_EXPORT void CircularBuffer(TVec& Buffer, const TVec& Data, std::int32_t BufferLength);

}  // namespace passband::SignalUtils
