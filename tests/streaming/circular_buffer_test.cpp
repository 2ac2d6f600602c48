#include "passband/streaming/circular_buffer.h"

#include <deque>
#include <limits>
#include <random>

#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::SameBits;
using enum TMtxFloatPrecision;

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();

// The samples first, first + 1, ... of a stream that counts.
TVec Count(std::int32_t first, std::int32_t length, TMtxFloatPrecision precision = DoubleReal) {
  TVec v;
  v.Size(length, precision);
  for (std::int32_t i = 0; i < length; ++i) test::Put(v, i, {first + i * 1.0, -(first + i * 1.0)});
  return v;
}

TCircularBufferState State(std::int32_t read, std::int32_t size, std::int32_t length) {
  return {.ReadPosition = read, .BufferSize = size, .DataLen = length};
}

TEST(CircularBufferState, InitClampsTheGrowth) {
  TCircularBufferState state = State(3, 4, 2);
  state.IsBufferOverrun = state.IsBufferUnderrun = true;
  for (const auto& [step, kept] : {std::pair{0.5, 1.0}, {25.0, 10.0}, {1.5, 1.5}, {std::nan(""), 1.0}}) {
    InitCircularBuffer(100, step, state);
    EXPECT_EQ(state.IncrementStep, kept);
  }
  EXPECT_EQ(state.ReadPosition + state.DataLen, 0);
  EXPECT_FALSE(state.IsBufferOverrun || state.IsBufferUnderrun);
  InitCircularBuffer(0, 1, state);
  EXPECT_EQ(WritePositionCircularBuffer(state), -1);
}

TEST(CircularBufferState, FixedWritesWrapAndSaturate) {
  TVec buffer = Count(100, 8);
  TCircularBufferState state = State(6, 8, 0);
  WriteToCircularBuffer(buffer, Count(0, 4), state);
  EXPECT_TRUE(SameBits(buffer, {2, 3, 102, 103, 104, 105, 0, 1}));
  EXPECT_EQ(state.DataLen, 4);
  EXPECT_FALSE(state.IsBufferOverrun);

  state = State(2, 8, 5);
  WriteToCircularBuffer(buffer, Count(0, 4), state);
  EXPECT_TRUE(SameBits(test::Slice(buffer, 0, 3), {1, 2, 3}));
  EXPECT_EQ(buffer[7], 0);
  EXPECT_EQ(state.DataLen, 8);
  EXPECT_TRUE(state.IsBufferOverrun);

  state = State(3, 8, 8);  // full: both positions coincide and the whole ring counts as room
  WriteToCircularBuffer(buffer, Count(0, 8), state);
  EXPECT_FALSE(state.IsBufferOverrun);

  state = State(5, 8, 2);
  WriteToCircularBuffer(buffer, Count(0, 20, SingleComplex), state);
  EXPECT_TRUE(SameBits(buffer, Count(12, 8, SingleComplex)));
  EXPECT_EQ(state.DataLen, 8);
  EXPECT_EQ(state.ReadPosition, 5);
  EXPECT_TRUE(state.IsBufferOverrun);
}

TEST(CircularBufferState, GrowsByItsFactorAndKeepsTheUnread) {
  TVec buffer;
  TCircularBufferState state;
  InitCircularBuffer(100, 1.5, state);
  WriteToCircularBuffer(buffer, Count(0, 90), state);
  TVec head = Count(0, 60);
  ReadFromCircularBuffer(buffer, head, state);
  WriteToCircularBuffer(buffer, Count(90, 50), state, true);  // 30 to 139, wraps
  ASSERT_EQ(state.BufferSize, 100);
  WriteToCircularBuffer(buffer, Count(140, 50), state, true);
  EXPECT_EQ(state.BufferSize, 195);  // Ceil(130 * 1.5)
  EXPECT_EQ(state.ReadPosition, 0);
  EXPECT_EQ(buffer.Length(), 195);
  EXPECT_TRUE(SameBits(test::Slice(buffer, 0, 130), Count(60, 130)));

  TCircularBufferState empty;
  InitCircularBuffer(-3, 1, empty);
  WriteToCircularBuffer(buffer, Count(0, 5), empty, true);
  EXPECT_EQ(empty.BufferSize, 5);
}

TEST(CircularBufferState, ReadsMayOverlapAndMonitorsConsumeNothing) {
  const TVec buffer = Count(0, 8);
  TVec six = Count(0, 6);
  for (const auto& [advance, consumed] : {std::pair{-1, 6}, {2, 2}, {0, 1}, {100, 6}}) {
    TCircularBufferState state = State(5, 8, 7);
    ReadFromCircularBuffer(buffer, six, state, advance);
    EXPECT_TRUE(SameBits(six, {5, 6, 7, 0, 1, 2}));
    EXPECT_EQ(state.ReadPosition, (5 + consumed) % 8);
    EXPECT_EQ(state.DataLen, 7 - consumed);
  }
  TCircularBufferState state = State(5, 8, 3);
  MonitorCircularBuffer(buffer, six, state, TMonitorMode::mmFromEnd);
  EXPECT_TRUE(SameBits(six, {2, 3, 4, 5, 6, 7}));
  EXPECT_TRUE(state.IsBufferUnderrun);
  EXPECT_EQ(state.ReadPosition * 10 + state.DataLen, 53);
  MonitorCircularBuffer(buffer, six, state, TMonitorMode::mmFromStart);
  EXPECT_TRUE(SameBits(six, {5, 6, 7, 0, 1, 2}));
  TVec none;
  ReadFromCircularBuffer(buffer, none, state);
  EXPECT_EQ(state.ReadPosition * 10 + state.DataLen, 53);
}

TEST(CircularBufferState, ResizeComparesWithWhatWasHeld) {
  for (const auto& [size, underrun] : {std::pair{10, true}, {11, false}, {3, true}}) {
    TVec buffer = Count(0, 20);
    TCircularBufferState state = State(15, 20, 10);
    state.IsBufferOverrun = true;
    ResizeCircularBuffer(size, state, buffer);
    EXPECT_EQ(state.IsBufferUnderrun, underrun);
    EXPECT_FALSE(state.IsBufferOverrun);
    EXPECT_EQ(buffer.Length(), size);
    EXPECT_EQ(state.DataLen, std::min(size, 10));
    EXPECT_TRUE(SameBits(test::Slice(buffer, 0, 3), {15, 16, 17}));
  }
}

TEST(CircularBufferState, RefusalsChangeNothing) {
  const TVec kept = Count(0, 8);
  TVec buffer = kept;
  TVec nine = Count(0, 9);
  TVec single = Count(0, 3, SingleReal);
  TCircularBufferState state = State(5, 8, 3);
  EXPECT_RAISES(ReadFromCircularBuffer(buffer, nine, state), ECoreError, "Dst.Length > State.BufferSize");
  EXPECT_RAISES(ReadFromCircularBuffer(nine, single, state), ECoreError, "Buffer.Length <> BufferSize");
  EXPECT_THROW(ReadFromCircularBuffer(buffer, single, state), ECoreError);
  EXPECT_RAISES(AdvanceCircularBuffer(-1, state), ECoreError, "SamplesToSkip < 0");
  EXPECT_RAISES(ResizeCircularBuffer(0, state, buffer), ECoreError, "NewSize < 1");
  EXPECT_EQ(state.ReadPosition * 10 + state.DataLen, 53);

  TCircularBufferState ringless = State(0, 0, 0);
  EXPECT_RAISES(WriteToCircularBuffer(buffer, single, ringless), ECoreError, "BufferSize < 1");
  EXPECT_RAISES(AdvanceCircularBuffer(1, ringless), ECoreError, "BufferSize < 1");
  TCircularBufferState huge = State(0, kLargest, kLargest);
  EXPECT_RAISES(WriteToCircularBuffer(buffer, single, huge, true), ECoreError, "BufferSize > 2147483647");
  TCircularBufferState broken = State(8, 8, 3);
  EXPECT_RAISES(WriteToCircularBuffer(buffer, single, broken), ECoreError, "State.ReadPosition is outside the buffer");
  EXPECT_RAISES(CircularBuffer(buffer, single, -1), ECoreError, "BufferLength < 0");
  EXPECT_RAISES(CircularBuffer(buffer, single, 8), ECoreError, "Buffer.FloatPrecision <> Data.FloatPrecision");
  EXPECT_TRUE(SameBits(buffer, kept));
}

TEST(CircularBufferState, AgreesWithAQueueAsLongAsNothingIsLost) {
  std::mt19937 generator(5);
  const auto upTo = [&](std::int32_t n) {
    return static_cast<std::int32_t>(generator() % (static_cast<std::uint32_t>(n) + 1U));
  };
  for (const bool grows : {false, true}) {
    TVec buffer = Count(0, 50);
    TCircularBufferState state;
    InitCircularBuffer(50, 1.3, state);
    std::deque<std::int32_t> queue;
    std::int32_t next = 0;
    for (int step = 0; step < 3000; ++step) {
      if (generator() % 2 == 0) {
        const std::int32_t count = grows ? upTo(30) : upTo(50 - state.DataLen);
        WriteToCircularBuffer(buffer, Count(next, count), state, grows);
        for (std::int32_t i = 0; i < count; ++i) queue.push_back(next++);
      } else {
        TVec out = Count(0, upTo(state.DataLen));
        const std::int32_t advance = out.Length() == 0 ? 0 : 1 + upTo(out.Length() - 1);
        ReadFromCircularBuffer(buffer, out, state, advance);
        for (std::int32_t i = 0; i < out.Length(); ++i) ASSERT_EQ(out[i], queue[static_cast<std::size_t>(i)]);
        queue.erase(queue.begin(), queue.begin() + advance);
      }
      ASSERT_EQ(PeekCircularBuffer(state), static_cast<std::int32_t>(queue.size()));
      ASSERT_FALSE(state.IsBufferOverrun);
    }
  }
}

TEST(CircularBuffer, KeepsTheNewestSamples) {
  for (const std::int32_t block : {1, 3, 5, 7}) {
    TVec window;
    for (std::int32_t n = 0; n < 40; n += block) {
      CircularBuffer(window, Count(n, block, SingleComplex), 5);
      const std::int32_t end = n + block;
      const std::int32_t held = std::min(5, end);
      ASSERT_TRUE(SameBits(window, Count(end - held, held, SingleComplex))) << block << " at " << n;
    }
    CircularBuffer(window, Count(0, 2), 3);  // longer than asked for: starts anew
    EXPECT_TRUE(SameBits(window, Count(0, 2)));
    CircularBuffer(window, window, 3);
    EXPECT_TRUE(SameBits(window, {1, 0, 1}));
  }
}

}  // namespace
}  // namespace passband::SignalUtils
