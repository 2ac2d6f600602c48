// Counts the allocations of this program and makes a chosen one fail.
#pragma once

#include <cstdint>

namespace passband::test {

/// Allocations by operator new since the program began, on all threads.
std::int64_t AllocationCount();

/// While it lives, allocation number `nth` (0: the next one) of this thread throws std::bad_alloc.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::int64_t nth);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();

  /// True when the allocation was asked for, and failed.
  bool HasFailed() const;
};

}  // namespace passband::test
