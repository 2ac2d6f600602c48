#include "passband/analysis/cepstrum.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

#include "passband/analysis/frequency_response.h"
#include "passband/analysis/phase.h"
#include "passband/fft/fft.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/primitives/log_magnitude.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

constexpr double kWindowParam = 40;

// The signal in double: itself, or a copy in `work`.
const TVec& Widened(const TVec& src, TVec& work) {
  if (src.IsDouble()) return src;
  work.Copy(src);
  work.SetFloatPrecision(MakePrecision(src.Complex(), true));
  return work;
}

void StoreRounded(TVec& wide, const TVec& src, TVec& dst) {
  wide.SetFloatPrecision(MakePrecision(false, src.IsDouble()));
  dst.Take(wide);
}

// ln |X|, 0 where it is not finite.
void LogMagnitudes(const TVec& spectrum, TVec& log) {
  log.Size(spectrum.Length(), TMtxFloatPrecision::DoubleReal);
  // The status is Ok: pointers and count are sound.
  static_cast<void>(primitives::LogMagnitude(spectrum.CValues().data(), spectrum.Length(), log.Values().data()));
}

// The inverse transform, to the length of `dst`, of a real and even spectrum given by its first half. `spectrum` is
// work space of the size of `half`.
void InverseOfReal(const TVec& half, TVec& spectrum, TVec& dst) {
  const std::int32_t length = dst.Length();
  const auto plan = fft::RealPlan<double>::Get(length);
  const double scale = 1.0 / length;
  std::ranges::transform(half.Values(), spectrum.CValues().begin(), [=](double x) { return TCplx{x * scale, 0}; });
  plan->Inverse(spectrum.CValues().data(), dst.Values().data());
}

// exp(z) with the phase of a delay by `lag` samples in a period of `length`, at bin k. Whole samples are counted off
// exactly, so that a long delay costs no digits.
class DelayedExponential {
 public:
  DelayedExponential(double lag, double length)
      : whole_(std::fmod(std::nearbyint(lag), length)), part_(lag - std::nearbyint(lag)), length_(length) {}

  // For one bin after the other, from 0 on.
  TCplx operator()(TCplx z) {
    const double turns = (place_ + part_ * bin_) / length_;
    bin_ += 1;
    place_ += whole_;
    if (std::abs(place_) >= length_) place_ -= std::copysign(length_, place_);
    const double angle = z.Im - 2 * PI * turns;
    const double size = std::exp(z.Re);
    return {size * std::cos(angle), size * std::sin(angle)};
  }

 private:
  double whole_;
  double part_;
  double length_;
  double place_ = 0;
  double bin_ = 0;
};

}  // namespace

void RealCepstrum(const TVec& Src, TVec& Dst, bool RemoveDCFlag, TSignalWindowType WindowType, bool MagnitudeForm) {
  const Borrowed<TVec> signal;
  const Borrowed<TVec> spectrum;
  const Borrowed<TVec> log;
  const TVec* wide = &Widened(Src, *signal);
  if (RemoveDCFlag && Src.Length() > 0) {
    signal->Copy(*wide);
    signal->Offset(-signal->Meanc());
    wide = &*signal;
  }
  FrequencyResponse(*wide, nullptr, *spectrum, 1, false, WindowType, kWindowParam);
  LogMagnitudes(*spectrum, *log);
  if (RemoveDCFlag) log->Offset(-log->Mean());
  const std::int32_t bins = log->Length();
  if (MagnitudeForm) {
    log->Resize(bins - 1);
    if (bins > 1) FrequencyResponse(*log, nullptr, *log, 1, false, WindowType, kWindowParam);
    log->Abs();
    return StoreRounded(*log, Src, Dst);
  }
  log->SetDefault(bins - 1, 0);
  signal->Size(2 * (bins - 1), TMtxFloatPrecision::DoubleReal);
  if (bins > 1) InverseOfReal(*log, *spectrum, *signal);
  signal->Resize(bins - 1);
  StoreRounded(*signal, Src, Dst);
}

double CplxCepstrum(const TVec& Src, TVec& Dst, std::int32_t ZeroPadding) {
  const Borrowed<TVec> signal;
  const Borrowed<TVec> spectrum;
  const Borrowed<TVec> phase;
  const Borrowed<TVec> part;
  const double padding = FrequencyResponse(Widened(Src, *signal), nullptr, *spectrum, ZeroPadding);
  phase->Size(spectrum->Length(), TMtxFloatPrecision::DoubleReal);
  const std::span<TCplx> X = spectrum->CValues();
  const std::span<double> phases = phase->Values();
  std::ranges::transform(X, phases.begin(), [](TCplx z) { return std::atan2(z.Im, z.Re); });
  // At half the sampling frequency the phase of a real signal is a multiple of pi; the ramp of whole samples ends there.
  const bool odd = Src.Length() % 2 != 0;
  const bool ends_at_half = !odd && !Src.Complex();
  part->SetSubRange(*phase, 0, ends_at_half ? phase->Length() - 1 : phase->Length());
  const double lag = PhaseUnwrap(*part, *part, TRunningPhase::rpIntegerLag, padding, true, 180);
  if (ends_at_half) phases.back() = 0;
  LogMagnitudes(*spectrum, *signal);
  spectrum->RealToCplx(*signal, *phase);
  signal->IFFTToReal(*spectrum, odd);
  StoreRounded(*signal, Src, Dst);
  return lag;
}

void CplxCepstrumInv(const TVec& Src, TVec& Dst, double Lag, std::int32_t Len) {
  if (Src.Length() % 2 != 0) ERaise("Src.Length must be even");
  const Borrowed<TVec> signal;
  const Borrowed<TVec> spectrum;
  spectrum->FFT(Widened(Src, *signal));
  // The delay by `Lag` is one of whole samples in the period of the signal that the half spectrum has.
  DelayedExponential exponential(Lag, 2.0 * (spectrum->Length() - 1));
  for (TCplx& bin : spectrum->CValues()) bin = exponential(bin);
  spectrum->IFFTToReal(*spectrum);
  spectrum->Resize(Len, true);
  StoreRounded(*spectrum, Src, Dst);
}

}  // namespace passband::SignalUtils
