// Sums, products, means, norms and extremes: closed forms, the ends of the range, NaN and refusals.
#include <functional>
#include <limits>

#include "tests/test_support.h"

namespace passband {
namespace {

using test::At;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kLargest = std::numeric_limits<double>::max();

class ReductionsTest : public testing::TestWithParam<TMtxFloatPrecision> {
 protected:
  static bool IsComplexData() { return IsComplexPrecision(GetParam()); }
  // (k + 1) (1 - 2j), the real part alone in real vectors
  static TVec Counting(std::int32_t length) {
    TVec v;
    v.Size(length, GetParam());
    for (std::int32_t k = 0; k < length; ++k) test::Put(v, k, (k + 1.0) * Cplx(1, -2));
    return v;
  }
  static TCplx Unit() { return IsComplexData() ? Cplx(1, -2) : Cplx(1); }
};

INSTANTIATE_TEST_SUITE_P(All, ReductionsTest, testing::ValuesIn(test::kPrecisions),
                         [](const auto& suite) { return test::Name(suite.param); });

TEST_P(ReductionsTest, SumsOfCountingNumbers) {
  for (const std::int32_t n : {0, 1, 2, 7, 8, 9, 63, 511, 512, 513, 1024, 1025, 5000}) {
    const TVec v = Counting(n);
    const double sum = 0.5 * n * (n + 1.0);
    const double squares = n * (n + 1.0) * (2.0 * n + 1) / 6;
    const double unit_square = IsComplexData() ? 5 : 1;
    TCplx total;
    v.Sum(total);
    EXPECT_EQ(total, sum * Unit()) << n;
    EXPECT_EQ(v.DotProdc(v), Cplx(unit_square * squares)) << n;
    EXPECT_EQ(v.DotProdc(v, false), squares * CSqr(Unit())) << n;
    EXPECT_NEAR(v.NormL2(), std::sqrt(unit_square * squares), 1e-15 * v.NormL2()) << n;
    if (!IsComplexData()) {
      EXPECT_EQ(v.Sum(), sum) << n;
      EXPECT_EQ(v.DotProd(v), squares) << n;
    }
    if (n == 0) continue;
    const TCplx mean = v.Meanc();
    EXPECT_NEAR(mean.Re, 0.5 * (n + 1), 1e-12) << n;
    EXPECT_NEAR(mean.Im, Unit().Im * 0.5 * (n + 1), 1e-12) << n;
    EXPECT_NEAR(v.RMS(), std::sqrt(unit_square * squares / n), 1e-15 * v.RMS()) << n;
  }
}

TEST_P(ReductionsTest, StretchesCountTheirElementsOnly) {
  const TVec v = Counting(20);
  TCplx sum;
  v.Sum(sum, 3, 4);  // 4 + 5 + 6 + 7
  EXPECT_EQ(sum, 22.0 * Unit());
  TCplx product;
  v.Product(product, 1, 3);  // 2 * 3 * 4
  EXPECT_EQ(product, 24.0 * IntPower(Unit(), 3));
  EXPECT_EQ(v.Meanc(16, -1), 18.5 * Unit());
  EXPECT_NEAR(v.RMS(0, 2), std::sqrt((IsComplexData() ? 5 : 1) * 2.5), 1e-15);
  if (IsComplexData()) return;
  EXPECT_EQ(v.Sum(19, 1), 20);
  EXPECT_EQ(v.Product(0, 5), 120);
  EXPECT_EQ(v.Mean(2, 2), 3.5);
  EXPECT_EQ(v.DotProd(v, 2, 0, 3), 3 + 2 * 4 + 3 * 5);
}

TEST_P(ReductionsTest, RefuseWhatHasNoResult) {
  const TVec v = Counting(4);
  const TVec empty = Counting(0);
  using Real = std::function<double(const TVec&)>;
  struct Case {
    const char* name;
    Real of;
    bool of_nothing;
  };
  const Case cases[] = {
      {"Sum", [](const TVec& x) { return x.Sum(); }, true},
      {"Product", [](const TVec& x) { return x.Product(0, -1); }, true},
      {"Mean", [](const TVec& x) { return x.Mean(); }, false},
      {"Max", [](const TVec& x) { return Max(x); }, false},
      {"Min", [](const TVec& x) { return x.Min(); }, false},
  };
  for (const Case& c : cases) {
    const std::string name = c.name;
    if (IsComplexData()) {
      EXPECT_RAISES(c.of(v), ECoreError, (name + ": complex elements").c_str());
    } else if (c.of_nothing) {
      EXPECT_EQ(c.of(empty), name == "Product" ? 1 : 0);
    } else {
      EXPECT_RAISES(c.of(empty), ECoreError, (name + ": no elements").c_str());
    }
  }
  EXPECT_RAISES(v.Meanc(4, -1), ECoreError, "Meanc: no elements");
  EXPECT_RAISES(empty.RMS(), ECoreError, "RMS: no elements");
  EXPECT_RAISES(v.Meanc(3, 2), ECoreError, "Index = 3, Len = 2 is outside a vector of length 4");
  EXPECT_RAISES(v.DotProd(empty), ECoreError, "TVec: the operands have lengths 4 and 0");
  if (IsComplexData()) EXPECT_RAISES(v.DotProd(v), ECoreError, "DotProd: complex elements");
  double value = 3;
  std::int32_t index = 5;
  EXPECT_ANY_THROW(empty.Max(value, index));
  EXPECT_EQ(value, 3);
  EXPECT_EQ(index, 5);
}

TEST(Sums, StayAccurateOverManyTerms) {
  TVec v;
  v.Size(1 << 20, TMtxFloatPrecision::DoubleReal);
  v.SetVal(0.1);
  // 32 additions lie between a term and the sum; one after the other the error is 1e-11 of it.
  EXPECT_NEAR(v.Sum(), 0.1 * (1 << 20), 32 * 0x1p-53 * v.Sum());
  v.SetFloatPrecision(TMtxFloatPrecision::SingleReal);
  EXPECT_EQ(v.Sum(), static_cast<double>(0.1F) * (1 << 20));
}

TEST(Norms, HoldAtTheEndsOfTheRange) {
  struct Case {
    std::vector<double> x;
    double norm;
  };
  const Case cases[] = {
      {{3e300, 4e300}, 5e300},
      {{3e-320, -4e-320}, 5e-320},
      {{0x1.8p-540, 0x1p-539}, 0x1.4p-539},
      {{kLargest, kLargest}, kInf},
      {{kInf, 1}, kInf},
      {{-kInf, kNan}, kNan},
      {{0, -0.0}, 0},
      {{}, 0},
  };
  for (const Case& c : cases) {
    const TVec v(c.x);
    const double norm = v.NormL2();
    EXPECT_TRUE(norm == c.norm || (std::isnan(norm) && std::isnan(c.norm)) ||
                std::abs(norm - c.norm) <= 0x1p-52 * c.norm + 0x1p-1074)
        << v << norm;
  }
  EXPECT_DOUBLE_EQ(TVec({kLargest, kLargest, -kLargest}).RMS(), kLargest);
  EXPECT_DOUBLE_EQ((TVec{TCplx(3e200, -4e200)}.RMS()), 5e200);
}

TEST(Means, DoNotOverflowInBetween) {
  EXPECT_EQ(TVec({kLargest, kLargest, kLargest, kLargest}).Mean(), kLargest);
  EXPECT_EQ((TVec{TCplx(1, -kLargest), TCplx(3, -kLargest)}.Meanc()), Cplx(2, -kLargest));
  EXPECT_EQ(TVec({1, kInf}).Mean(), kInf);
  EXPECT_TRUE(std::isnan(TVec({-kInf, kInf}).Mean()));
}

TEST(Products, KeepTheirExponentApart) {
  EXPECT_EQ(TVec({0x1p600, 0x1p600, 0x1p-600, 0x1p-599}).Product(), 2);
  EXPECT_EQ(TVec({0x1.8p-600, 0x1p-600, 0x1p600, 0x1p600}).Product(), 1.5);
  EXPECT_EQ(TVec({0x1p-1074, 0x1p1000, 3}).Product(), 3 * 0x1p-74);
  EXPECT_EQ(TVec({1e300, 1e300, 0}).Product(), 0);
  EXPECT_EQ(TVec({-1e300, 1e300}).Product(), -kInf);
  EXPECT_TRUE(std::isnan(TVec({kInf, 0}).Product()));
  TCplx product;
  TVec{TCplx(0, 0x1p700), TCplx(0, 0x1p700), TCplx(0x1p-1000, 0)}.Product(product);
  EXPECT_EQ(product, Cplx(-0x1p400));
}

TEST_P(ReductionsTest, ExtremesSkipNanAndNameTheFirstPlace) {
  if (IsComplexData()) return;
  struct Case {
    std::vector<double> x;
    double max;
    std::int32_t max_at;
    double min;
    std::int32_t min_at;
  };
  const Case cases[] = {
      {{2}, 2, 0, 2, 0},
      {{1, 3, -2, 3, -2}, 3, 1, -2, 2},
      {{kNan, 1, kNan, 0.5}, 1, 1, 0.5, 3},
      {{kNan, kNan}, kNan, 0, kNan, 0},
      {{kNan, -kInf}, -kInf, 1, -kInf, 1},
      {{kInf, -kInf, 0}, kInf, 0, -kInf, 1},
      {{0, 0, 0, 0, 0, 0, 0, 0, 0, 7, 0, 0, -7, 0, 0, 0, 7, -7, 0}, 7, 9, -7, 12},
      {{kNan, 0, 0, 0, 0, 0, 0, 0, kNan, 5, kNan, 0, 0, 0, 0, kNan, 9}, 9, 16, 0, 1},
  };
  for (const Case& c : cases) {
    TVec v(c.x);
    v.SetFloatPrecision(GetParam());
    double value = 0;
    std::int32_t index = -1;
    v.Max(value, index);
    EXPECT_TRUE(value == c.max || (std::isnan(value) && std::isnan(c.max))) << v;
    EXPECT_EQ(index, c.max_at) << v;
    v.Min(value, index);
    EXPECT_TRUE(value == c.min || (std::isnan(value) && std::isnan(c.min))) << v;
    EXPECT_EQ(index, c.min_at) << v;
  }
}

}  // namespace
}  // namespace passband
