// Roots in the order that pairs them.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Sorts roots so that conjugate pairs stand together, in three steps, all comparisons of numbers with the tolerance:
///
///     1. complex values (|Im| > Tol) before real ones, whose imaginary part becomes 0
///     2. complex values by ascending real part; of equal real parts by descending |Im|; of equal |Im| alternating, a
///        negative imaginary part first: a pair that comes several times stands as -, +, -, +
///     3. real values ascending
///
/// Values count as equal when a chain of them with gaps of at most `Tol` joins them, so that the order does not depend on
/// the order that they came in. A value without its conjugate is sorted like the others; a NaN comes last of its kind.
///
/// \param Vec  real or complex, any precision; real data are sorted ascending
/// \param Tol  >= 0
/// \throws ECoreError "not (Tol >= 0)"
/// Cost: O(n log n); allocates for complex data.
PASSBAND_EXPORT void SortConj(TVec& Vec, double Tol);

/// \param Index, Len  the stretch to sort; the rest stays
/// \throws ECoreError also the text of `TVec::ValidateParams`
PASSBAND_EXPORT void SortConj(TVec& Vec, std::int32_t Index, std::int32_t Len, double Tol);

}  // namespace passband::SignalUtils
