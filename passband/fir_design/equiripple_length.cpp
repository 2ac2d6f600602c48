#include "passband/fir_design/equiripple_length.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "passband/fir_design/equiripple_kinds_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/vector_core/pool.h"

namespace passband::OptimalFir {
namespace {

using SignalUtils::TFilterType;

double LengthBetween(double width, double first, double second) {
  const double a = std::log10(first);
  const double b = std::log10(second);
  return (-0.4278 - (0.5941 * a + 0.00266 * a * a - b * (0.07114 * a + 0.005309 * a * a - 0.4761))) / width -
         (0.51244 * (a - b) + 11.01217) * width + 1;
}

// A filter for the length estimate: two edges for each gain.
struct Outline {
  std::vector<double> bands;
  std::vector<double> gains;
  double deviation;
};

Outline OutlineOf(OpenArray W, double ripple, TFilterType type, double fs) {
  using enum TFilterType;
  const double end = fs / 2;
  if (W.Length() == 4) {
    const double inside = type == ftBandpass ? 1 : 0;
    const double outside = type == ftBandstop ? 1 : 0;
    return {{0, W[0], W[1], W[2], W[3], end}, {outside, inside, outside}, ripple};
  }
  switch (type) {
    case ftLowpass:
      return {{0, W[0], W[1], end}, {1, 0}, ripple};
    case ftHighpass:
      return {{0, W[0], W[1], end}, {0, 1}, ripple};
    case ftHilbertIII:
    case ftIntegratorIII:
    case ftDoubleIntegratorIII:
      return {{0, 0, 2 * W[0], end - 2 * (end - W[1]), end, end}, {0, 1, 0}, ripple / 2};
    case ftHilbertIV:
    case ftIntegratorIV:
    case ftDoubleIntegratorIV:
      return {{0, 0, 2 * W[0], end}, {1, 0}, ripple / 2};
    default:
      return {{0, end - 2 * (end - W[1]), end, end}, {1, 0}, ripple / 2};
  }
}

}  // namespace

std::int32_t RemezLength(OpenArray bands, OpenArray gains, OpenArray devs, TVec& Weights, double FS) {
  if (gains.Length() != devs.Length()) ERaise("Length(gains) <> Length(weigth)");
  if (bands.Span().size() != 2 * gains.Span().size()) ERaise("Length(bands) <> 2*Length(gains)");
  if (!std::all_of(devs.begin(), devs.end(), [](double d) { return d > 0; })) {
    ERaise("RemezLength: a deviation is not positive");
  }
  const auto relative = [&](std::int32_t i) { return gains[i] > 1 ? devs[i] / gains[i] : devs[i]; };
  double estimate = 0;
  for (std::int32_t i = 0; i + 1 < gains.Length(); ++i) {
    const double width = std::abs(bands[2 * i + 1] / FS - bands[2 * i + 2] / FS);
    const double first = relative(i);
    const double second = relative(i + 1);
    const double longest = std::max(LengthBetween(width, first, second), LengthBetween(width, second, first));
    estimate = i == 0 ? longest : std::max(estimate, longest);
  }
  std::int32_t length = std::max(Ceil(estimate), 3);
  const bool ends_open = gains.Length() > 0 && gains[gains.Length() - 1] != 0;
  if (ends_open && length % 2 == 0) ++length;
  const Borrowed<TVec> weights;
  weights->Size(devs.Length(), TMtxFloatPrecision::DoubleReal);
  const double largest = devs.Length() > 0 ? *std::max_element(devs.begin(), devs.end()) : 1;
  std::transform(devs.begin(), devs.end(), weights->Values().begin(), [largest](double d) { return largest / d; });
  Weights.Take(*weights);
  return length;
}

std::int32_t RemezFirLength(OpenArray W, double Ripple, TFilterType FilterType, double FS) {
  if (!detail::HasKind(W, FilterType)) ERaise("(Length(W) <> 4) and (Length(W) <> 2)");
  const Outline outline = OutlineOf(W, Ripple, FilterType, FS);
  const std::vector<double> deviations(outline.gains.size(), outline.deviation);
  const Borrowed<TVec> weights;
  const std::int32_t estimate = RemezLength(outline.bands, outline.gains, deviations, *weights, FS);
  return detail::FittingLength(EnsureRange(detail::kMinLength, estimate, detail::kMaxLength), FilterType);
}

}  // namespace passband::OptimalFir
