// Products of many numbers that neither over- nor underflow on the way.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "passband/foundation/complex.h"

namespace passband::LinearSystems::detail {

/// Mantissa times 2^exponent, complex.
class ScaledProduct {
 public:
  void Multiply(TCplx x) {
    mantissa_ = mantissa_ * Normal(x, 1);
    Normalise();
  }
  void Divide(TCplx x) {
    mantissa_ = CDiv(mantissa_, Normal(x, -1));
    Normalise();
  }

  double Re() const { return std::ldexp(mantissa_.Re, Clamped(exponent_)); }
  /// factor Re(this), which may be in the range of a double although Re(this) is not.
  double ReTimes(double factor) const { return std::ldexp(mantissa_.Re * factor, Clamped(exponent_)); }
  /// Re(this) / Re(other), without rounding either to the range of a double.
  double ReOver(const ScaledProduct& other) const {
    return std::ldexp(mantissa_.Re / other.mantissa_.Re, Clamped(exponent_ - other.exponent_));
  }

 private:
  static bool IsOrdinary(double size) { return size > 0 && std::isfinite(size); }
  static int Clamped(std::int64_t exponent) {
    return static_cast<int>(std::clamp<std::int64_t>(exponent, -5000, 5000));
  }
  // x / 2^e with parts of at most 1, e kept in the exponent.
  TCplx Normal(TCplx x, int sign) {
    const double size = std::max(std::abs(x.Re), std::abs(x.Im));
    if (!IsOrdinary(size)) return x;
    const int e = std::ilogb(size);
    exponent_ += sign * e;
    return {std::ldexp(x.Re, -e), std::ldexp(x.Im, -e)};
  }
  void Normalise() { mantissa_ = Normal(mantissa_, 1); }

  TCplx mantissa_{1, 0};
  std::int64_t exponent_ = 0;
};

}  // namespace passband::LinearSystems::detail
