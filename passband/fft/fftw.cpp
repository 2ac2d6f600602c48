// Transforms by FFTW. Plans are estimated, not measured, so that the same length gives the same plan in every run. (A
// host that measures plans of its own leaves wisdom in the process, which FFTW then consults for later plans too.)
//
// FFTW executes plans on any number of threads, but makes and destroys them on one at a time. `planner_mutex` sees to
// that within this library. A host that plans on its own threads at the same time calls fftw_make_planner_thread_safe
// of FFTW's thread library, which then covers the calls made here too.
#include <fftw3.h>

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <type_traits>

#include "passband/fft/fft.h"
#include "passband/fft/plan_cache_internal.h"

namespace passband::fft {
namespace {

// The functions of FFTW's two libraries under one name.
template <RealElement R>
struct Fftw;
template <>
struct Fftw<float> {
  using Complex = fftwf_complex;
  using Plan = fftwf_plan;
  static constexpr auto kPlan = &fftwf_plan_dft_1d;
  static constexpr auto kPlanToComplex = &fftwf_plan_dft_r2c_1d;
  static constexpr auto kPlanToReal = &fftwf_plan_dft_c2r_1d;
  static constexpr auto kExecute = &fftwf_execute_dft;
  static constexpr auto kExecuteToComplex = &fftwf_execute_dft_r2c;
  static constexpr auto kExecuteToReal = &fftwf_execute_dft_c2r;
  static constexpr auto kDestroy = &fftwf_destroy_plan;
  static constexpr auto kAlignmentOf = &fftwf_alignment_of;
};
template <>
struct Fftw<double> {
  using Complex = fftw_complex;
  using Plan = fftw_plan;
  static constexpr auto kPlan = &fftw_plan_dft_1d;
  static constexpr auto kPlanToComplex = &fftw_plan_dft_r2c_1d;
  static constexpr auto kPlanToReal = &fftw_plan_dft_c2r_1d;
  static constexpr auto kExecute = &fftw_execute_dft;
  static constexpr auto kExecuteToComplex = &fftw_execute_dft_r2c;
  static constexpr auto kExecuteToReal = &fftw_execute_dft_c2r;
  static constexpr auto kDestroy = &fftw_destroy_plan;
  static constexpr auto kAlignmentOf = &fftw_alignment_of;
};

constinit std::mutex planner_mutex;

template <RealElement R>
struct PlanDeleter {
  void operator()(std::remove_pointer_t<typename Fftw<R>::Plan>* plan) const noexcept {
    const std::lock_guard lock(planner_mutex);
    Fftw<R>::kDestroy(plan);
  }
};

// Memory that the planner looks at, but does not touch.
struct PlanningArea {
  explicit PlanningArea(std::size_t bytes) : data(::operator new (bytes, std::align_val_t{kAlignment})) {}
  PlanningArea(const PlanningArea&) = delete;
  PlanningArea& operator=(const PlanningArea&) = delete;
  ~PlanningArea() { ::operator delete (data, std::align_val_t{kAlignment}); }
  void* data;
};

// One transform as two plans: FFTW uses vector instructions only on aligned arrays, and only if it may rely on it.
template <RealElement R, class In, class Out>
class PlanPair {
 public:
  template <class Make>  // make(in, out, flags) calls the planner
  PlanPair(std::int32_t length, const Make& make) {
    const auto bytes = static_cast<std::size_t>(length + std::int64_t{2}) * sizeof(typename Fftw<R>::Complex);
    const PlanningArea in(bytes);
    const PlanningArea out(bytes);
    for (const bool aligned : {false, true}) {
      const std::lock_guard lock(planner_mutex);
      plans_[aligned].reset(make(static_cast<In*>(in.data), static_cast<Out*>(out.data),
                                 FFTW_ESTIMATE | (aligned ? 0U : FFTW_UNALIGNED)));
      if (!plans_[aligned]) throw std::bad_alloc();
    }
  }

  // The plan that suits these arrays.
  typename Fftw<R>::Plan For(const void* in, const void* out) const {
    return plans_[IsAligned(in) && IsAligned(out)].get();
  }

 private:
  static bool IsAligned(const void* array) {
    return Fftw<R>::kAlignmentOf(const_cast<R*>(static_cast<const R*>(array))) == 0;
  }

  using Handle = std::unique_ptr<std::remove_pointer_t<typename Fftw<R>::Plan>, PlanDeleter<R>>;
  std::array<Handle, 2> plans_;
};

template <RealElement R>
class FftwRealPlan final : public RealPlan<R> {
  using Raw = typename Fftw<R>::Complex;

 public:
  explicit FftwRealPlan(std::int32_t length)
      : length_(length),
        forward_(length, [&](R* x, Raw* X, unsigned flags) { return Fftw<R>::kPlanToComplex(length, x, X, flags); }),
        inverse_(length, [&](Raw* X, R* x, unsigned flags) {
          return Fftw<R>::kPlanToReal(length, X, x, flags | FFTW_DESTROY_INPUT);
        }) {}

  std::int32_t Length() const override { return length_; }
  void Forward(const R* x, ComplexOf<R>* X) const override {
    Fftw<R>::kExecuteToComplex(forward_.For(x, X), const_cast<R*>(x), reinterpret_cast<Raw*>(X));
  }
  void Inverse(ComplexOf<R>* X, R* x) const override {
    X[0].Im = 0;
    if (length_ % 2 == 0) X[length_ / 2].Im = 0;
    Fftw<R>::kExecuteToReal(inverse_.For(X, x), reinterpret_cast<Raw*>(X), x);
  }

 private:
  std::int32_t length_;
  PlanPair<R, R, Raw> forward_;
  PlanPair<R, Raw, R> inverse_;
};

template <RealElement R>
class FftwComplexPlan final : public ComplexPlan<R> {
  using Raw = typename Fftw<R>::Complex;

 public:
  explicit FftwComplexPlan(std::int32_t length)
      : length_(length), forward_(length, Planner(FFTW_FORWARD)), inverse_(length, Planner(FFTW_BACKWARD)) {}

  std::int32_t Length() const override { return length_; }
  void Forward(const ComplexOf<R>* x, ComplexOf<R>* X) const override { Execute(forward_, x, X); }
  void Inverse(const ComplexOf<R>* X, ComplexOf<R>* x) const override { Execute(inverse_, X, x); }

 private:
  auto Planner(int sign) const {
    return [length = length_, sign](Raw* in, Raw* out, unsigned flags) {
      return Fftw<R>::kPlan(length, in, out, sign, flags);
    };
  }
  static void Execute(const PlanPair<R, Raw, Raw>& plans, const ComplexOf<R>* in, ComplexOf<R>* out) {
    // FFTW keeps the input of an out-of-place transform although its pointer is not const.
    Fftw<R>::kExecute(plans.For(in, out), reinterpret_cast<Raw*>(const_cast<ComplexOf<R>*>(in)),
                      reinterpret_cast<Raw*>(out));
  }

  std::int32_t length_;
  PlanPair<R, Raw, Raw> forward_;
  PlanPair<R, Raw, Raw> inverse_;
};

}  // namespace

template <RealElement R>
std::shared_ptr<const RealPlan<R>> RealPlan<R>::Get(std::int32_t length) {
  static PlanCache<RealPlan> cache;
  return cache.Get(length, [](std::int32_t n) { return std::make_shared<const FftwRealPlan<R>>(n); });
}

template <RealElement R>
std::shared_ptr<const ComplexPlan<R>> ComplexPlan<R>::Get(std::int32_t length) {
  static PlanCache<ComplexPlan> cache;
  return cache.Get(length, [](std::int32_t n) { return std::make_shared<const FftwComplexPlan<R>>(n); });
}

template class RealPlan<float>;
template class RealPlan<double>;
template class ComplexPlan<float>;
template class ComplexPlan<double>;

}  // namespace passband::fft
