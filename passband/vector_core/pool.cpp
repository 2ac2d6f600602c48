#include "passband/vector_core/pool.h"

#include <atomic>
#include <mutex>

namespace passband {
namespace {

// A pooled object with the link of the free list in front of the reach of its borrower.
template <class T>
struct Node : T {
  Node* next = nullptr;
  using T::ReleaseForeign;
};

// What one thread has lent and kept. Only its own thread writes the counters; others read them for the statistics. An
// object may come back on another thread than the one that lent it, so a single `borrowed` may be negative; their sum
// is the truth.
struct Counters {
  std::atomic<std::int64_t> borrowed{0};
  std::atomic<std::int64_t> free{0};
  Counters* previous = nullptr;
  Counters* next = nullptr;

  Counters();
  Counters(const Counters&) = delete;
  Counters& operator=(const Counters&) = delete;
  ~Counters();
};

// All living threads' counters and the balance of ended ones. The lock is taken when a thread first borrows, when it
// ends, and by the statistics.
struct Registry {
  std::mutex guard;
  Counters* first = nullptr;
  std::int64_t borrowed_by_ended_threads = 0;
};

Registry& TheRegistry() {
  static Registry* const registry = new Registry;  // never destroyed: threads may end after static destruction
  return *registry;
}

Counters::Counters() {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.guard);
  next = registry.first;
  if (next != nullptr) next->previous = this;
  registry.first = this;
}

Counters::~Counters() {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.guard);
  registry.borrowed_by_ended_threads += borrowed.load(std::memory_order_relaxed);
  (previous != nullptr ? previous->next : registry.first) = next;
  if (next != nullptr) next->previous = previous;
}

void Add(std::atomic<std::int64_t>& counter, std::int64_t change) {
  counter.store(counter.load(std::memory_order_relaxed) + change, std::memory_order_relaxed);
}

template <class T>
class FreeList {
 public:
  FreeList() = default;
  FreeList(const FreeList&) = delete;
  FreeList& operator=(const FreeList&) = delete;
  ~FreeList() {
    while (first_ != nullptr) delete Pop();
  }

  T* Take() {
    Node<T>* const node = first_ != nullptr ? Pop() : new Node<T>;
    Add(counters_.borrowed, 1);
    return node;
  }
  void Keep(T* object) noexcept {
    auto* const node = static_cast<Node<T>*>(object);
    node->ReleaseForeign();
    node->next = first_;
    first_ = node;
    Add(counters_.borrowed, -1);
    Add(counters_.free, 1);
  }

 private:
  Node<T>* Pop() {
    Node<T>* const node = first_;
    first_ = node->next;
    Add(counters_.free, -1);
    return node;
  }

  Node<T>* first_ = nullptr;
  Counters counters_;
};

template <class T>
FreeList<T>& OfThisThread() {
  thread_local FreeList<T> list;
  return list;
}

}  // namespace

namespace detail {

void Borrow(TVec*& object) { object = OfThisThread<TVec>().Take(); }
void Borrow(TMtx*& object) { object = OfThisThread<TMtx>().Take(); }
void GiveBack(TVec*& object) noexcept {
  if (object != nullptr) OfThisThread<TVec>().Keep(object);
  object = nullptr;
}
void GiveBack(TMtx*& object) noexcept {
  if (object != nullptr) OfThisThread<TMtx>().Keep(object);
  object = nullptr;
}

}  // namespace detail

TPoolStatistics PoolStatistics() {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.guard);
  TPoolStatistics sum;
  sum.Borrowed = registry.borrowed_by_ended_threads;
  for (const Counters* of = registry.first; of != nullptr; of = of->next) {
    sum.Borrowed += of->borrowed.load(std::memory_order_relaxed);
    sum.Free += of->free.load(std::memory_order_relaxed);
  }
  return sum;
}

}  // namespace passband
