#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <type_traits>

#include "passband/vector_core/elementwise_internal.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/vec.h"

namespace passband {
namespace {

constexpr std::size_t kLanes = 8;    // sums side by side, so that additions need not wait for each other
constexpr std::size_t kBlock = 128;  // terms that are added by lanes; blocks are added in pairs

template <class Accumulator, class Term>
Accumulator SumOfBlock(std::size_t first, std::size_t count, const Term& term) {
  std::array<Accumulator, kLanes> lanes{};
  const std::size_t whole = first + count / kLanes * kLanes;
  std::size_t k = first;
  for (; k < whole; k += kLanes) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) lanes[lane] += term(k + lane);
  }
  for (; k < first + count; ++k) lanes[k - whole] += term(k);
  for (std::size_t half = kLanes / 2; half > 0; half /= 2) {
    for (std::size_t lane = 0; lane < half; ++lane) lanes[lane] += lanes[lane + half];
  }
  return lanes[0];
}

// term(first) + ... + term(first + count - 1), added in pairs of blocks: the rounding error grows with log(count).
// Literature: Higham, "Accuracy and Stability of Numerical Algorithms", 2nd edition, section 4.2.
template <class Accumulator, class Term>
Accumulator PairwiseSum(std::size_t first, std::size_t count, const Term& term) {
  if (count <= kBlock) return SumOfBlock<Accumulator>(first, count, term);
  std::size_t half = kBlock;
  while (2 * half < count) half *= 2;
  Accumulator sum = PairwiseSum<Accumulator>(first, half, term);
  sum += PairwiseSum<Accumulator>(first + half, count - half, term);
  return sum;
}

template <Element T>
using Wide = std::conditional_t<IsComplex<T>, TCplx, double>;

template <Element T>
Wide<T> SumOf(std::span<const T> x, double factor = 1) {
  return PairwiseSum<Wide<T>>(0, x.size(), [&](std::size_t k) { return factor * static_cast<Wide<T>>(x[k]); });
}

template <Element T>
TCplx AsComplex(T x) {
  return detail::Convert<TCplx>(x);
}

bool IsFinite(double x) { return std::isfinite(x); }
bool IsFinite(TCplx x) { return !IsNanInf(x); }

// Sum / count. The sum of values near the largest double may overflow where their mean does not: then with all of them
// scaled down by a power of two.
template <Element T>
Wide<T> MeanOf(std::span<const T> x) {
  constexpr double kDown = 0x1p-32;  // times the largest double times any count is finite
  const auto count = static_cast<double>(x.size());
  const auto divide = [](Wide<T> sum, double by) {
    if constexpr (IsComplex<T>) {
      return TCplx(sum.Re / by, sum.Im / by);
    } else {
      return sum / by;
    }
  };
  const Wide<T> sum = SumOf(x);
  if (IsFinite(sum)) return divide(sum, count);
  return (1 / kDown) * divide(SumOf(x, kDown), count);
}

// sqrt(sum |x|^2 / divisor). Squares leave the range of double long before their root does: then with all elements
// scaled by the power of two that brings the largest part near 1.
template <Element T>
double RootOfSquares(std::span<const T> x, double divisor) {
  const auto parts = detail::Parts(x);
  const auto squares = [&](double factor) {
    return PairwiseSum<double>(0, parts.size(), [&](std::size_t k) {
      const double part = factor * static_cast<double>(parts[k]);
      return part * part;
    });
  };
  const double sum = squares(1);
  if (std::isnan(sum) || (sum >= 0x1p-900 && std::isfinite(sum))) return std::sqrt(sum / divisor);
  double largest = 0;
  for (const auto part : parts) largest = std::max(largest, static_cast<double>(std::abs(part)));
  if (largest == 0 || std::isinf(largest)) return largest;
  const int exponent = std::clamp(std::ilogb(largest), -1000, 1000);
  return std::ldexp(std::sqrt(squares(std::ldexp(1.0, -exponent)) / divisor), exponent);
}

// The power of two to be taken out of x before it is multiplied: none while two such numbers have a product.
int ExponentOf(double x) {
  const double size = std::abs(x);
  const bool harmless = size >= 0x1p-500 && size <= 0x1p500;
  return harmless || size == 0 || !std::isfinite(size) ? 0 : std::ilogb(size);
}
int ExponentOf(TCplx x) { return ExponentOf(std::max(std::abs(x.Re), std::abs(x.Im))); }
double Scaled(double x, int exponent) { return exponent == 0 ? x : std::ldexp(x, exponent); }
TCplx Scaled(TCplx x, int exponent) { return {Scaled(x.Re, exponent), Scaled(x.Im, exponent)}; }

// The product with its exponent apart: an intermediate result never leaves the range of double. Scaling by powers of
// two rounds nothing.
template <Element T>
Wide<T> ProductOf(std::span<const T> x) {
  Wide<T> product = detail::Convert<Wide<T>>(1.0);
  std::int64_t exponent = 0;
  for (const T element : x) {
    const auto factor = static_cast<Wide<T>>(element);
    const int of_factor = ExponentOf(factor);
    product *= Scaled(factor, -of_factor);
    const int of_product = ExponentOf(product);
    product = Scaled(product, -of_product);
    exponent += of_factor + of_product;
  }
  return Scaled(product, static_cast<int>(std::clamp<std::int64_t>(exponent, -5000, 5000)));
}

double RealSum(const TDense& x, std::int32_t index, std::int32_t len) {
  detail::RequireReal(x, "Sum: complex elements");
  return ForReal(x, [&]<Element R>(ElementTag<R>) { return SumOf(detail::Stretch<R>(x, index, len)); });
}

TCplx AnySum(const TDense& x, std::int32_t index, std::int32_t len) {
  return ForAny(x, [&]<Element T>(ElementTag<T>) { return AsComplex(SumOf(detail::Stretch<T>(x, index, len))); });
}

double RealProduct(const TDense& x, std::int32_t index, std::int32_t len) {
  detail::RequireReal(x, "Product: complex elements");
  return ForReal(x, [&]<Element R>(ElementTag<R>) { return ProductOf(detail::Stretch<R>(x, index, len)); });
}

TCplx AnyProduct(const TDense& x, std::int32_t index, std::int32_t len) {
  return ForAny(x, [&]<Element T>(ElementTag<T>) { return AsComplex(ProductOf(detail::Stretch<T>(x, index, len))); });
}

double RealMean(const TDense& x, std::int32_t index, std::int32_t len) {
  detail::RequireReal(x, "Mean: complex elements");
  if (len == 0) ERaise("Mean: no elements");
  return ForReal(x, [&]<Element R>(ElementTag<R>) { return MeanOf(detail::Stretch<R>(x, index, len)); });
}

TCplx AnyMean(const TDense& x, std::int32_t index, std::int32_t len) {
  if (len == 0) ERaise("Meanc: no elements");
  return ForAny(x, [&]<Element T>(ElementTag<T>) { return AsComplex(MeanOf(detail::Stretch<T>(x, index, len))); });
}

double RootMeanSquare(const TDense& x, std::int32_t index, std::int32_t len) {
  if (len == 0) ERaise("RMS: no elements");
  return ForAny(x, [&]<Element T>(ElementTag<T>) { return RootOfSquares(detail::Stretch<T>(x, index, len), len); });
}

// The first element that no other one is better than, NaN left out, and its place; the first element when all are NaN.
// The value is found by lanes, its place by a second look.
template <class Better>
void Extreme(const TDense& x, double worst, Better better, double& value, std::int32_t& index) {
  ForReal(x, [&]<Element R>(ElementTag<R>) {
    const auto elements = x.Elements<R>();
    std::array<R, kLanes> lanes;
    lanes.fill(static_cast<R>(worst));
    const std::size_t whole = elements.size() / kLanes * kLanes;
    for (std::size_t k = 0; k < whole; k += kLanes) {
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        lanes[lane] = better(elements[k + lane], lanes[lane]) ? elements[k + lane] : lanes[lane];
      }
    }
    R best = lanes[0];
    for (const R lane : lanes) best = better(lane, best) ? lane : best;
    for (const R rest : elements.subspan(whole)) best = better(rest, best) ? rest : best;
    const auto found = std::find(elements.begin(), elements.end(), best);
    const auto place = found == elements.end() ? elements.begin() : found;
    value = *place;
    index = static_cast<std::int32_t>(place - elements.begin());
  });
}

// Sum of a[k] op(b[k]) in double.
template <Element T>
Wide<T> DotOf(std::span<const T> a, std::span<const T> b, bool conjugated) {
  return PairwiseSum<Wide<T>>(0, a.size(), [&](std::size_t k) {
    const auto x = static_cast<Wide<T>>(a[k]);
    const auto y = static_cast<Wide<T>>(b[k]);
    if constexpr (IsComplex<T>) {
      return x * (conjugated ? Conj(y) : y);
    } else {
      return x * y;
    }
  });
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

}  // namespace

double TDense::Sum() const { return RealSum(*this, 0, length_); }
void TDense::Sum(double& Result) const { Result = Sum(); }
void TDense::Sum(TCplx& Result) const { Result = AnySum(*this, 0, length_); }
double TDense::Product() const { return RealProduct(*this, 0, length_); }
void TDense::Product(double& Result) const { Result = Product(); }
void TDense::Product(TCplx& Result) const { Result = AnyProduct(*this, 0, length_); }
double TDense::Mean() const { return RealMean(*this, 0, length_); }
TCplx TDense::Meanc() const { return AnyMean(*this, 0, length_); }
double TDense::RMS() const { return RootMeanSquare(*this, 0, length_); }

double TDense::Max() const {
  double value = 0;
  std::int32_t index = 0;
  Max(value, index);
  return value;
}

void TDense::Max(double& Value, std::int32_t& Index) const {
  detail::RequireReal(*this, "Max: complex elements");
  if (length_ == 0) ERaise("Max: no elements");
  Extreme(*this, -kInfinity, std::greater<>(), Value, Index);
}

double TDense::Min() const {
  double value = 0;
  std::int32_t index = 0;
  Min(value, index);
  return value;
}

void TDense::Min(double& Value, std::int32_t& Index) const {
  detail::RequireReal(*this, "Min: complex elements");
  if (length_ == 0) ERaise("Min: no elements");
  Extreme(*this, kInfinity, std::less<>(), Value, Index);
}

double Max(const TVec& Vec) { return Vec.Max(); }

double TVec::Sum(std::int32_t Index, std::int32_t Len) const {
  ValidateParams(Index, Len);
  return RealSum(*this, Index, Len);
}
void TVec::Sum(double& Result, std::int32_t Index, std::int32_t Len) const { Result = Sum(Index, Len); }
void TVec::Sum(TCplx& Result, std::int32_t Index, std::int32_t Len) const {
  ValidateParams(Index, Len);
  Result = AnySum(*this, Index, Len);
}

double TVec::Product(std::int32_t Index, std::int32_t Len) const {
  ValidateParams(Index, Len);
  return RealProduct(*this, Index, Len);
}
void TVec::Product(double& Result, std::int32_t Index, std::int32_t Len) const { Result = Product(Index, Len); }
void TVec::Product(TCplx& Result, std::int32_t Index, std::int32_t Len) const {
  ValidateParams(Index, Len);
  Result = AnyProduct(*this, Index, Len);
}

double TVec::Mean(std::int32_t Index, std::int32_t Len) const {
  ValidateParams(Index, Len);
  return RealMean(*this, Index, Len);
}
TCplx TVec::Meanc(std::int32_t Index, std::int32_t Len) const {
  ValidateParams(Index, Len);
  return AnyMean(*this, Index, Len);
}
double TVec::RMS(std::int32_t Index, std::int32_t Len) const {
  ValidateParams(Index, Len);
  return RootMeanSquare(*this, Index, Len);
}

double TVec::NormL2() const {
  return ForAny(*this, [&]<Element T>(ElementTag<T>) { return RootOfSquares(Elements<T>(), 1); });
}

double TVec::DotProd(const TVec& Vec) const {
  CheckFits(Vec);
  return DotProd(Vec, 0, 0, length_);
}

double TVec::DotProd(const TVec& Vec, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len) const {
  ValidateParams(Vec, VecIndex, Index, Len);
  CheckSamePrecision(Vec);
  detail::RequireReal(*this, "DotProd: complex elements");
  return ForReal(*this, [&]<Element R>(ElementTag<R>) {
    return DotOf(detail::Stretch<R>(*this, Index, Len), detail::Stretch<R>(Vec, VecIndex, Len), false);
  });
}

TCplx TVec::DotProdc(const TVec& Vec, bool Conjugated) const {
  CheckFits(Vec);
  CheckSamePrecision(Vec);
  return ForAny(
      *this, [&]<Element T>(ElementTag<T>) { return AsComplex(DotOf(Elements<T>(), Vec.Elements<T>(), Conjugated)); });
}

}  // namespace passband
