// Transforms, convolution, correlation and the analytic signal of vectors.
#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <type_traits>

#include "passband/fft/fft.h"
#include "passband/vector_core/double_data_internal.h"
#include "passband/vector_core/elementwise_internal.h"
#include "passband/vector_core/vec.h"

namespace passband {
namespace {

using detail::Reading;

constexpr std::int64_t kMaxLength = std::numeric_limits<std::int32_t>::max();

std::int32_t CheckedLength(std::int64_t length) {
  if (length > kMaxLength) ERaise("Size: more than 2147483647 elements");
  return static_cast<std::int32_t>(length);
}

// The transform of elements of type T, and the length of its spectrum.
template <Element T>
using PlanOf = std::conditional_t<IsComplex<T>, fft::ComplexPlan<RealOf<T>>, fft::RealPlan<RealOf<T>>>;
template <Element T>
std::int32_t Bins(std::int32_t length) {
  return IsComplex<T> ? length : length / 2 + 1;
}

// The transform length for work in blocks that overlap by `overlap`, when one block would have `whole` points: about
// four times the overlap, where the cost for a sample is nearly flat. At most 3 2^29, the largest fast length.
std::int32_t BlockLength(std::int64_t overlap, std::int64_t whole) {
  const auto wanted = static_cast<std::uint64_t>(std::max<std::int64_t>(std::min(4 * overlap, whole), 1));
  return static_cast<std::int32_t>(std::min(std::bit_ceil(wanted), std::uint64_t{3} << 29));
}

// y[n] = sum h[k] x[n - k], k ascending, all n in [first, last) of the full convolution.
template <Element T, Element X, Element H>
void ConvolveEdge(std::span<T> y, std::span<const X> x, std::span<const H> h, std::size_t first, std::size_t last) {
  for (std::size_t n = first; n < last; ++n) {
    T sum{};
    const std::size_t end = std::min(n + 1, h.size());
    for (std::size_t k = n < x.size() ? 0 : n - x.size() + 1; k < end; ++k) sum += h[k] * x[n - k];
    y[n] = sum;
  }
}

// sums[i] += sum over j < taps of h[j h_step] x[i - j x_step]: one part of the taps with neighbouring parts of the
// samples. `sums` lies apart from x.
template <std::size_t taps, RealElement R, std::size_t count>
void AddTaps(std::array<R, count>& sums, const R* x, std::size_t x_step, const R* h, std::size_t h_step) {
  std::array<R, taps> tap;
  for (std::size_t j = 0; j < taps; ++j) tap[j] = h[j * h_step];
#if !defined(__clang__)
#pragma GCC ivdep
#endif
  for (std::size_t i = 0; i < count; ++i) {
    R sum = tap[0] * x[i];
    if constexpr (taps == 4)
      sum = ((sum + tap[1] * x[i - x_step]) + tap[2] * x[i - 2 * x_step]) + tap[3] * x[i - 3 * x_step];
    sums[i] += sum;
  }
}

template <RealElement R, std::size_t count>
void GroupSums(std::array<R, count>& sums, const R* x, std::size_t x_step, const R* h, std::size_t h_step,
               std::size_t taps) {
  sums.fill(R{});
  for (; taps >= 4; taps -= 4, x -= 4 * x_step, h += 4 * h_step) AddTaps<4>(sums, x, x_step, h, h_step);
  for (; taps > 0; --taps, x -= x_step, h += h_step) AddTaps<1>(sums, x, x_step, h, h_step);
}

// The whole convolution; where h lies inside x, several outputs side by side. h is not longer than x.
template <Element T, Element X, Element H>
void ConvolveDirectly(std::span<T> y, std::span<const X> x, std::span<const H> h) {
  using R = RealOf<T>;
  constexpr std::size_t kParts = 256 / sizeof(R);
  constexpr std::size_t kStep = IsComplex<X> ? 2 : 1;
  const auto samples = detail::Parts(x);
  const auto taps = detail::Parts(h);
  std::array<R, kParts> re;
  std::array<R, kParts> im;
  std::size_t n = h.size() - 1;
  ConvolveEdge(y, x, h, 0, n);
  for (; n + kParts / kStep <= x.size(); n += kParts / kStep) {
    const R* const first = samples.data() + n * kStep;
    GroupSums(re, first, kStep, taps.data(), IsComplex<H> ? 2 : 1, h.size());
    if constexpr (IsComplex<H>) GroupSums(im, first, kStep, taps.data() + 1, 2, h.size());
    for (std::size_t i = 0; i < kParts / kStep; ++i) {
      if constexpr (IsComplex<X> && IsComplex<H>) {
        y[n + i] = {re[2 * i] - im[2 * i + 1], re[2 * i + 1] + im[2 * i]};
      } else if constexpr (IsComplex<X>) {
        y[n + i] = {re[2 * i], re[2 * i + 1]};
      } else if constexpr (IsComplex<H>) {
        y[n + i] = {re[i], im[i]};
      } else {
        y[n + i] = re[i];
      }
    }
  }
  ConvolveEdge(y, x, h, n, y.size());
}

// Convolution of long operands: overlap-add of blocks of x.
template <Element T>
class BlockConvolution {
  using C = ComplexOf<T>;

 public:
  BlockConvolution(std::size_t x_size, std::size_t h_size)
      : length_(BlockLength(static_cast<std::int64_t>(h_size), static_cast<std::int64_t>(x_size + h_size - 1))),
        plan_(PlanOf<T>::Get(length_)) {
    samples_->Size(length_, PrecisionOf<T>);
    for (const auto* spectrum : {&x_spectrum_, &h_spectrum_}) (*spectrum)->Size(Bins<T>(length_), PrecisionOf<C>);
  }

  template <Element X, Element H>
  void Run(std::span<T> y, std::span<const X> x, std::span<const H> h) const {
    const auto samples = samples_->template Elements<T>();
    const auto x_spectrum = x_spectrum_->template Elements<C>();
    const auto h_spectrum = h_spectrum_->template Elements<C>();
    Transform(h, h_spectrum);
    const auto scale = RealOf<T>{1} / static_cast<RealOf<T>>(length_);
    for (C& bin : h_spectrum) bin *= scale;
    std::fill(y.begin(), y.end(), T{});
    const std::size_t step = samples.size() - h.size() + 1;
    for (std::size_t first = 0; first < x.size(); first += step) {
      Transform(x.subspan(first, std::min(step, x.size() - first)), x_spectrum);
      for (std::size_t k = 0; k < x_spectrum.size(); ++k) x_spectrum[k] *= h_spectrum[k];
      plan_->Inverse(x_spectrum.data(), samples.data());
      const std::size_t count = std::min(samples.size(), y.size() - first);
      for (std::size_t n = 0; n < count; ++n) y[first + n] += samples[n];
    }
  }

 private:
  template <Element From>
  void Transform(std::span<const From> block, std::span<C> spectrum) const {
    const auto samples = samples_->template Elements<T>();
    const auto rest = std::transform(block.begin(), block.end(), samples.begin(), detail::Convert<T, From>);
    std::fill(rest, samples.end(), T{});
    plan_->Forward(samples.data(), spectrum.data());
  }

  std::int32_t length_;
  std::shared_ptr<const PlanOf<T>> plan_;
  Borrowed<TVec> samples_;
  Borrowed<TVec> x_spectrum_;
  Borrowed<TVec> h_spectrum_;
};

double Conjugate(double x) { return x; }
TCplx Conjugate(TCplx z) { return Conj(z); }

// sum x[n + lag] conj(x[n]); partial sums of 1024 products keep the rounding of long sums low.
template <Element T>
T LagSum(std::span<const T> x, std::size_t lag) {
  T total{};
  const std::size_t count = x.size() - lag;
  for (std::size_t first = 0; first < count; first += 1024) {
    std::array<T, 4> sums{};
    const std::size_t last = std::min(first + 1024, count);
    std::size_t n = first;
    for (; n + sums.size() <= last; n += sums.size()) {
      for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += x[n + i + lag] * Conjugate(x[n + i]);
    }
    for (; n < last; ++n) sums[0] += x[n + lag] * Conjugate(x[n]);
    total += (sums[0] + sums[1]) + (sums[2] + sums[3]);
  }
  return total;
}

// The same for all lags of r through transforms. Each block of x is correlated with itself and the r.size() - 1 samples
// that follow; the cross spectra are added up, and one inverse transform gives all lags.
template <Element T>
void LagSums(std::span<const T> x, std::span<T> r) {
  const std::size_t overlap = r.size() - 1;
  const std::int32_t length =
      BlockLength(static_cast<std::int64_t>(overlap), static_cast<std::int64_t>(x.size() + overlap));
  const auto plan = PlanOf<T>::Get(length);
  std::array<Borrowed<TVec>, 4> work;
  work[0]->Size(length, PrecisionOf<T>);
  for (const std::size_t i : {1U, 2U, 3U}) work[i]->Size(Bins<T>(length), TMtxFloatPrecision::DoubleComplex);
  const auto samples = work[0]->Elements<T>();
  const auto block = work[1]->Elements<TCplx>();
  const auto extended = work[2]->Elements<TCplx>();
  const auto sum = work[3]->Elements<TCplx>();
  std::fill(sum.begin(), sum.end(), TCplx{});
  const std::size_t step = samples.size() - overlap;
  for (std::size_t first = 0; first < x.size(); first += step) {
    const auto transform = [&](std::size_t count, std::span<TCplx> spectrum) {
      const auto part = x.subspan(first, std::min(count, x.size() - first));
      std::fill(std::copy(part.begin(), part.end(), samples.begin()), samples.end(), T{});
      plan->Forward(samples.data(), spectrum.data());
    };
    transform(step, block);
    transform(samples.size(), extended);
    for (std::size_t k = 0; k < sum.size(); ++k) sum[k] += extended[k] * Conj(block[k]);
  }
  plan->Inverse(sum.data(), samples.data());
  const double scale = 1.0 / length;
  for (std::size_t k = 0; k < r.size(); ++k) r[k] = samples[k] * scale;
}

// The shorter operand from which on transforms are faster, and the number of lags.
constexpr std::size_t kLongKernel = 64;
constexpr std::size_t kManyLags = 64;

}  // namespace

void TVec::FFT(bool Full) { FFT(*this, Full); }

void TVec::FFT(const TVec& Src, bool Full) {
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    using C = ComplexOf<T>;
    const std::int32_t length = Src.Length();
    if (length == 0) return Size(0, PrecisionOf<C>);
    const auto plan = PlanOf<T>::Get(length);
    const auto write = [&](std::span<C> X, const T* x) {
      plan->Forward(x, X.data());
      for (auto k = static_cast<std::size_t>(Bins<T>(length)); k < X.size(); ++k)
        X[k] = passband::Conj(X[X.size() - k]);
    };
    Rebuild<C>(1, Full ? length : Bins<T>(length), Reading::AnyOrder, write, Src.Elements<T>());
  });
}

void TVec::IFFTToReal(const TVec& Src, bool OddLength) {
  if (!Src.Complex()) ERaise("IFFTToReal: real elements");
  ForReal(Src, [&]<RealElement R>(ElementTag<R>) {
    using C = ComplexOf<R>;
    const std::int32_t length =
        Src.Length() == 0 ? 0 : CheckedLength(std::int64_t{2} * Src.Length() - (OddLength ? 1 : 2));
    if (length == 0) return Size(0, PrecisionOf<R>);
    const auto plan = fft::RealPlan<R>::Get(length);
    Borrowed<TVec> spectrum;  // the inverse transform destroys its input
    spectrum->Size(Src.Length(), PrecisionOf<C>);
    const auto from = Src.Elements<C>();
    const auto scaled = spectrum->Elements<C>();
    const auto scale = static_cast<R>(1.0 / length);
    for (std::size_t k = 0; k < scaled.size(); ++k) scaled[k] = from[k] * scale;
    Size(length, PrecisionOf<R>);
    plan->Inverse(scaled.data(), Elements<R>().data());
  });
}

void TVec::Convolve(const TVec& Src, const TVec& Kernel) {
  detail::RequireSameIsDouble(Src, Kernel);
  if (Src.Length() < Kernel.Length()) return Convolve(Kernel, Src);
  ForAny(Src, [&]<Element X>(ElementTag<X>) {
    ForAny(Kernel, [&]<Element H>(ElementTag<H>) {
      if constexpr (std::is_same_v<RealOf<X>, RealOf<H>>) {
        using T = std::conditional_t<IsComplex<X>, X, H>;
        if (Kernel.Length() == 0) return Size(0, PrecisionOf<T>);
        const std::int32_t length = CheckedLength(std::int64_t{Src.Length()} + Kernel.Length() - 1);
        const auto x = Src.Elements<X>();
        const auto h = Kernel.Elements<H>();
        std::optional<BlockConvolution<T>> blocks;
        if (h.size() >= kLongKernel) blocks.emplace(x.size(), h.size());
        const auto write = [&](std::span<T> y, const X* first_x, const H* first_h) {
          const std::span<const X> signal(first_x, x.size());
          const std::span<const H> kernel(first_h, h.size());
          blocks ? blocks->Run(y, signal, kernel) : ConvolveDirectly(y, signal, kernel);
        };
        Rebuild<T>(1, length, Reading::AnyOrder, write, x, h);
      }
    });
  });
}

void TVec::AutoCorrBiased(const TVec& Src, std::int32_t Lags) {
  if (Lags < 0) ERaise("AutoCorrBiased: Lags < 0");
  const std::int32_t length = CheckedLength(std::int64_t{Lags} + 1);
  detail::ForDouble(Src.Complex(), [&]<detail::DoubleElement T>(ElementTag<T>) {
    Borrowed<TVec> wide;
    wide->Size(Src.Length(), PrecisionOf<T>);
    detail::Widen(Src, wide->Elements<T>());
    Borrowed<TVec> result;
    result->Size(length, PrecisionOf<T>);
    const std::span<const T> x = wide->Elements<T>();
    const std::span<T> r = result->Elements<T>();
    const std::span<T> inside = r.first(std::min(r.size(), x.size()));
    if (inside.size() > kManyLags) {
      LagSums(x, inside);
    } else {
      for (std::size_t k = 0; k < inside.size(); ++k) inside[k] = LagSum(x, k);
    }
    std::fill(r.begin() + static_cast<std::ptrdiff_t>(inside.size()), r.end(), T{});
    const double scale = 1.0 / std::max(Src.Length(), 1);
    for (T& value : inside) value = value * scale;
    Size(length, IsComplex<T>, Src.IsDouble());
    detail::StoreRounded(r, *this);
  });
}

void TVec::Hilbert(const TVec& Src) {
  if (Src.Complex()) ERaise("Hilbert: complex elements");
  ForReal(Src, [&]<RealElement R>(ElementTag<R>) {
    using C = ComplexOf<R>;
    const std::int32_t length = Src.Length();
    if (length == 0) return Size(0, PrecisionOf<C>);
    const auto plan = fft::RealPlan<R>::Get(length);
    Borrowed<TVec> quadrature;
    quadrature->Size(length, PrecisionOf<R>);
    Borrowed<TVec> spectrum;
    spectrum->Size(Bins<R>(length), PrecisionOf<C>);
    const auto X = spectrum->Elements<C>();
    plan->Forward(Src.Elements<R>().data(), X.data());
    // The imaginary part has the spectrum -j X; the mean and, of an even length, the highest frequency have none.
    const auto scale = static_cast<R>(1.0 / length);
    for (C& bin : X) bin = {bin.Im * scale, -bin.Re * scale};
    X[0] = {};
    if (length % 2 == 0) X[X.size() - 1] = {};
    const auto imaginary = quadrature->Elements<R>();
    plan->Inverse(X.data(), imaginary.data());
    const auto join = [&](std::span<C> y, const R* x) {
      for (std::size_t n = 0; n < y.size(); ++n) y[n] = {x[n], imaginary[n]};
    };
    Rebuild<C>(1, length, Reading::AnyOrder, join, Src.Elements<R>());
  });
}

}  // namespace passband
