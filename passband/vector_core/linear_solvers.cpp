#include <Eigen/LU>
#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <string>
#include <type_traits>

#include "passband/vector_core/double_data_internal.h"
#include "passband/vector_core/extended_precision_internal.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/pool.h"
#include "passband/vector_core/vec.h"

namespace passband {
namespace {

using detail::DoubleElement;
using detail::ShapeText;
using Eigen::Index;

template <DoubleElement T>
using Scalar = std::conditional_t<IsComplex<T>, std::complex<double>, double>;
template <DoubleElement T>
using EigenMatrix = Eigen::Matrix<Scalar<T>, Eigen::Dynamic, Eigen::Dynamic>;  // columns in a row: Eigen's best
template <DoubleElement T>
using RowMajorMatrix = Eigen::Matrix<Scalar<T>, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

template <DoubleElement T>
EigenMatrix<T> ReadMatrix(const TMtx& m, TMtxType type, TMtxOperation op = TMtxOperation::None) {
  Borrowed<TMtx> work;
  const TMtx& full = detail::FullMatrix<T>(m, type, *work);
  const Eigen::Map<const RowMajorMatrix<T>> elements(reinterpret_cast<const Scalar<T>*>(full.Elements<T>().data()),
                                                     m.Rows(), m.Cols());
  if (op == TMtxOperation::Transposed) return elements.transpose();
  if (op == TMtxOperation::ConjTransposed) return elements.adjoint();
  return elements;
}

// Writes a result in a precision; what can fail comes before the first change.
template <DoubleElement T>
void WriteMatrix(const EigenMatrix<T>& x, bool is_double, TMtx& out) {
  Borrowed<TMtx> rows;
  rows->Size(static_cast<std::int32_t>(x.rows()), static_cast<std::int32_t>(x.cols()), PrecisionOf<T>);
  Eigen::Map<RowMajorMatrix<T>>(reinterpret_cast<Scalar<T>*>(rows->Elements<T>().data()), x.rows(), x.cols()) = x;
  out.Size(rows->Rows(), rows->Cols(), IsComplex<T>, is_double);
  detail::StoreRounded(rows->Elements<T>(), out);
}

[[noreturn]] void RaiseSingular(const char* routine) { ERaise(std::string(routine) + ": the matrix is singular"); }

void CheckInvertible(const char* routine, const TMtx& m) {
  if (m.Rows() != m.Cols()) {
    ERaise(std::string(routine) + ": a matrix of " + ShapeText(m.Rows(), m.Cols()) + " is not square");
  }
  if (!detail::AllFinite(m)) ERaise(std::string(routine) + ": an element is not finite");
}

// A square matrix made ready for solving. A zero pivot is the only sign of a singular matrix that rounding leaves sure.
template <DoubleElement T>
class Factors {
 public:
  Factors(const char* routine, EigenMatrix<T> a, TMtxType type, TMtxOperation op) {
    const bool transposed = op != TMtxOperation::None;
    lower_ = type == (transposed ? TMtxType::UpperTriangular : TMtxType::LowerTriangular);
    upper_ = type == (transposed ? TMtxType::LowerTriangular : TMtxType::UpperTriangular);
    if (lower_ || upper_) {
      triangle_ = std::move(a);
    } else {
      lu_.compute(std::move(a));
    }
    const auto pivots = (lower_ || upper_ ? triangle_ : lu_.matrixLU()).diagonal();
    if ((pivots.array() == Scalar<T>(0)).any()) RaiseSingular(routine);
  }

  EigenMatrix<T> Solve(const EigenMatrix<T>& b) const {
    if (lower_) return triangle_.template triangularView<Eigen::Lower>().solve(b);
    if (upper_) return triangle_.template triangularView<Eigen::Upper>().solve(b);
    return lu_.solve(b);
  }

 private:
  bool lower_ = false;
  bool upper_ = false;
  EigenMatrix<T> triangle_;
  Eigen::PartialPivLU<EigenMatrix<T>> lu_;
};

// B - A X, each element formed in twice the digits of a double and rounded once.
template <DoubleElement T>
EigenMatrix<T> Residual(const EigenMatrix<T>& a, const EigenMatrix<T>& x, const EigenMatrix<T>& b) {
  const auto element = [](Scalar<T> z) { return T(z); };
  EigenMatrix<T> r(b.rows(), b.cols());
  for (Index j = 0; j < b.cols(); ++j) {
    for (Index i = 0; i < b.rows(); ++i) {
      auto sum = detail::MakeTwin(element(b(i, j)));
      for (Index k = 0; k < a.cols(); ++k) {
        sum = sum + detail::MakeTwin(element(-a(i, k))) * element(x(k, j));
      }
      r(i, j) = detail::Rounded(sum);
    }
  }
  return r;
}

// Corrects each column of X for as long as its corrections shrink, Op(A) X = B. Literature: Demmel et al., "Error
// bounds from extra-precise iterative refinement", ACM Trans. Math. Softw. 32, 2006.
template <DoubleElement T>
void Refine(const EigenMatrix<T>& a, const Factors<T>& factors, const EigenMatrix<T>& b, EigenMatrix<T>& x) {
  constexpr int kMaxSteps = 20;
  for (Index j = 0; j < b.cols(); ++j) {
    const EigenMatrix<T> right = b.col(j);
    double last = std::numeric_limits<double>::infinity();
    for (int step = 0; step < kMaxSteps; ++step) {
      const EigenMatrix<T> column = x.col(j);
      const EigenMatrix<T> correction = factors.Solve(Residual<T>(a, column, right));
      const double size = correction.cwiseAbs().maxCoeff();
      if (!(size < last / 2)) break;
      x.col(j) += correction;
      last = size;
      if (size <= column.cwiseAbs().maxCoeff() * 0x1p-54) break;
    }
  }
}

template <DoubleElement T>
EigenMatrix<T> LuSolution(const char* routine, const TMtx& a, const EigenMatrix<T>& b, TMtxType type, TMtxOperation op,
                          bool refine) {
  const EigenMatrix<T> matrix = ReadMatrix<T>(a, type, op);
  const Factors<T> factors(routine, matrix, type, op);
  EigenMatrix<T> x = factors.Solve(b);
  if (refine) Refine<T>(matrix, factors, b, x);
  return x;
}

// A column or row scaling by powers of two that brings its largest elements next to 1, so that the rank is judged by
// the directions of rows and columns and not by their units.
Eigen::VectorXd UnitScales(const Eigen::VectorXd& largest) {
  Eigen::VectorXd scales(largest.size());
  for (Index i = 0; i < scales.size(); ++i) {
    scales[i] = largest[i] > 0 ? std::exp2(std::clamp(-std::round(std::log2(largest[i])), -1000.0, 1000.0)) : 1.0;
  }
  return scales;
}

// The least-squares solution of the least norm. A unique solution does not depend on the scaling of the columns, a
// consistent system not on that of the rows: both are used where they are free.
template <DoubleElement T>
EigenMatrix<T> LeastSquares(const EigenMatrix<T>& a, const EigenMatrix<T>& b) {
  if (a.size() == 0) return EigenMatrix<T>::Zero(a.cols(), b.cols());
  Eigen::VectorXd of_rows = Eigen::VectorXd::Ones(a.rows());
  Eigen::VectorXd of_cols = Eigen::VectorXd::Ones(a.cols());
  if (a.rows() <= a.cols()) of_rows = UnitScales(a.cwiseAbs().rowwise().maxCoeff());
  if (a.cols() <= a.rows()) {
    of_cols = UnitScales((of_rows.asDiagonal() * a.cwiseAbs()).colwise().maxCoeff().transpose());
  }
  const Eigen::CompleteOrthogonalDecomposition<EigenMatrix<T>> scaled(of_rows.asDiagonal() * a * of_cols.asDiagonal());
  if (scaled.rank() == std::min(a.rows(), a.cols())) {
    const EigenMatrix<T> right = of_rows.asDiagonal() * b;
    return of_cols.asDiagonal() * scaled.solve(right);
  }
  return a.completeOrthogonalDecomposition().solve(b);
}

// R of Q R = A with a diagonal that is not negative, which makes it unique for full column rank.
template <DoubleElement T>
EigenMatrix<T> TriangularFactor(const EigenMatrix<T>& a) {
  const Index size = std::min(a.rows(), a.cols());
  if (size == 0) return EigenMatrix<T>(0, a.cols());
  const Eigen::HouseholderQR<EigenMatrix<T>> qr(a);
  EigenMatrix<T> r = qr.matrixQR().topRows(size).template triangularView<Eigen::Upper>();
  for (Index i = 0; i < size; ++i) {
    const double modulus = std::abs(r(i, i));
    if (modulus > 0) r.row(i) *= Eigen::numext::conj(r(i, i)) / modulus;
    r(i, i) = modulus;
  }
  return r;
}

void CheckRightHandSide(const char* routine, const TMtx& a, const TDense& b, std::int32_t b_rows, TMtxOperation op) {
  const std::int32_t rows = op == TMtxOperation::None ? a.Rows() : a.Cols();
  const std::int32_t cols = op == TMtxOperation::None ? a.Cols() : a.Rows();
  if (rows != b_rows) {
    ERaise(std::string(routine) + ": " + ShapeText(rows, cols) + " against " + std::to_string(b_rows) + " rows of B");
  }
  detail::RequireSameIsDouble(a, b);
}

void CopyColumn(const TVec& v, TMtx& column) {
  column.Size(v.Length(), 1, v);
  ForAny(v, [&]<Element T>(ElementTag<T>) { std::ranges::copy(v.Elements<T>(), column.Elements<T>().begin()); });
}
void CopyColumn(const TMtx& column, TVec& v) {
  v.Size(column.Rows(), column);
  ForAny(v, [&]<Element T>(ElementTag<T>) { std::ranges::copy(column.Elements<T>(), v.Elements<T>().begin()); });
}

}  // namespace

void TMtx::Inv() { Inv(*this); }

void TMtx::Inv(const TMtx& Src) {
  CheckInvertible("Inv", Src);
  detail::ForDouble(Src.Complex(), [&]<DoubleElement T>(ElementTag<T>) {
    const EigenMatrix<T> one = EigenMatrix<T>::Identity(Src.Rows(), Src.Rows());
    const EigenMatrix<T> x = LuSolution<T>("Inv", Src, one, TMtxType::General, TMtxOperation::None, refine_solution_);
    if (!x.allFinite()) RaiseSingular("Inv");
    WriteMatrix<T>(x, Src.IsDouble(), *this);
  });
}

void TMtx::LUSolve(const TMtx& B, TMtx& X, TMtxType Type, TMtxOperation Operation) const {
  CheckInvertible("LUSolve", *this);
  CheckRightHandSide("LUSolve", *this, B, B.Rows(), Operation);
  const bool is_double = IsDouble();
  detail::ForDouble(Complex() || B.Complex(), [&]<DoubleElement T>(ElementTag<T>) {
    const EigenMatrix<T> b = ReadMatrix<T>(B, TMtxType::General);
    WriteMatrix<T>(LuSolution<T>("LUSolve", *this, b, Type, Operation, refine_solution_), is_double, X);
  });
}

void TMtx::LUSolve(const TVec& B, TVec& X, TMtxType Type, TMtxOperation Operation) const {
  Borrowed<TMtx> b;
  Borrowed<TMtx> x;
  CopyColumn(B, *b);
  LUSolve(*b, *x, Type, Operation);
  CopyColumn(*x, X);
}

void TMtx::LQRSolve(const TMtx& B, TMtx& X, TMtx* R, TMtxOperation Operation) const {
  CheckRightHandSide("LQRSolve", *this, B, B.Rows(), Operation);
  if (!detail::AllFinite(*this)) ERaise("LQRSolve: an element is not finite");
  const bool is_double = IsDouble();
  Borrowed<TMtx> factor;
  if (R != nullptr) {
    detail::ForDouble(Complex(), [&]<DoubleElement T>(ElementTag<T>) {
      WriteMatrix<T>(TriangularFactor<T>(ReadMatrix<T>(*this, TMtxType::General, Operation)), is_double, *factor);
    });
  }
  detail::ForDouble(Complex() || B.Complex(), [&]<DoubleElement T>(ElementTag<T>) {
    const EigenMatrix<T> a = ReadMatrix<T>(*this, TMtxType::General, Operation);
    WriteMatrix<T>(LeastSquares<T>(a, ReadMatrix<T>(B, TMtxType::General)), is_double, X);
  });
  if (R != nullptr) R->Copy(*factor);
}

void TMtx::LQRSolve(const TVec& B, TVec& X, TMtx* R, TMtxOperation Operation) const {
  Borrowed<TMtx> b;
  Borrowed<TMtx> x;
  CopyColumn(B, *b);
  LQRSolve(*b, *x, R, Operation);
  CopyColumn(*x, X);
}

}  // namespace passband
