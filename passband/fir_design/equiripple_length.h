// How long an equiripple filter has to be. Band edges as in equiripple.h.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/foundation/open_array.h"
#include "passband/vector_core/vec.h"

namespace passband::OptimalFir {

/// Estimates the length of a filter from the deviations that its bands allow. For each transition, of width df relative
/// to `FS`, and the deviations d1, d2 beside it in either order, with a = log10(d1), b = log10(d2),
///
///     L = (-0.4278 - (0.5941 a + 0.00266 a^2 - b (0.07114 a + 0.005309 a^2 - 0.4761))) / df
///         - (0.51244 (a - b) + 11.01217) df + 1
///
/// and the length is the largest L, rounded up, at least 3, and odd when the last band has a gain other than 0.
///
/// \param bands    two edges for each band, in the unit of `FS`
/// \param gains    the gain of each band; deviations of gains above 1 count relative to them
/// \param devs     the largest linear deviation of each band, > 0
/// \param Weights  out: for each band max(devs) / devs, the weight for `remez`; double, real
/// \param FS       sampling frequency
/// \returns the length, not limited to what `remez` accepts; estimates beyond 32 bits are clamped to them
/// \throws ECoreError "Length(gains) <> Length(weigth)"; "Length(bands) <> 2*Length(gains)"; "RemezLength: a deviation
///         is not positive"; in this order. `Weights` is then as it was.
/// Literature: Herrmann, Rabiner, Chan, "Practical design rules for optimum finite impulse response lowpass digital
/// filters", Bell Syst. Tech. J. 52, 1973.
PASSBAND_EXPORT std::int32_t RemezLength(OpenArray bands, OpenArray gains, OpenArray devs, TVec& Weights,
                                         double FS = 2);

/// Estimates the length of a filter of the kinds that `RemezImpulse` designs.
///
/// \param W           2 or 4 edges, as for `RemezImpulse`
/// \param Ripple      largest linear deviation in all bands, > 0; Hilbert transformers, differentiators and integrators
///                    are given half of it
/// \param FilterType  type III makes the length odd, type IV makes it even
/// \param FS          sampling frequency
/// \returns the length, 4 .. 10000
/// \throws ECoreError "(Length(W) <> 4) and (Length(W) <> 2)", also for a bandpass or bandstop of 2 edges;
///         "RemezLength: a deviation is not positive"
PASSBAND_EXPORT std::int32_t RemezFirLength(OpenArray W, double Ripple, SignalUtils::TFilterType FilterType,
                                            double FS = 2);

}  // namespace passband::OptimalFir
