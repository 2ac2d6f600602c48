// The searches of one instruction set.
#pragma once

#include <cstddef>
#include <tuple>

#include "passband/primitives/search.h"

namespace passband::primitives::detail {

template <class R>
struct SearchKernels {
  std::size_t (*first)(const R* x, std::size_t count, Relation relation, R level);
  std::size_t (*last)(const R* x, std::size_t count, Relation relation, R level);
  std::size_t (*step)(const R* x, std::size_t steps, bool rising);
  std::size_t (*closest)(const R* x, std::size_t count, R value);
};
using SearchTable = std::tuple<SearchKernels<float>, SearchKernels<double>>;

}  // namespace passband::primitives::detail
