// Bessel filters: the flattest group delay, hence the least overshoot.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/foundation/open_array.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband::IIRFilters {

/// Designs a Bessel filter: the analog group delay is maximally flat at zero frequency; the cut-offs are those of the
/// Butterworth filter with the same asymptote (`BesselAnalog`), not 3 dB points. The bilinear transform keeps the gain of
/// the analog filter, not its delay: the higher the band, the less flat. Arguments, routes, result and texts as
/// `ButterFilter`.
/// \throws ECoreError also what `BesselAnalog` raises
PASSBAND_EXPORT double BesselFilter(std::int32_t Order, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType,
                                    bool Analog, TVec& z, TVec& p, double& k,
                                    TIirFrequencyTransform Transform = TIirFrequencyTransform::ftZeroPoleAnalog);

/// The same as a transfer function; see `ButterFilter` on how fragile it is.
PASSBAND_EXPORT double BesselFilter(std::int32_t Order, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType,
                                    bool Analog, TVec& num, TVec& den,
                                    TIirFrequencyTransform Transform = TIirFrequencyTransform::ftZeroPoleAnalog);

/// The same as second-order sections, the form to filter with.
PASSBAND_EXPORT double BesselFilter(std::int32_t Order, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType,
                                    bool Analog, TVec& sos,
                                    TIirFrequencyTransform Transform = TIirFrequencyTransform::ftZeroPoleAnalog);

/// The same in state space.
/// \throws ECoreError "(A.IsDouble <> B.IsDouble) or (A.IsDouble <> C.IsDouble)", first
PASSBAND_EXPORT double BesselFilter(std::int32_t Order, OpenArray CutoffFreq, SignalUtils::TFilterType FilterType,
                                    bool Analog, TMtx& A, TVec& B, TVec& C, double& D);

}  // namespace passband::IIRFilters
