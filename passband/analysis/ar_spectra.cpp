#include "passband/analysis/ar_spectra.h"

#include <algorithm>

#include "passband/analysis/ar_models_internal.h"
#include "passband/analysis/filter_spectra_internal.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

// The spectrum of the model that `fit(a)` makes.
template <class Method>
void Spectrum(const TVec& src, TVec& dst, std::int32_t order, std::int32_t padding, const Method& fit) {
  const Borrowed<TVec> a;
  a->Size(std::max(order, 0) + 1, src.Complex(), true);
  const std::int32_t n = detail::TransformLength(*a, nullptr, padding, "");
  fit(*a);
  a->Resize(n, true);
  a->FFT(true);
  a->Abs();
  a->Inv();
  a->SetFloatPrecision(MakePrecision(false, src.IsDouble()));
  dst.Take(*a);
}

std::int32_t Halved(const TVec& src, std::int32_t order) { return std::min(src.Length() / 2, order); }

}  // namespace

void ArYuleWalkerSpectrum(const TVec& Src, TVec& Dst, std::int32_t Order, std::int32_t ZeroPadding) {
  const std::int32_t order = std::min(Order, Src.Length());
  Spectrum(Src, Dst, order, ZeroPadding, [&](TVec& a) { detail::FitYuleWalker(Src, order, a); });
}

void ArBurgSpectrum(const TVec& Src, TVec& Dst, std::int32_t Order, std::int32_t ZeroPadding) {
  const std::int32_t order = Halved(Src, Order);
  const Borrowed<TVec> reflection;
  double variance = 0;
  Spectrum(Src, Dst, order, ZeroPadding, [&](TVec& a) { detail::FitBurg(Src, order, a, *reflection, variance); });
}

void ArCovarianceSpectrum(const TVec& Src, TVec& Dst, std::int32_t Order, std::int32_t ZeroPadding) {
  const std::int32_t order = Halved(Src, Order);
  double variance = 0;
  Spectrum(Src, Dst, order, ZeroPadding, [&](TVec& a) { detail::FitCovariance(Src, order, a, variance); });
}

void ArMCovarianceSpectrum(const TVec& Src, TVec& Dst, std::int32_t Order, std::int32_t ZeroPadding) {
  const std::int32_t order = Halved(Src, Order);
  double variance = 0;
  Spectrum(Src, Dst, order, ZeroPadding, [&](TVec& a) { detail::FitModifiedCovariance(Src, order, a, variance); });
}

}  // namespace passband::SignalUtils
