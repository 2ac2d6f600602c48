#include "passband/vector_core/dense.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <utility>

#include "passband/foundation/text.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/elementwise_internal.h"

namespace passband {
namespace detail {

// A block of memory that starts at a cache line, so that vector loads of a whole object never straddle one.
struct Buffer {
  static constexpr std::align_val_t kAlignment{64};

  explicit Buffer(std::size_t bytes)
      : data(static_cast<std::byte*>(::operator new(bytes, kAlignment))), capacity(bytes) {}
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;
  ~Buffer() { ::operator delete(data, kAlignment); }

  std::byte* data;
  std::size_t capacity;
};

void RaisePrecision(TMtxFloatPrecision held, TMtxFloatPrecision asked) {
  ERaise("the elements are " + PrecisionToStr(held) + ", not " + PrecisionToStr(asked));
}

}  // namespace detail

namespace {

std::size_t ElementBytes(TMtxFloatPrecision precision) {
  return ForAny(precision, []<Element T>(ElementTag<T>) { return sizeof(T); });
}

std::size_t Bytes(std::int32_t length, TMtxFloatPrecision precision) {
  return static_cast<std::size_t>(length) * ElementBytes(precision);
}

}  // namespace

TDense::TDense(const TDense& other) : kind_(other.kind_) { Copy(other); }

TDense::TDense(TDense&& other) noexcept : kind_(other.kind_) { *this = std::move(other); }

TDense& TDense::operator=(const TDense& other) {
  Copy(other);
  return *this;
}

TDense& TDense::operator=(TDense&& other) noexcept {
  if (this == &other) return *this;
  const bool resized = rows_ != other.rows_ || cols_ != other.cols_ || precision_ != other.precision_;
  const bool emptied = other.length_ != 0;
  buffer_ = std::move(other.buffer_);
  data_ = std::exchange(other.data_, nullptr);
  length_ = std::exchange(other.length_, 0);
  rows_ = std::exchange(other.rows_, other.kind_ == Kind::Vector ? 1 : 0);
  cols_ = std::exchange(other.cols_, 0);
  precision_ = other.precision_;
  if (resized) Notify();
  if (emptied) other.Notify();
  return *this;
}

TDense::~TDense() = default;

void TDense::Take(TDense& Src) {
  if (rows_ == Src.rows_ && cols_ == Src.cols_ && precision_ == Src.precision_) {
    const auto from = Src.Memory();
    if (!from.empty()) std::memmove(data_, from.data(), from.size());
    return;
  }
  std::swap(buffer_, Src.buffer_);
  std::swap(data_, Src.data_);
  std::swap(length_, Src.length_);
  std::swap(rows_, Src.rows_);
  std::swap(cols_, Src.cols_);
  std::swap(precision_, Src.precision_);
  Notify();
}

void TDense::SetShape(std::int32_t rows, std::int32_t cols, TMtxFloatPrecision precision) {
  const std::int64_t length = static_cast<std::int64_t>(rows) * cols;
  if (rows < 0 || cols < 0) ERaise("Size: a length is negative");
  if (length > std::numeric_limits<std::int32_t>::max()) ERaise("Size: more than 2147483647 elements");
  if (rows == rows_ && cols == cols_ && precision == precision_) return;

  const std::size_t bytes = Bytes(static_cast<std::int32_t>(length), precision);
  const bool only_reshaped = length == length_ && precision == precision_;  // views stay where they are
  if (!only_reshaped) {
    const bool alone = buffer_ != nullptr && buffer_.use_count() == 1;
    if (!alone || buffer_->capacity < bytes) {
      buffer_ = bytes == 0 ? nullptr : std::make_shared<detail::Buffer>(bytes);
    }
    data_ = buffer_ ? buffer_->data : nullptr;
  }
  length_ = static_cast<std::int32_t>(length);
  rows_ = rows;
  cols_ = cols;
  precision_ = precision;
  Notify();
}

void TDense::SetShapeLike(const TDense& src, TMtxFloatPrecision precision) {
  if (kind_ == Kind::Matrix) {
    SetShape(src.rows_, src.cols_, precision);
  } else {
    SetShape(1, src.length_, precision);
  }
}

void TDense::SizeTogether(TDense& first, TDense& second, std::int32_t rows, std::int32_t cols,
                          TMtxFloatPrecision precision) {
  const auto length = static_cast<std::int32_t>(static_cast<std::int64_t>(rows) * cols);
  const std::size_t bytes = Bytes(length, precision);
  const bool stays = length == second.length_ && precision == second.precision_;
  const bool roomy = second.buffer_.use_count() == 1 && second.buffer_->capacity >= bytes;
  auto reserve = stays || roomy || bytes == 0 ? nullptr : std::make_shared<detail::Buffer>(bytes);
  const auto size = [=](TDense& x) {
    const bool matrix = x.kind_ == Kind::Matrix;
    x.SetShape(matrix ? rows : 1, matrix ? cols : length, precision);
  };
  size(first);  // the last step that can run out of memory
  if (reserve) second.buffer_ = std::move(reserve);
  size(second);
}

void TDense::SetLengthKeeping(std::int32_t length) {
  if (length < 0) ERaise("Size: a length is negative");
  if (length == length_) return;
  const std::size_t kept = Bytes(std::min(length, length_), precision_);
  const std::size_t bytes = Bytes(length, precision_);
  const bool alone = buffer_ != nullptr && buffer_.use_count() == 1 && data_ == buffer_->data;
  if (alone && bytes <= buffer_->capacity) {
    length_ = length;
  } else {
    auto grown = bytes == 0 ? nullptr : std::make_shared<detail::Buffer>(bytes);
    if (kept > 0) std::memcpy(grown->data, data_, kept);
    buffer_ = std::move(grown);
    data_ = buffer_ ? buffer_->data : nullptr;
    length_ = length;
  }
  if (bytes > kept) std::memset(data_ + kept, 0, bytes - kept);
  rows_ = 1;
  cols_ = length;
  Notify();
}

void TDense::SetView(const TDense& src, std::int32_t index, std::int32_t length) {
  const bool resized = length != length_ || precision_ != src.precision_;
  std::byte* const first = src.data_ == nullptr ? nullptr : src.data_ + Bytes(index, src.precision_);
  buffer_ = src.buffer_;
  data_ = first;
  length_ = length;
  rows_ = 1;
  cols_ = length;
  precision_ = src.precision_;
  if (resized) Notify();
}

void TDense::SetExternal(void* data, std::size_t length, TMtxFloatPrecision precision) {
  if (length > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    ERaise("View: more than 2147483647 elements");
  }
  buffer_.reset();
  data_ = static_cast<std::byte*>(data);
  length_ = static_cast<std::int32_t>(length);
  rows_ = 1;
  cols_ = length_;
  precision_ = precision;
}

void TDense::CheckFits(const TDense& other) const {
  const auto shape = [](const TDense& x) { return std::to_string(x.rows_) + " x " + std::to_string(x.cols_); };
  if (kind_ == Kind::Matrix) {
    if (rows_ == other.rows_ && cols_ == other.cols_) return;
    ERaise("TMtx: the operands have shapes " + shape(*this) + " and " + shape(other));
  }
  if (length_ == other.length_) return;
  ERaise("TVec: the operands have lengths " + std::to_string(length_) + " and " + std::to_string(other.length_));
}

void TDense::CheckSamePrecision(const TDense& other) const {
  if (precision_ == other.precision_) return;
  ERaise("the operands have precisions " + PrecisionToStr(precision_) + " and " + PrecisionToStr(other.precision_));
}

std::int32_t TDense::OffsetInBuffer() const {
  if (buffer_ == nullptr) return 0;
  return static_cast<std::int32_t>(static_cast<std::size_t>(data_ - buffer_->data) / ElementBytes(precision_));
}

void TDense::ReleaseForeign() noexcept {
  notify_.reset();
  const bool own = buffer_ != nullptr && buffer_.use_count() == 1;
  if (own) return;
  buffer_.reset();
  data_ = nullptr;
  length_ = 0;
  rows_ = kind_ == Kind::Vector ? 1 : 0;
  cols_ = 0;
}

void TDense::Size(const TDense& Src) { SetShapeLike(Src, Src.precision_); }

void TDense::SetFloatPrecision(TMtxFloatPrecision Precision) {
  if (Precision == precision_) return;
  if (length_ == 0) return SetShape(rows_, cols_, Precision);
  auto converted = std::make_shared<detail::Buffer>(Bytes(length_, Precision));
  ForAny(precision_, [&]<Element From>(ElementTag<From>) {
    ForAny(Precision, [&]<Element To>(ElementTag<To>) {
      const auto x = std::as_const(*this).Elements<From>();
      std::transform(x.begin(), x.end(), reinterpret_cast<To*>(converted->data), detail::Convert<To, From>);
    });
  });
  buffer_ = std::move(converted);
  data_ = buffer_->data;
  precision_ = Precision;
  Notify();
}

void TDense::setComplex(bool IsComplex) {
  if (IsComplex == Complex()) return;
  if (IsComplex && cols_ % 2 != 0) ERaise("setComplex: an odd number of reals (" + std::to_string(cols_) + ")");
  const std::int64_t length = IsComplex ? length_ / 2 : 2 * static_cast<std::int64_t>(length_);
  if (length > std::numeric_limits<std::int32_t>::max()) ERaise("Size: more than 2147483647 elements");
  cols_ = IsComplex ? cols_ / 2 : 2 * cols_;
  length_ = static_cast<std::int32_t>(length);
  precision_ = MakePrecision(IsComplex, IsDouble());
  Notify();
}

void TDense::setOnSetSize(std::function<void()> Notify) {
  notify_ = Notify ? std::make_unique<std::function<void()>>(std::move(Notify)) : nullptr;
}

void TDense::Copy(const TDense& Src) {
  if (this == &Src) return;
  // Another view of the same memory may be longer or shifted: hold on to it until its values are here.
  const std::shared_ptr<detail::Buffer> held = Src.buffer_;
  const std::byte* const source = Src.data_;
  const std::size_t bytes = Bytes(Src.length_, Src.precision_);
  SetShapeLike(Src, Src.precision_);
  if (bytes > 0) std::memmove(data_, source, bytes);
}

}  // namespace passband
