#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "passband/fir_design/equiripple_exchange_internal.h"

namespace passband::OptimalFir::detail {
namespace {

using Positions = std::vector<std::int64_t>;
using Segment = FrequencyGrid::Segment;

constexpr std::int64_t kInner = 3;  // points looked at between two nodes
constexpr double kDoubling = 2;     // growth of the frequency within which weighted errors may change
constexpr double kRough = 0.01;     // tolerance from which the neighbours of nodes do not matter
constexpr double kStuck = 1e-5;     // excess that may stay when iterations change nothing
constexpr std::int32_t kIdle = 4;   // iterations that are allowed to bring nothing
constexpr double kLarge = 0.3;      // error, of the largest one, from which a new extremum counts
constexpr double kClose = 0.3;      // excess below which the neighbours of nodes are looked at

// What an iteration looks at between the nodes.
enum class Look { Between, Beside };

// Points between the places a < b of one segment, closer and closer to a, as long as the frequency grows by a large factor
// from one to the next: errors that are weighted by a power of the frequency change within it.
void AddNearZero(const FrequencyGrid& grid, std::int64_t a, std::int64_t b, Positions& points) {
  const double low = kDoubling * grid.Frequency(a);
  const std::size_t before = points.size();
  for (std::int64_t p = a + (b - a) / 2; p > a && grid.Frequency(b) > low; p = a + (p - a) / 2) {
    points.push_back(p);
    b = p;
  }
  std::reverse(points.begin() + static_cast<std::ptrdiff_t>(before), points.end());
}

// The points of one segment between the nodes, or ends, a < b: three between them, or their neighbours and the middle.
void AddPoints(const FrequencyGrid& grid, std::int64_t a, std::int64_t b, Look look, Positions& points) {
  const std::int64_t inside = b - a - 1;
  if (inside <= kInner) {
    for (std::int64_t p = a + 1; p < b; ++p) points.push_back(p);
    return;
  }
  const std::int64_t quarter = (b - a) / 4;
  const std::int64_t middle = a + (b - a) / 2;
  if (look == Look::Beside) points.push_back(a + 1);
  const std::int64_t first = look == Look::Beside ? middle : a + quarter;
  if (grid.IsShaped()) AddNearZero(grid, points.back(), first, points);
  points.push_back(first);
  if (look == Look::Between) points.push_back(middle);
  points.push_back(look == Look::Beside ? b - 1 : b - quarter);
}

// Everything an iteration looks at: the nodes, the ends of segments, points between them. Stretches without a node are
// cut so that they are not longer than the distance of nodes on average.
Positions Candidates(const FrequencyGrid& grid, const Positions& nodes, Look look) {
  const std::int64_t average = std::max<std::int64_t>(1, grid.Size() / static_cast<std::int64_t>(nodes.size()));
  Positions points;
  points.reserve(8 * nodes.size());
  std::size_t k = 0;
  for (const Segment& segment : grid.Segments()) {
    const std::int64_t last = segment.start + segment.count - 1;
    std::int64_t a = segment.start;
    points.push_back(a);
    const auto advance = [&](std::int64_t b) {
      const std::int64_t from = a;
      const std::int64_t parts = std::max<std::int64_t>(1, (b - a) / average);
      for (std::int64_t i = 1; i <= parts; ++i) {
        const std::int64_t to = from + i * (b - from) / parts;
        AddPoints(grid, a, to, look, points);
        points.push_back(to);
        a = to;
      }
    };
    for (; k < nodes.size() && nodes[k] <= last; ++k) {
      if (nodes[k] > a) advance(nodes[k]);
    }
    if (last > a) advance(last);
  }
  return points;
}

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

struct Extremum {
  std::size_t index;  // among the candidates
  double error;
};

// The largest error of each run of one sign that has a node in it, or an error that is not small against the largest one.
// What is left out would otherwise take the places of nodes elsewhere, all at once where there are many bands.
std::vector<Extremum> AlternatingExtrema(const Positions& points, const std::vector<double>& errors,
                                         const Positions& nodes, double large) {
  std::vector<Extremum> extrema;
  Extremum run{0, 0};
  bool has_node = false;
  const auto close = [&] {
    if (!has_node && !(std::abs(run.error) >= large)) return;
    if (extrema.empty() || (run.error > 0) != (extrema.back().error > 0)) {
      extrema.push_back(run);
    } else if (std::abs(run.error) > std::abs(extrema.back().error)) {
      extrema.back() = run;
    }
  };
  for (std::size_t i = 0, k = 0; i < errors.size(); ++i) {
    const double e = errors[i];
    const bool is_node = k < nodes.size() && nodes[k] == points[i];
    if (is_node) ++k;
    if (!(std::abs(e) > 0)) continue;
    if (run.error == 0 || (e > 0) != (run.error > 0)) {
      if (run.error != 0) close();
      run = {i, e};
      has_node = false;
    } else if (std::abs(e) > std::abs(run.error)) {
      run = {i, e};
    }
    has_node = has_node || is_node;
  }
  if (run.error != 0) close();
  return extrema;
}

// Leaves `count` of them, still alternating, and the largest among them: an end goes alone, an inner one with its smaller
// neighbour.
void Thin(std::vector<Extremum>& extrema, std::size_t count) {
  const auto size_of = [&](std::size_t i) { return std::abs(extrema[i].error); };
  while (extrema.size() > count) {
    const std::size_t last = extrema.size() - 1;
    std::size_t least = size_of(0) < size_of(last) ? 0 : last;
    if (extrema.size() > count + 1) {
      for (std::size_t i = 0; i <= last; ++i) {
        if (size_of(i) < size_of(least)) least = i;
      }
    }
    auto first = extrema.begin() + static_cast<std::ptrdiff_t>(least);
    if (least == 0 || least == last) {
      extrema.erase(first);
    } else {
      if (size_of(least - 1) < size_of(least + 1)) --first;
      extrema.erase(first, first + 2);
    }
  }
}

// The grid point next to the vertex of the parabola through candidate i and its neighbours, strictly between those.
std::int64_t Vertex(const Positions& points, const std::vector<double>& errors, std::size_t i) {
  const std::int64_t left = points[i - 1];
  const std::int64_t right = points[i + 1];
  const auto a = static_cast<double>(points[i] - left);
  const auto b = static_cast<double>(right - points[i]);
  const double sign = std::copysign(1.0, errors[i]);
  const double fall_left = sign * (errors[i] - errors[i - 1]);
  const double fall_right = sign * (errors[i] - errors[i + 1]);
  const double shift = (fall_left * b * b - fall_right * a * a) / (2 * (fall_left * b + fall_right * a));
  if (!(std::abs(shift) < a + b)) return points[i];
  return std::clamp(points[i] + static_cast<std::int64_t>(std::nearbyint(shift)), left + 1, right - 1);
}

bool IsInner(const FrequencyGrid& grid, const Positions& points, std::size_t i) {
  if (i == 0 || i + 1 == points.size()) return false;
  const Segment& segment = grid.Segments()[grid.SegmentOf(points[i])];
  return points[i - 1] >= segment.start && points[i + 1] < segment.start + segment.count;
}

Positions NextNodes(const FrequencyGrid& grid, const Positions& points, const std::vector<double>& errors,
                    const std::vector<Extremum>& extrema) {
  Positions next;
  for (const Extremum& extremum : extrema) {
    const std::int64_t at = points[extremum.index];
    const std::int64_t p = IsInner(grid, points, extremum.index) ? Vertex(points, errors, extremum.index) : at;
    next.push_back(next.empty() || p > next.back() ? p : std::max(at, next.back() + 1));
  }
  return next;
}

// Where the levelled error is 0, it has no signs that could alternate: the point of the largest error takes the place of
// the node next to it.
void ReplaceOne(const Positions& points, const std::vector<double>& errors, Positions& nodes) {
  const auto smaller = [](double a, double b) { return std::abs(a) < std::abs(b); };
  const auto largest = std::max_element(errors.begin(), errors.end(), smaller);
  const std::int64_t p = points[static_cast<std::size_t>(largest - errors.begin())];
  auto node = std::lower_bound(nodes.begin(), nodes.end(), p);
  if (node == nodes.end() || (node != nodes.begin() && p - *(node - 1) < *node - p)) --node;
  *node = p;
}

}  // namespace

ExchangeResult Exchange(const Target& target, Positions nodes, const ExchangeLimits& limits) {
  ExchangeResult result;
  result.nodes = std::move(nodes);
  Look look = Look::Between;
  double excess = std::numeric_limits<double>::infinity();
  std::int32_t idle = 0;  // iterations that have not brought the errors closer together
  while (true) {
    const LevelledInterpolant interpolant(target.Points(result.nodes));
    ++result.iterations;
    result.deviation = std::abs(interpolant.Deviation());
    result.noise = std::max(interpolant.Noise(), target.Floor());
    const double enough = result.deviation * (1 + limits.tolerance) + result.noise;
    Positions points = Candidates(*target.grid, result.nodes, look);
    std::vector<double> errors = ErrorsAt(target, interpolant, points);
    if (look == Look::Beside && Largest(errors) <= enough) {  // is there nothing elsewhere either?
      points = Candidates(*target.grid, result.nodes, Look::Between);
      errors = ErrorsAt(target, interpolant, points);
    }
    result.largest = Largest(errors);
    if (result.largest <= enough && (look == Look::Beside || limits.tolerance >= kRough)) {
      result.levelled = true;
      return result;
    }
    const double now = result.largest - result.deviation;
    idle = now < excess / 2 ? 0 : idle + 1;
    excess = std::min(excess, now);
    if (idle >= kIdle && now <= kStuck * result.deviation) {  // rounding errors are larger than they look
      result.noise = std::max(result.noise, now);
      result.levelled = true;
      return result;
    }
    const bool bad_start = result.iterations == 1 && !(result.largest <= limits.first);
    const bool lost = result.iterations >= kIdle && !(result.deviation >= std::max(limits.least, result.noise));
    if (bad_start || lost || result.iterations >= limits.iterations) return result;
    std::vector<Extremum> extrema = AlternatingExtrema(points, errors, result.nodes, kLarge * result.largest);
    if (extrema.size() >= result.nodes.size()) {
      Thin(extrema, result.nodes.size());
      result.nodes = NextNodes(*target.grid, points, errors, extrema);
    } else {
      ReplaceOne(points, errors, result.nodes);
    }
    look = result.largest <= (1 + kClose) * result.deviation ? Look::Beside : Look::Between;
  }
}

}  // namespace passband::OptimalFir::detail
