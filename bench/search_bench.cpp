// Counts and searches per sample over noise, in the caches and in memory, beside the plain loops; NumPy's rows are joined
// by run.sh. Rows with `against=limit` are beside the sum of the samples as 64-bit words: reading, and nothing else.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "bench/rows.h"
#include "passband/analysis/crossings.h"
#include "passband/analysis/extrema.h"
#include "passband/analysis/nearest_element.h"

namespace passband::bench {
namespace {

template <RealElement R>
std::int32_t PlainMaxima(const std::vector<R>& x) {
  std::int32_t count = 0;
  for (std::size_t n = 1; n + 1 < x.size(); ++n) count += x[n - 1] < x[n] && x[n + 1] < x[n];
  return count;
}

template <RealElement R>
std::int32_t PlainCrossings(const std::vector<R>& x) {
  std::int32_t count = 0;
  for (std::size_t n = 1; n < x.size(); ++n) count += (x[n - 1] > 0) != (x[n] > 0);
  return count;
}

template <RealElement R>
std::size_t PlainNearest(const std::vector<R>& x, R value) {
  std::size_t nearest = 0;
  for (std::size_t n = 1; n < x.size(); ++n) {
    if (std::abs(value - x[n]) < std::abs(value - x[nearest])) nearest = n;
  }
  return nearest;
}

template <RealElement R>
std::uint64_t Read(const std::vector<R>& x) {
  std::uint64_t sum = 0;
  const char* const bytes = reinterpret_cast<const char*>(x.data());
  for (std::size_t n = 0; n + 8 <= x.size() * sizeof(R); n += 8) {
    std::uint64_t word;
    std::memcpy(&word, bytes + n, 8);
    sum += word;
  }
  return sum;
}

template <RealElement R>
void Measure(const Rows& rows, std::int32_t count) {
  const std::vector<R> samples = Noise<R>(static_cast<std::size_t>(count));
  const TVec x{std::span<const R>(samples)};
  const std::string params = std::string("type=") + TypeName<R>() + ";samples=" + std::to_string(count);
  const RowOptions options{.samples = static_cast<double>(count)};
  const auto measure = [&](const std::string& kernel, const std::function<void()>& ours, const Peer& plain) {
    rows.Measure(kernel, params, options, ours, {plain});
    rows.Measure(kernel, params + ";against=limit", options, ours, {{"read", [&] { Keep(Read(samples)); }}});
  };
  measure("maximum_count", [&] { Keep(SignalUtils::MaximumCount(x)); },
          {"plain_loop", [&] { Keep(PlainMaxima(samples)); }});
  measure("zero_crossing_count", [&] { Keep(SignalUtils::ZeroCrossingCount(x)); },
          {"plain_loop", [&] { Keep(PlainCrossings(samples)); }});
  measure("find_nearest", [&] { Keep(SignalUtils::FindNearest(x, 0.1)); },
          {"plain_loop", [&] { Keep(PlainNearest(samples, R(0.1))); }});
}

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  const passband::bench::Rows rows(argc, argv);
  for (const std::int32_t count : {4096, 100000, 10000000}) {
    passband::bench::Measure<float>(rows, count);
    passband::bench::Measure<double>(rows, count);
  }
}
