#include "passband/primitives/iir.h"

#include "passband/primitives/iir_state_internal.h"

namespace passband::primitives {

template <Element T>
Status IirFilter(IirState& state, const T* src, T* dst, std::int32_t count) noexcept {
  if (count < 0) return Status::BadSize;
  if (count == 0) return Status::Ok;
  if (src == nullptr || dst == nullptr) return Status::NullPointer;
  auto& filter = static_cast<IirStateOf<T>&>(state);
  filter.filter(filter, src, dst, count);
  return Status::Ok;
}

template <Element T>
T IirOne(IirState& state, T x) noexcept {
  auto& filter = static_cast<IirStateOf<T>&>(state);
  return filter.one(filter, x);
}

template Status IirFilter(IirState&, const float*, float*, std::int32_t) noexcept;
template Status IirFilter(IirState&, const double*, double*, std::int32_t) noexcept;
template Status IirFilter(IirState&, const TSCplx*, TSCplx*, std::int32_t) noexcept;
template Status IirFilter(IirState&, const TCplx*, TCplx*, std::int32_t) noexcept;

template float IirOne(IirState&, float) noexcept;
template double IirOne(IirState&, double) noexcept;
template TSCplx IirOne(IirState&, TSCplx) noexcept;
template TCplx IirOne(IirState&, TCplx) noexcept;

}  // namespace passband::primitives
