// Moving averages of whole vectors.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// The impulse response of the moving average: `Order` real taps of 1 / Order.
/// \param H  sized; keeps its precision
/// \throws ECoreError "MovingAverageImpulse: Order <= 0"
PASSBAND_EXPORT void MovingAverageImpulse(TVec& H, std::int32_t Order);

/// Replaces every element of a stretch by the mean of the `Order` elements around it, zeros outside the stretch:
///
///     y[n] = (x[n - b] + ... + x[n + Order div 2]) / Order,  b = Order - 1 - Order div 2
///
/// \param Data   in and out, any precision
/// \param Order  >= 1; an even one reaches one element further ahead than back
/// \param Len    below 0: Data.Length; 0: nothing happens. Beware: when `Len` is Data.Length, the whole vector is averaged and
///               `Index` is not looked at.
/// \throws ECoreError "MovingAverageFilter: Order <= 0"; the text of `TVec::ValidateParams`. `Data` is then as it was.
/// Precision: sums are formed in double from up to `Order` elements each, without subtractions, so that no error builds up
/// along the data; a NaN or an infinity changes just the means that it is in.
/// Cost: about four additions for each element whatever the order; allocates nothing once the pool is warm.
/// Literature: van Herk, "A fast algorithm for local minimum and maximum filters", Pattern Recognition Letters 13, 1992,
/// whose partition into blocks works for sums alike.
PASSBAND_EXPORT void MovingAverageFilter(TVec& Data, std::int32_t Order, std::int32_t Index = 0, std::int32_t Len = -1);

}  // namespace passband::SignalUtils
