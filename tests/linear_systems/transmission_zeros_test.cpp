#include "passband/linear_systems/transmission_zeros.h"

#include <cmath>
#include <limits>

#include "passband/foundation/scalars.h"
#include "passband/iir_design/butterworth_filter.h"
#include "passband/linear_systems/state_space_forms.h"
#include "tests/linear_systems/responses.h"

namespace passband::LinearSystems {
namespace {

using namespace test;

struct Realisation {
  TMtx A;
  TVec B;
  TVec C;
  double D = 0;
};

Realisation Realise(TVec z, TVec p, double k) {
  Realisation r;
  ZeroPoleToStateSpace(r.A, r.B, r.C, r.D, z, p, k);
  return r;
}

// The same system in other states: an orthogonal change of basis, so that rounding hides the exact zeros.
Realisation Rotated(const Realisation& r) {
  const std::int32_t n = r.A.Rows();
  TMtx q;
  q.Size(n, n, TMtxFloatPrecision::DoubleReal);
  for (std::int32_t i = 0; i < n; ++i) {
    for (std::int32_t j = 0; j < n; ++j) {  // the orthogonal sine basis
      q.SetDefault(i, j, std::sqrt(2.0 / (n + 1)) * std::sin(PI * (i + 1) * (j + 1) / (n + 1)));
    }
  }
  Realisation t = r;
  TMtx work;
  work.Mul(r.A, q);
  t.A.Mul(q, work);
  t.B.TensorProd(r.B, q);
  t.C.TensorProd(r.C, q);
  return t;
}

void ExpectResponse(const TVec& z, double k, const TVec& p, const TVec& zeros, double gain, double tolerance) {
  for (const Wide x : Points(false)) {
    EXPECT_LE(Deviation(Response(z, p, k, x), Response(zeros, p, gain, x)), tolerance);
  }
}

TEST(TransmissionZeros, AreFoundForEveryExcessOfPoles) {
  for (const std::int32_t order : {1, 2, 4, 7, 12}) {
    for (std::int32_t zeros = 0; zeros <= order; ++zeros) {
      SCOPED_TRACE(testing::Message() << zeros << " zeros, " << order << " poles");
      const System s(order, zeros, false);
      for (const bool rotated : {false, true}) {
        const Realisation r = rotated ? Rotated(Realise(s.z, s.p, s.k)) : Realise(s.z, s.p, s.k);
        TVec z;
        double k = 0;
        LTIZeros(z, k, r.A, r.B, r.C, r.D);
        ASSERT_EQ(z.Length(), zeros);
        ExpectResponse(z, k, s.p, s.z, s.k, 1e-8);
      }
    }
  }
}

TEST(TransmissionZeros, RoundingMakesNoZeroFarOut) {
  // 7 / ((s + 1) ... (s + 5)): what is left of the numerator's leading coefficients is noise.
  const TVec p = {-1.0, -2.0, -3.0, -4.0, -5.0};
  const Realisation r = Rotated(Realise(TVec(), p, 7));
  TVec z;
  double k = 0;
  LTIZeros(z, k, r.A, r.B, r.C, r.D);
  EXPECT_EQ(z.Length(), 0);
  EXPECT_NEAR(k, 7, 1e-9);
}

TEST(TransmissionZeros, ASmallFeedThroughIsNotTakenForNone) {
  TVec z;
  TVec p;
  double k = 0;
  IIRFilters::ButterFilter(20, {0.1}, SignalUtils::TFilterType::ftLowpass, false, z, p, k);
  const Realisation r = Realise(z, p, k);
  ASSERT_LT(r.D, 1e-15);
  TVec found;
  double gain = 0;
  LTIZeros(found, gain, r.A, r.B, r.C, r.D);
  EXPECT_EQ(found.Length(), 20);
  EXPECT_NEAR(gain, k, 1e-9 * k);
}

TEST(TransmissionZeros, HiddenModesAndVanishingSystems) {
  // A state that the output does not see: its mode is a zero that coincides with a pole.
  TMtx A;
  A.CopyFromArray({{-1, 0}, {0, -2}});
  TVec z;
  double k = 0;
  LTIZeros(z, k, A, {1.0, 1.0}, {3.0, 0.0}, 0);
  ASSERT_EQ(z.Length(), 1);
  EXPECT_NEAR(At(z, 0).Re, -2, 1e-14);
  EXPECT_NEAR(k, 3, 1e-14);
  LTIZeros(z, k, A, {1.0, 1.0}, {0.0, 0.0}, 0);  // no output at all
  EXPECT_EQ(z.Length(), 0);
  EXPECT_EQ(k, 0);
  LTIZeros(z, k, A, {0.0, 0.0}, {1.0, 1.0}, 4);  // no input: the feed-through alone
  EXPECT_EQ(z.Length(), 2);
  EXPECT_EQ(k, 4);
  LTIZeros(z, k, TMtx(), TVec(), TVec(), 4);
  EXPECT_EQ(z.Length(), 0);
  EXPECT_EQ(k, 4);
}

TEST(TransmissionZeros, SinglePrecisionIsComputedInDouble) {
  Realisation r = Realise({-0.5, -0.25}, {-1.0, -2.0, -3.0}, 2);
  for (TDense* const part : {static_cast<TDense*>(&r.A), static_cast<TDense*>(&r.B), static_cast<TDense*>(&r.C)}) {
    part->SetFloatPrecision(TMtxFloatPrecision::SingleReal);
  }
  TVec z;
  double k = 0;
  LTIZeros(z, k, r.A, r.B, r.C, r.D);
  ASSERT_EQ(z.FloatPrecision(), TMtxFloatPrecision::SingleComplex);
  EXPECT_NEAR(k, 2, 1e-6);
}

TEST(TransmissionZeros, RefuseWithTheirTextsAndChangeNothing) {
  TMtx A;
  A.CopyFromArray({{-1, 0}, {0, -2}});
  TMtx wide;
  wide.CopyFromArray({{-1, 0, 0}, {0, -2, 0}});
  TMtx infinite = A;
  infinite.SetDefault(0, 1, std::numeric_limits<double>::infinity());
  const TVec two = {1.0, 1.0};
  const TVec three = {1.0, 1.0, 1.0};
  TVec single = two;
  single.SetFloatPrecision(TMtxFloatPrecision::SingleReal);
  TVec complex = two;
  complex.SetFloatPrecision(TMtxFloatPrecision::DoubleComplex);
  TVec z = {7.0};
  double k = 5;
  EXPECT_RAISES(LTIZeros(z, k, A, three, two, 0), Exception, "a.Rows <> b.Length");
  EXPECT_RAISES(LTIZeros(z, k, A, two, three, 0), Exception, "b.Length <> c.Length");
  EXPECT_RAISES(LTIZeros(z, k, A, two, single, 0), Exception, "b.IsDouble <> c.IsDouble");
  EXPECT_RAISES(LTIZeros(z, k, A, single, single, 0), Exception, "b.IsDouble <> a.IsDouble");
  EXPECT_RAISES(LTIZeros(z, k, wide, two, two, 0), ECoreError, "LTIZeros: A is not square");
  EXPECT_RAISES(LTIZeros(z, k, A, complex, two, 0), ECoreError, "LTIZeros: complex elements");
  EXPECT_RAISES(LTIZeros(z, k, infinite, two, two, 0), ECoreError, "LTIZeros: an element is not finite");
  EXPECT_RAISES(LTIZeros(z, k, A, two, two, std::nan("")), ECoreError, "LTIZeros: an element is not finite");
  EXPECT_TRUE(SameBits(z, {7.0}));
  EXPECT_EQ(k, 5);
}

}  // namespace
}  // namespace passband::LinearSystems
