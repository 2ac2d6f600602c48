// The argument type of routines that take an array of doubles.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

namespace passband {

/// A view of doubles in a row that the caller holds: a braced list, a `std::vector`, a `std::array` or a `std::span`.
/// It owns nothing and is used as a parameter only; a braced list lives until the call returns.
class OpenArray {
 public:
  constexpr OpenArray() = default;
  constexpr OpenArray(std::initializer_list<double> values)  // NOLINT: implicit on purpose
      : values_(std::span<const double>(std::data(values), std::size(values))) {}
  template <class Range>
    requires std::convertible_to<const Range&, std::span<const double>>
  constexpr OpenArray(const Range& values) : values_(values) {}  // NOLINT: implicit on purpose

  constexpr std::int32_t Length() const { return static_cast<std::int32_t>(values_.size()); }
  constexpr double operator[](std::int32_t i) const { return values_[static_cast<std::size_t>(i)]; }
  constexpr const double* begin() const { return values_.data(); }
  constexpr const double* end() const { return values_.data() + values_.size(); }
  constexpr std::span<const double> Span() const { return values_; }

 private:
  std::span<const double> values_;
};

}  // namespace passband
