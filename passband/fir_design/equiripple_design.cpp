#include "passband/fir_design/equiripple_design_internal.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "passband/fir_design/equiripple_refinement_internal.h"
#include "passband/fir_design/equiripple_start_internal.h"
#include "passband/fir_design/equiripple_taps_internal.h"

namespace passband::OptimalFir::detail {
namespace {

using Positions = std::vector<std::int64_t>;

// Tolerances of an exchange, as shares of the levelled error.
constexpr double kTolerance = 1e-9;
constexpr double kRough = 0.1;      // of designs that only lead to the next
constexpr double kClear = 1e-6;     // noise at which an exchange may start from even nodes
constexpr double kResolved = 1e-3;  // and at which its result is trusted

// Levelled errors, as shares of the largest weighted desired value.
constexpr double kCarried = 1e-5;      // below: longer designs start from the coefficients, not from the desired values
constexpr double kShallow = 1e-9;      // above: a design that fails may have had a bad start
constexpr double kRounding = 0x1p-50;  // below: the rounding of taps hides it
constexpr double kDeepest = 3e-17;     // below: there is no point in looking for it

// What stored taps can express.
constexpr double kTapNoise = 0x1p-54;  // error of the amplitude from rounding, of the root of the taps' sum of squares
constexpr double kTapShare = 0.03;     // what it may add to the levelled error
constexpr double kTapFree = 1e-4;      // what it adds to the error of an optimum
constexpr double kTapShown = 0.01;     // from where the error is measured with the stored taps
constexpr double kModest = 100;        // root of the sum of squares, of the desired amplitude, that is no growth

// Ways of growing.
constexpr std::size_t kShort = 48;       // cosines that need no shorter design to start from
constexpr std::int32_t kPatience = 20;   // iterations from even nodes before another start is tried
constexpr std::size_t kResolution = 48;  // share of a size that is not worth another design
constexpr int kFailures = 8;

// The approximation of a stage whose extremal set is found.
CosineSum Interpolated(const Stage& stage) {
  CosineSum sum = stage.target.base;
  sum.Add(LevelledInterpolant(stage.target.Points(stage.result.nodes)).Coefficients(stage.size));
  return sum;
}

class Design {
 public:
  Design(const BandPlan& bands, std::int32_t length)
      : bands_(bands),
        odd_(length % 2 == 1),
        grid_(std::make_shared<FrequencyGrid>(bands, length)),
        all_(bands.CosineCount(length)),
        count_(static_cast<std::size_t>(std::min(static_cast<std::int64_t>(all_), grid_->Size() - 1))) {}

  Approximation Run() const {
    const Target whole(grid_);
    if (whole.scale == 0) return {CosineSum(1), grid_->FixedError(), 1};
    if (count_ == 0) return ThroughOnePoint(whole);
    Stage stage{whole, count_, {}, false, false};
    if (FromEvenNodes(stage) && Refine(stage) && Expressible(stage, stage.target.base)) return Result(stage);
    return Result(LongestExpressible());
  }

 private:
  // The exchange from equally spaced nodes. False when doubles do not resolve its errors.
  bool FromEvenNodes(Stage& stage) const {
    Positions nodes = EvenNodes(*grid_, count_ + 1);
    if (count_ > kShort) {
      const LevelledInterpolant first(stage.target.Points(nodes));
      if (!(first.Noise() <= kClear * std::abs(first.Deviation()))) return false;
    }
    stage.result = Exchange(stage.target, std::move(nodes), {.tolerance = kTolerance, .iterations = kPatience});
    return stage.result.levelled && stage.result.noise <= kResolved * stage.result.deviation;
  }

  // Designs of growing size, up to the whole or to the last that double taps can express.
  Stage LongestExpressible() const {
    Stage best = ShortDesign();
    std::size_t too_long = count_ + 1;
    bool limit = false;  // too_long has failed for more than a bad start
    for (int failures = 0; best.size > 0 && best.size < count_ && !best.exact && failures < kFailures;) {
      const std::size_t size = NextSize(best.size, too_long);
      if (size == best.size || (limit && size - best.size < best.size / kResolution)) break;
      Stage next;
      if (Extend(best, size, size == count_ || failures > 0, next)) {
        best = std::move(next);
        if (!limit) too_long = count_ + 1;
      } else {
        limit = next.result.levelled || best.result.deviation < kShallow * best.target.scale;
        too_long = size;
        ++failures;
      }
    }
    if (best.size > 0 && !best.finished) {
      Stage next;
      if (Extend(best, best.size, true, next)) return next;
      best.target.base = Interpolated(best);
    }
    return best;
  }

  // A first design: of a size that is a halved share of the whole, or of one cosine.
  Stage ShortDesign() const {
    std::size_t size = count_;
    while (size > kShort) size = (size + 1) / 2;
    Stage stage;
    if (Extend({}, size, size == count_, stage)) return stage;
    if (!Extend({}, 1, count_ == 1, stage)) stage = {};
    return stage;
  }

  // About twice the size, on a way of doublings to the whole; half of the way to a size that was too long.
  std::size_t NextSize(std::size_t size, std::size_t too_long) const {
    std::size_t next = count_;
    while ((next + 1) / 2 > size) next = (next + 1) / 2;
    return next < too_long ? next : (size + too_long) / 2;
  }

  // A design with `size` cosines that starts from a shorter one. False when double taps cannot express it.
  bool Extend(const Stage& before, std::size_t size, bool final, Stage& stage) const {
    auto grid = grid_;
    if (!final) grid = std::make_shared<FrequencyGrid>(bands_, bands_.LengthOf(size, odd_));
    if (grid->Size() <= static_cast<std::int64_t>(size)) grid = grid_;
    stage = {Target(grid), size, {}, false, false};
    stage.target.base = before.target.base;
    Level(before, final ? kTolerance : kRough, stage);
    if (stage.result.deviation < kDeepest * stage.target.scale) {
      stage.exact = size == 1 && IsExact(stage);  // a constant is the only desired amplitude that is a sum of cosines
      stage.finished = stage.exact;
      return stage.exact;
    }
    if (!stage.result.levelled) return false;
    if (!final && stage.result.deviation >= kCarried * stage.target.scale) {
      return Expressible(stage, Interpolated(stage));
    }
    stage.finished = Refine(stage) && Expressible(stage, stage.target.base);
    return stage.finished;
  }

  // The exchange from the extremal set of a shorter design, or from even nodes where that leads nowhere.
  static void Level(const Stage& before, double tolerance, Stage& stage) {
    const FrequencyGrid& grid = *stage.target.grid;
    ExchangeLimits limits{.tolerance = tolerance, .least = kDeepest * stage.target.scale};
    if (before.size == 0 || before.target.grid->Segments().size() != grid.Segments().size()) {
      stage.result = Exchange(stage.target, EvenNodes(grid, stage.size + 1), limits);
      return;
    }
    const bool deep = stage.target.base.Size() > 0;  // even nodes are out of the question then
    if (!deep) limits.iterations = kPatience;
    stage.result =
        Exchange(stage.target, StretchedNodes(*before.target.grid, before.result.nodes, grid, stage.size + 1), limits);
    if (stage.result.levelled || deep) return;
    const ExchangeResult stretched = stage.result;
    stage.result = Exchange(stage.target, EvenNodes(grid, stage.size + 1), limits);
    if (stage.result.levelled || stretched.iterations < kPatience) return;
    limits.iterations = kMaxIterations - kPatience;
    stage.result = Exchange(stage.target, stretched.nodes, limits);
    stage.result.iterations += kPatience;
  }

  // What the rounding of taps to double adds to the error.
  double TapError(const Stage& stage, const CosineSum& sum) const {
    double weight = 0;
    for (const std::int64_t p : stage.target.grid->Ends()) {
      weight = std::max(weight, stage.target.grid->AmplitudeWeight(p));
    }
    return kTapNoise * weight * TapRoot(stage, sum);
  }

  // True when taps are far larger than the amplitude in the bands: between them it has grown beyond measure.
  bool Overgrown(const Stage& stage, const CosineSum& sum) const {
    double amplitude = 0;
    for (const std::int64_t p : stage.target.grid->Ends()) {
      amplitude = std::max(amplitude, std::abs(stage.target.grid->DesiredAmplitude(p)));
    }
    return TapRoot(stage, sum) > kModest * amplitude;
  }

  // False when the rounding of such taps spoils the error.
  bool Expressible(const Stage& stage, const CosineSum& sum) const {
    return !Overgrown(stage, sum) || TapError(stage, sum) <= kTapShare * stage.result.deviation;
  }

  std::vector<Wide> Taps(const Stage& stage, const CosineSum& sum) const {
    return TapsOf(sum, bands_.LengthOf(stage.size, odd_), bands_.Antisymmetric());
  }

  // The root of the sum of squares of the taps.
  double TapRoot(const Stage& stage, const CosineSum& sum) const {
    Wide squares = 0;
    for (const Wide tap : Taps(stage, sum)) squares += tap * tap;
    return static_cast<double>(std::sqrt(squares));
  }

  // The largest error that is found when the taps are rounded to double.
  double RoundedError(const Stage& stage) const {
    const std::vector<Wide> taps = Taps(stage, stage.target.base);
    std::vector<double> rounded(taps.size());
    std::transform(taps.begin(), taps.end(), rounded.begin(), [](Wide tap) { return static_cast<double>(tap); });
    Target target(grid_);
    target.base = SumOf(rounded, bands_.Antisymmetric());
    return LargestError(target, stage.size);
  }

  // Too few points for an exchange.
  Approximation ThroughOnePoint(const Target& whole) const {
    CosineSum sum(1);
    sum.Set(0, {whole.Points({0}).desired[0], 0});
    return {std::move(sum), grid_->FixedError(), kMaxIterations};
  }

  Approximation Result(const Stage& stage) const {
    if (stage.size == 0) return {CosineSum(1), std::max(grid_->Scale(), grid_->FixedError()), kMaxIterations};
    Approximation result{stage.target.base, stage.result.deviation, kMaxIterations};
    const bool rounding = stage.exact || result.deviation <= kRounding * stage.target.scale;
    const double share = TapError(stage, stage.target.base) / result.deviation;
    const bool whole = stage.size == count_ && !(share > kTapFree && Overgrown(stage, stage.target.base));
    if ((rounding || whole) && count_ == all_) result.iterations = std::max(1, stage.result.iterations);
    if (rounding || !whole || share > kTapShown) {
      result.deviation = std::max(stage.size == count_ && !rounding ? result.deviation : 0, RoundedError(stage));
    }
    result.deviation = std::max(result.deviation, grid_->FixedError());
    return result;
  }

  const BandPlan& bands_;
  bool odd_;
  std::shared_ptr<const FrequencyGrid> grid_;
  std::size_t all_;    // cosines of the filter
  std::size_t count_;  // cosines that the grid has points for
};

}  // namespace

Approximation BestApproximation(const BandPlan& bands, std::int32_t length) { return Design(bands, length).Run(); }

}  // namespace passband::OptimalFir::detail
