#include "passband/streaming/exponential_average.h"

#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"
#include "passband/primitives/exponential_average.h"
#include "passband/streaming/coefficients_internal.h"
#include "passband/vector_core/dispatch.h"

namespace passband::SignalUtils {
namespace {

void CheckDecay(double decay) {
  if (!(decay > 0)) ERaise("Decay <= 0");
  if (decay >= 100) ERaise("Decay >= 100");
}

template <Element T>
void Average(TVec& data, TCplx& state, double decay) {
  primitives::ExponentialAverage(data.Elements<T>().data(), data.Length(), decay / 100, state);
}

}  // namespace

void ExpAverageFilter(double Decay, TVec& Num, TVec& Den) {
  constexpr double kMaxNum = 1.797693134862315e308;
  constexpr double kMinNum = 5.56268464626801e-309;
  if (!CheckRange(kMinNum, Decay, kMaxNum)) ERaise("not (1/MAXNUM < Decay < MAXNUM)");
  detail::SetCoefficients(Num, {1 / Decay, 0}, Den, {1, -(Decay - 1) / Decay});
}

void ExpAverageFilter(TVec& Data, double& State, double Decay) {
  if (Data.Complex()) ERaise("Data.Complex = True");
  CheckDecay(Decay);
  TCplx state = Cplx(State);
  ForReal(Data, [&]<RealElement R>(ElementTag<R>) { Average<R>(Data, state, Decay); });
  State = state.Re;
}

void ExpAverageFilter(TVec& Data, TCplx& State, double Decay) {
  if (!Data.Complex()) ERaise("Data.Complex = false");
  CheckDecay(Decay);
  ForReal(Data, [&]<RealElement R>(ElementTag<R>) { Average<ComplexOf<R>>(Data, State, Decay); });
}

void ExpAverageFilter(double Value, double& State, double Decay) {
  CheckDecay(Decay);
  TCplx state = Cplx(State);
  primitives::ExponentialAverage(&Value, 1, Decay / 100, state);
  State = state.Re;
}

}  // namespace passband::SignalUtils
