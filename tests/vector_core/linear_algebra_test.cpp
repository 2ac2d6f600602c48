#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <numbers>
#include <string>
#include <vector>

#include "passband/vector_core/mtx.h"
#include "passband/vector_core/pool.h"
#include "tests/test_support.h"

namespace passband {
namespace {

using test::At;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr TMtxOperation kOperations[] = {TMtxOperation::None, TMtxOperation::Transposed, TMtxOperation::ConjTransposed};
constexpr TMtxType kTypes[] = {TMtxType::General, TMtxType::Symmetric, TMtxType::Hermitian, TMtxType::LowerTriangular,
                               TMtxType::UpperTriangular};

const std::vector<double>& Reference(const std::string& name) {
  static const std::map<std::string, std::vector<double>> table{
#include "tests/vector_core/linear_algebra_reference.inc"
  };
  return table.at(name);
}

TVec AsVec(const std::vector<double>& parts, TMtxFloatPrecision precision) {
  TVec v;
  v.SetIt(IsComplexPrecision(precision), parts);
  v.SetFloatPrecision(precision);
  return v;
}

TMtx AsMatrix(const TVec& v, std::int32_t rows) {
  TMtx m;
  m.Size(rows, v.Length() / rows, v);
  m.CopyVec(v, 0, 0, 0, v.Length());
  return m;
}

TMtx AsMatrix(const std::string& name, std::int32_t rows, TMtxFloatPrecision precision) {
  return AsMatrix(AsVec(Reference(name), precision), rows);
}

TVec Flat(const TMtx& m) {
  TVec v;
  TVec row;
  v.Size(m.Length(), m);
  for (std::int32_t i = 0; i < m.Rows(); ++i) {
    row.GetRow(m, i);
    v.Copy(row, 0, i * m.Cols(), m.Cols());
  }
  return v;
}

TCplx At(const TMtx& m, std::int32_t row, std::int32_t col) { return test::At(Flat(m), row * m.Cols() + col); }

// What an operand stands for, element by element.
TCplx Meant(const TMtx& m, TMtxType type, TMtxOperation op, std::int32_t i, std::int32_t j) {
  if (op != TMtxOperation::None) std::swap(i, j);
  const bool upper = j > i;
  TCplx z = At(m, i, j);
  if (upper && (type == TMtxType::Symmetric || type == TMtxType::Hermitian)) z = At(m, j, i);
  if (type == TMtxType::Hermitian) z = upper ? Conj(z) : (i == j ? Cplx(z.Re) : z);
  if (type == TMtxType::LowerTriangular && upper) z = {};
  if (type == TMtxType::UpperTriangular && i > j) z = {};
  return op == TMtxOperation::ConjTransposed ? Conj(z) : z;
}

double WorstError(const TVec& x, const std::vector<double>& parts, double scale) {
  const std::size_t size = parts.size() / static_cast<std::size_t>(x.Length());
  double worst = 0;
  for (std::int32_t i = 0; i < x.Length(); ++i) {
    const std::size_t k = size * static_cast<std::size_t>(i);
    worst = std::max(worst, CAbs(At(x, i) - TCplx{parts[k], size == 2 ? parts[k + 1] : 0}) / scale);
  }
  return worst;
}

// The largest distance of a value to the nearest one of the reference; each is taken once.
double WorstDistance(const TVec& values, const std::vector<double>& parts) {
  std::vector<TCplx> expected;
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2) expected.push_back({parts[i], parts[i + 1]});
  if (static_cast<std::size_t>(values.Length()) != expected.size()) return kInfinity;
  double worst = 0;
  for (std::int32_t i = 0; i < values.Length(); ++i) {
    const auto distance = [&](TCplx r) { return CAbs(At(values, i) - r); };
    const auto nearest =
        std::min_element(expected.begin(), expected.end(), [&](TCplx a, TCplx b) { return distance(a) < distance(b); });
    worst = std::max(worst, distance(*nearest));
    expected.erase(nearest);
  }
  return worst;
}

// Small integers, so that products are exact in every precision.
TMtx Integers(std::int32_t rows, std::int32_t cols, TMtxFloatPrecision precision, std::uint32_t seed) {
  TVec v = test::Noise(rows * cols, precision, seed);
  for (std::int32_t i = 0; i < v.Length(); ++i) {
    const TCplx z = At(v, i);
    test::Put(v, i, {std::round(8 * z.Re), std::round(8 * z.Im)});
  }
  return AsMatrix(v, rows);
}

class LinearAlgebraTest : public testing::TestWithParam<TMtxFloatPrecision> {
 protected:
  static std::string Kind() { return IsComplexPrecision(GetParam()) ? "complex" : "real"; }
  static double Epsilon() { return test::Epsilon(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(All, LinearAlgebraTest, testing::ValuesIn(test::kPrecisions),
                         [](const auto& suite) { return test::Name(suite.param); });

TEST_P(LinearAlgebraTest, ProductOfEveryOperationAndType) {
  for (const auto op_a : kOperations) {
    for (const auto op_b : kOperations) {
      for (const auto type : kTypes) {
        const TMtx a = Integers(5, 5, GetParam(), 1);
        const TMtx b = op_b == TMtxOperation::None ? Integers(5, 3, GetParam(), 2) : Integers(3, 5, GetParam(), 2);
        TMtx c;
        c.Mul(a, b, op_a, op_b, type);
        ASSERT_EQ(c.FloatPrecision(), GetParam());
        ASSERT_EQ(c.Rows(), 5);
        ASSERT_EQ(c.Cols(), 3);
        for (std::int32_t i = 0; i < 5; ++i) {
          for (std::int32_t j = 0; j < 3; ++j) {
            TCplx sum;
            for (std::int32_t k = 0; k < 5; ++k) {
              sum += Meant(a, type, op_a, i, k) * Meant(b, TMtxType::General, op_b, k, j);
            }
            ASSERT_EQ(At(c, i, j), sum) << static_cast<int>(op_a) << static_cast<int>(op_b) << static_cast<int>(type);
          }
        }
      }
    }
  }
}

TEST_P(LinearAlgebraTest, ProductsWithItselfAndWithoutInnerDimension) {
  const TMtx a = Integers(4, 4, GetParam(), 3);
  const TMtx b = Integers(4, 4, GetParam(), 4);
  TMtx expected;
  expected.Mul(a, b);
  TMtx left = a;
  left.Mul(left, b);
  TMtx right = b;
  right.Mul(a, right);
  EXPECT_TRUE(test::SameBits(Flat(left), Flat(expected)));
  EXPECT_TRUE(test::SameBits(Flat(right), Flat(expected)));

  TMtx row;
  TMtx column;
  row.Size(2, 0, GetParam());
  column.Size(0, 3, GetParam());
  left.Mul(row, column);
  ASSERT_EQ(left.Rows(), 2);
  ASSERT_EQ(left.Cols(), 3);
  EXPECT_EQ(left.NormFro(), 0);
}

TEST_P(LinearAlgebraTest, TensorProducts) {
  const TVec a = Flat(Integers(1, 3, GetParam(), 5));
  const TVec b = Flat(Integers(1, 4, GetParam(), 6));
  TMtx outer;
  outer.TensorProd(a, b);
  for (std::int32_t i = 0; i < 3; ++i) {
    for (std::int32_t j = 0; j < 4; ++j) EXPECT_EQ(At(outer, i, j), At(a, i) * At(b, j));
  }
  for (const auto op : kOperations) {
    const TMtx m = op == TMtxOperation::None ? Integers(3, 4, GetParam(), 7) : Integers(4, 3, GetParam(), 7);
    TVec y = a;
    y.TensorProd(y, m, TMtxType::General, op);
    ASSERT_EQ(y.Length(), 4);
    for (std::int32_t j = 0; j < 4; ++j) {
      TCplx sum;
      for (std::int32_t k = 0; k < 3; ++k) sum += At(a, k) * Meant(m, TMtxType::General, op, k, j);
      EXPECT_EQ(At(y, j), sum);
    }
  }
}

TEST_P(LinearAlgebraTest, SolutionsAndInverse) {
  const TMtx a = AsMatrix(Kind() + ".a", 6, GetParam());
  const TMtx b = AsMatrix(Kind() + ".b", 6, GetParam());
  const char* const names[] = {".x", ".x_transposed", ".x_adjoint"};
  for (std::size_t k = 0; k < 3; ++k) {
    TMtx x;
    a.LUSolve(b, x, TMtxType::General, kOperations[k]);
    ASSERT_EQ(x.FloatPrecision(), GetParam());
    TVec first;
    TVec of_first;
    first.Size(6, GetParam());
    for (std::int32_t i = 0; i < 6; ++i) test::Put(first, i, At(b, i, 0));
    a.LUSolve(first, of_first, TMtxType::General, kOperations[k]);
    EXPECT_LE(WorstError(of_first, Reference(Kind() + names[k]), 1), 40 * Epsilon()) << names[k];
    for (std::int32_t i = 0; i < 6; ++i) EXPECT_LE(CAbs(At(x, i, 0) - At(of_first, i)), 40 * Epsilon());
    a.LUSolve(first, first, TMtxType::General, kOperations[k]);
    EXPECT_TRUE(test::SameBits(first, of_first));
  }
  TMtx inverse = a;
  inverse.Inv();
  EXPECT_LE(WorstError(Flat(inverse), Reference(Kind() + ".inverse"), 1), 40 * Epsilon());
}

TEST_P(LinearAlgebraTest, TypedMatricesAreSolvedAsTheyAreMultiplied) {
  for (const auto type : kTypes) {
    for (const auto op : kOperations) {
      TMtx a = Integers(5, 5, GetParam(), 8);
      for (std::int32_t i = 0; i < 5; ++i) {
        TVec strong;
        strong.Size(1, GetParam());
        test::Put(strong, 0, Cplx(64));
        a.CopyVec(strong, 0, i, i, 1);
      }
      const TMtx x = Integers(5, 2, GetParam(), 9);
      TMtx b;
      TMtx solved;
      b.Mul(a, x, op, TMtxOperation::None, type);
      a.LUSolve(b, solved, type, op);
      TVec difference = Flat(solved);
      difference.Sub(Flat(x));
      EXPECT_LE(test::MaxAbs(difference), 60 * Epsilon()) << static_cast<int>(type) << static_cast<int>(op);
    }
  }
}

TEST_P(LinearAlgebraTest, LeastSquaresOfEveryShapeAndRank) {
  for (const std::string shape : {"tall", "wide", "deficient"}) {
    if (shape == "deficient" && !IsDoublePrecision(GetParam())) continue;  // rounded to single it has full rank
    const std::string name = Kind() + "." + shape;
    const std::int32_t rows = shape == "wide" ? 4 : 7;
    const TMtx a = AsMatrix(name + ".a", rows, GetParam());
    const TMtx b = AsMatrix(name + ".b", rows, GetParam());
    TMtx x;
    TMtx r;
    a.LQRSolve(b, x, &r);
    EXPECT_LE(WorstError(Flat(x), Reference(name + ".x"), 1), 60 * Epsilon()) << name;
    TMtx gram;
    TMtx expected;
    gram.Mul(r, r, TMtxOperation::ConjTransposed);
    expected.Mul(a, a, TMtxOperation::ConjTransposed);
    ASSERT_EQ(r.Rows(), 4);
    TVec difference = Flat(gram);
    difference.Sub(Flat(expected));
    EXPECT_LE(test::MaxAbs(difference), 20 * Epsilon() * test::MaxAbs(Flat(expected)));
    for (std::int32_t i = 0; i < r.Rows(); ++i) {
      EXPECT_EQ(At(r, i, i).Im, 0);
      EXPECT_GE(At(r, i, i).Re, 0);
      for (std::int32_t j = 0; j < i; ++j) EXPECT_EQ(At(r, i, j), TCplx{});
    }
    TMtx turned = a;
    turned.Transp();
    TMtx again;
    turned.LQRSolve(b, again, nullptr, TMtxOperation::Transposed);
    EXPECT_TRUE(test::SameBits(Flat(again), Flat(x)));
  }
}

TEST(LeastSquaresTest, UnitsOfTheUnknownsDoNotMatter) {
  const TMtx a = AsMatrix("vandermonde.a", 12, TMtxFloatPrecision::DoubleReal);
  const auto& expected = Reference("vandermonde.x");
  TVec x;
  a.LQRSolve(AsVec(Reference("vandermonde.b"), TMtxFloatPrecision::DoubleReal), x);
  double unit = 1;
  for (std::int32_t i = 0; i < 9; ++i, unit /= 5500) {
    EXPECT_NEAR(x[i], expected[static_cast<std::size_t>(i)], 1e-11 * unit) << i;
  }
}

TEST(LeastSquaresTest, NothingToSolve) {
  TMtx none;
  none.Size(0, 3, TMtxFloatPrecision::DoubleReal);
  TMtx b;
  b.Size(0, 2, TMtxFloatPrecision::DoubleReal);
  TMtx x;
  none.LQRSolve(b, x);
  EXPECT_EQ(x.Rows(), 3);
  EXPECT_EQ(x.Cols(), 2);
  EXPECT_EQ(x.NormFro(), 0);
  TMtx zero(2, 2, {0, 0, 0, 0});
  TVec y;
  zero.LQRSolve(TVec{1, 2}, y);
  EXPECT_EQ(y.NormL2(), 0);
}

TEST(RefinementTest, IllConditionedSystemToTheLastDigit) {
  TMtx hilbert;
  hilbert.Size(10, 10, TMtxFloatPrecision::DoubleReal);
  for (std::int32_t i = 0; i < 10; ++i) {
    for (std::int32_t j = 0; j < 10; ++j) hilbert.Values(i, j) = 1.0 / (i + j + 1);
  }
  TVec ones;
  ones.Size(10, TMtxFloatPrecision::DoubleReal);
  ones.SetVal(1);
  const auto& expected = Reference("hilbert.x");
  for (const bool refine : {false, true}) {
    hilbert.SetRefineSolution(refine);
    TVec x;
    hilbert.LUSolve(ones, x);
    double worst = 0;
    for (std::int32_t i = 0; i < 10; ++i) {
      const double e = expected[static_cast<std::size_t>(i)];
      worst = std::max(worst, std::abs(x[i] - e) / std::abs(e));
    }
    if (refine) {
      EXPECT_LE(worst, 3e-16);
    } else {
      EXPECT_GT(worst, 1e-6);  // the condition number is 1.6e13
    }
  }
}

TEST_P(LinearAlgebraTest, EigenvaluesOfGeneralAndHermitianMatrices) {
  TMtx a = AsMatrix(Kind() + ".a", 6, GetParam());
  TVec d;
  a.Eig(d);
  ASSERT_EQ(d.FloatPrecision(), MakePrecision(true, IsDoublePrecision(GetParam())));
  EXPECT_LE(WorstDistance(d, Reference(Kind() + ".eigenvalues")), 60 * Epsilon());

  TMtx sum = a;
  sum.Transp();
  sum.Conj();
  sum.Add(a);
  const auto& expected = Reference(Kind() + ".hermitian_eigenvalues");
  sum.Eig(d, TMtxType::Hermitian);
  for (std::int32_t i = 0; i < 6; ++i) {
    EXPECT_EQ(At(d, i).Im, 0);
    EXPECT_NEAR(At(d, i).Re, expected[static_cast<std::size_t>(i)], 20 * Epsilon());
  }
  TVec triangular;
  a.Eig(triangular, TMtxType::UpperTriangular);
  for (std::int32_t i = 0; i < 6; ++i) EXPECT_EQ(At(triangular, i), At(a, i, i));
}

TEST(EigenvaluesTest, GradedMatrixKeepsItsDigits) {
  TVec d;
  AsMatrix("graded.a", 6, TMtxFloatPrecision::DoubleReal).Eig(d);
  EXPECT_LE(WorstDistance(d, Reference("graded.eigenvalues")), 1e-13);
}

TEST(EigenvaluesTest, ClosedForms) {
  constexpr std::int32_t kSize = 60;
  TMtx second_difference;
  second_difference.Size(kSize, kSize, TMtxFloatPrecision::DoubleReal);
  second_difference.SetZero();
  TMtx rotation = second_difference;  // moves every element to the next place
  for (std::int32_t i = 0; i < kSize; ++i) {
    second_difference.Values(i, i) = 2;
    if (i > 0) second_difference.Values(i, i - 1) = -1;
    rotation.Values((i + 1) % kSize, i) = 1;
  }
  TVec d;
  second_difference.Eig(d, TMtxType::Symmetric);  // from the lower triangle alone
  for (std::int32_t k = 0; k < kSize; ++k) {
    EXPECT_NEAR(At(d, k).Re, 2 - 2 * std::cos(std::numbers::pi * (k + 1) / (kSize + 1)), 2e-14);
  }
  std::vector<double> expected;
  for (std::int32_t k = 0; k < kSize; ++k) {
    const TCplx z = Expj(2 * std::numbers::pi * k / kSize);
    expected.insert(expected.end(), {z.Re, z.Im});
  }
  rotation.Eig(d);
  EXPECT_LE(WorstDistance(d, expected), 2e-14);
  for (const double scale : {1e-300, 1e300}) {
    const TMtx turn(2, 2, {0, scale, -scale, 0});
    turn.Eig(d);
    EXPECT_LE(WorstDistance(d, {0, scale, 0, -scale}), scale * 1e-15);
  }
  TMtx().Eig(d);
  EXPECT_EQ(d.Length(), 0);
}

TEST_P(LinearAlgebraTest, FrobeniusNormOverTheWholeRange) {
  const double factors[] = {1, IsDoublePrecision(GetParam()) ? 0x1p1000 : 0x1p120,
                            IsDoublePrecision(GetParam()) ? 0x1p-1000 : 0x1p-120};
  for (const double factor : factors) {
    TVec v;
    v.Size(3, GetParam());
    const TCplx unit = IsComplexPrecision(GetParam()) ? TCplx{0, factor} : Cplx(factor);
    for (std::int32_t i = 0; i < 3; ++i) test::Put(v, i, unit * (i == 0 ? 2.0 : i == 1 ? 3.0 : 6.0));
    EXPECT_EQ(AsMatrix(v, 3).NormFro(), 7 * factor);
  }
  EXPECT_EQ(TMtx().NormFro(), 0);
  EXPECT_EQ(TMtx(1, 2, {1, -kInfinity}).NormFro(), kInfinity);
  EXPECT_TRUE(std::isnan(TMtx(1, 2, {1, std::nan("")}).NormFro()));
}

TEST(MixedOperandsTest, RealAndComplexMixAndPrecisionsDoNot) {
  const TMtx a(2, 2, {1, 2, 3, 5});
  TMtx complex = a;
  complex.ExtendToComplex();
  complex.MulI();
  TMtx single = a;
  single.SetFloatPrecision(TMtxFloatPrecision::SingleReal);
  TMtx c;
  c.Mul(a, complex);
  EXPECT_EQ(At(c, 1, 1), (TCplx{0, 31}));
  a.LUSolve(complex, c);
  EXPECT_LE(CAbs(At(c, 1, 1) - TCplx{0, 1}), 1e-14);
  const TVec b{1, 2};
  TVec x;
  const char* const text = "the operands have precisions single and double";
  EXPECT_RAISES(c.Mul(single, a), ECoreError, text);
  EXPECT_RAISES(single.LUSolve(b, x), ECoreError, text);
  EXPECT_RAISES(single.LQRSolve(b, x), ECoreError, text);
  EXPECT_RAISES(x.TensorProd(b, single), ECoreError, "the operands have precisions double and single");
}

TEST(LinearAlgebraRefusals, NameTheFaultAndChangeNothing) {
  const auto borrowed = PoolStatistics().Borrowed;
  const TMtx wide(2, 3, {1, 2, 3, 4, 5, 6});
  const TMtx singular(2, 2, {1, 2, 2, 4});
  const TMtx zero_pivot(2, 2, {0, 5, 0, 1});
  const TMtx bad(2, 2, {1, std::nan(""), 0, 1});
  const TVec b{1, 2};
  TMtx m(1, 1, {7});
  TVec x{7};
  struct Case {
    std::function<void()> call;
    const char* text;
  };
  const Case cases[] = {
      {[&] { m.Mul(wide, wide); }, "Mul: 2 x 3 times 2 x 3"},
      {[&] { m.Mul(wide, singular, TMtxOperation::None, TMtxOperation::Transposed); }, "Mul: 2 x 3 times 2 x 2"},
      {[&] { m.Mul(wide, wide, TMtxOperation::Transposed, TMtxOperation::None, TMtxType::Symmetric); },
       "Mul: a matrix of 2 x 3 is not square"},
      {[&] {
         x.TensorProd(TVec{1, 2, 3}, wide);
       },
       "TensorProd: a vector of length 3 times a matrix of 2 x 3"},
      {[&] { m.Inv(wide); }, "Inv: a matrix of 2 x 3 is not square"},
      {[&] { m.Inv(singular); }, "Inv: the matrix is singular"},
      {[&] { m.Inv(TMtx(1, 1, {1e-310})); }, "Inv: the matrix is singular"},
      {[&] { m.Inv(bad); }, "Inv: an element is not finite"},
      {[&] { wide.Eig(x); }, "Eig: a matrix of 2 x 3 is not square"},
      {[&] { bad.Eig(x); }, "Eig: an element is not finite"},
      {[&] { wide.LUSolve(b, x); }, "LUSolve: a matrix of 2 x 3 is not square"},
      {[&] {
         singular.LUSolve(TVec{1, 2, 3}, x);
       },
       "LUSolve: 2 x 2 against 3 rows of B"},
      {[&] { singular.LUSolve(b, x); }, "LUSolve: the matrix is singular"},
      {[&] { zero_pivot.LUSolve(b, x, TMtxType::UpperTriangular); }, "LUSolve: the matrix is singular"},
      {[&] { bad.LUSolve(b, x); }, "LUSolve: an element is not finite"},
      {[&] {
         wide.LQRSolve(TVec{1, 2, 3}, x, &m);
       },
       "LQRSolve: 2 x 3 against 3 rows of B"},
      {[&] { wide.LQRSolve(b, x, &m, TMtxOperation::Transposed); }, "LQRSolve: 3 x 2 against 2 rows of B"},
      {[&] { bad.LQRSolve(b, x, &m); }, "LQRSolve: an element is not finite"},
  };
  for (const auto& [call, text] : cases) {
    EXPECT_RAISES(call(), ECoreError, text);
    EXPECT_EQ(x.Length() * m.Length(), 1);
    EXPECT_EQ(x[0] + m(0, 0), 14);
  }
  TMtx spoiled(2, 2, {1, std::nan(""), 2, 3});  // a right-hand side may hold anything
  TMtx(2, 2, {2, 0, 0, 2}).LUSolve(spoiled, m);
  EXPECT_EQ(m(1, 0), 1);
  EXPECT_TRUE(std::isnan(m(0, 1)));
  EXPECT_EQ(PoolStatistics().Borrowed, borrowed);
}

}  // namespace
}  // namespace passband
