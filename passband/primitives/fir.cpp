#include "passband/primitives/fir.h"

#include <new>

#include "passband/primitives/fir_state_internal.h"

namespace passband::primitives {
namespace {

// Creates a state and hands it over; `state` keeps what it holds when there is no memory for another one.
template <class Factory>
Status Create(FirHandle& state, const Factory& factory) {
  try {
    state.reset(factory());
    return Status::Ok;
  } catch (const std::bad_alloc&) {
    return Status::OutOfMemory;
  }
}

template <Element T>
Status Run(FirState& state, const T* src, T* dst, std::int32_t count) {
  if (count < 0) return Status::BadSize;
  if (count == 0) return Status::Ok;
  if (src == nullptr || dst == nullptr) return Status::NullPointer;
  static_cast<FirStateOf<T>&>(state).Filter(src, dst, count);
  return Status::Ok;
}

}  // namespace

void FirStateDeleter::operator()(FirState* state) const noexcept { delete state; }

template <Element T>
Status FirCreate(const T* taps, std::int32_t count, FirHandle& state) noexcept {
  if (count < 1) return Status::BadSize;
  if (taps == nullptr) return Status::NullPointer;
  return Create(state, [&] {
    return PartitionedFirIsFaster<T>(count) ? NewPartitionedFir(taps, count) : NewDirectFir(taps, count);
  });
}

template <Element T>
Status FirMultiRateCreate(const T* taps, std::int32_t count, std::int32_t up, std::int32_t up_phase, std::int32_t down,
                          std::int32_t down_phase, FirHandle& state) noexcept {
  if (count < 1) return Status::BadSize;
  if (up < 1 || down < 1) return Status::BadFactor;
  if (up_phase < 0 || up_phase >= up || down_phase < 0 || down_phase >= down) return Status::BadPhase;
  if (taps == nullptr) return Status::NullPointer;
  return Create(state, [&] { return NewMultiRateFir(taps, count, up, up_phase, down, down_phase); });
}

template <Element T>
Status FirFilter(FirState& state, const T* src, T* dst, std::int32_t count) noexcept {
  return Run(state, src, dst, count);
}

template <Element T>
Status FirMultiRateFilter(FirState& state, const T* src, T* dst, std::int32_t iterations) noexcept {
  return Run(state, src, dst, iterations);
}

template <Element T>
T FirOne(FirState& state, T x) noexcept {
  return static_cast<FirStateOf<T>&>(state).One(x);
}

template Status FirCreate(const float*, std::int32_t, FirHandle&) noexcept;
template Status FirCreate(const double*, std::int32_t, FirHandle&) noexcept;
template Status FirCreate(const TSCplx*, std::int32_t, FirHandle&) noexcept;
template Status FirCreate(const TCplx*, std::int32_t, FirHandle&) noexcept;

template Status FirMultiRateCreate(const float*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                                   FirHandle&) noexcept;
template Status FirMultiRateCreate(const double*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                                   FirHandle&) noexcept;
template Status FirMultiRateCreate(const TSCplx*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                                   FirHandle&) noexcept;
template Status FirMultiRateCreate(const TCplx*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                                   FirHandle&) noexcept;

template Status FirFilter(FirState&, const float*, float*, std::int32_t) noexcept;
template Status FirFilter(FirState&, const double*, double*, std::int32_t) noexcept;
template Status FirFilter(FirState&, const TSCplx*, TSCplx*, std::int32_t) noexcept;
template Status FirFilter(FirState&, const TCplx*, TCplx*, std::int32_t) noexcept;

template Status FirMultiRateFilter(FirState&, const float*, float*, std::int32_t) noexcept;
template Status FirMultiRateFilter(FirState&, const double*, double*, std::int32_t) noexcept;
template Status FirMultiRateFilter(FirState&, const TSCplx*, TSCplx*, std::int32_t) noexcept;
template Status FirMultiRateFilter(FirState&, const TCplx*, TCplx*, std::int32_t) noexcept;

template float FirOne(FirState&, float) noexcept;
template double FirOne(FirState&, double) noexcept;
template TSCplx FirOne(FirState&, TSCplx) noexcept;
template TCplx FirOne(FirState&, TCplx) noexcept;

}  // namespace passband::primitives
