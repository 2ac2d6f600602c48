// The public calls as a host makes them: what checks and dispatch cost on top of the kernel, and single samples beside
// liquid-dsp. Times of `fir_call` are nanoseconds a call.
#include <complex>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <liquid/liquid.h>  // after <complex>, whose types it then takes

#include "bench/rows.h"
#include "passband/primitives/fir.h"
#include "passband/streaming/fir_filter.h"

namespace passband::bench {
namespace {

using SignalUtils::FirFilter;
using SignalUtils::FirInit;
using SignalUtils::TFirState;

constexpr int kCalls = 64;  // in one measured turn

template <Element T>
void MeasureBlockCall(const Rows& rows, std::int32_t block) {
  const auto taps = Lowpass<T>(8);
  const TVec x{std::span<const T>(Noise<T>(static_cast<std::size_t>(block)))};
  TVec y;
  y.Size(x);
  TFirState state{};
  FirInit(TVec(std::span<const T>(taps)), state);
  primitives::FirHandle kernel;
  if (primitives::FirCreate(taps.data(), 8, kernel) != primitives::Status::Ok) return;
  const T* const src = x.Elements<T>().data();
  T* const dst = y.Elements<T>().data();
  rows.Measure("fir_call", std::string("type=") + TypeName<T>() + ";taps=8;block=" + std::to_string(block),
               {.samples = kCalls},
               [&] {
                 for (int i = 0; i < kCalls; ++i) FirFilter(x, y, state);
               },
               {{"kernel_alone", [&] {
                   for (int i = 0; i < kCalls; ++i) primitives::FirFilter(*kernel, src, dst, block);
                 }}});
}

void MeasureSample(const Rows& rows, unsigned taps, double goal) {
  auto h = Lowpass<float>(taps);
  const auto x = Noise<float>(kCalls);
  TFirState state{};
  FirInit(TVec(std::span<const float>(h)), state);
  const std::unique_ptr<std::remove_pointer_t<firfilt_rrrf>, decltype(&firfilt_rrrf_destroy)> liquid(
      firfilt_rrrf_create(h.data(), taps), &firfilt_rrrf_destroy);
  rows.Measure("fir_sample_call", "type=f32;taps=" + std::to_string(taps), {.samples = kCalls, .goal = goal},
               [&] {
                 double y = 0;
                 for (const float v : x) FirFilter(static_cast<double>(v), y, state);
                 Keep(y);
               },
               {{"liquid", [&] {
                   float y = 0;
                   for (const float v : x) {
                     firfilt_rrrf_push(liquid.get(), v);
                     firfilt_rrrf_execute(liquid.get(), &y);
                   }
                   Keep(y);
                 }}});
}

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  using namespace passband;
  const bench::Rows rows(argc, argv);
  for (const std::int32_t block : {1, 64}) {
    bench::MeasureBlockCall<float>(rows, block);
    bench::MeasureBlockCall<double>(rows, block);
    bench::MeasureBlockCall<TSCplx>(rows, block);
    bench::MeasureBlockCall<TCplx>(rows, block);
  }
  bench::MeasureSample(rows, 32, 0.6);
  bench::MeasureSample(rows, 512, 0.12);
  bench::MeasureSample(rows, 8192, 0.1);
}
