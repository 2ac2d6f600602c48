#include "passband/vector_core/normal_distribution.h"

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "tests/test_support.h"

namespace passband {
namespace {

TEST(NormalDistributionTest, BodyAndTailsAgreeWithHighPrecision) {
  static const std::map<std::string, std::vector<double>> table{
#include "tests/vector_core/normal_distribution_reference.inc"
  };
  const auto& rows = table.at("cases");
  for (std::size_t i = 0; i < rows.size(); i += 5) {
    const double x = rows[i];
    // Below the smallest normal number, steps of the smallest one.
    const auto tolerance = [](double value) { return std::max(2e-15 * value, 5e-324); };
    EXPECT_NEAR(NormalCDF(x, rows[i + 1], rows[i + 2]), rows[i + 3], tolerance(rows[i + 3])) << x;
    EXPECT_NEAR(NormalPDF(x, rows[i + 1], rows[i + 2]), rows[i + 4], tolerance(rows[i + 4])) << x;
  }
}

TEST(NormalDistributionTest, InfinityNanAndRefusals) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(NormalCDF(kInfinity), 1);
  EXPECT_EQ(NormalCDF(-kInfinity), 0);
  EXPECT_EQ(NormalPDF(kInfinity), 0);
  EXPECT_EQ(NormalPDF(-1e300), 0);
  EXPECT_TRUE(std::isnan(NormalCDF(std::nan(""))));
  EXPECT_TRUE(std::isnan(NormalPDF(0, std::nan(""))));
  for (const double bad : {0.0, -1.0, std::nan("")}) {
    EXPECT_RAISES(NormalCDF(0, 0, bad), ECoreError, "NormalCDF: not (StdDev > 0)");
    EXPECT_RAISES(NormalPDF(0, 0, bad), ECoreError, "NormalPDF: not (StdDev > 0)");
  }
}

}  // namespace
}  // namespace passband
