// Designs a lowpass and streams a signal of two tones through it in blocks, as a host would that gets its samples from
// a sound card or a converter. The tone below the band edge comes through, the one above it does not.
#include <passband/passband.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <numbers>

namespace {

using namespace passband;
using namespace passband::SignalUtils;

constexpr double kRate = 48000;           // samples per second
constexpr std::int32_t kBlock = 480;      // samples at a time: 10 ms
constexpr std::int32_t kBlocks = 100;     // one second
constexpr std::int32_t kFirstBlock = 10;  // by then the filter has settled

// One block of the two tones; `start` is the number of its first sample in the stream.
void MakeBlock(TVec& x, std::int64_t start, double low_hz, double high_hz) {
  constexpr double kTurn = 2 * std::numbers::pi / kRate;  // radians per sample and Hz
  x.Size(kBlock, TMtxFloatPrecision::DoubleReal);
  for (std::int32_t n = 0; n < kBlock; ++n) {
    const auto t = static_cast<double>(start + n);
    x.Values()[static_cast<std::size_t>(n)] = std::sin(kTurn * low_hz * t) + std::sin(kTurn * high_hz * t);
  }
}

// Adds up a block against a turning phasor; over whole periods that leaves amplitude / 2 of one tone, per sample.
void Accumulate(TCplx& sum, const TVec& x, std::int64_t start, double tone_hz) {
  for (std::int32_t n = 0; n < x.Length(); ++n) {
    sum = CAdd(sum, CMul(x[n], Expj(-2 * std::numbers::pi * tone_hz / kRate * static_cast<double>(start + n))));
  }
}

void Run() {
  constexpr double kLow = 1000;
  constexpr double kHigh = 5000;

  // Design: pass up to 2 kHz, stop from 3 kHz on, at most 0.001 (60 dB) away from the ideal response.
  TVec taps;
  KaiserImpulse(taps, {2000.0, 3000.0}, 0.001, TFilterType::ftLowpass, 1.0, kRate);
  std::printf("The filter has %d taps and delays by %.1f samples.\n", taps.Length(), (taps.Length() - 1) / 2.0);

  // Stream: the state keeps the end of one block for the start of the next, so the blocks join without a seam.
  TFirState state;
  FirInit(taps, state);
  TVec x;
  TVec y;
  TCplx low;
  TCplx high;
  for (std::int32_t block = 0; block < kBlocks; ++block) {
    const std::int64_t start = std::int64_t{block} * kBlock;
    MakeBlock(x, start, kLow, kHigh);
    FirFilter(x, y, state);
    if (block < kFirstBlock) continue;
    Accumulate(low, y, start, kLow);
    Accumulate(high, y, start, kHigh);
  }
  FirFree(state);

  const double samples = (kBlocks - kFirstBlock) * kBlock;
  std::printf("%5.0f Hz comes through at %7.2f dB\n", kLow, 20 * std::log10(2 * CAbs(low) / samples));
  std::printf("%5.0f Hz comes through at %7.2f dB\n", kHigh, 20 * std::log10(2 * CAbs(high) / samples));
}

}  // namespace

int main() {
  try {
    Run();
  } catch (const std::exception& error) {  // every failure of the library arrives here, with its reason
    std::fprintf(stderr, "design_and_stream: %s\n", error.what());
    return 1;
  }
  return 0;
}
