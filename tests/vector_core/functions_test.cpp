// Functions of every element against closed forms and the extended precision mathematics of the C++ library.
#include <complex>
#include <functional>
#include <limits>
#include <numbers>

#include "passband/vector_core/pool.h"
#include "tests/test_support.h"

namespace passband {
namespace {

using test::At;
using test::SameBits;
using Wide = std::complex<long double>;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kPi = std::numbers::pi;

class FunctionsTest : public testing::TestWithParam<TMtxFloatPrecision> {
 protected:
  static TVec Of(const std::vector<TCplx>& values) {
    TVec v;
    v.Size(static_cast<std::int32_t>(values.size()), GetParam());
    for (std::int32_t i = 0; i < v.Length(); ++i) test::Put(v, i, values[static_cast<std::size_t>(i)]);
    return v;
  }
  static bool IsComplexData() { return IsComplexPrecision(GetParam()); }
  static TMtxFloatPrecision RealPrecision() { return MakePrecision(false, IsDoublePrecision(GetParam())); }
  static TMtxFloatPrecision ComplexPrecision() { return MakePrecision(true, IsDoublePrecision(GetParam())); }
};

INSTANTIATE_TEST_SUITE_P(All, FunctionsTest, testing::ValuesIn(test::kPrecisions),
                         [](const auto& suite) { return test::Name(suite.param); });

enum class Result { Same, Real, Complex };

struct Function {
  const char* name;
  void (TDense::*of)(const TDense&);
  void (TDense::*in_place)();
  Wide (*expected)(Wide);
  Result result = Result::Same;
  const char* refusal = nullptr;  // of complex elements
};

const Function kFunctions[] = {
    {"MulI", &TDense::MulI, &TDense::MulI, [](Wide x) { return Wide(-x.imag(), x.real()); }, Result::Complex},
    {"Sign", &TDense::Sign, &TDense::Sign, [](Wide x) { return -x; }},
    {"Conj", &TDense::Conj, &TDense::Conj, [](Wide x) { return std::conj(x); }},
    {"Abs", &TDense::Abs, &TDense::Abs, [](Wide x) { return Wide(std::abs(x)); }, Result::Real},
    {"Mag", &TDense::Mag, &TDense::Mag, [](Wide x) { return Wide(std::abs(x)); }, Result::Real},
    {"PowerSpectrum", &TDense::PowerSpectrum, nullptr, [](Wide x) { return Wide(std::norm(x)); }, Result::Real},
    {"RealPart", &TDense::RealPart, nullptr, [](Wide x) { return Wide(x.real()); }, Result::Real},
    {"Sqr", &TDense::Sqr, &TDense::Sqr, [](Wide x) { return x * x; }},
    {"Sqrt", &TDense::Sqrt, &TDense::Sqrt, [](Wide x) { return std::sqrt(x); }},
    {"Inv", &TDense::Inv, &TDense::Inv, [](Wide x) { return 1.0L / x; }},
    {"Exp", &TDense::Exp, &TDense::Exp, [](Wide x) { return std::exp(x); }},
    {"Exp10", &TDense::Exp10, &TDense::Exp10, [](Wide x) { return std::exp(x * std::numbers::ln10_v<long double>); }},
    {"Ln", &TDense::Ln, &TDense::Ln, [](Wide x) { return std::log(x); }},
    {"Cos", &TDense::Cos, &TDense::Cos, [](Wide x) { return std::cos(x); }, Result::Same, "Cos: complex elements"},
    {"Expj", &TDense::Expj, &TDense::Expj, [](Wide x) { return std::exp(Wide(0, 1) * x); }, Result::Complex,
     "Expj: complex elements"},
};

TEST_P(FunctionsTest, AgreeWithExtendedPrecision) {
  for (const Function& f : kFunctions) {
    SCOPED_TRACE(f.name);
    TVec x = test::Noise(100, GetParam(), 1);
    x.Scale(4);
    if (!IsComplexData()) x.Abs();  // roots and logarithms of negative numbers have a test of their own
    if (f.refusal != nullptr && IsComplexData()) {
      const TVec before = x;
      EXPECT_RAISES((x.*f.of)(before), ECoreError, f.refusal);
      EXPECT_RAISES((x.*f.in_place)(), ECoreError, f.refusal);
      EXPECT_TRUE(SameBits(x, before));
      continue;
    }
    TVec y{1, 2, 3};
    (y.*f.of)(x);
    ASSERT_EQ(y.Length(), x.Length());
    const bool complex = f.result == Result::Complex || (f.result == Result::Same && IsComplexData());
    EXPECT_EQ(y.FloatPrecision(), complex ? ComplexPrecision() : RealPrecision());
    for (std::int32_t i = 0; i < x.Length(); ++i) {
      const TCplx element = At(x, i);
      const Wide expected = f.expected(Wide(element.Re, element.Im));
      const TCplx got = At(y, i);
      const auto error = static_cast<double>(std::abs(Wide(got.Re, got.Im) - expected));
      // Condition: an error of eps/2 in z ln 10, |z| < 6, is the worst; |1/x| and ln x near 1 are errors of the result.
      const double scale = std::max(static_cast<double>(std::abs(expected)), std::string(f.name) == "Ln" ? 1.0 : 0.0);
      EXPECT_LE(error, (std::string(f.name) == "Exp10" ? 16 : 2) * test::Epsilon(GetParam()) * scale) << i;
    }
    if (f.in_place == nullptr) continue;
    TVec in_place = x;
    std::int32_t notified = 0;
    in_place.setOnSetSize([&] { ++notified; });
    (in_place.*f.in_place)();
    EXPECT_TRUE(SameBits(in_place, y));
    EXPECT_EQ(notified, complex != IsComplexData() ? 1 : 0);
    TVec empty;
    empty.Size(0, GetParam());
    (empty.*f.in_place)();
    EXPECT_EQ(empty.FloatPrecision(), y.FloatPrecision());
  }
}

TEST_P(FunctionsTest, ViewsOfTheResultAreReadFirst) {
  for (const Function& f : kFunctions) {
    if (f.refusal != nullptr && IsComplexData()) continue;
    SCOPED_TRACE(f.name);
    for (const std::int32_t from : {0, 1, 5}) {
      TVec memory = test::Noise(40, GetParam(), 2);
      TVec expected;
      (expected.*f.of)(test::Slice(memory, from, 33));
      TVec src;
      src.SetSubRange(memory, from, 33);
      TVec dst;
      dst.SetSubRange(memory, 2, 33);
      (dst.*f.of)(src);
      EXPECT_TRUE(SameBits(dst, expected)) << from;
      if (f.result == Result::Same) {
        EXPECT_TRUE(SameBits(test::Slice(memory, 2, 33), expected)) << from;
      }
    }
  }
}

TEST_P(FunctionsTest, PrincipalValuesOfComplexElementsAndNanOfReal) {
  const TVec x = Of({{-4, 0}, {-1, 0}});
  TVec root;
  root.Sqrt(x);
  TVec ln;
  ln.Ln(x);
  TVec log8;
  log8.LogN(8, x);
  for (std::int32_t i = 0; i < 2; ++i) {
    EXPECT_EQ(std::isnan(At(root, i).Re), !IsComplexData());
    EXPECT_EQ(std::isnan(At(ln, i).Re), !IsComplexData());
    EXPECT_EQ(std::isnan(At(log8, i).Re), !IsComplexData());
  }
  if (!IsComplexData()) return;
  EXPECT_EQ(At(root, 0), Cplx(0, 2));
  EXPECT_NEAR(At(ln, 1).Im, kPi, test::Epsilon(GetParam()) * 4);
  EXPECT_NEAR(At(log8, 0).Re, 2.0 / 3, test::Epsilon(GetParam()));
  EXPECT_NEAR(At(log8, 0).Im, kPi / std::log(8), test::Epsilon(GetParam()) * 4);
}

TEST_P(FunctionsTest, PowersOfTheBaseAreExact) {
  const std::int32_t largest = IsDoublePrecision(GetParam()) ? 22 : 10;  // 10^n is a float or a double
  TVec tens;
  tens.Size(largest + 1, GetParam());
  tens.Ramp(0, 1);
  const TVec exponents = tens;
  tens.Exp10();
  double ten_to_i = 1;
  for (std::int32_t i = 0; i <= largest; ++i, ten_to_i *= 10) EXPECT_EQ(At(tens, i), Cplx(ten_to_i));
  if (IsComplexData()) return;
  tens.LogN(10);
  EXPECT_TRUE(SameBits(tens, exponents));
  TVec twos = Of({{0.125, 0}, {1, 0}, {1024, 0}});
  twos.LogN(2);
  EXPECT_TRUE(SameBits(twos, Of({{-3, 0}, {0, 0}, {10, 0}})));
}

TEST_P(FunctionsTest, SpecialValues) {
  struct Case {
    void (TDense::*of)(const TDense&);
    double x, expected;
  };
  const Case cases[] = {{&TDense::Sqrt, kInf, kInf},  {&TDense::Ln, 0, -kInf},     {&TDense::Exp, -kInf, 0},
                        {&TDense::Exp10, kInf, kInf}, {&TDense::Abs, -kInf, kInf}, {&TDense::Sqr, -0.0, 0.0},
                        {&TDense::Inv, kInf, 0},      {&TDense::Exp, kNan, kNan},  {&TDense::Abs, kNan, kNan}};
  for (const Case& c : cases) {
    if (IsComplexData()) continue;
    TVec y;
    (y.*c.of)(Of({{c.x, 0}}));
    EXPECT_TRUE(SameBits(y, Of({{c.expected, 0}}))) << y << " of " << c.x;
  }
  const double huge = IsDoublePrecision(GetParam()) ? 0x1p1020 : 0x1p124;
  const double tiny = IsDoublePrecision(GetParam()) ? 0x1p-1060 : 0x1p-140;
  TVec magnitudes = Of({{3 * huge, 4 * huge}, {3 * tiny, -4 * tiny}, {kInf, kNan}, {0, 0}});
  magnitudes.Abs();
  if (IsComplexData()) {
    magnitudes.ExtendToComplex();
    EXPECT_TRUE(SameBits(magnitudes, Of({{5 * huge, 0}, {5 * tiny, 0}, {kInf, 0}, {0, 0}}))) << magnitudes;
  }
}

TEST_P(FunctionsTest, ThreshBottomKeepsNanAndRefusesComplex) {
  TVec v = Of({{-1, 0}, {0.5, 0}, {kNan, 0}, {-kInf, 0}, {kInf, 0}});
  const TVec before = v;
  if (IsComplexData()) {
    EXPECT_RAISES(v.ThreshBottom(0), ECoreError, "ThreshBottom: complex elements");
    EXPECT_TRUE(SameBits(v, before));
    return;
  }
  v.ThreshBottom(kNan);
  EXPECT_TRUE(SameBits(v, before));
  v.ThreshBottom(0.25);
  EXPECT_TRUE(SameBits(v, Of({{0.25, 0}, {0.5, 0}, {kNan, 0}, {0.25, 0}, {kInf, 0}})));
}

TEST_P(FunctionsTest, ReplaceFindsValuesNanAndInfinities) {
  struct Case {
    double value, tolerance;
    std::vector<std::int32_t> replaced;
    std::vector<std::int32_t> replaced_complex;
  };
  const TVec before = Of({{0.1, 0}, {0.35, 0}, {kNan, 1}, {kInf, 2}, {-kInf, 0}, {1, kInf}, {1, kNan}, {0.1, 0.5}});
  const Case cases[] = {
      {0.1, 0, {0, 7}, {0}},       {0.1, 0.5, {0, 1, 7}, {0, 1, 7}},
      {kNan, 0.0001, {2}, {2, 6}}, {kInf, 0.0001, {3}, {3, 5}},
      {-kInf, kInf, {4}, {4}},     {0.1, -1, {}, {}},
      {1e300, 0, {}, {}},          {0.1, kNan, {}, {}},
  };
  for (const Case& c : cases) {
    TVec v = before;
    v.Replace(c.value, 7, c.tolerance);
    TVec expected = before;
    for (const std::int32_t i : IsComplexData() ? c.replaced_complex : c.replaced) test::Put(expected, i, Cplx(7));
    EXPECT_TRUE(SameBits(v, expected)) << c.value << " +- " << c.tolerance << ": " << v;
  }
}

TEST_P(FunctionsTest, PartsSplitAndJoin) {
  TVec z = test::Noise(33, ComplexPrecision(), 3);
  const TVec before = z;
  TVec re;
  TVec im;
  z.CplxToReal(re, im);
  EXPECT_EQ(re.FloatPrecision(), RealPrecision());
  for (std::int32_t i = 0; i < 33; ++i) EXPECT_EQ(Cplx(re[i], im[i]), At(before, i));
  TVec first = before;
  TVec second = before;
  first.CplxToReal(first, im);
  EXPECT_TRUE(SameBits(first, re));
  second.CplxToReal(re, second);
  EXPECT_TRUE(SameBits(second, im));
  second.RealToCplx(re, second);
  EXPECT_TRUE(SameBits(second, before));

  EXPECT_RAISES(z.CplxToReal(re, re), ECoreError, "the results are the same object");
  EXPECT_RAISES(re.CplxToReal(z, im), ECoreError, "CplxToReal: the elements are real");
  EXPECT_RAISES(re.CartToPolar(z, im), ECoreError, "CartToPolar: the elements are real");
  EXPECT_RAISES(re.RealToCplx(z, im), ECoreError, "RealToCplx: complex elements");
  EXPECT_RAISES(z.RealToCplx(re, TVec{1.0}), ECoreError, "TVec: the operands have lengths 33 and 1");
  EXPECT_TRUE(SameBits(z, before));

  TVec x = Of({{-3, 4}, {2, 0}});
  x.ExtendToComplex(false);
  EXPECT_EQ(x.FloatPrecision(), ComplexPrecision());
  EXPECT_EQ(At(x, 0), Cplx(-3, IsComplexData() ? 4 : 0));
}

TEST_P(FunctionsTest, PolarForm) {
  TVec z;
  z.Size(4, ComplexPrecision());
  const TCplx values[] = {{-2, 0}, {0, -3}, {3, 4}, {0, 0}};
  for (std::int32_t i = 0; i < 4; ++i) test::Put(z, i, values[i]);
  TVec phase;
  z.CartToPolar(z, phase);
  const double amplitudes[] = {2, 3, 5, 0};
  const double phases[] = {kPi, -kPi / 2, std::atan(4.0 / 3), 0};
  for (std::int32_t i = 0; i < 4; ++i) {
    EXPECT_EQ(z[i], amplitudes[i]);
    EXPECT_NEAR(phase[i], phases[i], 2 * test::Epsilon(GetParam()));
  }
}

TEST(MatrixFunctions, KeepTheShape) {
  TMtx m(2, 3, {1, 4, 9, 16, 25, 36});
  m.Sqrt();
  m.MulI();
  ASSERT_EQ(m.Rows(), 2);
  ASSERT_EQ(m.Cols(), 3);
  EXPECT_EQ(m.CValues(1, 2), Cplx(0, 6));
  TMtx im;
  m.CplxToReal(m, im);
  EXPECT_EQ(im.Rows(), 2);
  EXPECT_EQ(im(1, 1), 5);
  EXPECT_EQ(m(1, 1), 0);
}

}  // namespace
}  // namespace passband
