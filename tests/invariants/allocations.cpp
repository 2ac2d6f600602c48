#include "tests/invariants/allocations.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::int64_t> allocations{0};
thread_local std::int64_t until_failure = -1;  // below 0: none fails

void* Allocate(std::size_t bytes, std::size_t alignment) {
  allocations.fetch_add(1, std::memory_order_relaxed);
  if (until_failure >= 0 && until_failure-- == 0) throw std::bad_alloc();
  if (bytes == 0) bytes = 1;
  void* memory = nullptr;
  if (alignment <= alignof(std::max_align_t)) {
    memory = std::malloc(bytes);
  } else {
    memory = std::aligned_alloc(alignment, (bytes + alignment - 1) / alignment * alignment);
  }
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

void* operator new(std::size_t bytes) { return Allocate(bytes, 0); }
void* operator new[](std::size_t bytes) { return Allocate(bytes, 0); }
void* operator new(std::size_t bytes, std::align_val_t alignment) {
  return Allocate(bytes, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t bytes, std::align_val_t alignment) {
  return Allocate(bytes, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }

namespace passband::test {

std::int64_t AllocationCount() { return allocations.load(std::memory_order_relaxed); }

FailingAllocation::FailingAllocation(std::int64_t nth) { until_failure = nth; }
FailingAllocation::~FailingAllocation() { until_failure = -1; }
bool FailingAllocation::HasFailed() const { return until_failure < 0; }

}  // namespace passband::test
