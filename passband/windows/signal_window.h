// One entry for all windows, for hosts that let their user choose.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Multiplies a stretch of `Vec` by the window `WindowType`, and scales the stretch to a mean of 1 when asked for.
///
/// | `WindowType`         | window                              | `WindowParam`                      |
/// |----------------------|-------------------------------------|------------------------------------|
/// | `wtRectangular`      | 1: `Vec` is not changed             | -                                  |
/// | `wtHanning`          | `Hanning` with `WindowMode`         | -                                  |
/// | `wtHamming`          | `Hamming` with `WindowMode`         | -                                  |
/// | `wtFlatTop`          | `FlatTop` with `WindowMode`         | -                                  |
/// | `wtBartlett`         | `Bartlett`                          | -                                  |
/// | `wtBlackman`         | `Blackman` with `WindowMode`        | Alpha, -0.16 for the classic one   |
/// | `wtBlackmanHarris`   | `BlackmanHarris` with `WindowMode`  | -                                  |
/// | `wtBlackmanExact`    | `BlackmanExact` with `WindowMode`   | -                                  |
/// | `wtCosineTappered`   | `CosineTappered` with 20 percent    | -                                  |
/// | `wtKaiser`           | `Kaiser`                            | Beta                               |
/// | `wtChebyshev`        | `Chebyshev`                         | nominal attenuation in dB          |
/// | `wtExponent`         | `ExponentWindow`                    | the last value                     |
///
/// \param Vec          any precision; a complex element is scaled by the real w[n]; the rest of `Vec` is not touched
/// \param WindowMode   symmetric or periodic, for the windows that have both
/// \param Normalize    divides the windowed stretch by its mean (of complex data: by the complex mean); applied to ones
///                     this gives a window of unit coherent gain. A mean of 0 leaves infinities and NaN.
///                     `wtRectangular` and an empty stretch are not scaled
/// \param Index        first element of the stretch, from 0
/// \param Len          elements in the stretch, -1: up to the end
/// \throws ECoreError, text of `TVec::ValidateParams`, when the stretch leaves `Vec`, and "SignalWindow: no such
/// window"
///         for an ordinal outside the enumeration; nothing has changed then
/// Precision, cost and literature: those of the window; normalizing makes two passes more over the stretch.
PASSBAND_EXPORT void SignalWindow(TVec& Vec, TSignalWindowType WindowType, double WindowParam = 0,
                                  TSignalWindowMode WindowMode = TSignalWindowMode::wmSymmetric, bool Normalize = false,
                                  std::int32_t Index = 0, std::int32_t Len = -1);

}  // namespace passband::SignalUtils
