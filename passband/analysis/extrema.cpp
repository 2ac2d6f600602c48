#include "passband/analysis/extrema.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "passband/analysis/search_range_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/primitives/search.h"
#include "passband/primitives/switch_counts.h"
#include "passband/vector_core/dispatch.h"

namespace passband::SignalUtils {
namespace {

std::int32_t Inside(std::int32_t index, std::int32_t length) { return std::max(std::min(index, length - 1), 0); }

template <bool kMaximum, class R>
bool IsHigher(R a, R b) {
  return kMaximum ? a > b : a < b;
}

template <bool kMaximum>
bool Nearest(const TVec& data, std::int32_t& index) {
  if (data.Complex()) ERaise("Data.Complex = True");
  const std::int32_t last = data.Length() - 1;
  index = Inside(index, data.Length());
  ForReal(data, [&]<RealElement R>(ElementTag<R>) {
    const R* const x = data.Elements<R>().data();
    while (index >= 1 && IsHigher<kMaximum>(x[index - 1], x[index])) --index;
    while (index < last && IsHigher<kMaximum>(x[index + 1], x[index])) ++index;
  });
  return index >= 1 && index < last;
}

// Advances to the first step of a kind, or to the last element. Extrema are mostly near: some steps are looked at here.
template <RealElement R>
void ToStep(std::span<const R> x, bool rising, std::int32_t& index) {
  constexpr std::int32_t kNear = 8;
  const auto last = static_cast<std::int32_t>(x.size()) - 1;
  for (const std::int32_t end = std::min(index + kNear, last); index < end; ++index) {
    const R* const here = x.data() + index;
    if (rising ? here[0] < here[1] : here[1] < here[0]) return;
  }
  std::int32_t further = 0;
  static_cast<void>(primitives::FindStep(x.data() + index, last + 1 - index, rising, further));
  index += further;
}

template <bool kMaximum>
bool Next(const TVec& src, std::int32_t& index) {
  if (src.Complex()) ERaise("Src.Complex = True");
  index = Inside(index, src.Length());
  if (src.Length() == 0) return false;
  ForReal(src, [&]<RealElement R>(ElementTag<R>) {
    const std::span<const R> x = src.Elements<R>();
    ToStep(x, kMaximum, index);
    ToStep(x, !kMaximum, index);
  });
  return index < src.Length() - 1;
}

// Maxima are where rising steps give way to falling ones; the search begins as if elements had been falling before.
template <bool kMaximum>
std::int32_t Count(const TVec& src, std::int32_t index, std::int32_t len) {
  const auto range = detail::RangeOfCount(src, index, len);
  if (range.length < 2) return -1;
  primitives::Switches switches;
  ForReal(src, [&]<RealElement R>(ElementTag<R>) {
    static_cast<void>(
        primitives::CountTurns(src.Elements<R>().data() + range.index, range.length, !kMaximum, switches));
  });
  return kMaximum ? switches.off : switches.on;
}

}  // namespace

bool NearestMaximum(const TVec& Data, std::int32_t& Index) { return Nearest<true>(Data, Index); }
bool NearestMinimum(const TVec& Data, std::int32_t& Index) { return Nearest<false>(Data, Index); }

bool NextMaximum(const TVec& Src, std::int32_t& Index) { return Next<true>(Src, Index); }
bool NextMinimum(const TVec& Src, std::int32_t& Index) { return Next<false>(Src, Index); }

std::int32_t MaximumCount(const TVec& Src, std::int32_t Index, std::int32_t Len) {
  return Count<true>(Src, Index, Len);
}
std::int32_t MinimumCount(const TVec& Src, std::int32_t Index, std::int32_t Len) {
  return Count<false>(Src, Index, Len);
}

}  // namespace passband::SignalUtils
