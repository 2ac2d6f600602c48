#include "passband/vector_core/vec.h"

#include <algorithm>
#include <ostream>
#include <string>

#include "passband/vector_core/dispatch.h"

namespace passband {
namespace {

std::string RangeText(std::int32_t index, std::int32_t len, std::int32_t length) {
  return "Index = " + std::to_string(index) + ", Len = " + std::to_string(len) + " is outside a vector of length " +
         std::to_string(length);
}

// Index > Length - Len, not Index + Len > Length: the sum may leave 32 bits.
bool IsInside(std::int32_t index, std::int32_t len, std::int32_t length) {
  return index >= 0 && len >= 0 && len <= length && index <= length - len;
}

// std::complex lies in memory as its real part followed by its imaginary part, and so do the complex scalars here.
template <class R>
std::span<const BasicCplx<R>> AsPairs(std::span<const std::complex<R>> values) {
  return {reinterpret_cast<const BasicCplx<R>*>(values.data()), values.size()};
}
template <class R>
std::span<BasicCplx<R>> AsPairs(std::span<std::complex<R>> values) {
  return {reinterpret_cast<BasicCplx<R>*>(values.data()), values.size()};
}

}  // namespace

template <Element T>
void TVec::Borrow(std::span<const T> values) {
  SetExternal(const_cast<T*>(values.data()), values.size(), PrecisionOf<T>);  // a view or, for copies, only read
}

template <Element T>
TVec TVec::CopyOf(std::span<const T> values) {
  TVec view;
  view.Borrow(values);
  return TVec(static_cast<const TVec&>(view));
}

TVec::TVec(std::initializer_list<double> values) : TVec(std::span<const double>(values.begin(), values.size())) {}
TVec::TVec(std::initializer_list<TCplx> values) : TVec(std::span<const TCplx>(values.begin(), values.size())) {}
TVec::TVec(std::span<const double> values) : TVec(CopyOf(values)) {}
TVec::TVec(std::span<const float> values) : TVec(CopyOf(values)) {}
TVec::TVec(std::span<const TCplx> values) : TVec(CopyOf(values)) {}
TVec::TVec(std::span<const TSCplx> values) : TVec(CopyOf(values)) {}
TVec::TVec(std::span<const std::complex<double>> values) : TVec(AsPairs(values)) {}
TVec::TVec(std::span<const std::complex<float>> values) : TVec(AsPairs(values)) {}

template <Element T>
TVec TVec::ViewOf(std::span<T> memory) {
  TVec view;
  view.Borrow(std::span<const T>(memory));
  return view;
}

TVec TVec::View(std::span<double> memory) { return ViewOf(memory); }
TVec TVec::View(std::span<float> memory) { return ViewOf(memory); }
TVec TVec::View(std::span<TCplx> memory) { return ViewOf(memory); }
TVec TVec::View(std::span<TSCplx> memory) { return ViewOf(memory); }
TVec TVec::View(std::span<std::complex<double>> memory) { return ViewOf(AsPairs(memory)); }
TVec TVec::View(std::span<std::complex<float>> memory) { return ViewOf(AsPairs(memory)); }

void TVec::Size(std::int32_t Len, bool Complex, bool IsDouble) { SetShape(1, Len, MakePrecision(Complex, IsDouble)); }
void TVec::Size(std::int32_t Len, TMtxFloatPrecision FloatPrecision) { SetShape(1, Len, FloatPrecision); }
void TVec::Size(std::int32_t Len, const TDense& Src) { SetShape(1, Len, Src.FloatPrecision()); }

void TVec::Resize(std::int32_t Len, bool ZeroIt) {
  static_cast<void>(ZeroIt);  // new elements are always cleared: cheaper than a bug that comes and goes
  SetLengthKeeping(Len);
}

void TVec::Resize(const TVec& Src, std::int32_t Len, bool ZeroIt) {
  if (this == &Src) return Resize(Len, ZeroIt);
  TVec head;
  head.SetSubRange(Src, 0, std::clamp(Len, std::int32_t{0}, Src.length_));
  Size(Len, Src);
  Copy(head, 0, 0, head.length_);
  if (Len > head.length_) SetZero(head.length_, Len - head.length_);
}

void TVec::SetSubRange(std::int32_t Index, std::int32_t Len) { SetSubRange(*this, Index, Len); }

void TVec::SetSubRange(const TVec& Src, std::int32_t Index, std::int32_t Len) {
  Src.ValidateParams(Index, Len);
  SetView(Src, Index, Len);
}

void TVec::ValidateParams(std::int32_t Index, std::int32_t& Len) const {
  const std::int32_t settled = Len == -1 && Index >= 0 && Index <= length_ ? length_ - Index : Len;
  if (!IsInside(Index, settled, length_)) ERaise(RangeText(Index, Len, length_));
  Len = settled;
}

void TVec::ValidateParams(const TVec& Src, std::int32_t SrcIndex, std::int32_t Index, std::int32_t& Len) const {
  std::int32_t of_source = Len;
  std::int32_t own = Len;
  Src.ValidateParams(SrcIndex, of_source);
  ValidateParams(Index, own);
  Len = std::min(of_source, own);
}

std::size_t TVec::RealPosition(std::int32_t i) const {
  CheckIndex(i);
  if (Complex()) ERaise("a complex element is read as a real number");
  return static_cast<std::size_t>(i);
}

void TVec::CheckIndex(std::int32_t i) const {
  if (i >= 0 && i < length_) return;
  ERaise("index " + std::to_string(i) + " is outside a vector of length " + std::to_string(length_));
}

double TVec::operator[](std::int32_t i) const {
  const std::size_t place = RealPosition(i);
  return IsDouble() ? Values()[place] : static_cast<double>(SValues()[place]);
}

void TVec::SetDefault(std::int32_t i, double Value) {
  const std::size_t place = RealPosition(i);
  ForReal(*this, [&]<class R>(ElementTag<R>) { Elements<R>()[place] = static_cast<R>(Value); });
}

double TVec::GetFirst() const { return (*this)[0]; }
double TVec::GetLast() const { return (*this)[length_ - 1]; }

TCplx TVec::GetLastc() const {
  CheckIndex(length_ - 1);
  return ForAny(*this, [&]<Element T>(ElementTag<T>) {
    const T last = Elements<T>().back();
    if constexpr (IsComplex<T>) {
      return static_cast<TCplx>(last);
    } else {
      return Cplx(last);
    }
  });
}

std::int32_t TVec::SDataIndex(std::int32_t i) const {
  if (Complex()) ERaise("SDataIndex: complex elements");
  CheckIndex(i);
  return OffsetInBuffer() + i;
}

std::int32_t TVec::CDataIndex(std::int32_t i) const {
  if (!Complex()) ERaise("CDataIndex: real elements");
  CheckIndex(i);
  return OffsetInBuffer() + i;
}

std::ostream& operator<<(std::ostream& out, const TVec& Vec) {
  out << '[';
  ForAny(Vec, [&]<Element T>(ElementTag<T>) {
    const char* separator = "";
    for (const T x : Vec.Elements<T>()) {
      out << separator << x;
      separator = ", ";
    }
  });
  return out << ']';
}

}  // namespace passband
