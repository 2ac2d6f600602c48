#include "passband/analysis/goertzel.h"

#include <cstddef>
#include <string>

#include "passband/foundation/exceptions.h"
#include "passband/primitives/goertzel.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

// A NaN is refused by the second check.
void CheckFrequency(bool complex, double frequency, const std::string& source, const std::string& name) {
  if (!complex && frequency >= 0.5) {
    throw ELatticaInvalidArgument("(not " + source + "Complex) and (" + name + " >= 0.5)");
  }
  if (!(frequency < 1)) throw ELatticaInvalidArgument(name + " >= 1)");
  if (frequency <= 0) throw ELatticaInvalidArgument(name + " <= 0)");
}

TCplx Sum(const TVec& src, double frequency) {
  TCplx value{};
  ForAny(src, [&]<Element T>(ElementTag<T>) {
    const double rounded = IsDoublePrecision(PrecisionOf<T>) ? frequency : static_cast<float>(frequency);
    // The status is Ok: pointer and count have been checked.
    static_cast<void>(primitives::Goertzel(src.Elements<T>().data(), src.Length(), rounded, value));
  });
  return value;
}

}  // namespace

TCplx Goertz(const TVec& Src, double Freq) {
  CheckFrequency(Src.Complex(), Freq, "", "Freq");
  return Sum(Src, Freq);
}

void GoertzTwo(const TVec& Src, double Freq0, double Freq1, TCplx& Val0, TCplx& Val1) {
  CheckFrequency(Src.Complex(), Freq0, "Src.", "Freq0");
  CheckFrequency(Src.Complex(), Freq1, "Src.", "Freq1");
  if (Src.Length() == 0) return;
  Val0 = Sum(Src, Freq0);
  Val1 = Sum(Src, Freq1);
}

void Goertz(const TVec& Src, const TVec& Freq, TVec& Dst) {
  if (Freq.Complex()) ERaise("Goertz: complex Freq");
  if (Src.Length() > 0) {
    for (std::int32_t i = 0; i < Freq.Length(); ++i) CheckFrequency(Src.Complex(), Freq[i], "Src.", "Freq[i]");
  }
  const Borrowed<TVec> result;
  result->Size(Freq.Length(), true, Src.IsDouble());
  ForReal(*result, [&]<RealElement R>(ElementTag<R>) {
    const auto values = result->Elements<ComplexOf<R>>();
    for (std::size_t i = 0; i < values.size(); ++i) {
      values[i] = static_cast<ComplexOf<R>>(Sum(Src, Freq[static_cast<std::int32_t>(i)]));
    }
  });
  Dst.Take(*result);
}

}  // namespace passband::SignalUtils
