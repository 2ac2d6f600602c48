#include "passband/analysis/distinct_distributions.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <span>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

// Points first + k step, k = 0 .. count - 1.
struct Grid {
  double first = 0;
  double step = 0;
  std::int32_t count = 0;
};

Grid GridOf(OpenArray means, OpenArray deviations, std::int32_t resolution, std::int32_t max_points) {
  double low = std::numeric_limits<double>::infinity();
  double high = -low;
  double narrowest = low;
  for (std::int32_t i = 0; i < means.Length(); ++i) {
    low = std::min(low, means[i] - 3 * deviations[i]);
    high = std::max(high, means[i] + 3 * deviations[i]);
    narrowest = std::min(narrowest, deviations[i]);
  }
  const double step = 3 * narrowest / resolution;
  const double points = (high - low) / step;  // may be infinite
  if (points < max_points + 1.0) return {low, step, Trunc(points)};
  return {low, (high - low) / max_points, max_points};
}

// Raises the envelope to a density.
void AddDensity(const Grid& grid, double mean, double deviation, std::span<double> envelope) {
  if (grid.step > deviation * 6 / 4) {
    const double place = std::trunc((mean - grid.first) / grid.step);
    double& point = envelope[static_cast<std::size_t>(EnsureRange(0.0, place, grid.count - 1.0))];
    point = std::max(point, 1 / grid.step);
    return;
  }
  const double height = std::numbers::inv_sqrtpi / (std::numbers::sqrt2 * deviation);
  for (std::size_t k = 0; k < envelope.size(); ++k) {
    const double t = (grid.first + grid.step * static_cast<double>(k) - mean) / deviation;
    envelope[k] = std::max(envelope[k], height * std::exp(-t * t / 2));
  }
}

}  // namespace

double DistinctCDF(double X, double Mean, double StdDev) {
  const double distance = std::abs(X - Mean);
  if (StdDev == 0) return distance > 0 ? 100 : distance;
  if (!(StdDev > 0)) ERaise("NormalCDF: not (StdDev > 0)");
  return 100 * std::erf(distance / StdDev * (std::numbers::sqrt2 / 2));
}

double DistinctCDF(OpenArray Means, OpenArray StdDevs, std::int32_t Resolution, std::int32_t MaxPoints) {
  if (Means.Length() != StdDevs.Length()) throw Exception("Length(Means) <> Length(StdDevs)");
  if (Means.Length() < 2) ERaise("DistinctCDF: Length(Means) < 2");
  if (Resolution < 1) ERaise("DistinctCDF: Resolution < 1");
  if (MaxPoints < 1) ERaise("DistinctCDF: MaxPoints < 1");
  for (std::int32_t i = 0; i < Means.Length(); ++i) {
    if (IsNanInf(Means[i]) || IsNanInf(StdDevs[i]) || StdDevs[i] < 0) {
      ERaise("DistinctCDF: a mean or a deviation is not finite or below 0");
    }
  }
  const Grid grid = GridOf(Means, StdDevs, Resolution, MaxPoints);
  if (grid.count == 0 || !(grid.step > 0)) return 0;  // all of them the same single point
  const Borrowed<TVec> envelope;
  envelope->Size(grid.count, TMtxFloatPrecision::DoubleReal);
  envelope->SetZero();
  for (std::int32_t i = 0; i < Means.Length(); ++i) AddDensity(grid, Means[i], StdDevs[i], envelope->Values());
  return (envelope->Sum() * grid.step - 1) / (Means.Length() - 1) * 100;
}

}  // namespace passband::SignalUtils
