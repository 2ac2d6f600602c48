// The two forms of the multi-rate FIR filter and what is computed for them at creation.
//
// Once the greatest common divisor of the factors is taken out (it selects every g-th tap), output j of the filter is
//     y[j] = sum over i of h[s - i up] x[i],   s = j down + offset,   0 <= s - i up < taps,
// so that output j reads a window of inputs that ends at floor(s / up), and all of it repeats after `up` outputs, which
// is `down` inputs: a period.
//
// Bank: the lanes of a row are consecutive outputs. A step multiplies one input, broadcast, by one row of taps; a group
// of lanes needs as many steps as its windows cover inputs together. Several periods form a cycle whose outputs fill
// rows well. Best when neighbouring windows overlap much.
// Dots: the lanes are consecutive taps of one output, added up at the end. Best for few taps and large steps; it keeps
// tables for those phases only that have taps.
//
// Both forms give an output one order of summation that depends on taps and factors alone, in virtual rows of 64 bytes
// that do not depend on the width of the hardware. A lane in which a step lies outside the window of its output gets a
// masked input, so that infinities and NaN reach exactly the outputs whose windows hold them.
// For complex elements a step has two rows of taps, (re, im) for the real part of the input and (-im, re) for the
// imaginary part (dots: (re, -im) for the real part of the output and (im, re) for the imaginary part); everything else
// is the real filter on interleaved parts.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "passband/foundation/element_types.h"

namespace passband::primitives::detail {

inline constexpr std::size_t kRowBytes = 64;

template <Element T>
inline constexpr std::size_t kParts = sizeof(T) / sizeof(RealOf<T>);

/// One vector of the widest hardware, or several of a narrower one.
template <Element T>
struct alignas(kRowBytes) Row {
  static constexpr std::size_t kElements = kRowBytes / sizeof(T);
  std::array<RealOf<T>, kRowBytes / sizeof(RealOf<T>)> lanes{};
};

/// Factors without common divisor and the taps that remain.
template <Element T>
struct RateChange {
  std::int64_t up = 1;
  std::int64_t down = 1;
  std::int64_t offset = 0;   ///< -up <= offset < down
  std::int64_t divisor = 1;  ///< the common divisor taken out: periods in one iteration
  std::vector<T> taps;       ///< may be empty: then all outputs are zero

  /// s of the output at a position within the cycle.
  std::int64_t Position(std::int64_t output) const { return output * down + offset; }
  std::int64_t NewestInput(std::int64_t position) const;
  std::int64_t OldestInput(std::int64_t position) const;  ///< NewestInput + 1 when no tap meets an input
};

template <Element T>
RateChange<T> ReduceRateChange(const T* taps, std::int32_t count, std::int32_t up, std::int32_t up_phase,
                               std::int32_t down, std::int32_t down_phase);

/// Steps that are summed up together: masked, plain, masked. Multiples of kChains: step n belongs to chain n % kChains.
struct BankSegment {
  std::size_t head = 0;
  std::size_t full = 0;
  std::size_t tail = 0;
};
inline constexpr std::size_t kChains = 4;
inline constexpr std::size_t kSegmentSteps = 256;  // longer sums are summed in pieces, which keeps rounding errors low

struct BankGroup {
  std::int64_t first_input = 0;  ///< of the window, from the start of the cycle; negative: from the past
  std::size_t lanes = 0;         ///< outputs, up to Row::kElements
  std::size_t steps = 0;
  std::size_t tap_row = 0;  ///< the first of steps * kParts rows
  std::size_t mask_row = 0;
  std::size_t first_segment = 0;
  std::size_t last_segment = 0;  ///< exclusive
};

template <Element T>
struct BankTables {
  std::int64_t periods = 1;  ///< in a cycle
  std::int64_t inputs = 1;   ///< in a cycle
  std::int64_t outputs = 1;  ///< in a cycle
  std::vector<BankGroup> groups;
  std::vector<BankSegment> segments;
  std::vector<Row<T>> taps;
  std::vector<Row<T>> masks;  ///< all bits set in the lanes whose windows hold the step's input; for masked steps only
};

/// One output of a period in the dots form.
struct DotsJob {
  std::int64_t output = 0;  ///< from the start of the period
  std::int64_t newest = 0;  ///< the last input of its window, from the start of the period, >= -1
  std::size_t tap_row = 0;  ///< the first of chunks * kParts rows: chunks from old to new, the first one masked
  std::size_t mask = 0;
};

template <Element T>
struct DotsTables {
  std::size_t chunks = 0;  ///< rows of input in a window
  std::vector<DotsJob> jobs;
  std::vector<Row<T>> taps;
  std::array<Row<T>, 2> masks;  ///< for phases with the most taps, and with one less
};

/// Whether the bank form is the faster one, and small enough.
template <Element T>
bool BankIsBetter(const RateChange<T>& rates);
template <Element T>
BankTables<T> MakeBank(const RateChange<T>& rates);
template <Element T>
DotsTables<T> MakeDots(const RateChange<T>& rates);

inline constexpr std::size_t kDotsBatch = 4;

/// Outputs that are summed up side by side.
template <Element T>
struct DotsBatch {
  std::array<const T*, kDotsBatch> x{};  ///< windows of whole rows
  std::array<const Row<T>*, kDotsBatch> taps{};
  std::array<const Row<T>*, kDotsBatch> mask{};
  std::array<T*, kDotsBatch> y{};
};

/// The kernels of one instruction set.
template <Element T>
struct MultiRateKernels {
  /// One group in `cycles` cycles, the first of which starts at x and y (y at the group's first output).
  void (*bank)(const BankTables<T>& bank, const BankGroup& group, const T* x, T* y, std::size_t cycles);
  void (*dots)(const DotsBatch<T>& batch, std::size_t chunks);
};

/// The kernels for this machine.
template <Element T>
const MultiRateKernels<T>& ChooseMultiRateKernels();

}  // namespace passband::primitives::detail
