// Signals in files: a number of channels side by side, read and written block by block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "sample_format.h"

namespace passband_cli {

/// What a file says about its signal.
struct SignalFormat {
  int channels = 0;
  double rate_hz = 0;        ///< 0 when the file does not tell, as in CSV
  std::int64_t frames = -1;  ///< samples per channel; -1 when that is known at the end only
  SampleFormat samples = SampleFormat::Double;
  std::vector<std::string> names;  ///< of the channels; empty when they have none
};

/// Reads a signal. Samples are interleaved, frame after frame; full scale of an audio file is 1.
class SignalReader {
 public:
  virtual ~SignalReader() = default;
  virtual const SignalFormat& Format() const = 0;
  /// Fills as many whole frames of `samples` as there are left and returns their number; 0 at the end.
  virtual std::size_t Read(std::span<double> samples) = 0;
};

/// Writes a signal; nothing stands at the path before `Finish`.
class SignalWriter {
 public:
  virtual ~SignalWriter() = default;
  virtual void Write(std::span<const double> samples) = 0;
  virtual void Finish() = 0;
  /// Samples that the sample format could not hold: beyond full scale (clipped) or not a number (written as 0).
  virtual std::int64_t SamplesOutOfRange() const { return 0; }
};

/// Opens a signal of any kind: CSV by the extension .csv, else whatever the audio file library recognises.
std::unique_ptr<SignalReader> OpenSignal(const std::string& path);

/// Creates a signal; the extension decides on the kind (.csv, .wav, .w64, .flac, .aif, .aiff). `format.frames` is what
/// is going to be written, or -1.
std::unique_ptr<SignalWriter> CreateSignal(const std::string& path, const SignalFormat& format);

/// Raises, with the reason, when a file cannot be read.
void RefuseUnreadable(const std::string& path);

/// Whether a path names a CSV file.
bool IsCsvPath(const std::string& path);

}  // namespace passband_cli
