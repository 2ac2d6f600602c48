// The chirp-z transform: the spectrum on a stretch of a circle or a spiral of the z plane, as fine as wanted.
#pragma once

#include <cstdint>

#include "passband/foundation/complex.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Y[k] = sum X[n] A^(-n) W^(n k), n = 0 .. N - 1, k = 0 .. K - 1: the z transform of X at z[k] = A W^(-k).
///
/// With n k = (n^2 + k^2 - (k - n)^2) / 2 the sum becomes a convolution (Bluestein), done by transforms. Where the chirp
/// W^(m^2 / 2) spans more than a factor of 2 within the sum, or the powers of A leave the range of a double, that form
/// would lose digits: each Y[k] is then evaluated by Horner's scheme.
///
/// \param X  any precision; an empty vector gives an empty Y
/// \param K  number of points; K <= 0 gives an empty Y
/// \param W  ratio of a point to the next one, not 0
/// \param A  the first point, not 0
/// \param Y  complex, K values in the precision of X; may be X
/// \throws ECoreError "Czt: W or A is 0 or not finite", "Czt: more than 2^28 elements" for N + K. `Y` is then as it was.
/// Precision: the phases of the chirps are reduced to one turn in extended precision; on the circle errors are below
/// 1e-14 of the norm of X sqrt(N) (single precision: 1e-6), N = K = 4096.
/// Cost: three transforms of the next length of factors 2, 3, 5 from N + K - 1 on, one of them saved when the last call
/// of the thread had the same N, K, W and A; O(N K) where Horner's scheme is used.
/// Literature: Rabiner, Schafer, Rader, "The chirp z-transform algorithm", IEEE Trans. Audio Electroacoust. 17, 1969;
/// Bluestein, "A linear filtering approach to the computation of discrete Fourier transform", ibid. 18, 1970.
PASSBAND_EXPORT void Czt(const TVec& X, std::int32_t K, TCplx W, TCplx A, TVec& Y);

/// The zoom: K points from the frequency FStart on, (FStop - FStart) / K apart, their radius growing geometrically from
/// RStart towards RStop. Both ends at FStop and RStop are those of the point behind the last one.
///
/// \param FS  sampling frequency, in the unit of FStart and FStop
/// \throws ECoreError "Czt: not (FS > 0)", "Czt: not (RStart > 0) or not (RStop > 0)", "Czt: a frequency is not finite"; as
///         above. `Y` is then as it was.
PASSBAND_EXPORT void Czt(const TVec& X, std::int32_t K, double FStart, double FStop, TVec& Y, double FS = 1,
                         double RStart = 1, double RStop = 1);

/// K points once round the circle, or along a spiral of one turn; radius 1 and K = N is the discrete Fourier transform.
PASSBAND_EXPORT void Czt(const TVec& X, std::int32_t K, TVec& Y, double RStart = 1, double RStop = 1);

}  // namespace passband::SignalUtils
