// Transforms by kissfft, for builds that must not link FFTW. kissfft does lengths of the form 2^a 3^b 5^c; for other
// prime factors it is quadratic in the factor and shares one scratch buffer among threads, so those lengths are turned
// into a convolution of such a length (Bluestein, "A linear filtering approach to the computation of discrete Fourier
// transform", 1970). Chirps and twiddles made here are computed in extended precision and rounded once.
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <kissfft.hh>
#include <numbers>
#include <optional>
#include <vector>

#include "passband/fft/fft.h"
#include "passband/fft/plan_cache_internal.h"

namespace passband::fft {
namespace {

template <RealElement R>
using Complex = std::complex<R>;

// Work space of one thread; it only grows. `slot` tells nested users apart. `Get` reserves what its plan needs, so that
// the thread that asked for a plan executes it without allocating.
template <RealElement R, int slot>
Complex<R>* Scratch(std::size_t size) {
  thread_local std::vector<Complex<R>> space;
  if (space.size() < size) space.resize(size);
  return space.data();
}

bool IsSmooth(std::int64_t n) {
  for (const int p : {2, 3, 5}) {
    while (n % p == 0) n /= p;
  }
  return n == 1;
}

// exp(-j pi numerator / denominator); the angle is formed in extended precision, as its rounding would be multiplied
// by up to 2 pi in the result.
template <RealElement R>
Complex<R> HalfTurns(std::int64_t numerator, std::int64_t denominator) {
  const long double angle = -std::numbers::pi_v<long double> * static_cast<long double>(numerator % (2 * denominator)) /
                            static_cast<long double>(denominator);
  return {static_cast<R>(std::cos(angle)), static_cast<R>(std::sin(angle))};
}

// The product written out: `std::complex` checks for NaN and is many times slower.
template <RealElement R>
Complex<R> Times(Complex<R> a, Complex<R> b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

// A transform of length 1 or 2^a 3^b 5^c, both directions.
template <RealElement R>
class SmoothTransform {
 public:
  explicit SmoothTransform(std::size_t length) : length_(length), forward_(length, false), inverse_(length, true) {}

  std::size_t Length() const { return length_; }
  void Forward(const Complex<R>* x, Complex<R>* X) const { Run(forward_, x, X); }
  void Inverse(const Complex<R>* X, Complex<R>* x) const { Run(inverse_, X, x); }

 private:
  void Run(const kissfft<R>& transform, const Complex<R>* in, Complex<R>* out) const {
    if (length_ == 1) {
      *out = *in;
    } else {
      transform.transform(in, out);
    }
  }

  std::size_t length_;
  kissfft<R> forward_;
  kissfft<R> inverse_;
};

// X[k] = w[k] sum (x[n] w[n]) conj(w[k - n]) with w[n] = exp(-j pi n^2 / N).
template <RealElement R>
class ChirpTransform {
 public:
  explicit ChirpTransform(std::size_t length) : chirp_(length), filter_(PaddedLength(length)), inner_(filter_.size()) {
    const auto n = static_cast<std::int64_t>(length);
    for (std::int64_t i = 0; i < n; ++i) chirp_[static_cast<std::size_t>(i)] = HalfTurns<R>(i * i % (2 * n), n);
    const R scale = R{1} / static_cast<R>(filter_.size());
    std::vector<Complex<R>> conjugate(filter_.size());
    for (std::size_t i = 0; i < length; ++i) {
      conjugate[i] = std::conj(chirp_[i]) * scale;
      if (i > 0) conjugate[conjugate.size() - i] = conjugate[i];
    }
    inner_.Forward(conjugate.data(), filter_.data());
  }

  void Reserve() const { Scratch<R, 0>(2 * filter_.size()); }

  // The inverse is the forward transform of the conjugate, conjugated.
  template <bool inverse>
  void Run(const Complex<R>* in, Complex<R>* out) const {
    const std::size_t size = filter_.size();
    Complex<R>* a = Scratch<R, 0>(2 * size);
    Complex<R>* b = a + size;
    for (std::size_t i = 0; i < chirp_.size(); ++i) a[i] = Times(inverse ? std::conj(in[i]) : in[i], chirp_[i]);
    std::fill(a + chirp_.size(), a + size, Complex<R>{});
    inner_.Forward(a, b);
    for (std::size_t i = 0; i < size; ++i) b[i] = Times(b[i], filter_[i]);
    inner_.Inverse(b, a);
    for (std::size_t i = 0; i < chirp_.size(); ++i) {
      const Complex<R> y = Times(a[i], chirp_[i]);
      out[i] = inverse ? std::conj(y) : y;
    }
  }

 private:
  static std::size_t PaddedLength(std::size_t length) {
    std::size_t padded = 2 * length - 1;
    while (!IsSmooth(static_cast<std::int64_t>(padded))) ++padded;
    return padded;
  }

  std::vector<Complex<R>> chirp_;
  std::vector<Complex<R>> filter_;
  SmoothTransform<R> inner_;
};

// A complex transform of any length, out of place.
template <RealElement R>
class Transform {
 public:
  explicit Transform(std::int32_t length) {
    if (IsSmooth(length)) {
      smooth_.emplace(static_cast<std::size_t>(length));
    } else {
      chirp_.emplace(static_cast<std::size_t>(length));
    }
  }
  void Forward(const Complex<R>* x, Complex<R>* X) const {
    smooth_ ? smooth_->Forward(x, X) : chirp_->template Run<false>(x, X);
  }
  void Inverse(const Complex<R>* X, Complex<R>* x) const {
    smooth_ ? smooth_->Inverse(X, x) : chirp_->template Run<true>(X, x);
  }

  void Reserve() const {
    if (chirp_) chirp_->Reserve();
  }

 private:
  std::optional<SmoothTransform<R>> smooth_;
  std::optional<ChirpTransform<R>> chirp_;
};

template <RealElement R>
class KissComplexPlan final : public ComplexPlan<R> {
 public:
  explicit KissComplexPlan(std::int32_t length) : length_(length), transform_(length) {}
  void Reserve() const { transform_.Reserve(); }
  std::int32_t Length() const override { return length_; }
  void Forward(const ComplexOf<R>* x, ComplexOf<R>* X) const override {
    transform_.Forward(reinterpret_cast<const Complex<R>*>(x), reinterpret_cast<Complex<R>*>(X));
  }
  void Inverse(const ComplexOf<R>* X, ComplexOf<R>* x) const override {
    transform_.Inverse(reinterpret_cast<const Complex<R>*>(X), reinterpret_cast<Complex<R>*>(x));
  }

 private:
  std::int32_t length_;
  Transform<R> transform_;
};

template <RealElement R>
class KissRealPlan : public RealPlan<R> {
 public:
  virtual void Reserve() const = 0;
};

// Odd lengths go through the complex transform of the same length.
template <RealElement R>
class KissOddRealPlan final : public KissRealPlan<R> {
 public:
  explicit KissOddRealPlan(std::int32_t length) : length_(length), transform_(length) {}
  void Reserve() const override {
    transform_.Reserve();
    Scratch<R, 1>(2 * static_cast<std::size_t>(length_));
  }
  std::int32_t Length() const override { return length_; }

  void Forward(const R* x, ComplexOf<R>* X) const override {
    const auto n = static_cast<std::size_t>(length_);
    Complex<R>* in = Scratch<R, 1>(2 * n);
    Complex<R>* out = in + n;
    std::copy(x, x + n, in);
    transform_.Forward(in, out);
    for (std::size_t k = 0; k <= n / 2; ++k) X[k] = out[k];
    X[0].Im = 0;
  }
  void Inverse(ComplexOf<R>* X, R* x) const override {
    const auto n = static_cast<std::size_t>(length_);
    Complex<R>* in = Scratch<R, 1>(2 * n);
    Complex<R>* out = in + n;
    in[0] = X[0].Re;
    for (std::size_t k = 1; k <= n / 2; ++k) {
      in[k] = X[k];
      in[n - k] = std::conj(in[k]);
    }
    transform_.Inverse(in, out);
    for (std::size_t i = 0; i < n; ++i) x[i] = out[i].real();
  }

 private:
  std::int32_t length_;
  Transform<R> transform_;
};

// Even lengths N = 2 M: even and odd samples as real and imaginary parts of M points. With Z their transform and
// E = (Z[k] + conj Z[M - k]) / 2, O = (Z[k] - conj Z[M - k]) / 2j, the spectrum is X[k] = E + O exp(-j pi k / M).
template <RealElement R>
class KissEvenRealPlan final : public KissRealPlan<R> {
 public:
  explicit KissEvenRealPlan(std::int32_t length) : half_(static_cast<std::size_t>(length / 2)), transform_(length / 2) {
    for (std::size_t k = 0; k <= half_ / 2; ++k) {
      twiddles_.push_back(HalfTurns<R>(static_cast<std::int64_t>(k), static_cast<std::int64_t>(half_)));
    }
  }
  void Reserve() const override { transform_.Reserve(); }
  std::int32_t Length() const override { return static_cast<std::int32_t>(2 * half_); }

  void Forward(const R* x, ComplexOf<R>* X) const override {
    auto* z = reinterpret_cast<Complex<R>*>(X);
    transform_.Forward(reinterpret_cast<const Complex<R>*>(x), z);
    z[half_] = z[0].real() - z[0].imag();
    z[0] = z[0].real() + z[0].imag();
    for (std::size_t k = 1; k <= half_ / 2; ++k) {
      const Complex<R> even = (z[k] + std::conj(z[half_ - k])) * R{0.5};
      const Complex<R> odd = (z[k] - std::conj(z[half_ - k])) * R{0.5};  // j O
      const Complex<R> turned = Times({odd.imag(), -odd.real()}, twiddles_[k]);
      z[k] = even + turned;
      z[half_ - k] = std::conj(even - turned);
    }
  }
  void Inverse(ComplexOf<R>* X, R* x) const override {
    auto* z = reinterpret_cast<Complex<R>*>(X);
    z[0] = {z[0].real() + z[half_].real(), z[0].real() - z[half_].real()};
    for (std::size_t k = 1; k <= half_ / 2; ++k) {
      const Complex<R> even = z[k] + std::conj(z[half_ - k]);
      const Complex<R> odd = Times(z[k] - std::conj(z[half_ - k]), std::conj(twiddles_[k]));
      const Complex<R> turned{-odd.imag(), odd.real()};
      z[k] = even + turned;
      z[half_ - k] = std::conj(even - turned);
    }
    transform_.Inverse(z, reinterpret_cast<Complex<R>*>(x));
  }

 private:
  std::size_t half_;
  Transform<R> transform_;
  std::vector<Complex<R>> twiddles_;  // exp(-j pi k / M) for the first half of k
};

}  // namespace

template <RealElement R>
std::shared_ptr<const RealPlan<R>> RealPlan<R>::Get(std::int32_t length) {
  static PlanCache<KissRealPlan<R>> cache;
  auto plan = cache.Get(length, [](std::int32_t n) -> std::shared_ptr<const KissRealPlan<R>> {
    if (n % 2 == 0) return std::make_shared<const KissEvenRealPlan<R>>(n);
    return std::make_shared<const KissOddRealPlan<R>>(n);
  });
  plan->Reserve();
  return plan;
}

template <RealElement R>
std::shared_ptr<const ComplexPlan<R>> ComplexPlan<R>::Get(std::int32_t length) {
  static PlanCache<KissComplexPlan<R>> cache;
  auto plan = cache.Get(length, [](std::int32_t n) { return std::make_shared<const KissComplexPlan<R>>(n); });
  plan->Reserve();
  return plan;
}

template class RealPlan<float>;
template class RealPlan<double>;
template class ComplexPlan<float>;
template class ComplexPlan<double>;

}  // namespace passband::fft
