#include "passband/fir_design/windowed_fir.h"

#include <algorithm>
#include <cstddef>

#include "passband/fir_design/ideal_response_internal.h"
#include "passband/fir_design/windowed_fir_internal.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"
#include "passband/windows/signal_window.h"

namespace passband::SignalUtils {
namespace {

template <RealElement R>
void WriteIdealResponse(std::span<R> taps, const detail::CutOffs& cut, TFilterType type, double fs) {
  const double centre = (static_cast<double>(taps.size()) - 1) / 2;
  for (std::size_t n = 0; n < taps.size(); ++n) {
    taps[n] = static_cast<R>(detail::IdealTap(type, static_cast<double>(n) - centre, cut, fs));
  }
}

}  // namespace

void FirImpulse(TVec& H, OpenArray W, TFilterType FilterType, double FS) {
  const detail::CutOffs cut = detail::PlaceCutOffs(W, FilterType, FS);
  if (!detail::HasIdealResponse(FilterType)) return;
  H.Size(H.Length(), false, H.IsDouble());
  ForReal(H, [&]<RealElement R>(ElementTag<R>) { WriteIdealResponse(H.Elements<R>(), cut, FilterType, FS); });
}

void FirImpulse(TVec& H, OpenArray W, double WindowParam, TFilterType FilterType, TSignalWindowType WindowType,
                double Gain, double FS) {
  if (H.Length() < 4) ERaise("H.Length < 4");
  const std::int64_t length = detail::AdjustParity(H.Length(), FilterType);
  detail::DesignByWindow(H, static_cast<std::int32_t>(std::min(length, detail::kMaxTaps)), W, FilterType, FS,
                         {WindowType, WindowParam}, Gain);
}

void detail::DesignByWindow(TVec& H, std::int32_t length, OpenArray W, TFilterType type, double FS,
                            const WindowChoice& window, double gain) {
  const Borrowed<TVec> taps;
  taps->Size(length, TMtxFloatPrecision::DoubleReal);
  FirImpulse(*taps, W, type, FS);
  SignalWindow(*taps, window.type, window.parameter, TSignalWindowMode::wmSymmetric, false);
  H.Size(length, false, H.IsDouble());  // the last step that can fail
  ForReal(H, [&]<RealElement R>(ElementTag<R>) {
    const std::span<const double> h = taps->Values();
    std::transform(h.begin(), h.end(), H.Elements<R>().begin(),
                   [gain](double tap) { return static_cast<R>(tap * gain); });
  });
}

}  // namespace passband::SignalUtils
