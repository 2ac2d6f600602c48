#include "passband/vector_core/minimisers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

#include "passband/vector_core/double_data_internal.h"
#include "passband/vector_core/pool.h"

namespace passband {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

double NanToInfinity(double cost) { return std::isnan(cost) ? kInfinity : cost; }

struct Sample {
  double x = 0;
  double cost = kInfinity;
};

double Slope(Sample a, Sample b) { return (b.cost - a.cost) / (b.x - a.x); }

// Two lines, one falling to the minimum and one rising from it.
struct Kink {
  Sample left;
  Sample right;
  double falling = 0;
  double rising = 0;

  double Place() const { return left.x + (right.cost - left.cost - rising * (right.x - left.x)) / (falling - rising); }
  double At(double x) const {
    return std::max(left.cost + falling * (x - left.x), right.cost + rising * (x - right.x));
  }
};

class BrentSearch {
 public:
  BrentSearch(const std::function<double(double)>& cost, double low, double high, double tolerance)
      : cost_(cost), low_(low), high_(high), tolerance_(std::max(tolerance, 0x1p-53)) {
    floor_ = tolerance_ * tolerance_ * (high - low);
    best_.x = low + kGolden * (high - low);
    best_.cost = NanToInfinity(cost_(best_.x));
    second_ = third_ = best_;
    last_step_ = step_before_last_ = 0;
  }

  Sample Run(std::int32_t max_iter) {
    for (std::int32_t i = 0; i < max_iter; ++i) {
      const double middle = low_ / 2 + high_ / 2;
      accuracy_ = tolerance_ * std::abs(best_.x) + floor_;
      if (!(std::abs(best_.x - middle) > 2 * accuracy_ - (high_ / 2 - low_ / 2))) break;
      const double x = NextPlace(middle);
      if (x == best_.x) break;
      Take({x, NanToInfinity(cost_(x))});
    }
    return best_;
  }

 private:
  static constexpr double kGolden = 0.3819660112501051;  // (3 - sqrt 5) / 2

  double NextPlace(double middle) {
    kink_ = FindKink();
    std::optional<double> x;
    if (kink_ && kink_fits_ && steps_since_halved_ < 5) x = KinkPlace();
    if (!x) x = ParabolaPlace();
    if (!x) {
      step_before_last_ = best_.x < middle ? high_ - best_.x : low_ - best_.x;
      x = best_.x + kGolden * step_before_last_;
      steps_since_halved_ = 0;
    }
    if (*x - low_ < 2 * accuracy_ || high_ - *x < 2 * accuracy_) {
      x = best_.x + std::copysign(accuracy_, middle - best_.x);
    }
    if (std::abs(*x - best_.x) < accuracy_) x = best_.x + std::copysign(accuracy_, *x - best_.x);
    last_step_ = *x - best_.x;
    return *x;
  }

  // The best point lies on one of the two lines, which passes through its neighbour there; the other line passes
  // through the two nearest points of the other side. The better guess is the one that promises to go deeper.
  std::optional<Kink> FindKink() const {
    std::optional<Kink> found;
    double depth = 0;
    const auto consider = [&](Sample outer_left, Sample left, Sample right, Sample outer_right) {
      const Kink kink{left, right, Slope(outer_left, left), Slope(right, outer_right)};
      if (!(kink.falling < 0 && kink.rising > 0)) return;
      const double place = kink.Place();
      if (!(place > left.x && place < right.x && best_.cost - kink.At(place) > depth)) return;
      depth = best_.cost - kink.At(place);
      found = kink;
    };
    if (left_count_ > 0 && right_count_ > 1) consider(left_[0], best_, right_[0], right_[1]);
    if (left_count_ > 1 && right_count_ > 0) consider(left_[1], left_[0], best_, right_[0]);
    return found;
  }

  // A little beyond the intersection, so that the next point lies on the other side and the bracket closes from both.
  double KinkPlace() {
    step_before_last_ = last_step_;
    ++steps_since_halved_;
    const double step = kink_->Place() - best_.x;
    const double beyond = best_.x + step * (1 + overshoot_);
    return beyond > low_ && beyond < high_ ? beyond : kink_->Place();
  }

  std::optional<double> ParabolaPlace() {
    const double to_second = (best_.x - second_.x) * (best_.cost - third_.cost);
    const double to_third = (best_.x - third_.x) * (best_.cost - second_.cost);
    const double numerator = (best_.x - third_.x) * to_third - (best_.x - second_.x) * to_second;
    const double denominator = 2 * (to_third - to_second);
    const double step = -numerator / denominator;
    const double x = best_.x + step;
    if (!(std::abs(step) < std::abs(step_before_last_) / 2 && x > low_ && x < high_)) return std::nullopt;
    step_before_last_ = last_step_;
    return x;
  }

  double ParabolaAt(double x) const {
    const double a = Slope(best_, second_);
    const double b = (Slope(second_, third_) - a) / (third_.x - best_.x);
    return best_.cost + (x - best_.x) * (a + b * (x - second_.x));
  }

  void Take(Sample next) {
    if (kink_) {
      const double of_kink = std::abs(kink_->At(next.x) - next.cost);
      kink_fits_ = !(of_kink > std::abs(ParabolaAt(next.x) - next.cost));
    }
    const double width = high_ - low_;
    Narrow(next);
    if (high_ - low_ < width / 2) {
      steps_since_halved_ = 0;
      overshoot_ = std::max(overshoot_ / 4, 1e-4);
    } else {
      overshoot_ = std::min(overshoot_ * 4, 1.0);
    }
    if (next.cost <= best_.cost) {
      third_ = std::exchange(second_, std::exchange(best_, next));
    } else if (next.cost <= second_.cost || second_.x == best_.x) {
      third_ = std::exchange(second_, next);
    } else if (next.cost <= third_.cost || third_.x == best_.x || third_.x == second_.x) {
      third_ = next;
    }
  }

  // Keeps the bracket, and for each side of the best point the two nearest samples, the nearest first.
  void Narrow(Sample next) {
    const bool better = next.cost <= best_.cost;
    const bool to_the_right = next.x > best_.x;
    const Sample outer = better ? best_ : next;
    if (to_the_right == better) {
      low_ = outer.x;
      left_[1] = std::exchange(left_[0], outer);
      left_count_ = std::min(left_count_ + 1, 2);
    } else {
      high_ = outer.x;
      right_[1] = std::exchange(right_[0], outer);
      right_count_ = std::min(right_count_ + 1, 2);
    }
  }

  const std::function<double(double)>& cost_;
  double low_;
  double high_;
  double tolerance_;
  double floor_ = 0;     // accuracy wanted where X is zero
  double accuracy_ = 0;  // accuracy wanted around the best point
  Sample best_, second_, third_;
  Sample left_[2], right_[2];
  int left_count_ = 0;
  int right_count_ = 0;
  double last_step_ = 0;
  double step_before_last_ = 0;
  std::optional<Kink> kink_;
  bool kink_fits_ = false;  // the lines foretold the last cost better than the parabola
  double overshoot_ = 0.1;
  int steps_since_halved_ = 0;
};

class NelderMead {
 public:
  NelderMead(const std::function<double(const TVec&)>& cost, const TVec& start)
      : cost_(cost), size_(static_cast<std::size_t>(start.Length())) {
    const double n = static_cast<double>(std::max<std::size_t>(size_, 2));
    expansion_ = 1 + 2 / n;
    contraction_ = 0.75 - 0.5 / n;
    shrinkage_ = 1 - 1 / n;
    argument_->Size(start.Length(), TMtxFloatPrecision::DoubleReal);
    Corner first{std::vector<double>(size_), 0};
    detail::Widen(start, std::span<double>(first.x));
    corners_.assign(size_ + 1, first);
    for (std::size_t i = 0; i < size_; ++i) {
      double& x = corners_[i + 1].x[i];
      const double step = x != 0 ? 0.05 * x : 0.00025;
      first_size_ = std::max(first_size_, std::abs(step));
      x += step;
    }
    for (Corner& corner : corners_) corner.cost = Cost(corner.x);
    Sort();
  }

  void Run(std::int32_t max_iter, double tolerance) {
    for (std::int32_t i = 0; i < max_iter && !IsSmall(tolerance); ++i) {
      Step();
      Sort();
    }
  }

  std::span<const double> BestPlace() const { return corners_.front().x; }
  double BestCost() const { return corners_.front().cost; }

 private:
  struct Corner {
    std::vector<double> x;
    double cost;
  };

  double Cost(const std::vector<double>& x) {
    std::copy(x.begin(), x.end(), argument_->Values().begin());
    return NanToInfinity(cost_(*argument_));
  }

  void Sort() {
    std::stable_sort(corners_.begin(), corners_.end(),
                     [](const Corner& a, const Corner& b) { return a.cost < b.cost; });
  }

  bool IsSmall(double tolerance) const {
    double extent = 0;
    double place = 0;
    for (std::size_t i = 0; i < size_; ++i) {
      place = std::max(place, std::abs(corners_.front().x[i]));
      for (const Corner& corner : corners_) extent = std::max(extent, std::abs(corner.x[i] - corners_.front().x[i]));
    }
    return extent <= tolerance * (place + first_size_);
  }

  // centre + factor (worst - centre)
  Corner Trial(const std::vector<double>& centre, double factor) {
    Corner trial{centre, 0};
    for (std::size_t i = 0; i < size_; ++i) trial.x[i] += factor * (corners_.back().x[i] - centre[i]);
    trial.cost = Cost(trial.x);
    return trial;
  }

  void Step() {
    std::vector<double> centre(size_, 0.0);  // of all corners but the worst
    for (std::size_t k = 0; k < size_; ++k) {
      for (std::size_t i = 0; i < size_; ++i) centre[i] += corners_[k].x[i] / static_cast<double>(size_);
    }
    Corner reflected = Trial(centre, -1);
    Corner& worst = corners_.back();
    if (reflected.cost < corners_.front().cost) {
      Corner expanded = Trial(centre, -expansion_);
      worst = std::move(expanded.cost < reflected.cost ? expanded : reflected);
    } else if (reflected.cost < corners_[size_ - 1].cost) {
      worst = std::move(reflected);
    } else {
      const bool outside = reflected.cost < worst.cost;
      Corner contracted = Trial(centre, outside ? -contraction_ : contraction_);
      if (contracted.cost < worst.cost && contracted.cost <= reflected.cost) {
        worst = std::move(contracted);
      } else {
        Shrink();
      }
    }
  }

  void Shrink() {
    for (std::size_t k = 1; k <= size_; ++k) {
      for (std::size_t i = 0; i < size_; ++i) {
        const double best = corners_.front().x[i];
        corners_[k].x[i] = best + shrinkage_ * (corners_[k].x[i] - best);
      }
      corners_[k].cost = Cost(corners_[k].x);
    }
  }

  const std::function<double(const TVec&)>& cost_;
  std::size_t size_;
  double expansion_ = 2;
  double contraction_ = 0.5;
  double shrinkage_ = 0.5;
  double first_size_ = 0;
  Borrowed<TVec> argument_;
  std::vector<Corner> corners_;  // the best first
};

}  // namespace

double MinBrent(const std::function<double(double)>& Cost, double Low, double High, double& X, std::int32_t MaxIter,
                double Tolerance) {
  if (!Cost) ERaise("MinBrent: no cost function");
  if (!std::isfinite(Low) || !std::isfinite(High)) ERaise("MinBrent: Low or High is not finite");
  if (!(Low <= High)) ERaise("MinBrent: not (Low <= High)");
  if (MaxIter < 0) ERaise("MinBrent: MaxIter < 0");
  if (!(Tolerance >= 0)) ERaise("MinBrent: not (Tolerance >= 0)");
  const Sample best = BrentSearch(Cost, Low, High, Tolerance).Run(MaxIter);
  X = best.x;
  return best.cost;
}

double Simplex(const std::function<double(const TVec&)>& Cost, TVec& X, std::int32_t MaxIter, double Tolerance) {
  if (!Cost) ERaise("Simplex: no cost function");
  if (X.Complex()) ERaise("Simplex: complex elements");
  if (X.Length() == 0) ERaise("Simplex: no elements");
  if (!detail::AllFinite(X)) ERaise("Simplex: an element is not finite");
  if (MaxIter < 0) ERaise("Simplex: MaxIter < 0");
  if (!(Tolerance >= 0)) ERaise("Simplex: not (Tolerance >= 0)");
  NelderMead search(Cost, X);
  search.Run(MaxIter, Tolerance);
  detail::StoreRounded(search.BestPlace(), X);
  return search.BestCost();
}

}  // namespace passband
