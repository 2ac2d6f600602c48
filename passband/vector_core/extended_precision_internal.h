// Numbers of twice the double's digits as an unevaluated sum of two doubles, as far as residuals and polynomials need
// them. Literature: Dekker, "A floating-point technique for extending the available precision", Numerische Mathematik
// 18, 1971; Ogita, Rump, Oishi, "Accurate sum and dot product", SIAM J. Sci. Comput. 26, 2005.
#pragma once

#include <cmath>

#include "passband/foundation/complex.h"

namespace passband::detail {

/// Hi + Lo, |Lo| at most half a unit in the last place of Hi.
struct TwinDouble {
  double Hi = 0;
  double Lo = 0;
};

/// a + b without error.
inline TwinDouble ExactSum(double a, double b) {
  const double sum = a + b;
  const double of_b = sum - a;
  return {sum, (a - (sum - of_b)) + (b - of_b)};
}

/// a b without error, unless it underflows.
inline TwinDouble ExactProduct(double a, double b) {
  const double product = a * b;
  return {product, std::fma(a, b, -product)};
}

inline TwinDouble operator+(TwinDouble a, TwinDouble b) {
  const TwinDouble high = ExactSum(a.Hi, b.Hi);
  const TwinDouble low = ExactSum(a.Lo, b.Lo);
  const TwinDouble sum = ExactSum(high.Hi, high.Lo + low.Hi);
  return ExactSum(sum.Hi, sum.Lo + low.Lo);
}
inline TwinDouble operator-(TwinDouble a) { return {-a.Hi, -a.Lo}; }
inline TwinDouble operator*(TwinDouble a, double b) {
  const TwinDouble product = ExactProduct(a.Hi, b);
  return ExactSum(product.Hi, std::fma(a.Lo, b, product.Lo));
}

/// A complex number of twice the digits.
struct TwinComplex {
  TwinDouble Re;
  TwinDouble Im;

  TwinComplex() = default;
  TwinComplex(TwinDouble re, TwinDouble im) : Re(re), Im(im) {}
  explicit TwinComplex(TCplx z) : Re{z.Re, 0}, Im{z.Im, 0} {}
};

inline TwinComplex operator+(TwinComplex a, TwinComplex b) { return {a.Re + b.Re, a.Im + b.Im}; }
inline TwinComplex operator-(TwinComplex a) { return {-a.Re, -a.Im}; }
inline TwinComplex operator*(TwinComplex a, TCplx b) { return {a.Re * b.Re + a.Im * -b.Im, a.Re * b.Im + a.Im * b.Re}; }

inline double Rounded(TwinDouble a) { return a.Hi; }
inline TCplx Rounded(TwinComplex a) { return {a.Re.Hi, a.Im.Hi}; }

inline TwinDouble MakeTwin(double x) { return {x, 0}; }
inline TwinComplex MakeTwin(TCplx z) { return TwinComplex(z); }

}  // namespace passband::detail
