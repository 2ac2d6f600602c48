#include "passband/fir_design/equiripple_refinement_internal.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "passband/fir_design/equiripple_start_internal.h"
#include "passband/fir_design/equiripple_wide_internal.h"

namespace passband::OptimalFir::detail {
namespace {

using Positions = std::vector<std::int64_t>;

constexpr double kFine = 1e-8;      // what rounding may add to the levelled error
constexpr double kFaithful = 1e-3;  // and what it may where that cannot be had
constexpr double kDeep = 1e-12;     // levelled error, of the desired values, where coefficients in double are hopeless
constexpr double kContraction = 0.1;  // what a pass in double has to gain
constexpr double kNone = 0x1p-59;     // error, of the desired values, that counts as none
constexpr std::size_t kProbes = 12;   // nodes at which good coefficients are proved
constexpr int kPasses = 10;
constexpr int kRounds = 3;

// The largest rest at some of the nodes.
double ProbedRest(const Target& target, const Positions& nodes, Wide deviation) {
  Positions probes;
  const std::size_t step = nodes.size() / kProbes / 2 * 2 + 1;  // odd, so that the sign of the error alternates
  for (std::size_t k = 0; k < nodes.size(); k += step) probes.push_back(nodes[k]);
  return LargestDesired(target.Rests(probes, deviation));
}

// Adds levelled interpolants of one extremal set to a base: in double, or in extended precision once that is asked for.
class Interpolation {
 public:
  explicit Interpolation(Stage& stage) : stage_(stage) {}

  void Widen() { wants_wide_ = true; }
  bool IsWide() const { return wants_wide_; }

  // Returns the deviation.
  Wide Add(const PointSet& points) {
    if (!wants_wide_) {
      const LevelledInterpolant interpolant(points);
      stage_.target.base.Add(interpolant.Coefficients(stage_.size));
      return static_cast<Wide>(interpolant.Deviation());
    }
    if (!wide_) wide_.emplace(points, stage_.size);
    const WideInterpolator::Result result = wide_->Interpolate(points);
    stage_.target.base.Add(result.alpha);
    return result.deviation;
  }

 private:
  Stage& stage_;
  bool wants_wide_ = false;
  std::optional<WideInterpolator> wide_;
};

// Adds the interpolant of the nodes to the base, then that of what rounding has left at them. Returns the largest
// weighted rest.
double Interpolate(Stage& stage) {
  Interpolation interpolation(stage);
  if (stage.result.deviation < kDeep * stage.target.scale) interpolation.Widen();
  Wide level = interpolation.Add(stage.target.Points(stage.result.nodes));
  const double enough = std::max(kFine * static_cast<double>(std::abs(level)), kNone * stage.target.scale);
  double left = ProbedRest(stage.target, stage.result.nodes, level);
  double before = std::numeric_limits<double>::infinity();
  for (int pass = 0; pass < kPasses && left > enough; ++pass) {
    const PointSet rests = stage.target.Rests(stage.result.nodes, level);
    left = LargestDesired(rests);
    if (!(left > enough)) break;
    if (left > kContraction * before) {
      if (interpolation.IsWide()) break;
      interpolation.Widen();
    }
    before = left;
    level += interpolation.Add(rests);
  }
  stage.result.deviation = std::abs(static_cast<double>(level));
  return left;
}

}  // namespace

bool Refine(Stage& stage) {
  for (int round = 0; round < kRounds; ++round) {
    const double left = Interpolate(stage);
    if (!(left <= kFaithful * stage.result.deviation + kNone * 64 * stage.target.scale)) return false;
    if (stage.result.noise <= kFine * stage.result.deviation + 2 * stage.target.Floor()) return true;
    const std::int32_t before = stage.result.iterations;
    stage.result = Exchange(stage.target, stage.result.nodes, {});
    stage.result.iterations += before;
    if (!stage.result.levelled) return false;
  }
  return true;
}

bool IsExact(Stage& stage) {
  Interpolate(stage);
  return LargestError(stage.target, stage.size) <= kNone * stage.target.scale;
}

double LargestError(const Target& target, std::size_t size) {
  const auto all = static_cast<std::size_t>(target.grid->Size());
  return LargestDesired(target.Rests(EvenNodes(*target.grid, std::min(all, 32 * size + 32)), 0));
}

}  // namespace passband::OptimalFir::detail
