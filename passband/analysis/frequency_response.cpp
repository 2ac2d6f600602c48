#include "passband/analysis/frequency_response.h"

#include <cmath>
#include <cstddef>
#include <span>

#include "passband/analysis/filter_spectra_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/vector_core/polynomials.h"
#include "passband/vector_core/pool.h"
#include "passband/windows/signal_window.h"

namespace passband::SignalUtils {
namespace {

void Window(TVec& v, TSignalWindowType type, double parameter, std::int32_t length) {
  if (type == TSignalWindowType::wtRectangular) return;
  SignalWindow(v, type, parameter, TSignalWindowMode::wmPeriodic, false, 0, length);
}

// Numbers of ordinary size need no care for over- and underflow.
TCplx Quotient(TCplx x, TCplx y) {
  const double power = y.Re * y.Re + y.Im * y.Im;
  const double size = std::abs(x.Re) + std::abs(x.Im);
  if (!(power > 1e-200 && power < 1e200 && size < 1e200)) return CDiv(x, y);
  const double factor = 1 / power;
  return {(x.Re * y.Re + x.Im * y.Im) * factor, (x.Im * y.Re - x.Re * y.Im) * factor};
}

void DivideBy(TVec& a, const TVec& b) {
  const std::span<TCplx> x = a.CValues();
  const std::span<const TCplx> y = b.CValues();
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = Quotient(x[i], y[i]);
}

}  // namespace

double FrequencyResponse(const TVec& Num, const TVec* Den, TVec& Response, std::int32_t ZeroPadding, bool ScaleResponse,
                         TSignalWindowType WindowType, double WindowParam) {
  const std::int32_t n = detail::TransformLength(Num, Den, ZeroPadding, "FrequencyResponse: Num.Length = 0");
  if (Den != nullptr && Num.IsDouble() != Den->IsDouble()) ERaise("Num.IsDouble <> Den.IsDouble");
  const bool complex = detail::HasComplex(Num, Den);
  const double padding = static_cast<double>(n) / Num.Length();
  const Borrowed<TVec> response;
  if (Den == nullptr) {
    const Borrowed<TVec> padded;
    detail::PadInDouble(Num, complex, n, *padded);
    Window(*padded, WindowType, WindowParam, Num.Length());
    response->FFT(*padded);
    if (ScaleResponse) response->Scale(1.0 / Num.Length());
  } else {
    const Borrowed<TVec> divisor;
    detail::PadInDouble(Num, complex, n, *response);
    detail::PadInDouble(*Den, complex, n, *divisor);
    // The window runs over the room of a half spectrum.
    const std::int32_t room = complex ? n : (n % 2 == 0 ? n + 2 : n + 1);
    for (TVec* const part : {&*response, &*divisor}) {
      if (WindowType != TSignalWindowType::wtRectangular) {
        part->Resize(room, true);
        Window(*part, WindowType, WindowParam, room);
        part->Resize(n);
      }
      part->FFT();
    }
    DivideBy(*response, *divisor);
  }
  response->SetFloatPrecision(MakePrecision(true, Num.IsDouble()));
  Response.Take(*response);
  return padding;
}

void FrequencyResponseS(const TVec& Num, const TVec& Den, const TVec& Frequencies, TVec& Response, double Sigma) {
  if (Frequencies.Complex()) ERaise("Frequencies.Complex = True!");
  const Borrowed<TVec> s;
  const Borrowed<TVec> num;
  const Borrowed<TVec> den;
  s->Size(Frequencies.Length(), TMtxFloatPrecision::DoubleComplex);
  const std::span<TCplx> points = s->CValues();
  for (std::size_t i = 0; i < points.size(); ++i) points[i] = {Sigma, Frequencies[static_cast<std::int32_t>(i)]};
  detail::PadInDouble(Num, Num.Complex(), Num.Length(), *num);
  detail::PadInDouble(Den, Den.Complex(), Den.Length(), *den);
  PolyEval(*s, *num, *num);
  PolyEval(*s, *den, *den);
  DivideBy(*num, *den);
  num->SetFloatPrecision(MakePrecision(true, Num.IsDouble()));
  Response.Take(*num);
}

}  // namespace passband::SignalUtils
