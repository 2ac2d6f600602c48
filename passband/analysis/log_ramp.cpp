#include "passband/analysis/log_ramp.h"

#include <cmath>
#include <cstddef>

#include "passband/vector_core/dispatch.h"

namespace passband::SignalUtils {

void LogRamp(TVec& Dst, double Start, double Stop) {
  Dst.Size(Dst.Length(), false, Dst.IsDouble());
  ForReal(Dst, [&]<RealElement R>(ElementTag<R>) {
    const auto values = Dst.Elements<R>();
    for (std::size_t i = 0; i < values.size(); ++i) {
      const bool last = i > 0 && i + 1 == values.size();
      const double part = i == 0 ? 0 : static_cast<double>(i) / static_cast<double>(values.size() - 1);
      values[i] = static_cast<R>(std::pow(10.0, last ? Stop : Start + part * (Stop - Start)));
    }
  });
}

}  // namespace passband::SignalUtils
