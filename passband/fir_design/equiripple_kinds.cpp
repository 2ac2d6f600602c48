#include "passband/fir_design/equiripple_kinds_internal.h"

namespace passband::OptimalFir::detail {

using SignalUtils::TFilterType;
using enum SignalUtils::TFilterType;

bool HasKind(OpenArray W, TFilterType type) {
  return W.Length() == 4 || (W.Length() == 2 && type != ftBandpass && type != ftBandstop);
}

bool IsTypeIII(TFilterType type) {
  return type == ftHilbertIII || type == ftDifferentiatorIII || type == ftDoubleDifferentiatorIII ||
         type == ftIntegratorIII || type == ftDoubleIntegratorIII;
}

bool IsTypeIV(TFilterType type) {
  return type == ftHilbertIV || type == ftDifferentiatorIV || type == ftDoubleDifferentiatorIV ||
         type == ftIntegratorIV || type == ftDoubleIntegratorIV;
}

std::int32_t MadeOdd(std::int32_t length) {
  if (length % 2 == 1) return length;
  return length < kMaxLength ? length + 1 : length - 1;
}

std::int32_t MadeEven(std::int32_t length) { return length % 2 == 0 ? length : length + 1; }

std::int32_t FittingLength(std::int32_t length, TFilterType type) {
  if (IsTypeIII(type)) return MadeOdd(length);
  if (IsTypeIV(type)) return MadeEven(length);
  return length;
}

}  // namespace passband::OptimalFir::detail
