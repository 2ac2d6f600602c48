#include <algorithm>

#include "passband/analysis/ar_models.h"
#include "passband/analysis/ar_models_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/vector_core/levinson.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {

void detail::FitYuleWalker(const TVec& src, std::int32_t order, TVec& a) {
  if (order < 0) throw Exception("ArYuleWalker: Order < 0");
  const Borrowed<TVec> x;
  WidenScaled(src, BinaryExponent(src, "ArYuleWalker"), *x);
  a.AutoCorrBiased(*x, std::min(order, src.Length()));
  Levinson(a, a);
}

void ArYuleWalker(const TVec& Src, TVec& Dst, std::int32_t Order) {
  const Borrowed<TVec> a;
  detail::FitYuleWalker(Src, Order, *a);
  a->SetFloatPrecision(Src.FloatPrecision());
  Dst.Take(*a);
}

}  // namespace passband::SignalUtils
