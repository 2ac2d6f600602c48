// Cepstra per sample, beside what they cannot do without: two transforms of FFTW, planned like ours, and a pass of
// logarithms (`against=limit`). NumPy's rows are joined by run.sh.
#include <fftw3.h>

#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "bench/rows.h"
#include "passband/analysis/cepstrum.h"

namespace passband::bench {
namespace {

class ByFftw {
 public:
  explicit ByFftw(const std::vector<double>& signal)
      : signal_(signal),
        count_(signal.size()),
        x_(fftw_alloc_real(count_)),
        X_(fftw_alloc_complex(count_ / 2 + 1)),
        forward_(fftw_plan_dft_r2c_1d(static_cast<int>(count_), x_.get(), X_.get(), FFTW_ESTIMATE)),
        inverse_(fftw_plan_dft_c2r_1d(static_cast<int>(count_), X_.get(), x_.get(), FFTW_ESTIMATE)) {}
  double operator()() {
    std::copy(signal_.begin(), signal_.end(), x_.get());
    fftw_execute(forward_.get());
    for (std::size_t k = 0; k <= count_ / 2; ++k) {
      const double power = X_[k][0] * X_[k][0] + X_[k][1] * X_[k][1];
      X_[k][0] = std::log(power) / (2 * static_cast<double>(count_));
      X_[k][1] = 0;
    }
    fftw_execute(inverse_.get());
    return x_[1];
  }

 private:
  struct Free {
    void operator()(void* p) const { fftw_free(p); }
    void operator()(fftw_plan_s* plan) const { fftw_destroy_plan(plan); }
  };

  const std::vector<double>& signal_;
  std::size_t count_;
  std::unique_ptr<double[], Free> x_;
  std::unique_ptr<fftw_complex[], Free> X_;
  std::unique_ptr<fftw_plan_s, Free> forward_, inverse_;
};

void Measure(const Rows& rows, std::int32_t count) {
  const std::vector<double> samples = Noise<double>(static_cast<std::size_t>(count));
  const TVec x{std::span<const double>(samples)};
  TVec cepstrum;
  ByFftw by_fftw(samples);
  const std::string params = "type=f64;samples=" + std::to_string(count);
  rows.Measure("real_cepstrum", params + ";against=limit", {.samples = static_cast<double>(count)},
               [&] { SignalUtils::RealCepstrum(x, cepstrum); }, {{"fftw_and_logarithms", [&] { Keep(by_fftw()); }}});
  rows.Measure("real_cepstrum", params, {.samples = static_cast<double>(count)},
               [&] { SignalUtils::RealCepstrum(x, cepstrum); }, {});
  rows.Measure("complex_cepstrum", params, {.samples = static_cast<double>(count)},
               [&] { SignalUtils::CplxCepstrum(x, cepstrum); }, {});
}

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  const passband::bench::Rows rows(argc, argv);
  for (const std::int32_t count : {1024, 1 << 16, 1 << 20}) passband::bench::Measure(rows, count);
}
