// A producer and a consumer that work in blocks of different sizes. A sound card delivers 441 samples at a time; the
// spectrum wants windows of 1024 that overlap by half. The ring between them grows by itself if the consumer falls behind.
#include <passband/passband.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>

namespace {

using namespace passband;
using namespace passband::SignalUtils;

constexpr double kRate = 44100;           // samples per second
constexpr double kTone = 1000;            // Hz
constexpr std::int32_t kDelivered = 441;  // samples at a time
constexpr std::int32_t kWindow = 1024;
constexpr std::int32_t kHop = kWindow / 2;
constexpr std::int32_t kDeliveries = 200;  // two seconds

// The consumer: the level of the tone in a window, from its value at one frequency.
double LevelOf(TVec& window) {
  SignalWindow(window, TSignalWindowType::wtHanning, 0, TSignalWindowMode::wmPeriodic);
  return CAbs(Goertz(window, kTone / kRate)) /
         (kWindow / 4.0);  // half the sum of a Hanning window stands for an amplitude of 1
}

void Run() {
  TVec ring;
  TCircularBufferState state;
  InitCircularBuffer(4 * kDelivered, 1.5, state);
  ring.Size(state.BufferSize, TMtxFloatPrecision::DoubleReal);

  TToneState tone;
  ToneInit(kTone / kRate, 0, 0.5, tone);
  TVec delivery;
  TVec window;
  delivery.Size(kDelivered, TMtxFloatPrecision::DoubleReal);
  window.Size(kWindow, TMtxFloatPrecision::DoubleReal);

  int windows = 0;
  double lowest = 1e300;
  double highest = 0;
  for (int n = 0; n < kDeliveries; ++n) {
    Tone(delivery, tone);
    WriteToCircularBuffer(ring, delivery, state, true);
    while (PeekCircularBuffer(state) >= kWindow) {
      ReadFromCircularBuffer(ring, window, state, kHop);
      const double level = LevelOf(window);
      lowest = std::fmin(lowest, level);
      highest = std::fmax(highest, level);
      ++windows;
    }
  }
  std::printf("%d deliveries of %d samples became %d windows of %d; %d samples wait.\n", kDeliveries, kDelivered,
              windows, kWindow, PeekCircularBuffer(state));
  std::printf("The tone has an amplitude of %.6f to %.6f. The ring holds %d samples%s.\n", lowest, highest,
              state.BufferSize, state.IsBufferOverrun ? " and lost some" : "");
}

}  // namespace

int main() {
  try {
    Run();
  } catch (const std::exception& error) {  // every failure of the library arrives here, with its reason
    std::fprintf(stderr, "ring_buffer: %s\n", error.what());
    return 1;
  }
  return 0;
}
