// FIR filters on FFTW, as a peer would write them by hand: overlap-save with long transforms, and the partitioned form
// that keeps the caller's block.
#pragma once

#include <fftw3.h>

#include <algorithm>
#include <complex>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <vector>

#include "passband/foundation/element_types.h"

namespace passband::bench {

/// FFTW in the precision of R.
template <class R>
struct Fftw;
template <>
struct Fftw<float> {
  using Plan = fftwf_plan;
  using Complex = fftwf_complex;
  static constexpr auto Allocate = &fftwf_malloc;
  static constexpr auto Free = &fftwf_free;
  static constexpr auto Forward = &fftwf_plan_dft_r2c_1d;
  static constexpr auto Backward = &fftwf_plan_dft_c2r_1d;
  static constexpr auto Transform = &fftwf_plan_dft_1d;
  static constexpr auto Execute = &fftwf_execute;
  static constexpr auto Destroy = &fftwf_destroy_plan;
};
template <>
struct Fftw<double> {
  using Plan = fftw_plan;
  using Complex = fftw_complex;
  static constexpr auto Allocate = &fftw_malloc;
  static constexpr auto Free = &fftw_free;
  static constexpr auto Forward = &fftw_plan_dft_r2c_1d;
  static constexpr auto Backward = &fftw_plan_dft_c2r_1d;
  static constexpr auto Transform = &fftw_plan_dft_1d;
  static constexpr auto Execute = &fftw_execute;
  static constexpr auto Destroy = &fftw_destroy_plan;
};

namespace detail {
// sum += a b on split spectra, for the instruction set of this machine.
template <class R>
[[gnu::always_inline]] inline void AddProducts(const R* a_re, const R* a_im, const R* b_re, const R* b_im, R* re, R* im,
                                               std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const R x = a_re[i] * b_re[i] - a_im[i] * b_im[i];
    const R y = a_re[i] * b_im[i] + a_im[i] * b_re[i];
    re[i] += x;
    im[i] += y;
  }
}
#if defined(__x86_64__)
#define PASSBAND_BENCH_CLONES [[gnu::target_clones("avx512f", "avx2", "default")]]
#else
#define PASSBAND_BENCH_CLONES
#endif
PASSBAND_BENCH_CLONES inline void AddSpectrum(const float* a, const float* b, float* __restrict sum, std::size_t n) {
  AddProducts(a, a + n, b, b + n, sum, sum + n, n);
}
PASSBAND_BENCH_CLONES inline void AddSpectrum(const double* a, const double* b, double* __restrict sum, std::size_t n) {
  AddProducts(a, a + n, b, b + n, sum, sum + n, n);
}
#undef PASSBAND_BENCH_CLONES
}  // namespace detail

/// y = h * x in steps of `hop` samples, with transforms of `size` samples and ceil(taps / part) partitions of the taps,
/// part = size - hop. One partition is classic overlap-save; then the hop is free. Otherwise the hop is the partition.
template <Element T>
class FftwFir {
  using R = RealOf<T>;
  using F = Fftw<R>;

 public:
  FftwFir(const std::vector<T>& taps, std::size_t size, std::size_t hop)
      : size_(size),
        hop_(hop),
        part_(size - hop),
        parts_((taps.size() + part_ - 1) / part_),
        bins_(IsComplex<T> ? size : size / 2 + 1),
        time_(Allocate<T>(size)),
        spectrum_(Allocate<std::complex<R>>(bins_)),
        filter_(parts_ * bins_ * 2),
        input_(parts_ * bins_ * 2),
        sum_(2 * bins_),
        last_(part_) {
    const auto n = static_cast<int>(size);
    auto* bins = reinterpret_cast<typename F::Complex*>(spectrum_.get());
    if constexpr (IsComplex<T>) {
      auto* time = reinterpret_cast<typename F::Complex*>(time_.get());
      forward_.reset(F::Transform(n, time, bins, FFTW_FORWARD, FFTW_MEASURE));
      backward_.reset(F::Transform(n, bins, time, FFTW_BACKWARD, FFTW_MEASURE));
    } else {
      forward_.reset(F::Forward(n, time_.get(), bins, FFTW_MEASURE));
      backward_.reset(F::Backward(n, bins, time_.get(), FFTW_MEASURE));
    }
    for (std::size_t k = 0; k < parts_; ++k) {
      std::fill_n(time_.get(), size_, T{});
      for (std::size_t j = 0; j < part_ && k * part_ + j < taps.size(); ++j) {
        time_.get()[j] = T(taps[k * part_ + j] * (R{1} / static_cast<R>(size_)));
      }
      Spectrum(&filter_[2 * k * bins_]);
    }
  }

  std::size_t Hop() const { return hop_; }

  /// The next Hop() samples.
  void operator()(const T* x, T* y) {
    std::copy_n(last_.data(), part_, time_.get());
    std::copy_n(x, hop_, time_.get() + part_);
    std::copy_n(time_.get() + hop_, part_, last_.data());
    Spectrum(&input_[2 * head_ * bins_]);
    std::fill(sum_.begin(), sum_.end(), R{0});
    for (std::size_t k = 0; k < parts_; ++k) {
      detail::AddSpectrum(&input_[2 * ((head_ + parts_ - k) % parts_) * bins_], &filter_[2 * k * bins_], sum_.data(),
                          bins_);
    }
    for (std::size_t i = 0; i < bins_; ++i) spectrum_.get()[i] = {sum_[i], sum_[bins_ + i]};
    F::Execute(backward_.get());
    std::copy_n(time_.get() + part_, hop_, y);
    head_ = (head_ + 1) % parts_;
  }

 private:
  struct Free {
    void operator()(void* p) const { F::Free(p); }
  };
  struct Destroy {
    void operator()(typename F::Plan p) const { F::Destroy(p); }
  };
  template <class Value>
  static std::unique_ptr<Value, Free> Allocate(std::size_t count) {
    return std::unique_ptr<Value, Free>(static_cast<Value*>(F::Allocate(count * sizeof(Value))));
  }
  // The transform of the work buffer, real parts first.
  void Spectrum(R* split) {
    F::Execute(forward_.get());
    for (std::size_t i = 0; i < bins_; ++i) {
      split[i] = spectrum_.get()[i].real();
      split[bins_ + i] = spectrum_.get()[i].imag();
    }
  }

  std::size_t size_, hop_, part_, parts_, bins_;
  std::unique_ptr<T, Free> time_;
  std::unique_ptr<std::complex<R>, Free> spectrum_;
  std::vector<R> filter_, input_, sum_;
  std::vector<T> last_;
  std::size_t head_ = 0;
  std::unique_ptr<std::remove_pointer_t<typename F::Plan>, Destroy> forward_, backward_;
};

}  // namespace passband::bench
