#include "passband/foundation/complex.h"

#include <cmath>
#include <limits>

namespace passband {
namespace {

template <class R>
bool IsFinite(BasicCplx<R> z) {
  return std::isfinite(z.Re) && std::isfinite(z.Im);
}

// Smith's quotient with the operands scaled into a range where neither a product nor the denominator can leave it.
template <class R>
BasicCplx<R> Quotient(BasicCplx<R> a, BasicCplx<R> b) {
  if (b == BasicCplx<R>{}) return {a.Re / std::abs(b.Re), a.Im / std::abs(b.Re)};
  if (!IsFinite(a) || !IsFinite(b)) return std::complex<R>(a) / std::complex<R>(b);
  int exponent_a = 0;
  int exponent_b = 0;
  static_cast<void>(std::frexp(std::max(std::abs(a.Re), std::abs(a.Im)), &exponent_a));
  static_cast<void>(std::frexp(std::max(std::abs(b.Re), std::abs(b.Im)), &exponent_b));
  const BasicCplx<R> x(std::ldexp(a.Re, -exponent_a), std::ldexp(a.Im, -exponent_a));
  const BasicCplx<R> y(std::ldexp(b.Re, -exponent_b), std::ldexp(b.Im, -exponent_b));
  BasicCplx<R> q;
  if (std::abs(y.Re) >= std::abs(y.Im)) {
    const R ratio = y.Im / y.Re;
    const R denominator = y.Re + y.Im * ratio;
    q = {(x.Re + x.Im * ratio) / denominator, (x.Im - x.Re * ratio) / denominator};
  } else {
    const R ratio = y.Re / y.Im;
    const R denominator = y.Re * ratio + y.Im;
    q = {(x.Re * ratio + x.Im) / denominator, (x.Im * ratio - x.Re) / denominator};
  }
  const int exponent = exponent_a - exponent_b;
  return {std::ldexp(q.Re, exponent), std::ldexp(q.Im, exponent)};
}

template <class R>
BasicCplx<R> Power(BasicCplx<R> z, std::int32_t n) {
  const bool inverted = n < 0;
  auto rest = static_cast<std::uint32_t>(inverted ? -static_cast<std::int64_t>(n) : n);
  BasicCplx<R> result(1, 0);
  for (BasicCplx<R> square = z; rest != 0; rest >>= 1, square = CSqr(square)) {
    if ((rest & 1U) != 0) result = result * square;
  }
  return inverted ? Quotient(BasicCplx<R>(1, 0), result) : result;
}

}  // namespace

TCplx CDiv(TCplx a, TCplx b) { return Quotient(a, b); }
TSCplx CDiv(TSCplx a, TSCplx b) { return Quotient(a, b); }
TCplx CDiv(double a, TCplx b) { return Quotient(TCplx(a, 0), b); }
TSCplx CDiv(float a, TSCplx b) { return Quotient(TSCplx(a, 0), b); }
TCplx CInv(TCplx z) { return Quotient(TCplx(1, 0), z); }
TSCplx CInv(TSCplx z) { return Quotient(TSCplx(1, 0), z); }
double CAbs(TCplx z) { return std::hypot(z.Re, z.Im); }
float CAbs(TSCplx z) { return std::hypot(z.Re, z.Im); }
TCplx CSqrt(TCplx z) { return std::sqrt(std::complex<double>(z)); }
TSCplx CSqrt(TSCplx z) { return std::sqrt(std::complex<float>(z)); }
TCplx IntPower(TCplx z, std::int32_t n) { return Power(z, n); }
TSCplx IntPower(TSCplx z, std::int32_t n) { return Power(z, n); }
TCplx Ln(TCplx z) { return std::log(std::complex<double>(z)); }
TSCplx Ln(TSCplx z) { return std::log(std::complex<float>(z)); }
TCplx Expj(double angle) { return {std::cos(angle), std::sin(angle)}; }

bool Equal(TCplx a, TCplx b, double tolerance) {
  return a == b || (std::abs(a.Re - b.Re) <= tolerance && std::abs(a.Im - b.Im) <= tolerance);
}
bool Bigger(TCplx a, TCplx b, double tolerance) { return CAbs(a) > CAbs(b) + tolerance; }
bool Smaller(TCplx a, TCplx b, double tolerance) { return CAbs(a) < CAbs(b) - tolerance; }
bool IsNanInf(TCplx z) { return !IsFinite(z); }
bool IsNanInf(TSCplx z) { return !IsFinite(z); }

}  // namespace passband
