// The state of a running median. Three methods share the history; which one takes a block depends on the length of the
// window and of the block, and does not show in the results:
//
//   windows up to 9            networks of minima and maxima, one output in each vector lane (median_network-inl.h)
//   up to some hundreds,       sorted windows, one in each vector lane, that walk over distant stretches of the block
//   long blocks                (median_lanes-inl.h)
//   else                       one window as sorted runs, which are searched and shifted by vectors (median_runs-inl.h)
//
// All of them work on keys: the bits of the samples as integers whose order is that of the values, so that zeros of both
// signs and NaN have their place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "passband/foundation/element_types.h"
#include "passband/primitives/median_handle.h"

namespace passband::primitives {

struct MedianState {
  bool is_double;
};

namespace detail {

template <RealElement R>
using MedianKey = std::conditional_t<sizeof(R) == sizeof(double), std::int64_t, std::int32_t>;

inline constexpr std::size_t kMedianAlignment = 64;
/// Keys of the longest vector; arrays that vectors read beyond their end have as many to spare.
template <class Key>
inline constexpr std::size_t kMedianRow = kMedianAlignment / sizeof(Key);

inline constexpr std::size_t kMedianNetwork = 9;   // longest window of the networks
inline constexpr std::size_t kMedianPiece = 4096;  // samples that a block is walked through with
/// Longest window of the lanes, for each lane of a vector.
inline constexpr std::size_t kMedianPerLane = 12;

/// A stretch of a window in ascending order. Behind its keys the highest one fills it up.
template <class Key>
struct MedianRun {
  Key* keys;
  std::size_t count;
};

/// The count of a run that is not there: too high for its neighbour to join it.
inline constexpr std::size_t kMedianNoRun = std::size_t{1} << 40;

/// A window as sorted runs of up to `capacity` keys, and the place of the median in it. Run r holds keys from
/// separators[r - 1] to separators[r], both included. Any two neighbours together hold at least half of `capacity`.
template <class Key>
struct MedianRuns {
  std::size_t capacity;
  MedianRun<Key>* runs;  // before the first and behind the last one stands one of kMedianNoRun keys
  Key* separators;       // the last one, and those beyond it, are the highest key
  Key* heads;            // the last separator of each kMedianRow ones
  Key** spare;           // memory of runs that are not in use
  std::size_t count;
  std::size_t spare_count;
  std::size_t middle;  // the run that holds the median
  std::size_t before;  // keys in the runs before it
};

/// Windows in lanes: row r of `columns` holds sample r of each stretch, row k of `sorted` the k-th smallest of each window.
template <class Key>
struct MedianLanes {
  Key* columns;
  Key* sorted;
  Key* medians;
};

}  // namespace detail

template <RealElement R>
struct MedianStateOf : MedianState {
  using Key = detail::MedianKey<R>;

  std::size_t mask;
  bool started;
  // The samples of the window, and those of the block behind them.
  Key* line;
  std::size_t line_size;
  std::size_t place;  // of the next sample in `line`; the `mask` before it are there
  detail::MedianLanes<Key> lanes;
  detail::MedianRuns<Key> runs;
  // The window before the next sample in ascending order, for the runs to be built from; null when they hold it already.
  const Key* window;
  std::size_t window_step;
};

}  // namespace passband::primitives
