#include "passband/analysis/sort_conj.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/vector_core/dispatch.h"

namespace passband::SignalUtils {
namespace {

bool IsNan(TCplx x) { return std::isnan(x.Re) || std::isnan(x.Im); }

// Sorts by a key, NaN last, and calls `body` for each run of values that a chain of gaps of at most `tol` joins.
template <class Key, class Body>
void ForRuns(std::span<TCplx> values, double tol, Key key, Body body) {
  const auto ordered = values.first(static_cast<std::size_t>(
      std::stable_partition(values.begin(), values.end(), [](TCplx x) { return !IsNan(x); }) - values.begin()));
  std::stable_sort(ordered.begin(), ordered.end(), [&](TCplx a, TCplx b) { return key(a) < key(b); });
  for (std::size_t begin = 0; begin < ordered.size();) {
    std::size_t end = begin + 1;
    while (end < ordered.size() && Equal(key(ordered[end - 1]), key(ordered[end]), tol)) ++end;
    body(ordered.subspan(begin, end - begin));
    begin = end;
  }
}

// Values that agree but for the sign of their imaginary parts: negative, positive, negative, ...; those of the sign that
// is left over come last.
void Alternate(std::span<TCplx> values) {
  const auto negative = [](TCplx x) { return x.Im < 0; };
  const auto middle = std::stable_partition(values.begin(), values.end(), negative);
  const std::vector<TCplx> below(values.begin(), middle);
  const std::vector<TCplx> above(middle, values.end());
  std::size_t to = 0;
  for (std::size_t i = 0; i < std::max(below.size(), above.size()); ++i) {
    if (i < below.size()) values[to++] = below[i];
    if (i < above.size()) values[to++] = above[i];
  }
}

void SortComplex(std::span<TCplx> values, double tol) {
  const auto split = std::stable_partition(values.begin(), values.end(), [&](TCplx x) { return !Equal(x.Im, 0, tol); });
  const std::span<TCplx> complex(values.begin(), split);
  const std::span<TCplx> real(split, values.end());
  ForRuns(
      complex, tol, [](TCplx x) { return x.Re; },
      [&](std::span<TCplx> column) {
        ForRuns(
            column, tol, [](TCplx x) { return -std::abs(x.Im); }, Alternate);
      });
  for (TCplx& x : real) x.Im = 0;
  ForRuns(
      real, 0, [](TCplx x) { return x.Re; }, [](std::span<TCplx>) {});
}

}  // namespace

void SortConj(TVec& Vec, double Tol) { SortConj(Vec, 0, Vec.Length(), Tol); }

void SortConj(TVec& Vec, std::int32_t Index, std::int32_t Len, double Tol) {
  Vec.ValidateParams(Index, Len);
  if (!(Tol >= 0)) ERaise("not (Tol >= 0)");
  if (!Vec.Complex()) return Vec.SortAscend(Index, Len);
  ForReal(Vec, [&]<RealElement R>(ElementTag<R>) {
    using C = ComplexOf<R>;
    const auto stretch = Vec.Elements<C>().subspan(static_cast<std::size_t>(Index), static_cast<std::size_t>(Len));
    std::vector<TCplx> values(stretch.begin(), stretch.end());
    SortComplex(values, Tol);
    std::transform(values.begin(), values.end(), stretch.begin(), [](TCplx x) { return static_cast<C>(x); });
  });
}

}  // namespace passband::SignalUtils
