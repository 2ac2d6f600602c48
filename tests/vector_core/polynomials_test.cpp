#include "passband/vector_core/polynomials.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "tests/test_support.h"

namespace passband {
namespace {

using test::At;

const std::vector<double>& Reference(const std::string& name) {
  static const std::map<std::string, std::vector<double>> table{
#include "tests/vector_core/polynomials_reference.inc"
  };
  return table.at(name);
}

TVec RealVec(const std::vector<double>& values) { return TVec(std::span<const double>(values)); }

TVec ComplexVec(const std::vector<double>& parts) {
  TVec v;
  v.SetIt(true, parts);
  return v;
}

// The largest relative distance of a root to the one of the reference that is nearest to it; each is taken once.
double WorstDistance(const TVec& roots, const std::vector<double>& parts) {
  std::vector<TCplx> expected;
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2) expected.push_back({parts[i], parts[i + 1]});
  if (static_cast<std::size_t>(roots.Length()) != expected.size()) return std::numeric_limits<double>::infinity();
  double worst = 0;
  for (std::int32_t i = 0; i < roots.Length(); ++i) {
    const TCplx z = At(roots, i);
    const auto distance = [&](TCplx r) { return CAbs(z - r) / CAbs(r); };
    const auto nearest =
        std::min_element(expected.begin(), expected.end(), [&](TCplx a, TCplx b) { return distance(a) < distance(b); });
    worst = std::max(worst, distance(*nearest));
    expected.erase(nearest);
  }
  return worst;
}

bool ConjugatesStandTogether(const TVec& roots) {
  for (std::int32_t i = 0; i < roots.Length(); ++i) {
    const TCplx z = At(roots, i);
    if (z.Im == 0) continue;
    if (z.Im < 0 || i + 1 == roots.Length() || At(roots, i + 1) != Conj(z)) return false;
    ++i;
  }
  return true;
}

// The roots of the coefficients as they are given. The condition numbers reach 5e13 and do not show; that of bessel30
// is 9e15, where twice the digits of a double just do.
TEST(PolyRootsTest, RootsOfRealCoefficientsAgreeWithHighPrecision) {
  struct Case {
    const char* name;
    double tolerance;
  };
  const Case cases[] = {{"wilkinson20", 3e-16},   {"bessel30", 2e-15},   {"circle100", 3e-16},
                        {"circles60", 3e-16},     {"magnitudes", 3e-16}, {"near_double", 3e-16},
                        {"exponential50", 3e-16}, {"chebyshev40", 3e-16}};
  for (const auto& [name, tolerance] : cases) {
    TVec roots;
    PolyRoots(RealVec(Reference(std::string(name) + ".p")), roots);
    EXPECT_EQ(roots.FloatPrecision(), TMtxFloatPrecision::DoubleComplex);
    EXPECT_LE(WorstDistance(roots, Reference(std::string(name) + ".roots")), tolerance) << name;
    EXPECT_TRUE(ConjugatesStandTogether(roots)) << name;
  }
}

TEST(PolyRootsTest, RootsOfUnityOfAnyOrderAndRotation) {
  for (const std::int32_t n : {1, 2, 3, 7, 100, 199, 200, 201, 500}) {
    for (const TCplx rotation : {Cplx(1), Cplx(-1), Expj(0.3)}) {
      TVec p;
      p.Size(n + 1, TMtxFloatPrecision::DoubleComplex);
      p.SetZero();
      p.CValues().front() = Cplx(1);
      p.CValues().back() = -rotation;
      std::vector<double> expected;
      const double angle = std::atan2(rotation.Im, rotation.Re);
      for (std::int32_t k = 0; k < n; ++k) {
        const TCplx z = Expj((2 * std::numbers::pi * k + angle) / n);
        expected.insert(expected.end(), {z.Re, z.Im});
      }
      TVec roots;
      PolyRoots(p, roots);
      EXPECT_LE(WorstDistance(roots, expected), 2e-15) << n;  // the angles above are rounded too
    }
  }
}

TEST(PolyRootsTest, OneOfTwoNearRootsIsReachedFromTheWrongSideOfTheRealAxis) {
  // x^2 - 2 x + (1 +- d): real or complex by less than an eigenvalue routine can tell.
  for (const double d : {0x1p-52, -0x1p-52, 0x1p-40, -0x1p-40, 0.0}) {
    TVec roots;
    PolyRoots(TVec{1, -2, 1 + d}, roots);
    const double apart = std::sqrt(std::abs(d));
    const std::vector<double> expected =
        d > 0 ? std::vector<double>{1, apart, 1, -apart} : std::vector<double>{1 + apart, 0, 1 - apart, 0};
    EXPECT_LE(WorstDistance(roots, expected), d == 0 ? 1e-15 : 3e-16) << d;  // double: the root of 1e-31
    EXPECT_TRUE(ConjugatesStandTogether(roots));
  }
}

// Pairs so close that an eigenvalue routine often takes real roots for complex ones and the reverse. The correction
// p / p' at each root tells how far it is from a true one.
TEST(PolyRootsTest, NoRootIsHeldCaptiveByTheSymmetryOfTheStart) {
  std::mt19937_64 generator(1);
  std::uniform_real_distribution<double> uniform(-1, 1);
  for (int trial = 0; trial < 1000; ++trial) {
    TVec centres;
    centres.Size(2 * (2 + trial % 5), TMtxFloatPrecision::DoubleComplex);
    for (std::int32_t i = 0; i < centres.Length(); i += 2) {
      const double c = uniform(generator);
      const double d = std::pow(10, -10 + 2 * uniform(generator));
      const TCplx half = uniform(generator) > 0 ? TCplx{d, 0} : TCplx{0, d};
      test::Put(centres, i, Cplx(c) + half);
      test::Put(centres, i + 1, Cplx(c) - half);
    }
    TVec p;
    TVec roots;
    PolyCoeff(centres, p);
    PolyRoots(p, roots);
    TVec derivative;
    derivative.Size(p.Length() - 1, p);
    for (std::int32_t i = 0; i < derivative.Length(); ++i) {
      derivative.SetDefault(i, p[i] * (derivative.Length() - i));
    }
    for (std::int32_t i = 0; i < roots.Length(); ++i) {
      const TCplx z = At(roots, i);
      ASSERT_LE(CAbs(CDiv(PolyEval(z, p), PolyEval(z, derivative))), 1e-13 * CAbs(z)) << trial;
    }
  }
}

TEST(PolyRootsTest, MultipleRootsGoDownToTheRootOfTwiceTheDigits) {
  TVec roots;
  PolyRoots(TVec{1, -7, 21, -35, 35, -21, 7, -1}, roots);
  EXPECT_LE(WorstDistance(roots, {1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0}), 2 * std::pow(1e-29, 1.0 / 7));
}

TEST(PolyRootsTest, ZerosAtBothEndsAndEmptyResults) {
  TVec roots;
  PolyRoots(TVec{0, 0, 2, -6, 0, 0, 0}, roots);
  ASSERT_EQ(roots.Length(), 4);
  EXPECT_EQ(At(roots, 0), Cplx(3));
  for (std::int32_t i = 1; i < 4; ++i) EXPECT_EQ(At(roots, i), Cplx(0));
  for (const TVec& constant : {TVec{}, TVec{0, 0}, TVec{5}, TVec{0, 5}}) {
    PolyRoots(constant, roots);
    EXPECT_EQ(roots.Length(), 0);
    EXPECT_TRUE(roots.Complex());
  }
  PolyRoots(TVec{3, 0}, roots);
  ASSERT_EQ(roots.Length(), 1);
  EXPECT_EQ(At(roots, 0), Cplx(0));
}

TEST(PolyRootsTest, CoefficientsAndRootsNextToTheLimitsOfADouble) {
  TVec roots;
  PolyRoots(TVec{1e-300, -1e300 * 1e-300, 1e-305}, roots);  // 1e300 and 1e-305
  EXPECT_LE(WorstDistance(roots, {1e300, 0, 1e-305, 0}), 1e-13);
  PolyRoots(TVec{1e308, 0, -1e308}, roots);
  EXPECT_LE(WorstDistance(roots, {1, 0, -1, 0}), 0);
  PolyRoots(TVec{5e-324, 0, 0, 5e-324}, roots);
  EXPECT_LE(WorstDistance(roots, {-1, 0, 0.5, std::sqrt(0.75), 0.5, -std::sqrt(0.75)}), 2e-16);
  EXPECT_RAISES(PolyRoots(TVec{1e-200, 1e200}, roots), ECoreError,
                "PolyRoots: a root is outside the range of a double");
  EXPECT_EQ(roots.Length(), 3);
}

TEST(PolyRootsTest, SinglePrecisionIsRoundedOnceAndOutputMayBeInput) {
  TVec p{1, -3, 3.25, -2.25, 0.5};
  TVec wide;
  PolyRoots(p, wide);
  p.SetFloatPrecision(TMtxFloatPrecision::SingleReal);
  PolyRoots(p, p);
  ASSERT_EQ(p.FloatPrecision(), TMtxFloatPrecision::SingleComplex);
  wide.SetFloatPrecision(TMtxFloatPrecision::SingleComplex);
  EXPECT_TRUE(test::SameBits(p, wide));
}

TEST(PolyRootsTest, NonFiniteCoefficientsAreRefusedAndNothingIsLost) {
  const auto before = PoolStatistics().Borrowed;
  for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    TVec roots{7};
    EXPECT_RAISES(PolyRoots(TVec{1, bad, 2}, roots), ECoreError, "PolyRoots: a coefficient is not finite");
    EXPECT_RAISES(PolyCoeff(TVec{1, bad}, roots), ECoreError, "PolyCoeff: a root is not finite");
    EXPECT_EQ(roots.Length(), 1);
    EXPECT_EQ(roots[0], 7);
  }
  TVec p{7};
  EXPECT_RAISES(PolyCoeff(TVec{1e200, 1e200}, p), ECoreError,
                "PolyCoeff: a coefficient is outside the range of a double");
  EXPECT_EQ(p[0], 7);
  EXPECT_EQ(PoolStatistics().Borrowed, before);
}

TEST(PolyCoeffTest, HundredRootsOnTwoCirclesToTheLastDigit) {
  TVec p;
  PolyCoeff(ComplexVec(Reference("coefficients.roots")), p);
  ASSERT_EQ(p.FloatPrecision(), TMtxFloatPrecision::DoubleReal);
  const auto& expected = Reference("coefficients.p");
  ASSERT_EQ(static_cast<std::size_t>(p.Length()), expected.size());
  const double largest = *std::max_element(expected.begin(), expected.end());
  for (std::int32_t i = 0; i < p.Length(); ++i) {
    const double e = expected[static_cast<std::size_t>(i)];
    EXPECT_NEAR(p[i], e, std::abs(e) * 3e-16 + largest * 1e-28) << i;
  }
}

TEST(PolyCoeffTest, RealOnlyForRealRootsAndExactPairs) {
  struct Case {
    TVec roots;
    TVec expected;
  };
  const Case cases[] = {
      {TVec{}, TVec{1}},
      {TVec{1, 2, 3}, TVec{1, -6, 11, -6}},
      {TVec{{0, 1}, {2, 0}, {0, -1}}, TVec{1, -2, 1, -2}},
      {TVec{{0, 1}, {0, 1}}, TVec{{1, 0}, {0, -2}, {-1, 0}}},
      {TVec{{1, 1}, {1, -1.0000000000000002}}, TVec{{1, 0}, {-2, 2.220446049250313e-16}, {2, -2.220446049250313e-16}}},
  };
  for (const auto& [roots, expected] : cases) {
    TVec p;
    PolyCoeff(roots, p);
    ASSERT_EQ(p.Complex(), expected.Complex());
    ASSERT_EQ(p.Length(), expected.Length());
    for (std::int32_t i = 0; i < p.Length(); ++i) EXPECT_LE(CAbs(At(p, i) - At(expected, i)), 4.5e-16) << i;
  }
}

TEST(PolyCoeffTest, CharacteristicPolynomialOfAMatrix) {
  const TMtx a(3, 3, {2, 1, 0, 0, 3, 1, 1, 0, 1});  // x^3 - 6 x^2 + 11 x - 7
  TVec p;
  PolyCoeff(a, p);
  ASSERT_EQ(p.Length(), 4);
  EXPECT_FALSE(p.Complex());
  const double expected[] = {1, -6, 11, -7};
  for (std::int32_t i = 0; i < 4; ++i) EXPECT_NEAR(p[i], expected[i], 5e-14) << i;
  PolyCoeff(TMtx(), p);
  ASSERT_EQ(p.Length(), 1);
  EXPECT_EQ(p[0], 1);
  EXPECT_RAISES(PolyCoeff(TMtx(1, 2, {1, 2}), p), ECoreError, "Eig: a matrix of 1 x 2 is not square");
}

TEST(PolyCoeffTest, InvertsPolyRootsInEveryPrecision) {
  for (const auto precision : test::kPrecisions) {
    TVec p = test::Noise(31, precision, 5);
    test::Put(p, 0, Cplx(1));
    TVec roots;
    TVec back;
    PolyRoots(p, roots);
    PolyCoeff(roots, back);
    ASSERT_EQ(back.FloatPrecision(), p.FloatPrecision());
    ASSERT_EQ(back.Length(), p.Length());
    for (std::int32_t i = 0; i < p.Length(); ++i) {
      EXPECT_LE(CAbs(At(p, i) - At(back, i)), 200 * test::Epsilon(precision)) << i;  // 30 rounded roots, moduli near 1
    }
  }
}

TEST(PolyEvalTest, NextToAMultipleRootEveryDigitIsCorrect) {
  const TVec p = RealVec(Reference("values.p"));
  const TVec x = RealVec(Reference("values.x"));
  const auto& expected = Reference("values.y");
  TVec y;
  PolyEval(x, p, y);
  for (std::int32_t i = 0; i < x.Length(); ++i) {
    const double e = expected[static_cast<std::size_t>(i)];
    EXPECT_NEAR(y[i], e, std::abs(e) * 3e-16 + 1e-29) << i;
    EXPECT_EQ(PolyEval(x[i], p), y[i]);
    EXPECT_EQ(PolyEval(Cplx(x[i]), p), Cplx(y[i]));
  }
}

TEST(PolyEvalTest, PointsAndCoefficientsOfEveryKind) {
  const TVec p{2, -1, 3};
  const TVec q{{2, 0}, {0, 1}};
  EXPECT_EQ(PolyEval(2.0, p), 9);
  EXPECT_EQ(PolyEval(TCplx{0, 1}, p), (TCplx{1, -1}));
  EXPECT_EQ(PolyEval(TCplx{0, 1}, q), (TCplx{0, 3}));
  EXPECT_EQ(PolyEval(2.0, TVec{}), 0);
  EXPECT_TRUE(std::isnan(PolyEval(std::nan(""), p)));
  EXPECT_EQ(PolyEval(1e200, TVec{1, 0, -3}), std::numeric_limits<double>::infinity());
  TVec y;
  PolyEval(TVec{1, 2}, q, y);
  ASSERT_TRUE(y.Complex());
  EXPECT_EQ(At(y, 1), (TCplx{4, 1}));
  TVec single{1, 2};
  single.SetFloatPrecision(TMtxFloatPrecision::SingleReal);
  EXPECT_RAISES(PolyEval(single, p, y), ECoreError, "the operands have precisions single and double");
  EXPECT_RAISES(PolyEval(1.0, q), ECoreError, "PolyEval: complex coefficients");
  EXPECT_EQ(y.Length(), 2);
  PolyEval(single, single, single);  // x + 2 at 1 and 2
  EXPECT_FALSE(single.IsDouble());
  EXPECT_EQ(single[1], 4);
}

TEST(StripLeadZerosTest, RemovesLeadingZerosOnly) {
  TVec v{0, -0.0, 3, 0, 1, 0};
  StripLeadZeros(v, v);
  ASSERT_EQ(v.Length(), 4);
  EXPECT_EQ(v[0], 3);
  EXPECT_EQ(v[3], 0);
  StripLeadZeros(TVec{{0, 0}, {0, 1}}, v);
  ASSERT_EQ(v.Length(), 1);
  EXPECT_EQ(At(v, 0), (TCplx{0, 1}));
  StripLeadZeros(TVec{0, 0}, v);
  EXPECT_EQ(v.Length(), 0);
}

}  // namespace
}  // namespace passband
