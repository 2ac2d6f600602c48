// Burg's method at order 32 per sample, beside Eigen pass by pass and the loops of the textbooks. Both peers are built
// for the instruction set of this machine (see CMakeLists.txt); NumPy's row is joined by run.sh.
#include <Eigen/Core>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/rows.h"
#include "passband/analysis/ar_models.h"

namespace passband::bench {
namespace {

constexpr std::int32_t kOrder = 32;

// With its memory, which is not allocated again from call to call.
template <RealElement R>
class ByEigen {
  using Array = Eigen::Array<R, Eigen::Dynamic, 1>;

 public:
  explicit ByEigen(const std::vector<R>& signal)
      : signal_(Eigen::Map<const Array>(signal.data(), static_cast<Eigen::Index>(signal.size()))),
        next_(signal_.size()) {}
  R operator()() {
    f_ = signal_;
    b_ = signal_;
    a_ = Array::Zero(kOrder + 1);
    a_[0] = 1;
    Eigen::Index count = f_.size() - 1;
    for (std::int32_t m = 1; m <= kOrder; ++m, --count) {
      const auto f = f_.segment(1, count);
      const auto b = b_.head(count);
      const R k = -2 * (f * b).sum() / (f.square().sum() + b.square().sum());
      next_.head(count) = f + k * b;
      b_.head(count) = b + k * f;
      f_.head(count) = next_.head(count);
      reversed_ = a_.head(m + 1).reverse();
      a_.head(m + 1) += k * reversed_;
    }
    return a_[kOrder];
  }

 private:
  Array signal_, next_, f_, b_, a_, reversed_;
};

template <RealElement R>
class ByLoops {
 public:
  explicit ByLoops(const std::vector<R>& signal) : signal_(signal) {}
  R operator()() {
    f_ = signal_;
    b_ = signal_;
    R k = 0;
    for (std::size_t m = 1; m <= kOrder; ++m) {
      R product = 0;
      R power = 0;
      for (std::size_t n = m; n < f_.size(); ++n) {
        product += f_[n] * b_[n - m];
        power += f_[n] * f_[n] + b_[n - m] * b_[n - m];
      }
      k = -2 * product / power;
      for (std::size_t n = m; n < f_.size(); ++n) {
        const R f = f_[n];
        f_[n] += k * b_[n - m];
        b_[n - m] += k * f;
      }
    }
    return k;
  }

 private:
  std::vector<R> signal_, f_, b_;
};

template <RealElement R>
void Measure(const Rows& rows, std::int32_t count, double goal) {
  const std::vector<R> signal = Noise<R>(static_cast<std::size_t>(count));
  const TVec x{std::span<const R>(signal)};
  ByEigen<R> by_eigen(signal);
  ByLoops<R> by_loops(signal);
  TVec a;
  TVec reflection;
  double variance = 0;
  rows.Measure("ar_burg", std::string("type=") + TypeName<R>() + ";order=32;samples=" + std::to_string(count),
               {.samples = static_cast<double>(count), .goal = goal},
               [&] { SignalUtils::ArBurg(x, kOrder, a, reflection, variance); },
               {{"eigen_passes", [&] { Keep(by_eigen()); }}, {"plain_loops", [&] { Keep(by_loops()); }}});
}

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  const passband::bench::Rows rows(argc, argv);
  for (const std::int32_t count : {1000, 10000, 100000}) {
    const double goal = count == 100000 ? 0.4 : 0;
    passband::bench::Measure<float>(rows, count, goal);
    passband::bench::Measure<double>(rows, count, goal);
  }
}
