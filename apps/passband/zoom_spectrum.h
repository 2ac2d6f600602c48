// The spectrum of samples over a few frequencies, by the chirp-z transform.
#pragma once

#include <cstdint>

#include <passband/passband.h>

#include "plot.h"

namespace passband_cli {

/// A window and its parameter.
struct ZoomWindow {
  passband::SignalUtils::TSignalWindowType type = passband::SignalUtils::TSignalWindowType::wtHanning;
  double param = 0;
};

/// The level of a sine at each of `points` frequencies from `from_hz` to `to_hz`, relative to one of full scale, in dB
/// over Hz; -400 dB stands for silence. Raises a `Failure` when the window leaves nothing of the samples.
Curve ZoomSpectrum(const passband::TVec& samples, double rate_hz, double from_hz, double to_hz, std::int32_t points,
                   const ZoomWindow& window);

}  // namespace passband_cli
