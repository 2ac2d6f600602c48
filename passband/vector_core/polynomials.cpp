#include "passband/vector_core/polynomials.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "passband/vector_core/double_data_internal.h"
#include "passband/vector_core/extended_precision_internal.h"
#include "passband/vector_core/pool.h"

namespace passband {
namespace {

using detail::DoubleElement;
using detail::MakeTwin;
using detail::Rounded;

template <DoubleElement T>
T Evaluate(std::span<const T> p, T x) {
  auto sum = MakeTwin(T{});
  for (const T c : p) sum = sum * x + MakeTwin(c);
  const T value = Rounded(sum);
  if (detail::IsFiniteElement(value)) return value;
  T plain{};  // the error terms of infinite products are NaN where the products are not
  for (const T c : p) plain = plain * x + c;
  return plain;
}

// Leja's order: the largest root first, then always the one whose product of distances to those before is the largest.
void OrderByLeja(std::span<TCplx> roots) {
  std::vector<double> distance(roots.size(), 0.0);  // logarithms: products of many would leave the range
  for (std::size_t i = 0; i < roots.size(); ++i) {
    std::size_t next = i;
    for (std::size_t j = i; j < roots.size(); ++j) {
      const bool further = i == 0 ? CAbs(roots[j]) > CAbs(roots[next]) : distance[j] > distance[next];
      if (further) next = j;
    }
    std::swap(roots[i], roots[next]);
    std::swap(distance[i], distance[next]);
    for (std::size_t j = i + 1; j < roots.size(); ++j) distance[j] += std::log(CAbs(roots[j] - roots[i]));
  }
}

bool ComesInConjugatePairs(std::span<const TCplx> roots) {
  const auto less = [](TCplx a, TCplx b) { return a.Re != b.Re ? a.Re < b.Re : a.Im < b.Im; };
  std::vector<TCplx> upper;
  std::vector<TCplx> lower;
  for (const TCplx z : roots) {
    if (z.Im > 0) upper.push_back(z);
    if (z.Im < 0) lower.push_back(Conj(z));
  }
  std::sort(upper.begin(), upper.end(), less);
  std::sort(lower.begin(), lower.end(), less);
  return upper == lower;
}

// Multiplies the factors (x - roots[k]); `p` has one element more than there are roots.
void MultiplyFactors(std::span<TCplx> roots, std::span<TCplx> p) {
  OrderByLeja(roots);
  std::vector<detail::TwinComplex> product(p.size());
  product[0] = MakeTwin(Cplx(1));
  for (std::size_t k = 0; k < roots.size(); ++k) {
    for (std::size_t i = k + 1; i > 0; --i) product[i] = product[i] + product[i - 1] * -roots[k];
  }
  std::transform(product.begin(), product.end(), p.begin(), [](const auto& c) { return Rounded(c); });
}

void StoreCoefficients(const TVec& roots, bool is_double, bool real, TVec& out) {
  Borrowed<TVec> p;
  p->Size(roots.Length() + 1, TMtxFloatPrecision::DoubleComplex);
  Borrowed<TVec> ordered;
  ordered->Copy(roots);
  MultiplyFactors(ordered->CValues(), p->CValues());
  if (!detail::AllFinite(*p)) ERaise("PolyCoeff: a coefficient is outside the range of a double");
  out.Size(p->Length(), !real, is_double);
  if (!real) return detail::StoreRounded(p->CValues(), out);
  Borrowed<TVec> real_parts;
  real_parts->Size(p->Length(), TMtxFloatPrecision::DoubleReal);
  detail::Widen(*p, real_parts->Values());
  detail::StoreRounded(real_parts->Values(), out);
}

}  // namespace

void PolyCoeff(const TVec& Roots, TVec& P) {
  if (!detail::AllFinite(Roots)) ERaise("PolyCoeff: a root is not finite");
  const bool is_double = Roots.IsDouble();
  Borrowed<TVec> roots;
  roots->Size(Roots.Length(), TMtxFloatPrecision::DoubleComplex);
  detail::Widen(Roots, roots->CValues());
  const bool real = !Roots.Complex() || ComesInConjugatePairs(roots->CValues());
  StoreCoefficients(*roots, is_double, real, P);
}

void PolyCoeff(const TMtx& A, TVec& P) {
  Borrowed<TMtx> wide;
  wide->Size(A.Rows(), A.Cols(), A.Complex(), true);
  detail::ForDouble(A.Complex(), [&]<DoubleElement T>(ElementTag<T>) { detail::Widen(A, wide->Elements<T>()); });
  Borrowed<TVec> eigenvalues;
  wide->Eig(*eigenvalues);
  StoreCoefficients(*eigenvalues, A.IsDouble(), !A.Complex(), P);
}

void PolyEval(const TVec& X, const TVec& P, TVec& Y) {
  detail::RequireSameIsDouble(X, P);
  const bool is_double = X.IsDouble();
  detail::ForDouble(X.Complex() || P.Complex(), [&]<DoubleElement T>(ElementTag<T>) {
    Borrowed<TVec> p;
    Borrowed<TVec> y;
    p->Size(P.Length(), PrecisionOf<T>);
    y->Size(X.Length(), PrecisionOf<T>);
    detail::Widen(P, p->Elements<T>());
    detail::Widen(X, y->Elements<T>());
    for (T& element : y->Elements<T>()) element = Evaluate<T>(p->Elements<T>(), element);
    Y.Size(y->Length(), IsComplex<T>, is_double);
    detail::StoreRounded(y->Elements<T>(), Y);
  });
}

double PolyEval(double X, const TVec& P) {
  if (P.Complex()) ERaise("PolyEval: complex coefficients");
  Borrowed<TVec> p;
  p->Size(P.Length(), TMtxFloatPrecision::DoubleReal);
  detail::Widen(P, p->Values());
  return Evaluate<double>(p->Values(), X);
}

TCplx PolyEval(TCplx X, const TVec& P) {
  Borrowed<TVec> p;
  p->Size(P.Length(), TMtxFloatPrecision::DoubleComplex);
  detail::Widen(P, p->CValues());
  return Evaluate<TCplx>(p->CValues(), X);
}

void StripLeadZeros(const TVec& Src, TVec& Dst) {
  Borrowed<TVec> rest;
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    const auto x = Src.Elements<T>();
    const auto first = std::find_if(x.begin(), x.end(), [](T c) { return !(c == T{}); });
    rest->Size(static_cast<std::int32_t>(x.end() - first), Src);
    std::copy(first, x.end(), rest->Elements<T>().begin());
  });
  Dst.Copy(*rest);
}

}  // namespace passband
