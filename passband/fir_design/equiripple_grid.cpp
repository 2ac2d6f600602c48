#include "passband/fir_design/equiripple_grid_internal.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace passband::OptimalFir::detail {
namespace {

constexpr Wide kPi = std::numbers::pi_v<Wide>;

template <class R>
R IntegerPower(R base, int power) {
  switch (power) {
    case 1:
      return base;
    case 2:
      return base * base;
    case -1:
      return 1 / base;
    case -2:
      return 1 / (base * base);
    default:
      return 1;
  }
}

// The power of the frequency that the desired amplitude of the type is proportional to.
int PowerOf(TRemezType type) {
  switch (type) {
    case TRemezType::rmtDifferentiator:
      return 1;
    case TRemezType::rmtIntegrator:
      return -1;
    case TRemezType::rmtDoubleDifferentiator:
      return 2;
    case TRemezType::rmtDoubleIntegrator:
      return -2;
    default:
      return 0;
  }
}

// The power of two at or below the largest magnitude; 1 where all are 0.
double PowerOfTwoIn(std::span<const double> values) {
  double largest = 0;
  for (const double v : values) largest = std::max(largest, std::abs(v));
  return largest > 0 ? std::ldexp(1.0, std::ilogb(largest)) : 1.0;
}

constexpr double kShapedFrom = 1e-6;  // weights at or below this frequency are not shaped
constexpr double kStepWeight = 1e6;   // weight of the mean between touching bands, relative to theirs
constexpr double kTouching = 1e-6;    // distance of touching bands, in grid spacings

}  // namespace

std::size_t BandPlan::CosineCount(std::int32_t length) const {
  return static_cast<std::size_t>(length / 2 + (length % 2 == 1 && !Antisymmetric() ? 1 : 0));
}

std::int32_t BandPlan::LengthOf(std::size_t cosines, bool odd) const {
  const auto twice = static_cast<std::int32_t>(2 * cosines);
  return odd ? (Antisymmetric() ? twice + 1 : twice - 1) : twice;
}

Units::Units(const BandPlan& bands, double fs)
    : amplitude(static_cast<Wide>(PowerOfTwoIn(bands.gains)) *
                IntegerPower(2 * kPi * static_cast<Wide>(fs), PowerOf(bands.type))),
      weight(static_cast<Wide>(PowerOfTwoIn(bands.weights))) {}

GridPlan::GridPlan(const BandPlan& bands, std::int32_t length) {
  spacing = 0.5 / (static_cast<double>(bands.density) * static_cast<double>(length / 2));
  edges.assign(bands.edges.begin(), bands.edges.end());
  if (bands.Antisymmetric() && !edges.empty()) {
    edges.front() = std::max(edges.front(), spacing);
    if (length % 2 == 1) edges.back() = std::min(edges.back(), 0.5 - spacing);
  }
  for (std::size_t j = 0; 2 * j + 1 < edges.size(); ++j) {
    counts.push_back(std::trunc((edges[2 * j + 1] - edges[2 * j]) / spacing));
  }
}

FrequencyGrid::FrequencyGrid(const BandPlan& bands, std::int32_t length)
    : power_(PowerOf(bands.type)), fixed_weights_(bands.fixed_weights) {
  if (bands.Antisymmetric()) {
    factor_ = length % 2 == 1 ? Factor::Sin : Factor::SinHalf;
  } else if (length % 2 == 0) {
    factor_ = Factor::CosHalf;
  }
  const GridPlan plan(bands, length);
  const double gain_unit = PowerOfTwoIn(bands.gains);
  const double weight_unit = PowerOfTwoIn(bands.weights);
  for (std::size_t j = 0; j < bands.gains.size(); ++j) {
    double low = plan.edges[2 * j];
    double high = plan.edges[2 * j + 1];
    if (plan.counts[j] < 2) {  // the clipped edges of a narrow band may have changed places
      const double quarter = (bands.edges[2 * j + 1] - bands.edges[2 * j]) / 4;
      low = std::min(low, bands.edges[2 * j] + quarter);
      high = std::max(high, bands.edges[2 * j + 1] - quarter);
    }
    const auto count = static_cast<std::int64_t>(std::max(2.0, plan.counts[j]));
    const double step = (high - low) / static_cast<double>(count - 1);
    Segment band{0, count, 0, low, high, step, count, bands.gains[j] / gain_unit, bands.weights[j] / weight_unit};
    for (const double f : {low, high}) {
      scale_ = std::max(scale_, std::abs(band.gain) * IntegerPower(f, power_) * WeightAt(band.weight, f));
    }
    if (factor_ == Factor::CosHalf && high == 0.5) {
      --band.count;
      fixed_error_ = std::max(fixed_error_, std::abs(band.gain) * band.weight);
    }
    if (!segments_.empty() && low - segments_.back().high <= kTouching * plan.spacing) Join(band);
    AddBand(band);
  }
}

// Takes the edge that a band shares with the one before out of both, and makes a point of its own of it. Where the gain
// has a step there, the best value is between the gains; a large weight holds it.
void FrequencyGrid::Join(Segment& band) {
  Segment& before = segments_.back();
  const double sum = before.weight + band.weight;
  const double mean = (before.gain * before.weight + band.gain * band.weight) / sum;
  const bool step = before.gain != band.gain;
  const Segment edge{
      0, 1, 0, band.low, band.low, 0, 1, mean, step ? kStepWeight * sum : std::max(before.weight, band.weight)};
  const double weight = WeightAt(before.weight / sum * band.weight, band.low);
  fixed_error_ = std::max(fixed_error_, std::abs(before.gain - band.gain) * IntegerPower(band.low, power_) * weight);
  --before.count;
  --size_;
  if (before.count == 0) segments_.pop_back();
  AddBand(edge);
  ++band.skip;
  --band.count;
}

void FrequencyGrid::AddBand(Segment band) {
  if (band.count < 1) return;
  band.start = size_;
  size_ += band.count;
  segments_.push_back(band);
}

std::size_t FrequencyGrid::SegmentOf(std::int64_t position) const {
  const auto behind = [](std::int64_t p, const Segment& segment) { return p < segment.start; };
  const auto next = std::upper_bound(segments_.begin() + 1, segments_.end(), position, behind);
  return static_cast<std::size_t>(next - segments_.begin()) - 1;
}

double FrequencyGrid::Frequency(std::int64_t position) const {
  return segments_[SegmentOf(position)].FrequencyAt(position);
}

PointSet FrequencyGrid::Points(std::vector<std::int64_t> positions) const {
  const std::size_t count = positions.size();
  PointSet points{std::move(positions), {}, {}, std::vector<double>(count), std::vector<double>(count)};
  std::vector<double> frequencies(count);
  std::size_t i = 0;
  for (const Segment& segment : segments_) {
    const std::size_t first = i;
    for (; i < count && points.positions[i] < segment.start + segment.count; ++i) {
      frequencies[i] = segment.FrequencyAt(points.positions[i]);
    }
    std::fill(points.desired.data() + first, points.desired.data() + i, segment.gain);
    std::fill(points.weight.data() + first, points.weight.data() + i, segment.weight);
  }
  if (IsShaped()) {
    for (std::size_t k = 0; k < count; ++k) {
      points.desired[k] *= IntegerPower(frequencies[k], power_);
      points.weight[k] = WeightAt(points.weight[k], frequencies[k]);
    }
  }
  PlaceSet places(frequencies);
  const auto reduce = [&](const auto& factor) {
    for (std::size_t k = 0; k < count; ++k) {
      points.desired[k] /= factor(k);
      points.weight[k] *= factor(k);
    }
  };
  if (factor_ == Factor::CosHalf) reduce([&](std::size_t k) { return places.cosine[k]; });
  if (factor_ == Factor::SinHalf) reduce([&](std::size_t k) { return places.sine[k]; });
  if (factor_ == Factor::Sin) reduce([&](std::size_t k) { return 2 * places.sine[k] * places.cosine[k]; });
  points.hi = std::move(places.hi);
  points.lo = std::move(places.lo);
  return points;
}

std::vector<std::int64_t> FrequencyGrid::Ends() const {
  std::vector<std::int64_t> positions;
  for (const Segment& segment : segments_) {
    positions.push_back(segment.start);
    positions.push_back(segment.start + segment.count - 1);
  }
  return positions;
}

double FrequencyGrid::WeightAt(double weight, double f) const {
  return fixed_weights_ || f <= kShapedFrom ? weight : weight * IntegerPower(f, -power_);
}

double FrequencyGrid::DesiredAmplitude(std::int64_t position) const {
  const Segment& segment = segments_[SegmentOf(position)];
  return segment.gain * IntegerPower(segment.FrequencyAt(position), power_);
}

double FrequencyGrid::AmplitudeWeight(std::int64_t position) const {
  const Segment& segment = segments_[SegmentOf(position)];
  return WeightAt(segment.weight, segment.FrequencyAt(position));
}

Wide FrequencyGrid::Desired(std::int64_t position) const {
  const Segment& segment = segments_[SegmentOf(position)];
  const Wide f = segment.FrequencyAt(position);
  const Wide desired = static_cast<Wide>(segment.gain) * IntegerPower(f, power_);
  switch (factor_) {
    case Factor::CosHalf:
      return desired / std::sin(kPi * (0.5L - f));
    case Factor::Sin:
      return desired / std::sin(2 * kPi * std::min(f, 0.5L - f));
    case Factor::SinHalf:
      return desired / std::sin(kPi * f);
    default:
      return desired;
  }
}

}  // namespace passband::OptimalFir::detail
