// Slices of the bispectrum B(p, q) = X[p] X[q] conj(X[p + q]) of a spectrum X, which shows whether the phases at p, q and
// p + q are coupled. X is real or complex, single or double, and so are the slices; their products are formed in its
// precision. A slice may be stored into the spectrum itself.
// Literature: Nikias, Raghuveer, "Bispectrum estimation: a digital signal processing framework", Proc. IEEE 75, 1987.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// The slice along the diagonal, Dst[j] = B(i, i + j), i = Index, j = 0 .. m - 1, m = Spectrum.Length - 2 i.
///
/// \param Spectrum    L elements; fewer than two give an empty slice
/// \param Index       0 .. L div 2 - 1
/// \param FullLength  the slice as L elements, the m values from element i on, zeros on both sides
/// \throws ECoreError "Index > (Spectrum.Length div 2) -1", "Index < 0"
PASSBAND_EXPORT void BiSpectrum(TVec& Dst, const TVec& Spectrum, std::int32_t Index, bool FullLength = false);

/// The slice at one frequency, Dst[j] = B(j, i), i = Index, of L elements, h = L div 2.
///
/// \param Index       0 .. L - 1, with `FullLength` 0 .. h
/// \param FullLength  false: j = 0 .. i below h, j = 0 .. L - i - 1 from h on: where B(j, i) is neither mirrored nor beyond
///                    the spectrum. True: h elements, those of j = 0 .. i (i - 1 for i = h), then B(j, c), j = 0, 1, ...,
///                    c = h + i + 1, in the places left
/// \throws ECoreError "Index > (Spectrum.Length-1)", "Index > (Spectrum.Length div 2)" (`FullLength`), "Index < 0"
PASSBAND_EXPORT void BiSpectrumVert(TVec& Dst, const TVec& Spectrum, std::int32_t Index, bool FullLength = false);

}  // namespace passband::SignalUtils
