#include "passband/vector_core/levinson.h"

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "tests/test_support.h"

namespace passband {
namespace {

using test::At;

const std::vector<double>& Reference(const std::string& name) {
  static const std::map<std::string, std::vector<double>> table{
#include "tests/vector_core/levinson_reference.inc"
  };
  return table.at(name);
}

TVec AsVec(const std::string& name, TMtxFloatPrecision precision) {
  TVec v;
  v.SetIt(IsComplexPrecision(precision), Reference(name));
  v.SetFloatPrecision(precision);
  return v;
}

class LevinsonTest : public testing::TestWithParam<TMtxFloatPrecision> {};

INSTANTIATE_TEST_SUITE_P(All, LevinsonTest, testing::ValuesIn(test::kPrecisions),
                         [](const auto& suite) { return test::Name(suite.param); });

TEST_P(LevinsonTest, SolvesTheYuleWalkerEquations) {
  const std::string kind = IsComplexPrecision(GetParam()) ? "complex" : "real";
  const double tolerance = 20 * test::Epsilon(GetParam());  // the condition number is below 30
  TVec r = AsVec(kind + ".r", GetParam());
  TVec a;
  TVec reflection;
  double error = 0;
  Levinson(r, a, error, reflection);
  const auto expect = [&](const TVec& v, const TVec& expected) {
    ASSERT_EQ(v.FloatPrecision(), GetParam());
    ASSERT_EQ(v.Length(), expected.Length());
    for (std::int32_t i = 0; i < v.Length(); ++i) EXPECT_LE(CAbs(At(v, i) - At(expected, i)), tolerance) << i;
  };
  expect(a, AsVec(kind + ".a", GetParam()));
  expect(reflection, AsVec(kind + ".reflection", GetParam()));
  EXPECT_NEAR(error, Reference(kind + ".error")[0], tolerance);
  Levinson(r, r);
  EXPECT_TRUE(test::SameBits(r, a));
}

TEST(LevinsonEdges, PredictableDataEndTheRecursion) {
  struct Case {
    TVec r;
    TVec a;
  };
  const Case cases[] = {
      {TVec{5}, TVec{1}},
      {TVec{0, 0, 0}, TVec{1, 0, 0}},
      {TVec{3, 3, 3}, TVec{1, -1, 0}},                                 // a constant
      {TVec{1, 0, -1, 0, 1}, TVec{1, 0, 1, 0, 0}},                     // a tone at a quarter of the sampling frequency
      {TVec{{1, 0}, {0, 1}, {-1, 0}}, TVec{{1, 0}, {0, -1}, {0, 0}}},  // a rotating phasor
      {TVec{4, -2}, TVec{1, 0.5}},
  };
  for (const auto& [r, expected] : cases) {
    TVec a;
    Levinson(r, a);
    ASSERT_EQ(a.Length(), expected.Length());
    for (std::int32_t i = 0; i < a.Length(); ++i) EXPECT_EQ(At(a, i), At(expected, i)) << r << i;
  }
}

TEST(LevinsonEdges, RefusalsChangeNothing) {
  TVec a{7};
  EXPECT_RAISES(Levinson(TVec{}, a), ECoreError, "Levinson: no elements");
  EXPECT_RAISES(Levinson(TVec{1, std::nan("")}, a), ECoreError, "Levinson: an element is not finite");
  EXPECT_EQ(a.Length(), 1);
  EXPECT_EQ(a[0], 7);
}

}  // namespace
}  // namespace passband
