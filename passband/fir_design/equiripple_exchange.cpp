#include "passband/fir_design/equiripple_exchange_internal.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

#include "passband/fir_design/equiripple_extrema_internal.h"
#include "passband/fir_design/equiripple_start_internal.h"

namespace passband::OptimalFir::detail {
namespace {

using Positions = std::vector<std::int64_t>;

// Shares of the levelled error.
constexpr double kRough = 0.01;  // tolerance from which the neighbours of nodes do not matter
constexpr double kClose = 0.3;   // excess below which they are looked at
constexpr double kStuck = 1e-5;  // excess that may stay when iterations change nothing
constexpr double kWild = 1e3;    // largest error that shows that a segment has too few nodes, when it grows

constexpr double kLarge = 0.3;     // error, of the largest one, from which a new extremum counts
constexpr std::int32_t kIdle = 4;  // iterations that are allowed to bring nothing

// Weighted errors at the points; at nodes they are known.
std::vector<double> ErrorsAt(const Target& target, const LevelledInterpolant& interpolant, const Positions& points) {
  const Positions& nodes = interpolant.Nodes().positions;
  Positions others;
  others.reserve(points.size() - nodes.size());
  std::set_difference(points.begin(), points.end(), nodes.begin(), nodes.end(), std::back_inserter(others));
  std::vector<double> found(others.size());
  interpolant.Errors(target.Points(std::move(others)), found);
  std::vector<double> errors(points.size());
  double level = interpolant.Deviation();
  for (std::size_t i = 0, k = 0; i < points.size(); ++i) {
    if (k < nodes.size() && points[i] == nodes[k]) {
      errors[i] = level;
      level = -level;
      ++k;
    } else {
      errors[i] = found[i - k];
    }
  }
  return errors;
}

double Largest(const std::vector<double>& errors) {
  double largest = 0;
  for (const double e : errors) largest = std::max(largest, std::abs(e));
  return largest;
}

// Where the levelled error is 0, it has no signs that could alternate: the point of the largest error takes the place
// of the node next to it.
void ReplaceOne(const Positions& points, const std::vector<double>& errors, Positions& nodes) {
  const auto smaller = [](double a, double b) { return std::abs(a) < std::abs(b); };
  const auto largest = std::max_element(errors.begin(), errors.end(), smaller);
  const std::int64_t p = points[static_cast<std::size_t>(largest - errors.begin())];
  auto node = std::lower_bound(nodes.begin(), nodes.end(), p);
  if (node == nodes.end() || (node != nodes.begin() && p - *(node - 1) < *node - p)) --node;
  *node = p;
}

// Moves a node to the segment of the largest error from the one with the smallest. False when none can give a node.
bool MoveNode(const FrequencyGrid& grid, const Positions& points, const std::vector<double>& errors, Positions& nodes) {
  const std::size_t count = grid.Segments().size();
  std::vector<double> largest(count);
  std::vector<std::int64_t> has(count);
  for (std::size_t i = 0; i < points.size(); ++i) {
    double& of_segment = largest[grid.SegmentOf(points[i])];
    of_segment = std::max(of_segment, std::abs(errors[i]));
  }
  for (const std::int64_t p : nodes) ++has[grid.SegmentOf(p)];
  std::size_t to = 0;
  std::size_t from = count;
  for (std::size_t s = 0; s < count; ++s) {
    if (largest[s] > largest[to]) to = s;
    if (has[s] > 2 && (from == count || largest[s] < largest[from])) from = s;
  }
  if (from == count || from == to || has[to] >= grid.Segments()[to].count) return false;
  nodes = WithNodeMoved(grid, nodes, from, to);
  return true;
}

class Run {
 public:
  Run(const Target& target, Positions nodes, const ExchangeLimits& limits) : target_(target), limits_(limits) {
    result_.nodes = std::move(nodes);
  }

  ExchangeResult Result() {
    while (!Finished()) Exchange();
    return std::move(result_);
  }

 private:
  // Levels the error at the nodes and looks around. True when that is the end.
  bool Finished() {
    const LevelledInterpolant interpolant(target_.Points(result_.nodes));
    ++result_.iterations;
    result_.deviation = std::abs(interpolant.Deviation());
    result_.noise = std::max(interpolant.Noise(), target_.Floor());
    const double enough = result_.deviation * (1 + limits_.tolerance) + result_.noise;
    points_ = Candidates(*target_.grid, result_.nodes, look_);
    errors_ = ErrorsAt(target_, interpolant, points_);
    if (look_ == Look::Beside && Largest(errors_) <= enough) {  // is there nothing elsewhere either?
      points_ = Candidates(*target_.grid, result_.nodes, Look::Between);
      errors_ = ErrorsAt(target_, interpolant, points_);
    }
    result_.largest = Largest(errors_);
    result_.levelled = result_.largest <= enough && (look_ == Look::Beside || limits_.tolerance >= kRough);
    return result_.levelled || Stuck() || Lost() || result_.iterations >= limits_.iterations;
  }

  // Rounding errors are larger than they look: the errors are as level as they can be.
  bool Stuck() {
    const double excess = result_.largest - result_.deviation;
    idle_ = excess < excess_ / 2 ? 0 : idle_ + 1;
    excess_ = std::min(excess, excess_);
    if (idle_ < kIdle || !(excess <= kStuck * result_.deviation)) return false;
    result_.noise = std::max(result_.noise, excess);
    result_.levelled = true;
    return true;
  }

  bool Lost() const {
    return result_.iterations >= kIdle && !(result_.deviation >= std::max(limits_.least, result_.noise));
  }

  void Exchange() {
    std::vector<Extremum> extrema = AlternatingExtrema(points_, errors_, result_.nodes, kLarge * result_.largest);
    const double ratio = result_.largest / result_.deviation;
    const bool growing = ratio > std::max(kWild, ratio_) && extrema.size() == result_.nodes.size();
    ratio_ = ratio;
    if (growing && !moved_ && MoveNode(*target_.grid, points_, errors_, result_.nodes)) {
      moved_ = true;
    } else if (extrema.size() >= result_.nodes.size()) {
      Thin(extrema, result_.nodes.size());
      result_.nodes = Vertices(*target_.grid, points_, errors_, extrema);
    } else {
      ReplaceOne(points_, errors_, result_.nodes);
    }
    look_ = ratio <= 1 + kClose ? Look::Beside : Look::Between;
  }

  const Target& target_;
  ExchangeLimits limits_;
  ExchangeResult result_;
  Positions points_;            // what the iteration has looked at
  std::vector<double> errors_;  // there
  Look look_ = Look::Between;
  double excess_ = std::numeric_limits<double>::infinity();  // the least so far
  std::int32_t idle_ = 0;                                    // iterations that have not halved it
  double ratio_ = std::numeric_limits<double>::infinity();   // largest error over levelled error, one iteration ago
  bool moved_ = false;
};

}  // namespace

ExchangeResult Exchange(const Target& target, Positions nodes, const ExchangeLimits& limits) {
  return Run(target, std::move(nodes), limits).Result();
}

}  // namespace passband::OptimalFir::detail
