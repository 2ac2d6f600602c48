#include "passband/analysis/spectrum_rms.h"

#include <cmath>
#include <numbers>

#include "passband/foundation/exceptions.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {

double RmsOfSpectrum(const TVec& Amplt, TSpectrumType SpectrumType, bool UseSpectrumType, std::int32_t Index,
                     std::int32_t Len) {
  const std::int64_t count = Len == -1 ? std::int64_t{Amplt.Length()} - Index : Len;
  if (count == 0) return 0;
  if (Index + count > Amplt.Length()) ERaise("(Index+Len) > Amplt.Length");
  Amplt.ValidateParams(Index, Len);
  const Borrowed<TVec> lines;
  lines->SetSubRange(Amplt, Index, Len);
  using enum TSpectrumType;
  switch (UseSpectrumType ? SpectrumType : spAmplt) {
    case spAmplt:
      return lines->NormL2() * (std::numbers::sqrt2 / 2);
    case spRMS:
      return lines->NormL2();
    case spPower:
      return std::sqrt(lines->Sum()) * (std::numbers::sqrt2 / 2);
    case spPeakPeak:
      return lines->NormL2() * (std::numbers::sqrt2 / 4);
    case spRealCepstrum:
    case spComplex:
      ERaise("RMS of complex or cepstrum SpectrumType not supported!");
  }
  return 0;
}

}  // namespace passband::SignalUtils
