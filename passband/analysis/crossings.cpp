#include "passband/analysis/crossings.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "passband/analysis/search_range_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/primitives/search.h"
#include "passband/primitives/switch_counts.h"
#include "passband/vector_core/dispatch.h"

namespace passband::SignalUtils {
namespace {

using primitives::Crossing;
using primitives::Relation;

template <RealElement R>
std::int32_t FirstFrom(std::span<const R> x, std::int32_t from, Relation relation, R level) {
  std::int32_t index = 0;  // the status is Ok: pointer and count are sound
  static_cast<void>(
      primitives::FindFirst(x.data() + from, static_cast<std::int32_t>(x.size()) - from, relation, level, index));
  return from + index;
}

template <RealElement R>
std::int32_t LastUpTo(std::span<const R> x, std::int32_t to, Relation relation, R level) {
  std::int32_t index = 0;
  static_cast<void>(primitives::FindLast(x.data(), to + 1, relation, level, index));
  return std::max(index, 0);
}

// The left one of the two elements around the crossing; there are two.
template <RealElement R>
std::int32_t Nearest(std::span<const R> x, std::int32_t start, R level) {
  const auto last = static_cast<std::int32_t>(x.size()) - 1;
  const auto at = [x](std::int32_t i) { return x[static_cast<std::size_t>(i)]; };
  const std::int32_t left = std::min(start, last - 1);
  const bool rising = at(left + 1) > at(left);
  const bool falling = at(left) > at(left + 1);
  std::int32_t found = start;
  if (rising && at(start) <= level) {
    found = FirstFrom(x, start + 1, Relation::AtLeast, level) - 1;
  } else if (falling && at(start) >= level) {
    found = FirstFrom(x, start + 1, Relation::AtMost, level) - 1;
  } else if (rising && at(start) >= level) {
    found = LastUpTo(x, start, Relation::AtMost, level);
  } else if (falling && at(start) <= level) {
    found = LastUpTo(x, start, Relation::AtLeast, level);
  }
  return std::min(found, last - 1);
}

std::int32_t CountChanges(const TVec& src, double dc, detail::SearchRange range) {
  if (range.length < 2) return -1;
  primitives::Switches switches;
  ForReal(src, [&]<RealElement R>(ElementTag<R>) {
    const auto level = static_cast<R>(dc);
    const R* const x = src.Elements<R>().data() + range.index;
    static_cast<void>(primitives::CountCrossings(x, range.length - 1, Crossing::Either, level, x[0] > level, switches));
  });
  return switches.on + switches.off;
}

}  // namespace

void NextDCCrossing(const TVec& Src, std::int32_t& Index, double DC) {
  if (Src.Complex()) ERaise("Src.Complex = True");
  Index = std::max(std::min(Index, Src.Length() - 1), 0);
  if (Src.Length() == 0) return;
  ForReal(Src, [&]<RealElement R>(ElementTag<R>) {
    const std::span<const R> x = Src.Elements<R>();
    const auto level = static_cast<R>(DC);
    const bool above = x[static_cast<std::size_t>(Index)] > level;
    Index = std::min(FirstFrom(x, Index, above ? Relation::Below : Relation::Above, level), Src.Length() - 1);
  });
}

void NextZeroCrossing(const TVec& Src, std::int32_t& Index) { NextDCCrossing(Src, Index, 0); }

std::int32_t DCCrossingCount(const TVec& Src, double DC, std::int32_t Index, std::int32_t Len) {
  return CountChanges(Src, DC, detail::RangeOfCount(Src, Index, Len));
}

std::int32_t ZeroCrossingCount(const TVec& Src, std::int32_t Index, std::int32_t Len) {
  return DCCrossingCount(Src, 0, Index, Len);
}

std::int32_t DCCrossingCount(const TVec& Src, double DC, bool Downward, std::int32_t Index, std::int32_t Len) {
  const auto range = detail::RangeOfCount(Src, Index, Len);
  if (range.length == 0) return 0;
  primitives::Switches switches;
  ForReal(Src, [&]<RealElement R>(ElementTag<R>) {
    const auto level = static_cast<R>(DC);
    const R* const x = Src.Elements<R>().data() + range.index;
    const bool state = Downward ? x[0] < level : x[0] > level;
    static_cast<void>(primitives::CountCrossings(x, range.length, Downward ? Crossing::Downward : Crossing::Upward,
                                                 level, state, switches));
  });
  return switches.on;
}

void NearestDCCrossing(const TVec& Data, double& Pos, double& Value, double DC, bool Interpolate) {
  if (Data.Complex()) ERaise("Data.Complex = True");
  if (Data.Length() == 0) ERaise("NearestDCCrossing: Data.Length = 0");
  const std::int32_t last = Data.Length() - 1;
  if (last == 0) {
    Pos = 0;
    Value = Data[0];
    return;
  }
  const std::int32_t start = EnsureRange(0, Round(Pos), last);
  const double level = Data.IsDouble() ? DC : ToDouble(ToSingle(DC));
  const std::int32_t i = ForReal(
      Data, [&]<RealElement R>(ElementTag<R>) { return Nearest<R>(Data.Elements<R>(), start, static_cast<R>(level)); });
  const double slope = Data[i + 1] - Data[i];
  if (!Interpolate) {
    Pos = i;
    Value = Data[i];
  } else if (slope == 0) {
    Pos = 0;
    Value = Data[i + 1];
  } else {
    Pos = i + (level - Data[i]) / slope;
    Value = level;
  }
}

void NearestZeroCrossing(const TVec& Data, double& Pos, double& Value, bool Interpolate) {
  NearestDCCrossing(Data, Pos, Value, 0, Interpolate);
}

}  // namespace passband::SignalUtils
