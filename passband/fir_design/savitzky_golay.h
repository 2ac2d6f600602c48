// Savitzky-Golay filters: least-squares polynomials over a frame that moves along the signal.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// The fit of a polynomial of degree P = Order to a frame of F = FrameSize samples at the places x = -m .. m, m = F div 2,
/// which minimises sum w[j] (x[j] - polynomial)^2. With M[i, j] = x[j]^i and W = diag(Weights):
///
///     Diff = (M W M^T)^-1 M W        P + 1 rows: row k times the frame is the coefficient of x^k, so that k! times it is
///                                    the k-th derivative at the centre, in units of the sample distance to the -k
///     H = M^T Diff                   F rows: row r times the frame is the fitted value at place r of the frame; the
///                                    middle row is the smoothing filter
///
/// \param H          out: F by F, real, in its own precision
/// \param Diff       out: (P + 1) by F, in the precision of H
/// \param FrameSize  F, odd
/// \param Order      P, 0 .. F - 1
/// \param Weights    one positive weight for each place, or nullptr for equal ones
/// \throws ECoreError "not Odd(FrameSize)!", "not CheckRange(0,Order,FrameSize-1)", "Diff = nil", "Weights.Length <>
///         FrameSize!", "Weights = complex!", "Weights.Min <= 0", also for a NaN, "H.IsDouble <> Weights.IsDouble", in this
///         order; "SavGolayImpulse: a weight is not finite". Nothing is then written.
/// Precision: by polynomials orthonormal over the frame, in extended precision with repeated orthogonalisation, rounded
/// once: the normal equations of powers have no digit left from frames of 41 with degree 12 on. H and
/// the row of x^1 of Diff are right to 1e-15 of their largest element, measured up to degree 29 and frames of 101.
/// Cost: O(F^2 P), memory O(F^2).
/// Literature: Savitzky, Golay, "Smoothing and differentiation of data by simplified least squares procedures", Analytical
/// Chemistry 36, 1964; Forsythe, "Generation and use of orthogonal polynomials for data-fitting", J. SIAM 5, 1957.
PASSBAND_EXPORT void SavGolayImpulse(TMtx& H, TMtx* Diff, std::int32_t FrameSize, std::int32_t Order,
                                     const TVec* Weights = nullptr);

/// The smoothing filter alone: the middle row of H, in the precision of `H`. Cost: O(F P^2).
PASSBAND_EXPORT void SavGolayImpulse(TVec& H, std::int32_t FrameSize, std::int32_t Order,
                                     const TVec* Weights = nullptr);

/// Smooths a signal without delay and without losing its ends: inside by the middle row of `H` as the taps of an FIR
/// filter, the first and the last F div 2 samples by the fit to the first and the last frame. A polynomial of degree P
/// comes out unchanged. Weights that are not symmetric give an asymmetric row: as taps it weighs the frame mirrored.
///
/// \param Data  real or complex, in the precision of `H`, at least F samples
/// \param H     the F by F matrix of `SavGolayImpulse`
/// \throws ECoreError "H.Length = 0"; "SavGolayFilter: H of 3 x 2 is not square"; "SavGolayFilter: Data.Length < H.Rows";
///         what `FirFilter` raises. `Data` is then as it was.
PASSBAND_EXPORT void SavGolayFilter(TVec& Data, const TMtx& H);

}  // namespace passband::SignalUtils
