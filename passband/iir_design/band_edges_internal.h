// The cut-off frequencies of a design, checked and turned into the numbers that the band mappings take.
#pragma once

#include "passband/foundation/enumerations.h"
#include "passband/foundation/open_array.h"

namespace passband::IIRFilters::detail {

/// The scale of the cut-offs of a design and of the band that is handed on.
enum class EdgeScale {
  Analog,     // angular frequencies, handed on as they are
  Prewarped,  // relative to half the sampling frequency, handed on as the analog frequencies 4 tan(pi f / 2)
  Digital,    // relative to half the sampling frequency, handed on as they are
};

struct Band {
  double centre = 0;  // the cut-off, or the geometric mean of two; 0 where the type has no band
  double width = 0;   // the difference of two cut-offs
};

bool HasOneEdge(SignalUtils::TFilterType type);
bool HasTwoEdges(SignalUtils::TFilterType type);

/// \throws ECoreError "(Length(CutoffFreq) <> 1)", "(Length(CutoffFreq) <> 2)", "not (0 < CutoffFreq < 1)",
///         "not (0 < CutoffFreq < Inf)", "not (CutoffFreq[0] < CutoffFreq[1])", in this order
Band PrepareBand(OpenArray cutoffs, SignalUtils::TFilterType type, EdgeScale scale);

}  // namespace passband::IIRFilters::detail
