// One design on its way to the wanted number of cosines, and its refinement beyond the noise of doubles.
#pragma once

#include <cstddef>

#include "passband/fir_design/equiripple_exchange_internal.h"

namespace passband::OptimalFir::detail {

struct Stage {
  Target target;
  std::size_t size = 0;  ///< cosines
  ExchangeResult result;
  bool finished = false;  ///< the base of the target is the approximation
  bool exact = false;     ///< and leaves no error at all
};

/// Makes the base of the target the approximation itself, to the last digits that matter: adds the interpolant of the
/// nodes and what rounding has left of it, and repeats the exchange where its noise is above what the base now shows.
/// False when the error cannot be brought down to the levelled one.
bool Refine(Stage& stage);

/// Adds the interpolant of the nodes to the base. True when this leaves no error on the grid.
bool IsExact(Stage& stage);

/// The largest weighted error of the base at points that lie close for so many cosines; NaN if one is.
double LargestError(const Target& target, std::size_t size);

}  // namespace passband::OptimalFir::detail
