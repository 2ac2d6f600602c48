#include "passband/streaming/circular_buffer.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

constexpr const char* kNoRing = "BufferSize < 1";

void CheckPositions(const TCircularBufferState& state) {
  if (state.BufferSize < 1) ERaise(kNoRing);
  if (state.ReadPosition < 0 || state.ReadPosition >= state.BufferSize) {
    ERaise("State.ReadPosition is outside the buffer");
  }
  if (state.DataLen < 0) ERaise("State.DataLen < 0");
}

// (position + step) mod size, for a position inside the ring and any step >= 0.
std::int32_t Advanced(std::int32_t position, std::int64_t step, std::int32_t size) {
  return static_cast<std::int32_t>((position + step) % size);
}

// A block of the ring: where its first piece lies, and how many samples of it lie there; the rest lies at index 0.
struct Pieces {
  Pieces(std::int32_t position, std::int32_t count, std::int32_t size)
      : start(position), first(std::min(count, size - position)), rest(count - first) {}
  std::int32_t start;
  std::int32_t first;
  std::int32_t rest;
};

void CopyIn(const TVec& data, TVec& buffer, const Pieces& at) {
  buffer.Copy(data, 0, at.start, at.first);
  if (at.rest > 0) buffer.Copy(data, at.first, 0, at.rest);
}

void CopyOut(const TVec& buffer, TVec& dst, const Pieces& at) {
  dst.Copy(buffer, at.start, 0, at.first);
  if (at.rest > 0) dst.Copy(buffer, 0, at.first, at.rest);
}

bool Overlap(const TVec& a, const TVec& b) {
  const auto x = a.Memory();
  const auto y = b.Memory();
  return &a == &b || (x.data() < y.data() + y.size() && y.data() < x.data() + x.size());
}

// The buffer of a ring of another size: its unread samples in front. Made aside, so that a failure loses nothing.
void Regrow(TVec& grown, const TVec& buffer, const TCircularBufferState& state, std::int32_t size,
            TMtxFloatPrecision precision) {
  if (state.BufferSize >= 1) CheckPositions(state);
  grown.Copy(buffer);
  grown.SetFloatPrecision(precision);
  if (state.BufferSize >= 1) grown.Rotate(-state.ReadPosition);
  grown.Resize(size, true);
}

void SetSize(TCircularBufferState& state, std::int32_t size) {
  state.IsBufferOverrun = false;
  state.IsBufferUnderrun = state.DataLen >= size;
  state.ReadPosition = 0;
  state.DataLen = std::min(state.DataLen, size);
  state.BufferSize = size;
}

std::int32_t GrownSize(const TCircularBufferState& state, std::int32_t count) {
  const double size = std::ceil((static_cast<double>(state.DataLen) + count) * state.IncrementStep);
  if (!(size <= std::numeric_limits<std::int32_t>::max())) ERaise("BufferSize > 2147483647");
  return static_cast<std::int32_t>(size);
}

void WriteGrowing(TVec& buffer, const TVec& data, TCircularBufferState& state) {
  const std::int32_t size = GrownSize(state, data.Length());
  const Borrowed<TVec> grown;
  Regrow(*grown, buffer, state, size, data.FloatPrecision());
  grown->Copy(data, 0, state.DataLen, data.Length());
  buffer.Take(*grown);
  SetSize(state, size);
  state.DataLen += data.Length();
}

void WriteFitting(TVec& buffer, const TVec& data, TCircularBufferState& state) {
  CheckPositions(state);
  const Pieces at(WritePositionCircularBuffer(state), data.Length(), state.BufferSize);
  if (buffer.Length() < at.start + at.first) ERaise("Buffer.Length <> BufferSize");
  buffer.SetFloatPrecision(data.FloatPrecision());
  CopyIn(data, buffer, at);
  state.DataLen += data.Length();
}

// Sizes the buffer of a ring of fixed size for data of a precision; the only steps that can fail.
void PrepareFixed(TVec& buffer, const TVec& data, const TCircularBufferState& state) {
  if (buffer.Length() == state.BufferSize) return buffer.SetFloatPrecision(data.FloatPrecision());
  const Borrowed<TVec> sized;
  sized->Copy(buffer);
  sized->SetFloatPrecision(data.FloatPrecision());
  sized->Resize(state.BufferSize, true);
  buffer.Take(*sized);
}

void WriteFixed(TVec& buffer, const TVec& data, TCircularBufferState& state) {
  CheckPositions(state);
  const std::int32_t count = data.Length();
  const std::int32_t size = state.BufferSize;
  PrepareFixed(buffer, data, state);
  if (count > size) {
    buffer.Copy(data, count - size, 0, size);
    state.DataLen = size;
    state.IsBufferOverrun = true;
    return;
  }
  const std::int32_t read = state.ReadPosition;
  const std::int32_t write = WritePositionCircularBuffer(state);
  CopyIn(data, buffer, {write, count, size});
  state.DataLen = count < size - state.DataLen ? state.DataLen + count : size;
  const std::int32_t room = read > write ? read - write : size - (write - read);
  if (count > room) state.IsBufferOverrun = true;
}

// Copies Dst.Length samples from a position on, then takes `advance` of them from DataLen; the position itself stays.
void ReadStep(const TVec& buffer, TVec& dst, TCircularBufferState& state, std::int32_t position, std::int32_t advance) {
  const std::int32_t count = dst.Length();
  const std::int32_t size = state.BufferSize;
  CopyOut(buffer, dst, {position, count, size});
  state.DataLen = std::max(state.DataLen - advance, 0);
  const std::int32_t write = Advanced(position, state.DataLen, size);
  const std::int32_t there = position < write ? write - position : size - (position - write);
  if (count > there) state.IsBufferUnderrun = true;
}

void CheckRead(const TVec& buffer, const TVec& dst, const TCircularBufferState& state) {
  if (dst.Length() > state.BufferSize) ERaise("Dst.Length > State.BufferSize");
  if (buffer.Length() != state.BufferSize) ERaise("Buffer.Length <> BufferSize");
  CheckPositions(state);
}

// The newest `length` samples of a block that is as long or longer.
void TakeNewest(TVec& window, const TVec& data, std::int32_t length) {
  const Borrowed<TVec> newest;
  newest->Size(length, data.FloatPrecision());
  newest->Copy(data, data.Length() - length, 0, length);
  window.Take(*newest);
}

// The window with a block behind it, which still has room.
void Append(TVec& window, const TVec& data) {
  const std::int32_t held = window.Length();
  const Borrowed<TVec> longer;
  longer->Copy(window);
  longer->SetFloatPrecision(data.FloatPrecision());
  longer->Resize(held + data.Length());
  longer->Copy(data, 0, held, data.Length());
  window.Take(*longer);
}

// The window after its oldest samples have made room for a block.
void SlideIn(TVec& window, const TVec& data, std::int32_t length) {
  const std::int32_t held = window.Length();
  const std::int32_t added = data.Length();
  const std::int32_t kept = length - added;
  if (window.FloatPrecision() != data.FloatPrecision()) ERaise("Buffer.FloatPrecision <> Data.FloatPrecision");
  if (held < length) window.Resize(length);  // the last step that can fail
  window.Copy(window, held - kept, 0, kept);
  window.Copy(data, 0, kept, added);
}

}  // namespace

void InitCircularBuffer(std::int32_t BufferSize, double IncrementStep, TCircularBufferState& State) {
  ResetCircularBuffer(State);
  State.BufferSize = BufferSize;
  State.IncrementStep = std::isnan(IncrementStep) ? 1.0 : EnsureRange(1.0, IncrementStep, 10.0);
}

void ResetCircularBuffer(TCircularBufferState& State) {
  State.ReadPosition = 0;
  State.DataLen = 0;
  State.IsBufferOverrun = false;
  State.IsBufferUnderrun = false;
}

void ResizeCircularBuffer(std::int32_t NewSize, TCircularBufferState& State, TVec& Buffer) {
  if (NewSize == State.BufferSize) return;
  if (NewSize < 1) ERaise("NewSize < 1");
  if (State.DataLen < 0) ERaise("State.DataLen < 0");
  const Borrowed<TVec> resized;
  Regrow(*resized, Buffer, State, NewSize, Buffer.FloatPrecision());
  Buffer.Take(*resized);
  SetSize(State, NewSize);
}

void WriteToCircularBuffer(TVec& Buffer, const TVec& Data, TCircularBufferState& State, bool AutoResize) {
  if (Overlap(Buffer, Data)) {
    const Borrowed<TVec> copy;
    copy->Copy(Data);
    return WriteToCircularBuffer(Buffer, *copy, State, AutoResize);
  }
  if (!AutoResize) return WriteFixed(Buffer, Data, State);
  if (State.DataLen < 0) ERaise("State.DataLen < 0");
  const std::int64_t room = static_cast<std::int64_t>(State.BufferSize) - State.DataLen;
  return Data.Length() > room ? WriteGrowing(Buffer, Data, State) : WriteFitting(Buffer, Data, State);
}

void ReadFromCircularBuffer(const TVec& Buffer, TVec& Dst, TCircularBufferState& State, std::int32_t Advance) {
  CheckRead(Buffer, Dst, State);
  const std::int32_t wanted = Advance == -1 ? Dst.Length() : Advance;
  const std::int32_t advance = std::min(std::max(wanted, 1), Dst.Length());
  ReadStep(Buffer, Dst, State, State.ReadPosition, advance);
  State.ReadPosition = Advanced(State.ReadPosition, advance, State.BufferSize);
}

void MonitorCircularBuffer(const TVec& Buffer, TVec& Dst, TCircularBufferState& State, TMonitorMode Mode) {
  if (Mode != TMonitorMode::mmFromStart && Mode != TMonitorMode::mmFromEnd) return;
  CheckRead(Buffer, Dst, State);
  std::int32_t position = State.ReadPosition;
  if (Mode == TMonitorMode::mmFromEnd) {
    const std::int64_t size = State.BufferSize;
    const std::int64_t wanted = (static_cast<std::int64_t>(position) + State.DataLen - Dst.Length()) % size;
    position = static_cast<std::int32_t>(wanted < 0 ? wanted + size : wanted);
  }
  ReadStep(Buffer, Dst, State, position, 0);
}

void AdvanceCircularBuffer(std::int32_t SamplesToSkip, TCircularBufferState& State) {
  if (SamplesToSkip < 0) ERaise("SamplesToSkip < 0");
  if (State.BufferSize < 1) ERaise(kNoRing);
  State.ReadPosition = Advanced(State.ReadPosition, SamplesToSkip, State.BufferSize);
  State.DataLen = std::max(State.DataLen - SamplesToSkip, 0);
}

std::int32_t PeekCircularBuffer(const TCircularBufferState& State) { return State.DataLen; }

std::int32_t WritePositionCircularBuffer(const TCircularBufferState& State) {
  if (State.BufferSize < 1) return -1;
  return Advanced(State.ReadPosition, State.DataLen, State.BufferSize);
}

void CircularBuffer(TVec& Buffer, const TVec& Data, std::int32_t BufferLength) {
  if (BufferLength < 0) ERaise("BufferLength < 0");
  if (Overlap(Buffer, Data)) {
    const Borrowed<TVec> copy;
    copy->Copy(Data);
    return CircularBuffer(Buffer, *copy, BufferLength);
  }
  const bool starts = Buffer.Length() == 0 || Buffer.Length() > BufferLength;
  if (starts || Data.Length() > BufferLength) {
    return TakeNewest(Buffer, Data, std::min(Data.Length(), BufferLength));
  }
  if (Data.Length() < BufferLength - Buffer.Length()) return Append(Buffer, Data);
  SlideIn(Buffer, Data, BufferLength);
}

}  // namespace passband::SignalUtils
