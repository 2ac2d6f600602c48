// From a digital lowpass to a digital filter of another band, by an all-pass function in place of z (Constantinides).
//
// Frequencies are relative to half the sampling frequency: `ProtoFreq` the cut-off of the lowpass, `Freq` the new one;
// `CenterFreq` is the geometric mean of the two new band edges, `Bw` their difference, so that w1 = 2 CenterFreq^2 / (Bw +
// sqrt(Bw^2 + 4 CenterFreq^2)) and w2 = w1 + Bw. With t = pi ProtoFreq, wc = pi Freq and w1, w2 times pi, z is replaced by
// nz(z) / dz(z):
//
//     lowpass    nz = [1, -a],        dz = [-a, 1],        a = sin((t - wc) / 2) / sin((t + wc) / 2)
//     highpass   nz = [-1, -a],       dz = [a, 1],         a = -cos((t + wc) / 2) / cos((t - wc) / 2)
//     bandpass   nz = [-1, c1, -c2],  dz = [c2, -c1, 1],   c1 = 2 b K / (K + 1), c2 = (K - 1) / (K + 1),
//                K = cot((w2 - w1) / 2) tan(t / 2),        b = cos((w2 + w1) / 2) / cos((w2 - w1) / 2)
//     bandstop   nz = [1, -c1, c2],   dz = [c2, -c1, 1],   c1 = 2 b / (K + 1), c2 = (1 - K) / (1 + K),
//                K = tan((w2 - w1) / 2) tan(t / 2)
//
// The forms with `z`, `p`, `k` set the gain to 1 at z = 1 (lowpass, bandstop), at z = -1 (highpass) or at the centre of the
// prewarped band (bandpass), whatever `k` was. The forms with `num` and `den` divide by den[0] and set no gain.
//
// Literature: Constantinides, "Spectral transformations for digital filters", Proc. IEE 117, 1970.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::LinearSystems {

/// \throws ECoreError "z.IsDouble <> p.IsDouble", what `RationalSubstitution` raises; a refused call changes nothing
PASSBAND_EXPORT void LowpassToLowpassZ(TVec& z, TVec& p, double& k, double Freq, double ProtoFreq);
PASSBAND_EXPORT void LowpassToHighpassZ(TVec& z, TVec& p, double& k, double Freq, double ProtoFreq);
PASSBAND_EXPORT void LowpassToBandPassZ(TVec& z, TVec& p, double& k, double CenterFreq, double Bw, double ProtoFreq);
PASSBAND_EXPORT void LowpassToBandStopZ(TVec& z, TVec& p, double& k, double CenterFreq, double Bw, double ProtoFreq);

/// \throws ECoreError `LowpassToLowpassZ` "num.IsDouble <> den.IsDouble", what `RationalSubstitution` raises
PASSBAND_EXPORT void LowpassToLowpassZ(TVec& num, TVec& den, double Freq, double ProtoFreq);
PASSBAND_EXPORT void LowpassToHighpassZ(TVec& num, TVec& den, double Freq, double ProtoFreq);
PASSBAND_EXPORT void LowpassToBandPassZ(TVec& num, TVec& den, double CenterFreq, double Bw, double ProtoFreq);
PASSBAND_EXPORT void LowpassToBandStopZ(TVec& num, TVec& den, double CenterFreq, double Bw, double ProtoFreq);

}  // namespace passband::LinearSystems
