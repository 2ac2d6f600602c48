// Streaming FIR filters: y[n] = sum h[k] x[n - k], k = 0 .. T - 1, single-rate or between two sampling rates, with real
// or complex taps and data. A record holds the delay lines, so that a stream may be filtered in blocks of any size or
// sample by sample: the same bits come out however it is cut.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/primitives/fir_handle.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// A FIR filter in work. The owner zero-initialises it (`TFirState state{};`), fills it by `FirInit` or `FirInitReal`
/// and may release it early by `FirFree`; destruction releases it too. It moves, it is not copied. One thread at a
/// time.
struct TFirState {
  primitives::FirHandle State_Re;  ///< real taps: filters real data and the real part of complex data
  primitives::FirHandle State_Im;  ///< the same taps for the imaginary part of complex data; empty after `FirInitReal`
  primitives::FirHandle Statec;    ///< complex taps; empty after `FirInitReal`
  std::int32_t UpSample = 0;       ///< outputs of one multi-rate step, at least 1
  std::int32_t DownSample = 0;     ///< inputs of one multi-rate step, at least 1
  bool ComplexImpulse = false;     ///< the taps are complex
  bool Initialized = false;        ///< the handles are set
  bool IsDouble = false;           ///< precision of the taps, and of the data that are accepted
  TMtxFloatPrecision FloatPrecision{};  ///< precision and complex flag of the taps
};

/// Creates the filter with the taps h = `FIRTaps` and an empty (zero) delay line. What the record held before is
/// released; when the call is refused, the record stays as it was.
///
/// With `UpSample` = L and `DownSample` = M, not both 1, the filter changes the sampling rate by L/M: each input sample
/// is placed at position `UpPhase` of a block of L, zeros elsewhere; the taps filter at this high rate; of every M
/// high-rate samples the one at position `DownPhase` is kept. The zeros are not computed (polyphase form).
///
/// \param FIRTaps     the taps, at least one, any precision; data of that `IsDouble` are accepted afterwards
/// \param State       the record to fill
/// \param UpSample    L >= 1
/// \param UpPhase     0 .. L - 1
/// \param DownSample  M >= 1
/// \param DownPhase   0 .. M - 1
/// \throws Exception "FIRTaps.Length = 0"; "(DownSample < 1) or (UpSample < 1)"; and, each followed by a status,
///         "ippsFirMRInitAllocd failed with error " (multi-rate), "ippsFirSRInitAllocd failed with error " or
///         "ippsFirInitAllocd failed with error " (single-rate): -27 a phase is outside its range, -9 there is no
///         memory
/// Precision: the taps as they are. Against exact arithmetic the largest output error on noise is at most 3 eps of the
/// largest output at 255 taps. From 512 taps on single-rate filters work through transforms of blocks behind a direct
/// head of the filter, with no added delay: the error is then at most eps |h|_2 |x|_2, x over the last T samples and
/// two blocks, so that quiet samples close to a loud one keep its noise. A NaN or an infinity at input p reaches no
/// earlier output; a short filter has it in p .. p + T - 1, a long one up to ceil(T/B) B + B - 1 samples after p, where
/// B is its longest block (64 to 4096, growing with T).
/// Cost: O(T) memory and, for long filters, their transforms; `FirFilter` afterwards allocates nothing.
/// Literature: Crochiere, Rabiner, "Multirate Digital Signal Processing", Prentice-Hall, 1983; Gardner, "Efficient
/// convolution without input-output delay", J. Audio Eng. Soc. 43, 1995.
PASSBAND_EXPORT void FirInit(const TVec& FIRTaps, TFirState& State, std::int32_t UpSample = 1, std::int32_t UpPhase = 0,
                             std::int32_t DownSample = 1, std::int32_t DownPhase = 0);

/// `FirInit` for real taps and real data only: makes `State_Re` alone.
/// \throws Exception as `FirInit`, and "Use FirInit to initialize complex filters!" for complex taps; a single-rate
///         failure reads "ippsFirInitAllocd failed with error " and the status
PASSBAND_EXPORT void FirInitReal(const TVec& FIRTaps, TFirState& State, std::int32_t UpSample = 1,
                                 std::int32_t UpPhase = 0, std::int32_t DownSample = 1, std::int32_t DownPhase = 0);

/// Filters the next block of the stream.
///
/// \param Src    the block; its length times L must be divisible by M. Blocks of a length that is no multiple of M
/// itself
///               (L and M share a divisor) make Length div M steps; the rest of the input is dropped and the rest of
///               `Dst` is zero.
/// \param Dst    receives Length L / M samples in the precision of `Src`, complex when the data or the taps are. `Dst`
/// may
///               be `Src`. An empty `Src` empties `Dst` and does nothing else, whatever the state.
/// \param State  carries the delay line on; a refused call leaves it, and `Dst`, as they were
/// \throws ECoreError "FirState.Initialized = false"; "FirState.IsDouble <> Src.IsDouble";
///         "FirFilter: (Input.Length mod FirSate.DownSample) <> 0";
///         "FirFilter: Real taps are used to filter complex signal. Use FirInit to initializate the Filter!" for
///         complex data on a record of `FirInitReal`; "FirFilter: Use FirInit to initializate the Filter!" for complex
///         taps without a complex state; "FirFilter: Dst.Length > 2147483647"; "FirFilter: one step needs more than 2147483647
///         elements" for complex data and a huge factor
/// Cost: no allocation when `Dst` has the capacity and the thread's pool is warm, no lock.
PASSBAND_EXPORT void FirFilter(const TVec& Src, TVec& Dst, TFirState& State);

/// Filters one sample of a real single-rate stream; a record of single precision rounds `Src` first.
/// \throws ECoreError "FirState.Initialized = false"; "TFirState may not have complex impulse response for real valued
///         data!"; "FirFilter: single samples need a single-rate state"
PASSBAND_EXPORT void FirFilter(double Src, double& Dst, TFirState& State);

/// Filters one sample of a complex single-rate stream.
/// \throws ECoreError "FirState.Initialized = false"; "FirFilter: Real taps are used to filter complex signal. Use
/// FirInit
///         to initializate the Filter!"; "FirFilter: single samples need a single-rate state"
PASSBAND_EXPORT void FirFilter(TCplx Src, TCplx& Dst, TFirState& State);

/// Filters a whole vector at once and moves the result back by half the filter: with D = T L div M, element k is output
/// k + (D div 2) of the stream `Data` followed by T zeros. For equal factors this compensates the delay of a symmetric
/// filter; for unequal ones it is an alignment by definition only.
///
/// \param Data  in and out; keeps its length and becomes complex when the taps are. An empty vector is left alone; a
///              refused one too.
/// \throws as `FirInit` and `FirFilter` for the padded data; the sub-range text of `TVec` where the filtered stream is
///         shorter than D div 2 + Data.Length (down-sampling); ECoreError "FirFilter: Data.Length + Taps.Length >
///         2147483647"
PASSBAND_EXPORT void FirFilter(TVec& Data, const TVec& Taps, std::int32_t UpSample = 1, std::int32_t DownSample = 1);

/// Releases the delay lines and sets `Initialized` = false; harmless on a record that holds nothing.
PASSBAND_EXPORT void FirFree(TFirState& State);

}  // namespace passband::SignalUtils
