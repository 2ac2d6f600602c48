#include "passband/vector_core/interpolation.h"

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "tests/test_support.h"

namespace passband {
namespace {

using enum TInterpolationType;
using test::At;

TVec Reference(const std::string& name) {
  static const std::map<std::string, std::vector<double>> table{
#include "tests/vector_core/interpolation_reference.inc"
  };
  return TVec(std::span<const double>(table.at(name)));
}

void ExpectNear(const TVec& y, const TVec& expected, double tolerance) {
  ASSERT_EQ(y.Length(), expected.Length());
  for (std::int32_t i = 0; i < y.Length(); ++i) EXPECT_NEAR(y[i], expected[i], tolerance * (1 + std::abs(y[i]))) << i;
}

TEST(InterpolateTest, AgreesWithReferenceInsideAndOutside) {
  const TVec x = Reference("x");
  const TVec y = Reference("y");
  const TVec at = Reference("at");
  for (const bool sorted : {false, true}) {
    TVec out;
    Interpolate(x, y, at, out, Linear, sorted);
    ExpectNear(out, Reference("linear"), 1e-15);
    Interpolate(x, y, at, out, Cubic, sorted);
    ExpectNear(out, Reference("cubic"), 4e-15);
    for (std::int32_t n = 2; n <= 5; ++n) {
      Interpolate(test::Slice(x, 0, n), test::Slice(y, 0, n), at, out, Cubic, sorted);
      ExpectNear(out, Reference("cubic" + std::to_string(n)), 1e-13);  // far outside, the terms are large
    }
    Interpolate(TVec{2}, TVec{5}, at, out, Cubic, sorted);
    for (std::int32_t i = 0; i < out.Length(); ++i) EXPECT_EQ(out[i], 5);
  }
}

TEST(InterpolateTest, FlagForSortedPointsIsAHintOnly) {
  const TVec x = Reference("x");
  const TVec y = Reference("y");
  TVec at = test::Noise(200, TMtxFloatPrecision::DoubleReal, 3);
  at.Scale(9);
  for (const auto type : {Linear, Cubic}) {
    TVec searched;
    TVec walked;
    Interpolate(x, y, at, searched, type, false);
    Interpolate(x, y, at, walked, type, true);
    EXPECT_TRUE(test::SameBits(searched, walked));
  }
}

TEST(InterpolateTest, ComplexAndSingleDataAndExactKnots) {
  TVec x = Reference("x");
  TVec re = Reference("y");
  TVec im = re;
  im.Reverse();
  TVec y;
  y.RealToCplx(re, im);
  const TVec at = Reference("at");
  for (const auto type : {Linear, Cubic}) {
    TVec out;
    TVec out_re;
    TVec out_im;
    Interpolate(x, y, at, out, type);
    Interpolate(x, re, at, out_re, type);
    Interpolate(x, im, at, out_im, type);
    for (std::int32_t i = 0; i < at.Length(); ++i) {
      EXPECT_NEAR(At(out, i).Re, out_re[i], 1e-15 * (1 + std::abs(out_re[i])));
      EXPECT_NEAR(At(out, i).Im, out_im[i], 1e-15 * (1 + std::abs(out_im[i])));
    }
    Interpolate(x, re, x, out, type, true);
    EXPECT_TRUE(test::SameBits(out, re));

    TVec single_x = x;
    TVec single_y = re;
    TVec single_at = at;
    for (TVec* v : {&single_x, &single_y, &single_at, &out_re}) v->SetFloatPrecision(TMtxFloatPrecision::SingleReal);
    Interpolate(single_x, single_y, single_at, single_at, type);  // the data are exact in single precision but for 0.1
    ASSERT_FALSE(single_at.IsDouble());
    ExpectNear(single_at, out_re, 4e-7);
  }
}

TEST(InterpolateTest, NanStaysWhereItIs) {
  const double nan = std::nan("");
  TVec out;
  Interpolate(TVec{0, 1, 2, 3}, TVec{0, nan, 2, 3}, TVec{0, nan, 2.5, 0.5, 2, 3}, out, Linear, true);
  EXPECT_EQ(out[0], 0);
  EXPECT_TRUE(std::isnan(out[1]));
  EXPECT_EQ(out[2], 2.5);
  EXPECT_TRUE(std::isnan(out[3]));
  EXPECT_EQ(out[4], 2);
  EXPECT_EQ(out[5], 3);
}

TEST(InterpolateTest, RefusalsChangeNothing) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  TVec out{7};
  TVec single{1, 2};
  single.SetFloatPrecision(TMtxFloatPrecision::SingleReal);
  struct Case {
    TVec x;
    TVec y;
    TVec at;
    const char* text;
  };
  const Case cases[] = {
      {TVec{1, 2}, TVec{1, 2, 3}, TVec{1}, "Interpolate: X has 2 elements, Y 3"},
      {TVec{}, TVec{}, TVec{1}, "Interpolate: no points"},
      {TVec{1, 1}, TVec{1, 2}, TVec{1}, "Interpolate: X does not ascend strictly"},
      {TVec{2, 1}, TVec{1, 2}, TVec{1}, "Interpolate: X does not ascend strictly"},
      {TVec{1, std::nan("")}, TVec{1, 2}, TVec{1}, "Interpolate: X is not finite"},
      {TVec{1, kInfinity}, TVec{1, 2}, TVec{1}, "Interpolate: X is not finite"},
      {TVec{{1, 0}}, TVec{1}, TVec{1}, "Interpolate: complex X"},
      {TVec{1, 2}, TVec{1, 2}, TVec{{1, 0}}, "Interpolate: complex X"},
      {TVec{1, 2}, single, TVec{1}, "the operands have precisions double and single"},
      {TVec{1, 2}, TVec{1, 2}, single, "the operands have precisions double and single"},
  };
  for (const auto& [x, y, at, text] : cases) {
    EXPECT_RAISES(Interpolate(x, y, at, out), ECoreError, text);
    EXPECT_EQ(out.Length(), 1);
    EXPECT_EQ(out[0], 7);
  }
}

}  // namespace
}  // namespace passband
