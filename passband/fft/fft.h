// Discrete Fourier transforms of any length, real and complex, single and double precision, on pointers. This folder is
// the only one that includes an FFT library; PASSBAND_FFT chooses it when the project is configured.
//
// X[k] = sum x[n] exp(-2 pi j k n / N). The inverses are not scaled: forward and back gives N x. The arrays of one call
// do not overlap; any alignment is allowed.
//
// Executing takes no lock. It allocates nothing when N > 1 is a power of two. Other lengths may need work space:
// kissfft has it per thread, reserved by `Get`; FFTW takes it from the heap for large N or large prime factors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "passband/foundation/element_types.h"

namespace passband::fft {

/// Address multiple, in bytes, at which arrays are transformed fastest.
inline constexpr std::size_t kAlignment = 64;

/// Transform of `length` >= 1 real samples. Plans are kept in a cache and shared; they are immutable, so any number of
/// threads may use one at the same time.
template <RealElement R>
class RealPlan {
 public:
  /// The cached plan, made at the first request; the one unused for longest is dropped when the cache is full.
  /// Allocates nothing for a cached length. Throws std::bad_alloc; the cache is then as it was.
  static std::shared_ptr<const RealPlan> Get(std::int32_t length);

  virtual ~RealPlan() = default;
  virtual std::int32_t Length() const = 0;
  /// X[0 .. N / 2] of x[0 .. N - 1]; x is left as it is.
  virtual void Forward(const R* x, ComplexOf<R>* X) const = 0;
  /// x[0 .. N - 1] of the half spectrum X[0 .. N / 2], not scaled. X is destroyed. The imaginary parts of X[0] and, for
  /// even N, of X[N / 2] count as zero.
  virtual void Inverse(ComplexOf<R>* X, R* x) const = 0;
};

/// Transform of `length` >= 1 complex samples; shared and immutable like `RealPlan`. The input is left as it is.
template <RealElement R>
class ComplexPlan {
 public:
  static std::shared_ptr<const ComplexPlan> Get(std::int32_t length);

  virtual ~ComplexPlan() = default;
  virtual std::int32_t Length() const = 0;
  virtual void Forward(const ComplexOf<R>* x, ComplexOf<R>* X) const = 0;
  virtual void Inverse(const ComplexOf<R>* X, ComplexOf<R>* x) const = 0;
};

}  // namespace passband::fft
