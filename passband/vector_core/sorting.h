// Sorting of plain arrays.
#pragma once

#include <span>
#include <vector>

#include "passband/foundation/export.h"

namespace passband {

namespace detail {
/// Ascending order of real numbers in place, NaN last; what `QuickSortAsc` and `TVec::SortAscend` share. R is float or
/// double.
template <class R>
void SortAscending(std::span<R> values);
}  // namespace detail

/// Sorts in place into ascending order: -infinity, the negative numbers, zeros of either sign, the positive numbers,
/// infinity, NaN last. Not stable among zeros and NaN, which is visible in their signs and payloads only.
///
/// Cost: O(n log n), also in the worst case; allocates nothing.
/// Literature: Musser, "Introspective sorting and selection algorithms", Software: Practice and Experience 27, 1997.
PASSBAND_EXPORT void QuickSortAsc(std::span<double> Values);
PASSBAND_EXPORT void QuickSortAsc(std::span<float> Values);
inline void QuickSortAsc(std::vector<double>& Values) { QuickSortAsc(std::span<double>(Values)); }
inline void QuickSortAsc(std::vector<float>& Values) { QuickSortAsc(std::span<float>(Values)); }

}  // namespace passband
