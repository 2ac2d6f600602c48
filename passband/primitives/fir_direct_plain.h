// The direct filter without vector instructions, for processors that have none of the usable sets: one sample at a time
// in the order of fir_direct_taps.h, with separate multiplications and additions.
#pragma once

#include <algorithm>
#include <cstring>

#include "passband/primitives/fir_direct_taps.h"
#include "passband/primitives/fir_state_internal.h"

namespace passband::primitives {
namespace {

template <Element T, std::size_t kLanes>
class PlainFir final : public FirStateOf<T> {
  using R = RealOf<T>;
  static constexpr std::size_t kParts = IsComplex<T> ? 2 : 1;

 public:
  PlainFir(const T* h, std::size_t taps)
      : g_(h, taps),
        history_(kParts * (taps - 1)),
        capacity_(2 * history_ + 1024),
        line_(capacity_ + kLanes),
        newest_(history_) {}

  void Filter(const T* src, T* dst, std::int32_t count) noexcept override {
    for (std::int32_t n = 0; n < count; ++n) dst[n] = PlainFir::One(src[n]);
  }

  T One(T x) noexcept override {
    if (newest_ == capacity_) {
      std::memmove(line_.Data(), line_.Data() + newest_ - history_, history_ * sizeof(R));
      newest_ = history_;
    }
    std::memcpy(line_.Data() + newest_, &x, sizeof(T));
    const R* const window = line_.Data() + newest_ - history_;
    newest_ += kParts;
    if constexpr (kParts == 1) {
      R y[4];
      Groups(window, 0, y);
      return ((y[0] + y[1]) + y[2]) + y[3];
    } else {
      R a[4];
      R b[4];
      Groups(window, 0, a);
      Groups(window, 1, b);
      return T((a[0] + a[2]) - (b[1] + b[3]), (a[1] + a[3]) + (b[0] + b[2]));
    }
  }

 private:
  // The four lanes of the groups of classes, for part p of the taps.
  void Groups(const R* window, std::size_t p, R (&groups)[4]) const {
    R classes[kLanes];
    std::fill_n(classes, kLanes, -R{0});  // a + -0 = a
    for (std::size_t a = 0; a < g_.segments; ++a) {
      R chains[kLanes];
      std::fill_n(chains, kLanes, -R{0});
      const std::size_t first = a * g_.segment_chunks;
      const std::size_t last = std::min(first + g_.segment_chunks, g_.chunks);
      for (std::size_t q = first; q < last; ++q) {
        const std::size_t used = q + 1 < g_.chunks ? kLanes : kParts * g_.full_classes;
        const R* const h = g_.rows[p].Data() + q * kLanes;
        for (std::size_t l = 0; l < used; ++l) chains[l] += h[l] * window[q * kLanes + l];
      }
      for (std::size_t l = 0; l < kLanes; ++l) classes[l] += chains[l];
    }
    std::copy_n(classes, 4, groups);
    for (std::size_t l = 4; l < kLanes; ++l) groups[l % 4] += classes[l];
  }

  detail::FirTaps<T, kLanes> g_;
  std::size_t history_;   // lanes of the samples before the next one that its window holds
  std::size_t capacity_;  // lanes of the line
  detail::AlignedArray<R> line_;
  std::size_t newest_;  // the next sample's place in the line
};

}  // namespace
}  // namespace passband::primitives
