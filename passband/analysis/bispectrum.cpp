#include "passband/analysis/bispectrum.h"

#include <cstddef>
#include <span>

#include "passband/foundation/exceptions.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

template <RealElement R>
R Conjugate(R x) {
  return x;
}
template <class R>
BasicCplx<R> Conjugate(BasicCplx<R> z) {
  return Conj(z);
}

// y[j] = x[fixed] x[first + j] conj(x[fixed + first + j]).
template <Element T>
void Slice(std::span<const T> x, std::size_t fixed, std::size_t first, std::span<T> y) {
  const T factor = x[fixed];
  for (std::size_t j = 0; j < y.size(); ++j) y[j] = factor * x[first + j] * Conjugate(x[fixed + first + j]);
}

}  // namespace

void BiSpectrum(TVec& Dst, const TVec& Spectrum, std::int32_t Index, bool FullLength) {
  const std::int32_t length = Spectrum.Length();
  const Borrowed<TVec> slice;
  if (length < 2) {
    slice->Size(0, Spectrum);
    return Dst.Take(*slice);
  }
  if (Index > length / 2 - 1) ERaise("Index > (Spectrum.Length div 2) -1");
  if (Index < 0) ERaise("Index < 0");
  const std::int32_t count = length - 2 * Index;
  slice->Size(FullLength ? length : count, Spectrum);
  slice->SetZero();
  ForAny(Spectrum, [&]<Element T>(ElementTag<T>) {
    const auto i = static_cast<std::size_t>(Index);
    Slice<T>(Spectrum.Elements<T>(), i, i,
             slice->Elements<T>().subspan(FullLength ? i : 0, static_cast<std::size_t>(count)));
  });
  Dst.Take(*slice);
}

void BiSpectrumVert(TVec& Dst, const TVec& Spectrum, std::int32_t Index, bool FullLength) {
  const std::int32_t length = Spectrum.Length();
  const std::int32_t half = length / 2;
  if (!FullLength && Index > length - 1) ERaise("Index > (Spectrum.Length-1)");
  if (FullLength && Index > half) ERaise("Index > (Spectrum.Length div 2)");
  if (Index < 0) ERaise("Index < 0");
  const std::int32_t low = Index < half ? Index + 1 : (FullLength ? half : length - Index);
  const Borrowed<TVec> slice;
  slice->Size(FullLength ? half : low, Spectrum);
  ForAny(Spectrum, [&]<Element T>(ElementTag<T>) {
    const std::span<const T> x = Spectrum.Elements<T>();
    const std::span<T> y = slice->Elements<T>();
    const std::span<T> first = y.first(static_cast<std::size_t>(low));
    if (!first.empty()) Slice(x, static_cast<std::size_t>(Index), 0, first);
    const std::span<T> rest = y.subspan(first.size());
    if (!rest.empty()) Slice(x, static_cast<std::size_t>(half) + first.size(), 0, rest);
  });
  Dst.Take(*slice);
}

}  // namespace passband::SignalUtils
