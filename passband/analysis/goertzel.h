// The spectrum at single frequencies.
#pragma once

#include "passband/foundation/complex.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// X(f) = sum x[n] exp(-2 pi j f n), n = 0 .. N - 1: the discrete-time Fourier transform at one frequency, which need not
/// lie on the grid of a transform.
///
/// \param Src   any precision; an empty vector gives 0
/// \param Freq  f relative to the sampling frequency: 0 < f < 0.5 for real data, 0 < f < 1 for complex data; of single
///              precision data the frequency rounded to single precision is taken
/// \throws ELatticaInvalidArgument "(not Complex) and (Freq >= 0.5)"; "Freq >= 1)", for a NaN too; "Freq <= 0)"
/// Precision: errors stay within about 2 eps of the sum of |x[n]| in the precision of `Src`, at every frequency and length
/// (the recursion that the method is named after loses digits next to 0 and 0.5). Cost: about 200 ns and one pass;
/// O(N), no allocation.
/// Literature: Goertzel, "An algorithm for the evaluation of finite trigonometric series", American Mathematical Monthly
/// 65, 1958; Gentleman, "An error analysis of Goertzel's (Watt's) method", Computer Journal 12, 1969.
PASSBAND_EXPORT TCplx Goertz(const TVec& Src, double Freq);

/// `Goertz` at two frequencies. An empty vector leaves both values as they were.
/// \throws ELatticaInvalidArgument "(not Src.Complex) and (Freq0 >= 0.5)", "Freq0 >= 1)", "Freq0 <= 0)", then the same of
///         Freq1. Both values are then as they were.
PASSBAND_EXPORT void GoertzTwo(const TVec& Src, double Freq0, double Freq1, TCplx& Val0, TCplx& Val1);

/// `Goertz` at every frequency of a real vector.
/// \param Dst  complex, as long as `Freq`, in the precision of `Src`; may be either of them
/// \throws ELatticaInvalidArgument complex data: "Freq[i] >= 1)", "Freq[i] <= 0)"; real data: "(not Src.Complex) and
///         (Freq[i] >= 0.5)", "Freq[i] <= 0)"; ECoreError "Goertz: complex Freq". `Dst` is then as it was.
PASSBAND_EXPORT void Goertz(const TVec& Src, const TVec& Freq, TVec& Dst);

}  // namespace passband::SignalUtils
