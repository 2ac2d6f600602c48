// What vectors and matrices share: elements of one of four precisions in one block of memory, and the operations that
// treat them element by element.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <span>
#include <string_view>

#include "passband/foundation/element_types.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/export.h"
#include "passband/foundation/open_array.h"

namespace passband {

namespace detail {
struct Buffer;  // a 64-byte aligned block with its capacity, shared by an object and the views of it
[[noreturn]] PASSBAND_EXPORT void RaisePrecision(TMtxFloatPrecision held, TMtxFloatPrecision asked);
enum class Reading : std::uint8_t { ElementByElement, AnyOrder };  // how a result is formed from its operands
}  // namespace detail

/// Common base of `TVec` and `TMtx`.
///
/// The elements are real or complex, in single or double precision, and lie one after the other (a matrix row by row).
/// The precision belongs to the object and may change at run time; `Elements<T>()` and the four named spans give typed
/// access and refuse the wrong type instead of reinterpreting it.
///
/// Copies copy values. Views, made by `TVec::SetSubRange` and `TVec::View`, share memory: a view keeps the memory alive,
/// and giving either side another size detaches it from the other. A size within the capacity allocates nothing.
///
/// Operations write into the object they are called on. Of a pair `f()` and `f(Src)`, the second sizes the object like
/// `Src` and writes f(Src) into it; `Src` may be the object itself. Operands have to fit in length (shape) and precision,
/// else `ECoreError` is raised and nothing has changed: "TVec: the operands have lengths 3 and 4", "TMtx: the operands
/// have shapes 2 x 3 and 3 x 2", "the operands have precisions single and double". Functions of real single precision
/// data are evaluated in single precision, those of complex single precision data in double and rounded once.
class PASSBAND_EXPORT TDense {
 public:
  // Properties
  std::int32_t Length() const { return length_; }
  bool Complex() const { return IsComplexPrecision(precision_); }
  bool IsDouble() const { return IsDoublePrecision(precision_); }
  TMtxFloatPrecision FloatPrecision() const { return precision_; }

  /// The elements as `T`. Raises "the elements are double, not single" (and so on) when T is not the object's type.
  template <Element T>
  std::span<T> Elements() {
    if (precision_ != PrecisionOf<T>) detail::RaisePrecision(precision_, PrecisionOf<T>);
    return {reinterpret_cast<T*>(data_), static_cast<std::size_t>(length_)};
  }
  template <Element T>
  std::span<const T> Elements() const {
    if (precision_ != PrecisionOf<T>) detail::RaisePrecision(precision_, PrecisionOf<T>);
    return {reinterpret_cast<const T*>(data_), static_cast<std::size_t>(length_)};
  }
  std::span<double> Values() { return Elements<double>(); }
  std::span<const double> Values() const { return Elements<double>(); }
  std::span<TCplx> CValues() { return Elements<TCplx>(); }
  std::span<const TCplx> CValues() const { return Elements<TCplx>(); }
  std::span<float> SValues() { return Elements<float>(); }
  std::span<const float> SValues() const { return Elements<float>(); }
  std::span<TSCplx> SCValues() { return Elements<TSCplx>(); }
  std::span<const TSCplx> SCValues() const { return Elements<TSCplx>(); }

  /// The memory of the elements, whatever their type: for finding out whether two objects share some.
  std::span<const std::byte> Memory() const {
    const std::size_t element_bytes = sizeof(float) << (IsDouble() ? 1 : 0) << (Complex() ? 1 : 0);
    return {data_, static_cast<std::size_t>(length_) * element_bytes};
  }

  // Shape and precision
  /// Length (shape), precision and complex flag of `Src`; the values are not preserved.
  void Size(const TDense& Src);
  /// Converts the values: to single with one rounding, to complex with zero imaginary parts, to real by dropping them.
  void SetFloatPrecision(TMtxFloatPrecision Precision);
  /// Declares the elements complex or real without touching memory: two reals become one complex element, or the
  /// reverse. Raises "setComplex: an odd number of reals (7)" (of a matrix: in a row).
  void setComplex(bool IsComplex);
  /// Calls `Notify` after every change of length, shape or precision by an operation or an assignment; empty: no call.
  /// The notification belongs to the object: copying and moving values does not carry it along. It must not throw when
  /// values are moved.
  void setOnSetSize(std::function<void()> Notify);

  // Copies and conversions
  void Copy(const TDense& Src);
  /// Takes the values of a temporary, which holds anything afterwards. Allocates nothing: a routine with several results
  /// computes them aside and stores them together. An object that has the size of `Src` keeps its memory, as in `Size`.
  void Take(TDense& Src);
  /// The real parts (a copy of real data).
  void RealPart(const TDense& Src);
  /// A complex copy with zero imaginary parts (whatever the flag); complex data stay as they are.
  void ExtendToComplex(bool Zeros = true);
  void ExtendToComplex(const TDense& Src, bool Zeros = true);
  /// Self = Re + j Im of two real objects. Raises "RealToCplx: complex elements".
  void RealToCplx(const TDense& Re, const TDense& Im);
  /// The parts of complex elements; either result may be this object. Raises "CplxToReal: the elements are real",
  /// "the results are the same object".
  void CplxToReal(TDense& Re, TDense& Im) const;
  /// Magnitude and phase in radians, (-pi, pi], like `CplxToReal`. Raises "CartToPolar: the elements are real".
  void CartToPolar(TDense& Amplitude, TDense& Phase) const;

  // Constants. A complex value on real data raises "a complex value on real elements" unless its imaginary part is 0.
  void SetVal(double Value);
  void SetVal(TCplx Value);
  void SetZero();
  void Add(double Value) { Offset(Value); }
  void Offset(double Value);
  void Offset(TCplx Value);
  void Scale(double Factor);
  void Scale(TCplx Factor);
  /// Self = Value - Self, Self = Value - Src.
  void SubFrom(double Value);
  void SubFrom(double Value, const TDense& Src);

  // Two operands. `Mul` with one operand takes a real one of the same IsDouble on complex data too.
  void Add(const TDense& Vec);
  void Add(const TDense& Vec1, const TDense& Vec2);
  void Sub(const TDense& Vec);
  void Sub(const TDense& Vec1, const TDense& Vec2);
  void Mul(const TDense& Vec);
  void Mul(const TDense& Src, double Factor);
  void Divide(const TDense& Vec);
  void Divide(const TDense& Vec1, const TDense& Vec2);
  /// Self = Self * conj(Vec).
  void ConjMul(const TDense& Vec);
  /// Self = Self + Factor * Vec.
  void AddScaled(const TDense& Vec, double Factor);

  // Functions of every element. The functions that a complex number has are taken of complex elements too; the others
  // raise "Cos: complex elements" and so on.
  void MulI();  ///< times the imaginary unit; the result is complex
  void MulI(const TDense& Src);
  void Sign();  ///< -x
  void Sign(const TDense& Src);
  void Conj();
  void Conj(const TDense& Src);
  void Abs();  ///< |x|, real
  void Abs(const TDense& Src);
  void Mag();  ///< |x|, real
  void Mag(const TDense& Src);
  void PowerSpectrum(const TDense& Src);  ///< |x|^2, real
  void Sqr();
  void Sqr(const TDense& Src);
  void Sqrt();
  void Sqrt(const TDense& Src);
  void Inv();  ///< 1/x
  void Inv(const TDense& Src);
  void Exp();
  void Exp(const TDense& Src);
  void Exp10();  ///< 10^x
  void Exp10(const TDense& Src);
  void Ln();
  void Ln(const TDense& Src);
  void LogN(double Base);  ///< ln x / ln Base; exact for exact powers of 2 and of 10
  void LogN(double Base, const TDense& Src);
  void Cos();  ///< real elements only
  void Cos(const TDense& Src);
  void Expj();  ///< exp(j x) of real elements; the result is complex
  void Expj(const TDense& Src);
  /// Raises every element below `Value` to it; a NaN stays. Real elements only.
  void ThreshBottom(double Value);
  /// Replaces every element that differs from `Value` by at most `Tolerance`; of a complex element both parts have to,
  /// from `Value` and from 0. A `Value` that is a NaN replaces NaN, one that is an infinity replaces that infinity (a
  /// complex element: in either part).
  void Replace(double Value, double NewValue, double Tolerance);

  // Reductions. Sums are formed in double, pairwise, always in the same order. The real forms raise "Sum: complex
  // elements" and so on; those of an empty object give 0 (`Product` 1), the means, `RMS`, `Max` and `Min` raise "Max: no
  // elements". Means, norms and products leave the range of double only where their result does.
  double Sum() const;
  void Sum(double& Result) const;
  void Sum(TCplx& Result) const;
  double Product() const;
  void Product(double& Result) const;
  void Product(TCplx& Result) const;
  double Mean() const;
  TCplx Meanc() const;
  /// sqrt(mean |x|^2).
  double RMS() const;
  /// The largest (smallest) element that is not a NaN, and its first place; NaN at place 0 when all are.
  double Max() const;
  void Max(double& Value, std::int32_t& Index) const;
  double Min() const;
  void Min(double& Value, std::int32_t& Index) const;

 protected:
  enum class Kind : std::uint8_t { Vector, Matrix };

  explicit TDense(Kind kind) noexcept : kind_(kind) {}
  TDense(const TDense& other);
  TDense(TDense&& other) noexcept;
  TDense& operator=(const TDense& other);
  TDense& operator=(TDense&& other) noexcept;
  ~TDense();

  /// The one place where the size changes: `rows` times `cols` elements (a vector has one row). Keeps the memory when
  /// nothing changes or when it belongs to this object alone and is large enough. Raises before anything changes when
  /// the length is negative or leaves 32 bits.
  void SetShape(std::int32_t rows, std::int32_t cols, TMtxFloatPrecision precision);
  /// The shape of `src` for a matrix, its length for a vector.
  void SetShapeLike(const TDense& src, TMtxFloatPrecision precision);
  /// The same shape for two results: both get it, or an exception leaves both as they were. `rows` times `cols` is the
  /// length of an existing object.
  static void SizeTogether(TDense& first, TDense& second, std::int32_t rows, std::int32_t cols,
                           TMtxFloatPrecision precision);
  /// SetShape that keeps the leading elements of the same precision and clears new ones.
  void SetLengthKeeping(std::int32_t length);
  /// Makes this object a view of `length` elements of `src` (possibly itself) from `index`; both inside `src`.
  void SetView(const TDense& src, std::int32_t index, std::int32_t length);
  void SetExternal(void* data, std::size_t length, TMtxFloatPrecision precision);
  void CheckFits(const TDense& other) const;           // same shape
  void CheckSamePrecision(const TDense& other) const;  // same precision and complex flag
  void Notify() const {
    if (notify_) (*notify_)();
  }
  std::int32_t OffsetInBuffer() const;

  // What the operations share; defined in elementwise_internal.h. The first two size this object and fill it as if all
  // operands had been read before: operands may be this object or share its memory. Nothing fails once they write.
  template <Element To, class Write, Element... From>
  void Rebuild(std::int32_t rows, std::int32_t cols, detail::Reading reading, Write write, std::span<const From>... x);
  /// Self[k] = f(x[k]...), shaped like `like`; every x has as many elements.
  template <Element To, class F, Element... From>
  void Map(const TDense& like, F f, std::span<const From>... x);
  /// Self[k] = f(src[k]); the type that f returns is the new element type.
  template <class F>
  void MapAny(const TDense& src, F f);
  template <class F>
  void MapReal(const TDense& src, std::string_view refusal, F f);
  /// Self[k] = f(a[k], b[k]) of operands that have to fit.
  template <class F>
  void Combine(const TDense& a, const TDense& b, F f);
  /// Self[k] = f(Self[k], value) for the elements from `index` on; f takes a real value on complex elements, too.
  template <class F>
  void ApplyConstant(std::int32_t index, std::int32_t len, TCplx value, F f);
  /// first[k] = f(Self[k]), second[k] = g(Self[k]) of complex elements; real ones raise `refusal`.
  template <class F, class G>
  void Split(TDense& first, TDense& second, std::string_view refusal, F f, G g) const;
  /// Forgets a view and a notification, so that a pooled object holds on to no foreign memory.
  void ReleaseForeign() noexcept;

  std::byte* data_ = nullptr;  // first element: inside *buffer_, or the host's memory when there is no buffer
  std::int32_t length_ = 0;
  std::int32_t rows_ = 1;
  std::int32_t cols_ = 0;
  TMtxFloatPrecision precision_ = TMtxFloatPrecision::DoubleReal;
  Kind kind_;

 private:
  std::shared_ptr<detail::Buffer> buffer_;
  std::unique_ptr<std::function<void()>> notify_;
};

}  // namespace passband
