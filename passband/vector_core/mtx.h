// The matrix of the library.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <span>
#include <vector>

#include "passband/vector_core/dense.h"
#include "passband/vector_core/matrix_types.h"

namespace passband {

/// A matrix of real or complex, single or double precision elements, stored row by row without gaps.
///
/// An element outside the matrix raises `ECoreError` "row 2, column 0 is outside a matrix of 2 x 3", a row, a column or a
/// block (first + count) "rows 1 + 3, columns 0 + 2 are outside a matrix of 2 x 3", before anything changes. Shapes that
/// do not fit an operation are named in its message.
class PASSBAND_EXPORT TMtx : public TDense {
 public:
  TMtx() noexcept : TDense(Kind::Matrix) { rows_ = 0; }
  /// Double real, filled row by row. Raises "TMtx: 5 numbers do not fill 2 x 3".
  TMtx(std::int32_t Rows, std::int32_t Cols, OpenArray Values);
  TMtx(const TMtx&) = default;
  TMtx(TMtx&&) noexcept = default;
  TMtx& operator=(const TMtx&) = default;
  TMtx& operator=(TMtx&&) noexcept = default;
  ~TMtx() = default;

  std::int32_t Rows() const { return rows_; }
  std::int32_t Cols() const { return cols_; }
  /// Distance between the starts of two rows, in elements: the number of columns.
  std::int32_t GetLeadingCols() const { return cols_; }

  // Size; the result is Self
  using TDense::Size;
  TMtx& Size(std::int32_t Rows, std::int32_t Cols, bool Complex, bool IsDouble);
  TMtx& Size(std::int32_t Rows, std::int32_t Cols, TMtxFloatPrecision FloatPrecision);
  TMtx& Size(std::int32_t Rows, std::int32_t Cols, const TDense& Src);

  // Element access
  using TDense::CValues;
  using TDense::SCValues;
  using TDense::SValues;
  using TDense::Values;
  double& Values(std::int32_t Row, std::int32_t Col) { return At<double>(Row, Col); }
  const double& Values(std::int32_t Row, std::int32_t Col) const { return At<double>(Row, Col); }
  TCplx& CValues(std::int32_t Row, std::int32_t Col) { return At<TCplx>(Row, Col); }
  const TCplx& CValues(std::int32_t Row, std::int32_t Col) const { return At<TCplx>(Row, Col); }
  float& SValues(std::int32_t Row, std::int32_t Col) { return At<float>(Row, Col); }
  const float& SValues(std::int32_t Row, std::int32_t Col) const { return At<float>(Row, Col); }
  TSCplx& SCValues(std::int32_t Row, std::int32_t Col) { return At<TSCplx>(Row, Col); }
  const TSCplx& SCValues(std::int32_t Row, std::int32_t Col) const { return At<TSCplx>(Row, Col); }
  /// A real element as a double; "a complex element is read as a real number" on complex data.
  double operator()(std::int32_t Row, std::int32_t Col) const;
  void SetDefault(std::int32_t Row, std::int32_t Col, double Value);
  std::int32_t SDataIndex(std::int32_t Row, std::int32_t Col) const;
  std::int32_t CDataIndex(std::int32_t Row, std::int32_t Col) const;
  /// Raises like the access to an element or a block that is not there.
  void ValidateBlock(std::int32_t Row, std::int32_t Col, std::int32_t RowCount, std::int32_t ColCount) const;
  /// One array a row; a complex element takes two doubles. `CopyFromArray` keeps the precision (and complex flag) and
  /// raises "CopyFromArray: rows of different lengths", "CopyFromArray: an odd number of reals (3)".
  void CopyToArray(std::vector<std::vector<double>>& Array) const;
  void CopyFromArray(const std::vector<std::vector<double>>& Array);

  // Copy and rearrangement
  using TDense::Copy;
  /// Copies the block of `RowCount` x `ColCount` elements of `Src` at (SrcRow, SrcCol) to (Row, Col); with `Transpose`
  /// element (i, j) of the block goes to (Row + j, Col + i).
  void Copy(const TMtx& Src, std::int32_t SrcRow, std::int32_t SrcCol, std::int32_t Row, std::int32_t Col,
            std::int32_t RowCount, std::int32_t ColCount, bool Transpose = false);
  /// Writes `Len` elements of `Src` from `SrcIndex` row by row from (Row, Col) on. Raises "CopyVec: 9 elements from row
  /// 1, column 0 leave a matrix of 2 x 3". Here and below `Len` = -1 is as much as both hold.
  void CopyVec(const TVec& Src, std::int32_t SrcIndex, std::int32_t Row, std::int32_t Col, std::int32_t Len);
  /// A whole row (column) from a vector of that length, or the first `Len` elements of one from column `Col` (row `Row`).
  /// Raises "SetRow: a vector of length 4 into 3 columns", "SetCol: a vector of length 4 into 2 rows".
  void SetRow(const TVec& Vec, std::int32_t Row);
  void SetRow(const TVec& Vec, std::int32_t Row, std::int32_t Col, std::int32_t Len);
  void SetCol(const TVec& Vec, std::int32_t Col);
  void SetCol(const TVec& Vec, std::int32_t Col, std::int32_t Row, std::int32_t Len);
  /// The square matrix with `Vec` on its diagonal.
  void Diag(const TVec& Vec);
  using TDense::SetZero;
  void SetZero(std::int32_t Row, std::int32_t Col, std::int32_t RowCount, std::int32_t ColCount);
  /// Ones on the main diagonal, in the precision of `Src`.
  void Eye(std::int32_t Rows, std::int32_t Cols, const TDense& Src);
  void Transp();
  void Transp(const TMtx& Src);

  // Algebra. Single precision data are multiplied and solved in double and rounded once. Real and complex operands may
  // be mixed and give a complex result; single and double ones may not. Self, or a result, may be an operand. A matrix
  // of another type than the general one has to be square: "Mul: a matrix of 2 x 3 is not square".
  using TDense::Mul;
  /// Self = OpA(A) OpB(B). Raises "Mul: 2 x 3 times 2 x 3", the shapes after the operations. A product with zero inner
  /// dimension is a zero matrix. O(Rows Cols Inner).
  void Mul(const TMtx& A, const TMtx& B, TMtxOperation OpA = TMtxOperation::None,
           TMtxOperation OpB = TMtxOperation::None, TMtxType TypeA = TMtxType::General,
           TMtxType TypeB = TMtxType::General);
  /// The outer product Self[i, j] = A[i] B[j], without conjugation.
  void TensorProd(const TVec& A, const TVec& B);
  /// The inverse by LU decomposition with partial pivoting, refined like a solution of `LUSolve` when Self wants it.
  /// Raises "Inv: a matrix of 2 x 3 is not square", "Inv: an element is not finite", "Inv: the matrix is singular" (a
  /// pivot is zero, or the inverse leaves the range of a double; a matrix that is singular up to rounding passes).
  void Inv();
  void Inv(const TMtx& Src);
  /// All eigenvalues into the complex vector `D`: of general matrices unordered, each complex one of a real matrix next
  /// to its exact conjugate; of Hermitian and real symmetric matrices in ascending order with zero imaginary parts; of
  /// triangular ones in the order of the diagonal. The backward error is a small multiple of the machine epsilon of
  /// double and of the norm of the balanced matrix. O(Rows^3). Raises "Eig: a matrix of 2 x 3 is not square", "Eig: an
  /// element is not finite", "Eig: no convergence".
  /// Literature: Golub, Van Loan, "Matrix Computations", 4th ed., 2013, chapters 7 and 8 (QR algorithm).
  void Eig(TVec& D, TMtxType Type = TMtxType::General) const;
  /// Solves Op(Self) X = B by LU decomposition with partial pivoting, triangular matrices by substitution. With
  /// `SetRefineSolution(true)` each solution is improved by iterative refinement with residuals in twice the digits of a
  /// double; it is then exact but for its last bits as long as the condition number stays well below 1e16. A column of
  /// `B` that is not finite spoils its own solution only. Raises "LUSolve: a matrix of 2 x 3 is not square", "LUSolve:
  /// an element is not finite" (of Self), "LUSolve: 3 x 3 against 2 rows of B", "LUSolve: the matrix is singular" (a
  /// pivot is zero).
  void LUSolve(const TVec& B, TVec& X, TMtxType Type = TMtxType::General,
               TMtxOperation Operation = TMtxOperation::None) const;
  void LUSolve(const TMtx& B, TMtx& X, TMtxType Type = TMtxType::General,
               TMtxOperation Operation = TMtxOperation::None) const;
  /// The X that minimises |Op(Self) X - B|, column by column, of the least norm where it is not unique, by a complete
  /// orthogonal decomposition. The rank is judged after rows and columns are scaled where that does not change the
  /// solution, so that the units of the unknowns do not matter. `R`, when wanted, receives the triangular factor of
  /// Op(Self) = Q R with a diagonal that is real and >= 0: min(Rows, Cols) rows, R^H R = Op(Self)^H Op(Self). Raises
  /// "LQRSolve: 3 x 2 against 2 rows of B", "LQRSolve: an element is not finite" (of Self).
  /// Literature: Golub, Van Loan, "Matrix Computations", 4th ed., 2013, section 5.5.
  void LQRSolve(const TVec& B, TVec& X, TMtx* R = nullptr, TMtxOperation Operation = TMtxOperation::None) const;
  void LQRSolve(const TMtx& B, TMtx& X, TMtx* R = nullptr, TMtxOperation Operation = TMtxOperation::None) const;
  /// Whether `LUSolve` and `Inv` refine; off at first. Copies and moves of the matrix carry it along.
  void SetRefineSolution(bool Refine) { refine_solution_ = Refine; }
  bool RefineSolution() const { return refine_solution_; }
  /// sqrt(sum |x|^2), without overflow in between.
  double NormFro() const;

 private:
  std::size_t Position(std::int32_t row, std::int32_t col) const;  // raises when outside
  template <Element T>
  T& At(std::int32_t row, std::int32_t col) {
    return Elements<T>()[Position(row, col)];
  }
  template <Element T>
  const T& At(std::int32_t row, std::int32_t col) const {
    return Elements<T>()[Position(row, col)];
  }

  bool refine_solution_ = false;
};

/// The rows in brackets: [[1, 2], [3, 4]].
PASSBAND_EXPORT std::ostream& operator<<(std::ostream& out, const TMtx& Mtx);

}  // namespace passband
