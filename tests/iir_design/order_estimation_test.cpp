// Orders and edges against 50-digit arithmetic, and against the designs that are made of them.
#include "passband/iir_design/order_estimation.h"

#include <array>
#include <cmath>
#include <complex>
#include <limits>
#include <map>
#include <sstream>

#include "passband/foundation/scalars.h"
#include "passband/iir_design/butterworth_filter.h"
#include "passband/iir_design/chebyshev_filters.h"
#include "passband/iir_design/elliptic_filter.h"
#include "tests/test_support.h"

namespace passband::IIRFilters {
namespace {

using enum SignalUtils::TFilterType;
using Estimate = std::int32_t (*)(OpenArray, double, double, SignalUtils::TFilterType, std::span<double>, bool);

const std::map<std::string, Estimate> kEstimates{{"butterworth", ButterOrder},
                                                 {"chebyshev1", ChebyshevIOrder},
                                                 {"chebyshev2", ChebyshevIIOrder},
                                                 {"elliptic", EllipticOrder}};

struct Case {
  Case(const std::string& name, const std::vector<double>& numbers)
      : order(static_cast<std::int32_t>(numbers[0])), expected(numbers.begin() + 1, numbers.end()) {
    std::istringstream words(name);
    std::string kind;
    words >> family >> kind >> analog >> ripple >> attenuation;
    for (double edge = 0; words >> edge;) edges.push_back(edge);
    type =
        std::map<std::string, SignalUtils::TFilterType>{
            {"lowpass", ftLowpass}, {"highpass", ftHighpass}, {"bandpass", ftBandpass}, {"bandstop", ftBandstop}}
            .at(kind);
  }

  void Sections(const std::vector<double>& cutoffs, TVec& sos) const {
    if (family == "butterworth") ButterFilter(order, cutoffs, type, false, sos);
    if (family == "chebyshev1") ChebyshevIFilter(order, ripple, cutoffs, type, false, sos);
    if (family == "chebyshev2") ChebyshevIIFilter(order, attenuation, cutoffs, type, false, sos);
    if (family == "elliptic") EllipticFilter(order, ripple, attenuation, cutoffs, type, false, sos);
  }
  bool IsStopEdge(std::size_t i) const {
    const bool outer = i == 0 || i + 1 == edges.size();
    if (type == ftLowpass) return i == 1;
    return type == ftHighpass ? i == 0 : outer == (type == ftBandpass);
  }

  std::string family;
  SignalUtils::TFilterType type = ftLowpass;
  bool analog = false;
  double ripple = 0;
  double attenuation = 0;
  std::vector<double> edges;
  std::int32_t order;
  std::vector<double> expected;
};

template <class Check>
void ForAllReferences(const Check& check) {
  static const std::map<std::string, std::vector<double>> rows{
#include "tests/iir_design/iir_order_reference.inc"
  };
  for (const auto& [name, numbers] : rows) {
    SCOPED_TRACE(name);
    check(Case(name, numbers));
  }
}

double Decibels(const TVec& sos, double frequency) {
  const std::complex<double> w = std::polar(1.0, -PI * frequency);
  std::complex<double> h = 1;
  for (std::int32_t i = 0; i + 5 < sos.Length(); i += 6) {
    h *= (sos[i] + w * (sos[i + 1] + w * sos[i + 2])) / (sos[i + 3] + w * (sos[i + 4] + w * sos[i + 5]));
  }
  return 20 * std::log10(std::abs(h));
}

TEST(IirOrder, OrdersAndEdgesAgreeWithFiftyDigitArithmetic) {
  ForAllReferences([](const Case& c) {
    std::vector<double> found(c.expected.size());
    EXPECT_EQ(kEstimates.at(c.family)(c.edges, c.ripple, c.attenuation, c.type, found, c.analog), c.order);
    for (std::size_t i = 0; i < found.size(); ++i) EXPECT_NEAR(found[i], c.expected[i], 2e-15 * c.expected[i]) << i;
  });
}

TEST(IirOrder, DesignsMeetTheRequirementAndThoseOfALowerOrderDoNot) {
  ForAllReferences([](Case c) {
    if (c.analog || c.order > 50 || c.edges[0] < 1e-3) return;  // rounded coefficients show at 1e-5
    // The gains of even orders and bandstops refer to zero frequency, see the designs.
    const bool shifted = c.type == ftBandstop && (c.family == "chebyshev1" || c.family == "elliptic");
    const auto meets = [&] {
      TVec sos;
      c.Sections(c.expected, sos);
      const double top = shifted && c.order % 2 == 0 ? c.ripple : 0;
      for (std::size_t i = 0; i < c.edges.size(); ++i) {
        const double gain = Decibels(sos, c.edges[i]) - top;
        if (c.IsStopEdge(i) ? gain > -c.attenuation + 1e-6 : gain < -c.ripple - 1e-6) return false;
      }
      return true;
    };
    EXPECT_TRUE(meets());
    --c.order;
    EXPECT_FALSE(c.order > 0 && meets());
  });
}

TEST(IirOrder, WholeQuotientsAreNotRaisedByRounding) {
  // 10^(A / 10) - 1 over 10^(R / 10) - 1 of a Butterworth filter is WA^(2 N) for these losses.
  std::array<double, 1> edge{};
  for (const std::int32_t n : {1, 2, 3, 5, 8, 13, 21}) {
    for (const double ratio : {1.25, 1.5, 2.0, 3.0}) {
      const double pass = std::log10(1.25) * 10;
      const double stop = 10 / std::log(10.0) * std::log1p(0.25 * std::pow(ratio, 2 * n));
      EXPECT_EQ(ButterOrder({4.0, 4.0 * ratio}, pass, stop, ftLowpass, edge, true), n) << ratio;
    }
  }
}

TEST(IirOrder, SignsOfLossesCountForEllipticFiltersOnly) {
  std::array<double, 1> edge{};
  EXPECT_EQ(ButterOrder({0.2, 0.3}, -1, -40, ftLowpass, edge), ButterOrder({0.2, 0.3}, 1, 40, ftLowpass, edge));
  EXPECT_RAISES(EllipticOrder({0.2, 0.3}, -1, 40, ftLowpass, edge), ECoreError,
                "not (0 < Ripple < Attenuation <= 3000)");
}

TEST(IirOrder, RefusesWithItsTextsAndWritesNothing) {
  std::array<double, 2> two{7, 8};
  std::array<double, 1> one{7};
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  for (const auto& [name, estimate] : kEstimates) {
    SCOPED_TRACE(name);
    EXPECT_RAISES(estimate({0.3, 0.2, 9, 9}, -1, nan, ftBandpass, one, false), ECoreError,
                  "(Length(CuttoffFreq) div 2) <> Length(BEdges)");
    EXPECT_RAISES(estimate({}, 1, 40, ftLowpass, std::span<double>(), false), ECoreError, "Length(Src) <> 2");
    EXPECT_RAISES(estimate({0.4, 0.3, 0.2, 0.1}, 1, 40, ftHighpass, two, false), ECoreError, "Length(Src) <> 2");
    EXPECT_RAISES(estimate({0.1, 0.2}, 1, 40, ftBandstop, one, false), ECoreError, "Length(Src) <> 4");
    EXPECT_RAISES(estimate({0.1, 0.2}, 1, 40, ftHilbertIII, one, false), ECoreError,
                  "not (ftLowpass <= FilterType <= ftBandstop)");
    EXPECT_RAISES(estimate({0.3, 0.2}, 1, 40, ftLowpass, one, false), ECoreError,
                  "not (CuttoffFreq[i] <= CuttoffFreq[i + 1])");
    for (const double edge : {0.0, 1.0, -0.1, nan, inf}) {
      EXPECT_RAISES(estimate({0.5, edge}, 1, 40, ftLowpass, one, false), ECoreError, "not (0 < CuttoffFreq < 1)");
    }
    for (const double edge : {0.0, -1.0, nan, inf}) {
      EXPECT_RAISES(estimate({edge, 5}, 1, 40, ftLowpass, one, true), ECoreError, "not (0 < CuttoffFreq < Inf)");
    }
    for (const double attenuation : {1.0, 0.5, 3001.0, nan, inf}) {
      EXPECT_RAISES(estimate({0.2, 0.3}, 1, attenuation, ftLowpass, one, false), ECoreError,
                    "not (0 < Ripple < Attenuation <= 3000)");
    }
    EXPECT_RAISES(estimate({0.3, 0.3}, 1, 40, ftLowpass, one, false), ECoreError, "Order = Inf");
    EXPECT_RAISES(estimate({0.1, 0.2, 0.2, 0.3}, 1, 40, ftBandpass, two, false), ECoreError, "Order = Inf");
    EXPECT_RAISES(estimate({0.1, 0.1, 0.2, 0.3}, 1, 40, ftBandstop, two, false), ECoreError, "Order = Inf");
  }
  EXPECT_RAISES(ButterOrder({0.3, std::nextafter(0.3, 1)}, 1, 40, ftLowpass, one), ECoreError, "Order = Inf");
  EXPECT_RAISES(EllipticOrder({0.2, 0.3}, 0.1, 160, ftLowpass, one), ECoreError, "Order = Inf");
  EXPECT_EQ(one[0], 7);
  EXPECT_EQ(two[1], 8);
}

}  // namespace
}  // namespace passband::IIRFilters
