#include <cmath>
#include <limits>

#include "tests/invariants/analysis_rows.h"
#include "tests/invariants/design_rows.h"
#include "tests/invariants/rows.h"

namespace passband::test {
namespace {

using namespace SignalUtils;
using enum TMtxFloatPrecision;
using enum OptimalFir::TRemezType;

TVec Taps() { return Noise(21, DoubleReal, 1); }
TVec SingleTaps() { return Noise(21, SingleReal, 1); }
TVec Signal() { return Noise(50, DoubleComplex, 2); }
TVec Numerator() { return TVec{0.5, 1, 0.25}; }
TVec Denominator() { return TVec{1, -0.5, 0.25, 0.125}; }

void FilterBySections(TVec& x, const TVec& sections, bool complex_data, bool zero_phase) {
  TIirState state{};
  IirInitBQ(sections, state, complex_data);
  IirFilter(x, state, zero_phase);
}

std::vector<CallRow> Joined(std::vector<CallRow> rows, const std::vector<CallRow>& more) {
  rows.insert(rows.end(), more.begin(), more.end());
  return rows;
}

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
      {"remez", Taps,
       [](TVec& h) {
         double deviation = 0;
         OptimalFir::remez(h, {0, 0.2, 0.3, 1}, {1, 0}, {1, 10}, rmtBandPass, deviation);
       }},
      {"remez single, error far below the noise of doubles", [] { return Noise(61, SingleReal, 1); },
       [](TVec& h) {
         double deviation = 0;
         OptimalFir::remez(h, {0.2, 0.8}, {1}, {1}, rmtHilbert, deviation);
       }},
      {"RemezImpulse", Taps,
       [](TVec& h) {
         OptimalFir::RemezImpulse(h, {0.1, 0.9}, ftDifferentiatorIII);
       }},
      {"RemezImpulse by ripple", SingleTaps,
       [](TVec& h) {
         OptimalFir::RemezImpulse(h, {0.2, 0.25}, 0.01, ftLowpass);
       }},
      {"RemezLength", SingleTaps,
       [](TVec& weights) {
         OptimalFir::RemezLength({0, 0.2, 0.3, 1}, {1, 0}, {0.01, 0.001}, weights);
       }},
      {"FirFilter whole", Signal, [](TVec& x) { FirFilter(x, Noise(31, DoubleComplex, 5)); }},
      {"FirFilter whole to twice the rate", Signal, [](TVec& x) { FirFilter(x, Noise(31, DoubleReal, 5), 2, 1); }},
      {"IirFilter whole", Signal, [](TVec& x) { IirFilter(x, Numerator(), Denominator()); }},
      {"IirFilter whole, zero phase", Signal, [](TVec& x) { IirFilter(x, Numerator(), Denominator(), true); }},
      {"IirFilter zero phase", Taps,
       [](TVec& x) {
         FilterBySections(x, TVec{1, 2, 1, 4, -1, 1}, false, true);
       }},
      {"IirFilter complex zero phase", Signal,
       [](TVec& x) {
         FilterBySections(x, TVec{1, 2, 1, 4, -1, 1}, true, true);
       }},
      {"MedianFilter whole", Taps, [](TVec& x) { MedianFilter(Noise(300, DoubleReal, 5), x, 21); }},
      {"MedianFilter stretch", Taps, [](TVec& x) { MedianFilter(x, x, 5, 0, 1, 20); }},
      {"MovingAverageFilter", Signal, [](TVec& x) { MovingAverageFilter(x, 11); }},
      {"MovingAverageImpulse", Signal, [](TVec& x) { MovingAverageImpulse(x, 11); }},
      {"RunningAverage", Signal, [](TVec& x) { RunningAverage(x, Noise(50, DoubleComplex, 9), 3); }},
      {"StdDev", Signal,
       [](TVec& x) {
         StdDev(TVec{55, 30}, TVec{15, 10}, 5, x);
       }},
      {"RemoveDC", Taps, [](TVec& x) { RemoveDC(Signal(), x); }},
      {"Tone one-shot", Signal, [](TVec& x) { Tone(x, 100, 0.1, 0.2, 1.5, true); }},
      {"SquareTone one-shot", Taps, [](TVec& x) { SquareTone(x, 100, 0.01, 0.2, 1.5); }},
      {"FFT", Signal, [](TVec& x) { x.FFT(); }},
      {"Convolve", Signal, [](TVec& x) { x.Convolve(Noise(40, DoubleReal, 1), Noise(30, DoubleReal, 2)); }},
      {"Abs", Signal, [](TVec& x) { x.Abs(); }},
      {"Expj", Taps, [](TVec& x) { x.Expj(); }},
      {"Rotate", Signal, [](TVec& x) { x.Rotate(7); }},
      {"SetFloatPrecision", Signal, [](TVec& x) { x.SetFloatPrecision(SingleReal); }},
      {"PolyRoots", Taps, [](TVec& x) { PolyRoots(Noise(9, DoubleReal, 4), x); }},
  };
  static const std::vector<CallRow> all = Joined(Joined(rows, DesignRows()), AnalysisRows());
  return all;
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
      {"remez bands", Taps,
       [](TVec& h) {
         double deviation = 0;
         OptimalFir::remez(h, {0, 0.3, 0.2, 1}, {1, 0}, {1, 10}, rmtBandPass, deviation);
       }},
      {"remez grid", SingleTaps,
       [](TVec& h) {
         double deviation = 0;
         OptimalFir::remez(h, {0, 0.2, 0.2, 0.201}, {1, 0}, {1, 10}, rmtBandPass, deviation);
       }},
      {"RemezImpulse edges", Taps, [](TVec& h) { OptimalFir::RemezImpulse(h, {0.1}, ftLowpass); }},
      {"RemezImpulse by ripple, overlapping edges", SingleTaps,
       [](TVec& h) {
         OptimalFir::RemezImpulse(h, {0.3, 0.25}, 0.01, ftLowpass);
       }},
      {"RemezLength deviations", SingleTaps,
       [](TVec& weights) {
         OptimalFir::RemezLength({0, 0.2, 0.3, 1}, {1, 0}, {0.01, 0}, weights);
       }},
      {"FirFilter whole, no taps", Signal, [](TVec& x) { FirFilter(x, TVec{}); }},
      {"FirFilter whole, other precision", Signal, [](TVec& x) { FirFilter(x, SingleTaps()); }},
      {"FirFilter whole, factor", Signal, [](TVec& x) { FirFilter(x, Taps(), 0, 1); }},
      {"FirFilter whole, too short", Signal, [](TVec& x) { FirFilter(x, Noise(22, DoubleReal, 1), 1, 4); }},
      {"IirFilter whole, no taps", Taps, [](TVec& x) { IirFilter(x, TVec{}, Denominator()); }},
      {"IirFilter whole, no denominator", Taps, [](TVec& x) { IirFilter(x, Numerator(), TVec{}, true); }},
      {"IirFilter whole, division by zero", Taps,
       [](TVec& x) {
         IirFilter(x, Numerator(), TVec{0, 1});
       }},
      {"IirFilter whole, other precision", SingleTaps, [](TVec& x) { IirFilter(x, Numerator(), Denominator(), true); }},
      {"IirFilter real state", Signal,
       [](TVec& x) {
         FilterBySections(x, TVec{1, 2, 1, 4, -1, 1}, false, false);
       }},
      {"IirFilter zero phase, real state", Signal,
       [](TVec& x) {
         FilterBySections(x, TVec{1, 2, 1, 4, -1, 1}, false, true);
       }},
      {"IirFilter no section", Taps,
       [](TVec& x) {
         FilterBySections(x, TVec{1, 2, 1, 4, -1}, false, false);
       }},
      {"IirFilter empty record", Taps,
       [](TVec& x) {
         TIirState state{};
         IirFilter(x, state);
       }},
      {"MedianFilter mask", Taps, [](TVec& x) { MedianFilter(Noise(300, DoubleReal, 5), x, 0); }},
      {"MedianFilter complex", Taps, [](TVec& x) { MedianFilter(Signal(), x, 5); }},
      {"MedianFilter of other precision", Taps, [](TVec& x) { MedianFilter(SingleTaps(), x, 5, 0, 0, 9); }},
      {"MovingAverageFilter order", Signal, [](TVec& x) { MovingAverageFilter(x, 0); }},
      {"MovingAverageFilter range", Signal, [](TVec& x) { MovingAverageFilter(x, 3, 45, 10); }},
      {"RunningAverage length", Signal, [](TVec& x) { RunningAverage(x, Taps(), 3); }},
      {"StdDev count", Taps, [](TVec& x) { StdDev(x, x, 1, x); }},
      {"StdDev loss", Taps,
       [](TVec& x) {
         StdDev(TVec{55, 1}, TVec{15, 10}, 5, x);
       }},
      {"ExpAverageFilter decay", Taps,
       [](TVec& x) {
         double state = 0;
         ExpAverageFilter(x, state, 100);
       }},
      {"Tone length", Signal, [](TVec& x) { Tone(x, -1, 0.1, 0.2, 1.5); }},
      {"SquareTone harmonics", Signal, [](TVec& x) { SquareTone(x, 100, 1e-12, 0.2, 1.5); }},
      {"SquareTone without fundamental", [] { return TVec{}; }, [](TVec& x) { SquareTone(x, 100, 1, 0.2, 1.5); }},
      {"CosineTappered percent", Taps, [](TVec& x) { CosineTappered(x, 101, 0, 5); }},
      {"CosineTappered NaN", Taps, [](TVec& x) { CosineTappered(x, std::nan(""), 0, 5); }},
      {"FractionalKaiser offset", Taps, [](TVec& x) { FractionalKaiser(x, 5, -0.1, 1); }},
      {"Size", Taps, [](TVec& x) { x.Size(-1, DoubleReal); }},
      {"Resize", Taps, [](TVec& x) { x.Resize(-1); }},
      {"Add length", Taps, [](TVec& x) { x.Add(Noise(20, DoubleReal, 1)); }},
      {"Add precision", Taps, [](TVec& x) { x.Add(SingleTaps()); }},
      {"Hilbert", Signal, [](TVec& x) { x.Hilbert(Signal()); }},
  };
  static const std::vector<CallRow> all = Joined(Joined(rows, RefusedDesignRows()), RefusedAnalysisRows());
  return all;
}

}  // namespace passband::test
