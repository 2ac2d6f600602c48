// Matrices: places, blocks, rows, columns, transposition, arrays and refusals.
#include <limits>
#include <sstream>

#include "passband/foundation/text.h"
#include "passband/vector_core/pool.h"
#include "tests/test_support.h"

namespace passband {
namespace {

using test::At;

constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

class MatrixTest : public testing::TestWithParam<TMtxFloatPrecision> {
 protected:
  static TCplx Mark(std::int32_t row, std::int32_t col) {
    return {10.0 * row + col + 1, IsComplexPrecision(GetParam()) ? 0.5 * row - col : 0};
  }
  static TMtx Marked(std::int32_t rows, std::int32_t cols) {
    TMtx m;
    m.Size(rows, cols, GetParam());
    for (std::int32_t i = 0; i < rows; ++i) {
      for (std::int32_t j = 0; j < cols; ++j) Put(m, i, j, Mark(i, j));
    }
    return m;
  }
  static TVec MarkedVec(std::int32_t length) {
    TVec v;
    v.GetRow(Marked(1, length), 0);
    return v;
  }
  static void Put(TMtx& m, std::int32_t row, std::int32_t col, TCplx value) {
    TVec one;
    one.Size(1, m);
    test::Put(one, 0, value);
    m.CopyVec(one, 0, row, col, 1);
  }
  static TCplx Get(const TMtx& m, std::int32_t row, std::int32_t col) {
    TVec one;
    one.GetRow(m, row, col, 1);
    return At(one, 0);
  }
  // Every element of m is what `expected(row, col)` says.
  template <class Expected>
  static void ExpectAll(const TMtx& m, std::int32_t rows, std::int32_t cols, Expected expected) {
    ASSERT_EQ(m.Rows(), rows);
    ASSERT_EQ(m.Cols(), cols);
    ASSERT_EQ(m.FloatPrecision(), GetParam());
    for (std::int32_t i = 0; i < rows; ++i) {
      for (std::int32_t j = 0; j < cols; ++j) EXPECT_EQ(Get(m, i, j), TCplx(expected(i, j))) << i << ", " << j;
    }
  }
};

INSTANTIATE_TEST_SUITE_P(All, MatrixTest, testing::ValuesIn(test::kPrecisions),
                         [](const auto& suite) { return test::Name(suite.param); });

TEST_P(MatrixTest, BlocksAreCopiedAsIsAndTransposed) {
  const TMtx src = Marked(4, 5);
  TMtx m;
  m.Eye(6, 6, src);
  m.Copy(src, 1, 2, 3, 0, 2, 3);
  m.Copy(src, 0, 0, 0, 3, 3, 2, true);
  ExpectAll(m, 6, 6, [](std::int32_t i, std::int32_t j) {
    if (i >= 3 && i < 5 && j < 3) return Mark(i - 2, j + 2);
    if (i < 2 && j >= 3) return Mark(j - 3, i);
    return Cplx(i == j ? 1 : 0);
  });
}

TEST_P(MatrixTest, TransposedBlocksAndOwnBlocks) {
  TMtx m = Marked(5, 5);
  m.Copy(m, 0, 0, 1, 2, 3, 3, true);
  ExpectAll(m, 5, 5,
            [](std::int32_t i, std::int32_t j) { return i >= 1 && i < 4 && j >= 2 ? Mark(j - 2, i - 1) : Mark(i, j); });
  m = Marked(5, 5);
  m.Copy(m, 0, 0, 1, 1, 4, 4);
  ExpectAll(m, 5, 5, [](std::int32_t i, std::int32_t j) { return i > 0 && j > 0 ? Mark(i - 1, j - 1) : Mark(i, j); });
  m.SetZero(1, 0, 2, 5);
  m.SetZero(5, 0, 0, 5);
  ExpectAll(m, 5, 5, [](std::int32_t i, std::int32_t j) {
    if (i == 1 || i == 2) return TCplx();
    return i > 0 && j > 0 ? Mark(i - 1, j - 1) : Mark(i, j);
  });
}

TEST_P(MatrixTest, TransposesAnyShape) {
  for (const auto& [rows, cols] : {std::pair{1, 7}, {3, 3}, {40, 17}, {0, 5}, {33, 33}}) {
    const TMtx src = Marked(rows, cols);
    TMtx m;
    m.Transp(src);
    ExpectAll(m, cols, rows, [](std::int32_t i, std::int32_t j) { return Mark(j, i); });
    m.Transp();
    ExpectAll(m, rows, cols, Mark);
  }
}

TEST_P(MatrixTest, RowsColumnsAndDiagonals) {
  TMtx m = Marked(3, 4);
  const TVec v = MarkedVec(4);  // Mark(0, k)
  m.SetRow(v, 1);
  m.SetRow(v, 2, 1, 2);
  m.SetRow(v, 0, 4, -1);  // no place: nothing
  ExpectAll(m, 3, 4, [](std::int32_t i, std::int32_t j) {
    if (i == 1) return Mark(0, j);
    return i == 2 && j >= 1 && j < 3 ? Mark(0, j - 1) : Mark(i, j);
  });
  m = Marked(4, 3);
  m.SetCol(v, 1);
  m.SetCol(v, 2, 2, -1);
  ExpectAll(m, 4, 3, [](std::int32_t i, std::int32_t j) {
    if (j == 1) return Mark(0, i);
    return j == 2 && i >= 2 ? Mark(0, i - 2) : Mark(i, j);
  });
  TVec row;
  row.GetRow(m, 3, 1, -1);
  ASSERT_EQ(row.Length(), 2);
  EXPECT_EQ(At(row, 1), Mark(0, 1));
  m = Marked(3, 4);
  m.CopyVec(v, 1, 1, 3, -1);  // row by row
  ExpectAll(m, 3, 4, [](std::int32_t i, std::int32_t j) {
    if (i == 1 && j == 3) return Mark(0, 1);
    return i == 2 && j < 2 ? Mark(0, j + 2) : Mark(i, j);
  });
  m.Diag(v);
  ExpectAll(m, 4, 4, [](std::int32_t i, std::int32_t j) { return i == j ? Mark(0, i) : TCplx(); });
  TVec diagonal;
  diagonal.Diag(m);
  EXPECT_TRUE(test::SameBits(diagonal, v));
  m.Eye(2, 3, m);
  ExpectAll(m, 2, 3, [](std::int32_t i, std::int32_t j) { return Cplx(i == j ? 1 : 0); });
}

TEST_P(MatrixTest, ArraysGoOutAndComeBack) {
  const TMtx m = Marked(3, 2);
  std::vector<std::vector<double>> rows;
  m.CopyToArray(rows);
  ASSERT_EQ(rows.size(), 3U);
  ASSERT_EQ(rows[2].size(), m.Complex() ? 4U : 2U);
  TMtx back;
  back.Size(0, 0, GetParam());
  back.CopyFromArray(rows);
  ExpectAll(back, 3, 2, Mark);
  rows[1].pop_back();
  EXPECT_RAISES(back.CopyFromArray(rows), ECoreError, "CopyFromArray: rows of different lengths");
  if (m.Complex()) {
    EXPECT_RAISES(back.CopyFromArray({{1, 2, 3}}), ECoreError, "CopyFromArray: an odd number of reals (3)");
  }
  ExpectAll(back, 3, 2, Mark);
}

TEST_P(MatrixTest, ElementsAndPlaces) {
  TMtx m = Marked(2, 3);
  constexpr const char* kOutside = "row 2, column 0 is outside a matrix of 2 x 3";
  EXPECT_EQ(m.GetLeadingCols(), 3);
  if (m.Complex()) {
    EXPECT_EQ(m.CDataIndex(1, 2), 5);
    EXPECT_RAISES(m.SDataIndex(1, 2), ECoreError, "SDataIndex: complex elements");
    EXPECT_RAISES(m(1, 2), ECoreError, "a complex element is read as a real number");
    EXPECT_RAISES(m.SetDefault(1, 2, 0), ECoreError, "a complex element is read as a real number");
    return;
  }
  m.SetDefault(1, 2, -7);
  EXPECT_EQ(m(1, 2), -7);
  EXPECT_EQ(m.SDataIndex(1, 2), 5);
  EXPECT_RAISES(m.CDataIndex(0, 0), ECoreError, "CDataIndex: real elements");
  EXPECT_RAISES(m(2, 0), ECoreError, kOutside);
  EXPECT_RAISES(m.SetDefault(2, 0, 1), ECoreError, kOutside);
  EXPECT_RAISES(m.SDataIndex(2, 0), ECoreError, kOutside);
}

TEST_P(MatrixTest, RefusedCallsChangeNothing) {
  TMtx m = Marked(2, 3);
  TVec v = MarkedVec(4);
  TVec other = MarkedVec(3);
  other.SetFloatPrecision(MakePrecision(!m.Complex(), m.IsDouble()));
  const std::string precisions = "the operands have precisions " + PrecisionToStr(m.FloatPrecision()) + " and " +
                                 PrecisionToStr(other.FloatPrecision());
  EXPECT_RAISES(m.SetRow(v, 0), ECoreError, "SetRow: a vector of length 4 into 3 columns");
  EXPECT_RAISES(m.SetCol(v, 0), ECoreError, "SetCol: a vector of length 4 into 2 rows");
  EXPECT_RAISES(m.SetRow(v, 2), ECoreError, "rows 2 + 1, columns 0 + 3 are outside a matrix of 2 x 3");
  EXPECT_RAISES(m.SetRow(v, 1, 1, 3), ECoreError, "rows 1 + 1, columns 1 + 3 are outside a matrix of 2 x 3");
  EXPECT_RAISES(m.SetCol(v, -1, 0, 2), ECoreError, "rows 0 + 2, columns -1 + 1 are outside a matrix of 2 x 3");
  EXPECT_RAISES(m.SetRow(other, 0), ECoreError, precisions.c_str());
  EXPECT_RAISES(m.SetCol(other, 0, 0, 2), ECoreError, precisions.c_str());
  EXPECT_RAISES(m.CopyVec(v, 0, 1, 0, 4), ECoreError,
                "CopyVec: 4 elements from row 1, column 0 leave a matrix of 2 x 3");
  EXPECT_RAISES(m.CopyVec(v, 0, 0, 3, 1), ECoreError, "row 0, column 3 is outside a matrix of 2 x 3");
  EXPECT_RAISES(m.CopyVec(v, 3, 0, 0, 2), ECoreError, "Index = 3, Len = 2 is outside a vector of length 4");
  EXPECT_RAISES(m.Copy(m, 0, 0, 0, 0, 2, 3, true), ECoreError,
                "rows 0 + 3, columns 0 + 2 are outside a matrix of 2 x 3");
  EXPECT_RAISES(m.Copy(m, 0, kMost, 0, 0, 1, kMost), ECoreError,
                "rows 0 + 1, columns 2147483647 + 2147483647 are outside a matrix of 2 x 3");
  EXPECT_RAISES(m.SetZero(1, 0, 2, 1), ECoreError, "rows 1 + 2, columns 0 + 1 are outside a matrix of 2 x 3");
  EXPECT_RAISES(m.Eye(1 << 16, 1 << 16, m), ECoreError, "Size: more than 2147483647 elements");
  EXPECT_RAISES(m.Size(-1, 2, m), ECoreError, "Size: a length is negative");
  EXPECT_RAISES(v.GetRow(m, 2), ECoreError, "rows 2 + 1, columns 0 + 3 are outside a matrix of 2 x 3");
  EXPECT_RAISES(v.GetRow(m, 0, 2, 2), ECoreError, "rows 0 + 1, columns 2 + 2 are outside a matrix of 2 x 3");
  ExpectAll(m, 2, 3, Mark);
  EXPECT_TRUE(test::SameBits(v, MarkedVec(4)));
  EXPECT_EQ(PoolStatistics().Borrowed, 0);
}

TEST(Matrix, ConstructionAndText) {
  std::ostringstream text;
  text << TMtx(2, 2, {1, 2.5, 3, 4}) << TMtx() << TMtx(2, 0, {});
  EXPECT_EQ(text.str(), "[[1, 2.5], [3, 4]][][[], []]");
  EXPECT_RAISES(TMtx(2, 3, {1, 2, 3, 4, 5}), ECoreError, "TMtx: 5 numbers do not fill 2 x 3");
  EXPECT_RAISES(TMtx(-1, -2, {1, 2}), ECoreError, "TMtx: 2 numbers do not fill -1 x -2");
}

}  // namespace
}  // namespace passband
