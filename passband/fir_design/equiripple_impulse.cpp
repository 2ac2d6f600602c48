#include "passband/fir_design/equiripple_impulse.h"

#include <vector>

#include "passband/fir_design/equiripple.h"
#include "passband/fir_design/equiripple_design_internal.h"
#include "passband/fir_design/equiripple_kinds_internal.h"
#include "passband/fir_design/equiripple_length.h"
#include "passband/foundation/exceptions.h"
#include "passband/vector_core/pool.h"

namespace passband::OptimalFir {
namespace {

using SignalUtils::TFilterType;
using enum SignalUtils::TFilterType;
using enum TRemezType;

TRemezType RemezTypeOf(TFilterType type) {
  switch (type) {
    case ftHilbertIII:
    case ftHilbertIV:
      return rmtHilbert;
    case ftDifferentiatorIII:
    case ftDifferentiatorIV:
      return rmtDifferentiator;
    case ftDoubleDifferentiatorIII:
    case ftDoubleDifferentiatorIV:
      return rmtDoubleDifferentiator;
    case ftIntegratorIII:
    case ftIntegratorIV:
      return rmtIntegrator;
    case ftDoubleIntegratorIII:
    case ftDoubleIntegratorIV:
      return rmtDoubleIntegrator;
    default:
      return rmtBandPass;
  }
}

// What `remez` is asked for.
struct Layout {
  std::vector<double> bands;
  std::vector<double> gains;
  TRemezType type;
};

Layout LayoutOf(OpenArray W, TFilterType type, double gain, double fs) {
  const double end = fs / 2;
  if (W.Length() == 4) {
    const double inside = type == ftBandpass ? gain : 0;
    const double outside = type == ftBandstop ? gain : 0;
    return {{0, W[0], W[1], W[2], W[3], end}, {outside, inside, outside}, rmtBandPass};
  }
  if (type == ftLowpass) return {{0, W[0], W[1], end}, {gain, 0}, rmtBandPass};
  if (type == ftHighpass) return {{0, W[0], W[1], end}, {0, gain}, rmtBandPass};
  const bool to_end = detail::IsTypeIV(type) && type != ftHilbertIV;
  return {{W[0], to_end ? end : W[1]}, {gain}, RemezTypeOf(type)};
}

}  // namespace

bool RemezImpulse(TVec& H, OpenArray W, TFilterType FilterType, double Gain, double FS) {
  if (!detail::HasKind(W, FilterType)) ERaise("(LengthW <> 4) and (LengthW <> 2)");
  const Layout layout = LayoutOf(W, FilterType, Gain, FS);
  const std::vector<double> weights(layout.gains.size(), 1.0);
  double deviation = 0;
  return remez(H, layout.bands, layout.gains, weights, layout.type, deviation, FS) < detail::kMaxIterations;
}

bool RemezImpulse(TVec& H, OpenArray W, double Ripple, TFilterType FilterType, double Gain, double FS,
                  bool ForceOddLength) {
  std::int32_t length = RemezFirLength(W, Ripple, FilterType, FS);
  if (ForceOddLength && !detail::IsTypeIV(FilterType)) length = detail::MadeOdd(length);
  const Borrowed<TVec> taps;
  taps->Size(length, false, H.IsDouble());
  const bool converged = RemezImpulse(*taps, W, FilterType, Gain, FS);
  H.Take(*taps);
  return converged;
}

}  // namespace passband::OptimalFir
