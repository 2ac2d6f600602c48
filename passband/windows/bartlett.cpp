#include "passband/windows/bartlett.h"

#include "passband/primitives/cosine_window.h"
#include "passband/vector_core/dispatch.h"
#include "passband/windows/window_apply_internal.h"

namespace passband::SignalUtils {

TVec& Bartlett(TVec& Vec, std::int32_t Index, std::int32_t Len) {
  Vec.ValidateParams(Index, Len);
  if (Len < 3) return Vec;
  ForAny(Vec, [&]<Element T>(ElementTag<T>) {
    detail::CheckStatus(primitives::TriangleWindow(Vec.Elements<T>().data() + Index, Len));
  });
  return Vec;
}

}  // namespace passband::SignalUtils
