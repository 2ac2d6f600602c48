// Elliptic (Cauer) filters: equal ripples in both bands, the steepest transition that an order can have.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/foundation/open_array.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband::IIRFilters {

/// Designs an elliptic filter: the gain runs between 1 and 10^(-Ripple / 20) in the pass band, which ends at the cut-offs,
/// and stays at or below 10^(-Attenuation / 20) in the stop band. Arguments, routes, result and texts as `ButterFilter`;
/// ftZeroPoleDiscrete returns 0, ftStateSpaceAnalog computes the zeros too (`LTIZeros`).
///
/// Gain: 1 is the top of the ripple band on ftZeroPoleAnalog. A digital bandstop, and every filter of ftZeroPoleDiscrete,
/// has gain 1 at its reference point instead (zero frequency, half the sampling frequency, the centre), which for an
/// even order is the bottom of the ripple band: its pass band then rises to +Ripple dB.
///
/// \param Order        1 .. 50 on every route
/// \param Ripple       in dB, > 0
/// \param Attenuation  in dB, > Ripple
/// \throws ECoreError also "Analog not supported with ftZeroPoleDiscrete"; what `EllipticAnalog` raises
PASSBAND_EXPORT double EllipticFilter(std::int32_t Order, double Ripple, double Attenuation, OpenArray CutoffFreq,
                                      SignalUtils::TFilterType FilterType, bool Analog, TVec& z, TVec& p, double& k,
                                      TIirFrequencyTransform Transform = TIirFrequencyTransform::ftZeroPoleAnalog);

/// The same as a transfer function; see `ButterFilter` on how fragile it is.
PASSBAND_EXPORT double EllipticFilter(std::int32_t Order, double Ripple, double Attenuation, OpenArray CutoffFreq,
                                      SignalUtils::TFilterType FilterType, bool Analog, TVec& num, TVec& den,
                                      TIirFrequencyTransform Transform = TIirFrequencyTransform::ftZeroPoleAnalog);

/// The same as second-order sections, the form to filter with.
PASSBAND_EXPORT double EllipticFilter(std::int32_t Order, double Ripple, double Attenuation, OpenArray CutoffFreq,
                                      SignalUtils::TFilterType FilterType, bool Analog, TVec& sos,
                                      TIirFrequencyTransform Transform = TIirFrequencyTransform::ftZeroPoleAnalog);

/// The same in state space.
/// \throws ECoreError "(A.IsDouble <> B.IsDouble) or (A.IsDouble <> C.IsDouble)"; "Order > MaxIirOrder" (50); "CutoffFreq.Length >
///         2", first
PASSBAND_EXPORT double EllipticFilter(std::int32_t Order, double Ripple, double Attenuation, OpenArray CutoffFreq,
                                      SignalUtils::TFilterType FilterType, bool Analog, TMtx& A, TVec& B, TVec& C,
                                      double& D);

}  // namespace passband::IIRFilters
