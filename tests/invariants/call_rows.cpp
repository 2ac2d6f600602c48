#include <cmath>
#include <limits>

#include "tests/invariants/rows.h"

namespace passband::test {
namespace {

using namespace SignalUtils;
using enum TMtxFloatPrecision;

TVec Taps() { return Noise(21, DoubleReal, 1); }
TVec SingleTaps() { return Noise(21, SingleReal, 1); }
TVec Signal() { return Noise(50, DoubleComplex, 2); }

}  // namespace

const std::vector<CallRow>& CallRows() {
  using enum TFilterType;
  using enum TSignalWindowType;
  static const std::vector<CallRow> rows{
      {"FirImpulse ideal", Taps, [](TVec& h) { FirImpulse(h, {0.25}, ftLowpass); }},
      {"FirImpulse windowed", Taps, [](TVec& h) { FirImpulse(h, {0.25}, 5, ftHighpass, wtKaiser); }},
      {"FirImpulse single", SingleTaps,
       [](TVec& h) {
         FirImpulse(h, {0.2, 0.6}, 0, ftBandpass, wtHamming);
       }},
      {"KaiserImpulse", Taps,
       [](TVec& h) {
         KaiserImpulse(h, {0.2, 0.23}, 0.001, ftLowpass);
       }},
      {"FirFilter whole", Signal, [](TVec& x) { FirFilter(x, Noise(31, DoubleComplex, 5)); }},
      {"FirFilter whole to twice the rate", Signal, [](TVec& x) { FirFilter(x, Noise(31, DoubleReal, 5), 2, 1); }},
      {"FFT", Signal, [](TVec& x) { x.FFT(); }},
      {"Convolve", Signal, [](TVec& x) { x.Convolve(Noise(40, DoubleReal, 1), Noise(30, DoubleReal, 2)); }},
      {"Abs", Signal, [](TVec& x) { x.Abs(); }},
      {"Expj", Taps, [](TVec& x) { x.Expj(); }},
      {"Rotate", Signal, [](TVec& x) { x.Rotate(7); }},
      {"SetFloatPrecision", Signal, [](TVec& x) { x.SetFloatPrecision(SingleReal); }},
      {"PolyRoots", Taps, [](TVec& x) { PolyRoots(Noise(9, DoubleReal, 4), x); }},
  };
  return rows;
}

const std::vector<CallRow>& RefusedRows() {
  using enum TFilterType;
  using enum TSignalWindowType;
  static const std::vector<CallRow> rows{
      {"FirImpulse edges", Taps,
       [](TVec& h) {
         FirImpulse(h, {0.1, 0.2, 0.3}, ftLowpass);
       }},
      {"FirImpulse windowed edges", Taps, [](TVec& h) { FirImpulse(h, {}, 0, ftHilbertIV, wtHamming); }},
      {"FirImpulse type", Taps, [](TVec& h) { FirImpulse(h, {0.1}, 0, ftIntegratorIII, wtHamming); }},
      {"FirImpulse length", [] { return Noise(3, DoubleReal, 1); },
       [](TVec& h) { FirImpulse(h, {0.1}, 0, ftLowpass, wtHamming); }},
      {"KaiserImpulse edges", Taps, [](TVec& h) { KaiserImpulse(h, {0.1}, 0.01, ftLowpass); }},
      {"KaiserImpulse lowpass of four edges", Taps,
       [](TVec& h) {
         KaiserImpulse(h, {0.1, 0.2, 0.3, 0.4}, 0.01, ftLowpass);
       }},
      {"FirFilter whole, no taps", Signal, [](TVec& x) { FirFilter(x, TVec{}); }},
      {"FirFilter whole, other precision", Signal, [](TVec& x) { FirFilter(x, SingleTaps()); }},
      {"FirFilter whole, factor", Signal, [](TVec& x) { FirFilter(x, Taps(), 0, 1); }},
      {"FirFilter whole, too short", Signal, [](TVec& x) { FirFilter(x, Noise(22, DoubleReal, 1), 1, 4); }},
      {"CosineTappered percent", Taps, [](TVec& x) { CosineTappered(x, 101, 0, 5); }},
      {"CosineTappered NaN", Taps, [](TVec& x) { CosineTappered(x, std::nan(""), 0, 5); }},
      {"FractionalKaiser offset", Taps, [](TVec& x) { FractionalKaiser(x, 5, -0.1, 1); }},
      {"Size", Taps, [](TVec& x) { x.Size(-1, DoubleReal); }},
      {"Resize", Taps, [](TVec& x) { x.Resize(-1); }},
      {"Add length", Taps, [](TVec& x) { x.Add(Noise(20, DoubleReal, 1)); }},
      {"Add precision", Taps, [](TVec& x) { x.Add(SingleTaps()); }},
      {"Hilbert", Signal, [](TVec& x) { x.Hilbert(Signal()); }},
  };
  return rows;
}

}  // namespace passband::test
