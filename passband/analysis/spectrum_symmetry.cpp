#include "passband/analysis/spectrum_symmetry.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include "passband/foundation/exceptions.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

void Extend(const TVec& half, TVec& dst) {
  const std::int64_t bins = 2 * (std::int64_t{half.Length()} - 1);
  if (bins > std::numeric_limits<std::int32_t>::max()) ERaise("Size: more than 2147483647 elements");
  const Borrowed<TVec> full;
  full->Resize(half, static_cast<std::int32_t>(bins));
  ForReal(half, [&]<RealElement R>(ElementTag<R>) {
    const std::span<ComplexOf<R>> X = full->Elements<ComplexOf<R>>();
    for (std::size_t k = 1; 2 * k < X.size(); ++k) X[X.size() - k] = Conj(X[k]);
  });
  dst.Take(*full);
}

}  // namespace

TVec& ConjExtend(TVec& Vec) {
  if (!Vec.Complex()) throw Exception("not Src.Complex");
  if (Vec.Length() > 0) Extend(Vec, Vec);
  return Vec;
}

void ConjExtend(const TVec& Src, TVec& Dst) {
  if (!Src.Complex()) ERaise("Src.Complex = false");
  if (Src.Length() % 2 == 0) ERaise("Odd(Src.Length) = false");
  Extend(Src, Dst);
}

void BandFlip(TVec& X) {
  if (X.Complex()) return X.Conj();
  if (X.Length() % 2 != 0) ERaise("Odd(X.Length) = True!");
  ForReal(X, [&]<RealElement R>(ElementTag<R>) {
    const std::span<R> x = X.Elements<R>();
    for (std::size_t n = 1; n < x.size(); n += 2) x[n] = -x[n];
  });
}

}  // namespace passband::SignalUtils
