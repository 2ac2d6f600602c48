#include "tests/invariants/analysis_rows.h"

namespace passband::test {
namespace {

using namespace SignalUtils;
using enum TMtxFloatPrecision;
using enum TRunningPhase;
using enum TSignalWindowType;

TVec Real() { return Noise(48, DoubleReal, 4); }
TVec Single() { return Noise(48, SingleReal, 5); }
TVec Complex() { return Noise(48, SingleComplex, 6); }

void BurgReflection(const TVec& x, std::int32_t order, TVec& reflection) {
  TVec a;
  double variance = 0;
  ArBurg(x, order, a, reflection, variance);
}
void Burg(const TVec& x, std::int32_t order, TVec& a) {
  TVec reflection;
  double variance = 0;
  ArBurg(x, order, a, reflection, variance);
}
void Covariance(const TVec& x, std::int32_t order, TVec& a) {
  double variance = 0;
  ArCovariance(x, order, a, variance);
}
void ModifiedCovariance(const TVec& x, std::int32_t order, TVec& a) {
  double variance = 0;
  ArMCovariance(x, order, a, variance);
}

}  // namespace

std::vector<CallRow> AnalysisRows() {
  std::vector<CallRow> rows;
  for (TVec (*const signal)() : {Real, Single, Complex}) {
    const std::string of = " of " + PrecisionToStr(signal().FloatPrecision());
    rows.push_back({"ArYuleWalker" + of, signal, [](TVec& x) { ArYuleWalker(x, x, 6); }});
    rows.push_back({"ArBurg" + of, signal, [](TVec& x) { Burg(x, 6, x); }});
    rows.push_back({"ArBurg reflection" + of, signal, [](TVec& x) { BurgReflection(x, 6, x); }});
    rows.push_back({"ArCovariance" + of, signal, [](TVec& x) { Covariance(x, 6, x); }});
    rows.push_back({"ArMCovariance" + of, signal, [](TVec& x) { ModifiedCovariance(x, 6, x); }});
    rows.push_back({"ArYuleWalkerSpectrum" + of, signal, [](TVec& x) { ArYuleWalkerSpectrum(x, x, 6, 4); }});
    rows.push_back({"ArBurgSpectrum" + of, signal, [](TVec& x) { ArBurgSpectrum(x, x, 6, 4); }});
    rows.push_back({"ArCovarianceSpectrum" + of, signal, [](TVec& x) { ArCovarianceSpectrum(x, x, 6, 4); }});
    rows.push_back({"ArMCovarianceSpectrum" + of, signal, [](TVec& x) { ArMCovarianceSpectrum(x, x, 6, 4); }});
  }
  for (TVec (*const signal)() : {Real, Single, Complex}) {
    const std::string of = " of " + PrecisionToStr(signal().FloatPrecision());
    for (const bool full : {false, true}) {
      const std::string length = full ? " full" : "";
      rows.push_back({"BiSpectrum" + length + of, signal, [=](TVec& x) { BiSpectrum(x, x, 5, full); }});
      rows.push_back({"BiSpectrumVert" + length + of, signal, [=](TVec& x) { BiSpectrumVert(x, x, 5, full); }});
    }
    rows.push_back({"BandFlip" + of, signal, [](TVec& x) { BandFlip(x); }});
    rows.push_back({"Multiplex" + of, signal, [](TVec& x) { Multiplex(x, x, 3, 2); }});
    rows.push_back({"Demultiplex" + of, signal, [](TVec& x) { Demultiplex(x, x, 3, 2); }});
  }
  rows.push_back({"ConjExtend in place", Complex, [](TVec& x) { ConjExtend(x); }});
  rows.push_back({"ConjExtend", Real, [](TVec& x) { ConjExtend(Noise(9, DoubleComplex, 1), x); }});
  for (TVec (*const signal)() : {Real, Single}) {
    const std::string of = " of " + PrecisionToStr(signal().FloatPrecision());
    rows.push_back({"RealCepstrum" + of, signal, [](TVec& x) { RealCepstrum(x, x, true, wtHamming); }});
    rows.push_back(
        {"RealCepstrum magnitudes" + of, signal, [](TVec& x) { RealCepstrum(x, x, false, wtRectangular, true); }});
    rows.push_back({"CplxCepstrum" + of, signal, [](TVec& x) { CplxCepstrum(x, x, 4); }});
    rows.push_back({"CplxCepstrumInv" + of, signal, [](TVec& x) { CplxCepstrumInv(x, x, 2.5, 60); }});
    for (const auto running : {rpDefault, rpConstPhase, rpIntegerLag, rpPartial}) {
      rows.push_back({"PhaseUnwrap " + std::to_string(static_cast<int>(running)) + of, signal,
                      [=](TVec& x) { PhaseUnwrap(x, x, running, 4, true, 300); }});
    }
    rows.push_back({"PhaseWrap" + of, signal, [](TVec& x) { PhaseWrap(x, x, 3); }});
    rows.push_back({"Hilbert in place" + of, signal, [](TVec& x) { SignalUtils::Hilbert(x); }});
    rows.push_back({"AmpltToDb" + of, signal, [](TVec& x) { AmpltToDb(x, 10, 40, 0.5); }});
    rows.push_back({"EnvelopeDetector" + of, signal, [](TVec& x) { EnvelopeDetector(x, x, 6); }});
  }
  return rows;
}

std::vector<CallRow> RefusedAnalysisRows() {
  return {
      {"ArYuleWalker order", Real, [](TVec& x) { ArYuleWalker(x, x, -1); }},
      {"ArBurg order", Complex, [](TVec& x) { Burg(x, 25, x); }},
      {"ArBurg reflection order", Complex, [](TVec& x) { BurgReflection(x, -1, x); }},
      {"ArCovariance order", Single, [](TVec& x) { Covariance(x, 25, x); }},
      {"ArMCovariance order", Real, [](TVec& x) { ModifiedCovariance(x, 33, x); }},
      {"ArBurgSpectrum padding", Real, [](TVec& x) { ArBurgSpectrum(x, x, 4, 0); }},
      {"RealCepstrum empty", [] { return TVec{}; }, [](TVec& x) { RealCepstrum(x, x, true); }},
      {"CplxCepstrum padding", Real, [](TVec& x) { CplxCepstrum(x, x, -1); }},
      {"CplxCepstrumInv length", Real, [](TVec& x) { CplxCepstrumInv(x, x, 0, -5); }},
      {"CplxCepstrumInv odd", [] { return Noise(7, SingleReal, 1); }, [](TVec& x) { CplxCepstrumInv(x, x, 0, 5); }},
      {"PhaseUnwrap complex", Complex, [](TVec& x) { PhaseUnwrap(x, x); }},
      {"PhaseWrap complex", Complex, [](TVec& x) { PhaseWrap(x, x, 1); }},
      {"Hilbert in place complex", Complex, [](TVec& x) { SignalUtils::Hilbert(x); }},
      {"AmpltToDb complex", Complex, [](TVec& x) { AmpltToDb(x, 10, 40, 1); }},
      {"AmpltToLog base", Real, [](TVec& x) { AmpltToLog(x, 1, 40, 1, 20); }},
      {"BiSpectrum index", Real, [](TVec& x) { BiSpectrum(x, x, 24); }},
      {"BiSpectrumVert index", Single, [](TVec& x) { BiSpectrumVert(x, x, 25, true); }},
      {"ConjExtend in place real", Real, [](TVec& x) { ConjExtend(x); }},
      {"ConjExtend even", Complex, [](TVec& x) { ConjExtend(x, x); }},
      {"BandFlip odd", [] { return Noise(7, SingleReal, 1); }, [](TVec& x) { BandFlip(x); }},
      {"Multiplex channel", Real, [](TVec& x) { Multiplex(x, x, 2, 2); }},
      {"Demultiplex channel", Complex, [](TVec& x) { Demultiplex(x, x, 2, -1); }},
      {"EnvelopeDetector frames", Real, [](TVec& x) { EnvelopeDetector(x, x, 7); }},
      {"EnvelopeDetector no frames", Real, [](TVec& x) { EnvelopeDetector(x, x, 0); }},
      {"ArCovarianceSpectrum size", Real, [](TVec& x) { ArCovarianceSpectrum(x, x, 4, 1000000000); }},
  };
}

}  // namespace passband::test
