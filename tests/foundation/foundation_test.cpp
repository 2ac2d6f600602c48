#include "passband/foundation/foundation.h"

#include <gtest/gtest.h>

#include <limits>

namespace passband {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr std::int32_t kHigh = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLow = std::numeric_limits<std::int32_t>::min();

TEST(Enumerations, TypeInformationIsComplete) {
  const auto all = PublishedEnums();
  ASSERT_EQ(all.size(), 14U);
  EXPECT_EQ(all[0].TypeName, "TFilterType");
  EXPECT_EQ(all[0].UnitName, "SignalUtils");
  EXPECT_EQ(all[0].ValueNames.size(), 14U);
  EXPECT_EQ(all[0].ValueNames[4], "ftHilbertIII");
  EXPECT_EQ(EnumInfo<SignalUtils::TSignalWindowType>().ValueNames[8], "wtCosineTappered");
  EXPECT_EQ(EnumInfo<OptimalFir::TRemezType>().UnitName, "OptimalFir");
  EXPECT_EQ(EnumInfo<IIRFilters::TIirFrequencyTransform>().ValueNames[2], "ftZeroPoleDiscrete");
  EXPECT_EQ(&EnumInfo<IIRFilters::TIirFrequencyTransform>(), &all[13]);
}

TEST(Enumerations, DisplayNamesEndWhereTheListsEnd) {
  using namespace SignalUtils;
  EXPECT_EQ(SignalWindowToString(TSignalWindowType::wtRectangular), "Rectangular");
  EXPECT_EQ(SignalWindowToString(TSignalWindowType::wtCosineTappered), "Cosine tappered");
  EXPECT_EQ(SignalWindowToString(TSignalWindowType::wtExponent), "Exponent down");
  EXPECT_EQ(SignalWindowToString(static_cast<TSignalWindowType>(12)), "");
  EXPECT_EQ(SpectrumTypeToString(TSpectrumType::spComplex), "Complex");
  EXPECT_EQ(SpectrumTypeToString(static_cast<TSpectrumType>(255)), "");
  EXPECT_EQ(IIRFilters::IirFilterMethodToString(IIRFilters::TIirFilterMethod::fimBessel), "Bessel filter");
  for (std::size_t i = 0; i < EnumInfo<TSignalWindowType>().ValueNames.size(); ++i) {
    EXPECT_NE(SignalWindowToString(static_cast<TSignalWindowType>(i)), "");
  }
}

TEST(Exceptions, CarryTheirText) {
  try {
    ERaise("Taps.Length = 0");
  } catch (const Exception& raised) {
    EXPECT_EQ(raised.Message(), "Taps.Length = 0");
    EXPECT_STREQ(raised.what(), "Taps.Length = 0");
  }
  EXPECT_THROW(throw ELatticaInvalidArgument("x"), Exception);
}

TEST(Complex, DivisionNeitherOverflowsNorUnderflowsOnTheWay) {
  EXPECT_EQ(CDiv(TCplx(1e300, 1e300), TCplx(1e300, 1e300)), TCplx(1, 0));
  EXPECT_EQ(CDiv(TCplx(4e-310, 0), TCplx(0, 2e-310)), TCplx(0, -2));
  EXPECT_EQ(CDiv(2.0, TCplx(1, 1)), TCplx(1, -1));
  EXPECT_EQ(CInv(TCplx(0, 0x1p-1000)), TCplx(0, -0x1p1000));
  EXPECT_TRUE(std::isinf(CDiv(TCplx(1, 0), TCplx()).Re));
  EXPECT_EQ(CDiv(TCplx(1, 2), TCplx(kInf, 0)), TCplx(0, 0));
  EXPECT_EQ(CDiv(TSCplx(3e38F, 0), TSCplx(3e38F, 0)), TSCplx(1, 0));
}

TEST(Complex, PowersAndRoots) {
  EXPECT_EQ(IntPower(TCplx(0, 1), 3), TCplx(0, -1));
  EXPECT_EQ(IntPower(TCplx(0, 2), -2), TCplx(-0.25, 0));
  EXPECT_EQ(IntPower(TCplx(), 0), TCplx(1, 0));
  EXPECT_EQ(IntPower(TCplx(1, 0), kLow), TCplx(1, 0));
  EXPECT_EQ(CSqrt(TCplx(-4, 0)), TCplx(0, 2));
  EXPECT_EQ(CSqr(TCplx(3, 4)), TCplx(-7, 24));
  EXPECT_DOUBLE_EQ(CAbs(TCplx(3e200, 4e200)), 5e200);
  EXPECT_EQ(Ln(TCplx(-1, 0)).Im, PI);
  EXPECT_EQ(CAdd(1.0, TCplx(1, 2)), TCplx(2, 2));
  EXPECT_EQ(CSub(1.0, TCplx(1, 2)), TCplx(0, -2));
  EXPECT_EQ(CMul(TCplx(1, 2), TCplx(3, 4)), TCplx(-5, 10));
}

TEST(Scalars, RoundingTakesTiesToEvenAndStaysInsideTheIntegers) {
  EXPECT_EQ(Round(0.5), 0);
  EXPECT_EQ(Round(1.5), 2);
  EXPECT_EQ(Round(-2.5), -2);
  EXPECT_EQ(Round(0.49999999999999994), 0);
  EXPECT_EQ(Round(1e300), kHigh);
  EXPECT_EQ(Round(-kInf), kLow);
  EXPECT_EQ(Round(2147483646.5), 2147483646);
  EXPECT_EQ(Round(kNan), 0);
  EXPECT_EQ(Ceil(-0.5), 0);
  EXPECT_EQ(Ceil(1e10), kHigh);
  EXPECT_EQ(Trunc(-1.9), -1);
}

TEST(Scalars, RangesAndComparisons) {
  EXPECT_TRUE(CheckRange(0.0, 1.0, 1.0));
  EXPECT_FALSE(CheckRange(0.0, kNan, 1.0));
  EXPECT_FALSE(CheckRange(1, 3, 2));
  EXPECT_EQ(EnsureRange(0, -5, 9), 0);
  double x = 12;
  LimitRange(0.0, x, 9.5);
  EXPECT_EQ(x, 9.5);
  EXPECT_TRUE(Equal(kInf, kInf));
  EXPECT_FALSE(Equal(kNan, kNan, kInf));
  EXPECT_TRUE(Bigger(1.1, 1.0, 0.05));
  EXPECT_FALSE(Smaller(1.0, 1.05, 0.1));
  EXPECT_TRUE(IsNanInf(kNan) && IsNanInf(kInf) && !IsNanInf(1.0));
}

TEST(Scalars, PowersOfTwoAndTen) {
  EXPECT_EQ(LargestExp2(0), 1);
  EXPECT_EQ(LargestExp2(-7), 1);
  EXPECT_EQ(LargestExp2(100), 128);
  EXPECT_EQ(LargestExp2(128), 128);
  EXPECT_EQ(LargestExp2(1 << 30), 1 << 30);
  EXPECT_THROW(LargestExp2((1 << 30) + 1), ECoreError);
  EXPECT_EQ(IntPower(2.0, -3), 0.125);
  EXPECT_EQ(IntPower(-1.0, kLow), 1);
  EXPECT_EQ(Exp10(22), 1e22);
  EXPECT_EQ(ToDouble(ToSingle(0.1)), static_cast<double>(0.1F));
}

TEST(Text, SamplesAndPrecisions) {
  EXPECT_EQ(SampleToStr(0.1), "0.1");
  EXPECT_EQ(SampleToStr(1.0 / 3, 0, 3), "0.333");
  EXPECT_EQ(SampleToStr(2.5, 6), "   2.5");
  EXPECT_EQ(SampleToStr(kNan), "nan");
  EXPECT_EQ(SampleToStr(1e300, kHigh, kHigh).size(), 1000U);
  EXPECT_EQ(PrecisionToStr(TMtxFloatPrecision::SingleComplex), "single complex");
}

TEST(Clock, NeverRunsBackward) {
  const TDateTime first = Now();
  EXPECT_GT(first, 45000);  // the year 2023
  EXPECT_GE(Now(), first);
}

}  // namespace
}  // namespace passband
