// Single-rate FIR, block by block and sample by sample, beside liquid-dsp and overlap-save on FFTW; and against the
// multiply-adds that the core can do, where there is a goal for that.
#include <array>
#include <complex>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <liquid/liquid.h>  // after <complex>, whose types it then takes

#include "bench/fftw_fir.h"
#include "bench/limits.h"
#include "bench/rows.h"
#include "passband/primitives/fir.h"

namespace passband::bench {
namespace {

using primitives::FirHandle;

constexpr std::size_t kSignal = 4096;  // samples that a measured call walks through, in blocks

// Walks the signal in blocks.
template <class Call>
auto InBlocks(std::size_t block, Call call) {
  return [block, call] {
    for (std::size_t n = 0; n < kSignal; n += block) call(n);
  };
}

template <Element T>
std::string Params(std::size_t taps, std::size_t block) {
  return std::string("type=") + TypeName<T>() + ";taps=" + std::to_string(taps) + ";block=" + std::to_string(block);
}

// liquid-dsp works in single precision only.
template <Element T>
struct Liquid;
template <>
struct Liquid<float> {
  using Handle = std::unique_ptr<std::remove_pointer_t<firfilt_rrrf>, decltype(&firfilt_rrrf_destroy)>;
  static Handle Create(std::vector<float> h) {
    return {firfilt_rrrf_create(h.data(), static_cast<unsigned>(h.size())), &firfilt_rrrf_destroy};
  }
  static void Block(const Handle& q, const float* x, std::size_t count, float* y) {
    firfilt_rrrf_execute_block(q.get(), const_cast<float*>(x), static_cast<unsigned>(count), y);
  }
  static float One(const Handle& q, float x) {
    float y;
    firfilt_rrrf_push(q.get(), x);
    firfilt_rrrf_execute(q.get(), &y);
    return y;
  }
};
template <>
struct Liquid<TSCplx> {
  using Single = std::complex<float>;
  using Handle = std::unique_ptr<std::remove_pointer_t<firfilt_cccf>, decltype(&firfilt_cccf_destroy)>;
  static Handle Create(std::vector<TSCplx> h) {
    return {firfilt_cccf_create(reinterpret_cast<Single*>(h.data()), static_cast<unsigned>(h.size())),
            &firfilt_cccf_destroy};
  }
  static void Block(const Handle& q, const TSCplx* x, std::size_t count, TSCplx* y) {
    firfilt_cccf_execute_block(q.get(), reinterpret_cast<Single*>(const_cast<TSCplx*>(x)), static_cast<unsigned>(count),
                               reinterpret_cast<Single*>(y));
  }
  static TSCplx One(const Handle& q, TSCplx x) {
    Single y;
    firfilt_cccf_push(q.get(), x);
    firfilt_cccf_execute(q.get(), &y);
    return y;
  }
};
template <Element T>
constexpr bool kHasLiquid = std::is_same_v<RealOf<T>, float>;

template <Element T>
void MeasureBlocks(const Rows& rows, std::size_t taps, std::size_t block, double goal, double limit_goal) {
  const std::string params = Params<T>(taps, block);
  if (!rows.Wanted("fir_block", params)) return;
  const auto h = Lowpass<T>(taps);
  const auto x = Noise<T>(kSignal);
  std::vector<T> y(kSignal);
  FirHandle state;
  if (primitives::FirCreate(h.data(), static_cast<std::int32_t>(taps), state) != primitives::Status::Ok) return;
  const auto ours = InBlocks(
      block, [&](std::size_t n) { primitives::FirFilter(*state, &x[n], &y[n], static_cast<std::int32_t>(block)); });
  // The whole transform of a block and its history; and long transforms, which add a delay.
  FftwFir<T> partitioned(h, 2 * block, block);
  std::vector<Peer> peers{
      {"fftw_partitioned", InBlocks(block, [&](std::size_t n) { partitioned(&x[n], &y[n]); }), kSignal}};
  std::size_t size = 1024;
  while (size < 4 * taps) size *= 2;
  FftwFir<T> save(h, size, size - taps + 1);
  std::vector<T> long_x = Noise<T>(save.Hop());
  std::vector<T> long_y(save.Hop());
  if (block >= 512) {
    peers.push_back(
        {"fftw_overlap_save", [&] { save(long_x.data(), long_y.data()); }, static_cast<double>(save.Hop())});
  }
  if constexpr (kHasLiquid<T>) {
    const auto liquid = std::make_shared<typename Liquid<T>::Handle>(Liquid<T>::Create(h));
    peers.push_back(
        {"liquid", InBlocks(block, [&, liquid](std::size_t n) { Liquid<T>::Block(*liquid, &x[n], block, &y[n]); })});
  }
  const RowOptions options{.samples = kSignal, .goal = goal};
  rows.Measure("fir_block", params, options, ours, peers);
  if (limit_goal > 0 && HasMultiplyAdds()) {
    // Real multiply-adds of one output; a complex one takes four.
    const double products = static_cast<double>(taps) * (IsComplex<T> ? 4 : 1);
    rows.Measure("fir_block", params + ";against=limit", {.samples = kSignal, .goal = limit_goal}, ours,
                 {{"multiply_adds", [&] { MultiplyAdds<RealOf<T>>(products * kSignal); }}});
  }
}

template <Element T>
void MeasureOne(const Rows& rows, std::size_t taps, double goal) {
  const std::string params = Params<T>(taps, 1);
  if (!rows.Wanted("fir_one", params)) return;
  const auto h = Lowpass<T>(taps);
  const auto x = Noise<T>(256);
  FirHandle state;
  if (primitives::FirCreate(h.data(), static_cast<std::int32_t>(taps), state) != primitives::Status::Ok) return;
  std::vector<Peer> peers;
  if constexpr (kHasLiquid<T>) {
    const auto liquid = std::make_shared<typename Liquid<T>::Handle>(Liquid<T>::Create(h));
    peers.push_back({"liquid", [&, liquid] {
                       for (const T& v : x) Keep(Liquid<T>::One(*liquid, v));
                     }});
  }
  rows.Measure(
      "fir_one", params, {.samples = 256, .goal = goal},
      [&] {
        for (const T& v : x) Keep(primitives::FirOne(*state, v));
      },
      peers);
}

// The goals: against the fastest peer (0 = none) and against the limit, for each element type, taps and block.
struct BlockGoal {
  std::size_t taps, block;
  double f32, f32_limit, f64, f64_limit, c32, c32_limit;
};
constexpr std::array<BlockGoal, 12> kBlockGoals{{
    {8, 64, 0.2, 2.5, 0, 0, 0, 0},
    {32, 64, 0.2, 2.3, 0, 0, 0, 0},
    {128, 64, 0.9, 2.2, 0, 0, 0, 0},
    {512, 64, 0, 0, 0, 0, 0, 0},
    {2048, 64, 1, 0, 0, 0, 0, 0},
    {8192, 64, 1, 0, 0, 0, 0, 0},
    {8, 512, 0.5, 3, 0.5, 2.2, 0.6, 2.5},
    {32, 512, 0.45, 2, 0.35, 1.3, 0.25, 1.2},
    {128, 512, 1, 1.25, 1.1, 1.25, 1.1, 0},
    {512, 512, 1.25, 0, 1.25, 0, 0, 0},
    {2048, 512, 1.25, 0, 1.25, 0, 0, 0},
    {8192, 512, 1.25, 0, 1.25, 0, 0, 0},
}};

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  using namespace passband;
  const bench::Rows rows(argc, argv);
  for (const bench::BlockGoal& g : bench::kBlockGoals) {
    bench::MeasureBlocks<float>(rows, g.taps, g.block, g.f32, g.f32_limit);
    bench::MeasureBlocks<double>(rows, g.taps, g.block, g.f64, g.f64_limit);
    bench::MeasureBlocks<TSCplx>(rows, g.taps, g.block, g.c32, g.c32_limit);
    bench::MeasureBlocks<TCplx>(rows, g.taps, g.block, 0, 0);
  }
  for (const auto& [taps, goal] : {std::pair{8, 0.0}, {32, 0.6}, {128, 0.0}, {512, 0.12}, {2048, 0.0}, {8192, 0.1}}) {
    const auto count = static_cast<std::size_t>(taps);
    bench::MeasureOne<float>(rows, count, goal);
    bench::MeasureOne<double>(rows, count, 0);
    bench::MeasureOne<TSCplx>(rows, count, 0);
    bench::MeasureOne<TCplx>(rows, count, 0);
  }
}
