// Complex scalars: a pair of doubles (`TCplx`) or of singles (`TSCplx`), and their mathematics.
#pragma once

#include <complex>
#include <cstdint>
#include <ostream>
#include <type_traits>

#include "passband/foundation/export.h"

namespace passband {

/// A complex number as a plain pair. It converts from and to `std::complex` of its precision on its own; a real number
/// becomes complex only by `Cplx`, and the two precisions convert into each other only by a cast or `CplxSingle`, so
/// that overloads on samples never compete.
template <class R>
struct BasicCplx {
  static_assert(std::is_floating_point_v<R>);

  R Re = 0;
  R Im = 0;

  constexpr BasicCplx() = default;
  constexpr BasicCplx(R re, R im) : Re(re), Im(im) {}
  constexpr BasicCplx(std::complex<R> z) : Re(z.real()), Im(z.imag()) {}  // NOLINT: implicit on purpose
  template <class S>
    requires(!std::is_same_v<R, S>)
  constexpr explicit BasicCplx(BasicCplx<S> z) : Re(static_cast<R>(z.Re)), Im(static_cast<R>(z.Im)) {}

  constexpr operator std::complex<R>() const { return {Re, Im}; }  // NOLINT: implicit on purpose

  friend constexpr bool operator==(BasicCplx a, BasicCplx b) { return a.Re == b.Re && a.Im == b.Im; }

  friend constexpr BasicCplx operator-(BasicCplx a) { return {-a.Re, -a.Im}; }
  friend constexpr BasicCplx operator+(BasicCplx a, BasicCplx b) { return {a.Re + b.Re, a.Im + b.Im}; }
  friend constexpr BasicCplx operator-(BasicCplx a, BasicCplx b) { return {a.Re - b.Re, a.Im - b.Im}; }
  friend constexpr BasicCplx operator*(BasicCplx a, BasicCplx b) {
    return {a.Re * b.Re - a.Im * b.Im, a.Re * b.Im + a.Im * b.Re};
  }
  friend constexpr BasicCplx operator*(R a, BasicCplx b) { return {a * b.Re, a * b.Im}; }
  friend constexpr BasicCplx operator*(BasicCplx a, R b) { return {a.Re * b, a.Im * b}; }
  constexpr BasicCplx& operator+=(BasicCplx b) { return *this = *this + b; }
  constexpr BasicCplx& operator-=(BasicCplx b) { return *this = *this - b; }
  constexpr BasicCplx& operator*=(BasicCplx b) { return *this = *this * b; }
  constexpr BasicCplx& operator*=(R b) { return *this = *this * b; }

  /// Written as (Re,Im), like `std::complex`.
  friend std::ostream& operator<<(std::ostream& out, BasicCplx z) { return out << '(' << z.Re << ',' << z.Im << ')'; }
};

using TCplx = BasicCplx<double>;
using TSCplx = BasicCplx<float>;

/// Re + j Im; the one-argument forms have Im = 0.
constexpr TCplx Cplx(double re, double im = 0) { return {re, im}; }
constexpr TSCplx CplxSingle(float re, float im = 0) { return {re, im}; }
/// z rounded to single precision.
constexpr TSCplx CplxSingle(TCplx z) { return static_cast<TSCplx>(z); }

namespace detail {
// The second operand of mixed forms must not take part in the deduction of R, so that literals fit.
template <class R>
using Scalar = std::type_identity_t<R>;
}  // namespace detail

template <class R>
constexpr BasicCplx<R> CAdd(BasicCplx<R> a, BasicCplx<R> b) {
  return a + b;
}
template <class R>
constexpr BasicCplx<R> CAdd(detail::Scalar<R> a, BasicCplx<R> b) {
  return {a + b.Re, b.Im};
}
template <class R>
constexpr BasicCplx<R> CSub(BasicCplx<R> a, BasicCplx<R> b) {
  return a - b;
}
template <class R>
constexpr BasicCplx<R> CSub(detail::Scalar<R> a, BasicCplx<R> b) {
  return {a - b.Re, -b.Im};
}
template <class R>
constexpr BasicCplx<R> CMul(BasicCplx<R> a, BasicCplx<R> b) {
  return a * b;
}
template <class R>
constexpr BasicCplx<R> CMul(detail::Scalar<R> a, BasicCplx<R> b) {
  return a * b;
}
template <class R>
constexpr BasicCplx<R> CMul(BasicCplx<R> a, detail::Scalar<R> b) {
  return a * b;
}
template <class R>
constexpr BasicCplx<R> Conj(BasicCplx<R> z) {
  return {z.Re, -z.Im};
}
template <class R>
constexpr BasicCplx<R> Neg(BasicCplx<R> z) {
  return -z;
}
/// z^2.
template <class R>
constexpr BasicCplx<R> CSqr(BasicCplx<R> z) {
  return {(z.Re - z.Im) * (z.Re + z.Im), 2 * z.Re * z.Im};
}

/// a / b, scaled so that it over- or underflows only where the quotient does. Division by zero gives infinities or NaN
/// as the real quotients would.
/// Literature: Baudin, Smith, "A robust complex division in Scilab", 2012.
PASSBAND_EXPORT TCplx CDiv(TCplx a, TCplx b);
PASSBAND_EXPORT TSCplx CDiv(TSCplx a, TSCplx b);
PASSBAND_EXPORT TCplx CDiv(double a, TCplx b);
PASSBAND_EXPORT TSCplx CDiv(float a, TSCplx b);
/// 1 / z.
PASSBAND_EXPORT TCplx CInv(TCplx z);
PASSBAND_EXPORT TSCplx CInv(TSCplx z);
/// |z|, without overflow in between.
PASSBAND_EXPORT double CAbs(TCplx z);
PASSBAND_EXPORT float CAbs(TSCplx z);
/// The square root with a real part >= 0; the cut lies along the negative real axis.
PASSBAND_EXPORT TCplx CSqrt(TCplx z);
PASSBAND_EXPORT TSCplx CSqrt(TSCplx z);
/// z^n for any integer n, by repeated squaring; z^0 is 1 for every z.
PASSBAND_EXPORT TCplx IntPower(TCplx z, std::int32_t n);
PASSBAND_EXPORT TSCplx IntPower(TSCplx z, std::int32_t n);
/// The natural logarithm with an imaginary part in (-pi, pi].
PASSBAND_EXPORT TCplx Ln(TCplx z);
PASSBAND_EXPORT TSCplx Ln(TSCplx z);
/// cos(angle) + j sin(angle), angle in radians.
PASSBAND_EXPORT TCplx Expj(double angle);
/// True when the real and the imaginary parts differ by at most `tolerance` each.
PASSBAND_EXPORT bool Equal(TCplx a, TCplx b, double tolerance = 0);
/// |a| > |b| + tolerance, and |a| < |b| - tolerance.
PASSBAND_EXPORT bool Bigger(TCplx a, TCplx b, double tolerance);
PASSBAND_EXPORT bool Smaller(TCplx a, TCplx b, double tolerance);
/// True when a part is a NaN or an infinity.
PASSBAND_EXPORT bool IsNanInf(TCplx z);
PASSBAND_EXPORT bool IsNanInf(TSCplx z);

}  // namespace passband
