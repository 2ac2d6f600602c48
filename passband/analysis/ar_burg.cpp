#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <type_traits>

#include "passband/analysis/ar_models.h"
#include "passband/analysis/ar_models_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/primitives/burg.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"
#include "passband/vector_core/predictor_internal.h"

namespace passband::SignalUtils {
namespace {

using primitives::BurgSums;

// The errors of the lattice: at first the signal itself, which stays as it is.
template <Element T>
class Lattice {
 public:
  explicit Lattice(std::span<const T> x)
      : f_(x.data()), b_(x.data()), count_(static_cast<std::int32_t>(x.size())), length_(count_) {
    // Cannot fail, nor can a stage: pointers and counts are sound.
    static_cast<void>(primitives::BurgSum(f_, b_, count_, sums_));
  }
  const BurgSums& Sums() const { return sums_; }

  void Reflect(TCplx k) {
    if (f_next_ == nullptr) Allocate();
    static_cast<void>(primitives::BurgStage(f_, b_, count_, k, f_next_, b_next_, sums_));
    f_ = f_next_;
    b_ = b_next_;
    --count_;
  }

 private:
  // A load waits for an earlier store whose address agrees in the last twelve bits, so the arrays are kept half a page
  // apart in them.
  void Allocate() {
    constexpr std::uintptr_t kPage = 4096;
    const bool room = length_ < std::numeric_limits<std::int32_t>::max() / 2;
    forward_->Size(length_, PrecisionOf<T>);
    backward_->Size(room ? length_ + static_cast<std::int32_t>(kPage / sizeof(T)) : length_, PrecisionOf<T>);
    f_next_ = forward_->template Elements<T>().data();
    b_next_ = backward_->template Elements<T>().data();
    const auto apart = reinterpret_cast<std::uintptr_t>(b_next_) - reinterpret_cast<std::uintptr_t>(f_next_);
    if (room) b_next_ += (kPage / 2 - apart) % kPage / sizeof(T);
  }

  const T* f_;
  const T* b_;
  std::int32_t count_;
  std::int32_t length_;
  BurgSums sums_;
  Borrowed<TVec> forward_;
  Borrowed<TVec> backward_;
  T* f_next_ = nullptr;
  T* b_next_ = nullptr;
};

template <Element T>
double Power(T x) {
  const auto z = passband::detail::WidenElement<TCplx>(x);
  return z.Re * z.Re + z.Im * z.Im;
}

// The mean power of a signal, of whose samples all but the first and the last are in the sums twice.
template <Element T>
double MeanPower(std::span<const T> x, const BurgSums& sums) {
  if (x.empty()) return 0;
  return (sums.power + Power(x.front()) + Power(x.back())) / (2 * static_cast<double>(x.size()));
}

// Whether squares of samples of this mean power keep their digits in the precision of T.
template <Element T>
bool IsModerate(double power) {
  const double least = std::is_same_v<RealOf<T>, float> ? 0x1p-60 : 0x1p-700;
  return power >= least && power <= std::numeric_limits<double>::max();
}

double Modulus(TCplx k) { return k.Im == 0 ? std::abs(k.Re) : CAbs(k); }

// -2 product / power; rounding must not carry it out of the unit circle.
TCplx ReflectionOf(const BurgSums& sums) {
  if (sums.power == 0) return {};
  const TCplx k{-2 * sums.product.Re / sums.power, -2 * sums.product.Im / sums.power};
  const double modulus = Modulus(k);
  return modulus > 1 ? TCplx{k.Re / modulus, k.Im / modulus} : k;
}

// Returns the variance, from the mean power of the signal.
template <Element T, passband::detail::DoubleElement D>
double Fit(Lattice<T>& lattice, double power, std::span<D> a, std::span<D> reflection) {
  std::fill(a.begin(), a.end(), D{});
  a[0] = passband::detail::WidenElement<D>(1.0);
  for (std::size_t m = 0; m < reflection.size(); ++m) {
    const TCplx k = ReflectionOf(lattice.Sums());
    reflection[m] = passband::detail::WidenElement<D>(k);
    passband::detail::RaiseOrder(a, m + 1, reflection[m]);
    const double modulus = Modulus(k);
    power *= (1 - modulus) * (1 + modulus);
    if (m + 1 < reflection.size()) lattice.Reflect(k);
  }
  return power;
}

}  // namespace

void detail::FitBurg(const TVec& src, std::int32_t order, TVec& a, TVec& reflection, double& variance) {
  if (order < 0) throw Exception("ArBurg: Order < 0");
  if (std::int64_t{2} * order > src.Length()) throw Exception("Burg: Order*2 > c.Length");
  a.Size(order + 1, src.Complex(), true);
  reflection.Size(order, src.Complex(), true);
  ForAny(src, [&]<Element T>(ElementTag<T>) {
    using D = std::conditional_t<IsComplex<T>, TCplx, double>;
    std::span<const T> x = src.Elements<T>();
    std::optional<Lattice<T>> lattice(std::in_place, x);
    double power = MeanPower(x, lattice->Sums());
    const int exponent = IsModerate<T>(power) ? 0 : BinaryExponent(src, "ArBurg");
    const Borrowed<TVec> scaled;
    if (exponent != 0) {
      WidenScaled(src, exponent, *scaled);
      scaled->SetFloatPrecision(PrecisionOf<T>);
      x = scaled->Elements<T>();
      lattice.emplace(x);
      power = MeanPower(x, lattice->Sums());
    }
    power = Fit<T, D>(*lattice, power, a.Elements<D>(), reflection.Elements<D>());
    variance = std::ldexp(power, 2 * exponent);
  });
}

void ArBurg(const TVec& c, std::int32_t Order, TVec& Dst, TVec& Refl, double& Err) {
  const Borrowed<TVec> a;
  const Borrowed<TVec> reflection;
  double variance = 0;
  detail::FitBurg(c, Order, *a, *reflection, variance);
  a->SetFloatPrecision(c.FloatPrecision());
  reflection->SetFloatPrecision(c.FloatPrecision());
  Dst.Take(*a);
  Refl.Take(*reflection);
  Err = variance;
}

}  // namespace passband::SignalUtils
