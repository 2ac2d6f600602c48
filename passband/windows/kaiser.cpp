#include "passband/windows/kaiser.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>

#include "passband/foundation/scalars.h"
#include "passband/vector_core/pool.h"
#include "passband/windows/window_apply_internal.h"

namespace passband::SignalUtils {
namespace {

constexpr double kEpsilon = 0x1p-52;

// I0(beta sqrt(u)) / I0(beta) as a polynomial in u with the positive coefficients (beta / 2)^2k / (k! k! I0(beta)).
class KaiserSeries {
 public:
  static constexpr double kLargestBeta = 64;  // from here on the asymptotic form is shorter

  explicit KaiserSeries(double beta) {
    const double q = beta * beta / 4;
    double term = 1;
    double sum = 1;
    c_[0] = 1;
    while (count_ < c_.size() && term > kEpsilon / 4 * sum) {
      const auto k = static_cast<double>(count_);
      term *= q / (k * k);
      c_[count_++] = term;
      sum += term;
    }
    for (double& c : std::span(c_).first(count_)) c /= sum;
  }

  // Replaces every u by the value there.
  void Evaluate(std::span<double> u) const {
    std::size_t n = 0;
    for (; n + kBlock <= u.size(); n += kBlock) EvaluateBlock(u.data() + n);
    std::array<double, kBlock> rest{};
    const auto tail = u.subspan(n);
    std::copy(tail.begin(), tail.end(), rest.begin());
    EvaluateBlock(rest.data());
    std::copy_n(rest.begin(), tail.size(), tail.begin());
  }

 private:
  static constexpr std::size_t kBlock = 8;  // independent chains that keep the processor busy

  void EvaluateBlock(double* u) const {
    std::array<double, kBlock> sum{};
    for (std::size_t k = count_; k-- > 0;) {
      for (std::size_t j = 0; j < kBlock; ++j) sum[j] = sum[j] * u[j] + c_[k];
    }
    std::copy(sum.begin(), sum.end(), u);
  }

  std::array<double, 128> c_{};  // 101 terms at kLargestBeta
  std::size_t count_ = 1;
};

// exp(-x) I0(x), x >= 0, for every x that is not infinite.
double ScaledBesselI0(double x) {
  if (x < 40) return BesselI0(x) * std::exp(-x);
  double term = 1 / std::sqrt(2 * PI * x);  // asymptotic series; its smallest term is of the order of exp(-2 x)
  double sum = term;
  for (int k = 1; term > kEpsilon / 4 * sum; ++k) {
    term *= (2 * k - 1) * (2 * k - 1) / (8 * k * x);
    sum += term;
  }
  return sum;
}

// The same as KaiserSeries::Evaluate for large beta, where I0 may overflow.
void EvaluateScaled(double beta, std::span<double> u) {
  const double gain = 1 / ScaledBesselI0(beta);
  for (double& value : u) {
    const double root = std::sqrt(value);
    const double exponent = beta * (1 - value) / (1 + root);  // beta (1 - root) without cancellation
    value = ScaledBesselI0(beta * root) * gain * std::exp(-exponent);
  }
}

// Fills w with the window at the places offset + step n of a window of `len` >= 2 points.
void Fill(std::span<double> w, std::int32_t len, double beta, double offset, double step) {
  // The order of these operations decides whether an end point is 0: the reciprocal first.
  const double m = (len - 1) / 2.0;
  const double r = 1 / m;
  double n = 0;
  for (double& u : w) {
    const double t = (offset + step * n++ - m) * r;
    u = 1 - t * t;
  }
  const auto inside = [](double u) { return u > 0; };  // one stretch, as t is monotonic; none when it is NaN
  const auto first = std::find_if(w.begin(), w.end(), inside);
  const auto last = std::find_if_not(first, w.end(), inside);
  const std::span<double> lit(first, last);
  if (beta <= KaiserSeries::kLargestBeta) {
    KaiserSeries(beta).Evaluate(lit);
  } else {
    EvaluateScaled(beta, lit);
  }
  std::fill(w.begin(), first, 0.0);
  std::fill(last, w.end(), 0.0);
}

// Ends that are as good as 0 in the precision of the data become 0; then the window is applied.
void Apply(TVec& data, std::int32_t index, std::span<double> w) {
  const double limit = 0.0001 * (data.IsDouble() ? kEpsilon : ToDouble(EPS_SINGLE));
  for (double* const end : {&w.front(), &w.back()}) {
    if (*end < limit) *end = 0;
  }
  detail::ApplyWindow(data, index, w);
}

}  // namespace

TVec& Kaiser(TVec& Vec, double Beta, std::int32_t Index, std::int32_t Len) {
  Vec.ValidateParams(Index, Len);
  if (Len < 2) return Vec;  // a window of one point is a single 1
  Borrowed<TVec> work;
  work->Size(Len, TMtxFloatPrecision::DoubleReal);
  const std::span<double> w = work->Values();
  const std::size_t half = (w.size() + 1) / 2;
  Fill(w.first(half), Len, std::abs(Beta), 0, 1);
  std::reverse_copy(w.begin(), w.begin() + Len / 2, w.begin() + (Len + 1) / 2);  // t is odd about M to the last bit
  Apply(Vec, Index, w);
  return Vec;
}

TVec& FractionalKaiser(TVec& Vec, double Beta, double Offset, double Step, std::int32_t Index, std::int32_t Len) {
  if (!CheckRange(0, Offset, 1)) ERaise("FractionalKaiser: Offset parameter must be between 0 and 1!");
  Vec.ValidateParams(Index, Len);
  if (Len < 2) return Vec;
  Borrowed<TVec> work;
  work->Size(Len, TMtxFloatPrecision::DoubleReal);
  Fill(work->Values(), Len, std::abs(Beta), Offset, Step);
  Apply(Vec, Index, work->Values());
  return Vec;
}

double BesselI0(double X) {
  const double square = X * X;
  double term = 1;
  double sum = 1;
  for (double k = 2; term > 2 * kEpsilon * sum; k += 2) {  // false for a NaN and for an infinite sum
    term = term * square / (k * k);
    sum += term;
  }
  return sum;
}

double KaiserBetaWindowAtt(double Att) {
  LimitRange(13, Att, 300);
  const double excess = Att - 13.26;
  if (excess < 0) return 0;
  if (Att <= 60) return 0.76609 * std::pow(excess, 0.4) + 0.09834 * excess;
  return 0.12438 * (Att + 6.3);
}

double KaiserBetaWindow(double Ripple) { return KaiserBetaWindowAtt(-20 * std::log10(Ripple)); }

}  // namespace passband::SignalUtils
