#include "passband/streaming/median_filter.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>
#include <string>
#include <utility>

#include "passband/foundation/exceptions.h"
#include "passband/primitives/median.h"
#include "passband/streaming/overlap_internal.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

using primitives::Status;

void CheckMask(std::int32_t mask) {
  if (mask < 1) ERaise("MedianFilter: MaskSize < 1");
}

[[noreturn]] void RaiseNoMemory() {
  throw Exception("MedianFilter: ippsFilterMedianAllocd: " + std::string(StatusText(Status::OutOfMemory)));
}

// Room for a state in a temporary of the pool.
void SizeFor(TVec& memory, std::size_t bytes) {
  const std::size_t doubles = bytes / sizeof(double) + 1;
  if (doubles > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) RaiseNoMemory();
  try {
    memory.Size(static_cast<std::int32_t>(doubles), TMtxFloatPrecision::DoubleReal);
  } catch (const std::bad_alloc&) {
    RaiseNoMemory();
  }
}

// A stream of its own. More samples before the start than there are behind it decide every median alike.
template <RealElement R>
void FilterOnce(const R* src, R* dst, std::int32_t len, std::int32_t mask) {
  const std::int32_t longest = len < std::numeric_limits<std::int32_t>::max() / 2 ? 2 * len + 1 : mask;
  mask = std::min(mask, longest);
  const Borrowed<TVec> memory;
  SizeFor(*memory, primitives::MedianStateSize<R>(mask));
  primitives::MedianState* state = nullptr;
  // The statuses are Ok: mask, memory and length have been checked.
  static_cast<void>(primitives::MedianCreate<R>(mask, memory->Values().data(), state));
  static_cast<void>(primitives::MedianFilter<R>(*state, src, dst, len));
}

}  // namespace

void MedianInit(std::int32_t MaskSize, TMedianState& State, TMtxFloatPrecision FloatPrecision) {
  if (MaskSize < 1) ERaise("MedianInit: MaskSize < 1");
  if (FloatPrecision > TMtxFloatPrecision::DoubleComplex) {
    ERaise("MedianInit: FloatPrecision is none of the four precisions");
  }
  TMedianState fresh;
  fresh.FloatPrecision = FloatPrecision;
  const Status status = ForReal(IsDoublePrecision(FloatPrecision), [&]<RealElement R>(ElementTag<R>) {
    return primitives::MedianCreate<R>(MaskSize | 1, fresh.State);
  });
  if (primitives::Failed(status)) throw std::bad_alloc();  // all else has been checked
  State = std::move(fresh);
}

void MedianFilter(const TVec& Src, TVec& Dst, const TMedianState& State) {
  if (Src.Length() == 0) return Dst.Size(Src);
  if (Src.FloatPrecision() != State.FloatPrecision) ERaise("MedianFilter: Src.FloatPrecision <> State.FloatPrecision");
  if (Src.Complex()) ERaise("MedianFilter: Src.Complex = True");
  if (State.State == nullptr) ERaise("MedianFilter: State.State = nil");
  if (detail::NeedsCopy(Src, Dst)) {
    const Borrowed<TVec> copy;
    copy->Copy(Src);
    return MedianFilter(*copy, Dst, State);
  }
  Dst.Size(Src);  // the last step that can fail; the state still stands
  ForReal(Src, [&]<RealElement R>(ElementTag<R>) {
    // The status is Ok: precision and length have been checked.
    static_cast<void>(
        primitives::MedianFilter<R>(*State.State, Src.Elements<R>().data(), Dst.Elements<R>().data(), Src.Length()));
  });
}

void MedianFree(TMedianState& State) {
  State.State.reset();
  State.Data = TVec();
  State.Buffer = TVec();
}

void MedianFilter(const TVec& Src, TVec& Dst, std::int32_t MaskSize, std::int32_t SrcIndex, std::int32_t DstIndex,
                  std::int32_t Len) {
  Dst.ValidateParams(Src, SrcIndex, DstIndex, Len);
  if (Src.Complex()) ERaise("Src.Complex = True");
  CheckMask(MaskSize);
  if (Len == 0) return;
  const std::int32_t mask = MaskSize > Dst.Length() ? Len : MaskSize;
  TVec src;
  src.SetSubRange(Src, SrcIndex, Len);
  TVec dst;
  dst.SetSubRange(Dst, DstIndex, Len);
  const Borrowed<TVec> copy;
  const bool copied = detail::NeedsCopy(src, dst);
  if (copied) copy->Copy(src);
  ForReal(Src, [&]<RealElement R>(ElementTag<R>) {
    FilterOnce<R>((copied ? *copy : src).Elements<R>().data(), dst.Elements<R>().data(), Len, mask);
  });
}

void MedianFilter(const TVec& Src, TVec& Dst, std::int32_t MaskSize) {
  if (Src.Complex()) ERaise("Src.Complex = True");
  CheckMask(MaskSize);
  if (Dst.Length() == Src.Length() && Dst.FloatPrecision() == Src.FloatPrecision()) {
    return MedianFilter(Src, Dst, MaskSize, 0, 0, Src.Length());
  }
  const Borrowed<TVec> result;
  result->Size(Src);
  MedianFilter(Src, *result, MaskSize, 0, 0, Src.Length());
  Dst.Take(*result);
}

void MedianFilter(TVec& Data, std::int32_t MaskSize, std::int32_t Index, std::int32_t Len) {
  Data.ValidateParams(Index, Len);
  if (Data.Complex()) ERaise("Data.Complex = True");
  CheckMask(MaskSize);
  if (Len == 0) return;
  ForReal(Data, [&]<RealElement R>(ElementTag<R>) {
    R* const x = Data.Elements<R>().data() + Index;
    FilterOnce<R>(x, x, Len, MaskSize);
  });
}

}  // namespace passband::SignalUtils
