// The real polynomial of two roots.
#pragma once

#include <cmath>

#include "passband/foundation/complex.h"

namespace passband::LinearSystems::detail {

/// x^2 + c1 x + c2.
struct Quadratic {
  double c1;
  double c2;
};

/// The real part of (x - a) (x - b). The product of the roots is formed without cancellation: both of its terms are
/// rounded together.
inline Quadratic RealQuadratic(TCplx a, TCplx b) {
  const double product = a.Re * b.Re;
  const double error = std::fma(a.Re, b.Re, -product);
  return {-(a.Re + b.Re), std::fma(-a.Im, b.Im, product) + error};
}

}  // namespace passband::LinearSystems::detail
