// Multi-rate FIR beside liquid-dsp, and against the multiply-adds that the core can do.
#include <complex>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <liquid/liquid.h>  // after <complex>, whose types it then takes

#include "bench/limits.h"
#include "bench/rows.h"
#include "passband/primitives/fir.h"

namespace passband::bench {
namespace {

using primitives::FirHandle;

struct Setting {
  std::int32_t up, down, taps;
  std::int32_t iterations;  // of one call
  double f32_goal, f64_goal;
  double f32_limit_goal, f64_limit_goal;
};

// liquid-dsp, in single precision: its resampler for both factors above 1, its interpolator, its decimator.
class Liquid {
 public:
  Liquid(const Setting& s, std::vector<float> h) : up_(Unsigned(s.up)), down_(Unsigned(s.down)) {
    const auto taps = Unsigned(s.taps);
    if (s.up > 1 && s.down > 1) {
      resampler_.reset(rresamp_rrrf_create(up_, down_, taps / up_ / 2, h.data()));
    } else if (s.up > 1) {
      interpolator_.reset(firinterp_rrrf_create(up_, h.data(), taps));
    } else {
      decimator_.reset(firdecim_rrrf_create(down_, h.data(), taps));
    }
  }

  void operator()(std::vector<float>& x, std::vector<float>& y, std::int32_t iterations) const {
    const auto count = Unsigned(iterations);
    if (resampler_) {
      for (unsigned n = 0; n < count; ++n) rresamp_rrrf_execute(resampler_.get(), &x[n * down_], &y[n * up_]);
    } else if (interpolator_) {
      firinterp_rrrf_execute_block(interpolator_.get(), x.data(), count, y.data());
    } else {
      firdecim_rrrf_execute_block(decimator_.get(), x.data(), count, y.data());
    }
  }

 private:
  static unsigned Unsigned(std::int32_t n) { return static_cast<unsigned>(n); }

  template <auto kDestroy>
  struct Destroy {
    template <class Q>
    void operator()(Q* q) const {
      kDestroy(q);
    }
  };
  template <class Q, auto kDestroy>
  using Owned = std::unique_ptr<std::remove_pointer_t<Q>, Destroy<kDestroy>>;

  unsigned up_, down_;
  Owned<rresamp_rrrf, rresamp_rrrf_destroy> resampler_;
  Owned<firinterp_rrrf, firinterp_rrrf_destroy> interpolator_;
  Owned<firdecim_rrrf, firdecim_rrrf_destroy> decimator_;
};

template <Element T>
void Measure(const Rows& rows, const Setting& s, double goal, double limit_goal) {
  const std::string params = std::string("type=") + TypeName<T>() + ";up=" + std::to_string(s.up) +
                             ";down=" + std::to_string(s.down) + ";taps=" + std::to_string(s.taps) +
                             ";iterations=" + std::to_string(s.iterations);
  if (!rows.Wanted("fir_multirate", params)) return;
  const auto h = Lowpass<T>(static_cast<std::size_t>(s.taps), 0.4 / std::max(s.up, s.down));
  auto x = Noise<T>(static_cast<std::size_t>(s.iterations) * static_cast<std::size_t>(s.down));
  std::vector<T> y(static_cast<std::size_t>(s.iterations) * static_cast<std::size_t>(s.up));
  FirHandle state;
  if (primitives::FirMultiRateCreate(h.data(), s.taps, s.up, 0, s.down, 0, state) != primitives::Status::Ok) return;
  const auto ours = [&] { primitives::FirMultiRateFilter(*state, x.data(), y.data(), s.iterations); };
  std::vector<Peer> peers;
  if constexpr (std::is_same_v<T, float>) {
    const auto liquid = std::make_shared<const Liquid>(s, h);
    peers.push_back({"liquid", [&, liquid] { (*liquid)(x, y, s.iterations); }});
  }
  const auto outputs = static_cast<double>(y.size());
  rows.Measure("fir_multirate", params, {.samples = outputs, .goal = goal}, ours, peers);
  if (limit_goal > 0 && HasMultiplyAdds()) {
    const double products = static_cast<double>(s.taps) / s.up * outputs;
    rows.Measure("fir_multirate", params + ";against=limit", {.samples = outputs, .goal = limit_goal}, ours,
                 {{"multiply_adds", [products] { MultiplyAdds<RealOf<T>>(products); }}});
  }
}

constexpr Setting kSettings[] = {
    {3, 2, 96, 1364, 0.2, 0.2, 7, 4},  {160, 147, 5120, 28, 0.2, 0.2, 7, 4}, {8, 1, 256, 512, 0.15, 0.15, 7, 4},
    {1, 8, 256, 512, 0.06, 0.1, 3, 3}, {3, 2, 96, 32, 0, 0, 0, 0},           {1, 8, 256, 8, 0, 0, 0, 0},
    {147, 160, 4704, 28, 0, 0, 0, 0},  {1, 2, 64, 2048, 0, 0, 0, 0},         {1, 100, 400, 64, 0, 0, 0, 0},
    {1000, 999, 2000, 4, 0, 0, 0, 0},
};

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  using namespace passband;
  const bench::Rows rows(argc, argv);
  for (const bench::Setting& s : bench::kSettings) {
    bench::Measure<float>(rows, s, s.f32_goal, s.f32_limit_goal);
    bench::Measure<double>(rows, s, s.f64_goal, s.f64_limit_goal);
    bench::Measure<TSCplx>(rows, s, 0, 0);
    bench::Measure<TCplx>(rows, s, 0, 0);
  }
}
