// The power spectrum of a recording in a file.
#pragma once

#include <optional>
#include <string>

#include "power_spectrum.h"

namespace passband_cli {

struct RecordingSpectrum {
  PowerSpectrum spectrum;
  int channels = 0;
  double rate_hz = 0;
};

/// Reads a whole recording, block by block. `rate_hz` is the rate of a file that does not tell its own.
RecordingSpectrum MeasureRecording(const std::string& path, const std::optional<double>& rate_hz, double resolution_hz);

/// Raises unless the resolution of a spectrum is a finite positive number.
void CheckResolution(double resolution_hz);

}  // namespace passband_cli
