#include "passband/fir_design/equiripple_extrema_internal.h"

#include <algorithm>
#include <cmath>

namespace passband::OptimalFir::detail {
namespace {

using Positions = std::vector<std::int64_t>;
using Segment = FrequencyGrid::Segment;

constexpr std::int64_t kInner = 3;  // points looked at between two nodes
constexpr double kDoubling = 2;     // growth of the frequency within which weighted errors may change

// Points between the places a < b of one segment, closer and closer to a, as long as the frequency grows by a large
// factor from one to the next: errors that are weighted by a power of the frequency change within it.
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

}  // namespace

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

Positions Vertices(const FrequencyGrid& grid, const Positions& points, const std::vector<double>& errors,
                   const std::vector<Extremum>& extrema) {
  Positions next;
  for (const Extremum& extremum : extrema) {
    const std::int64_t at = points[extremum.index];
    const std::int64_t p = IsInner(grid, points, extremum.index) ? Vertex(points, errors, extremum.index) : at;
    next.push_back(next.empty() || p > next.back() ? p : std::max(at, next.back() + 1));
  }
  return next;
}

}  // namespace passband::OptimalFir::detail
