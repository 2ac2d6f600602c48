// Equiripple lowpass filters; nanoseconds a design. SciPy's rows are joined by run.sh.
#include <cstdint>
#include <string>

#include "bench/rows.h"
#include "passband/fir_design/equiripple.h"

namespace passband::bench {
namespace {

using OptimalFir::TRemezType;

void MeasureDesign(const Rows& rows, std::int32_t taps, double goal) {
  const double stop = 0.2 + 4.0 / taps;  // of the sampling rate
  TVec h;
  h.Size(taps, TMtxFloatPrecision::DoubleReal);
  double deviation = 0;
  rows.Measure("equiripple", "taps=" + std::to_string(taps), {.goal = goal},
               [&] {
                 OptimalFir::remez(h, {0, 0.2, stop, 0.5}, {1, 0}, {1, 1}, TRemezType::rmtBandPass, deviation, 1);
               },
               {});
}

}  // namespace
}  // namespace passband::bench

int main(int argc, char** argv) {
  const passband::bench::Rows rows(argc, argv);
  passband::bench::MeasureDesign(rows, 51, 0.5);
  passband::bench::MeasureDesign(rows, 201, 0.35);
  passband::bench::MeasureDesign(rows, 1001, 0.25);
  passband::bench::MeasureDesign(rows, 2001, 0.15);
  passband::bench::MeasureDesign(rows, 9999, 0);
}
