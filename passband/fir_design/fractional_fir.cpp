#include "passband/fir_design/fractional_fir.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>

#include "passband/fir_design/ideal_response_internal.h"
#include "passband/fir_design/kaiser_fir.h"
#include "passband/fir_design/windowed_fir_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"
#include "passband/windows/kaiser.h"

namespace passband::SignalUtils {
namespace {

using enum TFilterType;

// The places of the taps, in samples from the centre of a response of nominal length n.
struct Places {
  std::int32_t n;
  double offset;
  double step;

  double operator[](std::size_t tap) const {
    const long double x =
        static_cast<long double>(offset) + static_cast<long double>(tap) * step - (static_cast<long double>(n) - 1) / 2;
    return std::abs(x) * PI <= 1e-25L ? 0 : static_cast<double>(x);
  }
};

std::int32_t CountTaps(const Places& places) {
  if (!(places.step > 0)) ERaise("Step");
  if (!std::isfinite(places.step) || !std::isfinite(places.offset)) {
    ERaise("FractionalFirImpulse: Offset or Step is not finite");
  }
  const double count = std::nearbyint((static_cast<double>(places.n) - 1) / places.step) + 1;
  if (!(count >= 0 && count <= std::numeric_limits<std::int32_t>::max())) {
    ERaise("FractionalFirImpulse: not (0 <= Round((N - 1) / Step) + 1 <= 2147483647)");
  }
  return static_cast<std::int32_t>(count);
}

// The taps in double, without a window.
void Sample(TVec& taps, const Places& places, OpenArray W, TFilterType type, double fs) {
  const std::int32_t count = CountTaps(places);
  const detail::CutOffs cut = detail::PlaceCutOffs(W, type, fs);
  taps.Size(count, TMtxFloatPrecision::DoubleReal);
  const std::span<double> h = taps.Values();
  for (std::size_t n = 0; n < h.size(); ++n) h[n] = detail::IdealTap(type, places[n], cut, fs);
}

// Sizes H to the taps from `first` on, times the gain, rounded once.
void Store(const TVec& taps, std::size_t first, double gain, TVec& H) {
  const std::span<const double> h = taps.Values().subspan(first);
  H.Size(static_cast<std::int32_t>(h.size()), false, H.IsDouble());
  ForReal(H, [&]<RealElement R>(ElementTag<R>) {
    std::transform(h.begin(), h.end(), H.Elements<R>().begin(),
                   [gain](double tap) { return static_cast<R>(tap * gain); });
  });
}

// As `AdjustParity`, but a bandpass has odd lengths, too.
std::int64_t OddBandpass(std::int64_t length, TFilterType type) {
  if (type == ftBandpass && length % 2 == 0) return length + 1;
  return detail::AdjustParity(length, type);
}

struct Preset {
  std::int32_t taps;
  double beta;
};

// In the order of TFractionalImpulse.
constexpr std::array kPresets{Preset{63, 17}, Preset{63, 14}, Preset{163, 14}, Preset{63, 10},
                              Preset{63, 5},  Preset{17, 4},  Preset{9, 4}};

}  // namespace

void FractionalFirImpulse(std::int32_t N, TVec& H, OpenArray W, double Offset, double Step, TFilterType FilterType,
                          double FS) {
  const Borrowed<TVec> taps;
  Sample(*taps, {N, Offset, Step}, W, FilterType, FS);
  Store(*taps, 0, 1, H);
}

std::int32_t FractionalKaiserImpulse(TVec& H, OpenArray W, double Ripple, double Offset, double Step,
                                     TFilterType FilterType, bool Extended, double Gain, double FS) {
  if (W.Length() != 2 && W.Length() != 4) ERaise("(Length(W) <> 2) and (Length(W) <> 4)");
  std::int64_t length = KaiserFirLength({W[0], W[1]}, Ripple, FS);
  if (W.Length() == 4) length = std::max<std::int64_t>(length, KaiserFirLength({W[2], W[3]}, Ripple, FS));
  length = std::clamp<std::int64_t>(OddBandpass(length, FilterType), 4, detail::kMaxTaps);
  const auto result = static_cast<std::int32_t>(length);

  const Borrowed<TVec> taps;
  Sample(*taps, {Extended ? result + 2 : result, Offset, Step}, W, FilterType, FS);
  FractionalKaiser(*taps, KaiserBetaFir(Ripple), Offset, Step);
  // There are about 5 / Step taps at least.
  const double left_out = Extended ? std::nearbyint(1 / Step) : 0;
  Store(*taps, static_cast<std::size_t>(left_out), Gain, H);
  return result;
}

double FractionalImpulse(TVec& H, double FractionalDelay, TFractionalImpulse ImpulseType, double Gain) {
  if (!CheckRange(0.0, FractionalDelay, 1.0)) {
    ERaise("FractionalImpulse: FractionalDelay param must be between 0 and 1!");
  }
  const auto type = static_cast<std::size_t>(ImpulseType);
  if (type >= kPresets.size()) ERaise("FractionalImpulse: ImpulseType");
  const Preset& preset = kPresets[type];
  const double offset = 1 - FractionalDelay;
  const Borrowed<TVec> taps;
  Sample(*taps, {preset.taps, offset, 1}, {0.96, 0.9999}, ftLowpass, 2);
  FractionalKaiser(*taps, preset.beta, offset, 1);
  Store(*taps, 0, Gain, H);
  return (preset.taps - 1) / 2.0 - offset;
}

}  // namespace passband::SignalUtils
