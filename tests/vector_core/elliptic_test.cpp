#include "passband/vector_core/elliptic.h"

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "tests/test_support.h"

namespace passband {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

const std::vector<double>& Reference(const std::string& name) {
  static const std::map<std::string, std::vector<double>> table{
#include "tests/vector_core/elliptic_reference.inc"
  };
  return table.at(name);
}

TEST(EllipCompleteTest, AgreesWithHighPrecisionUpToTheSingularity) {
  const auto& rows = Reference("complete");
  for (std::size_t i = 0; i < rows.size(); i += 3) {
    double k = 0;
    double e = 0;
    EllipComplete(rows[i], k, e);
    EXPECT_NEAR(k, rows[i + 1], 1e-15 * rows[i + 1]) << rows[i];
    EXPECT_NEAR(e, rows[i + 2], 1e-15 * rows[i + 2]) << rows[i];
    EXPECT_EQ(EllipComplete(rows[i]), k);
  }
  double k = 0;
  double e = 0;
  EllipComplete(1, k, e);
  EXPECT_EQ(k, kInfinity);
  EXPECT_EQ(e, 1);
}

// The arguments reach 18, several periods; an error of half a unit in the last place of u moves the functions by their
// derivatives, cn dn, sn dn and m sn cn, and the quarter periods of large negative m are short.
TEST(EllipJacobyTest, AgreesWithHighPrecisionToTheConditionOfTheFunctions) {
  const auto& rows = Reference("jacobi");
  for (std::size_t i = 0; i < rows.size(); i += 5) {
    const double u = rows[i];
    const double m = rows[i + 1];
    double sn = 0;
    double cn = 0;
    double dn = 0;
    EllipJacoby(u, m, sn, cn, dn);
    const double of_u = 4e-16 * std::abs(u);
    EXPECT_NEAR(sn, rows[i + 2], of_u * std::abs(cn * dn) + 1e-15 * std::abs(sn)) << u << ", " << m;
    EXPECT_NEAR(cn, rows[i + 3], of_u * std::abs(sn * dn) + 1e-15 * std::abs(cn)) << u << ", " << m;
    EXPECT_NEAR(dn, rows[i + 4], of_u * std::abs(m * sn * cn) + 1e-15 * std::abs(dn)) << u << ", " << m;
  }
}

TEST(EllipJacobyTest, LimitsAndSymmetry) {
  double sn = 0;
  double cn = 0;
  double dn = 0;
  EllipJacoby(0.7, 0, sn, cn, dn);
  EXPECT_NEAR(sn, std::sin(0.7), 2e-16);
  EXPECT_NEAR(cn, std::cos(0.7), 2e-16);
  EXPECT_EQ(dn, 1);
  EllipJacoby(-0.7, 1, sn, cn, dn);
  EXPECT_NEAR(sn, std::tanh(-0.7), 2e-16);
  EXPECT_NEAR(cn, 1 / std::cosh(0.7), 2e-16);
  EXPECT_EQ(dn, cn);
  for (const double u : {0.0, 1e-200, -1e-200, 1e-320}) {
    EllipJacoby(u, 0.3, sn, cn, dn);
    EXPECT_NEAR(sn, u, std::abs(u) * 1e-15);
    EXPECT_EQ(cn, 1);
    EXPECT_EQ(dn, 1);
  }
}

TEST(EllipticRefusals, NameTheFaultAndChangeNothing) {
  double a = 7;
  double b = 8;
  double c = 9;
  for (const double m : {1.0000000000000002, kInfinity, std::nan("")}) {
    EXPECT_RAISES(EllipComplete(m), ECoreError, "EllipComplete: not (M <= 1)");
    EXPECT_RAISES(EllipComplete(m, a, b), ECoreError, "EllipComplete: not (M <= 1)");
    EXPECT_RAISES(EllipJacoby(0.5, m, a, b, c), ECoreError, "EllipJacoby: not (M <= 1)");
  }
  EXPECT_RAISES(EllipJacoby(kInfinity, 0.5, a, b, c), ECoreError, "EllipJacoby: U is not finite");
  EXPECT_EQ(a + b + c, 24);
}

}  // namespace
}  // namespace passband
