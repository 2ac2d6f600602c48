#include "passband/analysis/format_text.h"

#include <cstddef>

namespace passband::SignalUtils {

std::string SignalFormatDescription(double SamplingFrequency, TMtxFloatPrecision Precision, std::int32_t ChannelCount,
                                    std::int32_t RecordCount) {
  std::string text = SampleToStr(SamplingFrequency, 0, 7) + " Hz, " + PrecisionToStr(Precision) +
                     ", Ch: " + std::to_string(ChannelCount);
  if (RecordCount > 0) text += ", Records: " + std::to_string(RecordCount);
  return text;
}

std::string AlignString(std::string_view S, std::int32_t Width, TTextAlign Align) {
  const std::size_t width = Width > 0 ? static_cast<std::size_t>(Width) : 0;
  const std::size_t missing = width > S.size() ? width - S.size() : 0;
  const std::string text(S);
  switch (Align) {
    case TTextAlign::Center:
      return std::string(missing / 2, ' ') + text + std::string(missing / 2, ' ');
    case TTextAlign::Right:
      return std::string(missing, ' ') + text;
    case TTextAlign::Left:
      return text + std::string(missing, ' ');
  }
  return {};
}

}  // namespace passband::SignalUtils
