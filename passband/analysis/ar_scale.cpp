#include <algorithm>
#include <cmath>
#include <span>
#include <string>

#include "passband/analysis/ar_models_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/vector_core/double_data_internal.h"

namespace passband::SignalUtils::detail {

int BinaryExponent(const TVec& x, std::string_view routine) {
  if (!passband::detail::AllFinite(x)) ERaise(std::string(routine) + ": an element is not finite");
  const double largest = ForAny(x, [&]<Element T>(ElementTag<T>) {
    double part = 0;
    for (const T element : x.Elements<T>()) {
      const auto z = passband::detail::WidenElement<TCplx>(element);
      part = std::max({part, std::abs(z.Re), std::abs(z.Im)});
    }
    return part;
  });
  return largest > 0 ? std::clamp(std::ilogb(largest), -1000, 1000) : 0;
}

void WidenScaled(const TVec& x, int exponent, TVec& scaled) {
  scaled.Copy(x);
  scaled.SetFloatPrecision(MakePrecision(x.Complex(), true));
  if (exponent != 0) scaled.Scale(std::ldexp(1.0, -exponent));
}

}  // namespace passband::SignalUtils::detail
