// The impulse responses that designs by the window method cut off, as functions of the distance from the centre.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/open_array.h"

namespace passband::SignalUtils::detail {

/// The band edges of a design as cut-offs relative to half the sampling frequency; 0 where the type has none.
struct CutOffs {
  double f1 = 0;
  double f2 = 0;
};

/// Checks the number of edges and places the cut-offs: an edge is its own cut-off, a pair that bounds a transition band
/// gives its middle. Raises "not (1 < Length(W) < 2)", "not (2 < Length(W) < 4)" (ECoreError) and
/// "Length(W) must be 1,2 or 4" (Exception).
CutOffs PlaceCutOffs(OpenArray W, TFilterType FilterType, double FS);

/// True for the types that have an ideal response here: the first eight.
bool HasIdealResponse(TFilterType FilterType);

/// The ideal response at the distance x, in samples, from the centre of symmetry. At x = 0 the limit is returned: 0 for
/// the antisymmetric types.
double IdealTap(TFilterType FilterType, double x, CutOffs cut, double FS);

/// The length that the type's symmetry asks for: types that need a tap at the centre get an odd length, Hilbert
/// transformers and differentiators of type IV an even one. Raises "FilterType not supported!".
std::int64_t AdjustParity(std::int64_t length, TFilterType FilterType);

}  // namespace passband::SignalUtils::detail
