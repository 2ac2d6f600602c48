#include "passband/streaming/dc_removal.h"

#include <algorithm>
#include <cstddef>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/streaming/coefficients_internal.h"
#include "passband/streaming/overlap_internal.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

// Between vectors of one length and precision; dst may be src.
void Subtract(const TVec& src, TVec& dst) {
  ForAny(src, [&]<Element T>(ElementTag<T>) {
    const auto x = src.Elements<T>();
    const auto y = dst.Elements<T>();
    if constexpr (IsComplex<T>) {
      const TCplx mean = src.Meanc();
      std::transform(x.begin(), x.end(), y.begin(),
                     [mean](T v) { return static_cast<T>(static_cast<TCplx>(v) - mean); });
    } else {
      const double mean = src.Mean();
      std::transform(x.begin(), x.end(), y.begin(),
                     [mean](T v) { return static_cast<T>(static_cast<double>(v) - mean); });
    }
  });
}

}  // namespace

double DcFilter(double Value, TCplx& State, double Alpha) {
  const double y = Alpha * State.Re + (Value - State.Im);
  State = {y, Value};
  return y;
}

void DcFilter(double Alpha, TVec& Num, TVec& Den) {
  const double gain = Alpha / (Alpha + (1 - Alpha) * 0.5);
  detail::SetCoefficients(Num, {gain, -gain}, Den, {1, -Alpha});
}

void DcFilter(double TransitionBandwidth, double FS, TVec& Num, TVec& Den) {
  if (!CheckRange(0, TransitionBandwidth, FS * 0.5)) ERaise("0 < TransitionBandwidth < FS/2");
  DcFilter(1 - TransitionBandwidth / FS * PI, Num, Den);
}

void RemoveDC(TVec& Vec, std::int32_t Index, std::int32_t Len) {
  Vec.ValidateParams(Index, Len);
  RemoveDC(Vec, Vec, Index, Index, Len);
}

void RemoveDC(TVec& Vec) { RemoveDC(Vec, 0, -1); }

void RemoveDC(const TVec& Src, TVec& Dst, std::int32_t SrcIndex, std::int32_t DstIndex, std::int32_t Len) {
  Dst.ValidateParams(Src, SrcIndex, DstIndex, Len);
  if (Len == 0) return;
  TVec src;
  src.SetSubRange(Src, SrcIndex, Len);
  TVec dst;
  dst.SetSubRange(Dst, DstIndex, Len);
  if (!detail::NeedsCopy(src, dst)) return Subtract(src, dst);
  const Borrowed<TVec> copy;
  copy->Copy(src);
  Subtract(*copy, dst);
}

void RemoveDC(const TVec& Src, TVec& Dst) {
  if (detail::NeedsCopy(Src, Dst)) {
    const Borrowed<TVec> copy;
    copy->Copy(Src);
    return RemoveDC(*copy, Dst);
  }
  Dst.Size(Src);
  RemoveDC(Src, Dst, 0, 0, Src.Length());
}

}  // namespace passband::SignalUtils
