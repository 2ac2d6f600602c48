#include "passband/vector_core/levinson.h"

#include <cmath>
#include <cstddef>
#include <span>

#include "passband/vector_core/double_data_internal.h"
#include "passband/vector_core/pool.h"
#include "passband/vector_core/predictor_internal.h"

namespace passband {
namespace {

using detail::DoubleElement;

double SquaredModulus(double x) { return x * x; }
double SquaredModulus(TCplx z) { return z.Re * z.Re + z.Im * z.Im; }
double RealPart(double x) { return x; }
double RealPart(TCplx z) { return z.Re; }

// Returns the power of the prediction error; `a` and `reflection` are zero on entry.
template <DoubleElement T>
double Recursion(std::span<const T> r, std::span<T> a, std::span<T> reflection) {
  const double power = RealPart(r[0]);
  const double smallest = std::abs(power) * 0x1p-50;
  double error = power;
  a[0] = detail::WidenElement<T>(1.0);
  for (std::size_t m = 1; m < r.size() && std::abs(error) > smallest; ++m) {
    T sum = r[m];
    for (std::size_t j = 1; j < m; ++j) sum += a[j] * r[m - j];
    const T k = sum * (-1 / error);
    detail::RaiseOrder(a, m, k);
    reflection[m - 1] = k;
    error *= 1 - SquaredModulus(k);
  }
  return error;
}

}  // namespace

void Levinson(const TVec& R, TVec& A, double& Error, TVec& Reflection) {
  if (R.Length() == 0) ERaise("Levinson: no elements");
  if (!detail::AllFinite(R)) ERaise("Levinson: an element is not finite");
  const bool is_double = R.IsDouble();
  const std::int32_t length = R.Length();
  detail::ForDouble(R.Complex(), [&]<DoubleElement T>(ElementTag<T>) {
    Borrowed<TVec> r;
    Borrowed<TVec> a;
    Borrowed<TVec> k;
    r->Size(length, PrecisionOf<T>);
    a->Size(length, PrecisionOf<T>);
    k->Size(length - 1, PrecisionOf<T>);
    detail::Widen(R, r->Elements<T>());
    a->SetZero();
    k->SetZero();
    const double error = Recursion<T>(r->Elements<T>(), a->Elements<T>(), k->Elements<T>());
    A.Size(length, IsComplex<T>, is_double);
    detail::StoreRounded(a->Elements<T>(), A);
    Reflection.Size(length - 1, IsComplex<T>, is_double);
    detail::StoreRounded(k->Elements<T>(), Reflection);
    Error = error;
  });
}

void Levinson(const TVec& R, TVec& A) {
  double error = 0;
  Borrowed<TVec> reflection;
  Levinson(R, A, error, *reflection);
}

}  // namespace passband
