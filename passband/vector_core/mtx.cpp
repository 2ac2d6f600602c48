#include "passband/vector_core/mtx.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

#include "passband/vector_core/elementwise_internal.h"
#include "passband/vector_core/vec.h"

namespace passband {
namespace {

using detail::Reading;

constexpr std::string_view kComplexAsReal = "a complex element is read as a real number";

std::string ShapeText(std::int32_t rows, std::int32_t cols) {
  return std::to_string(rows) + " x " + std::to_string(cols);
}

std::string ElementText(std::int32_t row, std::int32_t col) {
  return "row " + std::to_string(row) + ", column " + std::to_string(col);
}

bool IsInside(std::int32_t first, std::int32_t count, std::int32_t size) {
  return first >= 0 && count >= 0 && count <= size && first <= size - count;
}

// `len`, or for -1 the shorter of what a vector holds and what a row or column holds from `first` on.
std::int32_t Settle(std::int32_t len, const TVec& vec, std::int32_t first, std::int32_t size) {
  return len == -1 ? std::min(vec.Length(), size - std::clamp(first, std::int32_t{0}, size)) : len;
}

// A block of a matrix stored row by row.
template <class T>
struct Block {
  T* first;
  std::size_t cols;  // distance of its rows

  T& operator()(std::size_t i, std::size_t j) const { return first[i * cols + j]; }
};

template <Element T>
Block<T> BlockAt(T* elements, std::int32_t row, std::int32_t col, std::int32_t cols) {
  const auto width = static_cast<std::size_t>(cols);
  return {elements + static_cast<std::size_t>(row) * width + static_cast<std::size_t>(col), width};
}
template <Element T>
Block<const T> BlockAt(const T* elements, std::int32_t row, std::int32_t col, std::int32_t cols) {
  const auto width = static_cast<std::size_t>(cols);
  return {elements + static_cast<std::size_t>(row) * width + static_cast<std::size_t>(col), width};
}

// y(j, i) = x(i, j), tile by tile: a whole column of a large matrix would leave no row in the cache.
template <Element T>
void TransposeBlock(Block<const T> x, std::size_t rows, std::size_t cols, Block<T> y) {
  constexpr std::size_t kTile = 16;
  for (std::size_t i0 = 0; i0 < rows; i0 += kTile) {
    for (std::size_t j0 = 0; j0 < cols; j0 += kTile) {
      for (std::size_t j = j0; j < std::min(j0 + kTile, cols); ++j) {
        for (std::size_t i = i0; i < std::min(i0 + kTile, rows); ++i) y(j, i) = x(i, j);
      }
    }
  }
}

template <Element T>
void CopyBlock(Block<const T> x, std::size_t rows, std::size_t cols, Block<T> y) {
  for (std::size_t i = 0; i < rows; ++i) std::copy(&x(i, 0), &x(i, 0) + cols, &y(i, 0));
}

}  // namespace

TMtx::TMtx(std::int32_t Rows, std::int32_t Cols, OpenArray Values) : TMtx() {
  const std::size_t count = Values.Span().size();
  const std::int64_t wanted = static_cast<std::int64_t>(Rows) * Cols;
  if (Rows < 0 || Cols < 0 || wanted != static_cast<std::int64_t>(count)) {
    ERaise("TMtx: " + std::to_string(count) + " numbers do not fill " + ShapeText(Rows, Cols));
  }
  SetShape(Rows, Cols, TMtxFloatPrecision::DoubleReal);
  std::copy(Values.begin(), Values.end(), Elements<double>().begin());
}

TMtx& TMtx::Size(std::int32_t Rows, std::int32_t Cols, bool Complex, bool IsDouble) {
  return Size(Rows, Cols, MakePrecision(Complex, IsDouble));
}
TMtx& TMtx::Size(std::int32_t Rows, std::int32_t Cols, TMtxFloatPrecision FloatPrecision) {
  SetShape(Rows, Cols, FloatPrecision);
  return *this;
}
TMtx& TMtx::Size(std::int32_t Rows, std::int32_t Cols, const TDense& Src) {
  return Size(Rows, Cols, Src.FloatPrecision());
}

// Element access

std::size_t TMtx::Position(std::int32_t row, std::int32_t col) const {
  if (row < 0 || row >= rows_ || col < 0 || col >= cols_) {
    ERaise(ElementText(row, col) + " is outside a matrix of " + ShapeText(rows_, cols_));
  }
  return static_cast<std::size_t>(row) * static_cast<std::size_t>(cols_) + static_cast<std::size_t>(col);
}

void TMtx::ValidateBlock(std::int32_t Row, std::int32_t Col, std::int32_t RowCount, std::int32_t ColCount) const {
  if (IsInside(Row, RowCount, rows_) && IsInside(Col, ColCount, cols_)) return;
  ERaise("rows " + std::to_string(Row) + " + " + std::to_string(RowCount) + ", columns " + std::to_string(Col) + " + " +
         std::to_string(ColCount) + " are outside a matrix of " + ShapeText(rows_, cols_));
}

double TMtx::operator()(std::int32_t Row, std::int32_t Col) const {
  const std::size_t place = Position(Row, Col);
  detail::RequireReal(*this, kComplexAsReal);
  return ForReal(*this, [&]<Element R>(ElementTag<R>) { return static_cast<double>(Elements<R>()[place]); });
}

void TMtx::SetDefault(std::int32_t Row, std::int32_t Col, double Value) {
  const std::size_t place = Position(Row, Col);
  detail::RequireReal(*this, kComplexAsReal);
  ForReal(*this, [&]<Element R>(ElementTag<R>) { Elements<R>()[place] = static_cast<R>(Value); });
}

std::int32_t TMtx::SDataIndex(std::int32_t Row, std::int32_t Col) const {
  detail::RequireReal(*this, "SDataIndex: complex elements");
  return OffsetInBuffer() + static_cast<std::int32_t>(Position(Row, Col));
}

std::int32_t TMtx::CDataIndex(std::int32_t Row, std::int32_t Col) const {
  if (!Complex()) ERaise("CDataIndex: real elements");
  return OffsetInBuffer() + static_cast<std::int32_t>(Position(Row, Col));
}

void TMtx::CopyToArray(std::vector<std::vector<double>>& Array) const {
  std::vector<std::vector<double>> rows(static_cast<std::size_t>(rows_));
  ForAny(*this, [&]<Element T>(ElementTag<T>) {
    const auto parts = detail::Parts(Elements<T>());
    const std::size_t width = rows.empty() ? 0 : parts.size() / rows.size();
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const auto row = parts.subspan(i * width, width);
      rows[i].assign(row.begin(), row.end());
    }
  });
  Array = std::move(rows);
}

void TMtx::CopyFromArray(const std::vector<std::vector<double>>& Array) {
  const std::size_t width = Array.empty() ? 0 : Array.front().size();
  const std::size_t parts_of_element = Complex() ? 2 : 1;
  const bool even = std::all_of(Array.begin(), Array.end(), [&](const auto& row) { return row.size() == width; });
  if (!even) ERaise("CopyFromArray: rows of different lengths");
  if (width % parts_of_element != 0) ERaise("CopyFromArray: an odd number of reals (" + std::to_string(width) + ")");
  constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
  if (Array.size() > kMost || width / parts_of_element > kMost) ERaise("Size: more than 2147483647 elements");
  SetShape(static_cast<std::int32_t>(Array.size()), static_cast<std::int32_t>(width / parts_of_element), precision_);
  ForAny(*this, [&]<Element T>(ElementTag<T>) {
    const auto parts = detail::Parts(Elements<T>());
    for (std::size_t i = 0; i < Array.size(); ++i) {
      std::transform(Array[i].begin(), Array[i].end(), parts.subspan(i * width, width).begin(),
                     detail::Convert<RealOf<T>, double>);
    }
  });
}

// Blocks, rows, columns

void TMtx::Copy(const TMtx& Src, std::int32_t SrcRow, std::int32_t SrcCol, std::int32_t Row, std::int32_t Col,
                std::int32_t RowCount, std::int32_t ColCount, bool Transpose) {
  Src.ValidateBlock(SrcRow, SrcCol, RowCount, ColCount);
  ValidateBlock(Row, Col, Transpose ? ColCount : RowCount, Transpose ? RowCount : ColCount);
  CheckSamePrecision(Src);
  if (RowCount == 0 || ColCount == 0) return;
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    const auto y = Elements<T>();
    const auto x = Src.Elements<T>();
    const detail::Operand<T> held(x, detail::Disturbs<T>(detail::Memory(y), x, Reading::AnyOrder));
    const auto from = BlockAt(held.First(), SrcRow, SrcCol, Src.Cols());
    const auto to = BlockAt(y.data(), Row, Col, cols_);
    const auto rows = static_cast<std::size_t>(RowCount);
    const auto cols = static_cast<std::size_t>(ColCount);
    Transpose ? TransposeBlock<T>(from, rows, cols, to) : CopyBlock<T>(from, rows, cols, to);
  });
}

void TMtx::CopyVec(const TVec& Src, std::int32_t SrcIndex, std::int32_t Row, std::int32_t Col, std::int32_t Len) {
  const auto place = static_cast<std::int32_t>(Position(Row, Col));
  const std::int32_t room = length_ - place;
  const bool all = Len == -1;
  Src.ValidateParams(SrcIndex, Len);
  if (all) Len = std::min(Len, room);
  if (Len > room) {
    ERaise("CopyVec: " + std::to_string(Len) + " elements from " + ElementText(Row, Col) + " leave a matrix of " +
           ShapeText(rows_, cols_));
  }
  CheckSamePrecision(Src);
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    const auto x = detail::Stretch<T>(Src, SrcIndex, Len);
    if (!x.empty()) std::memmove(Elements<T>().data() + place, x.data(), x.size_bytes());
  });
}

void TMtx::SetRow(const TVec& Vec, std::int32_t Row) {
  ValidateBlock(Row, 0, 1, cols_);
  if (Vec.Length() != cols_) {
    ERaise("SetRow: a vector of length " + std::to_string(Vec.Length()) + " into " + std::to_string(cols_) +
           " columns");
  }
  SetRow(Vec, Row, 0, cols_);
}

void TMtx::SetRow(const TVec& Vec, std::int32_t Row, std::int32_t Col, std::int32_t Len) {
  Len = Settle(Len, Vec, Col, cols_);
  ValidateBlock(Row, Col, 1, Len);
  if (Len > 0) CopyVec(Vec, 0, Row, Col, Len);
}

void TMtx::SetCol(const TVec& Vec, std::int32_t Col) {
  ValidateBlock(0, Col, rows_, 1);
  if (Vec.Length() != rows_) {
    ERaise("SetCol: a vector of length " + std::to_string(Vec.Length()) + " into " + std::to_string(rows_) + " rows");
  }
  SetCol(Vec, Col, 0, rows_);
}

void TMtx::SetCol(const TVec& Vec, std::int32_t Col, std::int32_t Row, std::int32_t Len) {
  Len = Settle(Len, Vec, Row, rows_);
  ValidateBlock(Row, Col, Len, 1);
  Vec.ValidateParams(0, Len);
  CheckSamePrecision(Vec);
  if (Len == 0) return;
  ForAny(Vec, [&]<Element T>(ElementTag<T>) {
    const auto y = Elements<T>();
    const auto x = detail::Stretch<T>(Vec, 0, Len);
    const detail::Operand<T> held(x, detail::Disturbs<T>(detail::Memory(y), x, Reading::AnyOrder));
    const auto to = BlockAt(y.data(), Row, Col, cols_);
    for (std::size_t i = 0; i < x.size(); ++i) to(i, 0) = held.First()[i];
  });
}

void TMtx::SetZero(std::int32_t Row, std::int32_t Col, std::int32_t RowCount, std::int32_t ColCount) {
  ValidateBlock(Row, Col, RowCount, ColCount);
  if (RowCount == 0 || ColCount == 0) return;
  ForAny(*this, [&]<Element T>(ElementTag<T>) {
    const auto block = BlockAt(Elements<T>().data(), Row, Col, cols_);
    for (std::int32_t i = 0; i < RowCount; ++i) std::fill_n(&block(static_cast<std::size_t>(i), 0), ColCount, T{});
  });
}

// Whole matrices

void TMtx::Diag(const TVec& Vec) {
  ForAny(Vec, [&]<Element T>(ElementTag<T>) {
    const auto x = Vec.Elements<T>();
    const auto write = [n = x.size()](std::span<T> y, const T* diagonal) {
      std::fill(y.begin(), y.end(), T{});
      for (std::size_t k = 0; k < n; ++k) y[k * (n + 1)] = diagonal[k];
    };
    Rebuild<T>(Vec.Length(), Vec.Length(), Reading::AnyOrder, write, x);
  });
}

void TMtx::Eye(std::int32_t Rows, std::int32_t Cols, const TDense& Src) {
  SetShape(Rows, Cols, Src.FloatPrecision());
  ForAny(*this, [&]<Element T>(ElementTag<T>) {
    const auto y = Elements<T>();
    std::fill(y.begin(), y.end(), T{});
    const auto count = static_cast<std::size_t>(std::min(Rows, Cols));
    for (std::size_t k = 0; k < count; ++k) y[k * (static_cast<std::size_t>(Cols) + 1)] = detail::Convert<T>(1.0);
  });
}

void TMtx::Transp() { Transp(*this); }

void TMtx::Transp(const TMtx& Src) {
  const auto rows = static_cast<std::size_t>(Src.rows_);
  const auto cols = static_cast<std::size_t>(Src.cols_);
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    const auto write = [&](std::span<T> y, const T* x) { TransposeBlock<T>({x, cols}, rows, cols, {y.data(), rows}); };
    Rebuild<T>(Src.cols_, Src.rows_, Reading::AnyOrder, write, Src.Elements<T>());
  });
}

std::ostream& operator<<(std::ostream& out, const TMtx& Mtx) {
  out << '[';
  ForAny(Mtx, [&]<Element T>(ElementTag<T>) {
    const auto x = Mtx.Elements<T>();
    for (std::int32_t i = 0; i < Mtx.Rows(); ++i) {
      out << (i == 0 ? "[" : ", [");
      for (std::int32_t j = 0; j < Mtx.Cols(); ++j) {
        const auto place = static_cast<std::int64_t>(i) * Mtx.Cols() + j;
        out << (j == 0 ? "" : ", ") << x[static_cast<std::size_t>(place)];
      }
      out << ']';
    }
  });
  return out << ']';
}

}  // namespace passband
