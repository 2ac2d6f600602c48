#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "passband/foundation/scalars.h"
#include "passband/vector_core/elementwise_internal.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/quotient_internal.h"
#include "passband/vector_core/vec.h"

namespace passband {
namespace {

// Functions of a complex number are taken in double and rounded once.
std::complex<double> Standard(TCplx z) { return z; }
template <Element T>
T Rounded(std::complex<double> z) {
  return static_cast<T>(TCplx(z));
}

constexpr double kSmallSquare = 0x1p-960;
constexpr double kLargeSquare = 0x1p1020;

// |x|; of a complex x by the plain formula in double while its squares keep all their digits.
template <Element T>
RealOf<T> Magnitude(T x) {
  if constexpr (IsComplex<T>) {
    const TCplx z(x);
    const double square = z.Re * z.Re + z.Im * z.Im;
    if (square >= kSmallSquare && square <= kLargeSquare) return static_cast<RealOf<T>>(std::sqrt(square));
    return std::hypot(x.Re, x.Im);
  } else {
    return std::abs(x);
  }
}

// 10^x; a complex exponent has its real part take the exact powers of ten.
template <Element T>
T PowerOfTen(T x) {
  if constexpr (IsComplex<T>) {
    const RealOf<T> size = PowerOfTen(x.Re);
    if (x.Im == 0) return {size, x.Im};
    const T phasor(passband::Expj(x.Im * std::numbers::ln10));  // the angle in double: it loses digits as it grows
    return size * phasor;
  } else if constexpr (std::same_as<T, double>) {
    return passband::Exp10(x);
  } else {
    return std::pow(T{10}, x);
  }
}

// The square root with a real part >= 0, by its half angle formulas while the squares keep all their digits.
template <Element T>
T Root(T x) {
  if constexpr (IsComplex<T>) {
    const TCplx z(x);
    const double square = z.Re * z.Re + z.Im * z.Im;
    if (!(square >= kSmallSquare && square <= kLargeSquare)) return Rounded<T>(std::sqrt(Standard(z)));
    const double larger = std::sqrt(0.5 * (std::abs(z.Re) + std::sqrt(square)));
    const double smaller = 0.5 * z.Im / larger;
    if (z.Re >= 0) return static_cast<T>(TCplx(larger, smaller));
    return static_cast<T>(TCplx(std::abs(smaller), std::copysign(larger, z.Im)));
  } else {
    return std::sqrt(x);
  }
}

// True when x differs from `value` by at most `tolerance`, or is as NaN or as infinite as that.
bool Matches(double x, double value, double tolerance) {
  if (std::isnan(value)) return std::isnan(x);
  if (std::isinf(value)) return x == value;
  return std::abs(x - value) <= tolerance;
}

template <class R>
bool Matches(BasicCplx<R> x, double value, double tolerance) {
  const bool re = Matches(static_cast<double>(x.Re), value, tolerance);
  if (!std::isfinite(value)) return re || Matches(static_cast<double>(x.Im), value, tolerance);
  return re && Matches(static_cast<double>(x.Im), 0.0, tolerance);
}

}  // namespace

template <class F, class G>
void TDense::Split(TDense& first, TDense& second, std::string_view refusal, F f, G g) const {
  if (!Complex()) ERaise(refusal);
  if (&first == &second) ERaise("the results are the same object");
  ForReal(*this, [&]<Element R>(ElementTag<R>) {
    Borrowed<TVec> a;  // aside: this object may be one of the results
    Borrowed<TVec> b;
    a->Size(length_, PrecisionOf<R>);
    b->Size(length_, PrecisionOf<R>);
    const auto x = a->template Elements<R>();
    const auto y = b->template Elements<R>();
    const auto z = Elements<ComplexOf<R>>();
    detail::Loop(z.size(), x.data(), f, z.data());
    detail::Loop(z.size(), y.data(), g, z.data());
    SizeTogether(first, second, rows_, cols_, PrecisionOf<R>);
    std::copy(x.begin(), x.end(), first.template Elements<R>().begin());
    std::copy(y.begin(), y.end(), second.template Elements<R>().begin());
  });
}

// Complex elements and their parts

void TDense::RealPart(const TDense& Src) {
  MapAny(Src, []<Element T>(T x) { return detail::Convert<RealOf<T>>(x); });
}

void TDense::ExtendToComplex(bool Zeros) { ExtendToComplex(*this, Zeros); }
void TDense::ExtendToComplex(const TDense& Src, bool Zeros) {
  static_cast<void>(Zeros);  // unspecified imaginary parts serve nobody: they are zero in any case
  MapAny(Src, []<Element T>(T x) { return detail::Convert<ComplexOf<T>>(x); });
}

void TDense::RealToCplx(const TDense& Re, const TDense& Im) {
  detail::RequireReal(Re, "RealToCplx: complex elements");
  detail::RequireReal(Im, "RealToCplx: complex elements");
  Re.CheckFits(Im);
  Re.CheckSamePrecision(Im);
  ForReal(Re, [&]<Element R>(ElementTag<R>) {
    const auto join = [](R re, R im) { return ComplexOf<R>(re, im); };
    Map<ComplexOf<R>>(Re, join, Re.Elements<R>(), Im.Elements<R>());
  });
}

void TDense::CplxToReal(TDense& Re, TDense& Im) const {
  Split(
      Re, Im, "CplxToReal: the elements are real", [](auto z) { return z.Re; }, [](auto z) { return z.Im; });
}

void TDense::CartToPolar(TDense& Amplitude, TDense& Phase) const {
  Split(
      Amplitude, Phase, "CartToPolar: the elements are real", [](auto z) { return Magnitude(z); },
      [](auto z) { return std::atan2(z.Im, z.Re); });
}

void TDense::MulI() { MulI(*this); }
void TDense::MulI(const TDense& Src) {
  MapAny(Src, []<Element T>(T x) -> ComplexOf<T> {
    if constexpr (IsComplex<T>) {
      return {-x.Im, x.Re};
    } else {
      return {0, x};
    }
  });
}

void TDense::Conj() { Conj(*this); }
void TDense::Conj(const TDense& Src) {
  MapAny(Src, []<Element T>(T x) {
    if constexpr (IsComplex<T>) {
      return passband::Conj(x);
    } else {
      return x;
    }
  });
}

void TDense::Abs() { Abs(*this); }
void TDense::Abs(const TDense& Src) {
  MapAny(Src, []<Element T>(T x) { return Magnitude(x); });
}
void TDense::Mag() { Abs(*this); }
void TDense::Mag(const TDense& Src) { Abs(Src); }

void TDense::PowerSpectrum(const TDense& Src) {
  MapAny(Src, []<Element T>(T x) {
    if constexpr (IsComplex<T>) {
      return x.Re * x.Re + x.Im * x.Im;
    } else {
      return x * x;
    }
  });
}

// Functions of real and complex elements

void TDense::Sign() { Sign(*this); }
void TDense::Sign(const TDense& Src) {
  MapAny(Src, []<Element T>(T x) { return -x; });
}

void TDense::Sqr() { Sqr(*this); }
void TDense::Sqr(const TDense& Src) {
  MapAny(Src, []<Element T>(T x) {
    if constexpr (IsComplex<T>) {
      return CSqr(x);
    } else {
      return x * x;
    }
  });
}

void TDense::Sqrt() { Sqrt(*this); }
void TDense::Sqrt(const TDense& Src) {
  MapAny(Src, []<Element T>(T x) { return Root(x); });
}

void TDense::Inv() { Inv(*this); }
void TDense::Inv(const TDense& Src) {
  MapAny(Src, []<Element T>(T x) { return detail::Quotient(detail::Convert<T>(1.0), x); });
}

void TDense::Exp() { Exp(*this); }
void TDense::Exp(const TDense& Src) {
  MapAny(Src, []<Element T>(T x) -> T {
    if constexpr (IsComplex<T>) {
      return Rounded<T>(std::exp(Standard(TCplx(x))));
    } else {
      return std::exp(x);
    }
  });
}

void TDense::Exp10() { Exp10(*this); }
void TDense::Exp10(const TDense& Src) {
  MapAny(Src, []<Element T>(T x) { return PowerOfTen(x); });
}

void TDense::Ln() { Ln(*this); }
void TDense::Ln(const TDense& Src) {
  MapAny(Src, []<Element T>(T x) -> T {
    if constexpr (IsComplex<T>) {
      return Rounded<T>(std::log(Standard(TCplx(x))));
    } else {
      return std::log(x);
    }
  });
}

void TDense::LogN(double Base) { LogN(Base, *this); }
void TDense::LogN(double Base, const TDense& Src) {
  const double natural = std::log(Base);
  MapAny(Src, [Base, natural]<Element T>(T x) -> T {
    if constexpr (!IsComplex<T>) {
      if (Base == 2) return std::log2(x);
      if (Base == 10) return std::log10(x);
      return std::log(x) / static_cast<T>(natural);
    } else {
      return Rounded<T>(std::log(Standard(TCplx(x))) / natural);
    }
  });
}

// Functions of real elements only

void TDense::Cos() { Cos(*this); }
void TDense::Cos(const TDense& Src) {
  MapReal(Src, "Cos: complex elements", [](auto x) { return std::cos(x); });
}

void TDense::Expj() { Expj(*this); }
void TDense::Expj(const TDense& Src) {
  MapReal(Src, "Expj: complex elements", []<Element R>(R x) { return ComplexOf<R>(std::cos(x), std::sin(x)); });
}

void TDense::ThreshBottom(double Value) {
  MapReal(*this, "ThreshBottom: complex elements", [Value]<Element R>(R x) {
    const R bottom = static_cast<R>(Value);
    return x < bottom ? bottom : x;
  });
}

void TDense::Replace(double Value, double NewValue, double Tolerance) {
  ForAny(*this, [&]<Element T>(ElementTag<T>) {
    const double rounded = static_cast<RealOf<T>>(Value);  // what an element of that value holds
    const double value = std::isinf(rounded) ? Value : rounded;
    const T replacement = detail::Convert<T>(NewValue);
    for (T& x : Elements<T>()) {
      if (Matches(x, value, Tolerance)) x = replacement;
    }
  });
}

}  // namespace passband
