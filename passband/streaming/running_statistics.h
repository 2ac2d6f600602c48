// Means and standard deviations that run along with the blocks, element by element.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Takes the next block into an average: Avg = (Avg (k - 1) + Data) / k, element by element.
///
/// \param Avg       in and out; of the first block (`Count` = 0) it becomes a copy
/// \param Data      as long as `Avg` and of its precision, but for the first block
/// \param Count     blocks that `Avg` holds already; below 0 as 0
/// \param ExpCount  below 2: k = Count + 1, the mean of all blocks; else k = ExpCount, an exponential average of weight 1 / k
/// \throws ECoreError of `TDense` for operands that do not fit; `Avg` is then as it was
/// Precision: Avg + (Data - Avg) / k, rounded once in the precision of `Avg`: a constant stays what it is however often it is
/// averaged, and of anything else the mean wanders by one unit in the last place a step at most, unbiased. An infinity
/// stays one.
/// Cost: one pass; allocates nothing but for the first block.
/// Literature: Welford, "Note on a method for calculating corrected sums of squares and products", Technometrics 4, 1962.
PASSBAND_EXPORT void RunningAverage(TVec& Avg, const TVec& Data, std::int32_t Count, std::int32_t ExpCount = 0);
PASSBAND_EXPORT void RunningAverage(TMtx& Avg, const TMtx& Data, std::int32_t Count, std::int32_t ExpCount = 0);

/// The standard deviation of n numbers from the sum of their squares and their sum: sqrt((n S2 - S1^2) / (n (n - 1))).
/// \param Count  n >= 2
/// \return NaN when the sums cannot be those of n numbers, that is when n S2 < S1^2
/// \throws ECoreError "StdDev: Count <= 1"
/// Precision: the products and their difference are formed in twice the precision of a double, so that what is lost has
/// been lost in the sums already.
PASSBAND_EXPORT double StdDev(double SumOfSquares, double Sum, std::int32_t Count);

/// The same for every element, real data of any precision.
/// \param Result  sized like the sums; may be one of them
/// \throws ECoreError "StdDev: Count <= 1"; "StdDev: complex elements"; of `TDense` for operands that do not fit; "Detected
///         complete loss of numerical precision within StdDev routine. Consider reducing number of averages!" when
///         n S2 < S1^2 anywhere. `Result` is then as it was.
PASSBAND_EXPORT void StdDev(const TVec& SumOfSquares, const TVec& Sum, std::int32_t Count, TVec& Result);
PASSBAND_EXPORT void StdDev(const TMtx& SumOfSquares, const TMtx& Sum, std::int32_t Count, TMtx& Result);

}  // namespace passband::SignalUtils
