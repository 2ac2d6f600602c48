// The level of a signal from the lines of its spectrum.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// The root mean square of the sum of sinusoids that the lines Amplt[Index .. Index + Len - 1] stand for.
///
/// | `SpectrumType`                 | a line is                | result                                        |
/// |--------------------------------|--------------------------|-----------------------------------------------|
/// | `spAmplt`                      | an amplitude             | sqrt(sum of squares / 2)                      |
/// | `spRMS`                        | a root mean square       | sqrt(sum of squares)                          |
/// | `spPower`                      | a squared amplitude      | sqrt(sum / 2)                                 |
/// | `spPeakPeak`                   | twice an amplitude       | sqrt(sum of squares / 8)                      |
/// | `spRealCepstrum`, `spComplex`  | -                        | refused                                       |
///
/// \param UseSpectrumType  false: `spAmplt`, whatever `SpectrumType`
/// \param Len              lines; -1: up to the end; 0 gives 0
/// \throws ECoreError "(Index+Len) > Amplt.Length", "RMS of complex or cepstrum SpectrumType not supported!", the text of
///         `TVec::ValidateParams` for a negative range, "Sum: complex elements" (`spPower`)
PASSBAND_EXPORT double RmsOfSpectrum(const TVec& Amplt, TSpectrumType SpectrumType = TSpectrumType::spAmplt,
                                     bool UseSpectrumType = true, std::int32_t Index = 0, std::int32_t Len = -1);

}  // namespace passband::SignalUtils
