// The vector of the library.
#pragma once

#include <complex>
#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <span>
#include <vector>

#include "passband/vector_core/dense.h"
#include "passband/vector_core/matrix_types.h"

namespace passband {

/// A vector of real or complex, single or double precision elements.
///
/// Sub-ranges: `Index` is the first element, `Len` the count, -1 for up to the end. A range that does not lie inside the
/// vector raises `ECoreError` "Index = 3, Len = 9 is outside a vector of length 10" before anything changes. Ranged
/// operations leave the other elements alone.
class PASSBAND_EXPORT TVec : public TDense {
 public:
  TVec() noexcept : TDense(Kind::Vector) {}
  TVec(std::initializer_list<double> values);
  TVec(std::initializer_list<TCplx> values);
  explicit TVec(std::span<const double> values);
  explicit TVec(std::span<const float> values);
  explicit TVec(std::span<const TCplx> values);
  explicit TVec(std::span<const TSCplx> values);
  explicit TVec(std::span<const std::complex<double>> values);
  explicit TVec(std::span<const std::complex<float>> values);
  TVec(const TVec&) = default;
  TVec(TVec&&) noexcept = default;
  TVec& operator=(const TVec&) = default;
  TVec& operator=(TVec&&) noexcept = default;
  ~TVec() = default;

  /// A vector on the host's memory, without a copy. The host keeps the memory alive for as long as the view is used; an
  /// operation that gives the view another size detaches it.
  static TVec View(std::span<double> memory);
  static TVec View(std::span<float> memory);
  static TVec View(std::span<TCplx> memory);
  static TVec View(std::span<TSCplx> memory);
  static TVec View(std::span<std::complex<double>> memory);
  static TVec View(std::span<std::complex<float>> memory);

  // Size
  using TDense::Size;
  void Size(std::int32_t Len, bool Complex, bool IsDouble);
  void Size(std::int32_t Len, TMtxFloatPrecision FloatPrecision);
  void Size(std::int32_t Len, const TDense& Src);
  /// Keeps the leading elements; new ones are zero (also without `ZeroIt`, which says that the caller relies on it).
  void Resize(std::int32_t Len, bool ZeroIt = false);
  void Resize(const TVec& Src, std::int32_t Len, bool ZeroIt = false);
  /// Makes the vector a view of a stretch of itself or of `Src`: writes through either are seen by both.
  void SetSubRange(std::int32_t Index, std::int32_t Len);
  void SetSubRange(const TVec& Src, std::int32_t Index, std::int32_t Len);
  /// Raises when the range is not inside the vector (see above); settles `Len` = -1. The second form checks a range of
  /// `Src` and one of this vector that share `Len`; -1 is as much as both hold.
  void ValidateParams(std::int32_t Index, std::int32_t& Len) const;
  void ValidateParams(const TVec& Src, std::int32_t SrcIndex, std::int32_t Index, std::int32_t& Len) const;

  // Element access. An index outside the vector raises "index 7 is outside a vector of length 7"; the real forms raise
  // "a complex element is read as a real number" on complex data.
  double operator[](std::int32_t i) const;
  void SetDefault(std::int32_t i, double Value);
  double GetFirst() const;
  double GetLast() const;
  /// The last element, real or complex, as a complex number.
  TCplx GetLastc() const;
  /// The place of element i in the memory that the vector shares with its views, in elements of its precision.
  std::int32_t SDataIndex(std::int32_t i) const;
  std::int32_t CDataIndex(std::int32_t i) const;
  /// Sizes the vector and fills it; keeps `IsDouble`. `bool`: the complex flag, the length follows from the array; an
  /// integer: the length, the complex flag is kept. A complex element takes two doubles. Raises "SetIt: 3 numbers do not
  /// fill 2 elements".
  void SetIt(bool Complex, OpenArray Values);
  void SetIt(std::int32_t Len, OpenArray Values);
  /// Copies `Len` elements of `Array` from `ArrayIndex` to this vector from `Index` (-1: as many as both hold),
  /// converting the precision; a real number becomes complex with imaginary part 0. Raises "ArrayIndex = 3, Len = 9 is
  /// outside an array of length 10", "CopyFromArray: complex elements into a real vector".
  void CopyFromArray(std::span<const double> Array, std::int32_t ArrayIndex, std::int32_t Index, std::int32_t Len);
  void CopyFromArray(std::span<const TCplx> Array, std::int32_t ArrayIndex, std::int32_t Index, std::int32_t Len);
  void CopyFromArray(std::span<const TSCplx> Array, std::int32_t ArrayIndex, std::int32_t Index, std::int32_t Len);
  /// All elements as doubles, a complex one as two.
  void CopyToArray(std::vector<double>& Array) const;

  // Copy and rearrangement
  using TDense::Copy;
  /// Copies `Len` elements of `Src` from `SrcIndex` into this vector from `Index`; the stretches may overlap.
  void Copy(const TVec& Src, std::int32_t SrcIndex, std::int32_t Index, std::int32_t Len);
  /// `Src1` followed by `Src2`; both of one precision.
  void Copy(const TVec& Src1, const TVec& Src2);
  /// Row of a matrix, or its `Len` elements from column `Col`.
  void GetRow(const TMtx& Mtx, std::int32_t Row);
  void GetRow(const TMtx& Mtx, std::int32_t Row, std::int32_t Col, std::int32_t Len);
  /// The main diagonal.
  void Diag(const TMtx& Mtx);
  void Reverse();
  /// Self[Index + k] = Src[SrcIndex + Len - 1 - k].
  void Reverse(const TVec& Src, std::int32_t SrcIndex, std::int32_t Index, std::int32_t Len);
  /// Moves the elements n places up (down for negative n); vacated places are zero.
  void Shift(std::int32_t n);
  /// Shift whose elements come in again at the other end.
  void Rotate(std::int32_t n);
  /// Self[Index + k Step] = Src[k], k < Len; -1: as many as there are elements and places. Raises "Scatter: Step < 1",
  /// "Scatter: Index = 1, Step = 4, Len = 3 is outside a vector of length 9".
  void Scatter(const TVec& Src, std::int32_t Step, std::int32_t Index, std::int32_t Len);
  /// Src[Phase + k Factor] for all k that exist. Raises "DownSample: Factor < 1", "DownSample: Phase < 0".
  void DownSample(const TVec& Src, std::int32_t Factor, std::int32_t Phase = 0);
  /// Self[k] = Src[k + Lag] - Src[k]; `Lag` elements shorter than `Src`. Raises "Difference: Lag < 0".
  void Difference(const TVec& Src, std::int32_t Lag = 1);
  /// Self[Index + k] = Offset + k Step, each element computed on its own in double.
  void Ramp(double Offset, double Step, std::int32_t Index = 0, std::int32_t Len = -1);
  void Ramp(TCplx Offset, TCplx Step, std::int32_t Index = 0, std::int32_t Len = -1);
  using TDense::SetVal;
  using TDense::SetZero;
  void SetVal(double Value, std::int32_t Index, std::int32_t Len);
  void SetVal(TCplx Value, std::int32_t Index, std::int32_t Len);
  void SetZero(std::int32_t Index, std::int32_t Len);
  /// Ascending order, NaN last. Real elements only: "SortAscend: complex elements".
  void SortAscend(std::int32_t Index = 0, std::int32_t Len = -1);

  // Arithmetic on stretches: Self[Index + k] and Vec[VecIndex + k], or Vec1[Vec1Index + k] op Vec2[Vec2Index + k].
  using TDense::Add;
  using TDense::ConjMul;
  using TDense::Divide;
  using TDense::Mul;
  using TDense::Offset;
  using TDense::Scale;
  using TDense::Sub;
  void Add(const TVec& Vec, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len);
  void Add(const TVec& Vec1, const TVec& Vec2, std::int32_t Vec1Index, std::int32_t Vec2Index, std::int32_t Index,
           std::int32_t Len);
  /// Self[Index + k] = Vec[VecIndex + k] + Value.
  void Add(const TVec& Vec, double Value, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len);
  void Add(const TVec& Vec, TCplx Value, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len);
  void Sub(const TVec& Vec, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len);
  void Sub(const TVec& Vec1, const TVec& Vec2, std::int32_t Vec1Index, std::int32_t Vec2Index, std::int32_t Index,
           std::int32_t Len);
  void Mul(const TVec& Vec, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len);
  void Mul(const TVec& Vec1, const TVec& Vec2);
  void Mul(const TVec& Vec1, const TVec& Vec2, std::int32_t Vec1Index, std::int32_t Vec2Index, std::int32_t Index,
           std::int32_t Len);
  void Divide(const TVec& Vec, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len);
  void Divide(const TVec& Vec1, const TVec& Vec2, std::int32_t Vec1Index, std::int32_t Vec2Index, std::int32_t Index,
              std::int32_t Len);
  void ConjMul(const TVec& Vec, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len);
  void Offset(double Value, std::int32_t Index, std::int32_t Len);
  void Offset(TCplx Value, std::int32_t Index, std::int32_t Len);
  void Scale(double Factor, std::int32_t Index, std::int32_t Len);
  void Scale(TCplx Factor, std::int32_t Index, std::int32_t Len);

  // Reductions of stretches
  using TDense::Mean;
  using TDense::Meanc;
  using TDense::Product;
  using TDense::RMS;
  using TDense::Sum;
  double Sum(std::int32_t Index, std::int32_t Len) const;
  void Sum(double& Result, std::int32_t Index, std::int32_t Len) const;
  void Sum(TCplx& Result, std::int32_t Index, std::int32_t Len) const;
  double Product(std::int32_t Index, std::int32_t Len) const;
  void Product(double& Result, std::int32_t Index, std::int32_t Len) const;
  void Product(TCplx& Result, std::int32_t Index, std::int32_t Len) const;
  double Mean(std::int32_t Index, std::int32_t Len) const;
  TCplx Meanc(std::int32_t Index, std::int32_t Len) const;
  double RMS(std::int32_t Index, std::int32_t Len) const;
  /// sqrt(sum |x|^2).
  double NormL2() const;
  /// Sum of Self[k] Vec[k] over real vectors; the ranged form over Self[Index + k] Vec[VecIndex + k].
  double DotProd(const TVec& Vec) const;
  double DotProd(const TVec& Vec, std::int32_t VecIndex, std::int32_t Index, std::int32_t Len) const;
  /// Sum of Self[k] conj(Vec[k]), or of Self[k] Vec[k] when `Conjugated` is false; real or complex vectors.
  TCplx DotProdc(const TVec& Vec, bool Conjugated = true) const;

  // Signal operations
  /// X[k] = sum x[n] exp(-2 pi j k n / N). Real data: `Full` false gives the half spectrum k = 0 .. N div 2, true all N
  /// bins; complex data always all N. Any length; O(N log N). An empty vector stays empty (and becomes complex).
  void FFT(bool Full = false);
  void FFT(const TVec& Src, bool Full = false);
  /// The real signal x[n] = 1/N sum X[k] exp(2 pi j k n / N) of a conjugate-symmetric spectrum whose half k = 0 .. N div
  /// 2 is `Src`. `OddLength` tells which of the two lengths N with that half is meant: 2 L - 1 instead of 2 L - 2, L the
  /// length of `Src`. Raises "IFFTToReal: real elements".
  void IFFTToReal(const TVec& Src, bool OddLength = false);
  /// Linear convolution y[n] = sum Kernel[k] Src[n - k], length Src.Length + Kernel.Length - 1; complex when one operand
  /// is. Direct where an operand is shorter than 64, through transforms of blocks beyond: there a NaN or an infinity
  /// spreads over its block. Empty when an operand is.
  void Convolve(const TVec& Src, const TVec& Kernel);
  /// r[k] = 1/N sum x[n + k] conj(x[n]), k = 0 .. Lags; zero from lag N on. Raises "AutoCorrBiased: Lags < 0".
  void AutoCorrBiased(const TVec& Src, std::int32_t Lags);
  /// The analytic signal x + j H(x) of real data: the transform without its negative frequencies, the positive ones
  /// doubled. Raises "Hilbert: complex elements".
  void Hilbert(const TVec& Src);
  /// Vector times matrix, Self = Vec Op(Mtx). Raises "TensorProd: a vector of length 3 times a matrix of 2 x 3".
  void TensorProd(const TVec& Vec, const TMtx& Mtx, TMtxType Type = TMtxType::General,
                  TMtxOperation Operation = TMtxOperation::None);

 private:
  template <Element T>
  void Borrow(std::span<const T> values);
  template <Element T>
  static TVec CopyOf(std::span<const T> values);
  template <Element T>
  static TVec ViewOf(std::span<T> memory);
  void CheckIndex(std::int32_t i) const;
  std::size_t RealPosition(std::int32_t i) const;
  void FillFrom(std::int32_t len, TMtxFloatPrecision precision, std::span<const double> numbers);
  // Self[index + k] = f(a[a_index + k], b[b_index + k]), k < len, after the checks.
  template <class F>
  void CombineStretches(const TVec& a, const TVec& b, std::int32_t a_index, std::int32_t b_index, std::int32_t index,
                        std::int32_t len, F f);
  template <class Value>
  void AddValue(const TVec& vec, Value value, std::int32_t vec_index, std::int32_t index, std::int32_t len);
};

/// The largest element, the same as `Vec.Max()`.
PASSBAND_EXPORT double Max(const TVec& Vec);

/// The elements in brackets, separated by commas: [1, 2.5] or [(1,2), (3,4)].
PASSBAND_EXPORT std::ostream& operator<<(std::ostream& out, const TVec& Vec);

}  // namespace passband
