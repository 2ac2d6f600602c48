#include "passband/fir_design/savitzky_golay.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/streaming/fir_filter.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

using Wide = long double;

// Polynomials q[0] .. q[P], orthonormal over the places of a frame under its weights, by values and by coefficients.
class OrthonormalPolynomials {
 public:
  OrthonormalPolynomials(std::size_t frame, std::size_t order, const std::vector<Wide>& weights)
      : frame_(frame),
        order_(order),
        weights_(weights),
        values_((order + 1) * frame),
        coefficients_((order + 1) * (order + 1)) {
    // Places are scaled to -1 .. 1.
    scale_ = frame > 1 ? 1 / static_cast<Wide>(frame / 2) : 1;
    std::fill_n(values_.begin(), frame, Wide(1));
    coefficients_[0] = 1;
    Normalise(0);
    for (std::size_t k = 1; k <= order; ++k) Extend(k);
  }

  Wide Weight(std::size_t place) const { return weights_[place]; }
  Wide Value(std::size_t k, std::size_t place) const { return values_[k * frame_ + place]; }

  // Row r, column c of the projection.
  Wide Projection(std::size_t r, std::size_t c) const {
    Wide sum = 0;
    for (std::size_t k = 0; k <= order_; ++k) sum += Value(k, r) * Value(k, c);
    return sum * weights_[c];
  }
  // What the sample at place c contributes to the coefficient of x^i.
  Wide Coefficient(std::size_t i, std::size_t c) const {
    Wide sum = 0;
    for (std::size_t k = i; k <= order_; ++k) sum += coefficients_[k * (order_ + 1) + i] * Value(k, c);
    return sum * weights_[c] * std::pow(scale_, static_cast<Wide>(i));
  }

 private:
  Wide Place(std::size_t j) const { return (static_cast<Wide>(j) - static_cast<Wide>(frame_ / 2)) * scale_; }
  std::span<Wide> Row(std::size_t k) { return std::span(values_).subspan(k * frame_, frame_); }
  std::span<Wide> Powers(std::size_t k) { return std::span(coefficients_).subspan(k * (order_ + 1), order_ + 1); }

  Wide Product(std::span<const Wide> a, std::span<const Wide> b) const {
    Wide sum = 0;
    for (std::size_t j = 0; j < frame_; ++j) sum += a[j] * b[j] * weights_[j];
    return sum;
  }
  void Subtract(std::size_t k, std::size_t from, Wide factor) {
    for (std::size_t j = 0; j < frame_; ++j) Row(from)[j] -= factor * Row(k)[j];
    for (std::size_t i = 0; i <= order_; ++i) Powers(from)[i] -= factor * Powers(k)[i];
  }
  void Normalise(std::size_t k) {
    const Wide norm = std::sqrt(Product(Row(k), Row(k)));
    for (Wide& value : Row(k)) value /= norm;
    for (Wide& power : Powers(k)) power /= norm;
  }
  // q[k] from x q[k - 1], made orthogonal to the two before; the second pass takes what rounding has left of all of them.
  void Extend(std::size_t k) {
    for (std::size_t j = 0; j < frame_; ++j) Row(k)[j] = Place(j) * Row(k - 1)[j];
    for (std::size_t i = 1; i <= order_; ++i) Powers(k)[i] = Powers(k - 1)[i - 1];
    for (std::size_t i = k > 1 ? k - 2 : 0; i < k; ++i) Subtract(i, k, Product(Row(i), Row(k)));
    Normalise(k);
    for (std::size_t i = 0; i < k; ++i) Subtract(i, k, Product(Row(i), Row(k)));
    Normalise(k);
  }

  std::size_t frame_;
  std::size_t order_;
  const std::vector<Wide>& weights_;
  Wide scale_ = 1;
  std::vector<Wide> values_;
  std::vector<Wide> coefficients_;
};

void CheckFrame(std::int32_t frame, std::int32_t order) {
  if (frame % 2 == 0) ERaise("not Odd(FrameSize)!");
  if (!CheckRange(0, order, frame - 1)) ERaise("not CheckRange(0,Order,FrameSize-1)");  // frames below 1 have no order
}

std::vector<Wide> CheckedWeights(std::int32_t frame, const TVec* weights, bool is_double) {
  if (weights == nullptr) return std::vector<Wide>(static_cast<std::size_t>(frame), Wide(1));
  if (weights->Length() != frame) ERaise("Weights.Length <> FrameSize!");
  if (weights->Complex()) ERaise("Weights = complex!");
  std::vector<Wide> checked;
  for (std::int32_t i = 0; i < frame; ++i) checked.push_back(static_cast<Wide>((*weights)[i]));
  if (!std::all_of(checked.begin(), checked.end(), [](Wide w) { return w > 0; })) ERaise("Weights.Min <= 0");
  if (weights->IsDouble() != is_double) ERaise("H.IsDouble <> Weights.IsDouble");
  if (!std::all_of(checked.begin(), checked.end(), [](Wide w) { return std::isfinite(w); })) {
    ERaise("SavGolayImpulse: a weight is not finite");
  }
  return checked;
}

// Fills a vector or a matrix of the given width.
template <class Element>
void Fill(TDense& result, std::size_t width, const Element& element) {
  ForReal(result, [&]<RealElement R>(ElementTag<R>) {
    const auto values = result.Elements<R>();
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<R>(element(i / width, i % width));
  });
}

// The value that row `row` of the matrix fits to the frame that begins at `start`.
template <Element T>
T FittedValue(const TMtx& H, std::size_t row, std::span<const T> frame) {
  const auto weights = H.Elements<RealOf<T>>().subspan(row * frame.size(), frame.size());
  TCplx sum{};
  for (std::size_t j = 0; j < frame.size(); ++j) {
    const auto weight = static_cast<double>(weights[j]);
    if constexpr (IsComplex<T>) {
      sum = sum + weight * static_cast<TCplx>(frame[j]);
    } else {
      sum.Re += weight * static_cast<double>(frame[j]);
    }
  }
  if constexpr (IsComplex<T>) {
    return static_cast<T>(sum);
  } else {
    return static_cast<T>(sum.Re);
  }
}

}  // namespace

void SavGolayImpulse(TMtx& H, TMtx* Diff, std::int32_t FrameSize, std::int32_t Order, const TVec* Weights) {
  CheckFrame(FrameSize, Order);
  if (Diff == nullptr) ERaise("Diff = nil");
  const std::vector<Wide> weights = CheckedWeights(FrameSize, Weights, H.IsDouble());
  const auto frame = static_cast<std::size_t>(FrameSize);
  const OrthonormalPolynomials polynomials(frame, static_cast<std::size_t>(Order), weights);
  const Borrowed<TMtx> projection;
  const Borrowed<TMtx> derivatives;
  projection->Size(FrameSize, FrameSize, MakePrecision(false, H.IsDouble()));
  derivatives->Size(Order + 1, FrameSize, MakePrecision(false, H.IsDouble()));
  Fill(*projection, frame, [&](std::size_t r, std::size_t c) { return polynomials.Projection(r, c); });
  Fill(*derivatives, frame, [&](std::size_t i, std::size_t c) { return polynomials.Coefficient(i, c); });
  Diff->Take(*derivatives);
  H.Take(*projection);
}

void SavGolayImpulse(TVec& H, std::int32_t FrameSize, std::int32_t Order, const TVec* Weights) {
  CheckFrame(FrameSize, Order);
  const std::vector<Wide> weights = CheckedWeights(FrameSize, Weights, H.IsDouble());
  const auto frame = static_cast<std::size_t>(FrameSize);
  const OrthonormalPolynomials polynomials(frame, static_cast<std::size_t>(Order), weights);
  const Borrowed<TVec> taps;
  taps->Size(FrameSize, false, H.IsDouble());
  Fill(*taps, frame, [&](std::size_t, std::size_t c) { return polynomials.Projection(frame / 2, c); });
  H.Take(*taps);
}

void SavGolayFilter(TVec& Data, const TMtx& H) {
  const std::int32_t frame = H.Rows();
  if (H.Length() == 0) ERaise("H.Length = 0");
  if (frame != H.Cols()) {
    ERaise("SavGolayFilter: H of " + std::to_string(frame) + " x " + std::to_string(H.Cols()) + " is not square");
  }
  if (Data.Length() < frame) ERaise("SavGolayFilter: Data.Length < H.Rows");
  const Borrowed<TVec> taps;
  const Borrowed<TVec> smooth;
  taps->Size(frame, false, H.IsDouble());
  smooth->Copy(Data);
  ForReal(H, [&]<RealElement R>(ElementTag<R>) {
    const auto size = static_cast<std::size_t>(frame);
    std::copy_n(H.Elements<R>().begin() + (frame / 2) * frame, size, taps->Elements<R>().begin());
  });
  FirFilter(*smooth, *taps);
  ForAny(Data, [&]<Element T>(ElementTag<T>) {
    const std::span<const T> data = static_cast<const TVec&>(Data).Elements<T>();
    const std::span<T> out = smooth->Elements<T>();
    const auto size = static_cast<std::size_t>(frame);
    for (std::size_t i = 0; i < size / 2; ++i) {
      out[i] = FittedValue<T>(H, i, data.first(size));
      out[out.size() - 1 - i] = FittedValue<T>(H, size - 1 - i, data.last(size));
    }
  });
  Data.Take(*smooth);
}

}  // namespace passband::SignalUtils
