#include "passband/foundation/enumerations.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace passband {
namespace {

template <class E, std::size_t N>
std::string DisplayName(E value, const std::array<std::string_view, N>& names) {
  const auto ordinal = static_cast<std::size_t>(value);
  return ordinal < N ? std::string(names[ordinal]) : std::string();
}

}  // namespace

namespace SignalUtils {

std::string SignalWindowToString(TSignalWindowType WindowType) {
  static constexpr std::array<std::string_view, 12> names{
      "Rectangular",     "Hanning",        "Hamming",         "Flat top", "Bartlett",  "Blackman",
      "Blackman-Harris", "Blackman exact", "Cosine tappered", "Kaiser",   "Chebyshev", "Exponent down"};
  return DisplayName(WindowType, names);
}

std::string SpectrumTypeToString(TSpectrumType SpectrumType) {
  static constexpr std::array<std::string_view, 6> names{"Peak amplitude", "Peak RMS",      "Peak power",
                                                         "Peak-peak",      "Real cepstrum", "Complex"};
  return DisplayName(SpectrumType, names);
}

}  // namespace SignalUtils

namespace IIRFilters {

std::string IirFilterMethodToString(TIirFilterMethod Method) {
  static constexpr std::array<std::string_view, 7> names{
      "Butterworth", "Chebyshev type I", "Chebyshev type II", "Elliptic filter",
      "DC filter",   "Notch filter",     "Bessel filter"};
  return DisplayName(Method, names);
}

}  // namespace IIRFilters
}  // namespace passband
