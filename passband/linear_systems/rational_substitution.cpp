#include "passband/linear_systems/rational_substitution.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "passband/foundation/exceptions.h"
#include "passband/linear_systems/roots_internal.h"
#include "passband/vector_core/polynomials.h"
#include "passband/vector_core/pool.h"

namespace passband::LinearSystems {
namespace {

using detail::Roots;
using Coefficients = std::vector<double>;

void CheckMapping(const TVec& nz, const TVec& dz) {
  if (nz.Length() == 0) ERaise("nz.Length = 0");
  if (dz.Length() == 0) ERaise("dz.Length = 0");
}

// A coefficient of a polynomial that is padded with leading zeros to `length`.
TCplx Padded(const Roots& coefficients, std::size_t length, std::size_t i) {
  const std::size_t missing = length - coefficients.size();
  return i < missing ? TCplx{} : coefficients[i - missing];
}

// The roots of nz - root dz. A real polynomial stays real, so that its roots come in exact pairs.
void AppendImages(TCplx root, const Roots& nz, const Roots& dz, Roots& images) {
  const std::size_t length = std::max(nz.size(), dz.size());
  const Borrowed<TVec> polynomial;
  const Borrowed<TVec> found;
  polynomial->Size(static_cast<std::int32_t>(length), TMtxFloatPrecision::DoubleComplex);
  bool real = true;
  for (std::size_t i = 0; i < length; ++i) {
    const TCplx c = Padded(nz, length, i) - root * Padded(dz, length, i);
    polynomial->CValues()[i] = c;
    real = real && c.Im == 0;
  }
  if (real) polynomial->SetFloatPrecision(TMtxFloatPrecision::DoubleReal);
  PolyRoots(*polynomial, *found);
  for (const TCplx image : found->CValues()) images.push_back(image);
}

Roots ImagesOf(const TVec& roots, const TVec& nz, const TVec& dz) {
  Roots images;
  const Roots numerator = detail::ReadRoots(nz);
  const Roots denominator = detail::ReadRoots(dz);
  for (const TCplx root : detail::ReadRoots(roots)) AppendImages(root, numerator, denominator, images);
  return images;
}

Coefficients ReadCoefficients(const TVec& v) {
  Coefficients values;
  for (std::int32_t i = 0; i < v.Length(); ++i) values.push_back(v[i]);
  return values;
}

Coefficients Product(const Coefficients& a, const Coefficients& b) {
  Coefficients product(a.size() + b.size() - 1);
  for (std::size_t i = 0; i < a.size(); ++i) {
    for (std::size_t j = 0; j < b.size(); ++j) product[i + j] += a[i] * b[j];
  }
  return product;
}

// sum += factor x, the constant terms aligned; `sum` is the longer one.
void AddAligned(Coefficients& sum, const Coefficients& x, double factor) {
  const std::size_t offset = sum.size() - x.size();
  for (std::size_t i = 0; i < x.size(); ++i) sum[offset + i] += factor * x[i];
}

// The sum of b[i] nz^(n - i) dz^i by Horner's scheme in nz / dz, without the common divisor dz^n.
Coefficients Substituted(const Coefficients& b, const Coefficients& nz, const Coefficients& dz) {
  Coefficients sum{b[0]};
  Coefficients power{1};
  for (std::size_t i = 1; i < b.size(); ++i) {
    sum = Product(sum, nz);
    power = Product(power, dz);
    if (sum.size() < power.size()) sum.insert(sum.begin(), power.size() - sum.size(), 0.0);
    AddAligned(sum, power, b[i]);
  }
  return sum;
}

void Check(const TVec& num, const TVec& den, const TVec& nz, const TVec& dz) {
  if (num.Complex() || den.Complex() || nz.Complex() || dz.Complex()) ERaise("Complex not suported!");
  if (num.Length() != den.Length()) ERaise("num.Length <> den.Length");
  if (num.IsDouble() != den.IsDouble()) ERaise("num.IsDouble <> den.IsDouble");
  if (nz.IsDouble() != dz.IsDouble()) ERaise("nz.IsDouble <> dz.IsDouble");
  if (num.Length() == 0) ERaise("num.Length = 0");
  CheckMapping(nz, dz);
}

}  // namespace

void RationalSubstitution(TVec& z, TVec& p, double&, const TVec& nz, const TVec& dz) {
  if (z.IsDouble() != p.IsDouble() || nz.IsDouble() != dz.IsDouble()) {
    ERaise("(z.IsDouble <> p.IsDouble) or (nz.IsDouble <> dz.IsDouble)");
  }
  CheckMapping(nz, dz);
  const Borrowed<TVec> zeros;
  const Borrowed<TVec> poles;
  detail::WriteRoots(*zeros, ImagesOf(z, nz, dz), z.IsDouble());
  detail::WriteRoots(*poles, ImagesOf(p, nz, dz), p.IsDouble());
  z.Take(*zeros);
  p.Take(*poles);
}

void RationalSubstitution(TVec& num, TVec& den, const TVec& nz, const TVec& dz) {
  Check(num, den, nz, dz);
  const Coefficients numerator = Substituted(ReadCoefficients(num), ReadCoefficients(nz), ReadCoefficients(dz));
  const Coefficients denominator = Substituted(ReadCoefficients(den), ReadCoefficients(nz), ReadCoefficients(dz));
  const double leading = denominator[0];
  if (leading == 0) ERaise("the new den[0] is 0");
  const Borrowed<TVec> new_num;
  const Borrowed<TVec> new_den;
  const auto divide = [&](const Coefficients& values, TVec& result) {
    result.Size(static_cast<std::int32_t>(values.size()), TMtxFloatPrecision::DoubleReal);
    std::transform(values.begin(), values.end(), result.Values().begin(), [&](double x) { return x / leading; });
    result.SetFloatPrecision(MakePrecision(false, num.IsDouble()));
  };
  divide(numerator, *new_num);
  divide(denominator, *new_den);
  num.Take(*new_num);
  den.Take(*new_den);
}

}  // namespace passband::LinearSystems
