// How the samples of an audio file are stored.
#pragma once

#include <string>
#include <string_view>

namespace passband_cli {

/// Integers are signed two's complement of the given width (8 bits: as the container has it); `Other` is a compressed
/// format that can be read and is written as 16-bit integers.
enum class SampleFormat { Pcm8, Pcm16, Pcm24, Pcm32, Float, Double, Other };

/// Width of an integer format, 0 for the others.
int PcmBits(SampleFormat format);
/// Bytes of one stored sample, uncompressed.
int BytesPerSample(SampleFormat format);

/// The name on the command line: pcm8, pcm16, pcm24, pcm32, float, double.
std::string_view SampleFormatName(SampleFormat format);
/// The format of a name; raises a `Failure` that lists the names.
SampleFormat SampleFormatFromName(const std::string& name);

}  // namespace passband_cli
