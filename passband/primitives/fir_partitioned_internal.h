// The transform behind long FIR filters and its kernels.
//
// A block of a stream and the taps are residues of polynomials modulo z^N - j, held as their values at the N roots. The
// roots are found by halving: z^2M - c = (z^M - w)(z^M + w), w^2 = c, and a + z^M b leaves the remainders a + w b and
// a - w b. Every halving works in place with one factor for a whole stretch, there is no reordering, and products are
// taken in the order in which the halving leaves the values.
//
// Real samples: N is the block length B. With z^B = j the residue of x0 + z^B x1, two neighbouring blocks, is
// x0 + j x1; times taps of degree below B its imaginary part is the part of the convolution that lies in the second
// block. Complex samples: N = 2 B, and the upper half of the residue is that part.
//
// Literature: Crandall, Fagin, "Discrete weighted transforms and large-integer arithmetic", Mathematics of Computation
// 62, 1994 (right-angle convolution); Gardner, "Efficient convolution without input-output delay", Journal of the Audio
// Engineering Society 43, 1995 (partitions behind a direct head).
#pragma once

#include <cstddef>
#include <new>
#include <vector>

#include "passband/foundation/element_types.h"
#include "passband/primitives/fir_state_internal.h"

namespace passband::primitives::detail {

template <class R>
struct LineAllocator {
  using value_type = R;
  static constexpr std::align_val_t kLine{64};
  LineAllocator() = default;
  template <class S>
  LineAllocator(const LineAllocator<S>&) {}
  R* allocate(std::size_t count) { return static_cast<R*>(::operator new(count * sizeof(R), kLine)); }
  void deallocate(R* memory, std::size_t) { ::operator delete(memory, kLine); }
  bool operator==(const LineAllocator&) const { return true; }
};
/// Memory that starts at a cache line.
template <class R>
using LineVector = std::vector<R, LineAllocator<R>>;

/// Points of the transform for blocks of so many samples.
template <Element T>
constexpr std::size_t TransformLength(std::size_t block) {
  return IsComplex<T> ? 2 * block : block;
}

/// The factors w of one transform. The halvings form a binary tree with its root at 1 and the children of node i at 2 i
/// and 2 i + 1; a child stands for the remainder with + w and - w in this order.
template <RealElement R>
struct TransformTables {
  std::size_t length = 0;      ///< N, a power of two, at least 4 vectors
  LineVector<R> nodes;         ///< w of node i: real part at 2 i, imaginary part at 2 i + 1
  LineVector<R> lane_factors;  ///< w of the halvings within a vector: for each pair of vectors and each of those
                               ///< halvings a vector of real and a vector of imaginary parts
};

inline constexpr std::size_t kProductVectors = 4;  ///< vectors of a spectrum that are multiplied together

/// The products of one block: sum over j = 0 .. count - 1 of taps[j] times the spectra from old to new.
template <RealElement R>
struct ProductSum {
  const R* taps = nullptr;     ///< groups of kProductVectors vectors of points; within a group the partitions j
  const R* spectra = nullptr;  ///< a ring of `count` spectra
  std::size_t stride = 0;      ///< from one spectrum to the next
  std::size_t count = 0;
  std::size_t oldest = 0;
};

/// The kernels of one instruction set. A spectrum is a sequence of vectors, the real parts of `lanes` points and then
/// their imaginary parts; the points of two neighbouring vectors are permuted as `KernelPoint` says.
template <Element T>
struct PartitionKernels {
  using R = RealOf<T>;
  std::size_t lanes;
  void (*forward)(const TransformTables<R>& tables, const T* older, const T* newer, R* spectrum);
  void (*multiply)(const ProductSum<R>& sum, std::size_t length, R* spectrum);
  /// The part in the second block, times N; `spectrum` is destroyed.
  void (*inverse)(const TransformTables<R>& tables, R* spectrum, T* newer);
  void (*add)(T* x, const T* y, std::size_t count);  ///< x += y
};
template <Element T>
const PartitionKernels<T>& ChoosePartitionKernels();

/// The point that stands at position `at` of a spectrum when `halvings` of the log2(lanes) halvings within vectors are
/// done: each of them exchanges the bit that selects the vector of a pair with one bit of the lane.
constexpr std::size_t KernelPoint(std::size_t at, std::size_t lanes, std::size_t halvings) {
  for (std::size_t bit = lanes >> halvings; halvings > 0; --halvings, bit *= 2) {
    const bool vector = (at & lanes) != 0;
    const bool lane = (at & bit) != 0;
    if (vector != lane) at ^= lanes | bit;
  }
  return at;
}

/// Block lengths of the levels, smallest first, each a multiple of the one before; the smallest is also the number of
/// taps of the direct head.
template <Element T>
std::vector<std::size_t> PartitionedFirBlocks(std::size_t count);
template <Element T>
FirState* NewPartitionedFir(const T* taps, std::size_t count, const std::vector<std::size_t>& blocks);

}  // namespace passband::primitives::detail
