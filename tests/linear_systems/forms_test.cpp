// Conversions between zeros and poles, transfer function, sections and state space: the response stays.
#include <limits>

#include "passband/iir_design/butterworth_filter.h"
#include "passband/linear_systems/linear_systems.h"
#include "tests/linear_systems/responses.h"

namespace passband::LinearSystems {
namespace {

using namespace test;
using SignalUtils::TFilterType;

double Tolerance(bool is_double) { return is_double ? 1e-13 : 2e-5; }

TEST(SecondOrderSections, HaveTheResponseOfTheRoots) {
  for (const bool is_double : {true, false}) {
    for (const std::int32_t order : {1, 2, 3, 6, 7, 16}) {
      System s(order, order, true, is_double);
      const System before = s;
      TVec sos;
      ZeroPoleToSOS(sos, s.z, s.p, s.k);
      ASSERT_EQ(sos.Length(), (order + 1) / 2 * 6);
      EXPECT_EQ(sos.FloatPrecision(), MakePrecision(false, is_double));
      for (const Wide x : Points(true)) {
        EXPECT_LE(Deviation(SectionsResponse(sos, x), Response(before.z, before.p, s.k, x)), Tolerance(is_double));
      }
      for (std::int32_t i = 0; i < sos.Length(); i += 6) EXPECT_EQ(At(sos, i + 3).Re, 1);
    }
  }
}

TEST(SecondOrderSections, RepeatedPairsStayTogetherAndTheLastPoleMakesAFirstOrder) {
  TVec z = {{0, 1}, {0, 1}, {0, -1}, {0, -1}, {-1, 0}};
  TVec p = {{0.5, 0.25}, {0.5, -0.25}, {0.5, 0.25}, {0.5, -0.25}, {0.125, 0}};
  TVec sos;
  ZeroPoleToSOS(sos, z, p, 3);
  const TVec expected = {1, 0, 1, 1, -1, 0.3125, 1, 0, 1, 1, -1, 0.3125, 3, 3, 0, 1, -0.125, 0};
  ASSERT_EQ(sos.Length(), expected.Length());
  for (std::int32_t i = 0; i < sos.Length(); ++i) EXPECT_EQ(At(sos, i), At(expected, i)) << i;
}

TEST(TransferFunction, GoesToRootsAndBack) {
  for (const bool is_double : {true, false}) {
    for (const std::int32_t order : {1, 2, 5, 9}) {
      for (const std::int32_t zeros : {0, 1, order}) {
        const System s(order, std::min(zeros, order), false, is_double);
        TVec num;
        TVec den;
        ZeroPoleToTransferFun(num, den, s.z, s.p, s.k);
        ASSERT_EQ(num.Length(), order + 1);
        EXPECT_FALSE(num.Complex() || den.Complex());
        TVec z;
        TVec p;
        double k = 0;
        TransferFunToZeroPole(z, p, k, num, den);
        EXPECT_EQ(z.Length(), s.z.Length());
        for (const Wide x : Points(false)) {
          const Wide expected = Response(s.z, s.p, s.k, x);
          EXPECT_LE(Deviation(Response(num, den, x), expected), Tolerance(is_double)) << order << " " << zeros;
          EXPECT_LE(Deviation(Response(z, p, k, x), expected), 10 * Tolerance(is_double)) << order << " " << zeros;
        }
      }
    }
  }
}

TEST(TransferFunction, LeadingZerosAndZeroNumerators) {
  TVec z = {1.0};
  TVec p;
  double k = 3;
  TransferFunToZeroPole(z, p, k, {0.0, 0.0, 2.0, 4.0}, {2.0, 0.0, 8.0, 0.0});
  ASSERT_EQ(z.Length(), 1);
  EXPECT_EQ(At(z, 0), (TCplx{-2, 0}));
  EXPECT_EQ(k, 1);
  EXPECT_EQ(p.Length(), 3);
  TransferFunToZeroPole(z, p, k, {0.0, 0.0}, {1.0, 0.5});
  EXPECT_EQ(z.Length(), 0);
  EXPECT_EQ(k, 0);
  TransferFunToZeroPole(z, p, k, {3.0}, {1.0, 0.5, 0.25});  // shorter: zeros at the origin
  ASSERT_EQ(z.Length(), 2);
  EXPECT_EQ(MaxAbs(z), 0);
}

TEST(StateSpace, HasTheResponseOfTheRootsAndGivesThemBack) {
  for (const bool is_double : {true, false}) {
    for (const std::int32_t order : {1, 2, 3, 8, 13}) {
      for (const std::int32_t zeros : {0, order / 2, order}) {
        System s(order, zeros, false, is_double);
        const System before = s;
        TMtx A;
        TVec B;
        TVec C;
        double D = 9;
        ZeroPoleToStateSpace(A, B, C, D, s.z, s.p, s.k);
        ASSERT_EQ(A.Rows(), order);
        EXPECT_EQ(A.IsDouble(), is_double);
        EXPECT_EQ(D, zeros == order ? s.k : 0);
        TVec z;
        TVec p;
        double k = 0;
        StateSpaceToZeroPole(z, p, k, A, B, C, D);
        EXPECT_EQ(z.Length(), zeros);
        for (const Wide x : Points(false)) {
          const Wide expected = Response(before.z, before.p, s.k, x);
          EXPECT_LE(Deviation(Response(A, B, C, D, x), expected), 100 * Tolerance(is_double)) << order << " " << zeros;
          EXPECT_LE(Deviation(Response(z, p, k, x), expected), 1000 * Tolerance(is_double)) << order << " " << zeros;
        }
      }
    }
  }
}

TEST(StateSpace, OfATransferFunctionAndBack) {
  const TVec num = {0.0, 2.0, -3.0, 1.0};
  const TVec den = {2.0, 1.0, 3.0, 0.5};
  TMtx A;
  TVec B;
  TVec C;
  double D = 0;
  TransferFunToStateSpace(A, B, C, D, num, den);
  TVec b;
  TVec a;
  StateSpaceToTransferFun(b, a, A, B, C, D);
  for (const Wide x : Points(false)) {
    EXPECT_LE(Deviation(Response(A, B, C, D, x), Response(num, den, x)), 1e-15);
    EXPECT_LE(Deviation(Response(b, a, x), Response(num, den, x)), 1e-13);
  }
  TransferFunToStateSpace(A, B, C, D, {3.0}, {2.0});
  EXPECT_EQ(A.Rows(), 0);
  EXPECT_EQ(D, 1.5);
  StateSpaceToTransferFun(b, a, A, B, C, D);
  EXPECT_TRUE(SameBits(b, {1.5}) && SameBits(a, {1.0}));
}

TEST(StateSpace, NumeratorsOfSmallGainsDoNotCancel) {
  // Order 8 with its cut-off at 0.01: gains of 1e-15 beside coefficients of 70.
  TVec z;
  TVec p;
  double k = 0;
  IIRFilters::ButterFilter(8, {0.01}, TFilterType::ftLowpass, false, z, p, k);
  const TVec zeros = z;
  const TVec poles = p;
  TMtx A;
  TVec B;
  TVec C;
  double D = 0;
  ZeroPoleToStateSpace(A, B, C, D, z, p, k);
  TVec num;
  TVec den;
  StateSpaceToTransferFun(num, den, A, B, C, D);
  TVec expected;
  PolyCoeff(zeros, expected);
  for (std::int32_t i = 0; i < num.Length(); ++i) {
    EXPECT_NEAR(At(num, i).Re, k * At(expected, i).Re, 1e-11 * k * At(expected, i).Re) << i;
  }
}

TEST(Forms, RefuseWithTheirTextsAndChangeNothing) {
  const TVec three = {-1.0, -2.0, -3.0};
  const TVec two = {-1.0, -2.0};
  const TVec none;
  TVec single = two;
  single.SetFloatPrecision(TMtxFloatPrecision::SingleReal);
  TVec complex = two;
  complex.SetFloatPrecision(TMtxFloatPrecision::DoubleComplex);
  TVec z = three;
  TVec p = two;
  TVec out = {7.0};
  TVec other = {8.0};
  TMtx A;
  double k = 5;
  TVec empty;
  EXPECT_RAISES(ZeroPoleToSOS(out, z, empty, 1), ECoreError, "p.Length = 0");
  EXPECT_RAISES(ZeroPoleToSOS(out, z, p, 1), ECoreError, "z.Length <> p.Length");
  EXPECT_RAISES(ZeroPoleToSOS(out, single, p, 1), ECoreError, "z.IsDouble <> p.IsDouble");
  EXPECT_RAISES(ZeroPoleToTransferFun(out, other, three, none, 1), ECoreError, "p.Length = 0");
  EXPECT_RAISES(ZeroPoleToTransferFun(out, other, three, two, 1), ECoreError, "z.Length > p.Length");
  EXPECT_RAISES(ZeroPoleToTransferFun(out, other, single, two, 1), ECoreError, "z.IsDouble <> p.IsDouble");
  EXPECT_RAISES(TransferFunToZeroPole(out, other, k, three, two), Exception, "num.Length > den.Length");
  EXPECT_RAISES(TransferFunToZeroPole(out, other, k, none, two), Exception, "num.Length = 0");
  EXPECT_RAISES(TransferFunToZeroPole(out, other, k, single, two), Exception,
                "num.FloatPrecision <> den.FloatPrecision");
  EXPECT_RAISES(TransferFunToZeroPole(out, other, k, two, {1e-17, 1.0}), Exception, "abs(den[0]) < EPS");
  TVec tiny = {1e-8, 1.0};
  tiny.SetFloatPrecision(TMtxFloatPrecision::SingleReal);
  EXPECT_RAISES(TransferFunToZeroPole(out, other, k, single, tiny), Exception, "abs(den[0]) < EPS_SINGLE");
  EXPECT_RAISES(ZeroPoleToStateSpace(A, out, other, k, z, p, 1), Exception, "z.Length > p.Length");
  EXPECT_RAISES(ZeroPoleToStateSpace(A, out, other, k, single, p, 1), Exception, "z.IsDouble <> p.IsDouble");
  EXPECT_RAISES(TransferFunToStateSpace(A, out, other, k, two, three), Exception, "Num.Length <> Den.Length");
  EXPECT_RAISES(TransferFunToStateSpace(A, out, other, k, two, single), Exception, "Num.IsDouble <> den.IsDouble");
  EXPECT_RAISES(TransferFunToStateSpace(A, out, other, k, two, complex), Exception, "Num.Complex <> den.Complex");
  EXPECT_RAISES(TransferFunToStateSpace(A, out, other, k, complex, complex), Exception,
                "complex coefficients have no real state space");
  EXPECT_RAISES(TransferFunToStateSpace(A, out, other, k, two, {0.0, 1.0}), Exception, "den[0] = 0");
  TMtx square;
  square.Size(2, 2, TMtxFloatPrecision::DoubleReal);
  square.SetZero();
  EXPECT_RAISES(StateSpaceToTransferFun(out, other, square, three, two, 0), Exception, "a.Rows <> b.Length");
  EXPECT_RAISES(StateSpaceToZeroPole(out, other, k, square, two, three, 0), Exception, "b.Length <> c.Length");
  EXPECT_TRUE(SameBits(out, {7.0}) && SameBits(other, {8.0}) && SameBits(z, three) && SameBits(p, two));
  EXPECT_EQ(k, 5);
  EXPECT_EQ(A.Rows(), 0);
}

}  // namespace
}  // namespace passband::LinearSystems
