// Running medians, per sample, over random, ascending and quantised data. GSL's centred median of the same window stands
// beside ours here; Bottleneck's rows are joined by run.sh.
#include <gsl/gsl_movstat.h>
#include <gsl/gsl_vector.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/rows.h"
#include "passband/primitives/median.h"

namespace passband::bench {
namespace {

enum class Order { Random, Ascending, Ties };

const char* NameOf(Order order) {
  return order == Order::Random ? "random" : order == Order::Ascending ? "ascending" : "ties";
}

template <RealElement R>
std::vector<R> Data(std::size_t count, Order order) {
  std::vector<R> x = Noise<R>(count);
  for (std::size_t n = 0; n < count; ++n) {
    if (order == Order::Ascending) x[n] = static_cast<R>(n);
    if (order == Order::Ties) x[n] = std::round(4 * x[n]);
  }
  return x;
}

// GSL has no single precision.
class Gsl {
 public:
  Gsl(const std::vector<double>& x, std::int32_t mask)
      : x_(gsl_vector_alloc(x.size())),
        y_(gsl_vector_alloc(x.size())),
        work_(gsl_movstat_alloc(static_cast<std::size_t>(mask))) {
    for (std::size_t n = 0; n < x.size(); ++n) gsl_vector_set(x_, n, x[n]);
  }
  ~Gsl() {
    gsl_movstat_free(work_);
    gsl_vector_free(x_);
    gsl_vector_free(y_);
  }
  Gsl(const Gsl&) = delete;
  Gsl& operator=(const Gsl&) = delete;
  void operator()() { gsl_movstat_median(GSL_MOVSTAT_END_PADVALUE, x_, y_, work_); }

 private:
  gsl_vector* x_;
  gsl_vector* y_;
  gsl_movstat_workspace* work_;
};

double Goal(std::int32_t mask, bool is_double, Order order) {
  switch (mask) {
    case 5:
      return 0.05;
    case 31:
      return order == Order::Random ? 0.2 : 0.4;
    case 255:
      return is_double ? 0.45 : 0.25;
    default:
      return 1;
  }
}

template <RealElement R>
void MeasureMedian(const Rows& rows, std::int32_t mask, std::int32_t block, Order order) {
  constexpr bool kDouble = sizeof(R) == sizeof(double);
  constexpr std::size_t kCount = 16384;
  const std::string params = std::string("type=") + TypeName<R>() + ";mask=" + std::to_string(mask) +
                             ";block=" + std::to_string(block) + ";data=" + NameOf(order);
  if (!rows.Wanted("median", params)) return;
  const std::vector<R> x = Data<R>(kCount, order);
  std::vector<R> y(kCount);
  primitives::MedianHandle state;
  static_cast<void>(primitives::MedianCreate<R>(mask, state));
  Gsl gsl(Data<double>(kCount, order), mask);
  std::vector<Peer> peers;
  if (block == 4096) peers.push_back({"gsl", [&] { gsl(); }});
  const auto step = static_cast<std::size_t>(block);
  rows.Measure(
      "median", params,
      {.samples = static_cast<double>(kCount), .goal = block == 4096 ? Goal(mask, kDouble, order) : 0},
      [&] {
        for (std::size_t n = 0; n < kCount; n += step) {
          static_cast<void>(primitives::MedianFilter<R>(*state, &x[n], &y[n], block));
        }
        Keep(y);
      },
      peers);
}

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  using namespace passband::bench;
  const Rows rows(argc, argv);
  for (const std::int32_t mask : {5, 9, 31, 255, 4095}) {
    for (const Order order : {Order::Random, Order::Ascending, Order::Ties}) {
      for (const std::int32_t block : {1, 64, 4096}) {
        MeasureMedian<double>(rows, mask, block, order);
        MeasureMedian<float>(rows, mask, block, order);
      }
    }
  }
}
