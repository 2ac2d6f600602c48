// Equiripple filters by kind and edges.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/foundation/open_array.h"
#include "passband/vector_core/vec.h"

namespace passband::OptimalFir {

/// Designs a filter with `remez`. Two edges W0 < W1 give
///
///     ftLowpass, ftHighpass                      bands 0 .. W0 and W1 .. FS/2
///     ftHilbertIII, ftHilbertIV                  W0 .. W1
///     other types III: differentiators and integrators, single and double    W0 .. W1
///     other types IV                             W0 .. FS/2, W1 is not used
///
/// with `Gain` in the pass band and equal weights, which differentiators and integrators shape so that their error is
/// relative. Four edges give the bands 0 .. W0, W1 .. W2, W3 .. FS/2: ftBandpass passes the middle one, ftBandstop the
/// outer ones, any other type none of them.
///
/// \param H           in: the length, 3 .. 10000, odd for the types III and even for the types IV, and `IsDouble`; out:
///                    the taps, real
/// \param W           2 or 4 edges in ascending order, in the unit of `FS`
/// \param FilterType  see the table
/// \param Gain        gain of the pass band; slope of a differentiator per unit of angular frequency, and so on
/// \param FS          sampling frequency
/// \returns true when `remez` took fewer than 50 iterations: `H` is the optimum
/// \throws ECoreError "(LengthW <> 4) and (LengthW <> 2)", also for a bandpass or bandstop of 2 edges; what `remez`
///         raises. `H` is then as it was.
PASSBAND_EXPORT bool RemezImpulse(TVec& H, OpenArray W, SignalUtils::TFilterType FilterType, double Gain = 1,
                                  double FS = 2);

/// The same with the length that `RemezFirLength` estimates.
///
/// \param H               in: `IsDouble`; out: 4 to 10000 taps, real
/// \param Ripple          largest linear deviation, as for `RemezFirLength`
/// \param ForceOddLength  makes an even length odd, except for the types IV
/// \throws ECoreError what `RemezFirLength` and `remez` raise. `H` is then as it was, its length too.
PASSBAND_EXPORT bool RemezImpulse(TVec& H, OpenArray W, double Ripple, SignalUtils::TFilterType FilterType,
                                  double Gain = 1, double FS = 2, bool ForceOddLength = false);

}  // namespace passband::OptimalFir
