#include <Eigen/Core>
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
using detail::ShapeText;

template <DoubleElement T>
using Scalar = std::conditional_t<IsComplex<T>, std::complex<double>, double>;
template <DoubleElement T>
using EigenMatrix = Eigen::Matrix<Scalar<T>, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

template <DoubleElement T>
Eigen::Map<const EigenMatrix<T>> AsEigen(const TMtx& m) {
  return {reinterpret_cast<const Scalar<T>*>(m.Elements<T>().data()), m.Rows(), m.Cols()};
}

std::int32_t OpRows(const TMtx& m, TMtxOperation op) { return op == TMtxOperation::None ? m.Rows() : m.Cols(); }
std::int32_t OpCols(const TMtx& m, TMtxOperation op) { return op == TMtxOperation::None ? m.Cols() : m.Rows(); }

void CheckSquare(const char* routine, const TMtx& m, TMtxType type) {
  if (type == TMtxType::General || m.Rows() == m.Cols()) return;
  ERaise(std::string(routine) + ": a matrix of " + ShapeText(m.Rows(), m.Cols()) + " is not square");
}

// An operand as a general matrix of T that is still to be transposed when `op` says so; the conjugation is done.
template <DoubleElement T>
const TMtx& Operand(const TMtx& m, TMtxType type, TMtxOperation op, TMtx& work) {
  const TMtx& full = detail::FullMatrix<T>(m, type, work);
  if constexpr (IsComplex<T>) {
    if (op == TMtxOperation::ConjTransposed) {
      if (&full != &work) work.Copy(full);
      for (T& z : work.Elements<T>()) z = Conj(z);
      return work;
    }
  }
  return full;
}

template <DoubleElement T>
void Multiply(const TMtx& a, bool transpose_a, const TMtx& b, bool transpose_b, TMtx& product) {
  Eigen::Map<EigenMatrix<T>> c(reinterpret_cast<Scalar<T>*>(product.Elements<T>().data()), product.Rows(),
                               product.Cols());
  const auto x = AsEigen<T>(a);
  const auto y = AsEigen<T>(b);
  if (transpose_a && transpose_b) {
    c.noalias() = x.transpose() * y.transpose();
  } else if (transpose_a) {
    c.noalias() = x.transpose() * y;
  } else if (transpose_b) {
    c.noalias() = x * y.transpose();
  } else {
    c.noalias() = x * y;
  }
}

// sqrt(sum |x|^2) of doubles, in units of a power of two near the largest where squares would leave the range.
double EuclideanNorm(std::span<const double> x) {
  const Eigen::Map<const Eigen::VectorXd> v(x.data(), static_cast<Eigen::Index>(x.size()));
  const double squares = v.squaredNorm();
  if (!(squares < 1e-280 || squares > 1e300)) return std::sqrt(squares);
  double largest = 0;
  for (const double e : x) largest = std::max(largest, std::abs(e));
  if (largest == 0 || !std::isfinite(largest)) return largest;
  int exponent = 0;
  static_cast<void>(std::frexp(largest, &exponent));
  double sum = 0;
  for (const double e : x) {
    const double scaled = std::ldexp(e, -exponent);
    sum += scaled * scaled;
  }
  return std::ldexp(std::sqrt(sum), exponent);
}

}  // namespace

void TMtx::Mul(const TMtx& A, const TMtx& B, TMtxOperation OpA, TMtxOperation OpB, TMtxType TypeA, TMtxType TypeB) {
  CheckSquare("Mul", A, TypeA);
  CheckSquare("Mul", B, TypeB);
  if (OpCols(A, OpA) != OpRows(B, OpB)) {
    ERaise("Mul: " + ShapeText(OpRows(A, OpA), OpCols(A, OpA)) + " times " + ShapeText(OpRows(B, OpB), OpCols(B, OpB)));
  }
  detail::RequireSameIsDouble(A, B);
  detail::ForDouble(A.Complex() || B.Complex(), [&]<DoubleElement T>(ElementTag<T>) {
    Borrowed<TMtx> work_a;
    Borrowed<TMtx> work_b;
    Borrowed<TMtx> product;
    product->Size(OpRows(A, OpA), OpCols(B, OpB), PrecisionOf<T>);
    Multiply<T>(Operand<T>(A, TypeA, OpA, *work_a), OpA != TMtxOperation::None, Operand<T>(B, TypeB, OpB, *work_b),
                OpB != TMtxOperation::None, *product);
    Size(product->Rows(), product->Cols(), IsComplex<T>, A.IsDouble());
    detail::StoreRounded(product->Elements<T>(), *this);
  });
}

void TMtx::TensorProd(const TVec& A, const TVec& B) {
  detail::RequireSameIsDouble(A, B);
  detail::ForDouble(A.Complex() || B.Complex(), [&]<DoubleElement T>(ElementTag<T>) {
    Borrowed<TVec> column;
    Borrowed<TVec> row;
    column->Size(A.Length(), PrecisionOf<T>);
    row->Size(B.Length(), PrecisionOf<T>);
    detail::Widen(A, column->Elements<T>());
    detail::Widen(B, row->Elements<T>());
    Size(A.Length(), B.Length(), IsComplex<T>, A.IsDouble());
    ForReal(*this, [&]<class R>(ElementTag<R>) {
      using To = std::conditional_t<IsComplex<T>, ComplexOf<R>, R>;
      auto out = Elements<To>().begin();
      for (const T a : column->Elements<T>()) {
        for (const T b : row->Elements<T>()) *out++ = static_cast<To>(a * b);
      }
    });
  });
}

void TVec::TensorProd(const TVec& Vec, const TMtx& Mtx, TMtxType Type, TMtxOperation Operation) {
  CheckSquare("TensorProd", Mtx, Type);
  if (Vec.Length() != OpRows(Mtx, Operation)) {
    ERaise("TensorProd: a vector of length " + std::to_string(Vec.Length()) + " times a matrix of " +
           ShapeText(OpRows(Mtx, Operation), OpCols(Mtx, Operation)));
  }
  detail::RequireSameIsDouble(Vec, Mtx);
  detail::ForDouble(Vec.Complex() || Mtx.Complex(), [&]<DoubleElement T>(ElementTag<T>) {
    Borrowed<TMtx> row;
    Borrowed<TMtx> work;
    Borrowed<TMtx> product;
    row->Size(1, Vec.Length(), PrecisionOf<T>);
    detail::Widen(Vec, row->Elements<T>());
    product->Size(1, OpCols(Mtx, Operation), PrecisionOf<T>);
    Multiply<T>(*row, false, Operand<T>(Mtx, Type, Operation, *work), Operation != TMtxOperation::None, *product);
    Size(product->Cols(), IsComplex<T>, Vec.IsDouble());
    detail::StoreRounded(product->Elements<T>(), *this);
  });
}

double TMtx::NormFro() const {
  return ForReal(*this, [&]<class R>(ElementTag<R>) {
    if constexpr (std::is_same_v<R, double>) {
      const auto* parts = Complex() ? reinterpret_cast<const double*>(CValues().data()) : Values().data();
      return EuclideanNorm({parts, static_cast<std::size_t>(Length()) * (Complex() ? 2U : 1U)});
    } else {
      Borrowed<TMtx> wide;  // squares of single precision numbers neither overflow nor vanish in double
      wide->Size(Rows(), Cols(), Complex(), true);
      detail::ForDouble(Complex(), [&]<DoubleElement T>(ElementTag<T>) { detail::Widen(*this, wide->Elements<T>()); });
      return wide->NormFro();
    }
  });
}

}  // namespace passband
