// Element-wise arithmetic against complex arithmetic on small integers, which is exact in every precision.
#include <algorithm>
#include <complex>
#include <functional>
#include <limits>

#include "passband/foundation/text.h"
#include "passband/vector_core/pool.h"
#include "tests/test_support.h"

namespace passband {
namespace {

using test::At;
using test::SameBits;
using test::Slice;
using Number = std::complex<double>;

constexpr double kInf = std::numeric_limits<double>::infinity();

class ArithmeticTest : public testing::TestWithParam<TMtxFloatPrecision> {
 protected:
  // Small integers with a pattern of their own for each `seed`; divisors are among 1, 2, 1 + j, ... with exact
  // quotients.
  static TVec Integers(std::int32_t length, std::int32_t seed) {
    TVec v;
    v.Size(length, GetParam());
    for (std::int32_t i = 0; i < length; ++i) test::Put(v, i, Cplx((7 * i + seed) % 11 - 5, (3 * i + seed) % 5 - 2));
    return v;
  }
  static TVec Divisors(std::int32_t length) {
    const std::array values{Cplx(1, 1), Cplx(2, 0), Cplx(-4, 4), Cplx(-1, 0), Cplx(2, -2)};
    TVec v;
    v.Size(length, GetParam());
    for (std::int32_t i = 0; i < length; ++i) test::Put(v, i, values[static_cast<std::size_t>(i) % values.size()]);
    return v;
  }
};

INSTANTIATE_TEST_SUITE_P(All, ArithmeticTest, testing::ValuesIn(test::kPrecisions),
                         [](const auto& suite) { return test::Name(suite.param); });

struct Operation {
  const char* name;
  std::function<Number(Number, Number)> expected;
  std::function<void(TVec&, const TVec&)> one;
  std::function<void(TVec&, const TVec&, const TVec&)> two;
  std::function<void(TVec&, const TVec&, std::int32_t, std::int32_t, std::int32_t)> ranged_one;
  std::function<void(TVec&, const TVec&, const TVec&, std::int32_t, std::int32_t, std::int32_t, std::int32_t)>
      ranged_two;
};

std::vector<Operation> Operations() {
  using I = std::int32_t;
  return {
      {"Add", std::plus<>(), [](TVec& v, const TVec& b) { v.Add(b); },
       [](TVec& v, const TVec& a, const TVec& b) { v.Add(a, b); },
       [](TVec& v, const TVec& b, I bi, I i, I n) { v.Add(b, bi, i, n); },
       [](TVec& v, const TVec& a, const TVec& b, I ai, I bi, I i, I n) { v.Add(a, b, ai, bi, i, n); }},
      {"Sub", std::minus<>(), [](TVec& v, const TVec& b) { v.Sub(b); },
       [](TVec& v, const TVec& a, const TVec& b) { v.Sub(a, b); },
       [](TVec& v, const TVec& b, I bi, I i, I n) { v.Sub(b, bi, i, n); },
       [](TVec& v, const TVec& a, const TVec& b, I ai, I bi, I i, I n) { v.Sub(a, b, ai, bi, i, n); }},
      {"Mul", std::multiplies<>(), [](TVec& v, const TVec& b) { v.Mul(b); },
       [](TVec& v, const TVec& a, const TVec& b) { v.Mul(a, b); },
       [](TVec& v, const TVec& b, I bi, I i, I n) { v.Mul(b, bi, i, n); },
       [](TVec& v, const TVec& a, const TVec& b, I ai, I bi, I i, I n) { v.Mul(a, b, ai, bi, i, n); }},
      {"Divide", std::divides<>(), [](TVec& v, const TVec& b) { v.Divide(b); },
       [](TVec& v, const TVec& a, const TVec& b) { v.Divide(a, b); },
       [](TVec& v, const TVec& b, I bi, I i, I n) { v.Divide(b, bi, i, n); },
       [](TVec& v, const TVec& a, const TVec& b, I ai, I bi, I i, I n) { v.Divide(a, b, ai, bi, i, n); }},
      {"ConjMul", [](Number a, Number b) { return a * std::conj(b); }, [](TVec& v, const TVec& b) { v.ConjMul(b); },
       nullptr, [](TVec& v, const TVec& b, I bi, I i, I n) { v.ConjMul(b, bi, i, n); }, nullptr},
      {"AddScaled", [](Number a, Number b) { return a + 0.5 * b; }, [](TVec& v, const TVec& b) { v.AddScaled(b, 0.5); },
       nullptr, nullptr, nullptr},
  };
}

void ExpectElement(const TVec& v, std::int32_t i, Number expected) {
  EXPECT_EQ(Number(At(v, i)), expected) << "element " << i;
}

TEST_P(ArithmeticTest, WholeFormsAreComplexArithmetic) {
  for (const Operation& op : Operations()) {
    SCOPED_TRACE(op.name);
    for (const std::int32_t n : {0, 1, 2, 7, 8, 33}) {
      const TVec a = Integers(n, 1);
      const TVec b = Divisors(n);
      TVec in_place = a;
      op.one(in_place, b);
      for (std::int32_t i = 0; i < n; ++i) ExpectElement(in_place, i, op.expected(Number(At(a, i)), Number(At(b, i))));
      if (!op.two) continue;
      TVec two{1.0};
      op.two(two, a, b);
      EXPECT_TRUE(SameBits(two, in_place));
      TVec second = b;  // the object as the second operand
      op.two(second, a, second);
      EXPECT_TRUE(SameBits(second, in_place));
    }
  }
}

TEST_P(ArithmeticTest, RangedFormsTouchTheirStretchOnly) {
  for (const Operation& op : Operations()) {
    SCOPED_TRACE(op.name);
    const TVec a = Integers(20, 1);
    const TVec b = Divisors(20);
    const TVec before = Integers(20, 4);
    if (op.ranged_one) {
      TVec v = before;
      op.ranged_one(v, b, 3, 5, -1);  // as much as both hold: 15
      for (std::int32_t i = 0; i < 20; ++i) {
        const Number own(At(before, i));
        ExpectElement(v, i, i < 5 ? own : op.expected(own, Number(At(b, i - 2))));
      }
    }
    if (op.ranged_two) {
      TVec v = before;
      op.ranged_two(v, a, b, 2, 3, 5, 9);
      for (std::int32_t i = 0; i < 20; ++i) {
        const bool inside = i >= 5 && i < 14;
        ExpectElement(v, i, inside ? op.expected(Number(At(a, i - 3)), Number(At(b, i - 2))) : Number(At(before, i)));
      }
    }
  }
}

TEST_P(ArithmeticTest, OverlappingOperandsAreReadFirst) {
  constexpr std::int32_t kLen = 37;
  for (const Operation& op : Operations()) {
    SCOPED_TRACE(op.name);
    for (const std::int32_t from : {0, 1, 3, 8}) {
      for (const std::int32_t to : {0, 1, 3, 8}) {
        const TVec before = Divisors(kLen + 8);
        const TVec operand = Slice(before, from, kLen);
        TVec expected = Slice(before, to, kLen);
        op.one(expected, operand);
        if (op.ranged_one) {
          TVec v = before;
          op.ranged_one(v, v, from, to, kLen);
          EXPECT_TRUE(SameBits(Slice(v, to, kLen), expected)) << from << " to " << to;
        }
        TVec memory = before;  // the same by two views of one memory
        TVec x;
        TVec y;
        x.SetSubRange(memory, from, kLen);
        y.SetSubRange(memory, to, kLen);
        op.one(y, x);
        EXPECT_TRUE(SameBits(Slice(memory, to, kLen), expected)) << from << " to " << to << " by views";
      }
    }
  }
}

TEST_P(ArithmeticTest, ConstantsActOnTheirStretch) {
  using Apply = std::function<void(TVec&)>;
  using Expected = std::function<Number(Number)>;
  struct Case {
    const char* name;
    Apply apply;
    Expected expected;
  };
  const TVec other = Integers(12, 6);
  const Case cases[] = {
      {"SetVal", [](TVec& v) { v.SetVal(3, 2, 9); }, [](Number) { return 3; }},
      {"SetZero", [](TVec& v) { v.SetZero(2, 9); }, [](Number) { return 0; }},
      {"Offset", [](TVec& v) { v.Offset(3, 2, 9); }, [](Number x) { return x + 3.0; }},
      {"Scale", [](TVec& v) { v.Scale(-0.5, 2, 9); }, [](Number x) { return -0.5 * x; }},
      {"a complex value without imaginary part", [](TVec& v) { v.Scale(Cplx(2), 2, 9); },
       [](Number x) { return 2.0 * x; }},
      {"Add", [&](TVec& v) { v.Add(v, 4.0, 2, 2, 9); }, [](Number x) { return x + 4.0; }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const TVec before = Integers(13, 2);
    TVec v = before;
    c.apply(v);
    for (std::int32_t i = 0; i < 13; ++i) {
      const Number own(At(before, i));
      ExpectElement(v, i, i >= 2 && i < 11 ? c.expected(own) : own);
    }
  }
  TVec v = Integers(9, 2);
  v.SubFrom(2, other);
  ASSERT_EQ(v.Length(), 12);
  TVec in_place = other;
  in_place.SubFrom(2);
  EXPECT_TRUE(SameBits(v, in_place));
  TVec product;
  product.Mul(other, 0.25);
  for (std::int32_t i = 0; i < 12; ++i) {
    ExpectElement(v, i, 2.0 - Number(At(other, i)));
    ExpectElement(product, i, 0.25 * Number(At(other, i)));
  }
}

TEST_P(ArithmeticTest, ComplexConstantsNeedComplexElements) {
  const TVec before = Integers(9, 2);
  const Number j(0, 1);
  if (before.Complex()) {
    TVec v = before;
    v.Scale(Cplx(0, 1));
    v.Offset(Cplx(1, 2), 4, 3);
    v.SetVal(Cplx(5, 6), 7, 1);
    v.Add(before, Cplx(0, -3), 0, 8, 1);
    for (std::int32_t i = 0; i < 7; ++i) ExpectElement(v, i, j * Number(At(before, i)) + (i < 4 ? 0.0 : Number(1, 2)));
    ExpectElement(v, 7, {5, 6});
    ExpectElement(v, 8, Number(At(before, 0)) - 3.0 * j);
    return;
  }
  constexpr const char* kText = "a complex value on real elements";
  const TCplx nan_imaginary(1, std::numeric_limits<double>::quiet_NaN());
  TVec v = before;
  EXPECT_RAISES(v.SetVal(Cplx(1, 1)), ECoreError, kText);
  EXPECT_RAISES(v.Offset(Cplx(1, 1), 0, 2), ECoreError, kText);
  EXPECT_RAISES(v.Scale(nan_imaginary), ECoreError, kText);
  EXPECT_RAISES(v.Add(before, Cplx(0, 1), 0, 0, 2), ECoreError, kText);
  EXPECT_RAISES(v.Ramp(Cplx(0), Cplx(0, 1)), ECoreError, kText);
  EXPECT_TRUE(SameBits(v, before));
}

TEST_P(ArithmeticTest, RealFactorsScaleComplexElements) {
  const TVec before = Integers(11, 3);
  TVec factors;
  factors.Size(11, false, before.IsDouble());
  factors.Ramp(-2, 0.5);
  TVec v = before;
  v.Mul(factors);
  TVec ranged = before;
  ranged.Mul(factors, 4, 1, 6);
  for (std::int32_t i = 0; i < 11; ++i) {
    const Number own(At(before, i));
    ExpectElement(v, i, own * factors[i]);
    ExpectElement(ranged, i, i >= 1 && i < 7 ? own * factors[i + 3] : own);
  }
  if (!before.Complex()) return;
  TVec poles = before;  // an infinite or NaN part stays in its part: no cross products with a real factor
  test::Put(poles, 0, Cplx(kInf, 1));
  poles.Mul(factors);
  EXPECT_EQ(Number(At(poles, 0)), Number(-kInf, -2));
}

TEST_P(ArithmeticTest, RefusedCallsChangeNothing) {
  const TVec before = Integers(10, 1);
  TVec v = before;
  const TVec shorter = Integers(9, 1);
  TVec other_precision = before;
  other_precision.SetFloatPrecision(MakePrecision(before.Complex(), !before.IsDouble()));
  TVec complex_flipped = before;
  complex_flipped.SetFloatPrecision(MakePrecision(!before.Complex(), before.IsDouble()));
  constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
  const std::int64_t borrowed = PoolStatistics().Borrowed;

  EXPECT_RAISES(v.Add(shorter), ECoreError, "TVec: the operands have lengths 10 and 9");
  EXPECT_RAISES(v.Sub(before, shorter), ECoreError, "TVec: the operands have lengths 10 and 9");
  EXPECT_RAISES(v.Mul(shorter), ECoreError, "TVec: the operands have lengths 10 and 9");
  const std::string precisions = "the operands have precisions " + PrecisionToStr(v.FloatPrecision()) + " and ";
  const std::string flipped = precisions + PrecisionToStr(complex_flipped.FloatPrecision());
  EXPECT_RAISES(v.Divide(other_precision), ECoreError,
                (precisions + PrecisionToStr(other_precision.FloatPrecision())).c_str());
  EXPECT_RAISES(v.Add(complex_flipped, 0, 0, 3), ECoreError, flipped.c_str());
  if (!v.Complex()) EXPECT_RAISES(v.Mul(complex_flipped), ECoreError, flipped.c_str());
  EXPECT_RAISES(v.Add(before, 3, 0, 8), ECoreError, "Index = 3, Len = 8 is outside a vector of length 10");
  EXPECT_RAISES(v.Sub(before, 0, kMost, 1), ECoreError, "Index = 2147483647, Len = 1 is outside a vector of length 10");
  EXPECT_RAISES(v.Mul(before, before, 0, 0, kMost, kMost), ECoreError,
                "Index = 0, Len = 2147483647 is outside a vector of length 10");
  EXPECT_RAISES(v.Offset(1, kLeast, 2), ECoreError, "Index = -2147483648, Len = 2 is outside a vector of length 10");
  EXPECT_RAISES(v.Scale(1, 2, -2), ECoreError, "Index = 2, Len = -2 is outside a vector of length 10");
  EXPECT_RAISES(v.SetZero(11, -1), ECoreError, "Index = 11, Len = -1 is outside a vector of length 10");
  EXPECT_TRUE(SameBits(v, before));
  EXPECT_EQ(PoolStatistics().Borrowed, borrowed);
}

TEST(ComplexDivision, HoldsAtTheEndsOfTheRange) {
  struct Case {
    TCplx a, b, quotient;
  };
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Case cases[] = {
      {{3e300, 4e300}, {1e300, 0}, {3, 4}},
      {{1, 1}, {0x1p-1060, 0x1p-1060}, {kInf, 0}},
      {{0x1p-1000, 0}, {0x1p-1000, 0x1p-1000}, {0.5, -0.5}},
      {{0x1p1000, 0x1p1000}, {0x1p1000, 0x1p1000}, {1, 0}},
      {{0, 0}, {3, 4}, {0, 0}},
      {{1, 0}, {0, 0}, {kInf, nan}},
  };
  for (const Case& c : cases) {
    TVec a{c.a};
    a.Divide(TVec{c.b});
    EXPECT_TRUE(SameBits(a, TVec{c.quotient})) << c.a << " / " << c.b << " = " << a;
  }
  TVec single(std::vector<TSCplx>{{3e38F, 1e38F}});
  single.Divide(TVec(std::vector<TSCplx>{{1e38F, 3e38F}}));
  EXPECT_NEAR(single.SCValues()[0].Re, 0.6, 1e-7);
  EXPECT_NEAR(single.SCValues()[0].Im, -0.8, 1e-7);
}

TEST(MatrixArithmetic, WorksElementByElementAndNamesShapes) {
  const TMtx a(2, 2, {1, 2, 3, 4});
  const TMtx b(2, 2, {5, 6, 7, 8});
  TMtx m;
  m.Add(a, b);
  m.Mul(b);
  EXPECT_EQ(m.Rows(), 2);
  EXPECT_TRUE(std::ranges::equal(m.Values(), std::array{30.0, 48.0, 70.0, 96.0}));
  EXPECT_RAISES(m.Sub(TMtx(1, 4, {1, 2, 3, 4})), ECoreError, "TMtx: the operands have shapes 2 x 2 and 1 x 4");
}

}  // namespace
}  // namespace passband
