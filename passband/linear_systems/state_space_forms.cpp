#include "passband/linear_systems/state_space_forms.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

#include "passband/foundation/exceptions.h"
#include "passband/linear_systems/quadratic_internal.h"
#include "passband/linear_systems/roots_internal.h"
#include "passband/linear_systems/transmission_zeros.h"
#include "passband/vector_core/polynomials.h"
#include "passband/vector_core/pool.h"

namespace passband::LinearSystems {
namespace {

using detail::Quadratic;
using detail::Roots;

// The cascade while it grows: each block takes the output of those before it as its input.
class Cascade {
 public:
  Cascade(TMtx& a, TVec& b, TVec& c, std::int32_t states) : size_(static_cast<std::size_t>(states)) {
    a.Size(states, states, TMtxFloatPrecision::DoubleReal);
    b.Size(states, TMtxFloatPrecision::DoubleReal);
    c.Size(states, TMtxFloatPrecision::DoubleReal);
    a.SetZero();
    b.SetZero();
    c.SetZero();
    a_ = a.Values();
    b_ = b.Values();
    c_ = c.Values();
  }

  // The first block, of order one: (x - zero) / (x - pole), or 1 / (x - pole).
  void AddReal(double pole) { AddReal(pole, 1, 0); }
  void AddReal(double pole, double zero) { AddReal(pole, pole - zero, 1); }

  // A block of order two with the poles' geometric mean w: (q0 x^2 + q1 x + q2) / (x^2 + d1 x + d2), q0 = 0 or 1.
  void AddPair(Quadratic d, double w, double q0, double q1, double q2) {
    const std::size_t r = count_;
    std::copy_n(c_.begin(), r, &At(r, 0));
    At(r, r) = -d.c1;
    At(r, r + 1) = -d.c2 / w;
    At(r + 1, r) = w;
    for (std::size_t i = 0; i < r; ++i) c_[i] *= q0;
    c_[r] = q1 - q0 * d.c1;
    c_[r + 1] = (q2 - q0 * d.c2) / w;
    b_[r] = d_;
    d_ *= q0;
    count_ += 2;
  }

  double Feedthrough() const { return d_; }

 private:
  double& At(std::size_t row, std::size_t col) { return a_[row * size_ + col]; }
  void AddReal(double pole, double output, double feedthrough) {
    At(0, 0) = pole;
    b_[0] = 1;
    c_[0] = output;
    d_ = feedthrough;
    count_ = 1;
  }

  std::size_t size_;
  std::size_t count_ = 0;  // states placed
  double d_ = 1;
  std::span<double> a_;
  std::span<double> b_;
  std::span<double> c_;
};

double GeometricMean(TCplx p0, TCplx p1) {
  const double w = std::sqrt(CAbs(p0)) * std::sqrt(CAbs(p1));
  return w == 0 ? 1 : w;
}

// Zeros and poles in pairs; where one number is odd, the first block takes the odd ones.
double BuildCascade(const Roots& z, const Roots& p, Cascade cascade) {
  std::size_t nz = z.size();
  std::size_t np = p.size();
  const auto quadratic = [](const Roots& x, std::size_t i) { return detail::RealQuadratic(x[i], x[i + 1]); };
  const auto add = [&](std::size_t i, double q0, double q1, double q2) {
    cascade.AddPair(quadratic(p, i), GeometricMean(p[i], p[i + 1]), q0, q1, q2);
  };
  if (np % 2 == 1) {
    --np;
    if (nz % 2 == 1) {
      --nz;
      cascade.AddReal(p[np].Re, z[nz].Re);
    } else {
      cascade.AddReal(p[np].Re);
    }
  } else if (nz % 2 == 1) {
    np -= 2;
    --nz;
    add(np, 0, 1, -z[nz].Re);
  }
  std::size_t i = 0;
  for (; i < nz; i += 2) {
    const Quadratic q = quadratic(z, i);
    add(i, 1, q.c1, q.c2);
  }
  for (; i < np; i += 2) add(i, 0, 0, 1);
  return cascade.Feedthrough();
}

// A + factor B C, the outer product of a column and a row.
void AddOuterProduct(const TMtx& a, const TVec& b, const TVec& c, double factor, TMtx& sum) {
  sum.Copy(a);
  const auto s = sum.Values();
  const std::size_t n = static_cast<std::size_t>(b.Length());
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) s[i * n + j] += factor * b.Values()[i] * c.Values()[j];
  }
}

double LargestSize(const TVec& v) {
  double largest = 0;
  for (const double x : v.Values()) largest = std::max(largest, std::abs(x));
  return largest;
}

// (det(x I - A + g B C) - den) / g, the numerator of C (x I - A)^-1 B. The power of two g is found in a few steps: a first
// guess gives the size of the numerator.
void StrictNumerator(const TMtx& a, const TVec& b, const TVec& c, const TVec& den, TVec& num) {
  constexpr int kMostSteps = 8;
  const double size = LargestSize(den);
  const Borrowed<TMtx> shifted;
  double g = 1;
  for (int step = 0; step < kMostSteps; ++step) {
    AddOuterProduct(a, b, c, -g, *shifted);
    PolyCoeff(*shifted, num);
    num.Sub(den);
    const double found = LargestSize(num);
    num.Scale(1 / g);
    if (found == 0 || (found > size / 64 && found < size * 64)) return;
    g *= std::exp2(std::round(std::log2(size / found)));
  }
}

void CheckShapes(const TMtx& A, const TVec& B, const TVec& C) {
  if (A.Rows() != B.Length()) throw Exception("a.Rows <> b.Length");
  if (B.Length() != C.Length()) throw Exception("b.Length <> c.Length");
}

void CheckCompanion(const TVec& num, const TVec& den) {
  if (num.Length() != den.Length()) throw Exception("Num.Length <> Den.Length");
  if (num.IsDouble() != den.IsDouble()) throw Exception("Num.IsDouble <> den.IsDouble");
  if (num.Complex() != den.Complex()) throw Exception("Num.Complex <> den.Complex");
  if (num.Complex()) throw Exception("complex coefficients have no real state space");
  if (den.Length() > 0 && den[0] == 0) throw Exception("den[0] = 0");
}

}  // namespace

void ZeroPoleToStateSpace(TMtx& A, TVec& B, TVec& C, double& D, TVec& z, TVec& p, double k) {
  if (z.Length() > p.Length()) throw Exception("z.Length > p.Length");
  if (z.IsDouble() != p.IsDouble()) throw Exception("z.IsDouble <> p.IsDouble");
  const Borrowed<TVec> zeros;
  const Borrowed<TVec> poles;
  detail::PairRoots(z, *zeros);
  detail::PairRoots(p, *poles);
  zeros->ExtendToComplex();
  poles->ExtendToComplex();
  const Borrowed<TMtx> a;
  const Borrowed<TVec> b;
  const Borrowed<TVec> c;
  const double d = BuildCascade(detail::ReadRoots(*zeros), detail::ReadRoots(*poles), {*a, *b, *c, p.Length()});
  c->Scale(k);
  const TMtxFloatPrecision precision = MakePrecision(false, p.IsDouble());
  a->SetFloatPrecision(precision);
  b->SetFloatPrecision(precision);
  c->SetFloatPrecision(precision);
  A.Take(*a);
  B.Take(*b);
  C.Take(*c);
  D = d * k;
  z.Take(*zeros);
  p.Take(*poles);
}

void StateSpaceToZeroPole(TVec& z, TVec& p, double& k, const TMtx& A, const TVec& B, const TVec& C, double D) {
  if (A.Length() == 0) {
    k = D;
    return;
  }
  const Borrowed<TVec> zeros;
  const Borrowed<TVec> poles;
  double gain = 0;
  LTIZeros(*zeros, gain, A, B, C, D);
  A.Eig(*poles);
  z.Take(*zeros);
  p.Take(*poles);
  k = gain;
}

void TransferFunToStateSpace(TMtx& A, TVec& B, TVec& C, double& D, const TVec& num, const TVec& den) {
  CheckCompanion(num, den);
  const std::int32_t n = std::max(den.Length() - 1, 0);
  const Borrowed<TMtx> a;
  const Borrowed<TVec> b;
  const Borrowed<TVec> c;
  a->Size(n, n, num.FloatPrecision());
  b->Size(n, num.FloatPrecision());
  c->Size(n, num.FloatPrecision());
  a->SetZero();
  b->SetZero();
  const double d = den.Length() == 0 ? 0 : num[0] / den[0];
  for (std::int32_t i = 0; i < n; ++i) {
    const double pole_part = den[i + 1] / den[0];
    a->SetDefault(0, i, -pole_part);
    if (i > 0) a->SetDefault(i, i - 1, 1);
    c->SetDefault(i, std::fma(-d, pole_part, num[i + 1] / den[0]));
  }
  if (n > 0) b->SetDefault(0, 1);
  A.Take(*a);
  B.Take(*b);
  C.Take(*c);
  D = d;
}

void StateSpaceToTransferFun(TVec& num, TVec& den, const TMtx& A, const TVec& B, const TVec& C, double D) {
  CheckShapes(A, B, C);
  const Borrowed<TMtx> a;
  const Borrowed<TVec> b;
  const Borrowed<TVec> c;
  const Borrowed<TVec> numerator;
  const Borrowed<TVec> denominator;
  a->Copy(A);
  b->RealPart(B);
  c->RealPart(C);
  for (TDense* const x : {static_cast<TDense*>(&*a), static_cast<TDense*>(&*b), static_cast<TDense*>(&*c)}) {
    x->SetFloatPrecision(TMtxFloatPrecision::DoubleReal);
  }
  PolyCoeff(*a, *denominator);
  if (B.Length() == 0) {
    numerator->Size(1, TMtxFloatPrecision::DoubleReal);
    numerator->SetVal(D);
  } else {
    StrictNumerator(*a, *b, *c, *denominator, *numerator);
    numerator->AddScaled(*denominator, D);
  }
  const TMtxFloatPrecision precision = MakePrecision(false, A.IsDouble());
  numerator->SetFloatPrecision(precision);
  denominator->SetFloatPrecision(precision);
  num.Take(*numerator);
  den.Take(*denominator);
}

}  // namespace passband::LinearSystems
