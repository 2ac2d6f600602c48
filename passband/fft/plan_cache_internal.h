// The cache behind `RealPlan::Get` and `ComplexPlan::Get`, the same for every back end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <utility>

namespace passband::fft {

/// Plans by length, the latest used first. Dropped plans live on while somebody holds them.
template <class Plan>
class PlanCache {
 public:
  using Shared = std::shared_ptr<const Plan>;

  /// The plan of this length; `make(length)` runs without the lock, so that a long planning stops nobody else.
  template <class Make>
  Shared Get(std::int32_t length, const Make& make) {
    {
      const std::lock_guard lock(mutex_);
      if (Shared plan = Find(length)) return plan;
    }
    Plans fresh;
    fresh.push_front({length, make(length)});
    Plans dropped;  // destroyed after the lock is released
    const std::lock_guard lock(mutex_);
    if (Shared plan = Find(length)) return plan;  // another thread was faster
    plans_.splice(plans_.begin(), fresh);
    points_ += length;
    while (plans_.size() > kMaxPlans || (points_ > kMaxPoints && plans_.size() > 1)) {
      points_ -= plans_.back().first;
      dropped.splice(dropped.begin(), plans_, std::prev(plans_.end()));
    }
    return plans_.front().second;
  }

 private:
  using Plans = std::list<std::pair<std::int32_t, Shared>>;

  static constexpr std::size_t kMaxPlans = 128;
  static constexpr std::int64_t kMaxPoints = std::int64_t{1} << 24;  // bounds the memory of the tables

  Shared Find(std::int32_t length) {
    for (auto it = plans_.begin(); it != plans_.end(); ++it) {
      if (it->first != length) continue;
      plans_.splice(plans_.begin(), plans_, it);
      return it->second;
    }
    return nullptr;
  }

  std::mutex mutex_;
  Plans plans_;
  std::int64_t points_ = 0;
};

}  // namespace passband::fft
