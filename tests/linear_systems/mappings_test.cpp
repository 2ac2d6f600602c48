// Mappings between bands and domains: the new response at x is the old one at the point that the substitution tells.
#include <cmath>
#include <functional>

#include "passband/foundation/scalars.h"
#include "passband/linear_systems/linear_systems.h"
#include "tests/linear_systems/responses.h"

namespace passband::LinearSystems {
namespace {

using namespace test;
using Map = std::function<Wide(Wide)>;
using RootMapping = std::function<void(TVec&, TVec&, double&)>;
using StateSpaceMapping = std::function<void(TMtx&, TVec&, TVec&, double&)>;

constexpr double kCentre = 0.9;
constexpr double kWidth = 0.3;

struct Mapping {
  const char* name;
  Map substitution;
  RootMapping roots;
  StateSpaceMapping states;
  bool keeps_gain = true;  // of zeros and poles
};

std::vector<Mapping> Analog() {
  const long double w = kCentre;
  const long double bw = kWidth;
  return {{"lowpass", [=](Wide s) { return s / w; }, [](auto&&... x) { LowpassToLowpass(x..., kCentre); },
           [](auto&&... x) { LowpassToLowpass(x..., kCentre); }},
          {"highpass", [=](Wide s) { return w / s; }, [](auto&&... x) { LowpassToHighpass(x..., kCentre); },
           [](auto&&... x) { LowpassToHighpass(x..., kCentre); }, false},
          {"bandpass", [=](Wide s) { return (s * s + w * w) / (bw * s); },
           [](auto&&... x) { LowpassToBandpass(x..., kCentre, kWidth); },
           [](auto&&... x) { LowpassToBandpass(x..., kCentre, kWidth); }},
          {"bandstop", [=](Wide s) { return bw * s / (s * s + w * w); },
           [](auto&&... x) { LowpassToBandstop(x..., kCentre, kWidth); },
           [](auto&&... x) { LowpassToBandstop(x..., kCentre, kWidth); }, false}};
}

TEST(AnalogMappings, SubstituteInZerosAndPoles) {
  for (const Mapping& mapping : Analog()) {
    for (const bool is_double : {true, false}) {
      for (const auto& [order, zeros] : {std::pair{1, 0}, {4, 0}, {5, 0}, {4, 4}, {5, 4}}) {
        SCOPED_TRACE(testing::Message() << mapping.name << " " << order << " " << zeros);
        System s(order, zeros, false, is_double);
        const System before = s;
        mapping.roots(s.z, s.p, s.k);
        EXPECT_TRUE(s.p.Complex());
        EXPECT_EQ(s.p.IsDouble(), is_double);
        // Highpass and bandstop have the size of their gain only, taken for families whose sign is positive.
        const Wide at(0.05L, 0.4L);
        const Wide ratio =
            Response(s.z, s.p, s.k, at) / Response(before.z, before.p, before.k, mapping.substitution(at));
        EXPECT_LE(mapping.keeps_gain ? Deviation(ratio, 1) : 0, is_double ? 1e-14 : 1e-5);
        for (const Wide x : Points(false)) {
          const Wide expected = ratio * Response(before.z, before.p, before.k, mapping.substitution(x));
          EXPECT_LE(Deviation(Response(s.z, s.p, s.k, x), expected), is_double ? 1e-13 : 1e-4);
        }
      }
    }
  }
}

TEST(AnalogMappings, SubstituteInStateSpace) {
  for (const Mapping& mapping : Analog()) {
    for (const std::int32_t order : {1, 3, 6}) {
      System s(order, order, false);
      const System before = s;
      TMtx A;
      TVec B;
      TVec C;
      double D = 0;
      ZeroPoleToStateSpace(A, B, C, D, s.z, s.p, s.k);
      mapping.states(A, B, C, D);
      for (const Wide x : Points(false)) {
        const Wide expected = Response(before.z, before.p, before.k, mapping.substitution(x));
        EXPECT_LE(Deviation(Response(A, B, C, D, x), expected), 1e-12) << mapping.name << " " << order;
      }
    }
  }
}

TEST(AnalogMappings, KeepDigitsOfNarrowAndWideBandsAndGainsOfHighOrders) {
  // Images of a real pole: real ones of a wide band, whose product is Wo^2, and a narrow pair with real part -Bw / 2.
  TVec z;
  TVec p = {-1.0};
  double k = 1;
  LowpassToBandpass(z, p, k, 1, 1e9);
  EXPECT_NEAR(At(p, 0).Re * At(p, 1).Re, 1, 4e-16);
  EXPECT_NEAR(std::min(-At(p, 0).Re, -At(p, 1).Re), 1e-9, 4e-25);
  z = TVec();
  p = {-1.0};
  LowpassToBandpass(z, p, k, 1, 1e-12);
  EXPECT_NEAR(At(p, 0).Re, -0.5e-12, 1e-27);
  EXPECT_NEAR(At(p, 0).Re, At(p, 1).Re, 1e-27);
  // 50 poles far out: products of 1e500 on the way.
  for (const double size : {1e10, 1e-10}) {
    System s(50, 50, false);
    s.z.Scale(size);
    s.p.Scale(size);
    const System before = s;
    LowpassToHighpass(s.z, s.p, s.k, 1);
    EXPECT_TRUE(std::isfinite(s.k) && s.k > 0);
    s = before;
    Bilinear(s.z, s.p, s.k, 2);
    EXPECT_TRUE(std::isfinite(s.k) && s.k != 0);
    EXPECT_NEAR(ComputeGain(before.z, before.p, 0.0), static_cast<double>(Response(before.z, before.p, 1, 0).real()),
                1e-12);
  }
}

TEST(Bilinear, SubstitutesInAllForms) {
  const long double f = 3;  // 2 FS
  for (const std::int32_t zeros : {0, 2, 5}) {
    System s(5, zeros, false);
    const System before = s;
    TMtx A;
    TVec B;
    TVec C;
    double D = 0;
    System copy = s;
    ZeroPoleToStateSpace(A, B, C, D, copy.z, copy.p, copy.k);
    Bilinear(A, B, C, D, 1.5);
    Bilinear(s.z, s.p, s.k, 1.5);
    EXPECT_EQ(s.z.Length(), 5);
    for (const Wide x : Points(true)) {
      const Wide expected = Response(before.z, before.p, before.k, f * (x - 1.0L) / (x + 1.0L));
      EXPECT_LE(Deviation(Response(s.z, s.p, s.k, x), expected), 1e-14);
      EXPECT_LE(Deviation(Response(A, B, C, D, x), expected), 1e-10);  // next to five zeros at -1
    }
    s = before;
    Bilinear(s.z, s.p, s.k, 1.5, false);
    EXPECT_EQ(s.z.Length(), zeros);
  }
  for (const double frequency : {1e-9, 0.3, 0.5, 1 - 1e-9}) {
    EXPECT_NEAR(BilinearUnwarp(BilinearPrewarp(frequency, 8), 8), frequency, 4e-16 * frequency);
  }
  EXPECT_NEAR(BilinearPrewarp(0.5, 2), 4, 1e-15);
  TVec z = {-1.0};
  TVec p = {{-0.5, 2}, {-0.5, -2}};
  MatchedZTransform(z, p, 4);
  EXPECT_NEAR(At(z, 0).Re, std::exp(-0.25), 1e-16);
  EXPECT_NEAR(At(p, 1).Im, -std::exp(-0.125) * std::sin(0.5), 1e-16);
}

// The all-pass functions of Constantinides, by the points of the unit circle that they take to each other: the image of
// an edge is the prototype's cut-off.
TEST(DigitalMappings, MoveTheCutoffToTheEdgesAndSetTheGain) {
  const double proto = 0.4;
  const Wide cutoff = std::polar(1.0L, PI * static_cast<long double>(proto));
  const double lower = 0.2;
  const double upper = 0.5;
  const double centre = std::sqrt(lower * upper);
  struct Row {
    const char* name;
    RootMapping roots;
    std::function<void(TVec&, TVec&)> coefficients;
    std::vector<double> edges;
    long double reference;  // angle of the point of gain 1, in units of pi; -1: the centre of the prewarped band
  };
  const std::vector<Row> rows{{"lowpass",
                               [&](auto&&... x) { LowpassToLowpassZ(x..., lower, proto); },
                               [&](TVec& b, TVec& a) { LowpassToLowpassZ(b, a, lower, proto); },
                               {lower},
                               0},
                              {"highpass",
                               [&](auto&&... x) { LowpassToHighpassZ(x..., upper, proto); },
                               [&](TVec& b, TVec& a) { LowpassToHighpassZ(b, a, upper, proto); },
                               {upper},
                               1},
                              {"bandpass",
                               [&](auto&&... x) { LowpassToBandPassZ(x..., centre, upper - lower, proto); },
                               [&](TVec& b, TVec& a) { LowpassToBandPassZ(b, a, centre, upper - lower, proto); },
                               {lower, upper},
                               -1},
                              {"bandstop",
                               [&](auto&&... x) { LowpassToBandStopZ(x..., centre, upper - lower, proto); },
                               [&](TVec& b, TVec& a) { LowpassToBandStopZ(b, a, centre, upper - lower, proto); },
                               {lower, upper},
                               0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    System s(4, 4, true);
    const System before = s;
    TVec num;
    TVec den;
    ZeroPoleToTransferFun(num, den, s.z, s.p, s.k);
    row.roots(s.z, s.p, s.k);
    row.coefficients(num, den);
    EXPECT_EQ(s.p.Length(), row.edges.size() == 2 ? 8 : 4);
    const long double old = std::abs(Response(before.z, before.p, before.k, cutoff));
    const long double old_reference = std::abs(Response(before.z, before.p, before.k, 1));
    for (const double edge : row.edges) {
      const Wide x = std::polar(1.0L, PI * static_cast<long double>(edge));
      EXPECT_NEAR(static_cast<double>(std::abs(Response(s.z, s.p, s.k, x))), static_cast<double>(old / old_reference),
                  1e-13);
      EXPECT_NEAR(static_cast<double>(std::abs(Response(num, den, x))), static_cast<double>(old), 1e-12);
    }
    const long double warped = std::sqrt(std::tan(PI * lower / 2) * std::tan(PI * upper / 2));
    const long double angle = row.reference < 0 ? 2 * std::atan(warped) : row.reference * PI;
    EXPECT_NEAR(static_cast<double>(std::abs(Response(s.z, s.p, s.k, std::polar(1.0L, angle)))), 1, 1e-13);
  }
}

TEST(RationalSubstitution, SubstitutesInRootsAndCoefficients) {
  const TVec nz = {1.0, -0.25, 0.5};
  const TVec dz = {0.5, 2.0};
  for (const std::int32_t order : {1, 3, 6}) {
    System s(order, order, true);
    const System before = s;
    TVec num;
    TVec den;
    ZeroPoleToTransferFun(num, den, s.z, s.p, s.k);
    RationalSubstitution(s.z, s.p, s.k, nz, dz);
    RationalSubstitution(num, den, nz, dz);
    ASSERT_EQ(s.p.Length(), 2 * order);
    EXPECT_EQ(den[0], 1);
    Wide ratio = 0;
    for (const Wide x : Points(true)) {
      const Wide inner = Polynomial(nz, x) / Polynomial(dz, x);
      const Wide expected = Response(before.z, before.p, before.k, inner);
      EXPECT_LE(Deviation(Response(num, den, x), expected), 1e-12);
      const Wide found = Response(s.z, s.p, s.k, x) / expected;  // the gain is left as it was
      if (ratio == Wide(0)) ratio = found;
      EXPECT_LE(Deviation(found, ratio), 1e-12);
    }
  }
}

TEST(Mappings, RefuseWithTheirTextsAndChangeNothing) {
  const TVec two = {-1.0, -2.0};
  TVec single = {-1.0};
  single.SetFloatPrecision(TMtxFloatPrecision::SingleReal);
  const TVec kept_single = single;
  TVec z = two;
  TVec p = {-1.0};
  const TVec kept = p;
  double k = 5;
  const char* const precision = "z.IsDouble <> p.IsDouble";
  EXPECT_RAISES(LowpassToLowpass(single, p, k, 1), ECoreError, precision);
  EXPECT_RAISES(LowpassToHighpass(single, p, k, 1), ECoreError, precision);
  EXPECT_RAISES(LowpassToBandpass(single, p, k, 1, 1), ECoreError, precision);
  EXPECT_RAISES(LowpassToBandstop(single, p, k, 1, 1), ECoreError, precision);
  EXPECT_RAISES(LowpassToLowpassZ(single, p, k, 0.1, 0.1), ECoreError, precision);
  EXPECT_RAISES(LowpassToBandStopZ(single, p, k, 0.1, 0.1, 0.1), ECoreError, precision);
  EXPECT_RAISES(LowpassToLowpassZ(single, p, 0.1, 0.1), ECoreError, "num.IsDouble <> den.IsDouble");
  EXPECT_RAISES(Bilinear(z, p, k, 2), Exception, "z.Length > p.Length");
  EXPECT_RAISES(Bilinear(single, p, k, 2), ECoreError, precision);
  const char* const substitution = "(z.IsDouble <> p.IsDouble) or (nz.IsDouble <> dz.IsDouble)";
  const TVec none;
  EXPECT_RAISES(RationalSubstitution(single, p, k, two, two), ECoreError, substitution);
  EXPECT_RAISES(RationalSubstitution(z, p, k, two, kept_single), ECoreError, substitution);
  EXPECT_RAISES(RationalSubstitution(z, p, k, none, two), ECoreError, "nz.Length = 0");
  EXPECT_RAISES(RationalSubstitution(z, p, k, two, none), ECoreError, "dz.Length = 0");
  TVec complex = two;
  complex.SetFloatPrecision(TMtxFloatPrecision::DoubleComplex);
  EXPECT_RAISES(RationalSubstitution(complex, z, two, two), ECoreError, "Complex not suported!");
  EXPECT_RAISES(RationalSubstitution(z, p, two, two), ECoreError, "num.Length <> den.Length");
  EXPECT_RAISES(RationalSubstitution(p, single, two, two), ECoreError, "num.IsDouble <> den.IsDouble");
  EXPECT_RAISES(RationalSubstitution(p, p, two, kept_single), ECoreError, "nz.IsDouble <> dz.IsDouble");
  EXPECT_TRUE(SameBits(z, two) && SameBits(p, kept) && SameBits(single, kept_single));
  EXPECT_EQ(k, 5);
}

}  // namespace
}  // namespace passband::LinearSystems
