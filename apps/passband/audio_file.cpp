#include "audio_file.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>

#include "failure.h"

namespace passband_cli {
namespace {

SampleFormat FormatOfSubtype(int subtype) {
  switch (subtype & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
      return SampleFormat::Pcm8;
    case SF_FORMAT_PCM_16:
      return SampleFormat::Pcm16;
    case SF_FORMAT_PCM_24:
      return SampleFormat::Pcm24;
    case SF_FORMAT_PCM_32:
      return SampleFormat::Pcm32;
    case SF_FORMAT_FLOAT:
      return SampleFormat::Float;
    case SF_FORMAT_DOUBLE:
      return SampleFormat::Double;
    default:
      return SampleFormat::Other;
  }
}

int ContainerOfExtension(const std::string& path, const std::string& extension) {
  if (extension == ".wav") return SF_FORMAT_WAV;
  if (extension == ".w64") return SF_FORMAT_W64;
  if (extension == ".flac") return SF_FORMAT_FLAC;
  if (extension == ".aif" || extension == ".aiff") return SF_FORMAT_AIFF;
  Fail("cannot write {}: the extension is none of .csv, .wav, .w64, .flac, .aif, .aiff", path);
}

int SubtypeOfFormat(SampleFormat format, int container) {
  switch (format) {
    case SampleFormat::Pcm8:
      return container == SF_FORMAT_WAV || container == SF_FORMAT_W64 ? SF_FORMAT_PCM_U8 : SF_FORMAT_PCM_S8;
    case SampleFormat::Pcm24:
      return SF_FORMAT_PCM_24;
    case SampleFormat::Pcm32:
      return SF_FORMAT_PCM_32;
    case SampleFormat::Float:
      return SF_FORMAT_FLOAT;
    case SampleFormat::Double:
      return SF_FORMAT_DOUBLE;
    case SampleFormat::Pcm16:
    case SampleFormat::Other:
      break;
  }
  return SF_FORMAT_PCM_16;
}

// The header of a wav or aiff file counts its bytes in 32 bits.
void RefuseTooLarge(const std::string& path, int container, const SignalFormat& format) {
  if (container != SF_FORMAT_WAV && container != SF_FORMAT_AIFF) return;
  constexpr double kMostBytes = 4294967295.0 - 65536;  // what is left beside a generous header
  const double bytes = static_cast<double>(format.frames) * format.channels * BytesPerSample(format.samples);
  if (bytes > kMostBytes) Fail("cannot write {}: it would pass 4 GiB; choose .w64 or .flac", path);
}

int WholeRate(const std::string& path, double rate_hz) {
  if (!(rate_hz > 0)) Fail("{} needs a sampling rate; give it with --rate", path);
  if (rate_hz != std::floor(rate_hz) || rate_hz > 1e9) {
    Fail("cannot write {}: a sampling rate of {} Hz does not fit into an audio file; choose .csv", path, rate_hz);
  }
  return static_cast<int>(rate_hz);
}

}  // namespace

void SoundFileCloser::operator()(SNDFILE* file) const { sf_close(file); }

AudioReader::AudioReader(const std::string& path) : path_(path) {
  SF_INFO info{};
  file_.reset(sf_open(path.c_str(), SFM_READ, &info));
  if (!file_) Fail("cannot read {}: {}", path, sf_strerror(nullptr));
  format_.channels = info.channels;
  format_.rate_hz = info.samplerate;
  format_.frames = info.frames;
  format_.samples = FormatOfSubtype(info.format);
}

std::size_t AudioReader::Read(std::span<double> samples) {
  const auto channels = static_cast<std::size_t>(format_.channels);
  const auto wanted = static_cast<sf_count_t>(samples.size() / channels);
  const sf_count_t frames = sf_readf_double(file_.get(), samples.data(), wanted);
  if (sf_error(file_.get()) != SF_ERR_NO_ERROR) Fail("cannot read {}: {}", path_, sf_strerror(file_.get()));
  return static_cast<std::size_t>(std::max<sf_count_t>(frames, 0));
}

AudioWriter::AudioWriter(const std::string& path, const std::string& extension, const SignalFormat& format)
    : output_(path), pcm_bits_(PcmBits(format.samples)) {
  const int container = ContainerOfExtension(path, extension);
  RefuseTooLarge(path, container, format);
  SF_INFO info{};
  info.channels = format.channels;
  info.samplerate = WholeRate(path, format.rate_hz);
  info.format = container | SubtypeOfFormat(format.samples, container);
  if (format.samples == SampleFormat::Other) pcm_bits_ = PcmBits(SampleFormat::Pcm16);
  if (sf_format_check(&info) == 0) {
    Fail("cannot write {}: {} files do not hold {} samples in {} channels at {} Hz", path, extension.substr(1),
         SampleFormatName(format.samples), info.channels, info.samplerate);
  }
  file_.reset(sf_open(output_.WritePath().c_str(), SFM_WRITE, &info));
  if (!file_) Fail("cannot write {}: {}", path, sf_strerror(nullptr));
}

void AudioWriter::Write(std::span<const double> samples) {
  const auto count = static_cast<sf_count_t>(samples.size());
  sf_count_t written = 0;
  if (pcm_bits_ > 0) {
    Quantise(samples);
    written = sf_write_int(file_.get(), integers_.data(), count);
  } else {
    written = sf_write_double(file_.get(), samples.data(), count);
  }
  if (written != count) Fail("cannot write {}: {}", output_.Path(), sf_strerror(file_.get()));
}

void AudioWriter::Quantise(std::span<const double> samples) {
  const double full_scale = std::ldexp(1.0, pcm_bits_ - 1);
  const std::int64_t shift = std::int64_t{1} << (32 - pcm_bits_);  // the library keeps the leading bits of an integer
  integers_.resize(samples.size());
  for (std::size_t n = 0; n < samples.size(); ++n) {
    const double nearest = std::nearbyint(samples[n] * full_scale);
    const bool in_range = nearest >= -full_scale && nearest < full_scale;  // false for NaN
    if (!in_range) ++out_of_range_;
    const double held = std::isnan(nearest) ? 0 : std::clamp(nearest, -full_scale, full_scale - 1);
    integers_[n] = static_cast<std::int32_t>(static_cast<std::int64_t>(held) * shift);
  }
}

void AudioWriter::Finish() {
  sf_write_sync(file_.get());
  const int status = sf_close(file_.release());
  if (status != SF_ERR_NO_ERROR) Fail("cannot write {}: {}", output_.Path(), sf_error_number(status));
  output_.Commit();
}

}  // namespace passband_cli
