// From the analog lowpass with cut-off 1 rad/s to the wanted band, by a substitution of s.
//
// Frequencies are angular: `Wc` the new cut-off; `Wo` the centre of a band, the geometric mean of its edges; `Bw` its
// width, their difference. All forms work in place. Zeros and poles are made complex first; their number np and nz are
// those on entry. Computed in double, whatever the precision, and rounded once. A refused call changes nothing.
//
// Literature: Parks, Burrus, "Digital Filter Design", 1987, ch. 7; Zverev, "Handbook of Filter Synthesis", 1967.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband::LinearSystems {

/// s -> s / Wc: p = Wc p, z = Wc z, k = k Wc^(np - nz).
/// \throws ECoreError "z.IsDouble <> p.IsDouble", as do the three mappings below
PASSBAND_EXPORT void LowpassToLowpass(TVec& z, TVec& p, double& k, double Wc);

/// s -> Wc / s: p = Wc / p, z = Wc / z, k = k |Re(prod z) / Re(prod p)| of the old values: the gain at zero frequency
/// becomes the gain at infinity.
///
/// Zeros at the origin are added for those at infinity: np of them, real, when there are no zeros; up to np zeros when np is
/// odd; none otherwise. This is what the five families need; other counts are the caller's to fill up.
PASSBAND_EXPORT void LowpassToHighpass(TVec& z, TVec& p, double& k, double Wc);

/// s -> (s^2 + Wo^2) / (Bw s): each value x becomes the two solutions of s^2 - Bw x s + Wo^2 = 0, the larger one in its
/// place, the other behind all of them. k = k Bw^m, m the new number of poles less that of zeros.
///
/// Zeros at the origin are added for those at infinity: np of them, real, when there are no zeros; else one when np is odd.
/// Precision: both images keep the digits of each part, also those of narrow bands, whose real parts are small, and of
/// wide ones, where the written difference would cancel.
PASSBAND_EXPORT void LowpassToBandpass(TVec& z, TVec& p, double& k, double Wo, double Bw);

/// s -> Bw s / (s^2 + Wo^2): each value x becomes the two solutions of s^2 - (Bw / x) s + Wo^2 = 0, placed and computed as
/// by `LowpassToBandpass`. k = 1: of the five families the gain at infinity then is that of the prototype at zero
/// frequency, for those with equal ripple of even order less its ripple.
///
/// Zeros at the centre are added for those at infinity: np times +j Wo, then np times -j Wo, when there are no zeros; up to
/// 2 np zeros, the last two -j Wo and +j Wo, when np is odd.
PASSBAND_EXPORT void LowpassToBandstop(TVec& z, TVec& p, double& k, double Wo, double Bw);

/// In state space: A = Wc A, B = Wc B.
/// \throws what the solvers of `TMtx` and the element-wise operations raise for singular matrices and shapes that do not
///         fit, as do the three mappings below
/// Cost: O(n^3) where a matrix is inverted.
PASSBAND_EXPORT void LowpassToLowpass(TMtx& A, TVec& B, TVec& C, double& D, double Wc);

/// A = Wc A^-1, B = -Wc A^-1 B, C = C A^-1, D = D - C A^-1 B.
PASSBAND_EXPORT void LowpassToHighpass(TMtx& A, TVec& B, TVec& C, double& D, double Wc);

/// A = [[Bw A, -Wo I], [Wo I, 0]], B = [Bw B; 0], C = [C, 0]: twice the states.
PASSBAND_EXPORT void LowpassToBandpass(TMtx& A, TVec& B, TVec& C, double& D, double Wo, double Bw);

/// A = [[Bw A^-1, Wo I], [-Wo I, 0]], B = [-Bw A^-1 B; 0], C = [C A^-1, 0], D = D - C A^-1 B: twice the states.
PASSBAND_EXPORT void LowpassToBandstop(TMtx& A, TVec& B, TVec& C, double& D, double Wo, double Bw);

}  // namespace passband::LinearSystems
