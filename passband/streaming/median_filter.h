// Running medians: of a stream, block by block, and of whole vectors.
//
// The window trails. Output n is the median of the newest M inputs, and before M of them have come the first one stands for
// those that are missing:
//
//                     x[0] x[0] x[0] x[0] | x[0] x[1] x[2] x[3] x[4] x[5] x[6] ...
//     M = 5   y[0] =  [--------- median --------]
//             y[1] =       [--------- median --------]
//             y[4] =                        [--------- median --------]
//             y[6] =                                  [--------- median --------]
//
// So an edge of the signal comes out (M - 1) / 2 samples late. Values are ordered as -infinity .. -0, +0 .. infinity, NaN:
// an output is NaN when NaN fill more than half of the window, and they leave no trace once they have left it.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/primitives/median_handle.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// A median filter in work. The owner zero-initialises it, fills it by `MedianInit` and may release it early by `MedianFree`;
/// destruction releases it too. It moves, it is not copied. One thread at a time.
struct TMedianState {
  primitives::MedianHandle State;       ///< window and history
  TMtxFloatPrecision FloatPrecision{};  ///< precision of the stream
  std::int32_t MaskSize = 0;            ///< not used
  TVec Data;                            ///< not used
  TVec Buffer;                          ///< not used
};

/// Starts a median over M = `MaskSize` samples, one more when that is even. What the record held before is released; when the
/// call is refused, the record stays as it was.
/// \param MaskSize        >= 1
/// \param FloatPrecision  of the stream; complex streams are refused when they come
/// \throws ECoreError "MedianInit: MaskSize < 1"; "MedianInit: FloatPrecision is none of the four precisions"
/// Cost: allocates about 8 M samples.
PASSBAND_EXPORT void MedianInit(std::int32_t MaskSize, TMedianState& State, TMtxFloatPrecision FloatPrecision);

/// Filters the next block of the stream; any cut of it into blocks gives the same bits.
///
/// \param Src  the block; an empty one empties `Dst` and does nothing else, whatever the state
/// \param Dst  sized like `Src`; may be `Src`
/// \throws ECoreError "MedianFilter: Src.FloatPrecision <> State.FloatPrecision"; "MedianFilter: Src.Complex = True";
///         "MedianFilter: State.State = nil" of a record that is not initialised. `Dst` and the state are then as they were.
/// Precision: outputs are inputs, bit for bit, but that NaN come out as one and the same NaN.
/// Cost: independent of the order of the data, but that rising and falling data may take up to twice the time in windows
/// beyond some hundred samples. For one sample in long blocks, with 512-bit vectors: windows to M = 9 a few cycles; to M
/// about 100 (single precision: 200) M / 2 (M / 4) cycles; beyond that about 50 cycles, and from M about 2000 on growing with
/// the square root of M. Blocks of one sample take 200 cycles. Allocates nothing once warm.
/// Literature: Tukey, "Exploratory Data Analysis", 1977; Huang, Yang, Tang, "A fast two-dimensional median filtering
/// algorithm", IEEE Trans. ASSP 27, 1979.
PASSBAND_EXPORT void MedianFilter(const TVec& Src, TVec& Dst, const TMedianState& State);

/// Releases the state; harmless on a record that holds none.
PASSBAND_EXPORT void MedianFree(TMedianState& State);

/// Dst[DstIndex + k] = the running median of Src[SrcIndex + k], k = 0 .. Len - 1, as of a stream that begins and ends there.
///
/// \param Src, Dst  real, of one precision; the stretches may overlap
/// \param MaskSize  M >= 1, of an even number one less; when it is larger than Dst.Length, `Len` takes its place
/// \param Len       -1: as much as both hold
/// \throws ECoreError the text of `TVec::ValidateParams`; "Src.Complex = True"; "MedianFilter: MaskSize < 1"; "the elements
///         are double, not single" (and so on) for a `Dst` of another precision; Exception "MedianFilter:
///         ippsFilterMedianAllocd: not enough memory". `Dst` is then as it was.
/// Cost: as the streaming form in long blocks; allocates nothing once the pool is warm.
PASSBAND_EXPORT void MedianFilter(const TVec& Src, TVec& Dst, std::int32_t MaskSize, std::int32_t SrcIndex,
                                  std::int32_t DstIndex, std::int32_t Len);

/// The running median of a whole vector. `Dst` is sized like `Src` and may be `Src`.
PASSBAND_EXPORT void MedianFilter(const TVec& Src, TVec& Dst, std::int32_t MaskSize);

/// The running median of a stretch in place. Here `MaskSize` may be longer than the data.
/// \throws as above, with "Data.Complex = True"
PASSBAND_EXPORT void MedianFilter(TVec& Data, std::int32_t MaskSize, std::int32_t Index = 0, std::int32_t Len = -1);

}  // namespace passband::SignalUtils
