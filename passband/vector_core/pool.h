// Temporaries: vectors and matrices that are borrowed, used and given back, so that warm calls allocate nothing.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband {

namespace detail {
PASSBAND_EXPORT void Borrow(TVec*& object);
PASSBAND_EXPORT void Borrow(TMtx*& object);
PASSBAND_EXPORT void GiveBack(TVec*& object) noexcept;
PASSBAND_EXPORT void GiveBack(TMtx*& object) noexcept;
}  // namespace detail

/// Borrows an object for the length of a scope. Its earlier contents mean nothing: size it before use.
template <class T>
class Borrowed {
 public:
  Borrowed() { detail::Borrow(object_); }
  Borrowed(const Borrowed&) = delete;
  Borrowed& operator=(const Borrowed&) = delete;
  ~Borrowed() { detail::GiveBack(object_); }

  T& operator*() const { return *object_; }
  T* operator->() const { return object_; }

 private:
  T* object_ = nullptr;
};

/// Hands out as many objects as there are variables; either all or, when memory runs out, none. Each thread keeps its own
/// free objects: no lock, no allocation once they are there.
template <class T, class... Rest>
void CreateIt(T*& object, Rest*&... rest) {
  detail::Borrow(object);
  if constexpr (sizeof...(rest) > 0) {
    try {
      CreateIt(rest...);
    } catch (...) {
      detail::GiveBack(object);
      throw;
    }
  }
}

/// Takes objects of `CreateIt` back, on any thread, and clears the variables; a null variable is left alone.
template <class... T>
void FreeIt(T*&... objects) noexcept {
  (detail::GiveBack(objects), ...);
}

struct TPoolStatistics {
  std::int64_t Borrowed = 0;  ///< objects handed out and not yet given back
  std::int64_t Free = 0;      ///< objects that wait for the next borrower
};

/// The balance over all threads and both kinds of objects.
PASSBAND_EXPORT TPoolStatistics PoolStatistics();

}  // namespace passband
