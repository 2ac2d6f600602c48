// The interface between the entry points of fir.h and the methods behind them (direct, partitioned, multi-rate).
#pragma once

#include <cstdint>

#include "passband/foundation/element_types.h"
#include "passband/primitives/fir.h"

namespace passband::primitives {

class FirState {
 public:
  FirState() = default;
  FirState(const FirState&) = delete;
  FirState& operator=(const FirState&) = delete;
  virtual ~FirState() = default;
};

/// A filter on elements of type T. `count` is in samples for a single-rate filter, in iterations for a multi-rate one.
template <Element T>
class FirStateOf : public FirState {
 public:
  virtual void Filter(const T* src, T* dst, std::int32_t count) noexcept = 0;
  virtual T One(T x) noexcept = 0;  // single-rate filters only
};

// The factories of the methods. They throw std::bad_alloc; the entry points turn that into a status.
template <Element T>
FirState* NewDirectFir(const T* taps, std::int32_t count);
template <Element T>
FirState* NewPartitionedFir(const T* taps, std::int32_t count);
template <Element T>
FirState* NewMultiRateFir(const T* taps, std::int32_t count, std::int32_t up, std::int32_t up_phase, std::int32_t down,
                          std::int32_t down_phase);

/// True when the partitioned method is the faster one for so many taps of this type.
template <Element T>
bool PartitionedFirIsFaster(std::int32_t count);

}  // namespace passband::primitives
