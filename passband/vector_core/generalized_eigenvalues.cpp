#include "passband/vector_core/generalized_eigenvalues.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <complex>

#include "passband/foundation/exceptions.h"
#include "passband/vector_core/double_data_internal.h"
#include "passband/vector_core/pool.h"

namespace passband {
namespace {

using Matrix = Eigen::MatrixXd;
using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

void Check(const TMtx& a, const TMtx& b) {
  if (a.Rows() != a.Cols()) {
    ERaise("GeneralizedEig: a matrix of " + detail::ShapeText(a.Rows(), a.Cols()) + " is not square");
  }
  if (a.Rows() != b.Rows() || a.Cols() != b.Cols() || a.IsDouble() != b.IsDouble()) {
    ERaise("GeneralizedEig: matrices of " + detail::ShapeText(a.Rows(), a.Cols()) + " and " +
           detail::ShapeText(b.Rows(), b.Cols()));
  }
  if (a.Complex() || b.Complex()) ERaise("GeneralizedEig: complex elements");
}

Matrix ToEigen(const TMtx& m) {
  const Borrowed<TMtx> wide;
  wide->Copy(m);
  wide->SetFloatPrecision(TMtxFloatPrecision::DoubleReal);
  if (!detail::AllFinite(*wide)) ERaise("GeneralizedEig: an element is not finite");
  return Eigen::Map<const RowMajor>(wide->Values().data(), m.Rows(), m.Cols());
}

struct Quotients {
  Eigen::VectorXcd alpha;
  Eigen::VectorXd beta;
};

// The QZ iteration; false where it stalls, which double pairs of eigenvalues can bring about.
bool SolveByQz(const Matrix& a, const Matrix& b, Quotients& result) {
  const Eigen::GeneralizedEigenSolver<Matrix> solver(a, b, false);
  if (solver.info() != Eigen::Success) return false;
  result = {solver.alphas(), solver.betas()};
  return true;
}

// The eigenvalues of b^-1 a, or the inverse values of those of a^-1 b: whichever matrix is farther from singular.
bool SolveByQuotient(const Matrix& a, const Matrix& b, Quotients& result) {
  const Eigen::PartialPivLU<Matrix> lu_a(a);
  const Eigen::PartialPivLU<Matrix> lu_b(b);
  const bool by_b = lu_b.rcond() >= lu_a.rcond();
  if (std::max(lu_a.rcond(), lu_b.rcond()) == 0) return false;
  const Eigen::EigenSolver<Matrix> solver(by_b ? lu_b.solve(a) : lu_a.solve(b), false);
  if (solver.info() != Eigen::Success) return false;
  result = {solver.eigenvalues(), Eigen::VectorXd::Ones(a.rows())};
  if (by_b) return true;
  for (Eigen::Index i = 0; i < a.rows(); ++i) {
    const std::complex<double> inverse = result.alpha[i];
    result.beta[i] = std::norm(inverse);
    result.alpha[i] = result.beta[i] > 0 ? std::conj(inverse) : 1;
  }
  return true;
}

}  // namespace

void GeneralizedEig(const TMtx& A, const TMtx& B, TVec& Alpha, TVec& Beta) {
  Check(A, B);
  const Borrowed<TVec> alpha;
  const Borrowed<TVec> beta;
  alpha->Size(A.Rows(), TMtxFloatPrecision::DoubleComplex);
  beta->Size(A.Rows(), TMtxFloatPrecision::DoubleReal);
  if (A.Rows() > 0) {
    const Matrix a = ToEigen(A);
    const Matrix b = ToEigen(B);
    Quotients result;
    if (!SolveByQz(a, b, result) && !SolveByQuotient(a, b, result)) ERaise("GeneralizedEig: no convergence");
    for (std::size_t i = 0; i < alpha->CValues().size(); ++i) {
      const auto k = static_cast<Eigen::Index>(i);
      alpha->CValues()[i] = result.alpha[k];
      beta->Values()[i] = result.beta[k];
    }
  }
  alpha->SetFloatPrecision(MakePrecision(true, A.IsDouble()));
  beta->SetFloatPrecision(MakePrecision(false, A.IsDouble()));
  Alpha.Take(*alpha);
  Beta.Take(*beta);
}

}  // namespace passband
