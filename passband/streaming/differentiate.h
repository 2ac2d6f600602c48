// Numerical differentiation and integration of a stream, for chains that turn acceleration into velocity and displacement
// or back.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// The last two inputs of `Differentiate`; zero at the start of a stream. Real data use the R fields only.
struct TDiffState {
  double Start2R = 0;  ///< real part of the input two samples before the next block
  double Start2I = 0;
  double Start1R = 0;  ///< real part of the input one sample before the next block
  double Start1I = 0;
};

/// What `Integrate` carries on; zero at the start of a stream. Real data use the R fields only.
struct TIntegrateState {
  double SumR1 = 0;  ///< real part of the last output, the running integral
  double SumI1 = 0;
  double StartR1 = 0;  ///< real part of the input one sample before the next block
  double StartI1 = 0;
  double StartR2 = 0;  ///< real part of the input two samples before the next block
  double StartI2 = 0;
  double HighR = 0;  ///< SumR1 as a sum of two: the plain running sum, and what rounding has taken from it; kept by
  double LowR = 0;   ///< `Integrate`, and begun anew when the owner has set SumR1
  double HighI = 0;
  double LowI = 0;
};

/// The central difference y[n] = (x[n] - x[n - 2]) / (2 dt): the derivative, one sample late. Its gain is that of the true
/// derivative times sin(w dt) / (w dt).
///
/// \param Src    real or complex, any precision, n samples; empty: `Dst` is emptied, the state stays
/// \param Dst    sized like `Src`; may be `Src`
/// \param State  carries the last two inputs; blocks of any length, single samples too, give the same bits
/// \param dt     sampling interval; 0 gives infinities and NaN
/// Precision: one difference and one product in the precision of `Src`. Cost: one pass at memory speed; allocates nothing
/// once warm.
/// Literature: Oppenheim, Schafer, "Discrete-Time Signal Processing", 3rd ed., ch. 2.
PASSBAND_EXPORT void Differentiate(const TVec& Src, TVec& Dst, TDiffState& State, double dt);

/// The running integral y[n] = y[n - 1] + (x[n - 2] + 4 x[n - 1] + x[n]) dt / 6, Simpson's weights moved along by one
/// sample; one sample late.
///
/// Arguments as `Differentiate`.
/// Precision: the weighted sums in the precision of `Src`, the running sum in double with its rounding errors summed up beside
/// it: its error does not grow with the number of samples. An infinity or a NaN stays in the integral.
/// Cost: about 5 cycles a sample; allocates nothing once warm.
/// Literature: Davis, Rabinowitz, "Methods of Numerical Integration", 2nd ed., 1984; Ogita, Rump, Oishi, "Accurate sum and
/// dot product", SIAM J. Sci. Comput. 26, 2005.
PASSBAND_EXPORT void Integrate(const TVec& Src, TVec& Dst, TIntegrateState& State, double dt);

}  // namespace passband::SignalUtils
