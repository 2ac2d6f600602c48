// Amplitudes on a logarithmic scale.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/dense.h"

namespace passband::SignalUtils {

/// Replaces every amplitude by Factor log(x / Reference) to the base `Base`, floored at -Span.
///
/// \param Data          a real vector or matrix
/// \param Base          of the logarithm; Base^(1 / Factor) > 1
/// \param Span          the height of the scale: what lies below -Span, zeros and negative values among it, becomes -Span
///                      exactly (rounded to the precision of `Data`). A NaN stays
/// \param Reference     the amplitude at 0; not above 0 (or a NaN): all elements become -Span
/// \param Factor        units for each power of `Base`: 20 for decibels of amplitudes, 10 of powers
/// \param UseReference  false: the reference is 1 (`Reference` still has to be above 0)
/// \returns -Span
/// \throws ECoreError "AmpltToLog: complex Data", "AmpltToLog: not (Base^(1/Factor) > 1)". `Data` is then as it was.
/// Precision: about one unit in the last place of `Data`, next to the reference 1e-7 (single) or 2e-16 (double) of
/// Factor / ln(Base); the reference itself is 0, powers of 10 are whole decibels. Cost: one pass, about 1 ns an element.
PASSBAND_EXPORT double AmpltToLog(TDense& Data, double Base, double Span, double Reference, double Factor,
                                  bool UseReference = true);

/// `AmpltToLog` with the factor 20: with base 10, decibels relative to `Reference`.
PASSBAND_EXPORT double AmpltToDb(TDense& Data, double Base, double Span, double Reference, bool UseReference = true);

}  // namespace passband::SignalUtils
