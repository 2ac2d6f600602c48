// The direct filter on TSCplx.
#include "passband/primitives/fir_direct_taps.h"
#include "passband/primitives/fir_state_internal.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/fir_direct_c32.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "passband/primitives/fir_direct-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
FirState* New(const TSCplx* h, std::int32_t count) { return NewDirect(h, count); }
}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives {
namespace {
HWY_EXPORT(New);
}  // namespace

template <>
FirState* NewDirectFir<TSCplx>(const TSCplx* taps, std::int32_t count) {
  return HWY_DYNAMIC_DISPATCH(New)(taps, count);
}
}  // namespace passband::primitives
#endif
