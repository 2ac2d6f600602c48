#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>

#include "passband/kalman/kalman_step_internal.h"
#include "passband/vector_core/dispatch.h"

namespace passband::AdaptiveFiltering::detail {
namespace {

using Index = std::size_t;

Index Count(std::int32_t n) { return static_cast<Index>(n); }

// Most filters have few states, and loops of a constant length become straight vector code: f gets the width as a
// constant up to 8, as a number beyond.
template <class F>
void WithWidth(Index n, F f) {
  switch (n) {
    case 1:
      return f(std::integral_constant<Index, 1>{});
    case 2:
      return f(std::integral_constant<Index, 2>{});
    case 3:
      return f(std::integral_constant<Index, 3>{});
    case 4:
      return f(std::integral_constant<Index, 4>{});
    case 5:
      return f(std::integral_constant<Index, 5>{});
    case 6:
      return f(std::integral_constant<Index, 6>{});
    case 7:
      return f(std::integral_constant<Index, 7>{});
    case 8:
      return f(std::integral_constant<Index, 8>{});
    default:
      return f(n);
  }
}

// A block of c = a b, `height` rows from the first and `count` columns from `first` on: as many sums as stay in registers
// and enough to run side by side. b has `width` columns.
template <Index height, Index first, Index count, Index width>
void MultiplyBlock(const double* a, Index inner, const double* b, double* c) {
  std::array<std::array<double, count>, height> sum{};
  for (Index k = 0; k < inner; ++k) {
    for (Index i = 0; i < height; ++i) {
      for (Index j = 0; j < count; ++j) sum[i][j] += a[i * inner + k] * b[k * width + first + j];
    }
  }
  for (Index i = 0; i < height; ++i) std::copy_n(sum[i].begin(), count, c + i * width + first);
}

template <Index height, Index width>
void MultiplyBlocks(const double* a, Index inner, const double* b, double* c) {
  constexpr Index kPart = std::min<Index>(width, 4);
  MultiplyBlock<height, 0, kPart, width>(a, inner, b, c);
  if constexpr (width > kPart) MultiplyBlock<height, kPart, width - kPart, width>(a, inner, b, c);
}

// c = a b, all row by row: c has `rows` rows and `n` columns. No result is an operand.
template <class Width>
void MultiplyRows(const double* a, Index rows, Index inner, const double* b, Width n, double* c) {
  if constexpr (std::is_same_v<Width, Index>) {
    std::fill_n(c, rows * n, 0.0);
    for (Index i = 0; i < rows; ++i) {
      for (Index k = 0; k < inner; ++k) {
        for (Index j = 0; j < n; ++j) c[i * n + j] += a[i * inner + k] * b[k * n + j];
      }
    }
  } else {
    Index i = 0;
    for (; i + 2 <= rows; i += 2) MultiplyBlocks<2, Width::value>(a + i * inner, inner, b, c + i * n);
    if (i < rows) MultiplyBlocks<1, Width::value>(a + i * inner, inner, b, c + i * n);
  }
}

void Multiply(const double* a, Index rows, Index inner, const double* b, Index cols, double* c) {
  WithWidth(cols, [&](auto n) { MultiplyRows(a, rows, inner, b, n, c); });
}

// The transpose of a, which has `rows` rows and `cols` columns.
void Transpose(const double* a, Index rows, Index cols, double* t) {
  for (Index i = 0; i < rows; ++i) {
    for (Index j = 0; j < cols; ++j) t[j * rows + i] = a[i * cols + j];
  }
}

void AddTo(double* sum, const double* x, Index n) {
  for (Index i = 0; i < n; ++i) sum[i] += x[i];
}

// The elements as doubles: in place, or widened into `work`.
const double* Read(const TMtx& m, std::vector<double>& work) {
  if (m.IsDouble()) return m.Values().data();
  const auto elements = m.SValues();
  work.resize(elements.size());
  std::ranges::copy(elements, work.begin());
  return work.data();
}

void Write(const double* result, TMtx& m) {
  ForReal(m, [&]<class R>(ElementTag<R>) {
    for (R& e : m.Elements<R>()) e = static_cast<R>(*result++);
  });
}

bool IsSymmetric(const double* s, Index m) {
  constexpr double kTolerance = 0x1p-40;
  for (Index i = 0; i < m; ++i) {
    for (Index j = 0; j < i; ++j) {
      // Square roots of each, so that no product leaves the range of a double.
      const double scale = std::sqrt(std::abs(s[i * m + i])) * std::sqrt(std::abs(s[j * m + j]));
      if (!(std::abs(s[i * m + j] - s[j * m + i]) <= kTolerance * scale)) return false;
    }
  }
  return true;
}

// Replaces the lower triangle of a symmetric s (m x m) by the factors of s = L D L^T, D on the diagonal. False when s is
// not positive definite beyond rounding.
bool Decompose(double* s, Index m) {
  const double tolerance = static_cast<double>(m) * std::numeric_limits<double>::epsilon();
  for (Index i = 0; i < m; ++i) {
    double* row = s + i * m;
    double pivot = row[i];
    for (Index j = 0; j < i; ++j) {
      double sum = row[j];  // of L D
      for (Index k = 0; k < j; ++k) sum -= row[k] * s[j * m + k];
      row[j] = sum;
    }
    for (Index j = 0; j < i; ++j) {
      const double l = row[j] / s[j * m + j];
      pivot -= l * row[j];
      row[j] = l;
    }
    if (!(pivot > tolerance * row[i] && pivot <= std::numeric_limits<double>::max())) return false;
    row[i] = pivot;
  }
  return true;
}

// x = (L D L^T)^-1 x for the m rows of x, each `n` long.
template <class Width>
void SubstituteRows(const double* l, Index m, double* x, Width n) {
  const auto reduce = [&](Index i, Index k, double factor) {
    for (Index j = 0; j < n; ++j) x[i * n + j] -= factor * x[k * n + j];
  };
  for (Index i = 1; i < m; ++i) {
    for (Index k = 0; k < i; ++k) reduce(i, k, l[i * m + k]);
  }
  for (Index i = m; i-- > 0;) {
    for (Index j = 0; j < n; ++j) x[i * n + j] /= l[i * m + i];
    for (Index k = i + 1; k < m; ++k) reduce(i, k, l[k * m + i]);
  }
}

}  // namespace

bool Fits(const Noise& noise, std::int32_t size, TMtxFloatPrecision precision) {
  const TMtx& covariance = noise.covariance;
  if (noise.jacobian == nullptr) return Fits(covariance, size, size, precision);
  const std::int32_t inner = noise.jacobian->Cols();
  if (!Fits(*noise.jacobian, size, inner, precision)) return false;
  return noise.scalar ? Fits(covariance, 1, 1, precision) : Fits(covariance, inner, inner, precision);
}

TCplx ElementOf(const TMtx& m) {
  return ForAny(m, [&]<Element T>(ElementTag<T>) { return TCplx(m.Elements<T>().front()); });
}

void ScaleByElement(TMtx& m, const TMtx& element) {
  if (element.Complex()) m.ExtendToComplex();
  m.Scale(ElementOf(element));
}

// Into noise_.
void KalmanStep::FormNoise(const Noise& noise, std::int32_t size) {
  const Index n = Count(size);
  noise_.resize(n * n);
  const double* covariance = Read(noise.covariance, covariance_);
  if (noise.jacobian == nullptr) {
    std::copy_n(covariance, n * n, noise_.begin());
    return;
  }
  const Index inner = Count(noise.jacobian->Cols());
  const double* jacobian = Read(*noise.jacobian, jacobian_);
  transposed_.resize(inner * n);
  product_.resize(n * inner);
  Transpose(jacobian, n, inner, transposed_.data());
  if (noise.scalar) {
    for (Index i = 0; i < n * inner; ++i) product_[i] = *covariance * jacobian[i];
  } else {
    Multiply(jacobian, n, inner, covariance, inner, product_.data());
  }
  Multiply(product_.data(), n, inner, transposed_.data(), n, noise_.data());
}

const double* KalmanStep::ReadMeasurementMatrix(const MeasurementMatrix& h, std::int32_t n) {
  if (!h.scalar) return Read(h.matrix, h_);
  const Index size = Count(n);
  h_.assign(size * size, 0.0);
  for (Index i = 0; i < size; ++i) h_[i * (size + 1)] = h.matrix(0, 0);
  return h_.data();
}

void KalmanStep::PredictState(const TMtx& a, TMtx& x) {
  const Index n = Count(x.Rows());
  result_.resize(n);
  Multiply(Read(a, a_), n, n, Read(x, x_), 1, result_.data());
  Write(result_.data(), x);
}

void KalmanStep::PredictCovariance(const TMtx& a, const Noise& noise, TMtx& p) {
  const Index n = Count(p.Rows());
  FormNoise(noise, p.Rows());
  transposed_.resize(n * n);
  product_.resize(n * n);
  result_.resize(n * n);
  const double* transition = Read(a, a_);
  const double* covariance = Read(p, p_);
  Transpose(transition, n, n, transposed_.data());
  WithWidth(n, [&](auto width) {
    MultiplyRows(transition, n, n, covariance, width, product_.data());
    MultiplyRows(product_.data(), n, n, transposed_.data(), width, result_.data());
  });
  AddTo(result_.data(), noise_.data(), n * n);
  Write(result_.data(), p);
}

bool KalmanStep::Gain(const TMtx& p, const MeasurementMatrix& h, const Noise& noise, TMtx& k) {
  const Index n = Count(p.Rows());
  const std::int32_t measurements = h.scalar ? p.Rows() : h.matrix.Rows();
  const Index m = Count(measurements);
  FormNoise(noise, measurements);
  const double* matrix = ReadMeasurementMatrix(h, p.Rows());
  transposed_.resize(n * std::max(n, m));
  gain_.resize(m * n);
  s_.resize(m * m);
  result_.resize(n * m);
  // Rows of the transpose of P H^T, which become those of K^T.
  Transpose(Read(p, p_), n, n, transposed_.data());
  Multiply(matrix, m, n, transposed_.data(), n, gain_.data());
  Transpose(gain_.data(), m, n, transposed_.data());
  Multiply(matrix, m, n, transposed_.data(), m, s_.data());
  AddTo(s_.data(), noise_.data(), m * m);
  if (!IsSymmetric(s_.data(), m) || !Decompose(s_.data(), m)) return false;
  WithWidth(n, [&](auto width) { SubstituteRows(s_.data(), m, gain_.data(), width); });
  Transpose(gain_.data(), m, n, result_.data());
  k.Size(p.Rows(), measurements, p);
  Write(result_.data(), k);
  return true;
}

// x = x + K (z - predicted), with the innovation and the new state aside.
void KalmanStep::Correct(const TMtx& k, const TMtx& z, const double* predicted, TMtx& x) {
  const Index n = Count(k.Rows());
  const Index m = Count(k.Cols());
  result_.resize(n);
  const double* measured = Read(z, z_);
  for (Index i = 0; i < m; ++i) innovation_[i] = measured[i] - predicted[i];
  Multiply(Read(k, k_), n, m, innovation_.data(), 1, result_.data());
  AddTo(result_.data(), Read(x, x_), n);
  Write(result_.data(), x);
}

void KalmanStep::CorrectState(const MeasurementMatrix& h, const TMtx& k, const TMtx& z, TMtx& x) {
  const Index n = Count(k.Rows());
  const Index m = Count(k.Cols());
  innovation_.resize(m);
  const double* matrix = ReadMeasurementMatrix(h, k.Rows());
  product_.resize(m);
  Multiply(matrix, m, n, Read(x, x_), 1, product_.data());
  Correct(k, z, product_.data(), x);
}

void KalmanStep::CorrectState(const TMtx& predicted, const TMtx& k, const TMtx& z, TMtx& x) {
  innovation_.resize(Count(k.Cols()));
  Correct(k, z, Read(predicted, product_), x);
}

// (I - K H) P = P - K (H P), which takes m n^2 operations in place of n^3.
void KalmanStep::CorrectCovariance(const MeasurementMatrix& h, const TMtx& k, TMtx& p) {
  const Index n = Count(k.Rows());
  const Index m = Count(k.Cols());
  product_.resize(m * n);
  result_.resize(n * n);
  const double* matrix = ReadMeasurementMatrix(h, k.Rows());
  const double* covariance = Read(p, p_);
  const double* gain = Read(k, k_);
  WithWidth(n, [&](auto width) {
    MultiplyRows(matrix, m, n, covariance, width, product_.data());
    MultiplyRows(gain, n, m, product_.data(), width, result_.data());
  });
  for (Index i = 0; i < n * n; ++i) result_[i] = covariance[i] - result_[i];
  Write(result_.data(), p);
}

void KalmanStep::CorrectCovarianceByJoseph(const MeasurementMatrix& h, const TMtx& k, TMtx& p) {
  const Index n = Count(k.Rows());
  const Index m = Count(k.Cols());
  const Index size = n * std::max(n, m);
  product_.resize(size);
  transposed_.resize(size);
  result_.resize(n * n);
  innovation_.resize(n * n);
  const double* matrix = ReadMeasurementMatrix(h, k.Rows());
  const double* covariance = Read(p, p_);
  const double* gain = Read(k, k_);
  double* rest = innovation_.data();  // I - K H
  Multiply(gain, n, m, matrix, n, rest);
  for (Index i = 0; i < n * n; ++i) rest[i] = (i % (n + 1) == 0 ? 1.0 : 0.0) - rest[i];
  Multiply(rest, n, n, covariance, n, product_.data());
  Transpose(rest, n, n, transposed_.data());
  Multiply(product_.data(), n, n, transposed_.data(), n, result_.data());
  Multiply(gain, n, m, noise_.data(), m, product_.data());
  Transpose(gain, n, m, transposed_.data());
  Multiply(product_.data(), n, m, transposed_.data(), n, rest);
  AddTo(result_.data(), rest, n * n);
  Transpose(result_.data(), n, n, rest);
  for (Index i = 0; i < n * n; ++i) result_[i] = 0.5 * (result_[i] + rest[i]);
  Write(result_.data(), p);
}

}  // namespace passband::AdaptiveFiltering::detail
