// Averages, peak followers, delays and mean removal, per sample, beside the loops that a user would write. SciPy's rows are
// joined by run.sh.
#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include "bench/rows.h"
#include "passband/streaming/dc_removal.h"
#include "passband/streaming/delay_filter.h"
#include "passband/streaming/differentiate.h"
#include "passband/streaming/exponential_average.h"
#include "passband/streaming/moving_average.h"
#include "passband/streaming/peak_hold.h"
#include "passband/streaming/running_statistics.h"

namespace passband::bench {
namespace {

using namespace SignalUtils;

constexpr std::int32_t kSamples = 16384;

template <RealElement R>
TVec Signal() {
  TVec x;
  x.Size(kSamples, PrecisionOf<R>);
  const std::vector<R> noise = Noise<R>(kSamples);
  std::copy(noise.begin(), noise.end(), x.Elements<R>().begin());
  return x;
}

template <RealElement R>
void MeasureDelay(const Rows& rows, std::int32_t delay, std::int32_t block) {
  const TVec x = Signal<R>();
  TVec part;
  part.SetSubRange(x, 0, block);
  TVec y;
  TDelayFilterState state;
  DelayInit(delay, state, PrecisionOf<R>);
  std::vector<R> copied(static_cast<std::size_t>(block));
  rows.Measure(
      "delay",
      std::string("type=") + TypeName<R>() + ";delay=" + std::to_string(delay) + ";block=" + std::to_string(block),
      {.samples = static_cast<double>(block)}, [&] { DelayFilter(part, y, state); },
      {{"copy", [&] {
          std::copy(part.Elements<R>().begin(), part.Elements<R>().end(), copied.begin());
          Keep(copied);
        }}});
}

template <RealElement R>
void MeasureRecursions(const Rows& rows) {
  const std::string params = std::string("type=") + TypeName<R>() + ";samples=" + std::to_string(kSamples);
  const RowOptions options{.samples = kSamples};
  TVec x = Signal<R>();
  double average = 0;
  rows.Measure("exponential_average", params, options, [&] { ExpAverageFilter(x, average, 1.0); }, {});
  const TVec noise = Signal<R>();
  TSampleAndHoldState hold;
  rows.Measure("peak_hold", params + ";hold=100", options,
               [&] {
                 x.Copy(noise);
                 SampleAndHoldFilter(x, hold, 100);
               },
               {});
  rows.Measure("peak_decay", params, options,
               [&] {
                 x.Copy(noise);
                 SampleAndDecayFilter(x, hold, 0.999);
               },
               {});
  TDiffState diff;
  TIntegrateState integral;
  TVec y;
  rows.Measure("differentiate", params, options, [&] { Differentiate(noise, y, diff, 0.1); }, {});
  rows.Measure("integrate", params, options, [&] { Integrate(noise, y, integral, 0.1); }, {});
}

template <RealElement R>
void MeasureMeans(const Rows& rows) {
  const std::string params = std::string("type=") + TypeName<R>() + ";samples=" + std::to_string(kSamples);
  const RowOptions options{.samples = kSamples};
  const TVec noise = Signal<R>();
  TVec x = noise;
  std::vector<R> plain(kSamples);
  for (const std::int32_t order : {5, 31, 1001}) {
    rows.Measure("moving_average", params + ";order=" + std::to_string(order), options,
                 [&] {
                   x.Copy(noise);
                   MovingAverageFilter(x, order);
                 },
                 {});
  }
  rows.Measure("remove_dc", params, options, [&] { RemoveDC(noise, x); },
               {{"plain", [&] {
                   const auto v = noise.Elements<R>();
                   const R mean = std::accumulate(v.begin(), v.end(), R{0}) / static_cast<R>(kSamples);
                   std::transform(v.begin(), v.end(), plain.begin(), [mean](R s) { return s - mean; });
                   Keep(plain);
                 }}});
  rows.Measure("running_average", params, options, [&] { RunningAverage(x, noise, 10); },
               {{"plain", [&] {
                   const auto v = noise.Elements<R>();
                   for (std::size_t n = 0; n < v.size(); ++n) plain[n] = (plain[n] * R{10} + v[n]) / R{11};
                   Keep(plain);
                 }}});
}

template <RealElement R>
void MeasureAll(const Rows& rows) {
  for (const std::int32_t delay : {10, 10000}) {
    for (const std::int32_t block : {64, 4096}) MeasureDelay<R>(rows, delay, block);
  }
  MeasureRecursions<R>(rows);
  MeasureMeans<R>(rows);
}

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  const passband::bench::Rows rows(argc, argv);
  passband::bench::MeasureAll<double>(rows);
  passband::bench::MeasureAll<float>(rows);
}
