// Amplitudes in decibels per element, beside the loop over the logarithm of the C library; NumPy's rows are joined by
// run.sh. The amplitudes are copied first, by both.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/rows.h"
#include "passband/analysis/decibels.h"
#include "passband/vector_core/vec.h"

namespace passband::bench {
namespace {

template <RealElement R>
void Measure(const Rows& rows, std::int32_t count) {
  std::vector<R> amplitudes = Noise<R>(static_cast<std::size_t>(count));
  for (R& x : amplitudes) x = std::abs(x);
  TVec data;
  data.Size(count, PrecisionOf<R>);
  std::vector<R> plain(amplitudes.size());
  rows.Measure("decibels", std::string("type=") + TypeName<R>() + ";elements=" + std::to_string(count),
               {.samples = static_cast<double>(count)},
               [&] {
                 std::ranges::copy(amplitudes, data.Elements<R>().begin());
                 SignalUtils::AmpltToDb(data, 10, 120, 1);
               },
               {{"plain_loop", [&] {
                   for (std::size_t n = 0; n < plain.size(); ++n) {
                     plain[n] = std::max(R(20) * std::log10(amplitudes[n] / R(1)), R(-120));
                   }
                   Keep(plain[0]);
                 }}});
}

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  const passband::bench::Rows rows(argc, argv);
  for (const std::int32_t count : {4096, 1 << 20}) {
    passband::bench::Measure<float>(rows, count);
    passband::bench::Measure<double>(rows, count);
  }
}
