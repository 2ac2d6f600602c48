#include "passband/foundation/text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace passband {

std::string SampleToStr(double Value, std::int32_t Digits, std::int32_t Precision) {
  std::array<char, 64> buffer{};
  char* const end = buffer.data() + buffer.size();
  const auto result =
      Precision > 0
          ? std::to_chars(buffer.data(), end, Value, std::chars_format::general, std::min(Precision, std::int32_t{40}))
          : std::to_chars(buffer.data(), end, Value);
  std::string text(buffer.data(), result.ptr);
  const auto width = static_cast<std::size_t>(std::clamp(Digits, std::int32_t{0}, std::int32_t{1000}));
  if (text.size() < width) text.insert(0, width - text.size(), ' ');
  return text;
}

std::string PrecisionToStr(TMtxFloatPrecision Precision) {
  switch (Precision) {
    case TMtxFloatPrecision::SingleReal:
      return "single";
    case TMtxFloatPrecision::DoubleReal:
      return "double";
    case TMtxFloatPrecision::SingleComplex:
      return "single complex";
    case TMtxFloatPrecision::DoubleComplex:
      return "double complex";
  }
  return {};
}

}  // namespace passband
