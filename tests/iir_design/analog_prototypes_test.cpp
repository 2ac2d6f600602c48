// The prototypes of all families against 60-digit arithmetic, value by value in the order in which they are stored.
#include "passband/iir_design/analog_prototypes.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <map>
#include <sstream>

#include "tests/test_support.h"

namespace passband::IIRFilters {
namespace {

using test::At;
using Wide = std::complex<long double>;

struct Case {
  Case(const std::string& name, const std::vector<double>& numbers) {
    std::istringstream words(name);
    words >> family >> order >> ripple >> attenuation;
    k = numbers[0];
    const auto zero_count = static_cast<std::size_t>(numbers[1]);
    for (std::size_t i = 2; i < numbers.size(); i += 2) {
      (i < 2 + 2 * zero_count ? zeros : poles).push_back({numbers[i], numbers[i + 1]});
    }
  }

  void Design(TVec& z, TVec& p, double& gain) const {
    if (family == "butterworth") return ButterAnalog(order, z, p, gain);
    if (family == "chebyshev1") return ChebyshevIAnalog(order, ripple, z, p, gain);
    if (family == "chebyshev2") return ChebyshevIIAnalog(order, attenuation, z, p, gain);
    if (family == "elliptic") return EllipticAnalog(order, ripple, attenuation, z, p, gain);
    return BesselAnalog(order, z, p, gain);
  }
  // In eps: results are rounded once from extended precision. The parameter of an elliptic filter, ripple in decibels
  // through exp, is known to a few units of that precision only.
  double Tolerance() const { return family == "elliptic" ? 4 : 1; }

  std::string family;
  std::int32_t order = 0;
  double ripple = 0;
  double attenuation = 0;
  double k = 0;
  std::vector<TCplx> zeros;
  std::vector<TCplx> poles;
};

template <class Check>
void ForAllReferences(const Check& check) {
  static const std::map<std::string, std::vector<double>> rows{
#include "tests/iir_design/analog_prototypes_reference.inc"
  };
  for (const auto& [name, numbers] : rows) {
    SCOPED_TRACE(name);
    check(Case(name, numbers));
  }
}

void ExpectClose(const TVec& found, const std::vector<TCplx>& expected, double tolerance) {
  ASSERT_EQ(found.Length(), static_cast<std::int32_t>(expected.size()));
  const double least = found.IsDouble() ? 0 : 0x1p-149;  // real parts next to the axis underflow
  for (std::int32_t i = 0; i < found.Length(); ++i) {
    const TCplx x = At(found, i);
    const TCplx y = expected[static_cast<std::size_t>(i)];
    EXPECT_LE(std::abs(x.Re - y.Re), tolerance * std::abs(y.Re) + least) << i;
    EXPECT_LE(std::abs(x.Im - y.Im), tolerance * std::abs(y.Im) + least) << i;
  }
}

TEST(AnalogPrototypes, AgreeWithSixtyDigitArithmeticPartByPart) {
  ForAllReferences([](const Case& c) {
    for (const bool is_double : {true, false}) {
      TVec z;
      TVec p;
      z.Size(1, true, is_double);
      p.Size(1, true, is_double);
      double k = 0;
      c.Design(z, p, k);
      const double tolerance = is_double ? c.Tolerance() * 0x1p-52 : 0x1p-24 + 4 * 0x1p-52;
      ExpectClose(z, c.zeros, tolerance);
      ExpectClose(p, c.poles, tolerance);
      EXPECT_NEAR(k, c.k, 4 * 0x1p-52 * c.k);
      EXPECT_EQ(p.IsDouble(), is_double);
    }
  });
}

long double WideGain(const TVec& z, const TVec& p, double k, long double w) {
  Wide h = static_cast<long double>(k);
  for (std::int32_t i = 0; i < p.Length(); ++i) {
    h /= Wide(0, w) - Wide(At(p, i).Re, At(p, i).Im);
    if (i < z.Length()) h *= Wide(0, w) - Wide(At(z, i).Re, At(z, i).Im);
  }
  return std::abs(h);
}

double Gain(const TVec& z, const TVec& p, double k, long double w) { return static_cast<double>(WideGain(z, p, k, w)); }

TEST(AnalogPrototypes, MeetTheirDefinitionsUpToTheHighestOrder) {
  TVec z;
  TVec p;
  double k = 0;
  for (const std::int32_t order : {1, 2, 51, 200, 999, 1000}) {
    SCOPED_TRACE(order);
    ButterAnalog(order, z, p, k);
    EXPECT_NEAR(Gain(z, p, k, 1), std::sqrt(0.5), 1e-12);
    ChebyshevIAnalog(order, 1, z, p, k);
    EXPECT_NEAR(Gain(z, p, k, 1), std::pow(10, -0.05), 1e-10);
    ChebyshevIIAnalog(order, 40, z, p, k);
    EXPECT_NEAR(Gain(z, p, k, 1), 0.01, 1e-10);
    EXPECT_NEAR(Gain(z, p, k, 0), 1, 1e-12);
    // A filter with a flat delay: |theta(jw)| = |theta(-jw)|, all poles different, their product 1, far off like w^-N.
    BesselAnalog(order, z, p, k);
    EXPECT_NEAR(Gain(z, p, k, 0), 1, 1e-12);
    EXPECT_NEAR(static_cast<double>(std::pow(WideGain(z, p, k, 1e3), 1.0L / order) * 1e3L), 1, 1e-3);
    double sum = 0;  // of the inverse poles: the delay at zero frequency, the product of w and 1
    for (std::int32_t i = 0; i < order; ++i)
      sum -= At(p, i).Re / (At(p, i).Re * At(p, i).Re + At(p, i).Im * At(p, i).Im);
    long double w = 0;
    for (std::int32_t n = order + 1; n <= 2 * order; ++n) w += std::log(static_cast<long double>(n));
    EXPECT_NEAR(sum, static_cast<double>(std::exp(w / static_cast<long double>(order)) / 2), 1e-12 * sum);
  }
}

TEST(AnalogPrototypes, EllipticRipplesTouchTheirBoundsInBothBands) {
  TVec z;
  TVec p;
  double k = 0;
  for (const auto& [order, ripple, attenuation] :
       {std::tuple{4, 0.1, 40.0}, {7, 1.0, 60.0}, {12, 0.001, 90.0}, {20, 2.0, 120.0}, {3, 20.0, 21.0}}) {
    EllipticAnalog(order, ripple, attenuation, z, p, k);
    const double lower = std::pow(10, -ripple / 20);
    EXPECT_NEAR(Gain(z, p, k, 1), lower, 1e-9 * lower);
    double largest = 0;
    double smallest = 1;
    for (int i = 0; i <= 4000; ++i) {
      const double gain = Gain(z, p, k, i / 4000.0L);
      largest = std::max(largest, gain);
      smallest = std::min(smallest, gain);
    }
    EXPECT_LE(largest, 1 + 1e-11);
    EXPECT_GE(smallest, lower * (1 - 1e-9));
    EXPECT_NEAR(largest, 1, 1e-3);
    EXPECT_NEAR(At(z, z.Length() - 2).Re, 0, 0);
  }
}

TEST(AnalogPrototypes, LeaveZerosOfAllPoleFiltersEmptyAsTheyWere) {
  for (const bool complex : {true, false}) {
    TVec z;
    TVec p;
    z.Size(3, complex, true);
    p.Size(3, false, true);
    double k = 0;
    ChebyshevIAnalog(3, 1, z, p, k);
    EXPECT_EQ(z.Length(), 0);
    EXPECT_EQ(z.Complex(), complex);
    EXPECT_TRUE(p.Complex());
  }
}

TEST(AnalogPrototypes, RefuseWithTheirTextsAndWriteNothing) {
  const TVec kept = {1.0, 2.0};
  TVec z = kept;
  TVec p = kept;
  TVec single;
  single.Size(2, TMtxFloatPrecision::SingleReal);
  double k = 3;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_RAISES(ButterAnalog(-1, z, single, k), ECoreError, "z.IsDouble <> p.IsDouble");
  EXPECT_RAISES(EllipticAnalog(99, -1, nan, single, z, k), ECoreError, "z.IsDouble <> p.IsDouble");
  for (const std::int32_t order : {0, -1, 1001, 1000000000}) {
    const char* const text = "not (1 <= Order <= 1000)";
    EXPECT_RAISES(ButterAnalog(order, z, p, k), ECoreError, text);
    EXPECT_RAISES(ChebyshevIAnalog(order, 1, z, p, k), ECoreError, text);
    EXPECT_RAISES(ChebyshevIIAnalog(order, 40, z, p, k), ECoreError, text);
    EXPECT_RAISES(BesselAnalog(order, z, p, k), ECoreError, text);
  }
  for (const std::int32_t order : {0, 51, 1000000000}) {
    EXPECT_RAISES(EllipticAnalog(order, 1, 40, z, p, k), ECoreError, "not (1 < Order < MaxIirOrder)");
  }
  for (const double loss : {-1.0, 3001.0, nan, inf, -inf}) {
    EXPECT_RAISES(ChebyshevIAnalog(4, loss, z, p, k), ECoreError, "not (0 < Ripple <= 3000)");
    EXPECT_RAISES(ChebyshevIIAnalog(4, loss, z, p, k), ECoreError, "not (0 < Attenuation <= 3000)");
    EXPECT_RAISES(EllipticAnalog(1, loss, 40, z, p, k), ECoreError, "not (0 < Ripple <= 3000)");
  }
  EXPECT_RAISES(EllipticAnalog(4, 0.01, 160, z, p, k), ECoreError, "Ripple out of range!");
  EXPECT_RAISES(EllipticAnalog(4, 1, inf, z, p, k), ECoreError, "Ripple out of range!");
  EXPECT_RAISES(EllipticAnalog(4, 1, nan, z, p, k), ECoreError, "not (0 < Attenuation <= 3000)");
  EXPECT_RAISES(EllipticAnalog(4, 40, 40, z, p, k), ECoreError, "not (Ripple < Attenuation)");
  EXPECT_TRUE(test::SameBits(z, kept) && test::SameBits(p, kept));
  EXPECT_EQ(k, 3);
}

}  // namespace
}  // namespace passband::IIRFilters
