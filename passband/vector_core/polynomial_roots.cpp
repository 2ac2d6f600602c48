// Roots of polynomials: starting points, Aberth's iteration, and conjugate pairs for real coefficients.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numbers>
#include <span>
#include <tuple>
#include <vector>

#include "passband/vector_core/double_data_internal.h"
#include "passband/vector_core/extended_precision_internal.h"
#include "passband/vector_core/polynomials.h"
#include "passband/vector_core/pool.h"

namespace passband {
namespace {

using detail::MakeTwin;
using detail::TwinComplex;

constexpr std::size_t kLargestCompanion = 200;  // from here on the eigenvalues cost more than the iteration
constexpr int kMaxSweeps = 250;

[[noreturn]] void RaiseOutsideRange() { ERaise("PolyRoots: a root is outside the range of a double"); }

double LogModulus(TCplx z) { return std::log2(CAbs(z)); }

TCplx TimesPowerOfTwo(TCplx z, std::int64_t exponent) {
  const int e = static_cast<int>(std::clamp<std::int64_t>(exponent, -4000, 4000));
  return {std::ldexp(z.Re, e), std::ldexp(z.Im, e)};
}
TwinComplex TimesPowerOfTwo(TwinComplex z, std::int64_t exponent) {
  const TCplx high = TimesPowerOfTwo({z.Re.Hi, z.Im.Hi}, exponent);
  const TCplx low = TimesPowerOfTwo({z.Re.Lo, z.Im.Lo}, exponent);
  return {{high.Re, low.Re}, {high.Im, low.Im}};
}

// z 2^Exponent with the larger part of z in [1, 2), or zero.
struct Scaled {
  TCplx z;
  std::int64_t exponent = 0;

  Scaled() = default;
  explicit Scaled(TCplx value) {
    const double largest = std::max(std::abs(value.Re), std::abs(value.Im));
    exponent = largest > 0 ? std::ilogb(largest) : 0;
    z = TimesPowerOfTwo(value, -exponent);
  }
};

struct Correction {
  TCplx newton;              // p / p'
  bool vanishes = false;     // p is zero as far as twice the digits can tell
  bool nearly_zero = false;  // p is zero as far as a double can tell
};

// p and p' at a point x = z 2^k by Horner's scheme in twice the digits, with the sum of moduli, which bounds the
// errors. All three are kept in units of a common power of two, so that powers of x never leave the range; the
// derivative is that by z.
class Horner {
 public:
  explicit Horner(TCplx at) : x_(at), r_(CAbs(x_.z)) {}

  void Add(const Scaled& c) {
    derivative_ = derivative_ * x_.z + value_;
    value_ = value_ * x_.z;
    moduli_ *= r_;
    exponent_ += x_.exponent;
    const std::int64_t above = c.z == TCplx{} ? std::numeric_limits<std::int32_t>::min() : c.exponent - exponent_;
    if (moduli_ == 0) {
      if (above > std::numeric_limits<std::int32_t>::min()) MoveExponent(above);
    } else if (above > 200 || moduli_ > 0x1p200 || moduli_ < 0x1p-200) {
      MoveExponent(std::max<std::int64_t>(above, std::ilogb(moduli_)));
    }
    const TCplx z = TimesPowerOfTwo(c.z, c.exponent - exponent_);
    value_ = value_ + MakeTwin(z);
    moduli_ += CAbs(z);
  }

  Correction Result(std::size_t order) const {
    const TCplx value = detail::Rounded(value_);
    const double size = CAbs(value);
    const double unit = moduli_ * static_cast<double>(order);
    return {TimesPowerOfTwo(CDiv(value, detail::Rounded(derivative_)), x_.exponent), size <= unit * 0x1p-105,
            size <= unit * 0x1p-51};
  }

 private:
  void MoveExponent(std::int64_t up) {
    exponent_ += up;
    value_ = TimesPowerOfTwo(value_, -up);
    derivative_ = TimesPowerOfTwo(derivative_, -up);
    moduli_ = TimesPowerOfTwo(Cplx(moduli_), -up).Re;
  }

  Scaled x_;
  double r_;
  TwinComplex value_;
  TwinComplex derivative_;
  double moduli_ = 0;
  std::int64_t exponent_ = 0;
};

Correction Newton(std::span<const Scaled> p, TCplx z) {
  Horner scheme(z);
  for (const Scaled& c : p) scheme.Add(c);
  return scheme.Result(p.size() - 1);
}

// Sum of 1 / (z - other) over the other roots; those that coincide with z exert no force on it.
TCplx Repulsion(std::span<const TCplx> roots, std::size_t i) {
  TCplx sum;
  for (std::size_t j = 0; j < roots.size(); ++j) {
    if (j != i && !(roots[j] == roots[i])) sum += CInv(roots[i] - roots[j]);
  }
  return sum;
}

// Moves the roots until each is settled: in place of p the rational function p(z) / prod(z - other roots) gets a Newton
// step. False when some are not roots at the end.
bool Iterate(std::span<const Scaled> p, std::span<TCplx> roots) {
  std::vector<bool> settled(roots.size(), false);
  for (int sweep = 0; sweep < kMaxSweeps; ++sweep) {
    bool all_settled = true;
    for (std::size_t i = 0; i < roots.size(); ++i) {
      if (settled[i]) continue;
      const Correction at = Newton(p, roots[i]);
      if (at.vanishes) {
        settled[i] = true;
        continue;
      }
      all_settled = false;
      const TCplx step = CDiv(at.newton, Cplx(1) - at.newton * Repulsion(roots, i));
      if (!detail::IsFiniteElement(step)) continue;
      settled[i] = CAbs(step) <= std::max(CAbs(roots[i]) * 0x1p-52, 0x1p-1073);
      roots[i] -= step;
    }
    if (all_settled) return true;
  }
  for (std::size_t i = 0; i < roots.size(); ++i) {
    if (!settled[i] && !(detail::IsFiniteElement(roots[i]) && Newton(p, roots[i]).nearly_zero)) return false;
  }
  return true;
}

// Eigenvalues of the companion matrix of p(2^k x), the roots' geometric mean being 2^k. They are moved a little off
// each other and off the real axis, for the iteration would keep any symmetry that the roots do not have.
bool StartFromCompanion(std::span<const Scaled> p, bool real, std::vector<TCplx>& roots) {
  const std::size_t n = p.size() - 1;
  const double log_ratio = LogModulus(p[n].z) - LogModulus(p[0].z) + static_cast<double>(p[n].exponent - p[0].exponent);
  const auto k = static_cast<std::int64_t>(std::llround(log_ratio / static_cast<double>(n)));
  Borrowed<TMtx> companion;
  companion->Size(static_cast<std::int32_t>(n), static_cast<std::int32_t>(n), !real, true);
  companion->SetZero();
  detail::ForDouble(!real, [&]<detail::DoubleElement T>(ElementTag<T>) {
    const auto a = companion->Elements<T>();
    for (std::size_t i = 1; i <= n; ++i) {
      const std::int64_t exponent = p[i].exponent - p[0].exponent - k * static_cast<std::int64_t>(i);
      a[i - 1] = detail::WidenElement<T>(TimesPowerOfTwo(CDiv(-p[i].z, p[0].z), exponent));
    }
    for (std::size_t i = 1; i < n; ++i) a[i * n + i - 1] = detail::WidenElement<T>(1.0);
  });
  if (!detail::AllFinite(*companion)) return false;
  Borrowed<TVec> eigenvalues;
  try {
    companion->Eig(*eigenvalues);
  } catch (const ECoreError&) {  // no convergence: there are other starting points
    return false;
  }
  const auto values = eigenvalues->CValues();
  roots.resize(n);
  for (std::size_t i = 0; i < n; ++i) {
    roots[i] = TimesPowerOfTwo(values[i] * (Cplx(1) + 1e-12 * Expj(static_cast<double>(i))), k);
  }
  return true;
}

// Points on circles whose radii the upper convex hull of (i, log |p_i|) gives: each edge stands for as many roots as it
// is long, of about the modulus that its slope tells. The angles are in no symmetry, which would hold the iteration
// captive.
void StartFromPolygon(std::span<const Scaled> p, std::vector<TCplx>& roots) {
  std::vector<std::size_t> hull;
  const auto slope = [&](std::size_t i, std::size_t j) {
    const double rise = LogModulus(p[j].z) - LogModulus(p[i].z) + static_cast<double>(p[j].exponent - p[i].exponent);
    return rise / static_cast<double>(j - i);
  };
  for (std::size_t i = 0; i < p.size(); ++i) {
    if (p[i].z == TCplx{}) continue;
    while (hull.size() > 1 && slope(hull[hull.size() - 2], hull.back()) <= slope(hull.back(), i)) hull.pop_back();
    hull.push_back(i);
  }
  roots.clear();
  for (std::size_t e = 1; e < hull.size(); ++e) {
    const double log_radius = slope(hull[e - 1], hull[e]);
    if (log_radius >= 1024) RaiseOutsideRange();
    const double radius = std::exp2(std::max(log_radius, -1070.0));
    const std::size_t count = hull[e] - hull[e - 1];
    for (std::size_t j = 0; j < count; ++j) {
      const double turn = static_cast<double>(j) / static_cast<double>(count) + 0.61803 * static_cast<double>(e);
      roots.push_back(radius * Expj(2 * std::numbers::pi * turn + 0.7));
    }
  }
}

// Roots of real coefficients are real or come in pairs: joins each root to the one that is nearest to its conjugate, or
// to itself when that is nearer, the closest first.
void MakePairs(std::vector<TCplx>& roots) {
  std::vector<std::tuple<double, std::size_t, std::size_t>> matches;
  for (std::size_t i = 0; i < roots.size(); ++i) {
    for (std::size_t j = i; j < roots.size(); ++j) {
      const double scale = CAbs(roots[i]) + CAbs(roots[j]);
      if (i == j || (roots[i].Im > 0) != (roots[j].Im > 0)) {
        matches.emplace_back(CAbs(roots[i] - Conj(roots[j])) / scale, i, j);
      }
    }
  }
  std::sort(matches.begin(), matches.end());
  std::vector<bool> done(roots.size(), false);
  std::vector<TCplx> joined;
  for (const auto& [distance, i, j] : matches) {
    if (done[i] || done[j]) continue;
    done[i] = done[j] = true;
    if (i == j) {
      joined.push_back(Cplx(roots[i].Re));
    } else {
      const TCplx mean = 0.5 * roots[i] + 0.5 * Conj(roots[j]);
      joined.push_back({mean.Re, std::abs(mean.Im)});
      joined.push_back({mean.Re, -std::abs(mean.Im)});
    }
  }
  roots = std::move(joined);
}

// The roots of a polynomial whose first and last coefficients are not zero, of order 1 or more.
std::vector<TCplx> Roots(std::span<const TCplx> coefficients, bool real) {
  std::vector<Scaled> p;
  p.reserve(coefficients.size());
  for (const TCplx c : coefficients) p.emplace_back(c);
  std::vector<TCplx> roots;
  bool found = p.size() - 1 <= kLargestCompanion && StartFromCompanion(p, real, roots) && Iterate(p, roots);
  if (!found) {
    StartFromPolygon(p, roots);
    found = Iterate(p, roots);
  }
  if (!found) ERaise("PolyRoots: no convergence");
  if (real) MakePairs(roots);
  return roots;
}

}  // namespace

void PolyRoots(const TVec& P, TVec& Roots) {
  if (!detail::AllFinite(P)) ERaise("PolyRoots: a coefficient is not finite");
  Borrowed<TVec> wide;
  wide->Size(P.Length(), TMtxFloatPrecision::DoubleComplex);
  detail::Widen(P, wide->CValues());
  std::span<const TCplx> p = wide->CValues();
  while (!p.empty() && p.front() == TCplx{}) p = p.subspan(1);
  std::size_t zeros = 0;
  for (; !p.empty() && p.back() == TCplx{}; ++zeros) p = p.first(p.size() - 1);

  std::vector<TCplx> roots;
  if (p.size() > 1) roots = passband::Roots(p, !P.Complex());
  if (!std::ranges::all_of(roots, [](TCplx z) { return detail::IsFiniteElement(z); })) {
    RaiseOutsideRange();
  }
  roots.resize(roots.size() + zeros);
  const bool is_double = P.IsDouble();
  Roots.Size(static_cast<std::int32_t>(roots.size()), true, is_double);
  detail::StoreRounded(std::span<const TCplx>(roots), Roots);
}

}  // namespace passband
