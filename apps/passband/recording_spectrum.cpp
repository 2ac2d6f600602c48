#include "recording_spectrum.h"

#include <cmath>
#include <vector>

#include "failure.h"
#include "fir_options.h"
#include "progress.h"
#include "signal_file.h"

namespace passband_cli {

RecordingSpectrum MeasureRecording(const std::string& path, const std::optional<double>& rate_hz,
                                   double resolution_hz) {
  constexpr std::size_t kBlock = 4096;
  const auto reader = OpenSignal(path);
  const SignalFormat& format = reader->Format();
  if (rate_hz) CheckRate(*rate_hz);
  const double rate = format.rate_hz > 0 ? format.rate_hz : rate_hz.value_or(0.0);
  if (!(rate > 0)) Fail("--rate is required: {} does not tell its sampling rate", path);
  PowerSpectrum spectrum(format.channels, SegmentLength(rate, resolution_hz));
  Progress progress(format.frames);
  std::vector<double> block(kBlock * static_cast<std::size_t>(format.channels));
  while (const std::size_t frames = reader->Read(block)) {
    spectrum.Add(std::span<const double>(block).first(frames * static_cast<std::size_t>(format.channels)));
    progress.Update(spectrum.Frames());
  }
  spectrum.Finish();
  if (spectrum.Frames() == 0) Fail("{} holds no samples", path);
  return {std::move(spectrum), format.channels, rate};
}

void CheckResolution(double resolution_hz) {
  if (!(resolution_hz > 0 && std::isfinite(resolution_hz)))
    Fail("--resolution: {} Hz is not a resolution", resolution_hz);
}

}  // namespace passband_cli
