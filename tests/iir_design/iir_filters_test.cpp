// The designs of all families against 60-digit arithmetic, and what distinguishes their routes and result forms.
#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <map>
#include <sstream>

#include "passband/foundation/scalars.h"
#include "passband/iir_design/bessel_filter.h"
#include "passband/iir_design/butterworth_filter.h"
#include "passband/iir_design/chebyshev_filters.h"
#include "passband/iir_design/elliptic_filter.h"
#include "passband/iir_design/exact_zeros.h"
#include "tests/test_support.h"

namespace passband::IIRFilters {
namespace {

using test::At;
using enum SignalUtils::TFilterType;
using enum TIirFrequencyTransform;
using Complex = std::complex<double>;
using Roots = std::vector<Complex>;

constexpr double kRipple = 0.5;
constexpr double kAttenuation = 60;

const std::map<std::string, std::vector<double>>& References() {
  static const std::map<std::string, std::vector<double>> rows{
#include "tests/iir_design/iir_filters_reference.inc"
  };
  return rows;
}

// What a row of the reference describes, and how to call the routine of its family in any form.
struct Case {
  explicit Case(const std::string& name, const std::vector<double>& numbers) {
    std::istringstream words(name);
    std::string kind;
    words >> family >> kind >> order;
    for (double edge = 0; words >> edge;) edges.push_back(edge);
    const std::map<std::string, SignalUtils::TFilterType> types{
        {"lowpass", ftLowpass}, {"highpass", ftHighpass}, {"bandpass", ftBandpass}, {"bandstop", ftBandstop}};
    type = types.at(kind);
    std::size_t at = 0;
    k = numbers[at++];
    for (std::size_t i = 0; i < edges.size(); ++i) gains.push_back(numbers[at++]);
    const auto zero_count = static_cast<std::size_t>(numbers[at++]);
    const auto pole_count = static_cast<std::size_t>(numbers[at++]);
    const auto read = [&](std::size_t count, Roots& roots) {
      for (std::size_t i = 0; i < count; ++i, at += 2) {
        roots.emplace_back(numbers[at], numbers[at + 1]);
        if (numbers[at + 1] != 0) roots.emplace_back(numbers[at], -numbers[at + 1]);
      }
    };
    read(zero_count, zeros);
    read(pole_count, poles);
  }

  template <class... Results>
  double Design(bool analog, Results&&... results) const {
    if (family == "butterworth") return ButterFilter(order, edges, type, analog, results...);
    if (family == "chebyshev1") return ChebyshevIFilter(order, kRipple, edges, type, analog, results...);
    if (family == "chebyshev2") return ChebyshevIIFilter(order, kAttenuation, edges, type, analog, results...);
    if (family == "elliptic") return EllipticFilter(order, kRipple, kAttenuation, edges, type, analog, results...);
    return BesselFilter(order, edges, type, analog, results...);
  }
  // The gain at the point of the band where ftZeroPoleDiscrete makes it 1.
  bool IsExtreme() const {
    return edges[0] < 0.01 || edges[0] > 0.99 || (edges.size() == 2 && edges[1] - edges[0] < 0.01);
  }
  bool HasEqualRipple() const { return family == "chebyshev1" || family == "elliptic"; }

  std::string family;
  SignalUtils::TFilterType type = ftLowpass;
  std::int32_t order = 0;
  std::vector<double> edges;
  double k = 0;
  std::vector<double> gains;
  Roots zeros;
  Roots poles;
};

template <class Check>
void ForAllReferences(const Check& check) {
  for (const auto& [name, numbers] : References()) {
    SCOPED_TRACE(name);
    check(Case(name, numbers));
  }
}

Roots RootsOf(const TVec& v) {
  Roots roots;
  for (std::int32_t i = 0; i < v.Length(); ++i) roots.push_back(At(v, i));
  return roots;
}

// The largest relative distance of the roots found to those expected, each expected one taken once.
double Distance(const Roots& expected, Roots found) {
  if (expected.size() != found.size()) return std::numeric_limits<double>::infinity();
  double largest = 0;
  for (const Complex& root : expected) {
    const auto nearest = std::min_element(found.begin(), found.end(), [&](const Complex& a, const Complex& b) {
      return std::abs(a - root) < std::abs(b - root);
    });
    const double size = std::abs(root) > 0 ? std::abs(root) : 1;
    largest = std::max(largest, std::abs(*nearest - root) / size);
    found.erase(nearest);
  }
  return largest;
}

// |H| at a frequency, in extended precision so that only the coefficients count.
double SectionsGain(const TVec& sos, double frequency) {
  using Wide = std::complex<long double>;
  const Wide w = std::polar(1.0L, -std::acos(-1.0L) * static_cast<long double>(frequency));
  Wide h = 1;
  for (std::int32_t i = 0; i + 5 < sos.Length(); i += 6) {
    const auto at = [&](std::int32_t j) { return static_cast<long double>(sos[i + j]); };
    h *= (at(0) + w * (at(1) + w * at(2))) / (at(3) + w * (at(4) + w * at(5)));
  }
  return static_cast<double>(std::abs(h));
}

double ZeroPoleGain(const TVec& z, const TVec& p, double k, Complex at) {
  using Wide = std::complex<long double>;
  const auto wide = [](Complex x) { return Wide(x.real(), x.imag()); };
  Wide h = k;
  for (const Complex& pole : RootsOf(p)) h /= wide(at) - wide(pole);
  for (const Complex& zero : RootsOf(z)) h *= wide(at) - wide(zero);
  return static_cast<double>(std::abs(h));
}

TEST(IirFilters, ZerosPolesAndGainAgreeWithSixtyDigitArithmetic) {
  ForAllReferences([](const Case& c) {
    TVec z;
    TVec p;
    double k = 0;
    c.Design(false, z, p, k, ftZeroPoleAnalog);
    EXPECT_LE(Distance(c.zeros, RootsOf(z)), 1e-12);
    EXPECT_LE(Distance(c.poles, RootsOf(p)), 1e-12);
    EXPECT_NEAR(k, c.k, 1e-12 * c.k);
  });
}

TEST(IirFilters, DigitalMappingGivesTheSamePolesAndUnitGainAtTheReference) {
  ForAllReferences([](const Case& c) {
    TVec z;
    TVec p;
    double k = 0;
    c.Design(false, z, p, k, ftZeroPoleDiscrete);
    EXPECT_LE(Distance(c.poles, RootsOf(p)), c.IsExtreme() ? 1e-9 : 1e-11);
    // The centre of a bandpass is the geometric mean of the prewarped edges.
    const auto warp = [](double f) { return std::tan(PI * f / 2); };
    const double centre = 2 * std::atan(std::sqrt(warp(c.edges[0]) * warp(c.edges.back())));
    const Complex at = c.type == ftHighpass ? -1.0 : c.type == ftBandpass ? std::polar(1.0, centre) : Complex(1.0);
    EXPECT_NEAR(ZeroPoleGain(z, p, k, at), 1, 1e-9);
  });
}

TEST(IirFilters, SectionsMeetTheGainAtEveryCutoff) {
  ForAllReferences([](const Case& c) {
    TVec sos;
    c.Design(false, sos);
    EXPECT_EQ(sos.Length(), 6 * static_cast<std::int32_t>((c.poles.size() + 1) / 2));
    // A coefficient that is rounded to eps moves the gain at distance d of a pair of zeros or poles by eps / d^2.
    double condition = 0;
    for (const double edge : c.edges) {
      const Complex at = std::polar(1.0, PI * edge);
      for (const Roots& roots : {c.zeros, c.poles}) {
        for (const Complex& root : roots) condition += 1 / std::abs((at - root) * (at - std::conj(root)));
      }
    }
    const double tolerance = std::max(1e-12, 0x1p-52 * condition);
    for (std::size_t i = 0; i < c.edges.size(); ++i) {
      EXPECT_NEAR(SectionsGain(sos, c.edges[i]), c.gains[i], tolerance * c.gains[i]) << c.edges[i];
    }
  });
}

TEST(IirFilters, StateSpaceRouteStaysCloseUpToOrderTwenty) {
  ForAllReferences([](const Case& c) {
    if (c.order > 20 || c.IsExtreme()) return;
    TVec z;
    TVec p;
    double k = 0;
    c.Design(false, z, p, k, ftStateSpaceAnalog);
    const double pole_distance = Distance(c.poles, RootsOf(p));
    EXPECT_LE(pole_distance, 1e-9);
    EXPECT_LE(Distance(c.zeros, RootsOf(z)), 1e-9);
    // This route keeps the true gain of the prototype, also where the other one sets it to 1 at zero frequency.
    const bool from_ripple_top = c.type == ftBandstop && c.HasEqualRipple() && c.order % 2 == 0;
    EXPECT_NEAR(k, c.k * (from_ripple_top ? std::pow(10, -kRipple / 20) : 1), 1e-9 * c.k);
  });
}

TEST(IirFilters, TransferFunctionsOfLowOrderMeetTheGainToo) {
  ForAllReferences([](const Case& c) {
    if (c.order > 5 || c.IsExtreme()) return;
    TVec num;
    TVec den;
    c.Design(false, num, den);
    EXPECT_FALSE(num.Complex() || den.Complex());
    EXPECT_EQ(num.Length(), den.Length());
    EXPECT_EQ(den[0], 1);
    for (std::size_t i = 0; i < c.edges.size(); ++i) {
      const Complex w = std::polar(1.0, -PI * c.edges[i]);
      Complex b = 0;
      Complex a = 0;
      for (std::int32_t n = num.Length() - 1; n >= 0; --n) {
        b = b * w + num[n];
        a = a * w + den[n];
      }
      EXPECT_NEAR(std::abs(b / a), c.gains[i], 1e-9 * c.gains[i]);
    }
  });
}

TEST(IirFilters, SinglePrecisionResultsAreTheRoundedDoubles) {
  const auto single = [](const TVec& v) {
    TVec rounded(v);
    rounded.SetFloatPrecision(MakePrecision(v.Complex(), false));
    return rounded;
  };
  for (const auto transform : {ftStateSpaceAnalog, ftZeroPoleAnalog, ftZeroPoleDiscrete}) {
    TVec sos;
    TVec sos_single;
    sos_single.Size(0, TMtxFloatPrecision::SingleReal);
    EllipticFilter(7, kRipple, kAttenuation, {0.2, 0.25}, ftBandpass, false, sos, transform);
    EllipticFilter(7, kRipple, kAttenuation, {0.2, 0.25}, ftBandpass, false, sos_single, transform);
    EXPECT_TRUE(test::SameBits(single(sos), sos_single));
    TVec z, p, z_single, p_single;
    z_single.Size(0, TMtxFloatPrecision::SingleReal);
    p_single.Size(0, TMtxFloatPrecision::SingleReal);
    double k = 0;
    double k_single = 0;
    ChebyshevIIFilter(6, kAttenuation, {0.4}, ftHighpass, false, z, p, k, transform);
    ChebyshevIIFilter(6, kAttenuation, {0.4}, ftHighpass, false, z_single, p_single, k_single, transform);
    EXPECT_TRUE(test::SameBits(single(z), z_single));
    EXPECT_TRUE(test::SameBits(single(p), p_single));
    EXPECT_EQ(k, k_single);
  }
}

TEST(IirFilters, ReturnTheFrequencyOfTheBandMapping) {
  TVec sos;
  const double centre = 4 * std::sqrt(std::tan(0.1 * PI) * std::tan(0.2 * PI));
  EXPECT_NEAR(ButterFilter(4, {0.5}, ftLowpass, false, sos), 4, 1e-14);
  EXPECT_NEAR(BesselFilter(4, {0.2, 0.4}, ftBandpass, false, sos, ftStateSpaceAnalog), centre, 1e-14);
  const double digital_centre = std::sqrt(0.2 * 0.4);
  EXPECT_NEAR(ButterFilter(4, {0.2, 0.4}, ftBandpass, false, sos, ftZeroPoleDiscrete), digital_centre, 1e-15);
  EXPECT_NEAR(BesselFilter(4, {0.2, 0.4}, ftBandpass, false, sos, ftZeroPoleDiscrete), digital_centre, 1e-15);
  EXPECT_NEAR(ChebyshevIFilter(4, 1, {0.2, 0.4}, ftBandpass, false, sos, ftZeroPoleDiscrete), digital_centre, 1e-15);
  EXPECT_EQ(ChebyshevIIFilter(4, 40, {0.2, 0.4}, ftBandpass, false, sos, ftZeroPoleDiscrete), 0);
  EXPECT_EQ(EllipticFilter(4, 1, 40, {0.2, 0.4}, ftBandpass, false, sos, ftZeroPoleDiscrete), 0);
  EXPECT_EQ(ChebyshevIIFilter(4, 40, {3}, ftHilbertIV, false, sos), 0);
  TVec num;
  TVec den;
  EXPECT_EQ(ButterFilter(4, {90, 110}, ftBandstop, true, num, den), std::sqrt(90.0 * 110.0));
}

TEST(IirFilters, AnalogFiltersHaveTheirCutoffOnTheImaginaryAxis) {
  const double at_cutoff = std::sqrt(0.5);
  for (const auto transform : {ftStateSpaceAnalog, ftZeroPoleAnalog}) {
    for (const auto type : {ftLowpass, ftHighpass, ftBandpass, ftBandstop}) {
      const bool two = type == ftBandpass || type == ftBandstop;
      const std::vector<double> edges = two ? std::vector<double>{90, 110} : std::vector<double>{90};
      TVec z;
      TVec p;
      double k = 0;
      ButterFilter(7, edges, type, true, z, p, k, transform);
      for (const double edge : edges) {
        EXPECT_NEAR(ZeroPoleGain(z, p, k, {0, edge}), at_cutoff, 1e-9) << static_cast<int>(type);
      }
    }
  }
  // Where an analog wish is ignored the digital filter comes out.
  TVec sos;
  TVec digital;
  ButterFilter(5, {0.3}, ftHighpass, true, sos, ftZeroPoleDiscrete);
  ButterFilter(5, {0.3}, ftHighpass, false, digital, ftZeroPoleDiscrete);
  EXPECT_TRUE(test::SameBits(sos, digital));
}

TEST(IirFilters, GainOfEvenOrdersWithRipplesIsThatOfTheRoute) {
  const double bottom = std::pow(10, -kRipple / 20);
  TVec sos;
  for (const std::int32_t order : {4, 5}) {
    const double lowest = order == 4 ? bottom : 1;
    ChebyshevIFilter(order, kRipple, {0.3}, ftLowpass, false, sos);
    EXPECT_NEAR(SectionsGain(sos, 0), lowest, 1e-13);
    ChebyshevIFilter(order, kRipple, {0.3, 0.5}, ftBandstop, false, sos);
    EXPECT_NEAR(SectionsGain(sos, 0), 1, 1e-13);
    EXPECT_NEAR(SectionsGain(sos, 0.3), order == 4 ? 1 : bottom, 1e-12);
    EllipticFilter(order, kRipple, kAttenuation, {0.3}, ftLowpass, false, sos, ftZeroPoleDiscrete);
    EXPECT_NEAR(SectionsGain(sos, 0), 1, 1e-13);
  }
}

TEST(IirFilters, StateSpaceHasTheResponseOfTheSections) {
  // y = C (x I - A)^-1 B + D at x = 1: the gain at zero frequency.
  TMtx A;
  TVec B;
  TVec C;
  double D = 0;
  ChebyshevIIFilter(6, kAttenuation, {0.3, 0.5}, ftBandstop, false, A, B, C, D);
  ASSERT_EQ(A.Rows(), 12);
  for (std::int32_t i = 0; i < 12; ++i) {
    for (std::int32_t j = 0; j < 12; ++j) A.SetDefault(i, j, (i == j ? 1 : 0) - A(i, j));
  }
  TVec x;
  A.LUSolve(B, x);
  EXPECT_NEAR(C.DotProd(x) + D, 1, 1e-12);
}

TEST(IirFilters, RefuseWithTheirTextsAndWriteNothing) {
  const TVec kept = {1.0, 2.0};
  TVec z = kept;
  TVec p = kept;
  TVec single;
  single.Size(2, TMtxFloatPrecision::SingleReal);
  TMtx A;
  double k = 3;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const char* const digital_range = "not (0 < CutoffFreq < 1)";
  const char* const analog_range = "not (0 < CutoffFreq < Inf)";
  EXPECT_RAISES(ButterFilter(2, {0.3}, ftLowpass, false, z, single, k), ECoreError, "z.IsDouble <> p.IsDouble");
  EXPECT_RAISES(ButterFilter(2, {}, ftLowpass, false, z, single), ECoreError, "num.IsDouble <> den.IsDouble");
  EXPECT_RAISES(ButterFilter(2, {0.3}, ftLowpass, false, A, z, single, k), ECoreError,
                "(A.IsDouble <> B.IsDouble) or (A.IsDouble <> c.IsDouble)");
  EXPECT_RAISES(BesselFilter(2, {0.3}, ftLowpass, false, A, single, z, k), ECoreError,
                "(A.IsDouble <> B.IsDouble) or (A.IsDouble <> C.IsDouble)");
  EXPECT_RAISES(ChebyshevIFilter(51, 1, {}, ftLowpass, false, A, z, p, k), ECoreError, "Order > MaxIirOrder");
  EXPECT_RAISES(EllipticFilter(5, 1, 40, {1, 2, 3}, ftLowpass, false, A, z, p, k), ECoreError, "CutoffFreq.Length > 2");
  EXPECT_RAISES(ChebyshevIIFilter(5, 40, {1, 2, 3}, ftLowpass, false, z, p, k, ftStateSpaceAnalog), ECoreError,
                "CutoffFreq.Length > 2");
  EXPECT_RAISES(ChebyshevIFilter(5, 1, {1, 2, 3}, ftLowpass, false, z, p, k, ftStateSpaceAnalog), ECoreError,
                "(Length(CutoffFreq) <> 1)");
  EXPECT_RAISES(BesselFilter(0, {0.1}, ftBandstop, false, z, p, k), ECoreError, "(Length(CutoffFreq) <> 2)");
  EXPECT_RAISES(EllipticFilter(4, 1, 40, {}, ftHighpass, true, z, ftZeroPoleDiscrete), ECoreError,
                "Analog not supported with ftZeroPoleDiscrete");
  for (const double edge : {0.0, 1.0, -0.5, nan, inf}) {
    EXPECT_RAISES(ButterFilter(4, {edge}, ftLowpass, false, z, p, k), ECoreError, digital_range);
    EXPECT_RAISES(ButterFilter(4, {edge}, ftLowpass, true, z, p, k, ftZeroPoleDiscrete), ECoreError, digital_range);
  }
  for (const double edge : {0.0, -1.0, nan, inf}) {
    EXPECT_RAISES(ButterFilter(4, {edge, 2}, ftBandpass, true, z, p), ECoreError, analog_range);
    EXPECT_RAISES(ButterFilter(4, {edge}, ftHighpass, true, A, z, p, k), ECoreError, analog_range);
  }
  EXPECT_RAISES(ButterFilter(4, {0.4, 0.4}, ftBandpass, false, z), ECoreError, "not (CutoffFreq[0] < CutoffFreq[1])");
  for (const std::int32_t order : {0, 51, 1000000000}) {
    EXPECT_RAISES(EllipticFilter(order, 1, 40, {0.4}, ftLowpass, false, z), ECoreError,
                  "not (1 < Order < MaxIirOrder)");
    if (order > 50) continue;
    EXPECT_THROW(ButterFilter(order, {0.4}, ftLowpass, false, z), ECoreError);
  }
  // An analog lowpass without zeros has no sections.
  EXPECT_RAISES(ButterFilter(4, {3}, ftLowpass, true, z), ECoreError, "z.Length <> p.Length");
  EXPECT_TRUE(test::SameBits(z, kept) && test::SameBits(p, kept));
  EXPECT_EQ(k, 3);
  EXPECT_EQ(A.Rows(), 0);
}

TEST(IirFilters, WriteIntoTheMemoryOfTheHostWhereTheSizeFits) {
  std::vector<double> memory(12);
  TVec sos = TVec::View(std::span<double>(memory));
  ButterFilter(4, {0.3}, ftLowpass, false, sos);
  TVec fresh;
  ButterFilter(4, {0.3}, ftLowpass, false, fresh);
  EXPECT_TRUE(test::SameBits(TVec(std::span<const double>(memory)), fresh));
}

TEST(ExactIirZeros, LieWhereTheMappingPutsThem) {
  const double wn = 4 * std::tan(0.35 * PI / 2);
  const Complex notch = std::polar(1.0, 0.35 * PI);
  const struct {
    SignalUtils::TFilterType type;
    bool analog;
    Roots expected;
  } rows[] = {{ftLowpass, false, {-1, -1}},
              {ftHighpass, false, {1, 1}},
              {ftBandpass, false, {1, 1, -1, -1}},
              {ftBandstop, false, {notch, std::conj(notch), notch, std::conj(notch)}},
              {ftLowpass, true, {}},
              {ftHighpass, true, {0, 0}},
              {ftBandpass, true, {0, 0}},
              {ftBandstop, true, {{0, wn}, {0, -wn}, {0, wn}, {0, -wn}}}};
  for (const bool is_double : {true, false}) {
    for (const auto& row : rows) {
      TVec z;
      z.Size(3, true, is_double);
      ExactIirZeros(2, wn, row.type, row.analog, z);
      const Roots found = RootsOf(z);
      ASSERT_EQ(found.size(), row.expected.size());
      EXPECT_EQ(z.IsDouble(), is_double);
      EXPECT_EQ(z.Complex(), row.type == ftBandstop);
      for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_LE(std::abs(found[i] - row.expected[i]), (is_double ? 4e-16 : 2e-7) * std::abs(row.expected[i]));
      }
    }
  }
  const TVec kept = {7.0};
  TVec z = kept;
  ExactIirZeros(2, 1, ftIntegratorIII, false, z);
  EXPECT_RAISES(ExactIirZeros(-1, 1, ftLowpass, false, z), ECoreError, "not (0 <= Order <= 1000)");
  EXPECT_RAISES(ExactIirZeros(1000000000, 1, ftBandstop, true, z), ECoreError, "not (0 <= Order <= 1000)");
  EXPECT_TRUE(test::SameBits(z, kept));
}

}  // namespace
}  // namespace passband::IIRFilters
