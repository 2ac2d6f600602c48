// The direct FIR form: its order of summation, and the taps laid out for it.
//
// y[n] = sum g[j] w[j], j = 0 .. T - 1, with g[j] = h[T - 1 - j] the reversed taps and w[j] = x[n - T + 1 + j] the
// window of samples, oldest first. The sum is split into kLanes virtual lanes, whatever the hardware has:
//
//   - An element has kParts = 1 (real) or 2 (complex: re, im, re, im, ..) lanes, so there are C = kLanes / kParts
//   classes;
//     class c takes the terms j = c + C q, and there are Q = ceil(T / C) chunks q.
//   - The chunks are cut into A segments of ceil(Q / A). A chain runs through one class in one segment: q ascending,
//   the
//     first term a plain product, the others fused multiply-adds where the hardware has them.
//   - class(c) = ((chain(c, 0) + chain(c, 1)) + chain(c, 2)) + chain(c, 3).
//   - group(i) = (class(i) + class(i + K)) + class(i + 2K) + ..., K = 4 / kParts groups, and y = ((group(0) + group(1))
//   +
//     group(2)) + group(3).
//   - Complex taps: all of this once with Re h and once with Im h, both on the interleaved samples, giving the pairs a
//     and b; then y = (a_re - b_im, a_im + b_re). Complex data with taps that are all real need a alone.
//
// A single sample holds the classes in vector lanes and the segments in accumulators; a block holds outputs in vector
// lanes and walks the chains one after the other. Both do the same operations on each output, hence the same bits.
// Where the last chunk is ragged a single sample has lanes beyond the window: they hold 0 and their taps are -0, and
// a + (0 * -0) = a for every a. Samples after the newest one are never multiplied.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

#include "passband/foundation/element_types.h"

namespace passband::primitives::detail {

/// Memory on a cache line boundary, all 0 at first.
template <class R>
class AlignedArray {
 public:
  AlignedArray() = default;
  explicit AlignedArray(std::size_t count)
      : data_(static_cast<R*>(::operator new (count * sizeof(R), std::align_val_t{kAlignment}))) {
    std::fill_n(data_.get(), count, R{0});
  }
  R* Data() { return data_.get(); }
  const R* Data() const { return data_.get(); }

 private:
  static constexpr std::size_t kAlignment = 64;
  struct Delete {
    void operator()(R* p) const noexcept { ::operator delete (p, std::align_val_t{kAlignment}); }
  };
  std::unique_ptr<R, Delete> data_;
};

/// Filters of up to so many taps hold all of them in registers, with the window in a delay line of that size.
inline constexpr std::size_t kMaxShortFir = 16;

/// The number of virtual lanes: few for short filters, whose sums would end in many nearly empty lanes.
template <Element T>
constexpr std::size_t FirLanes(std::size_t taps) {
  constexpr bool kDouble = IsDoublePrecision(PrecisionOf<T>);
  if constexpr (IsComplex<T>) return kDouble || taps <= kMaxShortFir ? 8 : 16;
  if (taps <= kMaxShortFir) return 4;
  return kDouble || taps <= 40 ? 8 : 16;
}

constexpr std::size_t CeilDiv(std::size_t a, std::size_t b) { return (a + b - 1) / b; }

/// Reversed taps of one filter, in the two orders in which they are read.
template <Element T, std::size_t kLanes>
struct FirTaps {
  using R = RealOf<T>;
  static constexpr std::size_t kParts = IsComplex<T> ? 2 : 1;
  static constexpr std::size_t kClasses = kLanes / kParts;

  FirTaps(const T* h, std::size_t taps);

  /// Taps of class c in chain order, part p (0 the real, 1 the imaginary one).
  const R* Chain(std::size_t p, std::size_t c) const { return chains[p].Data() + c * chunks; }
  /// Number of terms of class c in the last segment: there is one less where the last chunk is ragged.
  std::size_t LastLength(std::size_t c) const { return last_chunks - (c < full_classes ? 0 : 1); }

  std::size_t count;               // T
  std::size_t chunks;              // Q
  std::size_t segments;            // A
  std::size_t segment_chunks;      // ceil(Q / A)
  std::size_t last_chunks;         // chunks of the last segment
  std::size_t full_classes;        // classes that have a term in the last chunk
  AlignedArray<R> rows[kParts];    // lane l of chunk q at q kLanes + l; -0 beyond the last tap
  AlignedArray<R> chains[kParts];  // term q of class c at c Q + q
  AlignedArray<R> last_mask;       // all bits set in the lanes that the last chunk has
  AlignedArray<R> newest_mask;     // and in those of its newest sample
};

template <Element T, std::size_t kLanes>
FirTaps<T, kLanes>::FirTaps(const T* h, std::size_t taps)
    : count(taps),
      chunks(CeilDiv(taps, kClasses)),
      segments(chunks <= 16   ? 1
               : chunks <= 64 ? 2
                              : 4),
      segment_chunks(CeilDiv(chunks, segments)),
      last_chunks(chunks - (segments - 1) * segment_chunks),
      full_classes(taps - (chunks - 1) * kClasses),
      last_mask(kLanes),
      newest_mask(kLanes) {
  for (std::size_t p = 0; p < kParts; ++p) {
    rows[p] = AlignedArray<R>(chunks * kLanes);
    chains[p] = AlignedArray<R>(chunks * kClasses);
    for (std::size_t j = 0; j < chunks * kClasses; ++j) {
      R tap = -R{0};
      if (j < taps) {
        if constexpr (IsComplex<T>) {
          tap = p == 0 ? h[taps - 1 - j].Re : h[taps - 1 - j].Im;
        } else {
          tap = h[taps - 1 - j];
        }
      }
      std::fill_n(rows[p].Data() + j * kParts, kParts, tap);
      chains[p].Data()[(j % kClasses) * chunks + j / kClasses] = tap;
    }
  }
  const auto mark = [](R* lanes, std::size_t elements) { std::memset(lanes, 0xFF, elements * kParts * sizeof(R)); };
  mark(last_mask.Data(), full_classes);
  mark(newest_mask.Data() + (full_classes - 1) * kParts, 1);
}

}  // namespace passband::primitives::detail
