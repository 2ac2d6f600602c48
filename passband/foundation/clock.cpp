#include "passband/foundation/clock.h"

#include <atomic>
#include <chrono>

#include "passband/foundation/clock_internal.h"

namespace passband {
namespace {

TDateTime Present() {
  using Days = std::chrono::duration<double, std::ratio<86400>>;
  using Steady = std::chrono::steady_clock;
  constexpr double kEpochDays = 25569;  // from 1899-12-30 to 1970-01-01
  struct Origin {
    Days calendar = std::chrono::system_clock::now().time_since_epoch();
    Steady::time_point steady = Steady::now();
  };
  static const Origin origin;
  return kEpochDays + (origin.calendar + Days(Steady::now() - origin.steady)).count();
}

std::atomic<TDateTime (*)()> clock_in_use{&Present};

}  // namespace

TDateTime Now() { return clock_in_use.load(std::memory_order_relaxed)(); }

namespace detail {
void ReplaceNow(TDateTime (*now)()) noexcept { clock_in_use.store(now == nullptr ? &Present : now); }
}  // namespace detail

}  // namespace passband
