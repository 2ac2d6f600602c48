#include <algorithm>

#include "passband/analysis/filter_spectra_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"

namespace passband::SignalUtils::detail {

std::int32_t TransformLength(const TVec& num, const TVec* den, std::int32_t padding, std::string_view empty) {
  if (padding < 1) ERaise("ZeroPadding < 1");
  if (num.Length() == 0) ERaise(empty);
  const std::int64_t length = std::max(num.Length(), den == nullptr ? 0 : den->Length());
  constexpr std::int64_t kBeyond = (std::int64_t{1} << 30) + 1;
  return LargestExp2(static_cast<std::int32_t>(std::min(length * padding, kBeyond)));
}

bool HasComplex(const TVec& num, const TVec* den) { return num.Complex() || (den != nullptr && den->Complex()); }

void PadInDouble(const TVec& coefficients, bool complex, std::int32_t length, TVec& padded) {
  padded.Copy(coefficients);
  padded.SetFloatPrecision(MakePrecision(complex, true));
  padded.Resize(length, true);
}

}  // namespace passband::SignalUtils::detail
