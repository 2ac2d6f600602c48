// Windows applied in place, beside the loops a user would write: with the cosine of the C library, with glibc's vector
// cosine, and with a window computed beforehand, which is what a host does that can keep it. The data are zeros, which
// neither grow nor sink into denormals however often they are windowed.
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>
#include <vector>

#if defined(__x86_64__) && defined(__GLIBC__)
#include <immintrin.h>
#define PASSBAND_BENCH_LIBMVEC
#endif

#include "bench/rows.h"
#include "passband/primitives/window_multiply.h"
#include "passband/vector_core/vec.h"
#include "passband/windows/windows.h"

#ifdef PASSBAND_BENCH_LIBMVEC
extern "C" __m512d _ZGVeN8v_cos(__m512d) __attribute__((target("avx512f")));
extern "C" __m512 _ZGVeN16v_cosf(__m512) __attribute__((target("avx512f")));
#endif

namespace passband::bench {
namespace {

constexpr std::int32_t kLength = 4096;

template <RealElement R>
void CosineLoop(std::vector<R>& x) {
  const R step = static_cast<R>(2 * std::numbers::pi / (kLength - 1));
  for (std::int32_t n = 0; n < kLength; ++n) {
    x[static_cast<std::size_t>(n)] *= R(0.5) - R(0.5) * std::cos(step * static_cast<R>(n));
  }
}

#ifdef PASSBAND_BENCH_LIBMVEC
__attribute__((target("avx512f"))) void VectorCosine(std::vector<double>& x) {
  const __m512d half = _mm512_set1_pd(0.5);
  const __m512d step = _mm512_set1_pd(2 * std::numbers::pi / (kLength - 1));
  __m512d n = _mm512_setr_pd(0, 1, 2, 3, 4, 5, 6, 7);
  for (std::size_t i = 0; i < x.size(); i += 8) {
    const __m512d w = _mm512_sub_pd(half, _mm512_mul_pd(half, _ZGVeN8v_cos(_mm512_mul_pd(step, n))));
    _mm512_storeu_pd(&x[i], _mm512_mul_pd(_mm512_loadu_pd(&x[i]), w));
    n = _mm512_add_pd(n, _mm512_set1_pd(8));
  }
}

__attribute__((target("avx512f"))) void VectorCosine(std::vector<float>& x) {
  const __m512 half = _mm512_set1_ps(0.5F);
  const __m512 step = _mm512_set1_ps(static_cast<float>(2 * std::numbers::pi / (kLength - 1)));
  __m512 n = _mm512_setr_ps(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
  for (std::size_t i = 0; i < x.size(); i += 16) {
    const __m512 w = _mm512_sub_ps(half, _mm512_mul_ps(half, _ZGVeN16v_cosf(_mm512_mul_ps(step, n))));
    _mm512_storeu_ps(&x[i], _mm512_mul_ps(_mm512_loadu_ps(&x[i]), w));
    n = _mm512_add_ps(n, _mm512_set1_ps(16));
  }
}
#endif

template <Element T>
TVec Zeros() {
  TVec v;
  v.Size(kLength, PrecisionOf<T>);
  v.SetZero();
  return v;
}

template <Element T>
std::string Params() {
  return std::string("type=") + TypeName<T>() + ";n=" + std::to_string(kLength);
}

template <RealElement R>
void MeasureHanning(const Rows& rows, double goal) {
  TVec v = Zeros<R>();
  std::vector<R> x(kLength);
  const std::vector<R> w(kLength, R(0.5));
  const RowOptions options{.samples = kLength, .goal = goal};
  const auto ours = [&] { Keep(SignalUtils::Hanning(v)); };
  std::vector<Peer> peers{{"cosine_loop", [&] {
                             CosineLoop(x);
                             Keep(x[0]);
                           }}};
#ifdef PASSBAND_BENCH_LIBMVEC
  if (__builtin_cpu_supports("avx512f")) {
    peers.push_back({"libmvec", [&] {
                       VectorCosine(x);
                       Keep(x[0]);
                     }});
  }
#endif
  rows.Measure("window_hanning", Params<R>(), options, ours, peers);
  rows.Measure("window_hanning", Params<R>() + ";against=stored_window", {.samples = kLength}, ours,
               {{"window_multiply", [&] { Keep(primitives::WindowMultiply(x.data(), w.data(), kLength)); }}});
}

template <Element T>
void MeasureMultiply(const Rows& rows) {
  using R = RealOf<T>;
  std::vector<T> x(kLength);
  const std::vector<R> w(kLength, R(0.5));
  rows.Measure("window_multiply", Params<T>(), {.samples = kLength},
               [&] { Keep(primitives::WindowMultiply(x.data(), w.data(), kLength)); },
               {{"plain_loop", [&] {
                   for (std::size_t n = 0; n < x.size(); ++n) x[n] *= w[n];
                   Keep(x[0]);
                 }}});
}

void MeasureKaiser(const Rows& rows) {
  constexpr double kBeta = 9;
  TVec v = Zeros<double>();
  std::vector<double> x(kLength);
  rows.Measure("window_kaiser", Params<double>() + ";beta=9", {.samples = kLength},
               [&] { Keep(SignalUtils::Kaiser(v, kBeta)); },
               {{"std_cyl_bessel_i", [&] {
                   const double gain = 1 / std::cyl_bessel_i(0, kBeta);
                   const double m = (kLength - 1) / 2.0;
                   for (std::int32_t n = 0; n < kLength; ++n) {
                     const double t = (n - m) / m;
                     x[static_cast<std::size_t>(n)] *= std::cyl_bessel_i(0, kBeta * std::sqrt(1 - t * t)) * gain;
                   }
                   Keep(x[0]);
                 }}});
}

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  using namespace passband;
  using namespace passband::bench;
  const Rows rows(argc, argv);
  MeasureHanning<double>(rows, 0.15);
  MeasureHanning<float>(rows, 0.3);
  MeasureMultiply<float>(rows);
  MeasureMultiply<double>(rows);
  MeasureMultiply<TSCplx>(rows);
  MeasureMultiply<TCplx>(rows);
  MeasureKaiser(rows);
}
