// The zeros of an all-pole lowpass after its mapping to a band, known without computing the filter.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::IIRFilters {

/// Writes the zeros that an all-pole prototype of order N acquires with its band mapping:
///
///                  digital (bilinear at sampling frequency 2)                   analog
///     ftLowpass    N times -1                                                   none
///     ftHighpass   N times +1                                                   N times 0
///     ftBandpass   N times +1, then N times -1                                  N times 0
///     ftBandstop   e^(j theta), e^(-j theta), ... N times                       j Wn, -j Wn, ... N times
///
/// with theta = 2 arctan(Wn / 4), the angle on which the bilinear transform puts the prewarped centre frequency Wn.
///
/// \param Order       N, 0 .. 1000
/// \param Wn          centre frequency of a bandstop, as the design routines return it; not used otherwise
/// \param FilterType  other types than the four leave `z` as it is
/// \param Analog      zeros in s instead of z
/// \param z           out, in the precision that it has; complex for a bandstop, else real
/// \throws ECoreError "not (0 <= Order <= 1000)", "ExactIirZeros: Wn is not finite" (bandstop)
/// Precision: real zeros are exact, those of a bandstop are rounded once. Cost: O(N).
/// Literature: Oppenheim, Schafer, "Discrete-Time Signal Processing", 3rd ed., ch. 7.3.
PASSBAND_EXPORT void ExactIirZeros(std::int32_t Order, double Wn, SignalUtils::TFilterType FilterType, bool Analog,
                                   TVec& z);

}  // namespace passband::IIRFilters
