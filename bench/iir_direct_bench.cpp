// The direct form of IIR filters beside a plain loop and liquid-dsp, and what the public calls cost on top of the kernel.
// Times of `iir_call` are nanoseconds a call.
#include <complex>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <liquid/liquid.h>  // after <complex>, whose types it then takes

#include "bench/rows.h"
#include "passband/primitives/iir.h"
#include "passband/streaming/iir_filter.h"

namespace passband::bench {
namespace {

using SignalUtils::IirFilter;
using SignalUtils::IirInit;
using SignalUtils::TIirState;

constexpr std::size_t kSignal = 65536;  // samples that a measured call walks through, in blocks
constexpr int kCalls = 64;              // in one measured turn

// A lowpass with `order` zeros at half the sampling frequency and its poles on an arc around the pass band.
template <class R>
std::vector<R> LowpassTaps(std::size_t order) {
  std::vector<double> b{1};
  std::vector<double> a{1};
  for (std::size_t pair = 0; pair < order / 2; ++pair) {
    const double angle = 0.6 * (static_cast<double>(pair) + 0.5) / (static_cast<double>(order) / 2);
    const double zeros[3]{1, 2, 1};
    const double poles[3]{1, -2 * 0.8 * std::cos(angle), 0.64};
    const double gain = (poles[0] + poles[1] + poles[2]) / 4;
    std::vector<double> longer_b(b.size() + 2);
    std::vector<double> longer_a(a.size() + 2);
    for (std::size_t i = 0; i < b.size(); ++i) {
      for (std::size_t k = 0; k < 3; ++k) {
        longer_b[i + k] += gain * b[i] * zeros[k];
        longer_a[i + k] += a[i] * poles[k];
      }
    }
    b = std::move(longer_b);
    a = std::move(longer_a);
  }
  std::vector<R> taps(b.begin(), b.end());
  taps.insert(taps.end(), a.begin(), a.end());
  return taps;
}

// A filter and the memory that it lives in.
template <Element T>
struct Kernel {
  explicit Kernel(const std::vector<RealOf<T>>& taps) {
    const auto order = static_cast<std::int32_t>(taps.size() / 2) - 1;
    memory.resize(primitives::IirDirectStateSize<T>(order));
    static_cast<void>(primitives::IirDirectCreate<T>(taps.data(), order, memory.data(), state));
  }
  std::vector<std::byte> memory;
  primitives::IirHandle state;
};

// The transposed form as it stands in textbooks.
template <Element T>
class PlainLoop {
 public:
  explicit PlainLoop(std::vector<RealOf<T>> taps) : taps_(std::move(taps)), z_(taps_.size() / 2) {}

  void operator()(const T* x, T* y, std::size_t count) {
    const std::size_t order = taps_.size() / 2 - 1;
    const RealOf<T>* const b = taps_.data();
    const RealOf<T>* const a = b + order + 1;
    T* const z = z_.data();
    for (std::size_t n = 0; n < count; ++n) {
      const T out = z[0] + x[n] * b[0];
      for (std::size_t k = 0; k < order; ++k) z[k] = z[k + 1] + x[n] * b[k + 1] - out * a[k + 1];
      y[n] = out;
    }
  }

 private:
  std::vector<RealOf<T>> taps_;
  std::vector<T> z_;
};

using Liquid = std::unique_ptr<std::remove_pointer_t<iirfilt_rrrf>, decltype(&iirfilt_rrrf_destroy)>;

Liquid CreateLiquid(std::vector<float> taps) {
  const auto half = taps.size() / 2;
  const auto count = static_cast<unsigned>(half);
  return {iirfilt_rrrf_create(taps.data(), count, taps.data() + half, count), &iirfilt_rrrf_destroy};
}

template <Element T>
std::string Params(std::size_t order, std::size_t block) {
  return std::string("type=") + TypeName<T>() + ";order=" + std::to_string(order) + ";block=" + std::to_string(block);
}

// Walks the signal in blocks.
template <class Call>
auto InBlocks(std::size_t block, Call call) {
  return [block, call] {
    for (std::size_t n = 0; n < kSignal; n += block) call(n);
  };
}

template <Element T>
void MeasureBlocks(const Rows& rows, std::size_t order, std::size_t block, double goal) {
  const std::string params = Params<T>(order, block);
  if (!rows.Wanted("iir_direct", params)) return;
  const auto taps = LowpassTaps<RealOf<T>>(order);
  const auto x = Noise<T>(kSignal);
  std::vector<T> y(kSignal);
  const Kernel<T> kernel(taps);
  PlainLoop<T> plain(taps);
  std::vector<Peer> peers{{"plain_loop", InBlocks(block, [&](std::size_t n) { plain(&x[n], &y[n], block); })}};
  if constexpr (std::is_same_v<T, float>) {
    const auto liquid = std::make_shared<Liquid>(CreateLiquid(taps));
    peers.push_back({"liquid", InBlocks(block, [&, liquid](std::size_t n) {
                       iirfilt_rrrf_execute_block(liquid->get(), const_cast<float*>(&x[n]),
                                                  static_cast<unsigned>(block), &y[n]);
                     })});
  }
  rows.Measure("iir_direct", params, {.samples = kSignal, .goal = goal},
               InBlocks(block,
                        [&](std::size_t n) {
                          primitives::IirFilter(*kernel.state, &x[n], &y[n], static_cast<std::int32_t>(block));
                        }),
               peers);
}

template <Element T>
void MeasureBlockCall(const Rows& rows, std::int32_t block) {
  const auto taps = LowpassTaps<RealOf<T>>(4);
  const TVec x{std::span<const T>(Noise<T>(static_cast<std::size_t>(block)))};
  TVec y;
  y.Size(x);
  TIirState state{};
  IirInit(TVec(std::span<const RealOf<T>>(taps)), state, IsComplex<T>);
  const Kernel<T> kernel(taps);
  const T* const src = x.Elements<T>().data();
  T* const dst = y.Elements<T>().data();
  rows.Measure("iir_call", Params<T>(4, static_cast<std::size_t>(block)), {.samples = kCalls},
               [&] {
                 for (int i = 0; i < kCalls; ++i) IirFilter(x, y, state);
               },
               {{"kernel_alone", [&] {
                   for (int i = 0; i < kCalls; ++i) primitives::IirFilter(*kernel.state, src, dst, block);
                 }}});
}

template <Element T>
void MeasureSampleCall(const Rows& rows, std::size_t order) {
  const auto taps = LowpassTaps<RealOf<T>>(order);
  const auto x = Noise<T>(kCalls);
  TIirState state{};
  IirInit(TVec(std::span<const RealOf<T>>(taps)), state, IsComplex<T>);
  const Kernel<T> kernel(taps);
  std::vector<Peer> peers{{"kernel_alone", [&] {
                             for (const T& v : x) Keep(primitives::IirOne(*kernel.state, v));
                           }}};
  if constexpr (std::is_same_v<T, float>) {
    const auto liquid = std::make_shared<Liquid>(CreateLiquid(taps));
    peers.push_back({"liquid", [&, liquid] {
                       float y = 0;
                       for (const float v : x) {
                         iirfilt_rrrf_execute(liquid->get(), v, &y);
                         Keep(y);
                       }
                     }});
  }
  rows.Measure(
      "iir_sample_call", std::string("type=") + TypeName<T>() + ";order=" + std::to_string(order), {.samples = kCalls},
      [&] {
        T y{};
        for (const T& v : x) {
          IirFilter(v, y, state);
          Keep(y);
        }
      },
      peers);
}

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  using namespace passband;
  const bench::Rows rows(argc, argv);
  for (const auto& [order, goal] : {std::pair<std::size_t, double>{4, 0.8}, {8, 0.7}}) {
    for (const std::size_t block : {64, 512, 4096, 65536}) {
      bench::MeasureBlocks<double>(rows, order, block, goal);
      bench::MeasureBlocks<float>(rows, order, block, goal);
      bench::MeasureBlocks<TCplx>(rows, order, block, 0);
    }
  }
  for (const std::int32_t block : {1, 64}) {
    bench::MeasureBlockCall<float>(rows, block);
    bench::MeasureBlockCall<double>(rows, block);
    bench::MeasureBlockCall<TSCplx>(rows, block);
    bench::MeasureBlockCall<TCplx>(rows, block);
  }
  for (const std::size_t order : {4, 8}) {
    bench::MeasureSampleCall<float>(rows, order);
    bench::MeasureSampleCall<double>(rows, order);
    bench::MeasureSampleCall<TCplx>(rows, order);
  }
}
