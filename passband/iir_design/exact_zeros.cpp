#include "passband/iir_design/exact_zeros.h"

#include <cmath>
#include <cstddef>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/vector_core/dispatch.h"

namespace passband::IIRFilters {
namespace {

using enum SignalUtils::TFilterType;

constexpr std::int32_t kMaxOrder = 1000;

void Fill(TVec& z, std::int32_t count, double value) {
  z.Size(count, false, z.IsDouble());
  z.SetVal(value);
}

void FillHalves(TVec& z, std::int32_t order, double first, double second) {
  z.Size(2 * order, false, z.IsDouble());
  z.SetVal(first, 0, order);
  z.SetVal(second, order, order);
}

// `order` times the zero in the upper half plane and its conjugate.
void FillPairs(TVec& z, std::int32_t order, TCplx zero) {
  z.Size(2 * order, true, z.IsDouble());
  ForReal(z, [&]<RealElement R>(ElementTag<R>) {
    using C = ComplexOf<R>;
    const auto values = z.Elements<C>();
    for (std::size_t i = 0; i < values.size(); i += 2) {
      values[i] = static_cast<C>(zero);
      values[i + 1] = {values[i].Re, -values[i].Im};
    }
  });
}

// e^(j theta), theta = 2 arctan(wn / 4), by the half-angle formulas: both parts keep their digits for every wn.
TCplx ZeroOnCircle(double wn) {
  const double half_sine = wn / std::hypot(4.0, wn);
  const double half_cosine = 4 / std::hypot(4.0, wn);
  return {(half_cosine - half_sine) * (half_cosine + half_sine), 2 * half_sine * half_cosine};
}

}  // namespace

void ExactIirZeros(std::int32_t Order, double Wn, SignalUtils::TFilterType FilterType, bool Analog, TVec& z) {
  if (!CheckRange(0, Order, kMaxOrder)) ERaise("not (0 <= Order <= 1000)");
  switch (FilterType) {
    case ftLowpass:
      return Fill(z, Analog ? 0 : Order, -1);
    case ftHighpass:
      return Fill(z, Order, Analog ? 0 : 1);
    case ftBandpass:
      return Analog ? Fill(z, Order, 0) : FillHalves(z, Order, 1, -1);
    case ftBandstop:
      if (IsNanInf(Wn)) ERaise("ExactIirZeros: Wn is not finite");
      return FillPairs(z, Order, Analog ? TCplx{0, Wn} : ZeroOnCircle(Wn));
    default:
      return;
  }
}

}  // namespace passband::IIRFilters
