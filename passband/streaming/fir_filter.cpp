#include "passband/streaming/fir_filter.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>
#include <string>
#include <utility>

#include "passband/primitives/fir.h"
#include "passband/vector_core/dispatch.h"
#include "passband/vector_core/pool.h"

namespace passband::SignalUtils {
namespace {

using primitives::FirHandle;
using primitives::FirState;
using primitives::Status;

constexpr const char* kNotInitialized = "FirState.Initialized = false";
constexpr const char* kRealStateOnly =
    "FirFilter: Real taps are used to filter complex signal. Use FirInit to initializate the Filter!";
constexpr const char* kNoComplexState = "FirFilter: Use FirInit to initializate the Filter!";

struct Rates {
  std::int32_t up;
  std::int32_t up_phase;
  std::int32_t down;
  std::int32_t down_phase;

  bool IsSingle() const { return up == 1 && down == 1; }
};

void CheckInit(const TVec& taps, const Rates& rates) {
  if (taps.Length() == 0) throw Exception("FIRTaps.Length = 0");
  if (rates.down < 1 || rates.up < 1) throw Exception("(DownSample < 1) or (UpSample < 1)");
}

TFirState FreshRecord(const TVec& taps, const Rates& rates) {
  TFirState fresh;
  fresh.UpSample = rates.up;
  fresh.DownSample = rates.down;
  fresh.ComplexImpulse = taps.Complex();
  fresh.Initialized = true;
  fresh.IsDouble = taps.IsDouble();
  fresh.FloatPrecision = taps.FloatPrecision();
  return fresh;
}

Status Create(const TVec& taps, const Rates& rates, FirHandle& handle) {
  return ForAny(taps, [&]<Element T>(ElementTag<T>) {
    const T* const h = taps.Elements<T>().data();
    if (rates.IsSingle()) return primitives::FirCreate(h, taps.Length(), handle);
    return primitives::FirMultiRateCreate(h, taps.Length(), rates.up, rates.up_phase, rates.down, rates.down_phase,
                                          handle);
  });
}

// The text of a failed creation: the first word depends on the rate mode.
void CheckCreated(Status status, const Rates& rates, const char* single_rate_text) {
  if (!primitives::Failed(status)) return;
  const char* const text = rates.IsSingle() ? single_rate_text : "ippsFirMRInitAllocd failed with error ";
  throw Exception(text + std::to_string(static_cast<std::int32_t>(status)));
}

// Filtering alternates between the caller's memory and short scratch vectors, so that splitting and joining complex
// data stays in the first-level cache whatever the length of the block.
constexpr std::int32_t kChunk = 2048;

// One block in units of steps: a step takes `down` samples and gives `up`; single-rate filters step by samples.
struct Steps {
  std::int32_t count;
  std::int32_t in;
  std::int32_t out;

  std::int32_t Chunk() const { return std::max(1, kChunk / std::max(in, out)); }
};

template <Element T>
void Run(FirState& state, const T* src, T* dst, std::int32_t count, const Steps& steps) {
  // The status is Ok: pointers and count have been checked.
  if (steps.in == 1 && steps.out == 1) {
    static_cast<void>(primitives::FirFilter(state, src, dst, count));
  } else {
    static_cast<void>(primitives::FirMultiRateFilter(state, src, dst, count));
  }
}

template <class Body>
void ForChunks(const Steps& steps, const Body& body) {
  for (std::int32_t done = 0; done < steps.count;) {
    const std::int32_t count = std::min(steps.Chunk(), steps.count - done);
    body(static_cast<std::size_t>(done) * static_cast<std::size_t>(steps.in),
         static_cast<std::size_t>(done) * static_cast<std::size_t>(steps.out), count);
    done += count;
  }
}

// The scratch of a split path in elements of type T, taken from the pool before anything moves.
class Scratch {
 public:
  Scratch(std::size_t elements, TMtxFloatPrecision precision) {
    if (elements > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
      ERaise("FirFilter: one step needs more than 2147483647 elements");
    }
    memory_->Size(static_cast<std::int32_t>(elements), precision);
  }
  template <Element T>
  T* Data() const {
    return memory_->Elements<T>().data();
  }

 private:
  Borrowed<TVec> memory_;
};

std::size_t ChunkSize(const Steps& steps, std::int32_t per_step) {
  return static_cast<std::size_t>(std::min(steps.Chunk(), std::max(1, steps.count))) *
         static_cast<std::size_t>(per_step);
}

// Complex data through real taps: the parts are two real streams with a delay line each.
template <RealElement R>
void RunParts(const TVec& src, TVec& dst, TFirState& state, const Steps& steps, const Scratch& scratch) {
  const std::size_t in = ChunkSize(steps, steps.in);
  const std::size_t out = ChunkSize(steps, steps.out);
  R* const re_in = scratch.Data<R>();
  R* const im_in = re_in + in;
  R* const re_out = im_in + in;
  R* const im_out = re_out + out;
  const ComplexOf<R>* const x = src.Elements<ComplexOf<R>>().data();
  ComplexOf<R>* const y = dst.Elements<ComplexOf<R>>().data();
  ForChunks(steps, [&](std::size_t from, std::size_t to, std::int32_t count) {
    const std::size_t taken = static_cast<std::size_t>(count) * static_cast<std::size_t>(steps.in);
    const std::size_t given = static_cast<std::size_t>(count) * static_cast<std::size_t>(steps.out);
    for (std::size_t n = 0; n < taken; ++n) {
      re_in[n] = x[from + n].Re;
      im_in[n] = x[from + n].Im;
    }
    Run<R>(*state.State_Re, re_in, re_out, count, steps);
    Run<R>(*state.State_Im, im_in, im_out, count, steps);
    for (std::size_t n = 0; n < given; ++n) y[to + n] = {re_out[n], im_out[n]};
  });
}

// Real data through complex taps: the data get zero imaginary parts.
template <ComplexElement C>
void RunExtended(const TVec& src, TVec& dst, TFirState& state, const Steps& steps, const Scratch& scratch) {
  C* const z = scratch.Data<C>();
  const RealOf<C>* const x = src.Elements<RealOf<C>>().data();
  C* const y = dst.Elements<C>().data();
  ForChunks(steps, [&](std::size_t from, std::size_t to, std::int32_t count) {
    const std::size_t taken = static_cast<std::size_t>(count) * static_cast<std::size_t>(steps.in);
    for (std::size_t n = 0; n < taken; ++n) z[n] = {x[from + n], 0};
    Run<C>(*state.Statec, z, y + to, count, steps);
  });
}

bool IsSingleRate(const TFirState& state) { return state.UpSample == 1 && state.DownSample == 1; }

// src.Length L / M, which has to be a whole number. Single-rate streams skip the divisions, which cost as much as a
// short block.
std::int32_t OutputLength(const TVec& src, const TFirState& state) {
  if (IsSingleRate(state)) return src.Length();
  const std::int64_t high_rate_length = static_cast<std::int64_t>(src.Length()) * state.UpSample;
  const std::int64_t length = high_rate_length / state.DownSample;
  if (length * state.DownSample != high_rate_length) ERaise("FirFilter: (Input.Length mod FirSate.DownSample) <> 0");
  if (length > std::numeric_limits<std::int32_t>::max()) ERaise("FirFilter: Dst.Length > 2147483647");
  return static_cast<std::int32_t>(length);
}

// What can be refused; returns the length of the output.
std::int32_t CheckBlock(const TVec& src, const TFirState& state) {
  if (!state.Initialized || state.State_Re == nullptr) ERaise(kNotInitialized);
  if (state.IsDouble != src.IsDouble()) ERaise("FirState.IsDouble <> Src.IsDouble");
  const std::int32_t length = OutputLength(src, state);
  if (state.ComplexImpulse) {
    if (state.Statec == nullptr) ERaise(kNoComplexState);
  } else if (src.Complex() && state.State_Im == nullptr) {
    ERaise(kRealStateOnly);
  }
  return length;
}

// True when the kernels cannot work from src to dst: they take distinct memory or, at a single rate, the same memory
// element for element.
bool NeedsCopy(const TVec& src, const TVec& dst, const TFirState& state, TMtxFloatPrecision precision) {
  const auto from = src.Memory();
  const auto to = dst.Memory();
  const bool overlap = from.data() < to.data() + to.size() && to.data() < from.data() + from.size();
  if (!overlap && &src != &dst) return false;
  return !IsSingleRate(state) || from.data() != to.data() || src.Length() != dst.Length() ||
         src.FloatPrecision() != precision || dst.FloatPrecision() != precision;
}

// Data and taps of the same kind: the kernel works on the caller's memory.
void RunDirectly(const TVec& src, TVec& dst, TFirState& state, const Steps& steps) {
  ForAny(src, [&]<Element T>(ElementTag<T>) {
    FirState& primitive = IsComplex<T> ? *state.Statec : *state.State_Re;
    Run<T>(primitive, src.Elements<T>().data(), dst.Elements<T>().data(), steps.count, steps);
  });
}

// Complex data with real taps (split into parts) and real data with complex taps (extended), chunk by chunk.
void RunConverted(const TVec& src, TVec& dst, std::int32_t length, TFirState& state, const Steps& steps) {
  const bool split = src.Complex();
  const std::size_t in = ChunkSize(steps, steps.in);
  const Scratch scratch(split ? 2 * (in + ChunkSize(steps, steps.out)) : in, MakePrecision(!split, src.IsDouble()));
  dst.Size(length, true, src.IsDouble());  // the last step that can fail; the state still stands
  ForReal(src, [&]<RealElement R>(ElementTag<R>) {
    if (split) {
      RunParts<R>(src, dst, state, steps, scratch);
    } else {
      RunExtended<ComplexOf<R>>(src, dst, state, steps, scratch);
    }
  });
}

void FilterBlock(const TVec& src, TVec& dst, std::int32_t length, TFirState& state) {
  const TMtxFloatPrecision precision = MakePrecision(src.Complex() || state.ComplexImpulse, src.IsDouble());
  if (NeedsCopy(src, dst, state, precision)) {
    const Borrowed<TVec> copy;
    copy->Copy(src);
    return FilterBlock(*copy, dst, length, state);
  }
  const Steps steps{IsSingleRate(state) ? src.Length() : src.Length() / state.DownSample, state.DownSample,
                    state.UpSample};
  if (src.Complex() == state.ComplexImpulse) {
    dst.Size(length, precision);  // the last step that can fail; the state still stands
    RunDirectly(src, dst, state, steps);
  } else {
    RunConverted(src, dst, length, state, steps);
  }
  const std::int32_t written = steps.count * steps.out;
  if (written < length) dst.SetZero(written, length - written);
}

void CheckSingleRate(const TFirState& state) {
  if (!IsSingleRate(state)) ERaise("FirFilter: single samples need a single-rate state");
}

}  // namespace

void FirInit(const TVec& FIRTaps, TFirState& State, std::int32_t UpSample, std::int32_t UpPhase,
             std::int32_t DownSample, std::int32_t DownPhase) {
  const Rates rates{UpSample, UpPhase, DownSample, DownPhase};
  CheckInit(FIRTaps, rates);
  TFirState fresh = FreshRecord(FIRTaps, rates);
  const Borrowed<TVec> taps;
  taps->RealPart(FIRTaps);
  CheckCreated(Create(*taps, rates, fresh.State_Re), rates, "ippsFirSRInitAllocd failed with error ");
  CheckCreated(Create(*taps, rates, fresh.State_Im), rates, "ippsFirInitAllocd failed with error ");
  taps->ExtendToComplex(FIRTaps, true);
  if (primitives::Failed(Create(*taps, rates, fresh.Statec)))
    throw std::bad_alloc();  // all else has been accepted above
  State = std::move(fresh);
}

void FirInitReal(const TVec& FIRTaps, TFirState& State, std::int32_t UpSample, std::int32_t UpPhase,
                 std::int32_t DownSample, std::int32_t DownPhase) {
  const Rates rates{UpSample, UpPhase, DownSample, DownPhase};
  CheckInit(FIRTaps, rates);
  if (FIRTaps.Complex()) throw Exception("Use FirInit to initialize complex filters!");
  TFirState fresh = FreshRecord(FIRTaps, rates);
  CheckCreated(Create(FIRTaps, rates, fresh.State_Re), rates, "ippsFirInitAllocd failed with error ");
  State = std::move(fresh);
}

void FirFilter(const TVec& Src, TVec& Dst, TFirState& State) {
  if (Src.Length() == 0) return Dst.Size(Src);
  FilterBlock(Src, Dst, CheckBlock(Src, State), State);
}

void FirFilter(double Src, double& Dst, TFirState& State) {
  if (!State.Initialized || State.State_Re == nullptr) ERaise(kNotInitialized);
  if (State.ComplexImpulse) ERaise("TFirState may not have complex impulse response for real valued data!");
  CheckSingleRate(State);
  if (State.IsDouble) {
    Dst = primitives::FirOne<double>(*State.State_Re, Src);
  } else {
    Dst = static_cast<double>(primitives::FirOne<float>(*State.State_Re, static_cast<float>(Src)));
  }
}

void FirFilter(TCplx Src, TCplx& Dst, TFirState& State) {
  if (!State.Initialized || State.State_Re == nullptr) ERaise(kNotInitialized);
  if (State.ComplexImpulse && State.Statec == nullptr) ERaise(kNoComplexState);
  if (!State.ComplexImpulse && State.State_Im == nullptr) ERaise(kRealStateOnly);
  CheckSingleRate(State);
  ForReal(State.IsDouble, [&]<RealElement R>(ElementTag<R>) {
    const auto x = static_cast<ComplexOf<R>>(Src);
    if (State.ComplexImpulse) {
      Dst = static_cast<TCplx>(primitives::FirOne<ComplexOf<R>>(*State.Statec, x));
    } else {
      const R re = primitives::FirOne<R>(*State.State_Re, x.Re);
      const R im = primitives::FirOne<R>(*State.State_Im, x.Im);
      Dst = TCplx(re, im);
    }
  });
}

void FirFilter(TVec& Data, const TVec& Taps, std::int32_t UpSample, std::int32_t DownSample) {
  const std::int32_t length = Data.Length();
  if (length == 0) return;
  TFirState state;
  FirInit(Taps, state, UpSample, 0, DownSample, 0);
  const std::int64_t padded_length = static_cast<std::int64_t>(length) + Taps.Length();
  if (padded_length > std::numeric_limits<std::int32_t>::max())
    ERaise("FirFilter: Data.Length + Taps.Length > 2147483647");
  const Borrowed<TVec> padded;
  const Borrowed<TVec> filtered;
  padded->Resize(Data, static_cast<std::int32_t>(padded_length), true);
  FirFilter(*padded, *filtered, state);
  const std::int64_t delay = static_cast<std::int64_t>(Taps.Length()) * UpSample / DownSample;
  const auto first =
      static_cast<std::int32_t>(std::min<std::int64_t>(delay / 2, std::numeric_limits<std::int32_t>::max()));
  std::int32_t count = length;
  filtered->ValidateParams(first, count);  // before Data changes
  Data.Size(length, *filtered);
  Data.Copy(*filtered, first, 0, length);
}

void FirFree(TFirState& State) {
  State.State_Re.reset();
  State.State_Im.reset();
  State.Statec.reset();
  State.Initialized = false;
}

}  // namespace passband::SignalUtils
