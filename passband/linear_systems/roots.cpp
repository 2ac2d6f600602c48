#include <algorithm>

#include "passband/analysis/sort_conj.h"
#include "passband/foundation/scalars.h"
#include "passband/linear_systems/roots_internal.h"
#include "passband/vector_core/dispatch.h"

namespace passband::LinearSystems::detail {

Roots ReadRoots(const TVec& v) {
  Roots roots(static_cast<std::size_t>(v.Length()));
  ForAny(v, [&]<Element T>(ElementTag<T>) {
    const auto x = v.Elements<T>();
    std::transform(x.begin(), x.end(), roots.begin(), [](T value) {
      if constexpr (IsComplex<T>) {
        return static_cast<TCplx>(value);
      } else {
        return Cplx(value);
      }
    });
  });
  return roots;
}

void WriteRoots(TVec& v, std::span<const TCplx> roots, bool is_double) {
  v.Size(static_cast<std::int32_t>(roots.size()), true, is_double);
  ForReal(is_double, [&]<RealElement R>(ElementTag<R>) {
    using C = ComplexOf<R>;
    std::transform(roots.begin(), roots.end(), v.Elements<C>().begin(), [](TCplx x) { return static_cast<C>(x); });
  });
}

double PairingTolerance(const TVec& v) {
  const double n = v.Length();
  return v.IsDouble() ? (n * v.NormL2() * 1e6 + 1) * 2.220446049250313e-16
                      : (n * v.NormL2() * 100 + 1) * static_cast<double>(EPS_SINGLE);
}

void PairRoots(const TVec& v, TVec& paired) {
  const double tolerance = PairingTolerance(v);
  paired.Copy(v);
  SignalUtils::SortConj(paired, tolerance);
}

}  // namespace passband::LinearSystems::detail
