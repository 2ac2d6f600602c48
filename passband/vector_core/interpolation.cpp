#include "passband/vector_core/interpolation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>
#include <string>

#include "passband/vector_core/double_data_internal.h"
#include "passband/vector_core/pool.h"

namespace passband {
namespace {

using detail::DoubleElement;

void CheckPoints(const TVec& x, const TVec& y, const TVec& new_x) {
  if (x.Complex() || new_x.Complex()) ERaise("Interpolate: complex X");
  if (x.Length() != y.Length()) {
    ERaise("Interpolate: X has " + std::to_string(x.Length()) + " elements, Y " + std::to_string(y.Length()));
  }
  if (x.Length() == 0) ERaise("Interpolate: no points");
  detail::RequireSameIsDouble(x, y);
  detail::RequireSameIsDouble(x, new_x);
  if (!detail::AllFinite(x)) ERaise("Interpolate: X is not finite");
  for (std::int32_t k = 1; k < x.Length(); ++k) {
    if (!(x[k - 1] < x[k])) ERaise("Interpolate: X does not ascend strictly");
  }
}

// The last k with x[k] <= at, within the pieces 0 .. size - 2; looked for from the piece of the element before.
std::size_t Piece(std::span<const double> x, double at, std::size_t last, bool near_last) {
  const std::size_t last_piece = x.size() - 2;
  if (near_last && x[last] <= at) {
    while (last < last_piece && x[last + 1] <= at) ++last;
    return last;
  }
  const auto above = std::upper_bound(x.begin(), x.end(), at);
  const auto count = static_cast<std::size_t>(above - x.begin());
  return std::min(count == 0 ? 0 : count - 1, last_piece);
}

double Line(double a, double b, double t) { return std::lerp(a, b, t); }
TCplx Line(TCplx a, TCplx b, double t) { return {std::lerp(a.Re, b.Re, t), std::lerp(a.Im, b.Im, t)}; }

// The derivatives of the not-a-knot spline at the points: continuity of the second derivative gives one equation for
// each inner point; at the ends the first two and the last two pieces are the same cubic. Elimination without pivoting
// is stable: the inner rows are diagonally dominant, and the first step leaves them so.
template <DoubleElement T>
void SplineSlopes(std::span<const double> x, std::span<const T> y, std::span<T> slopes) {
  const std::size_t n = x.size();
  const auto h = [&](std::size_t k) { return x[k + 1] - x[k]; };
  const auto secant = [&](std::size_t k) { return (y[k + 1] - y[k]) * (1 / h(k)); };
  Borrowed<TVec> work;
  work->Size(static_cast<std::int32_t>(n), TMtxFloatPrecision::DoubleReal);
  const auto upper = work->Values();  // the upper diagonal after elimination of the lower one

  const double first = h(0) + h(1);
  double pivot = h(1);
  upper[0] = first / pivot;
  slopes[0] = ((h(0) + 2 * first) * h(1) * secant(0) + h(0) * h(0) * secant(1)) * (1 / first / pivot);
  for (std::size_t k = 1; k + 1 < n; ++k) {
    pivot = 2 * (h(k - 1) + h(k)) - h(k) * upper[k - 1];
    upper[k] = h(k - 1) / pivot;
    slopes[k] = (3 * (h(k) * secant(k - 1) + h(k - 1) * secant(k)) - h(k) * slopes[k - 1]) * (1 / pivot);
  }
  const double last = h(n - 3) + h(n - 2);
  pivot = h(n - 3) - last * upper[n - 2];
  const T right = (h(n - 2) * h(n - 2) * secant(n - 3) + (2 * last + h(n - 2)) * h(n - 3) * secant(n - 2)) * (1 / last);
  slopes[n - 1] = (right - last * slopes[n - 2]) * (1 / pivot);
  for (std::size_t k = n - 1; k-- > 0;) slopes[k] = slopes[k] - upper[k] * slopes[k + 1];
}

// Three points: the derivatives of the parabola.
template <DoubleElement T>
void ParabolaSlopes(std::span<const double> x, std::span<const T> y, std::span<T> slopes) {
  const double h0 = x[1] - x[0];
  const double h1 = x[2] - x[1];
  const T s0 = (y[1] - y[0]) * (1 / h0);
  const T s1 = (y[2] - y[1]) * (1 / h1);
  const T curvature = (s1 - s0) * (1 / (h0 + h1));
  slopes[0] = s0 - h0 * curvature;
  slopes[1] = s0 + h0 * curvature;
  slopes[2] = s1 + h1 * curvature;
}

// A Hermite piece, t = 0 .. 1.
template <DoubleElement T>
T Cubic(T y0, T y1, T slope0, T slope1, double h, double t) {
  const T rise = y1 - y0;
  const T c2 = 3 * rise - h * (2 * slope0 + slope1);
  const T c3 = h * (slope0 + slope1) - 2 * rise;
  return y0 + t * (h * slope0 + t * (c2 + t * c3));
}

template <DoubleElement T>
struct Table {
  std::span<const double> x;
  std::span<const T> y;
  std::span<const T> slopes;  // empty: straight lines

  T At(double at, std::size_t k) const {
    if (at == x[k]) return y[k];
    if (at == x[k + 1]) return y[k + 1];
    const double h = x[k + 1] - x[k];
    const double t = (at - x[k]) / h;
    if (slopes.empty()) return Line(y[k], y[k + 1], t);
    return Cubic(y[k], y[k + 1], slopes[k], slopes[k + 1], h, t);
  }
};

template <DoubleElement T>
void Evaluate(const Table<T>& table, std::span<const double> at, bool sorted, std::span<T> out) {
  std::size_t piece = 0;
  for (std::size_t i = 0; i < at.size(); ++i) {
    if (table.x.size() == 1) {
      out[i] = std::isnan(at[i]) ? detail::WidenElement<T>(at[i]) : table.y[0];
      continue;
    }
    if (!std::isnan(at[i])) piece = Piece(table.x, at[i], piece, sorted);
    out[i] = std::isnan(at[i]) ? detail::WidenElement<T>(at[i]) : table.At(at[i], piece);
  }
}

template <DoubleElement T>
void CopyWide(const TVec& src, TVec& dst) {
  dst.Size(src.Length(), PrecisionOf<T>);
  detail::Widen(src, dst.Elements<T>());
}

}  // namespace

void Interpolate(const TVec& X, const TVec& Y, const TVec& NewX, TVec& NewY, TInterpolationType Type, bool SortedX) {
  CheckPoints(X, Y, NewX);
  const bool is_double = Y.IsDouble();
  detail::ForDouble(Y.Complex(), [&]<DoubleElement T>(ElementTag<T>) {
    Borrowed<TVec> x;
    Borrowed<TVec> y;
    Borrowed<TVec> at;
    Borrowed<TVec> slopes;
    Borrowed<TVec> out;
    CopyWide<double>(X, *x);
    CopyWide<T>(Y, *y);
    CopyWide<double>(NewX, *at);
    const std::int32_t length = x->Length();
    slopes->Size(Type == TInterpolationType::Cubic && length > 2 ? length : 0, PrecisionOf<T>);
    if (slopes->Length() > 3) SplineSlopes<T>(x->Values(), y->Elements<T>(), slopes->Elements<T>());
    if (slopes->Length() == 3) ParabolaSlopes<T>(x->Values(), y->Elements<T>(), slopes->Elements<T>());
    out->Size(at->Length(), PrecisionOf<T>);
    Evaluate<T>({x->Values(), y->Elements<T>(), slopes->Elements<T>()}, at->Values(), SortedX, out->Elements<T>());
    NewY.Size(at->Length(), IsComplex<T>, is_double);
    detail::StoreRounded(out->Elements<T>(), NewY);
  });
}

}  // namespace passband
