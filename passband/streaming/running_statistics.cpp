#include "passband/streaming/running_statistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "passband/foundation/exceptions.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

constexpr std::size_t kPiece = 256;

bool SameShape(const TVec& a, const TVec& b) { return a.Length() == b.Length(); }
bool SameShape(const TMtx& a, const TMtx& b) { return a.Rows() == b.Rows() && a.Cols() == b.Cols(); }

// Raises what arithmetic on operands that do not fit raises.
template <class Dense>
void CheckFits(const Dense& a, const Dense& b) {
  if (SameShape(a, b) && a.FloatPrecision() == b.FloatPrecision()) return;
  const Borrowed<Dense> difference;
  difference->Sub(a, b);
}

// a + (x - a) weight for a piece of the data. In loops of their own, which the compilers vectorise.
template <RealElement R>
void AveragePiece(R* a, const R* x, std::size_t count, double weight) {
  std::array<double, kPiece> next;
  bool finite = true;
  for (std::size_t i = 0; i < count; ++i) {
    const double old = static_cast<double>(a[i]);
    next[i] = old + (static_cast<double>(x[i]) - old) * weight;
  }
  for (std::size_t i = 0; i < count; ++i) finite &= std::abs(next[i]) <= std::numeric_limits<double>::max();
  for (std::size_t i = 0; !finite && i < count; ++i) {
    // An infinity stays one, and the difference of large numbers may have become one.
    if (!std::isfinite(next[i]))
      next[i] = static_cast<double>(a[i]) * (1 - weight) + static_cast<double>(x[i]) * weight;
  }
  for (std::size_t i = 0; i < count; ++i) a[i] = static_cast<R>(next[i]);
}

template <class Dense>
void Average(Dense& avg, const Dense& data, std::int32_t count, std::int32_t exp_count) {
  if (count <= 0) return avg.Copy(data);
  CheckFits(avg, data);
  const double weight = 1 / (exp_count < 2 ? static_cast<double>(count) + 1 : exp_count);
  ForAny(avg, [&]<Element T>(ElementTag<T>) {
    using R = RealOf<T>;
    const auto elements = avg.template Elements<T>();
    auto* const a = reinterpret_cast<R*>(elements.data());
    const auto* const x = reinterpret_cast<const R*>(data.template Elements<T>().data());
    const std::size_t parts = elements.size() * (sizeof(T) / sizeof(R));
    for (std::size_t i = 0; i < parts; i += kPiece) AveragePiece(a + i, x + i, std::min(kPiece, parts - i), weight);
  });
}

// (n S2 - S1^2) / (n (n - 1))
double Variance(double squares, double sum, double n) {
  const double a = n * squares;
  const double b = sum * sum;
  const double rest = std::fma(n, squares, -a) - std::fma(sum, sum, -b);
  return ((a - b) + rest) / (n * (n - 1));
}

void CheckCount(std::int32_t count) {
  if (count <= 1) ERaise("StdDev: Count <= 1");
}

template <class Dense>
void Deviation(const Dense& squares, const Dense& sum, std::int32_t count, Dense& result) {
  CheckCount(count);
  if (squares.Complex() || sum.Complex()) ERaise("StdDev: complex elements");
  CheckFits(squares, sum);
  const Borrowed<Dense> deviation;
  deviation->Size(squares);
  ForReal(squares, [&]<RealElement R>(ElementTag<R>) {
    const auto s2 = squares.template Elements<R>();
    const auto s1 = sum.template Elements<R>();
    const auto y = deviation->template Elements<R>();
    for (std::size_t i = 0; i < y.size(); ++i) {
      const double variance = Variance(static_cast<double>(s2[i]), static_cast<double>(s1[i]), count);
      if (variance < 0) {
        ERaise(
            "Detected complete loss of numerical precision within StdDev routine. Consider reducing number of "
            "averages!");
      }
      y[i] = static_cast<R>(std::sqrt(variance));
    }
  });
  result.Take(*deviation);
}

}  // namespace

void RunningAverage(TVec& Avg, const TVec& Data, std::int32_t Count, std::int32_t ExpCount) {
  Average(Avg, Data, Count, ExpCount);
}
void RunningAverage(TMtx& Avg, const TMtx& Data, std::int32_t Count, std::int32_t ExpCount) {
  Average(Avg, Data, Count, ExpCount);
}

double StdDev(double SumOfSquares, double Sum, std::int32_t Count) {
  CheckCount(Count);
  return std::sqrt(Variance(SumOfSquares, Sum, Count));
}

void StdDev(const TVec& SumOfSquares, const TVec& Sum, std::int32_t Count, TVec& Result) {
  Deviation(SumOfSquares, Sum, Count, Result);
}
void StdDev(const TMtx& SumOfSquares, const TMtx& Sum, std::int32_t Count, TMtx& Result) {
  Deviation(SumOfSquares, Sum, Count, Result);
}

}  // namespace passband::SignalUtils
