#include "passband/fir_design/equiripple_start_internal.h"

#include <algorithm>
#include <cmath>

namespace passband::OptimalFir::detail {
namespace {

using Positions = std::vector<std::int64_t>;

// The nodes of one segment, places from 0 to 1 along it.
struct Part {
  std::int64_t first = 0;
  std::int64_t size = 0;
  std::vector<double> places;
  std::int64_t wanted = 0;
  double missing = 0;  // what rounding has taken from `wanted`
};

std::vector<Part> PartsOf(const FrequencyGrid& from, const Positions& nodes, const FrequencyGrid& grid) {
  std::vector<Part> parts;
  std::size_t k = 0;
  for (std::size_t s = 0; s < grid.Segments().size(); ++s) {
    const FrequencyGrid::Segment& old = from.Segments()[s];
    Part part{grid.Segments()[s].start, grid.Segments()[s].count, {}, 0, 0};
    const double scale = old.count > 1 ? 1 / static_cast<double>(old.count - 1) : 0;
    for (; k < nodes.size() && nodes[k] < old.start + old.count; ++k) {
      part.places.push_back(static_cast<double>(nodes[k] - old.start) * scale);
    }
    parts.push_back(std::move(part));
  }
  return parts;
}

// Shares out `count` nodes like the old ones: intervals between nodes grow by one factor.
void ShareOut(std::vector<Part>& parts, std::size_t count) {
  double intervals = 0;
  double segments = 0;
  for (const Part& part : parts) {
    if (part.places.empty()) continue;
    intervals += static_cast<double>(part.places.size() - 1);
    ++segments;
  }
  const double factor = intervals > 0 ? (static_cast<double>(count) - segments) / intervals : 1;
  auto left = static_cast<std::int64_t>(count);
  for (Part& part : parts) {
    const double share = part.places.empty() ? 0 : 1 + (static_cast<double>(part.places.size()) - 1) * factor;
    part.wanted = std::clamp<std::int64_t>(static_cast<std::int64_t>(share), 0, part.size);
    part.missing = share - static_cast<double>(part.wanted);
    left -= part.wanted;
  }
  for (; left != 0; left += left > 0 ? -1 : 1) {
    const double way = left > 0 ? 1 : -1;
    Part* best = nullptr;
    for (Part& part : parts) {
      if (left > 0 ? part.wanted >= part.size : part.wanted <= 0) continue;
      if (best == nullptr || way * (part.missing - best->missing) > 0) best = &part;
    }
    best->wanted += left > 0 ? 1 : -1;
    best->missing -= way;
  }
}

// The place at a fraction 0 .. 1 of the way through the nodes.
double PlaceAt(const std::vector<double>& places, double fraction) {
  const double at = fraction * static_cast<double>(places.size() - 1);
  const auto i = std::min(static_cast<std::size_t>(at), places.size() - 2);
  return places[i] + (at - static_cast<double>(i)) * (places[i + 1] - places[i]);
}

// The nodes of all segments, each with the wanted number of them along the curve of the old ones.
Positions Spread(const std::vector<Part>& parts) {
  Positions nodes;
  for (const Part& part : parts) {
    const std::vector<double> places = part.places.size() < 2 ? std::vector<double>{0, 1} : part.places;
    std::int64_t low = part.first;
    for (std::int64_t j = 0; j < part.wanted; ++j) {
      const double fraction = part.wanted > 1 ? static_cast<double>(j) / static_cast<double>(part.wanted - 1) : 0;
      const double place = PlaceAt(places, fraction) * static_cast<double>(part.size - 1);
      const std::int64_t high = part.first + part.size - (part.wanted - j);
      nodes.push_back(std::clamp(part.first + static_cast<std::int64_t>(std::nearbyint(place)), low, high));
      low = nodes.back() + 1;
    }
  }
  return nodes;
}

}  // namespace

Positions EvenNodes(const FrequencyGrid& grid, std::size_t count) {
  Positions nodes(count);
  const double step = static_cast<double>(grid.Size() - 1) / static_cast<double>(count - 1);
  for (std::size_t j = 0; j + 1 < count; ++j) nodes[j] = static_cast<std::int64_t>(static_cast<double>(j) * step);
  nodes.back() = grid.Size() - 1;
  return nodes;
}

Positions StretchedNodes(const FrequencyGrid& from, const Positions& nodes, const FrequencyGrid& grid,
                         std::size_t count) {
  std::vector<Part> parts = PartsOf(from, nodes, grid);
  ShareOut(parts, count);
  return Spread(parts);
}

Positions WithNodeMoved(const FrequencyGrid& grid, const Positions& nodes, std::size_t from, std::size_t to) {
  std::vector<Part> parts = PartsOf(grid, nodes, grid);
  for (Part& part : parts) part.wanted = static_cast<std::int64_t>(part.places.size());
  --parts[from].wanted;
  ++parts[to].wanted;
  return Spread(parts);
}

}  // namespace passband::OptimalFir::detail
