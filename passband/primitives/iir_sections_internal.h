// A cascade of second-order sections: its two forms and its state. All of it is computed in double, also for single
// precision data; the parts of complex data are two streams through the same filter. Nothing fuses a multiplication with
// an addition, and every output has one order of operations: the same bits on every processor, for every cut.
//
// Plain form: section after section in transposed form,
//
//   y = b0 x + z1;   z1 = (b1 x - a1 y) + z2;   z2 = b2 x - a2 y
//
// for blocks with the sections in the lanes of vectors, each one sample behind the section before it.
//
// Grouped form, for up to kIirMostGrouped sections: up to four sections form a bundle with S = 2, 4 or 8 states s,
// s' = A s + B x, y = C s + h[0] x, and impulse response h. Samples go by groups of eight, counted from the beginning of
// the stream. For x[0] .. x[7] and the states s at the beginning of the group
//
//   direct[i] = 0 + h[i] x[0] + h[i - 1] x[1] + ... + h[1] x[i - 1]    added in this order
//   past[i]   = (C A^i) s                                              a balanced tree
//   y[i]      = (direct[i] + past[i]) + h[0] x[i]
//   inflow    = 0 + A^7 B x[0] + A^6 B x[1] + ... + B x[7]             added in this order
//   s         = ((rest s) + inflow) + power s                          a balanced tree; power + rest = A^8
//
// `power` is A^8 rounded to double and `rest` what rounding took from the diagonal blocks: rounding alone would move
// poles near the unit circle too far. Sums that begin with +0 never become -0, so that a product with a 0 in a table
// changes nothing. A NaN or infinity is kept out of the products with earlier outputs by masks.
//
// After a group, states below kIirSilence become 0; in plain form z1 and z2 of a section, when both are below it, at the
// end of every stretch of kIirStretch samples. A filter falls silent and does not linger among subnormal numbers.
#pragma once

#include <cstddef>
#include <cstdint>

#include "passband/foundation/element_types.h"
#include "passband/primitives/iir_state_internal.h"

namespace passband::primitives::detail {

inline constexpr std::size_t kIirGroup = 8;        // samples; tables and kernels are made for this number
inline constexpr std::size_t kIirBundle = 4;       // most sections of a bundle
inline constexpr std::size_t kIirMostGrouped = 8;  // more sections are faster in plain form

// Smaller inputs and outputs, and smaller state variables, become 0. Products of state variables with small factors, and
// the states of later sections that get an attenuated signal, stay normal numbers.
inline constexpr double kIirLeast = 0x1p-1010;
inline constexpr double kIirSilence = 0x1p-800;

/// Taps of one section, divided by a0.
struct IirSection {
  double b0, b1, b2, a1, a2;
};

/// The tables of a bundle; vectors lie as columns, one for each sample or state that they are multiplied with.
template <std::size_t kStates>
struct alignas(kIirStateAlignment) IirBundle {
  double direct[kIirGroup - 1][kIirGroup];  // direct[j][i] = h[i - j] for i > j, else 0
  double past[kStates][kIirGroup];          // past[k][i] = (C A^i)[k]
  double inflow[kIirGroup][kStates];        // inflow[j] = A^(7 - j) B
  double power[kStates][kStates];
  double rest[2][kStates];  // rest[0][k] goes with state k, rest[1][k] with its neighbour in the section
  double gain;              // h[0]
};

/// What a bundle keeps of one part of the samples: the states at the beginning of the group, and the sums so far.
template <std::size_t kStates>
struct alignas(kIirStateAlignment) IirBundleSums {
  double past[kIirGroup];
  double direct[kIirGroup];
  double states[kStates];
  double inflow[kStates];
};

/// A bundle in the state of a filter for samples of kParts parts.
template <std::size_t kStates, std::size_t kParts>
struct IirBundleOf {
  IirBundle<kStates> tables;
  IirBundleSums<kStates> sums[kParts];
};

/// The plain form: arrays with one element for each section, the last section at the end.
struct IirLanes {
  std::size_t first;   // index of the first section
  std::size_t length;  // of the arrays, a multiple of kIirLanes
  double* b0;
  double* b1;
  double* b2;
  double* a1;
  double* a2;
  double* z1;  // z1 and z2 of each part, one behind the other
  double* z2;
};
inline constexpr std::size_t kIirLanes = 8;
inline constexpr std::size_t kIirStretch = 1024;  // samples that a block is walked through with

template <Element T>
struct IirSectionsState : IirStateOf<T> {
  static constexpr std::size_t kParts = sizeof(T) / sizeof(RealOf<T>);

  std::size_t place;                // of the next sample in its group or stretch
  IirBundleOf<8, kParts>* bundles;  // of four sections each
  std::size_t bundle_count;         // without the last one
  void* last;                       // IirBundleOf<2, 4 or 8, kParts>
  std::size_t last_states;          // 2, 4 or 8; 0 for the plain form
  IirLanes lanes;
};

/// Fills the tables for `count` sections, which may be fewer than the bundle has room for. False when they do not hold
/// finite numbers or poles lie too far outside the unit circle; `bundle` is then undefined.
template <std::size_t kStates>
bool MakeIirBundle(const IirSection* sections, std::size_t count, IirBundle<kStates>& bundle) noexcept;

/// True unless an estimate finds the rounding errors of the grouped form in double well below those of the plain form;
/// for at most kIirMostGrouped sections.
bool IirGroupsMayBeNoisier(const IirSection* sections, std::size_t count) noexcept;

}  // namespace passband::primitives::detail
