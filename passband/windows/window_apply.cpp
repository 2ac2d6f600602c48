#include <algorithm>
#include <cstddef>
#include <string>

#include "passband/foundation/exceptions.h"
#include "passband/primitives/window_multiply.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"
#include "passband/windows/window_apply_internal.h"

namespace passband::detail {

void CheckStatus(primitives::Status status) {
  if (Failed(status)) ERaise(primitives::StatusText(status));
}

void ApplyWindow(TVec& data, std::int32_t index, std::span<const double> window) {
  const auto len = static_cast<std::int32_t>(window.size());
  ForAny(data, [&]<Element T>(ElementTag<T>) {
    T* const x = data.Elements<T>().data() + index;
    if constexpr (std::same_as<RealOf<T>, double>) {
      CheckStatus(primitives::WindowMultiply(x, window.data(), len));
    } else {
      Borrowed<TVec> rounded;
      rounded->Size(len, TMtxFloatPrecision::SingleReal);
      const auto w = rounded->SValues();
      std::transform(window.begin(), window.end(), w.begin(), [](double value) { return static_cast<float>(value); });
      CheckStatus(primitives::WindowMultiply(x, w.data(), len));
    }
  });
}

}  // namespace passband::detail
