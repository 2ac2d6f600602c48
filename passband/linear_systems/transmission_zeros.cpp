#include "passband/linear_systems/transmission_zeros.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "passband/foundation/exceptions.h"
#include "passband/linear_systems/roots_internal.h"
#include "passband/linear_systems/scaled_product_internal.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/generalized_eigenvalues.h"
#include "passband/vector_core/pool.h"

namespace passband::LinearSystems {
namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();

// [A B; C D] with n states, row by row; the last row and column are those of output and input.
class SystemMatrix {
 public:
  SystemMatrix(const TMtx& a, const TVec& b, const TVec& c, double d)
      : states_(static_cast<std::size_t>(b.Length())), width_(states_ + 1), m_(width_ * width_) {
    for (std::size_t i = 0; i < states_; ++i) {
      const auto row = static_cast<std::int32_t>(i);
      for (std::size_t j = 0; j < states_; ++j) At(i, j) = a(row, static_cast<std::int32_t>(j));
      At(i, states_) = b[row];
      At(states_, i) = c[row];
    }
    At(states_, states_) = d;
  }

  std::size_t States() const { return states_; }
  double At(std::size_t i, std::size_t j) const { return m_[i * width_ + j]; }
  double Feedthrough() const { return At(states_, states_); }
  // The Euclidean norms of the column of the input and of the row of the output, over the states.
  double InputNorm() const {
    return Norm([&](std::size_t i) { return At(i, states_); });
  }
  double OutputNorm() const {
    return Norm([&](std::size_t j) { return At(states_, j); });
  }
  double StateNorm() const {
    double norm = 0;
    for (std::size_t i = 0; i < states_; ++i) {
      norm = std::hypot(norm, Norm([&](std::size_t j) { return At(i, j); }));
    }
    return norm;
  }

  // Scales states, input and output by powers of two until rows and columns are of like size: a similarity, which leaves
  // zeros and gain alone.
  void Balance() {
    constexpr int kMostSweeps = 100;
    bool changed = true;
    for (int sweep = 0; changed && sweep < kMostSweeps; ++sweep) {
      changed = false;
      for (std::size_t i = 0; i < width_; ++i) changed = ScaleLine(i) || changed;
    }
  }

  // Turns the output to the last state alone and makes that state's row the new output, its column vanishes with it.
  // Returns what the old output was of the last state.
  double TakeLastStateAsOutput() {
    const double c = ReflectOutput();
    const std::size_t n = states_ - 1;
    std::vector<double> smaller(states_ * states_);
    for (std::size_t i = 0; i < states_; ++i) {
      for (std::size_t j = 0; j < n; ++j) smaller[i * states_ + j] = At(i, j);
      smaller[i * states_ + n] = At(i, states_);
    }
    m_ = std::move(smaller);
    width_ = states_;
    states_ = n;
    return c;
  }

 private:
  double& At(std::size_t i, std::size_t j) { return m_[i * width_ + j]; }

  template <class Value>
  double Norm(Value value) const {
    double norm = 0;
    for (std::size_t i = 0; i < states_; ++i) norm = std::hypot(norm, value(i));
    return norm;
  }

  bool ScaleLine(std::size_t i) {
    double row = 0;
    double column = 0;
    for (std::size_t j = 0; j < width_; ++j) {
      if (j == i) continue;
      row += std::abs(At(i, j));
      column += std::abs(At(j, i));
    }
    if (!(row > 0 && column > 0)) return false;
    const int e = static_cast<int>(std::lround(std::log2(row / column) / 2));
    if (e == 0 || std::abs(e) > 500) return false;
    for (std::size_t j = 0; j < width_; ++j) At(i, j) = std::ldexp(At(i, j), -e);
    for (std::size_t j = 0; j < width_; ++j) At(j, i) = std::ldexp(At(j, i), e);
    return true;
  }

  // A reflection H of the states with C H = (0 ... 0 c), applied as A := H A H, B := H B, C := C H.
  double ReflectOutput() {
    std::vector<double> u(m_.end() - static_cast<std::ptrdiff_t>(width_), m_.end() - 1);
    const double norm = OutputNorm();
    const double c = u.back() > 0 ? -norm : norm;
    const double last = u.back();
    u.back() -= c;
    const double scale = 1 / (norm * norm - c * last);
    for (std::size_t j = 0; j < width_; ++j) {  // from the left: rows of the states
      double dot = 0;
      for (std::size_t i = 0; i < states_; ++i) dot += u[i] * At(i, j);
      for (std::size_t i = 0; i < states_; ++i) At(i, j) -= scale * dot * u[i];
    }
    for (std::size_t i = 0; i < states_; ++i) {  // from the right: columns of the states
      double dot = 0;
      for (std::size_t j = 0; j < states_; ++j) dot += u[j] * At(i, j);
      for (std::size_t j = 0; j < states_; ++j) At(i, j) -= scale * dot * u[j];
    }
    return c;
  }

  std::size_t states_;
  std::size_t width_;
  std::vector<double> m_;
};

void Check(const TMtx& A, const TVec& B, const TVec& C, double D) {
  if (A.Rows() != B.Length()) throw Exception("a.Rows <> b.Length");
  if (B.Length() != C.Length()) throw Exception("b.Length <> c.Length");
  if (B.IsDouble() != C.IsDouble()) throw Exception("b.IsDouble <> c.IsDouble");
  if (B.IsDouble() != A.IsDouble()) throw Exception("b.IsDouble <> a.IsDouble");
  if (A.Rows() != A.Cols()) ERaise("LTIZeros: A is not square");
  if (A.Complex() || B.Complex() || C.Complex()) ERaise("LTIZeros: complex elements");
  bool finite = std::isfinite(D);
  for (const TDense* const x :
       {static_cast<const TDense*>(&A), static_cast<const TDense*>(&B), static_cast<const TDense*>(&C)}) {
    ForReal(*x, [&]<RealElement R>(ElementTag<R>) {
      for (const R value : x->Elements<R>()) finite = finite && std::isfinite(value);
    });
  }
  if (!finite) ERaise("LTIZeros: an element is not finite");
}

// Reduces until there is a feed-through; false when there never is one, H = 0. `gain` gathers what is divided out.
bool ReduceToFeedthrough(SystemMatrix& system, detail::ScaledProduct& gain) {
  const double factor = 8 * kEps * static_cast<double>(system.States() + 1);
  const double input_tolerance = factor * system.InputNorm();
  const double output_tolerance = factor * std::max(system.StateNorm(), system.OutputNorm());
  for (bool first = true;; first = false) {
    if (std::abs(system.Feedthrough()) > (first ? 0 : input_tolerance)) break;
    if (system.States() == 0 || system.OutputNorm() <= (first ? 0 : output_tolerance)) return false;
    gain.Multiply(Cplx(system.TakeLastStateAsOutput()));
  }
  gain.Multiply(Cplx(system.Feedthrough()));
  return true;
}

// The zeros of a system with feed-through: a reflection of its columns turns [C D] into (0 ... 0 d); the first columns of
// [A B] and [I 0] then form the pencil.
void ZerosOfPencil(const SystemMatrix& system, TVec& alpha, TVec& beta) {
  const std::size_t n = system.States();
  std::vector<double> u(n + 1);
  double norm = 0;
  for (std::size_t j = 0; j <= n; ++j) {
    u[j] = system.At(n, j);
    norm = std::hypot(norm, u[j]);
  }
  const double d = u[n] > 0 ? -norm : norm;
  const double scale = 1 / (norm * norm - d * u[n]);
  u[n] -= d;
  const Borrowed<TMtx> left;
  const Borrowed<TMtx> right;
  const auto size = static_cast<std::int32_t>(n);
  left->Size(size, size, TMtxFloatPrecision::DoubleReal);
  right->Size(size, size, TMtxFloatPrecision::DoubleReal);
  for (std::size_t i = 0; i < n; ++i) {
    double dot = 0;
    for (std::size_t j = 0; j <= n; ++j) dot += system.At(i, j) * u[j];
    for (std::size_t j = 0; j < n; ++j) {
      left->Values()[i * n + j] = system.At(i, j) - scale * dot * u[j];
      right->Values()[i * n + j] = (i == j ? 1 : 0) - scale * u[i] * u[j];
    }
  }
  GeneralizedEig(*left, *right, alpha, beta);
}

}  // namespace

void LTIZeros(TVec& z, double& k, const TMtx& A, const TVec& B, const TVec& C, double D) {
  Check(A, B, C, D);
  const bool is_double = B.Length() == 0 ? z.IsDouble() : B.IsDouble();
  SystemMatrix system(A, B, C, D);
  system.Balance();
  detail::ScaledProduct gain;
  detail::Roots zeros;
  const bool has_gain = ReduceToFeedthrough(system, gain);
  if (has_gain && system.States() > 0) {
    const Borrowed<TVec> alpha;
    const Borrowed<TVec> beta;
    ZerosOfPencil(system, *alpha, *beta);
    for (std::int32_t i = 0; i < alpha->Length(); ++i) {
      const double divisor = (*beta)[i];
      if (divisor != 0) zeros.push_back((1 / divisor) * alpha->CValues()[static_cast<std::size_t>(i)]);
    }
  }
  const Borrowed<TVec> result;
  detail::WriteRoots(*result, zeros, is_double);
  z.Take(*result);
  k = has_gain ? gain.Re() : 0;
}

}  // namespace passband::LinearSystems
