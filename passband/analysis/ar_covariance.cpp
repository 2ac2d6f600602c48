// Both covariance methods: linear least squares whose rows are shifted pieces of the signal.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

#include "passband/analysis/ar_models.h"
#include "passband/analysis/ar_models_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/pool.h"
#include "passband/vector_core/predictor_internal.h"

namespace passband::SignalUtils {
namespace {

using passband::detail::Conjugate;
using passband::detail::DoubleElement;

double Power(double x) { return x * x; }
double Power(TCplx z) { return z.Re * z.Re + z.Im * z.Im; }

constexpr std::size_t kRows = 128;  // rows in a batch, which lies in the cache
constexpr std::size_t kSums = 4;    // chains of a sum

// sum conj(v[i]) w[i] over kRows elements.
template <DoubleElement T>
T Product(const T* v, const T* w) {
  T sums[kSums] = {};
  for (std::size_t i = 0; i < kRows; i += kSums) {
    for (std::size_t s = 0; s < kSums; ++s) sums[s] += Conjugate(v[i + s]) * w[i + s];
  }
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

// The triangular factor R of a matrix that arrives row by row: R^H R stays that of all rows so far. Of the columns the
// last is the right-hand side, so that R holds the whole least-squares problem.
template <DoubleElement T>
class RowTriangle {
 public:
  explicit RowTriangle(std::int32_t columns) : columns_(static_cast<std::size_t>(columns)) {
    triangle_->Size(columns, columns, PrecisionOf<T>);
    triangle_->SetZero();
    batch_->Size(columns, static_cast<std::int32_t>(kRows), PrecisionOf<T>);
    batch_->SetZero();
  }

  // Adds the row element(0), element(1), ...
  template <class Value>
  void AddRow(const Value& element) {
    T* const batch = Column(0);
    for (std::size_t j = 0; j < columns_; ++j) batch[j * kRows + filled_] = element(j);
    if (++filled_ == kRows) Reduce();
  }

  // Solves for the coefficients, and returns the sum of the squared residuals. The row below the triangle of the unknowns
  // keeps the problem overdetermined: the size of its rows then tells the rank.
  double Solve(TVec& coefficients) {
    Reduce();
    const Borrowed<TMtx> system;
    const Borrowed<TVec> right;
    const std::int32_t rows = triangle_->Rows();
    system->Size(rows, rows - 1, PrecisionOf<T>);
    system->Copy(*triangle_, 0, 0, 0, 0, rows, rows - 1);
    right->Size(rows, PrecisionOf<T>);
    const auto R = triangle_->template Elements<T>();
    const auto b = right->template Elements<T>();
    for (std::size_t i = 0; i < b.size(); ++i) b[i] = R[i * columns_ + columns_ - 1];
    system->LQRSolve(*right, coefficients);
    const auto c = coefficients.Elements<T>();
    double sum = 0;
    for (std::size_t i = 0; i < b.size(); ++i) {
      T residual = b[i];
      for (std::size_t j = i; j < c.size(); ++j) residual -= R[i * columns_ + j] * c[j];
      sum += Power(residual);
    }
    return sum;
  }

 private:
  T* Column(std::size_t j) { return batch_->template Elements<T>().data() + j * kRows; }

  // Brings the rows of the batch into R by Householder reflections, each of a row of R and a column of the batch.
  void Reduce() {
    const auto R = triangle_->template Elements<T>();
    for (std::size_t j = 0; j < columns_; ++j) {
      T* const v = Column(j);
      T& diagonal = R[j * columns_ + j];
      const double below = std::abs(RealPart(Product(v, v)));
      if (below == 0) continue;
      const double modulus = std::sqrt(Power(diagonal));
      const double norm = std::sqrt(Power(diagonal) + below);
      const T phase = modulus == 0 ? passband::detail::WidenElement<T>(1.0) : diagonal * (1 / modulus);
      const T head = phase * (modulus + norm);
      const double factor = 1 / (norm * (norm + modulus));
      for (std::size_t l = j + 1; l < columns_; ++l) {
        T* const w = Column(l);
        T& top = R[j * columns_ + l];
        const T part = (Conjugate(head) * top + Product(v, w)) * factor;
        top -= head * part;
        for (std::size_t i = 0; i < kRows; ++i) w[i] -= v[i] * part;
      }
      diagonal = -phase * norm;
    }
    batch_->SetZero();
    filled_ = 0;
  }

  static double RealPart(double x) { return x; }
  static double RealPart(TCplx z) { return z.Re; }

  std::size_t columns_;
  std::size_t filled_ = 0;
  Borrowed<TMtx> triangle_;
  Borrowed<TMtx> batch_;  // one row for each column
};

// Minimises the forward errors x[n] + sum a_j x[n - j], and the backward ones if asked for, over n = p .. N - 1. The
// variance is the mean of their squares.
void FitErrors(const TVec& src, std::int32_t order, bool backward, TVec& a, double& variance) {
  const int exponent = detail::BinaryExponent(src, backward ? "ArMCovariance" : "ArCovariance");
  const Borrowed<TVec> scaled;
  detail::WidenScaled(src, exponent, *scaled);
  passband::detail::ForDouble(src.Complex(), [&]<DoubleElement T>(ElementTag<T>) {
    const auto x = scaled->Elements<T>();
    const auto p = static_cast<std::size_t>(order);
    RowTriangle<T> triangle(order + 1);
    for (std::size_t n = p; n < x.size(); ++n) {
      triangle.AddRow([&](std::size_t j) { return j < p ? x[n - 1 - j] : -x[n]; });
      if (backward) triangle.AddRow([&](std::size_t j) { return Conjugate(j < p ? x[n - p + 1 + j] : -x[n - p]); });
    }
    const Borrowed<TVec> coefficients;
    const double sum = triangle.Solve(*coefficients);
    a.Size(order + 1, PrecisionOf<T>);
    a.Elements<T>()[0] = passband::detail::WidenElement<T>(1.0);
    std::ranges::copy(coefficients->Elements<T>(), a.Elements<T>().begin() + 1);
    const double errors = static_cast<double>(x.size() - p) * (backward ? 2 : 1);
    variance = errors > 0 ? std::ldexp(sum / errors, 2 * exponent) : 0;
  });
}

// Stores a model in the precision of the signal.
template <class Method>
void Store(const TVec& x, TVec& dst, double& err, const Method& fit) {
  const Borrowed<TVec> a;
  double variance = 0;
  fit(*a, variance);
  a->SetFloatPrecision(x.FloatPrecision());
  dst.Take(*a);
  err = variance;
}

}  // namespace

void detail::FitCovariance(const TVec& src, std::int32_t order, TVec& a, double& variance) {
  if (order < 0) throw Exception("ArCovariance: Order < 0");
  if (src.Length() < std::int64_t{2} * order) throw Exception("x.Length < 2*Order");
  FitErrors(src, order, false, a, variance);
}

void detail::FitModifiedCovariance(const TVec& src, std::int32_t order, TVec& a, double& variance) {
  if (order < 0) throw Exception("ArMCovariance: Order < 0");
  if (order * 3.0 / 2.0 > src.Length()) throw Exception("Order*3.0/2.0 > x.Length");
  FitErrors(src, order, true, a, variance);
}

void ArCovariance(const TVec& x, std::int32_t Order, TVec& Dst, double& Err) {
  Store(x, Dst, Err, [&](TVec& a, double& variance) { detail::FitCovariance(x, Order, a, variance); });
}

void ArMCovariance(const TVec& x, std::int32_t Order, TVec& Dst, double& Err) {
  Store(x, Dst, Err, [&](TVec& a, double& variance) { detail::FitModifiedCovariance(x, Order, a, variance); });
}

}  // namespace passband::SignalUtils
