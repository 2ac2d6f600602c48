#include "passband/analysis/group_delay.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

#include "passband/analysis/filter_spectra_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

constexpr const char* kEmpty = "GroupDelay: Num.Length = 0";

// The squared magnitude below which a bin of the spectrum is rounding noise.
double NoisePower(const TVec& coefficients) {
  const Borrowed<TVec> magnitudes;
  detail::PadInDouble(coefficients, coefficients.Complex(), coefficients.Length(), *magnitudes);
  magnitudes->Abs();
  const double level = 4 * 0x1p-52 * magnitudes->Sum();
  return level * level;
}

// Re(a conj(b)) / |b|^2, 0 where b is noise.
double RealQuotient(TCplx a, TCplx b, double noise) {
  const double power = b.Re * b.Re + b.Im * b.Im;
  return power <= noise ? 0 : (a.Re * b.Re + a.Im * b.Im) / power;
}

// Adds sign times the delay of a part to `sum`, which it sizes when it is empty.
void AddDelay(const TVec& part, bool complex, std::int32_t n, double sign, TVec& sum) {
  const Borrowed<TVec> spectrum;
  const Borrowed<TVec> slope;
  const Borrowed<TVec> ramp;
  detail::PadInDouble(part, complex, n, *spectrum);
  slope->Copy(*spectrum);
  ramp->Size(n, TMtxFloatPrecision::DoubleReal);
  ramp->Ramp(0, 1);
  if (complex) ramp->SetFloatPrecision(TMtxFloatPrecision::DoubleComplex);
  slope->Mul(*ramp);
  spectrum->FFT();
  slope->FFT();
  const double noise = NoisePower(part);
  if (sum.Length() == 0) sum.Resize(spectrum->Length(), true);
  for (std::size_t i = 0; i < sum.Values().size(); ++i) {
    sum.Values()[i] += sign * RealQuotient(slope->CValues()[i], spectrum->CValues()[i], noise);
  }
}

// The same with the slope of the phase from bin to bin.
void AddPhaseSlope(const TVec& part, bool complex, std::int32_t n, double scale, TVec& sum) {
  const Borrowed<TVec> spectrum;
  detail::PadInDouble(part, complex, n, *spectrum);
  spectrum->FFT();
  const std::span<const TCplx> a = spectrum->CValues();
  const double noise = NoisePower(part);
  if (sum.Length() == 0) sum.Resize(spectrum->Length(), true);
  for (std::size_t i = 0; i < a.size(); ++i) {
    const std::size_t from = a.size() > 1 ? std::min(i, a.size() - 2) : i;
    const TCplx difference = a.size() > 1 ? a[from + 1] - a[from] : TCplx{};
    // Re D Im A - Re A Im D = Re(j D conj(A))
    sum.Values()[i] += scale * RealQuotient({-difference.Im, difference.Re}, a[i], noise);
  }
}

void Store(TVec& sum, bool is_double, TVec& Dst) {
  sum.SetFloatPrecision(MakePrecision(false, is_double));
  Dst.Take(sum);
}

void Start(TVec& sum) { sum.Size(0, TMtxFloatPrecision::DoubleReal); }

}  // namespace

void GroupDelay(TVec& Dst, const TVec& Num, const TVec* Den, std::int32_t ZeroPadding) {
  const std::int32_t n = detail::TransformLength(Num, Den, ZeroPadding, kEmpty);
  const bool complex = detail::HasComplex(Num, Den);
  const Borrowed<TVec> sum;
  Start(*sum);
  AddDelay(Num, complex, n, 1, *sum);
  if (Den != nullptr) AddDelay(*Den, complex, n, -1, *sum);
  Store(*sum, Num.IsDouble(), Dst);
}

void GroupDelay2(TVec& Dst, const TVec& Num, const TVec* Den, std::int32_t ZeroPadding) {
  if (Den != nullptr && Num.IsDouble() != Den->IsDouble()) ERaise("Num.IsDouble <> Den.IsDouble");
  const std::int32_t n = detail::TransformLength(Num, Den, ZeroPadding, kEmpty);
  const bool complex = detail::HasComplex(Num, Den);
  const Borrowed<TVec> sum;
  Start(*sum);
  AddPhaseSlope(Num, complex, n, Den == nullptr ? 1 : static_cast<double>(n) / Num.Length(), *sum);
  if (Den != nullptr && Den->Length() > 0) {
    AddPhaseSlope(*Den, complex, n, -static_cast<double>(n) / Den->Length(), *sum);
  }
  Store(*sum, Num.IsDouble(), Dst);
}

}  // namespace passband::SignalUtils
