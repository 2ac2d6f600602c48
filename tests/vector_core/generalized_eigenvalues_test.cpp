#include "passband/vector_core/generalized_eigenvalues.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/test_support.h"

namespace passband {
namespace {

using test::At;

std::vector<double> Sorted(const TVec& alpha, const TVec& beta) {
  std::vector<double> values;
  for (std::int32_t i = 0; i < alpha.Length(); ++i) values.push_back(At(alpha, i).Re / At(beta, i).Re);
  std::sort(values.begin(), values.end());
  return values;
}

// P diag(d) Q with well-conditioned P and Q.
TMtx Pencil(const std::vector<double>& diagonal) {
  const auto n = static_cast<std::int32_t>(diagonal.size());
  TMtx p;
  TMtx q;
  TMtx d;
  for (TMtx* const m : {&p, &q, &d}) {
    m->Size(n, n, TMtxFloatPrecision::DoubleReal);
    m->SetZero();
  }
  for (std::int32_t i = 0; i < n; ++i) {
    d.SetDefault(i, i, diagonal[static_cast<std::size_t>(i)]);
    for (std::int32_t j = 0; j < n; ++j) {
      p.SetDefault(i, j, (i == j ? 3 : 0) + std::sin(3 * i + j));
      q.SetDefault(i, j, (i == j ? 2 : 0) + std::cos(i + 2 * j));
    }
  }
  TMtx product;
  product.Mul(p, d);
  TMtx result;
  result.Mul(product, q);
  return result;
}

TEST(GeneralizedEigenvalues, OfConstructedPencils) {
  TVec alpha;
  TVec beta;
  GeneralizedEig(Pencil({1, -2, 6, 0, 10}), Pencil({1, 4, 2, 3, -0.5}), alpha, beta);
  const std::vector<double> expected{-20, -0.5, 0, 1, 3};
  const std::vector<double> found = Sorted(alpha, beta);
  for (std::size_t i = 0; i < 5; ++i) EXPECT_NEAR(found[i], expected[i], 1e-12) << i;
}

TEST(GeneralizedEigenvalues, InfiniteOnesHaveABetaOfNoise) {
  TVec alpha;
  TVec beta;
  GeneralizedEig(Pencil({1, 2, 3}), Pencil({1, 0, 1}), alpha, beta);
  int infinite = 0;
  for (std::int32_t i = 0; i < 3; ++i) infinite += std::abs(beta[i]) < 1e-13 * CAbs(At(alpha, i)) ? 1 : 0;
  EXPECT_EQ(infinite, 1);
}

TEST(GeneralizedEigenvalues, DoublePairsThatStallTheIteration) {
  // Two coupled rotations with one angle: a defective pair of complex eigenvalues c +- j s.
  const double c = std::sqrt(2.0) - 1;
  const double s = std::sqrt(1 - c * c);
  TMtx a;
  a.CopyFromArray({{c, s, s, 0.4}, {0, c, 0, s}, {-s, -0.4, c, -0.25}, {0, -s, 0, c}});
  TMtx unit;
  unit.Size(4, 4, TMtxFloatPrecision::DoubleReal);
  unit.SetZero();
  for (std::int32_t i = 0; i < 4; ++i) unit.SetDefault(i, i, 1);
  TVec alpha;
  TVec beta;
  GeneralizedEig(a, unit, alpha, beta);
  for (std::int32_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(At(alpha, i).Re / beta[i], c, 1e-6);
    EXPECT_NEAR(std::abs(At(alpha, i).Im / beta[i]), s, 1e-6);
  }
}

TEST(GeneralizedEigenvalues, SinglePrecisionEmptyAndRefused) {
  TMtx a = Pencil({1, 2});
  TMtx b = Pencil({1, 1});
  TVec alpha = {5.0};
  TVec beta = {6.0};
  TMtx wide;
  wide.Size(2, 3, TMtxFloatPrecision::DoubleReal);
  TMtx complex = a;
  complex.SetFloatPrecision(TMtxFloatPrecision::DoubleComplex);
  TMtx infinite = a;
  infinite.SetDefault(1, 1, std::numeric_limits<double>::infinity());
  EXPECT_RAISES(GeneralizedEig(wide, wide, alpha, beta), ECoreError, "GeneralizedEig: a matrix of 2 x 3 is not square");
  EXPECT_RAISES(GeneralizedEig(a, Pencil({1, 2, 3}), alpha, beta), ECoreError,
                "GeneralizedEig: matrices of 2 x 2 and 3 x 3");
  EXPECT_RAISES(GeneralizedEig(complex, complex, alpha, beta), ECoreError, "GeneralizedEig: complex elements");
  EXPECT_RAISES(GeneralizedEig(infinite, b, alpha, beta), ECoreError, "GeneralizedEig: an element is not finite");
  EXPECT_TRUE(test::SameBits(alpha, {5.0}) && test::SameBits(beta, {6.0}));
  a.SetFloatPrecision(TMtxFloatPrecision::SingleReal);
  b.SetFloatPrecision(TMtxFloatPrecision::SingleReal);
  GeneralizedEig(a, b, alpha, beta);
  EXPECT_EQ(alpha.FloatPrecision(), TMtxFloatPrecision::SingleComplex);
  EXPECT_NEAR(Sorted(alpha, beta)[1], 2, 1e-5);
  GeneralizedEig(TMtx(), TMtx(), alpha, beta);
  EXPECT_EQ(alpha.Length(), 0);
}

TEST(Take, StoresIntoTheMemoryOfAViewOfTheSameSize) {
  std::vector<double> memory{1, 2, 3};
  TVec view = TVec::View(std::span<double>(memory));
  TVec result = {7.0, 8.0, 9.0};
  view.Take(result);
  EXPECT_EQ(memory, (std::vector<double>{7, 8, 9}));
  TVec owner = {1.0};
  result = {4.0, 5.0};
  owner.Take(result);
  EXPECT_TRUE(test::SameBits(owner, {4.0, 5.0}));
}

}  // namespace
}  // namespace passband
