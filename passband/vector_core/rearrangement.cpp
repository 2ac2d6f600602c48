#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "passband/vector_core/elementwise_internal.h"
#include "passband/vector_core/mtx.h"
#include "passband/vector_core/sorting.h"
#include "passband/vector_core/vec.h"

namespace passband {
namespace {

using detail::Reading;

template <Element T>
void Move(const T* from, T* to, std::size_t count) {
  if (count > 0) std::memmove(to, from, count * sizeof(T));
}

// Settles Len = -1 as the number of elements that the array and the vector both hold from there on.
void ValidateArray(std::size_t size, std::int32_t array_index, const TVec& dst, std::int32_t index, std::int32_t& len) {
  constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
  const auto first = static_cast<std::size_t>(std::max(array_index, 0));
  const std::size_t rest = size - std::min(first, size);
  const std::int32_t in_array = len == -1 ? static_cast<std::int32_t>(std::min(rest, kMost)) : len;
  if (array_index < 0 || first > size || in_array < 0 || static_cast<std::size_t>(in_array) > rest) {
    ERaise("ArrayIndex = " + std::to_string(array_index) + ", Len = " + std::to_string(len) +
           " is outside an array of length " + std::to_string(size));
  }
  dst.ValidateParams(index, len);
  len = std::min(len, in_array);
}

template <Element From>
void CopyArray(TVec& dst, std::span<const From> array, std::int32_t array_index, std::int32_t index, std::int32_t len) {
  ValidateArray(array.size(), array_index, dst, index, len);
  if (IsComplex<From> && !dst.Complex()) ERaise("CopyFromArray: complex elements into a real vector");
  const auto x = array.subspan(static_cast<std::size_t>(array_index), static_cast<std::size_t>(len));
  ForAny(dst, [&]<Element To>(ElementTag<To>) {
    detail::Transform(detail::Stretch<To>(dst, index, len), detail::Convert<To, From>, x);
  });
}

std::string NotFilled(std::size_t numbers, std::int64_t elements) {
  return "SetIt: " + std::to_string(numbers) + " numbers do not fill " + std::to_string(elements) + " elements";
}

}  // namespace

// Arrays of the host

void TVec::SetIt(bool Complex, OpenArray Values) {
  const std::size_t count = Values.Span().size();
  const std::size_t length = Complex ? count / 2 + count % 2 : count;
  if (length > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    ERaise("Size: more than 2147483647 elements");
  }
  FillFrom(static_cast<std::int32_t>(length), MakePrecision(Complex, IsDouble()), Values.Span());
}

void TVec::SetIt(std::int32_t Len, OpenArray Values) { FillFrom(Len, precision_, Values.Span()); }

void TVec::FillFrom(std::int32_t len, TMtxFloatPrecision precision, std::span<const double> numbers) {
  const std::int64_t wanted = static_cast<std::int64_t>(len) * (IsComplexPrecision(precision) ? 2 : 1);
  if (wanted != static_cast<std::int64_t>(numbers.size())) ERaise(NotFilled(numbers.size(), len));
  ForAny(precision, [&]<Element T>(ElementTag<T>) {
    const auto write = [](std::span<T> y, const double* x) {
      const auto parts = detail::Parts(y);
      detail::Loop(parts.size(), parts.data(), detail::Convert<RealOf<T>, double>, x);
    };
    Rebuild<T>(1, len, Reading::AnyOrder, write, numbers);
  });
}

void TVec::CopyFromArray(std::span<const double> Array, std::int32_t ArrayIndex, std::int32_t Index, std::int32_t Len) {
  CopyArray(*this, Array, ArrayIndex, Index, Len);
}
void TVec::CopyFromArray(std::span<const TCplx> Array, std::int32_t ArrayIndex, std::int32_t Index, std::int32_t Len) {
  CopyArray(*this, Array, ArrayIndex, Index, Len);
}
void TVec::CopyFromArray(std::span<const TSCplx> Array, std::int32_t ArrayIndex, std::int32_t Index, std::int32_t Len) {
  CopyArray(*this, Array, ArrayIndex, Index, Len);
}

void TVec::CopyToArray(std::vector<double>& Array) const {
  ForAny(*this, [&]<Element T>(ElementTag<T>) {
    const auto parts = detail::Parts(Elements<T>());
    Array.resize(parts.size());
    std::copy(parts.begin(), parts.end(), Array.begin());
  });
}

// Copies

void TVec::Copy(const TVec& Src, std::int32_t SrcIndex, std::int32_t Index, std::int32_t Len) {
  ValidateParams(Src, SrcIndex, Index, Len);
  CheckSamePrecision(Src);
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    const auto y = detail::Stretch<T>(*this, Index, Len);
    Move(detail::Stretch<T>(Src, SrcIndex, Len).data(), y.data(), y.size());
  });
}

void TVec::Copy(const TVec& Src1, const TVec& Src2) {
  Src1.CheckSamePrecision(Src2);
  const std::int64_t total = static_cast<std::int64_t>(Src1.length_) + Src2.length_;
  if (total > std::numeric_limits<std::int32_t>::max()) ERaise("Size: more than 2147483647 elements");
  ForAny(Src1, [&]<Element T>(ElementTag<T>) {
    const auto head = Src1.Elements<T>();
    const auto tail = Src2.Elements<T>();
    const auto write = [&](std::span<T> y, const T* first, const T* second) {
      Move(first, y.data(), head.size());
      Move(second, y.data() + head.size(), tail.size());
    };
    Rebuild<T>(1, static_cast<std::int32_t>(total), Reading::AnyOrder, write, head, tail);
  });
}

void TVec::GetRow(const TMtx& Mtx, std::int32_t Row) { GetRow(Mtx, Row, 0, Mtx.Cols()); }

void TVec::GetRow(const TMtx& Mtx, std::int32_t Row, std::int32_t Col, std::int32_t Len) {
  if (Len == -1) Len = Mtx.Cols() - std::clamp(Col, 0, Mtx.Cols());
  Mtx.ValidateBlock(Row, Col, 1, Len);
  ForAny(Mtx, [&]<Element T>(ElementTag<T>) {
    const std::size_t first = static_cast<std::size_t>(Row) * static_cast<std::size_t>(Mtx.Cols());
    const auto row = Mtx.Elements<T>().subspan(first + static_cast<std::size_t>(Col), static_cast<std::size_t>(Len));
    const auto write = [](std::span<T> y, const T* x) { Move(x, y.data(), y.size()); };
    Rebuild<T>(1, Len, Reading::AnyOrder, write, row);
  });
}

void TVec::Diag(const TMtx& Mtx) {
  ForAny(Mtx, [&]<Element T>(ElementTag<T>) {
    const std::size_t step = static_cast<std::size_t>(Mtx.Cols()) + 1;
    const auto write = [step](std::span<T> y, const T* x) {
      for (std::size_t k = 0; k < y.size(); ++k) y[k] = x[k * step];
    };
    Rebuild<T>(1, std::min(Mtx.Rows(), Mtx.Cols()), Reading::AnyOrder, write, Mtx.Elements<T>());
  });
}

// Other orders

void TVec::Reverse() {
  ForAny(*this, [&]<Element T>(ElementTag<T>) {
    const auto x = Elements<T>();
    std::reverse(x.begin(), x.end());
  });
}

void TVec::Reverse(const TVec& Src, std::int32_t SrcIndex, std::int32_t Index, std::int32_t Len) {
  ValidateParams(Src, SrcIndex, Index, Len);
  CheckSamePrecision(Src);
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    const auto y = detail::Stretch<T>(*this, Index, Len);
    const auto x = detail::Stretch<T>(Src, SrcIndex, Len);
    const detail::Operand<T> held(x, detail::Disturbs<T>(detail::Memory(y), x, Reading::AnyOrder));
    std::reverse_copy(held.First(), held.First() + x.size(), y.begin());
  });
}

void TVec::Shift(std::int32_t n) {
  const std::int64_t places = std::min<std::int64_t>(std::abs(static_cast<std::int64_t>(n)), length_);
  const auto vacated = static_cast<std::int32_t>(places);
  const std::int32_t kept = length_ - vacated;
  Copy(*this, n > 0 ? 0 : vacated, n > 0 ? vacated : 0, kept);
  SetZero(n > 0 ? 0 : kept, vacated);
}

void TVec::Rotate(std::int32_t n) {
  if (length_ == 0) return;
  const std::int32_t up = n % length_ < 0 ? n % length_ + length_ : n % length_;
  ForAny(*this, [&]<Element T>(ElementTag<T>) {
    const auto x = Elements<T>();
    std::rotate(x.begin(), x.end() - up, x.end());
  });
}

void TVec::Scatter(const TVec& Src, std::int32_t Step, std::int32_t Index, std::int32_t Len) {
  if (Step < 1) ERaise("Scatter: Step < 1");
  const std::int64_t room = static_cast<std::int64_t>(length_) - Index;
  const std::int64_t places = (room + Step - 1) / Step;
  const std::int64_t wanted = Len == -1 ? std::min<std::int64_t>(Src.length_, places) : Len;
  if (Index < 0 || room < 0 || wanted < 0 || wanted > places) {
    ERaise("Scatter: Index = " + std::to_string(Index) + ", Step = " + std::to_string(Step) +
           ", Len = " + std::to_string(Len) + " is outside a vector of length " + std::to_string(length_));
  }
  auto count = static_cast<std::int32_t>(wanted);
  Src.ValidateParams(0, count);
  CheckSamePrecision(Src);
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    const auto y = Elements<T>().subspan(static_cast<std::size_t>(Index));
    const auto x = detail::Stretch<T>(Src, 0, count);
    const detail::Operand<T> held(x, detail::Disturbs<T>(detail::Memory(y), x, Reading::AnyOrder));
    const auto step = static_cast<std::size_t>(Step);
    for (std::size_t k = 0; k < x.size(); ++k) y[k * step] = held.First()[k];
  });
}

void TVec::DownSample(const TVec& Src, std::int32_t Factor, std::int32_t Phase) {
  if (Factor < 1) ERaise("DownSample: Factor < 1");
  if (Phase < 0) ERaise("DownSample: Phase < 0");
  const std::int32_t length = Phase < Src.length_ ? (Src.length_ - 1 - Phase) / Factor + 1 : 0;
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    const auto write = [&](std::span<T> y, const T* x) {
      const auto phase = static_cast<std::size_t>(Phase);
      const auto factor = static_cast<std::size_t>(Factor);
      for (std::size_t k = 0; k < y.size(); ++k) y[k] = x[phase + k * factor];
    };
    Rebuild<T>(1, length, Reading::AnyOrder, write, Src.Elements<T>());
  });
}

void TVec::Difference(const TVec& Src, std::int32_t Lag) {
  if (Lag < 0) ERaise("Difference: Lag < 0");
  const std::int32_t length = std::max(Src.length_ - Lag, 0);
  ForAny(Src, [&]<Element T>(ElementTag<T>) {
    const auto write = [Lag](std::span<T> y, const T* x) {
      if (y.empty()) return;
      detail::Loop(
          y.size(), y.data(), [](T a, T b) { return a - b; }, x + Lag, x);
    };
    Rebuild<T>(1, length, Reading::AnyOrder, write, Src.Elements<T>());
  });
}

// Values by position

void TVec::Ramp(double Offset, double Step, std::int32_t Index, std::int32_t Len) {
  Ramp(Cplx(Offset), Cplx(Step), Index, Len);
}

void TVec::Ramp(TCplx Offset, TCplx Step, std::int32_t Index, std::int32_t Len) {
  ValidateParams(Index, Len);
  if (!Complex() && !(Offset.Im == 0 && Step.Im == 0)) ERaise("a complex value on real elements");
  ForAny(*this, [&]<Element T>(ElementTag<T>) {
    const auto y = detail::Stretch<T>(*this, Index, Len);
    for (std::int32_t k = 0; k < Len; ++k) {
      if constexpr (IsComplex<T>) {
        y[static_cast<std::size_t>(k)] = static_cast<T>(Offset + static_cast<double>(k) * Step);
      } else {
        y[static_cast<std::size_t>(k)] = static_cast<T>(Offset.Re + k * Step.Re);
      }
    }
  });
}

void TVec::SortAscend(std::int32_t Index, std::int32_t Len) {
  ValidateParams(Index, Len);
  detail::RequireReal(*this, "SortAscend: complex elements");
  ForReal(*this, [&]<Element R>(ElementTag<R>) { detail::SortAscending(detail::Stretch<R>(*this, Index, Len)); });
}

}  // namespace passband
