#include "passband/analysis/chirp_z.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <span>
#include <vector>

#include "passband/fft/fft.h"
#include "passband/foundation/exceptions.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

constexpr std::int64_t kMaxElements = std::int64_t{1} << 28;

// A ratio of points: radius e^growth, angle in turns. Turns are kept in two doubles: their products with squares of some
// millions are reduced to one turn.
struct Ratio {
  double growth = 0;
  double turns = 0;
  double turns_rest = 0;

  bool operator==(const Ratio&) const = default;

  static Ratio OfTurns(double growth, long double turns) {
    const auto high = static_cast<double>(turns);
    return {growth, high, static_cast<double>(turns - static_cast<long double>(high))};
  }
  static Ratio Of(TCplx z) {
    const long double angle = std::atan2(static_cast<long double>(z.Im), static_cast<long double>(z.Re));
    return OfTurns(std::log(std::hypot(z.Re, z.Im)), angle / (2 * std::numbers::pi_v<long double>));
  }
};

// A phase in turns, reduced, and the logarithm of a radius.
struct Exponent {
  double growth = 0;
  double turns = 0;

  // Adds the ratio to the power of `times`.
  void Add(const Ratio& ratio, double times) {
    const double product = ratio.turns * times;
    const double rest = std::fma(ratio.turns, times, -product) + ratio.turns_rest * times;
    turns += (product - std::nearbyint(product)) + rest;
    growth += ratio.growth * times;
  }
  TCplx Value() const {
    const double angle = 2 * std::numbers::pi * (turns - std::nearbyint(turns));
    const double radius = growth == 0 ? 1 : std::exp(growth);
    return {radius * std::cos(angle), radius * std::sin(angle)};
  }
};

struct Spiral {
  std::int32_t n = 0;  // samples
  std::int32_t k = 0;  // points
  Ratio w;
  Ratio a;

  bool operator==(const Spiral&) const = default;

  // Whether Bluestein's form keeps the digits.
  bool IsNearCircle() const {
    const auto longest = static_cast<double>(std::max(n, k));
    constexpr double kSpan = std::numbers::ln2;
    return std::abs(w.growth) * longest * longest / 2 <= kSpan && std::abs(a.growth) * n <= 600;
  }
};

// The next length with no factor above 5.
std::int32_t SmoothLength(std::int64_t least) {
  for (std::int64_t length = least;; ++length) {
    std::int64_t rest = length;
    for (const int factor : {2, 3, 5}) {
      while (rest % factor == 0) rest /= factor;
    }
    if (rest == 1) return static_cast<std::int32_t>(length);
  }
}

// The tables of Bluestein's form for one spiral, in double for both precisions.
struct Chirps {
  Spiral spiral;
  std::shared_ptr<const fft::ComplexPlan<double>> plan;
  std::vector<TCplx> before;  // A^(-n) W^(n^2 / 2)
  std::vector<TCplx> after;   // W^(k^2 / 2)
  TVec kernel_data;           // of the transform, aligned as it likes it
  TVec work_data;
  TVec spectrum_data;
  std::span<TCplx> kernel;  // the transform of W^(-m^2 / 2), divided by its length
  std::span<TCplx> work;
  std::span<TCplx> spectrum;

  explicit Chirps(const Spiral& s)
      : spiral(s),
        plan(fft::ComplexPlan<double>::Get(SmoothLength(std::int64_t{s.n} + s.k - 1))),
        before(static_cast<std::size_t>(s.n)),
        after(static_cast<std::size_t>(s.k)),
        kernel(Allocate(kernel_data)),
        work(Allocate(work_data)),
        spectrum(Allocate(spectrum_data)) {
    const auto chirp = [&](std::size_t m, double sign) {
      Exponent exponent;
      const auto x = static_cast<double>(m);
      exponent.Add(s.w, sign * x * x / 2);
      return exponent;
    };
    for (std::size_t i = 0; i < before.size(); ++i) {
      Exponent exponent = chirp(i, 1);
      exponent.Add(s.a, -static_cast<double>(i));
      before[i] = exponent.Value();
    }
    for (std::size_t i = 0; i < after.size(); ++i) after[i] = chirp(i, 1).Value();
    const double scale = 1 / static_cast<double>(kernel.size());
    for (std::size_t m = 0; m < std::max(before.size(), after.size()); ++m) {
      const TCplx value = scale * chirp(m, -1).Value();
      if (m < after.size()) work[m] = value;
      if (m > 0 && m < before.size()) work[work.size() - m] = value;
    }
    plan->Forward(work.data(), kernel.data());
  }

  std::span<TCplx> Allocate(TVec& data) const {
    data.Size(plan->Length(), TMtxFloatPrecision::DoubleComplex);
    data.SetZero();
    return data.CValues();
  }

  template <class Load, class Store>
  void Transform(const Load& load, const Store& store) {
    for (std::size_t i = 0; i < before.size(); ++i) work[i] = load(i) * before[i];
    std::fill(work.begin() + static_cast<std::ptrdiff_t>(before.size()), work.end(), TCplx{});
    plan->Forward(work.data(), spectrum.data());
    for (std::size_t i = 0; i < spectrum.size(); ++i) spectrum[i] = spectrum[i] * kernel[i];
    plan->Inverse(spectrum.data(), work.data());
    for (std::size_t i = 0; i < after.size(); ++i) store(i, work[i] * after[i]);
  }
};

// The tables of the last spiral of this thread; long ones are not kept.
Chirps& ChirpsOf(const Spiral& spiral, std::unique_ptr<Chirps>& local) {
  constexpr std::int64_t kMostKept = std::int64_t{1} << 18;
  thread_local std::unique_ptr<Chirps> last;
  if (last != nullptr && last->spiral == spiral) return *last;
  std::unique_ptr<Chirps>& place = std::int64_t{spiral.n} + spiral.k <= kMostKept ? last : local;
  place = std::make_unique<Chirps>(spiral);
  return *place;
}

template <class Load, class Store>
void TransformDirectly(const Spiral& spiral, const Load& load, const Store& store) {
  for (std::int32_t k = 0; k < spiral.k; ++k) {
    Exponent exponent;  // of 1 / z
    exponent.Add(spiral.a, -1);
    exponent.Add(spiral.w, k);
    const TCplx x = exponent.Value();
    TCplx sum{};
    for (auto n = static_cast<std::size_t>(spiral.n); n-- > 0;) sum = sum * x + load(n);
    store(static_cast<std::size_t>(k), sum);
  }
}

void Transform(const TVec& X, const Spiral& spiral, TVec& Y) {
  if (std::int64_t{spiral.n} + spiral.k > kMaxElements) ERaise("Czt: more than 2^28 elements");
  const Borrowed<TVec> result;
  result->Size(spiral.n == 0 ? 0 : std::max(spiral.k, 0), true, X.IsDouble());
  if (result->Length() > 0) {
    std::unique_ptr<Chirps> local;
    ForAny(X, [&]<Element T>(ElementTag<T>) {
      using C = ComplexOf<RealOf<T>>;
      const auto x = X.Elements<T>();
      const auto y = result->Elements<C>();
      const auto load = [x](std::size_t i) -> TCplx {
        if constexpr (IsComplex<T>) {
          return static_cast<TCplx>(x[i]);
        } else {
          return {static_cast<double>(x[i]), 0};
        }
      };
      const auto store = [y](std::size_t i, TCplx value) { y[i] = static_cast<C>(value); };
      if (spiral.IsNearCircle()) {
        ChirpsOf(spiral, local).Transform(load, store);
      } else {
        TransformDirectly(spiral, load, store);
      }
    });
  }
  Y.Take(*result);
}

bool IsRatio(TCplx z) { return std::isfinite(z.Re) && std::isfinite(z.Im) && (z.Re != 0 || z.Im != 0); }

// W of a spiral whose radius goes from `start` to `stop` and whose angle advances by `turns` in K points.
Ratio StepOf(double start, double stop, long double turns, std::int32_t k) {
  if (!(start > 0 && stop > 0 && std::isfinite(start) && std::isfinite(stop))) {
    ERaise("Czt: not (RStart > 0) or not (RStop > 0)");
  }
  const std::int32_t points = std::max(k, 1);
  const double growth = start == stop ? 0 : -(std::log(stop) - std::log(start)) / points;
  return Ratio::OfTurns(growth, -turns / static_cast<long double>(points));
}

}  // namespace

void Czt(const TVec& X, std::int32_t K, TCplx W, TCplx A, TVec& Y) {
  if (!IsRatio(W) || !IsRatio(A)) ERaise("Czt: W or A is 0 or not finite");
  Transform(X, {X.Length(), K, Ratio::Of(W), Ratio::Of(A)}, Y);
}

void Czt(const TVec& X, std::int32_t K, double FStart, double FStop, TVec& Y, double FS, double RStart, double RStop) {
  if (!(FS > 0 && std::isfinite(FS))) ERaise("Czt: not (FS > 0)");
  if (!std::isfinite(FStart) || !std::isfinite(FStop)) ERaise("Czt: a frequency is not finite");
  const auto rate = static_cast<long double>(FS);
  const Ratio step = StepOf(RStart, RStop, (static_cast<long double>(FStop) - FStart) / rate, K);
  Transform(X, {X.Length(), K, step, Ratio::OfTurns(std::log(RStart), static_cast<long double>(FStart) / rate)}, Y);
}

void Czt(const TVec& X, std::int32_t K, TVec& Y, double RStart, double RStop) {
  const Ratio step = StepOf(RStart, RStop, 1, K);
  Transform(X, {X.Length(), K, step, Ratio::OfTurns(std::log(RStart), 0)}, Y);
}

}  // namespace passband::SignalUtils
