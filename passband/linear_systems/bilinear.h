// From the analog to the digital domain.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband::LinearSystems {

/// The bilinear transform s = 2 FS (z - 1) / (z + 1) at the sampling frequency FS, in place: with f = 2 FS
///
///     p = (f + p) / (f - p),  z = (f + z) / (f - z),  k = k Re(prod(f - z) / prod(f - p)) of the old values
///
/// \param z, p      real or complex, of one precision; poles are made complex
/// \param AddZeros  appends zeros at -1, where those at infinity go, up to the number of poles
/// \throws Exception "z.Length > p.Length", then ECoreError "z.IsDouble <> p.IsDouble"; a refused call changes nothing
/// Precision: computed in double, rounded once; the products of the gain neither over- nor underflow on the way.
/// Literature: Oppenheim, Schafer, "Discrete-Time Signal Processing", 3rd ed., ch. 7.2.2.
PASSBAND_EXPORT void Bilinear(TVec& z, TVec& p, double& k, double FS, bool AddZeros = true);

/// In state space, with T = 1 / FS and M = I - A T / 2: A = M^-1 (I + A T / 2), B = sqrt(T) M^-1 B, C = sqrt(T) C M^-1,
/// D = D + C M^-1 B T / 2.
/// \throws what `TMtx::LUSolve` raises: 2 FS must not be an eigenvalue of A
/// Cost: O(n^3).
PASSBAND_EXPORT void Bilinear(TMtx& A, TVec& B, TVec& C, double& D, double FS);

/// The analog angular frequency 2 FS tan(pi Freq / 2) that the bilinear transform moves to `Freq`, 1 being half the
/// sampling frequency. Keeps its digits next to 1 too.
PASSBAND_EXPORT double BilinearPrewarp(double Freq, double FS);

/// The inverse: 2 / pi arctan(W / (2 FS)).
PASSBAND_EXPORT double BilinearUnwarp(double W, double FS);

/// The matched z-transform: p = exp(p / FS), z = exp(z / FS), in place. The gain is the caller's to set, and no zeros are
/// added. Real data stay real; z and p may differ in precision.
PASSBAND_EXPORT void MatchedZTransform(TVec& z, TVec& p, double FS);

}  // namespace passband::LinearSystems
