#include "passband/streaming/notch_filter.h"

#include <cmath>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/streaming/coefficients_internal.h"

namespace passband::SignalUtils {

void NotchFilter(double NotchFrequency, double r, TVec& Num, TVec& Den, double FS) {
  if (!CheckRange(0, r, 1)) ERaise("not (0 < r < 1)");
  if (!CheckRange(0, NotchFrequency, FS / 2)) ERaise("not (0 < NotchFrequency < FS/2)");
  const double cosine = std::cos(2 * PI * (NotchFrequency / FS));
  detail::SetCoefficients(Num, {1, -2 * cosine, 1}, Den, {1, -2 * r * cosine, r * r});
}

}  // namespace passband::SignalUtils
