#include "passband/fir_design/kaiser_fir.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "passband/fir_design/ideal_response_internal.h"
#include "passband/fir_design/windowed_fir_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"

namespace passband::SignalUtils {
namespace {

using enum TFilterType;

double Attenuation(double ripple) { return -20 * std::log10(ripple); }

bool IsAntisymmetric(TFilterType type) { return type >= ftHilbertIII && type <= ftDifferentiatorIV; }

}  // namespace

std::int32_t KaiserFirLength(OpenArray W, double Ripple, double FS) {
  if (W.Length() == 0) return 0;
  if (W.Length() != 2) throw Exception("Length(W) <> 2");
  const double transition = std::abs(W[1] - W[0]) / (FS * 0.5);
  return Round((Attenuation(Ripple) - 8) / (transition * PI * 2.285));
}

double KaiserBetaFir(double Ripple) {
  const double a = Attenuation(Ripple);
  if (a > 50) return 0.1102 * (a - 8.7);
  if (a >= 21) return 0.5842 * std::pow(a - 21, 0.4) + 0.07886 * (a - 21);
  return 0;
}

void KaiserImpulse(TVec& H, OpenArray W, double Ripple, TFilterType FilterType, double Gain, double FS,
                   bool OddLength) {
  const std::int32_t count = W.Length();
  if (count != 2 && count != 4) ERaise("(Length(W) <> 2) and (Length(W) <> 4)");
  std::array<double, 4> edges{};
  std::copy(W.begin(), W.end(), edges.begin());
  if (IsAntisymmetric(FilterType)) {
    Ripple = Ripple / 2;
    edges[0] = FS / 2 - (FS / 2 - edges[0]) * 2;
    edges[1] = FS / 2;
  }
  std::int64_t length = KaiserFirLength({edges[0], edges[1]}, Ripple, FS);
  // The missing second transition band of two edges counts as length 0.
  length = std::max<std::int64_t>(length, count == 4 ? KaiserFirLength({edges[2], edges[3]}, Ripple, FS) : 0);
  length = detail::AdjustParity(length, FilterType);
  if (OddLength && length % 2 == 0) ++length;
  length = std::clamp<std::int64_t>(length, 4, detail::kMaxTaps);
  const OpenArray working(std::span<const double>(edges.data(), static_cast<std::size_t>(count)));
  detail::DesignByWindow(H, static_cast<std::int32_t>(length), working, FilterType, FS,
                         {TSignalWindowType::wtKaiser, KaiserBetaFir(Ripple)}, Gain);
}

}  // namespace passband::SignalUtils
