#include <cmath>
#include <cstddef>
#include <numbers>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/iir_design/prototype_internal.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::IIRFilters::detail {
namespace {

void Fill(TVec& v, const std::vector<WideComplex>& roots, bool is_double) {
  v.Size(static_cast<std::int32_t>(roots.size()), true, is_double);
  ForReal(v, [&]<RealElement R>(ElementTag<R>) {
    const auto elements = v.Elements<ComplexOf<R>>();
    for (std::size_t i = 0; i < elements.size(); ++i) {
      elements[i] = {static_cast<R>(roots[i].real()), static_cast<R>(roots[i].imag())};
    }
  });
}

}  // namespace

void CheckPrecisions(const TVec& z, const TVec& p) {
  if (z.IsDouble() != p.IsDouble()) ERaise("z.IsDouble <> p.IsDouble");
}

void CheckOrder(std::int32_t order) {
  if (!CheckRange(1, order, 1000)) ERaise("not (1 <= Order <= 1000)");
}

void CheckDecibels(double decibels, std::string_view text) {
  if (!(decibels > 0 && decibels <= 3000)) ERaise(text);
}

Wide ExcessPower(double decibels) { return std::expm1(static_cast<Wide>(decibels) / 10 * std::numbers::ln10_v<Wide>); }

Wide QuarterWave(std::int32_t m, std::int32_t n) {
  const auto angle = [n](std::int32_t part) {
    return std::numbers::pi_v<Wide> * static_cast<Wide>(part) / static_cast<Wide>(2 * n);
  };
  const std::int32_t size = std::abs(m);
  // From the nearer end of the quarter, so that both ends are exact.
  const Wide sine = 2 * size <= n ? std::sin(angle(size)) : std::cos(angle(n - size));
  return m < 0 ? -sine : sine;
}

WideComplex ButterworthPole(std::int32_t i, std::int32_t n) {
  const std::int32_t m = 2 * i - 1;
  return {-QuarterWave(m <= n ? m : 2 * n - m, n), QuarterWave(n - m, n)};
}

Wide UnitGain(const Prototype& prototype) {
  WideComplex gain = 1;
  for (std::size_t i = 0; i < prototype.poles.size(); ++i) {
    gain *= -prototype.poles[i];
    if (i < prototype.zeros.size()) gain /= -prototype.zeros[i];
  }
  return gain.real();
}

void Store(const Prototype& prototype, TVec& z, TVec& p, double& k) {
  const Borrowed<TVec> zeros;
  const Borrowed<TVec> poles;
  Fill(*poles, prototype.poles, p.IsDouble());
  if (prototype.zeros.empty()) {
    zeros->Size(0, z.FloatPrecision());
  } else {
    Fill(*zeros, prototype.zeros, z.IsDouble());
  }
  z.Take(*zeros);
  p.Take(*poles);
  k = static_cast<double>(prototype.k);
}

}  // namespace passband::IIRFilters::detail
