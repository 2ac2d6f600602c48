#include "passband/windows/cosine_tapered.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "passband/foundation/scalars.h"
#include "passband/primitives/cosine_window.h"
#include "passband/vector_core/pool.h"
#include "passband/windows/window_apply_internal.h"

namespace passband::SignalUtils {

TVec& CosineTappered(TVec& Vec, double Percent, std::int32_t Index, std::int32_t Len) {
  if (!CheckRange(0, Percent, 100)) ERaise("not (0 < Percent < 100)");
  Vec.ValidateParams(Index, Len);
  const std::int32_t taper = Round(Len * Percent / 200);
  if (taper < 2) return Vec;
  // Both flanks are the halves of one symmetric window of 2 T - 1 points, 0.5 - 0.5 cos(2 pi n / (2 T - 2)). Near 100
  // percent of an odd length they may share the middle point of the stretch, where both are 1.
  Borrowed<TVec> work;
  work->Size(2 * taper - 1, TMtxFloatPrecision::DoubleReal);
  const std::span<double> w = work->Values();
  std::fill(w.begin(), w.end(), 1.0);
  detail::CheckStatus(
      primitives::CosineWindow(w.data(), 2 * taper - 1, {0, 1, 0}, primitives::WindowPeriod::Symmetric));
  const auto flank = static_cast<std::size_t>(taper);
  detail::ApplyWindow(Vec, Index, w.first(flank));
  detail::ApplyWindow(Vec, Index + Len - taper, w.last(flank));
  return Vec;
}

}  // namespace passband::SignalUtils
