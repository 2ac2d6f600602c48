#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>
#include <complex>
#include <string>
#include <type_traits>

#include "passband/vector_core/double_data_internal.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/pool.h"
#include "passband/vector_core/vec.h"

namespace passband {
namespace {

using detail::DoubleElement;

template <DoubleElement T>
using EigenMatrix =
    Eigen::Matrix<std::conditional_t<IsComplex<T>, std::complex<double>, double>, Eigen::Dynamic, Eigen::Dynamic>;

void CheckConvergence(Eigen::ComputationInfo info) {
  if (info != Eigen::Success) ERaise("Eig: no convergence");
}

// The power of two that is next to x > 0.
double PowerOfTwo(double x) { return std::exp2(std::round(std::log2(x))); }

// A similarity transformation by powers of two, hence without rounding, that brings the norms of each row and its
// column together. Literature: Parlett, Reinsch, "Balancing a matrix for calculation of eigenvalues and eigenvectors",
// Numerische Mathematik 13, 1969; with 2-norms that include the diagonal: James, Langou, Lowery, "On matrix balancing
// and eigenvector computation", 2014.
template <class Matrix>
void Balance(Matrix& a) {
  constexpr double kGain = 0.95;
  constexpr int kMaxSweeps = 100;
  for (int sweep = 0; sweep < kMaxSweeps; ++sweep) {
    bool settled = true;
    for (Eigen::Index i = 0; i < a.rows(); ++i) {
      const double column = a.col(i).stableNorm();
      const double row = a.row(i).stableNorm();
      if (column == 0 || row == 0) continue;
      const double f = PowerOfTwo(std::sqrt(row) / std::sqrt(column));
      if (!(std::hypot(column * f, row / f) < kGain * std::hypot(column, row))) continue;
      a.col(i) *= f;
      a.row(i) /= f;
      settled = false;
    }
    if (settled) return;
  }
}

template <class Matrix>
void GeneralEigenvalues(Matrix& a, std::span<TCplx> d) {
  Balance(a);
  const auto solver = [&] {
    if constexpr (Eigen::NumTraits<typename Matrix::Scalar>::IsComplex) {
      return Eigen::ComplexEigenSolver<Matrix>(a, false);
    } else {
      return Eigen::EigenSolver<Matrix>(a, false);
    }
  }();
  CheckConvergence(solver.info());
  for (std::size_t i = 0; i < d.size(); ++i) d[i] = solver.eigenvalues()[static_cast<Eigen::Index>(i)];
}

template <class Matrix>
void SymmetricEigenvalues(const Matrix& a, std::span<TCplx> d) {
  const Eigen::SelfAdjointEigenSolver<Matrix> solver(a, Eigen::EigenvaluesOnly);
  CheckConvergence(solver.info());
  for (std::size_t i = 0; i < d.size(); ++i) d[i] = Cplx(solver.eigenvalues()[static_cast<Eigen::Index>(i)]);
}

template <DoubleElement T>
void Eigenvalues(const TMtx& full, TMtxType type, std::span<TCplx> d) {
  using Matrix = EigenMatrix<T>;
  using RowMajor = Eigen::Matrix<typename Matrix::Scalar, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
  const auto* elements = reinterpret_cast<const typename Matrix::Scalar*>(full.Elements<T>().data());
  Matrix a = Eigen::Map<const RowMajor>(elements, full.Rows(), full.Cols());

  if (type == TMtxType::LowerTriangular || type == TMtxType::UpperTriangular) {
    for (std::size_t i = 0; i < d.size(); ++i) {
      d[i] = std::complex<double>(a(static_cast<Eigen::Index>(i), static_cast<Eigen::Index>(i)));
    }
    return;
  }
  const double largest = a.cwiseAbs().maxCoeff();
  if (!(largest > 0)) return std::fill(d.begin(), d.end(), TCplx{});
  const double unit = PowerOfTwo(std::min(largest, 0x1p1023));
  a /= unit;
  const bool self_adjoint = type == TMtxType::Hermitian || (type == TMtxType::Symmetric && !IsComplex<T>);
  if (self_adjoint) {
    SymmetricEigenvalues(a, d);
  } else {
    GeneralEigenvalues(a, d);
  }
  for (TCplx& z : d) z *= unit;
}

}  // namespace

void TMtx::Eig(TVec& D, TMtxType Type) const {
  if (rows_ != cols_) ERaise("Eig: a matrix of " + detail::ShapeText(rows_, cols_) + " is not square");
  const bool is_double = IsDouble();
  detail::ForDouble(Complex(), [&]<DoubleElement T>(ElementTag<T>) {
    Borrowed<TMtx> work;
    const TMtx& full = detail::FullMatrix<T>(*this, Type, *work);
    if (!detail::AllFinite(full)) ERaise("Eig: an element is not finite");
    Borrowed<TVec> values;
    values->Size(rows_, TMtxFloatPrecision::DoubleComplex);
    if (rows_ > 0) Eigenvalues<T>(full, Type, values->CValues());
    D.Size(rows_, true, is_double);
    detail::StoreRounded(values->CValues(), D);
  });
}

}  // namespace passband
