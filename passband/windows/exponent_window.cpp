#include "passband/windows/exponent_window.h"

#include <cmath>

#include "passband/vector_core/pool.h"
#include "passband/windows/window_apply_internal.h"

namespace passband::SignalUtils {

TVec& ExponentWindow(TVec& Vec, double EndValue, std::int32_t Index, std::int32_t Len) {
  Vec.ValidateParams(Index, Len);
  if (Len < 2) return Vec;  // a window of one point is a single 1
  Borrowed<TVec> work;
  work->Size(Len, TMtxFloatPrecision::DoubleReal);
  const double slope = std::log(EndValue) / (Len - 1);
  double n = 0;
  for (double& w : work->Values()) w = std::exp(slope * n++);
  detail::ApplyWindow(Vec, Index, work->Values());
  return Vec;
}

}  // namespace passband::SignalUtils
