// The Levinson-Durbin recursion.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband {

/// Linear prediction from an autocorrelation: A = [1, a1, ..., ap] with sum_j a_j r[k - j] = 0 for k = 1 .. p, where
/// r[-k] = conj(r[k]), by the Levinson-Durbin recursion.
///
/// \param R  r[0] .. r[p], real or complex, at least one element; only the real part of r[0] counts
/// \param A  p + 1 coefficients in the precision of `R`; may be `R`
/// \throws ECoreError "Levinson: no elements", "Levinson: an element is not finite"
/// When the prediction error sinks to the rounding level of r[0] (perfectly predictable data, or r[0] = 0), the lags
/// seen so far determine the predictor, and its remaining coefficients are zero. For an autocorrelation that is
/// positive definite all zeros of A lie inside the unit circle. Precision: double, rounded once.
/// Cost: p^2 multiplications.
/// Literature: Durbin, "The fitting of time-series models", Revue de l'Institut International de Statistique 28, 1960;
/// Kay, "Modern Spectral Estimation", 1988, section 6.3.
PASSBAND_EXPORT void Levinson(const TVec& R, TVec& A);

/// Also gives what the recursion passes on its way.
///
/// \param Error       power of the prediction error, r[0] times the product of all 1 - |k_m|^2
/// \param Reflection  reflection coefficients k_1 .. k_p, the last coefficient of the predictor of each order m
PASSBAND_EXPORT void Levinson(const TVec& R, TVec& A, double& Error, TVec& Reflection);

}  // namespace passband
