// Removing the constant part: as a filter of a stream, and from a vector at once.
#pragma once

#include <cstdint>

#include "passband/foundation/complex.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// One sample of y[n] = x[n] - x[n - 1] + Alpha y[n - 1], which blocks a constant.
/// \param State  Re: y[n - 1], Im: x[n - 1]; zero at the start of a stream
/// \param Alpha  0 <= Alpha < 1 for a stable filter; the closer to 1, the narrower the notch at zero frequency
/// \return y[n]. Its gain at half the sampling frequency is 2 / (1 + Alpha); the designs below are scaled otherwise.
PASSBAND_EXPORT double DcFilter(double Value, TCplx& State, double Alpha);

/// The same filter for `IirInit`, scaled: Num = {g, -g} with g = Alpha / (Alpha + (1 - Alpha) / 2), Den = {1, -Alpha}. The gain
/// is 0 at zero frequency and 4 Alpha / (1 + Alpha)^2 at half the sampling frequency: 0.997 for Alpha = 0.9, but 0.89 for 0.5.
/// \param Num, Den  two real elements each, in their precision
PASSBAND_EXPORT void DcFilter(double Alpha, TVec& Num, TVec& Den);

/// The scaled filter by its bandwidth: Alpha = 1 - pi TransitionBandwidth / FS.
/// \param TransitionBandwidth  0 .. FS / 2, about twice the frequency where the gain has fallen by 3 dB; in the unit of `FS`
/// \throws ECoreError "0 < TransitionBandwidth < FS/2", for a NaN too; both ends are accepted
PASSBAND_EXPORT void DcFilter(double TransitionBandwidth, double FS, TVec& Num, TVec& Den);

/// Subtracts the mean of a stretch from its elements.
/// \param Vec  any precision; an empty stretch is left alone
/// \throws ECoreError the text of `TVec::ValidateParams`
/// Precision: mean and difference are formed in double and rounded once.
/// Cost: two passes; allocates nothing.
PASSBAND_EXPORT void RemoveDC(TVec& Vec, std::int32_t Index, std::int32_t Len);
PASSBAND_EXPORT void RemoveDC(TVec& Vec);

/// Dst[DstIndex + k] = Src[SrcIndex + k] less the mean of that stretch, k = 0 .. Len - 1; the stretches may overlap.
/// \param Dst  of the precision of `Src`
/// \throws ECoreError the text of `TVec::ValidateParams`; "the elements are double, not single" (and so on)
PASSBAND_EXPORT void RemoveDC(const TVec& Src, TVec& Dst, std::int32_t SrcIndex, std::int32_t DstIndex,
                              std::int32_t Len);
/// The same for a whole vector. `Dst` is sized like `Src` and may be `Src`.
PASSBAND_EXPORT void RemoveDC(const TVec& Src, TVec& Dst);

}  // namespace passband::SignalUtils
