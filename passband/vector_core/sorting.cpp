#include "passband/vector_core/sorting.h"

#include <algorithm>
#include <cmath>

namespace passband {

template <class R>
void detail::SortAscending(std::span<R> values) {
  // A NaN compares false with everything, which is no order at all: it must not reach the sort.
  const auto nan_begin = std::partition(values.begin(), values.end(), [](R x) { return !std::isnan(x); });
  std::sort(values.begin(), nan_begin);
}

template void detail::SortAscending(std::span<float>);
template void detail::SortAscending(std::span<double>);

void QuickSortAsc(std::span<double> Values) { detail::SortAscending(Values); }
void QuickSortAsc(std::span<float> Values) { detail::SortAscending(Values); }

}  // namespace passband
