// The lowest order of each family that meets a requirement, and the edges to design it with.
#pragma once

#include <cstdint>
#include <span>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/foundation/open_array.h"

namespace passband::IIRFilters {

/// The lowest order N of a Butterworth filter with at most `Ripple` dB of loss in its pass band and at least
/// `Attenuation` dB in its stop band, and the cut-offs to hand to `ButterFilter`.
///
/// The requirement is reduced to a lowpass with the ratio WA of its stop-band edge to its pass-band edge (a digital one
/// through w = tan(pi f / 2)); N = Ceil(log(Gs / Gp) / (2 log(WA))), Gs = 10^(Attenuation / 10) - 1, Gp = 10^(Ripple / 10)
/// - 1. A quotient within 1e-15 of a whole number counts as that number. The edges of the pass band of a bandstop are
/// moved towards its stop band first, as far as that lowers the order.
///
/// \param CuttoffFreq  ascending edges: ftLowpass pass, stop; ftHighpass stop, pass; ftBandpass stop, pass, pass, stop;
///                     ftBandstop pass, stop, stop, pass. Digital: in (0, 1), 1 being half the sampling frequency;
///                     analog: positive angular frequencies
/// \param Ripple, Attenuation  in dB, 0 < |Ripple| < |Attenuation| <= 3000; their signs do not count
/// \param FilterType   one of these four
/// \param BEdges       out, half as many as there are edges: the cut-offs (3 dB) of the filter of order N that has its
///                     attenuation exactly at the nearer edge of the stop band, ascending, in the unit of `CuttoffFreq`
/// \param Analog       the edges are analog ones
/// \throws ECoreError "(Length(CuttoffFreq) div 2) <> Length(BEdges)"; "Length(Src) <> 2"; "Length(Src) <> 4"; "not
///         (ftLowpass <= FilterType <= ftBandstop)"; "not (0 < CuttoffFreq < 1)"; "not (0 < CuttoffFreq < Inf)"; "not
///         (CuttoffFreq[i] <= CuttoffFreq[i + 1])"; "not (0 < Ripple < Attenuation <= 3000)"; "Order = Inf" when two edges
///         coincide or the order exceeds 2^31 - 1. A refused call writes nothing.
/// Precision: edges within 1e-15 relative of those of exact arithmetic wherever WA - 1 > 1e-3 (docs/accuracy.md); in
/// general that divided by WA - 1. Cost: a few transcendental functions.
/// Literature: Antoniou, "Digital signal processing", 2006, ch. 12.
PASSBAND_EXPORT std::int32_t ButterOrder(OpenArray CuttoffFreq, double Ripple, double Attenuation,
                                         SignalUtils::TFilterType FilterType, std::span<double> BEdges,
                                         bool Analog = false);

/// The same for Chebyshev filters of type I: N = Ceil(arcosh(sqrt(Gs / Gp)) / arcosh(WA)). `BEdges` are the edges of the
/// pass band, those of a bandstop after they were moved; the attenuation at the stop band is then larger than asked for.
PASSBAND_EXPORT std::int32_t ChebyshevIOrder(OpenArray CuttoffFreq, double Ripple, double Attenuation,
                                             SignalUtils::TFilterType FilterType, std::span<double> BEdges,
                                             bool Analog = false);

/// The same for Chebyshev filters of type II, N as for type I. `BEdges` are the edges of the stop band of the filter of
/// order N that has its ripple exactly at the edge of the pass band; ascending too.
PASSBAND_EXPORT std::int32_t ChebyshevIIOrder(OpenArray CuttoffFreq, double Ripple, double Attenuation,
                                              SignalUtils::TFilterType FilterType, std::span<double> BEdges,
                                              bool Analog = false);

/// The same for elliptic filters: N = Ceil(K(k^2) K(1 - k1^2) / (K(1 - k^2) K(k1^2))), k = 1 / WA, k1^2 = Gp / Gs; K is
/// the complete integral of `EllipComplete`. `BEdges` are the edges of the pass band, as of type I.
/// \param Ripple, Attenuation  their signs do count
/// \throws ECoreError "Order = Inf" also when k^2 or 1 - k1^2 rounds to 1 in double: `EllipticAnalog` refuses such ripples
PASSBAND_EXPORT std::int32_t EllipticOrder(OpenArray CuttoffFreq, double Ripple, double Attenuation,
                                           SignalUtils::TFilterType FilterType, std::span<double> BEdges,
                                           bool Analog = false);

}  // namespace passband::IIRFilters
