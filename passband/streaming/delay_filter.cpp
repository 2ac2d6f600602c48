#include "passband/streaming/delay_filter.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

#include "passband/foundation/exceptions.h"
#include "passband/streaming/overlap_internal.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

// Samples that the line takes up at least before it moves back to the start of its memory.
constexpr std::int32_t kRoom = 4096;
constexpr std::int32_t kLongest = std::numeric_limits<std::int32_t>::max() - kRoom;

// A delay line with the leading samples of `data` and zeros behind them.
TDelayFilterState LineFrom(std::int32_t delay, const TVec& data) {
  const std::int32_t room = std::clamp(delay, kRoom, std::numeric_limits<std::int32_t>::max() - delay);
  TDelayFilterState fresh;
  fresh.SampleCount = delay;
  fresh.Line.Size(delay + room, data.FloatPrecision());
  fresh.Line.SetZero(0, delay);
  fresh.Line.Copy(data, 0, 0, std::min(delay, data.Length()));
  fresh.Data.SetSubRange(fresh.Line, 0, delay);
  return fresh;
}

bool MovesAlong(const TDelayFilterState& state) {
  const auto data = state.Data.Memory();
  const auto line = state.Line.Memory();
  return state.Data.Length() == state.SampleCount && state.Line.FloatPrecision() == state.Data.FloatPrecision() &&
         data.data() >= line.data() && data.data() + data.size() <= line.data() + line.size();
}

// Passes the samples through the line piece by piece: a piece goes in before the one that comes out is written.
template <Element T>
void Pass(const T* src, T* dst, std::size_t count, TDelayFilterState& state) {
  const auto line = state.Line.Elements<T>();
  const auto delay = static_cast<std::size_t>(state.SampleCount);
  auto place = static_cast<std::size_t>(state.Data.Elements<T>().data() - line.data());
  while (count > 0) {
    if (place + delay == line.size()) {
      std::copy_n(line.begin() + static_cast<std::ptrdiff_t>(place), delay, line.begin());
      place = 0;
    }
    const std::size_t taken = std::min(count, line.size() - place - delay);
    std::copy_n(src, taken, line.data() + place + delay);
    std::copy_n(line.data() + place, taken, dst);
    place += taken;
    src += taken;
    dst += taken;
    count -= taken;
  }
  state.Data.SetSubRange(state.Line, static_cast<std::int32_t>(place), state.SampleCount);
}

}  // namespace

void DelayInit(std::int32_t SampleCount, TDelayFilterState& State, TMtxFloatPrecision FloatPrecision) {
  if (SampleCount > kLongest) ERaise("SampleCount > 2147479551");
  const Borrowed<TVec> none;
  none->Size(0, FloatPrecision);
  TDelayFilterState fresh = LineFrom(std::max(SampleCount, 0), *none);
  fresh.SampleCount = SampleCount;
  State = std::move(fresh);
}

void DelayFilter(const TVec& Src, TVec& Dst, TDelayFilterState& State) {
  if (Src.FloatPrecision() != State.Data.FloatPrecision()) {
    ERaise("DelayFilter: Src.FloatPrecision <> State.Data.FloatPrecision");
  }
  if (State.SampleCount < 1) return Dst.Copy(Src);
  if (State.SampleCount > kLongest) ERaise("SampleCount > 2147479551");
  if (detail::NeedsCopy(Src, Dst)) {
    const Borrowed<TVec> copy;
    copy->Copy(Src);
    return DelayFilter(*copy, Dst, State);
  }
  if (Src.Length() > 0 && !MovesAlong(State)) State = LineFrom(State.SampleCount, State.Data);
  Dst.Size(Src);
  if (Src.Length() == 0) return;
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    const auto x = Src.Elements<T>();
    Pass(x.data(), Dst.Elements<T>().data(), x.size(), State);
  });
}

void DelayFree(TDelayFilterState& State) {
  State.Data = TVec();
  State.Line = TVec();
}

}  // namespace passband::SignalUtils
