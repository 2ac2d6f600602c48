// From a requirement to a running IIR filter: the lowest order that meets it, the design as second-order sections, and a
// stream filtered block by block. A sensor sampled at 1 kHz picks up a vibration of 40 Hz and the motor's 200 Hz; the
// filter keeps the first and takes out the second.
#include <passband/passband.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <numbers>

namespace {

using namespace passband;
using namespace passband::IIRFilters;
using namespace passband::SignalUtils;

constexpr double kRate = 1000;           // samples per second
constexpr std::int32_t kBlock = 250;     // samples at a time
constexpr std::int32_t kBlocks = 24;     // six seconds
constexpr std::int32_t kFirstBlock = 4;  // by then the filter has settled
constexpr double kVibration = 40;        // Hz
constexpr double kMotor = 200;           // Hz

double PhaseOf(double tone_hz, std::int64_t n) {
  return 2 * std::numbers::pi * tone_hz / kRate * static_cast<double>(n);
}

// What the converter would hand over: the next block of the stream.
void ReadSensor(TVec& x, std::int64_t start) {
  x.Size(kBlock, TMtxFloatPrecision::DoubleReal);
  for (std::int32_t n = 0; n < kBlock; ++n) {
    x.SetDefault(n, std::sin(PhaseOf(kVibration, start + n)) + std::sin(PhaseOf(kMotor, start + n)));
  }
}

// The part of a tone in a block, to be added up over whole periods.
TCplx Correlate(const TVec& y, std::int64_t start, double tone_hz) {
  TCplx sum;
  for (std::int32_t n = 0; n < y.Length(); ++n) sum = CAdd(sum, CMul(y[n], Expj(-PhaseOf(tone_hz, start + n))));
  return sum;
}

// Pass up to 60 Hz with at most 1 dB of loss, stop from 120 Hz on by at least 60 dB.
TVec DesignSections() {
  std::array<double, 1> cutoff{};  // of half the sampling rate
  const std::int32_t order = ButterOrder({60 / (kRate / 2), 120 / (kRate / 2)}, 1, 60, TFilterType::ftLowpass, cutoff);
  TVec sections;
  ButterFilter(order, cutoff, TFilterType::ftLowpass, false, sections);
  std::printf("The filter has order %d, its cut-off at %.6f Hz and %d sections.\n", order, cutoff[0] * kRate / 2,
              sections.Length() / 6);
  return sections;
}

void Run() {
  TIirState state{};
  IirInitBQ(DesignSections(), state);
  TVec x;
  TVec y;
  TCplx vibration;
  TCplx motor;
  for (std::int32_t block = 0; block < kBlocks; ++block) {
    const std::int64_t start = std::int64_t{block} * kBlock;
    ReadSensor(x, start);
    IirFilter(x, y, state);  // the state carries the stream from one block to the next; nothing is allocated
    if (block < kFirstBlock) continue;
    vibration = CAdd(vibration, Correlate(y, start, kVibration));
    motor = CAdd(motor, Correlate(y, start, kMotor));
  }
  IirFree(state);

  const double samples = (kBlocks - kFirstBlock) * kBlock;
  std::printf("%4.0f Hz comes through at %8.3f dB\n", kVibration, 20 * std::log10(2 * CAbs(vibration) / samples));
  std::printf("%4.0f Hz comes through at %8.3f dB\n", kMotor, 20 * std::log10(2 * CAbs(motor) / samples));
}

}  // namespace

int main() {
  try {
    Run();
  } catch (const std::exception& error) {  // every failure of the library arrives here, with its reason
    std::fprintf(stderr, "iir_stream: %s\n", error.what());
    return 1;
  }
  return 0;
}
