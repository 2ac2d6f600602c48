#include "passband/analysis/envelope.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <span>

#include "passband/foundation/exceptions.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

double Magnitude(float x) { return std::abs(static_cast<double>(x)); }
double Magnitude(double x) { return std::abs(x); }
double Magnitude(TSCplx z) {  // squares of singles do not leave the range of a double
  const auto wide = static_cast<TCplx>(z);
  return std::sqrt(wide.Re * wide.Re + wide.Im * wide.Im);
}
double Magnitude(TCplx z) { return CAbs(z); }

// In blocks of four chains, so that rounding errors hardly grow with the length.
template <Element T>
double MeanMagnitude(std::span<const T> x) {
  constexpr std::size_t kBlock = 1024;
  constexpr std::size_t kChains = 4;
  const auto count = static_cast<double>(x.size());
  double total = 0;
  while (!x.empty()) {
    const std::span<const T> block = x.first(std::min(kBlock, x.size()));
    std::array<double, kChains> sums{};
    std::size_t n = 0;
    for (; n + kChains <= block.size(); n += kChains) {
      for (std::size_t c = 0; c < kChains; ++c) sums[c] += Magnitude(block[n + c]);
    }
    for (; n < block.size(); ++n) sums[0] += Magnitude(block[n]);
    total += (sums[0] + sums[1]) + (sums[2] + sums[3]);
    x = x.subspan(block.size());
  }
  return total / count;
}

}  // namespace

TVec& Hilbert(TVec& Vec) {
  if (Vec.Complex()) throw Exception("Complex = True");
  Vec.Hilbert(Vec);
  return Vec;
}

void EnvelopeDetector(const TVec& Src, TVec& Dst, std::int32_t FrameSize) {
  if (FrameSize < 1) ERaise("FrameSize < 1");
  if (Src.Length() % FrameSize != 0) ERaise("(Src.Length mod FrameSize) <> 0");
  const Borrowed<TVec> result;
  result->Size(Src.Length() / FrameSize, false, Src.IsDouble());
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    const std::span<const T> x = Src.Elements<T>();
    const auto y = result->Elements<RealOf<T>>();
    const auto frame = static_cast<std::size_t>(FrameSize);
    for (std::size_t i = 0; i < y.size(); ++i) {
      y[i] = static_cast<RealOf<T>>(MeanMagnitude(x.subspan(i * frame, frame)));
    }
  });
  Dst.Take(*result);
}

}  // namespace passband::SignalUtils
