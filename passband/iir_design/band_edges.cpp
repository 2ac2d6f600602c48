#include <cmath>
#include <limits>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/iir_design/band_edges_internal.h"
#include "passband/linear_systems/bilinear.h"

namespace passband::IIRFilters::detail {
namespace {

using enum SignalUtils::TFilterType;

void CheckRanges(OpenArray cutoffs, bool digital) {
  const double limit = digital ? 1 : std::numeric_limits<double>::infinity();
  for (const double edge : cutoffs) {
    if (!(edge > 0 && edge < limit)) ERaise(digital ? "not (0 < CutoffFreq < 1)" : "not (0 < CutoffFreq < Inf)");
  }
  if (cutoffs.Length() == 2 && !(cutoffs[0] < cutoffs[1])) ERaise("not (CutoffFreq[0] < CutoffFreq[1])");
}

double Place(double edge, EdgeScale scale) {
  return scale == EdgeScale::Prewarped ? LinearSystems::BilinearPrewarp(edge, 2.0) : edge;
}

// cos(pi f / 2) of 0 < f < 1; as a sine it keeps its digits next to f = 1.
double HalfAngleCosine(double f) { return std::sin(PI * (1 - f) / 2); }

// w1 - w0. Between prewarped edges tan a - tan b = sin(a - b) / (cos a cos b) does not cancel when they are close.
double Width(double f0, double f1, EdgeScale scale) {
  if (scale != EdgeScale::Prewarped) return f1 - f0;
  return 4 * std::sin(PI * (f1 - f0) / 2) / (HalfAngleCosine(f0) * HalfAngleCosine(f1));
}

// sqrt(w0 w1), also where the product leaves the range of a double.
double GeometricMean(double w0, double w1) {
  const double product = w0 * w1;
  return std::isnormal(product) ? std::sqrt(product) : std::sqrt(w0) * std::sqrt(w1);
}

}  // namespace

bool HasOneEdge(SignalUtils::TFilterType type) { return type == ftLowpass || type == ftHighpass; }
bool HasTwoEdges(SignalUtils::TFilterType type) { return type == ftBandpass || type == ftBandstop; }

Band PrepareBand(OpenArray cutoffs, SignalUtils::TFilterType type, EdgeScale scale) {
  if (HasTwoEdges(type) && cutoffs.Length() != 2) ERaise("(Length(CutoffFreq) <> 2)");
  if (HasOneEdge(type) && cutoffs.Length() != 1) ERaise("(Length(CutoffFreq) <> 1)");
  if (!HasOneEdge(type) && !HasTwoEdges(type)) return {};
  CheckRanges(cutoffs, scale != EdgeScale::Analog);
  const double first = Place(cutoffs[0], scale);
  if (HasOneEdge(type)) return {first, 0};
  return {GeometricMean(first, Place(cutoffs[1], scale)), Width(cutoffs[0], cutoffs[1], scale)};
}

}  // namespace passband::IIRFilters::detail
