#include "passband/windows/cosine_windows.h"

#include <cmath>
#include <numbers>

#include "passband/foundation/scalars.h"
#include "passband/primitives/cosine_window.h"
#include "passband/vector_core/dispatch.h"
#include "passband/windows/window_apply_internal.h"

namespace passband::SignalUtils {
namespace {

using primitives::CosineWindowShape;
using primitives::WindowPeriod;

// The shape of a0, a1, a2 given as whole numbers of 1 / unit, so that sums of the decimals are rounded only once.
constexpr CosineWindowShape FromDecimals(std::int64_t a0, std::int64_t a1, std::int64_t a2, std::int64_t unit) {
  const auto value = [unit](std::int64_t numerator) {
    return static_cast<double>(numerator) / static_cast<double>(unit);
  };
  return {value(a0 - a1 + a2), value(2 * a1 - 8 * a2), value(8 * a2)};
}

constexpr CosineWindowShape kHanning = FromDecimals(5, 5, 0, 10);
constexpr CosineWindowShape kHamming = FromDecimals(54, 46, 0, 100);
constexpr CosineWindowShape kBlackmanExact = FromDecimals(42659071, 49656062, 7684867, 100000000);
constexpr CosineWindowShape kBlackmanHarris = FromDecimals(42323, 49755, 7922, 100000);
constexpr CosineWindowShape kFlatTop = FromDecimals(2810639, 5208972, 1980399, 10000000);

// a0 = (alpha + 1) / 2, a1 = 1 / 2, a2 = -alpha / 2.
CosineWindowShape BlackmanShape(double alpha) { return {0, 1 + 4 * alpha, -4 * alpha}; }

// The stretch is checked by the caller.
TVec& Apply(TVec& data, const CosineWindowShape& shape, TSignalWindowMode mode, std::int32_t index, std::int32_t len) {
  const bool periodic = mode == TSignalWindowMode::wmPeriodic;
  if (len < 1 || (len == 1 && !periodic)) return data;  // a window of one point is a single 1
  ForAny(data, [&]<Element T>(ElementTag<T>) {
    detail::CheckStatus(primitives::CosineWindow(data.Elements<T>().data() + index, len, shape,
                                                 periodic ? WindowPeriod::Periodic : WindowPeriod::Symmetric));
  });
  return data;
}

TVec& ApplyFrom(std::int32_t least, TVec& data, const CosineWindowShape& shape, TSignalWindowMode mode,
                std::int32_t index, std::int32_t len) {
  data.ValidateParams(index, len);
  return len < least ? data : Apply(data, shape, mode, index, len);
}

}  // namespace

TVec& Hanning(TVec& Vec, TSignalWindowMode Mode, std::int32_t Index, std::int32_t Len) {
  return ApplyFrom(3, Vec, kHanning, Mode, Index, Len);
}

TVec& Hamming(TVec& Vec, TSignalWindowMode Mode, std::int32_t Index, std::int32_t Len) {
  return ApplyFrom(3, Vec, kHamming, Mode, Index, Len);
}

TVec& Blackman(TVec& Vec, double Alpha, TSignalWindowMode Mode, std::int32_t Index, std::int32_t Len) {
  const double alpha = Vec.IsDouble() ? Alpha : ToDouble(ToSingle(Alpha));
  return ApplyFrom(4, Vec, BlackmanShape(alpha), Mode, Index, Len);
}

TVec& BlackmanOptimal(TVec& Vec, std::int32_t Index, std::int32_t Len) {
  Vec.ValidateParams(Index, Len);
  if (Len < 4) return Vec;
  // With C = cos(pi / D)^2 = (1 + cos(2 pi / D)) / 2: c1 = 1 + 4 Alpha = (C - 1) / C and c2 = 1 / C.
  const double tangent = std::tan(std::numbers::pi / (Len - 1));
  const CosineWindowShape shape{0, -tangent * tangent, 1 + tangent * tangent};
  return Apply(Vec, shape, TSignalWindowMode::wmSymmetric, Index, Len);
}

TVec& BlackmanExact(TVec& Vec, TSignalWindowMode Mode, std::int32_t Index, std::int32_t Len) {
  return ApplyFrom(1, Vec, kBlackmanExact, Mode, Index, Len);
}

TVec& BlackmanHarris(TVec& Vec, TSignalWindowMode Mode, std::int32_t Index, std::int32_t Len) {
  return ApplyFrom(1, Vec, kBlackmanHarris, Mode, Index, Len);
}

TVec& FlatTop(TVec& Vec, TSignalWindowMode Mode, std::int32_t Index, std::int32_t Len) {
  return ApplyFrom(1, Vec, kFlatTop, Mode, Index, Len);
}

}  // namespace passband::SignalUtils
