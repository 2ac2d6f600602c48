#include "passband/streaming/moving_average.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <type_traits>
#include <utility>

#include "passband/foundation/exceptions.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

// What elements are summed up in.
template <Element T>
using SumOf = std::conditional_t<IsComplex<T>, TCplx, double>;

// A mean over all elements in every place: windows of twice the length reach over all of them.
template <Element T>
void AverageAll(std::span<T> x, double order) {
  SumOf<T> sum{};
  for (const T v : x) sum += static_cast<SumOf<T>>(v);
  std::fill(x.begin(), x.end(), static_cast<T>(sum * (1 / order)));
}

// The data are cut into blocks of `order` elements. A window that ends at place t of a block is the block up to t and the
// end of the block before it from t + 1 on. The sums over both are running sums, one up the block for its own windows, one
// down the block for those of the next; they walk together, each with its own chain of additions.
template <Element T>
void Average(std::span<const T> x, std::span<T> y, std::size_t order, SumOf<T>* end_before, SumOf<T>* end) {
  const std::size_t half = order / 2;
  const std::size_t last = x.size() + half;  // windows end before it
  const auto at = [&](std::size_t n) { return n < x.size() ? static_cast<SumOf<T>>(x[n]) : SumOf<T>{}; };
  const double scale = 1 / static_cast<double>(order);
  std::fill_n(end_before, order + 1, SumOf<T>{});
  end[order] = {};
  for (std::size_t start = 0; start < last; start += order) {
    SumOf<T> up{};
    SumOf<T> down{};
    for (std::size_t t = 0; t < order; ++t) {
      up += at(start + t);
      down += at(start + order - 1 - t);
      end[order - 1 - t] = down;
      const std::size_t n = start + t - half;  // wraps below 0
      if (n < y.size()) y[n] = static_cast<T>((up + end_before[t + 1]) * scale);
    }
    std::swap(end_before, end);
  }
}

template <Element T>
void AverageInPlace(std::span<T> x, std::size_t order) {
  if (order >= 2 * x.size()) return AverageAll(x, static_cast<double>(order));
  const Borrowed<TVec> ends;
  const Borrowed<TVec> means;
  ends->Size(static_cast<std::int32_t>(2 * (order + 1)), PrecisionOf<SumOf<T>>);
  means->Size(static_cast<std::int32_t>(x.size()), PrecisionOf<T>);
  const auto y = means->Elements<T>();
  SumOf<T>* const end = ends->Elements<SumOf<T>>().data();
  Average<T>(x, y, order, end, end + order + 1);
  std::copy(y.begin(), y.end(), x.begin());
}

}  // namespace

void MovingAverageImpulse(TVec& H, std::int32_t Order) {
  if (Order <= 0) ERaise("MovingAverageImpulse: Order <= 0");
  H.Size(Order, false, H.IsDouble());
  H.SetVal(1.0 / Order);
}

void MovingAverageFilter(TVec& Data, std::int32_t Order, std::int32_t Index, std::int32_t Len) {
  if (Order <= 0) ERaise("MovingAverageFilter: Order <= 0");
  if (Len < 0) Len = Data.Length();
  if (Len == 0) return;
  if (Len == Data.Length()) Index = 0;
  Data.ValidateParams(Index, Len);
  ForAny(Data, [&]<Element T>(ElementTag<T>) {
    const auto x = Data.Elements<T>().subspan(static_cast<std::size_t>(Index), static_cast<std::size_t>(Len));
    AverageInPlace(x, static_cast<std::size_t>(Order));
  });
}

}  // namespace passband::SignalUtils
