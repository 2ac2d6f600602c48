// Audio files, through libsndfile.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "output_file.h"
#include "signal_file.h"

// NOLINTNEXTLINE(bugprone-reserved-identifier): the library's own name of its handle
struct sf_private_tag;

namespace passband_cli {

struct SoundFileCloser {
  void operator()(sf_private_tag* file) const;
};
using SoundFile = std::unique_ptr<sf_private_tag, SoundFileCloser>;

/// Reads wav, flac, aiff, ogg and whatever else libsndfile knows. An integer sample k of b bits reads as k / 2^(b - 1).
class AudioReader final : public SignalReader {
 public:
  explicit AudioReader(const std::string& path);
  const SignalFormat& Format() const override { return format_; }
  std::size_t Read(std::span<double> samples) override;

 private:
  std::string path_;
  SoundFile file_;
  SignalFormat format_;
};

/// Writes wav, w64, flac or aiff. A sample x becomes the integer nearest to x 2^(b - 1), ties to even, clipped at full
/// scale; without dither, so that what was read and not changed is written back bit for bit.
class AudioWriter final : public SignalWriter {
 public:
  AudioWriter(const std::string& path, const std::string& extension, const SignalFormat& format);
  void Write(std::span<const double> samples) override;
  void Finish() override;
  std::int64_t SamplesOutOfRange() const override { return out_of_range_; }

 private:
  void Quantise(std::span<const double> samples);

  OutputFile output_;
  SoundFile file_;
  int pcm_bits_;
  std::int64_t out_of_range_ = 0;
  std::vector<std::int32_t> integers_;
};

}  // namespace passband_cli
