// Complete elliptic integrals and Jacobi's elliptic functions. `M` is the parameter, the square of the modulus: m =
// k^2.
#pragma once

#include "passband/foundation/export.h"

namespace passband {

/// The complete elliptic integral of the first kind, K(m) = integral from 0 to pi/2 of (1 - m sin^2 t)^(-1/2) dt.
///
/// \param M  parameter, m <= 1, also negative; K(1) is infinite
/// \throws ECoreError "EllipComplete: not (M <= 1)", for a NaN too
/// Precision: a few units in the last place for every m, also next to 1 (1 - m enters without cancellation).
/// Literature: Carlson, "Numerical computation of real or complex elliptic integrals", Numerical Algorithms 10, 1995.
PASSBAND_EXPORT double EllipComplete(double M);

/// K(m) and the integral of the second kind, E(m) = integral from 0 to pi/2 of (1 - m sin^2 t)^(1/2) dt; E(1) = 1.
PASSBAND_EXPORT void EllipComplete(double M, double& K, double& E);

/// Jacobi's elliptic functions sn(u | m), cn(u | m), dn(u | m) of a real argument.
///
/// \param U  argument, any finite number; the functions have the periods 4 K(m), 4 K(m) and 2 K(m)
/// \param M  parameter, m <= 1, also negative
/// \throws ECoreError "EllipJacoby: not (M <= 1)", for a NaN and -infinity too, "EllipJacoby: U is not finite"
/// Precision: a few units in the last place times the condition of the function in u and m; cn and dn keep their digits
/// where they are small, as m approaches 1 too.
/// Literature: Bulirsch, "Numerical calculation of elliptic integrals and elliptic functions", Numerische Mathematik 7,
/// 1965; Abramowitz, Stegun, "Handbook of Mathematical Functions", 1964, 16.12.
PASSBAND_EXPORT void EllipJacoby(double U, double M, double& Sn, double& Cn, double& Dn);

}  // namespace passband
