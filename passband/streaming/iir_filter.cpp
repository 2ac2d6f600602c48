#include "passband/streaming/iir_filter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <utility>

#include "passband/primitives/iir.h"
#include "passband/streaming/overlap_internal.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

using primitives::IirHandle;
using primitives::Status;

constexpr const char* kNotInitialized = "not IirState.Initialized";

// The two kinds of filters: what is counted, its smallest number, and the primitives.
struct DirectForm {
  static constexpr std::int32_t kLeast = 0;  // the order
  static constexpr const char* kRealFailure = "ippsIIRInit failed to initialize the filter: ";
  static constexpr const char* kComplexFailure = kRealFailure;

  template <Element T>
  static std::size_t StateSize(std::int32_t order) {
    return primitives::IirDirectStateSize<T>(order);
  }
  template <Element T>
  static Status Create(const RealOf<T>* taps, std::int32_t order, void* memory, IirHandle& state) {
    return primitives::IirDirectCreate<T>(taps, order, memory, state);
  }
};

struct Sections {
  static constexpr std::int32_t kLeast = 1;
  static constexpr const char* kRealFailure = "ippsIirInitAlloc_Biquadd failed to initialize the filter: ";
  static constexpr const char* kComplexFailure = "ippsIirInitAlloc_Biquaddc failed to initialize the filter: ";

  template <Element T>
  static std::size_t StateSize(std::int32_t sections) {
    return primitives::IirSectionsStateSize<T>(sections);
  }
  template <Element T>
  static Status Create(const RealOf<T>* taps, std::int32_t sections, void* memory, IirHandle& state) {
    return primitives::IirSectionsCreate<T>(taps, sections, memory, state);
  }
};

// Creates a filter inside `memory`, twice as large as it needs to be.
template <class Kind, Element T>
void Create(const RealOf<T>* taps, std::int32_t count, const char* failure, TByteArray& memory, IirHandle& handle) {
  Status status = Status::BadSize;
  if (count >= Kind::kLeast) {
    memory.resize(2 * Kind::template StateSize<T>(count));
    status = Kind::template Create<T>(taps, count, memory.data(), handle);
  }
  if (primitives::Failed(status)) ERaise(failure + std::string(primitives::StatusText(status)));
}

template <class Kind>
void Init(const TVec& taps, std::int32_t count, TIirState& state, bool complex_data) {
  const Borrowed<TVec> real;
  real->RealPart(taps);
  TIirState fresh;
  ForReal(taps, [&]<RealElement R>(ElementTag<R>) {
    const R* const h = real->Elements<R>().data();
    Create<Kind, R>(h, count, Kind::kRealFailure, fresh.Buffer, fresh.NSPIirState);
    if (complex_data) Create<Kind, ComplexOf<R>>(h, count, Kind::kComplexFailure, fresh.Bufferc, fresh.NSPIirStatec);
  });
  fresh.IsDouble = taps.IsDouble();
  fresh.ComplexImpulse = complex_data;
  fresh.Initialized = true;
  state = std::move(fresh);
}

void CheckBlock(const TVec& src, const TIirState& state) {
  if (!state.Initialized || state.NSPIirState == nullptr) ERaise(kNotInitialized);
  if (src.Complex() && (!state.ComplexImpulse || state.NSPIirStatec == nullptr)) {
    ERaise("Src.Complex and not IirState.ComplexImpulse");
  }
  if (state.IsDouble != src.IsDouble()) ERaise("IirState.IsDouble <> Src.IsDouble");
}

void FilterBlock(const TVec& src, TVec& dst, TIirState& state) {
  dst.Size(src);
  CheckBlock(src, state);
  ForAny(src, [&]<Element T>(ElementTag<T>) {
    const IirHandle& filter = IsComplex<T> ? state.NSPIirStatec : state.NSPIirState;
    // The status is Ok: pointers and count have been checked.
    static_cast<void>(primitives::IirFilter(*filter, src.Elements<T>().data(), dst.Elements<T>().data(), src.Length()));
  });
}

void FilterForwardAndBackward(TVec& data, TIirState& state) {
  const std::int32_t length = data.Length();
  if (length == 0) return;
  const double padded_length = std::nearbyint(length * 1.1);
  if (padded_length > std::numeric_limits<std::int32_t>::max()) {
    ERaise("IirFilter: Round(1.1 Data.Length) > 2147483647");
  }
  CheckBlock(data, state);
  const Borrowed<TVec> padded;
  padded->Resize(data, static_cast<std::int32_t>(padded_length), true);  // the last step that can fail
  FilterBlock(*padded, *padded, state);
  padded->Reverse();
  FilterBlock(*padded, *padded, state);
  data.Reverse(*padded, padded->Length() - length, 0, length);
}

template <Element T>
void FilterSample(T x, T& y, TIirState& state) {
  if (!state.Initialized || state.NSPIirState == nullptr) ERaise(kNotInitialized);
  constexpr bool kDouble = IsDoublePrecision(PrecisionOf<T>);
  if (state.IsDouble != kDouble) {
    ERaise(kDouble ? "TIirState is initialized with single precision filter structure!"
                   : "TIirState is initialized with double precision filter structure!");
  }
  y = T{};
  if constexpr (IsComplex<T>) {
    if (!state.ComplexImpulse || state.NSPIirStatec == nullptr) {
      ERaise("TIirState needs to have complex impulse response!");
    }
    y = primitives::IirOne(*state.NSPIirStatec, x);
  } else {
    if (state.ComplexImpulse) ERaise("TIirState may not have complex impulse response!");
    y = primitives::IirOne(*state.NSPIirState, x);
  }
}

}  // namespace

void IirInit(const TVec& Taps, TIirState& State, bool ComplexData) {
  if (Taps.Length() == 0) ERaise("Taps.Length = 0");
  Init<DirectForm>(Taps, Taps.Length() / 2 - 1, State, ComplexData);
}

void IirInit(const TVec& Num, const TVec& Den, TIirState& State, bool ComplexData) {
  if (Num.Length() == 0) throw Exception("Num.Length = 0");
  if (Den.Length() == 0) throw Exception("Den.Length = 0");
  const Borrowed<TVec> num;
  const Borrowed<TVec> den;
  const Borrowed<TVec> taps;
  num->RealPart(Num);
  den->RealPart(Den);
  const std::int32_t length = std::max(Num.Length(), Den.Length());
  num->Resize(length, true);
  den->Resize(length, true);
  taps->Copy(*num, *den);
  IirInit(*taps, State, ComplexData);
}

void IirInitBQ(const TVec& Taps, TIirState& State, bool ComplexData) {
  if (Taps.Length() == 0) ERaise("Taps.Length = 0");
  Init<Sections>(Taps, Taps.Length() / 6, State, ComplexData);
}

void IirFilter(const TVec& Src, TVec& Dst, TIirState& State) {
  if (Src.Length() == 0) return Dst.Size(Src);
  if (!detail::NeedsCopy(Src, Dst)) return FilterBlock(Src, Dst, State);
  const Borrowed<TVec> copy;
  copy->Copy(Src);
  FilterBlock(*copy, Dst, State);
}

void IirFilter(TVec& Data, TIirState& State, bool ZeroPhase) {
  if (ZeroPhase) return FilterForwardAndBackward(Data, State);
  IirFilter(Data, Data, State);
}

void IirFilter(TVec& Data, const TVec& Num, const TVec& Den, bool ZeroPhase) {
  TIirState state;
  IirInit(Num, Den, state, Data.Complex());
  IirFilter(Data, state, ZeroPhase);
}

void IirFilter(double Src, double& Dst, TIirState& State) { FilterSample(Src, Dst, State); }

void IirFilter(float Src, float& Dst, TIirState& State) { FilterSample(Src, Dst, State); }

void IirFilter(TCplx Src, TCplx& Dst, TIirState& State) { FilterSample(Src, Dst, State); }

void IirFilter(TSCplx Src, TSCplx& Dst, TIirState& State) { FilterSample(Src, Dst, State); }

void IirFree(TIirState& State) {
  if (!State.Initialized) return;
  State.NSPIirState.reset();
  State.NSPIirStatec.reset();
  TByteArray().swap(State.Buffer);
  TByteArray().swap(State.Bufferc);
  State.Initialized = false;
}

}  // namespace passband::SignalUtils
