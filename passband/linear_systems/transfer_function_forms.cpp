#include "passband/linear_systems/transfer_function_forms.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/polynomials.h"
#include "passband/vector_core/pool.h"

namespace passband::LinearSystems {
namespace {

// The real polynomial of roots of any precision, in double.
void RealPolynomial(const TVec& roots, TVec& polynomial) {
  const Borrowed<TVec> wide;
  const Borrowed<TVec> coefficients;
  wide->Copy(roots);
  wide->SetFloatPrecision(MakePrecision(roots.Complex(), true));
  PolyCoeff(*wide, *coefficients);
  polynomial.RealPart(*coefficients);
}

// k times the polynomial, right-aligned among `length` coefficients.
void PlaceNumerator(const TVec& polynomial, double k, std::int32_t length, TVec& num) {
  num.Size(length, TMtxFloatPrecision::DoubleReal);
  num.SetZero();
  num.Copy(polynomial, 0, length - polynomial.Length(), polynomial.Length());
  num.Scale(k);
}

TCplx Element(const TVec& v, std::int32_t i) {
  return ForAny(v, [&]<class T>(ElementTag<T>) {
    const T x = v.Elements<T>()[static_cast<std::size_t>(i)];
    if constexpr (IsComplex<T>) {
      return static_cast<TCplx>(x);
    } else {
      return Cplx(x);
    }
  });
}

void CheckCoefficients(const TVec& num, const TVec& den) {
  if (num.Length() > den.Length()) throw Exception("num.Length > den.Length");
  if (num.Length() == 0) throw Exception("num.Length = 0");
  if (num.FloatPrecision() != den.FloatPrecision()) throw Exception("num.FloatPrecision <> den.FloatPrecision");
  const double leading = CAbs(Element(den, 0));
  if (den.IsDouble() && leading < std::numeric_limits<double>::epsilon()) throw Exception("abs(den[0]) < EPS");
  if (!den.IsDouble() && leading < static_cast<double>(EPS_SINGLE)) throw Exception("abs(den[0]) < EPS_SINGLE");
}

// The quotient of the leading coefficients, the numerator's zeros left out.
double LeadingGain(const TVec& num, const TVec& den) {
  for (std::int32_t i = 0; i < num.Length(); ++i) {
    const TCplx leading = Element(num, i);
    if (leading == TCplx{}) continue;
    return num.Complex() ? CAbs(CDiv(leading, Element(den, 0))) : leading.Re / Element(den, 0).Re;
  }
  return 0;
}

}  // namespace

void ZeroPoleToTransferFun(TVec& num, TVec& den, const TVec& z, const TVec& p, double k) {
  if (p.Length() == 0) ERaise("p.Length = 0");
  if (z.Length() > p.Length()) ERaise("z.Length > p.Length");
  if (z.IsDouble() != p.IsDouble()) ERaise("z.IsDouble <> p.IsDouble");
  const Borrowed<TVec> zeros;
  const Borrowed<TVec> numerator;
  const Borrowed<TVec> denominator;
  RealPolynomial(p, *denominator);
  RealPolynomial(z, *zeros);
  PlaceNumerator(*zeros, k, denominator->Length(), *numerator);
  const TMtxFloatPrecision precision = MakePrecision(false, p.IsDouble());
  numerator->SetFloatPrecision(precision);
  denominator->SetFloatPrecision(precision);
  num.Take(*numerator);
  den.Take(*denominator);
}

void TransferFunToZeroPole(TVec& z, TVec& p, double& k, const TVec& num, const TVec& den) {
  CheckCoefficients(num, den);
  const double gain = LeadingGain(num, den);
  const Borrowed<TVec> numerator;
  const Borrowed<TVec> zeros;
  const Borrowed<TVec> poles;
  numerator->Resize(num, den.Length(), true);
  PolyRoots(*numerator, *zeros);
  PolyRoots(den, *poles);
  z.Take(*zeros);
  p.Take(*poles);
  k = gain;
}

}  // namespace passband::LinearSystems
