// Exponential averages of a stream: every new sample counts with the same weight, older ones ever less.
//
// There are two ways to say how fast: the design takes a time constant in samples, the filters the weight of a new sample in
// percent. A time constant of D samples is a weight of 100 / D percent.
#pragma once

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// Coefficients of y[n] = ((Decay - 1) / Decay) y[n - 1] + x[n] / Decay: Num = {1 / Decay, 0}, Den = {1, (1 - Decay) / Decay}.
/// \param Decay     time constant in samples
/// \param Num, Den  two real elements each, in their precision; for `IirInit`
/// \throws ECoreError "not (1/MAXNUM < Decay < MAXNUM)" for infinities, NaN and all below 5.56e-309
PASSBAND_EXPORT void ExpAverageFilter(double Decay, TVec& Num, TVec& Den);

/// Averages the next block in place: y[n] = (1 - a) y[n - 1] + a x[n], a = Decay / 100.
///
/// \param Data   real, any precision; an empty block leaves the state
/// \param State  y[n - 1] of the first sample, and after the call the last output, not rounded to the precision of `Data`. Any
///               cut of the stream into blocks and samples gives the same bits.
/// \param Decay  weight of a new sample in percent, 0 < Decay < 100
/// \throws ECoreError "Data.Complex = True"; "Decay <= 0", for a NaN too; "Decay >= 100"
/// Precision: in double throughout, outputs are rounded once; so slow averages of single precision data keep moving. Rounding
/// adds up to at most 1.2e-16 / a of the average. An infinity or a NaN stays in it.
/// Cost: one multiply-add after the other, 4 cycles a sample; allocates nothing.
/// Literature: Brown, "Smoothing, Forecasting and Prediction of Discrete Time Series", 1963.
PASSBAND_EXPORT void ExpAverageFilter(TVec& Data, double& State, double Decay);

/// The same for complex data, both parts alike.
/// \throws ECoreError "Data.Complex = false"; "Decay <= 0"; "Decay >= 100"
PASSBAND_EXPORT void ExpAverageFilter(TVec& Data, TCplx& State, double Decay);

/// One sample: `State` becomes (1 - a) State + a Value.
/// \throws ECoreError "Decay <= 0"; "Decay >= 100"
PASSBAND_EXPORT void ExpAverageFilter(double Value, double& State, double Decay);

}  // namespace passband::SignalUtils
