// Results of small designs.
#pragma once

#include "passband/foundation/open_array.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils::detail {

/// Num and Den become these real coefficients, in the precision that each has; both or, when memory runs out, neither.
inline void SetCoefficients(TVec& Num, OpenArray num, TVec& Den, OpenArray den) {
  const Borrowed<TVec> new_num;
  const Borrowed<TVec> new_den;
  new_num->Size(0, false, Num.IsDouble());
  new_num->SetIt(false, num);
  new_den->Size(0, false, Den.IsDouble());
  new_den->SetIt(false, den);
  Num.Take(*new_num);
  Den.Take(*new_den);
}

}  // namespace passband::SignalUtils::detail
