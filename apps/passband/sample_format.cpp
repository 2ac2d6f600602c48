#include "sample_format.h"

#include <array>

#include "failure.h"

namespace passband_cli {
namespace {

struct Row {
  SampleFormat format;
  std::string_view name;
  int pcm_bits;
  int bytes;
};

constexpr std::array kRows{
    Row{SampleFormat::Pcm8, "pcm8", 8, 1},    Row{SampleFormat::Pcm16, "pcm16", 16, 2},
    Row{SampleFormat::Pcm24, "pcm24", 24, 3}, Row{SampleFormat::Pcm32, "pcm32", 32, 4},
    Row{SampleFormat::Float, "float", 0, 4},  Row{SampleFormat::Double, "double", 0, 8},
    Row{SampleFormat::Other, "other", 0, 2},
};

const Row& RowOf(SampleFormat format) { return kRows[static_cast<std::size_t>(format)]; }

}  // namespace

int PcmBits(SampleFormat format) { return RowOf(format).pcm_bits; }
int BytesPerSample(SampleFormat format) { return RowOf(format).bytes; }
std::string_view SampleFormatName(SampleFormat format) { return RowOf(format).name; }

SampleFormat SampleFormatFromName(const std::string& name) {
  for (const Row& row : kRows) {
    if (row.name == name && row.format != SampleFormat::Other) return row.format;
  }
  Fail("--subtype: '{}' is none of pcm8, pcm16, pcm24, pcm32, float, double", name);
}

}  // namespace passband_cli
