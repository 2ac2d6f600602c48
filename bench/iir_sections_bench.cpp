// Cascades of second-order sections beside liquid-dsp and SciPy, which run.sh joins and which walks the whole signal in
// one call, and in rows of their own beside a plain loop. Times of `iir_sections_sample` are nanoseconds a call.
#include <cmath>
#include <complex>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <liquid/liquid.h>  // after <complex>, whose types it then takes

#include "bench/rows.h"
#include "passband/primitives/iir.h"

namespace passband::bench {
namespace {

constexpr std::size_t kSignal = 65536;  // samples that a measured call walks through, in blocks
constexpr int kCalls = 64;              // single samples in one measured turn

// Low-pass sections with zeros at half the sampling frequency, poles at a radius of 0.8 on an arc around the pass band.
template <class R>
std::vector<R> LowpassSections(std::size_t sections) {
  std::vector<R> taps;
  for (std::size_t k = 0; k < sections; ++k) {
    const double angle = 0.6 * (static_cast<double>(k) + 0.5) / static_cast<double>(sections);
    const double a1 = -2 * 0.8 * std::cos(angle);
    const double gain = (1 + a1 + 0.64) / 4;
    for (const double v : {gain, 2 * gain, gain, 1.0, a1, 0.64}) taps.push_back(static_cast<R>(v));
  }
  return taps;
}

// A filter and the memory that it lives in.
template <Element T>
struct Kernel {
  explicit Kernel(const std::vector<RealOf<T>>& taps) {
    const auto sections = static_cast<std::int32_t>(taps.size() / 6);
    memory.resize(primitives::IirSectionsStateSize<T>(sections));
    static_cast<void>(primitives::IirSectionsCreate<T>(taps.data(), sections, memory.data(), state));
  }
  std::vector<std::byte> memory;
  primitives::IirHandle state;
};

// Sample by sample through all sections, in transposed form, as it stands in textbooks.
template <Element T>
class PlainLoop {
 public:
  explicit PlainLoop(std::vector<RealOf<T>> taps) : taps_(std::move(taps)), z_(taps_.size() / 3) {}

  T operator()(T x) {
    for (std::size_t k = 0; 2 * k < z_.size(); ++k) {
      const RealOf<T>* const c = taps_.data() + 6 * k;
      const T y = x * c[0] + z_[2 * k];
      z_[2 * k] = x * c[1] - y * c[4] + z_[2 * k + 1];
      z_[2 * k + 1] = x * c[2] - y * c[5];
      x = y;
    }
    return x;
  }

 private:
  std::vector<RealOf<T>> taps_;
  std::vector<T> z_;
};

using Liquid = std::unique_ptr<std::remove_pointer_t<iirfilt_rrrf>, decltype(&iirfilt_rrrf_destroy)>;

std::shared_ptr<Liquid> CreateLiquid(const std::vector<float>& taps) {
  std::vector<float> b;
  std::vector<float> a;
  for (std::size_t k = 0; k < taps.size(); k += 6) {
    b.insert(b.end(), {taps[k], taps[k + 1], taps[k + 2]});
    a.insert(a.end(), {taps[k + 3], taps[k + 4], taps[k + 5]});
  }
  return std::make_shared<Liquid>(iirfilt_rrrf_create_sos(b.data(), a.data(), static_cast<unsigned>(taps.size() / 6)),
                                  &iirfilt_rrrf_destroy);
}

// Walks the signal in blocks.
template <class Call>
auto InBlocks(std::size_t block, Call call) {
  return [block, call] {
    for (std::size_t n = 0; n < kSignal; n += block) call(n);
  };
}

template <Element T>
void MeasureBlocks(const Rows& rows, std::size_t sections, std::size_t block, double goal) {
  const std::string params = std::string("type=") + TypeName<T>() + ";sections=" + std::to_string(sections) +
                             ";block=" + std::to_string(block);
  if (!rows.Wanted("iir_sections", params) && !rows.Wanted("iir_sections_plain", params)) return;
  const auto taps = LowpassSections<RealOf<T>>(sections);
  const auto x = Noise<T>(kSignal);
  std::vector<T> y(kSignal);
  const Kernel<T> kernel(taps);
  PlainLoop<T> plain(taps);
  std::vector<Peer> peers;
  if constexpr (std::is_same_v<T, float>) {
    const auto liquid = CreateLiquid(taps);
    peers.push_back({"liquid", InBlocks(block, [&, liquid](std::size_t n) {
                       iirfilt_rrrf_execute_block(liquid->get(), const_cast<float*>(&x[n]),
                                                  static_cast<unsigned>(block), &y[n]);
                     })});
  }
  const auto ours = InBlocks(block, [&](std::size_t n) {
    primitives::IirFilter(*kernel.state, &x[n], &y[n], static_cast<std::int32_t>(block));
  });
  rows.Measure("iir_sections", params, {.samples = kSignal, .goal = goal}, ours, peers);
  rows.Measure("iir_sections_plain", params, {.samples = kSignal}, ours,
               {{"plain_loop", InBlocks(block, [&](std::size_t n) {
                   for (std::size_t i = n; i < n + block; ++i) y[i] = plain(x[i]);
                 })}});
}

template <Element T>
void MeasureSamples(const Rows& rows, std::size_t sections, double goal) {
  const auto taps = LowpassSections<RealOf<T>>(sections);
  const auto x = Noise<T>(kCalls);
  const Kernel<T> kernel(taps);
  std::vector<Peer> peers;
  if constexpr (std::is_same_v<T, float>) {
    const auto liquid = CreateLiquid(taps);
    peers.push_back({"liquid", [&, liquid] {
                       float y = 0;
                       for (const float v : x) {
                         iirfilt_rrrf_execute(liquid->get(), v, &y);
                         Keep(y);
                       }
                     }});
  }
  rows.Measure(
      "iir_sections_sample", std::string("type=") + TypeName<T>() + ";sections=" + std::to_string(sections),
      {.samples = kCalls, .goal = goal},
      [&] {
        for (const T& v : x) Keep(primitives::IirOne(*kernel.state, v));
      },
      peers);
}

// Goals for blocks by the type of the data, for single samples.
struct Goals {
  std::size_t sections;
  double f32, f64, complex, sample;
};

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  using namespace passband;
  const bench::Rows rows(argc, argv);
  for (const bench::Goals& goals :
       {bench::Goals{1, 0.09, 0.12, 0.3, 0.7}, bench::Goals{2, 0.14, 0.19, 0.3, 0}, bench::Goals{4, 0.21, 0.32, 0.3, 0},
        bench::Goals{8, 0.18, 0.19, 0.3, 0.35}, bench::Goals{25, 0.08, 0.115, 0.3, 0.25}}) {
    for (const std::size_t block : {64, 512, 4096}) {
      bench::MeasureBlocks<float>(rows, goals.sections, block, goals.f32);
      bench::MeasureBlocks<double>(rows, goals.sections, block, goals.f64);
      bench::MeasureBlocks<TSCplx>(rows, goals.sections, block, goals.complex);
      bench::MeasureBlocks<TCplx>(rows, goals.sections, block, goals.complex);
    }
    bench::MeasureSamples<float>(rows, goals.sections, goals.sample);
    bench::MeasureSamples<double>(rows, goals.sections, 0);
    bench::MeasureSamples<TCplx>(rows, goals.sections, 0);
  }
}
