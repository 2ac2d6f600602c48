// Amplitudes in decibels.
#pragma once

#include <algorithm>
#include <cmath>

namespace passband_cli {

inline constexpr double kLowestDb = -400;  ///< stands for an amplitude of 0

/// 20 log10 of an amplitude, and not below `kLowestDb`.
inline double Decibels(double amplitude) { return std::max(20 * std::log10(amplitude), kLowestDb); }

}  // namespace passband_cli
