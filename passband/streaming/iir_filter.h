// Streaming IIR filters in direct form or in second-order sections, with real coefficients, on real or complex data. A
// record holds the delay lines, so that a stream may be filtered in blocks of any size or sample by sample: the same
// bits come out however it is cut.
//
// Use sections (`IirInitBQ`) wherever there is a choice. The direct form is fragile: its poles are the roots of one
// polynomial, and rounding the coefficients moves them the further, the more of them lie close together. A Butterworth
// bandpass of order 5 from 1 Hz to 2 Hz at 200 Hz has its poles at magnitudes up to 0.9967; rounded to double precision
// the eleven coefficients of its denominator have a pole at magnitude 1.0054, and the response to a sine of amplitude 1
// at 1 Hz grows to 16 after 5 s and to 1e8 after 20 s, where 0.7 is right. The same design in sections is right to the
// last digits of double precision.
#pragma once

#include <cstdint>

#include "passband/foundation/export.h"
#include "passband/primitives/iir_handle.h"
#include "passband/streaming/byte_array.h"
#include "passband/vector_core/vec.h"

namespace passband::SignalUtils {

/// An IIR filter in work. The owner zero-initialises it (`TIirState state{};`), fills it by `IirInit` or `IirInitBQ` and
/// may release it early by `IirFree`; destruction releases it too. It moves, it is not copied. One thread at a time.
/// Real and complex data have a delay line each: the one is not moved on by filtering the other.
struct TIirState {
  primitives::IirHandle NSPIirState;   ///< filter of real data, inside `Buffer`
  primitives::IirHandle NSPIirStatec;  ///< filter of complex data, inside `Bufferc`; empty unless asked for
  TByteArray Buffer;                   ///< memory of `NSPIirState`; not to be resized by the owner
  TByteArray Bufferc;                  ///< memory of `NSPIirStatec`
  bool IsDouble = false;               ///< precision of the taps, and of the data that are accepted
  bool ComplexImpulse = false;         ///< complex data are accepted
  bool Initialized = false;            ///< the handles are set
};

/// Creates the filter y[n] = (sum b[k] x[n - k] - sum a[k] y[n - k], k >= 1) / a[0] in direct form, with an empty (zero)
/// delay line. What the record held before is released; when the call is refused, the record stays as it was.
///
/// \param Taps         b[0] .. b[N], a[0] .. a[N]: the numerator and then the denominator, both in ascending powers of
///                     z^-1, any precision; N = Length div 2 - 1, the last one of an odd number of taps is not used; of
///                     complex taps the real part is taken. Data of that `IsDouble` are accepted afterwards.
/// \param State        the record to fill
/// \param ComplexData  accept complex data, too; real data then have no sample form
/// \throws ECoreError "Taps.Length = 0"; "ippsIIRInit failed to initialize the filter: " and a status in words: "a
///         coefficient that divides is zero" when a[0] = 0, "a length is outside its range" for a single tap
/// Precision: the taps are divided by a[0] in double and all sums are formed in double. On noise through designs of order
/// 1 to 8 the rounding errors of double precision data are 0.4 to 0.9 times those of the transposed form in plain
/// arithmetic; single precision data are as good as their last rounding. No arithmetic makes up for coefficients that
/// do not hold the poles, see the top of this file: from about order 4, or with cut-offs below a twentieth of the
/// sampling frequency, take `IirInitBQ`. Outputs below 2^-1010 (single precision: 2^-126) are 0, so that a filter falls
/// silent after the signal without subnormal numbers. A NaN or an infinity reaches no earlier output, and generally
/// stays in a filter with feedback.
/// Cost: 16 N bytes of taps and 16 N + 4096 of delay lines (twice that for complex data), twice over; `IirFilter`
/// afterwards allocates nothing.
/// Literature: Oppenheim, Schafer, "Discrete-Time Signal Processing", ch. 6 (structures, and the effects of coefficient
/// quantisation); Ogita, Rump, Oishi, "Accurate sum and dot product", SIAM J. Sci. Comput. 26, 2005.
PASSBAND_EXPORT void IirInit(const TVec& Taps, TIirState& State, bool ComplexData = false);

/// `IirInit` with numerator `Num` = b[0] .. and denominator `Den` = a[0] .. apart; the shorter one is continued with
/// zeros.
/// \throws Exception "Num.Length = 0"; "Den.Length = 0"; ECoreError as `IirInit`, "the operands have precisions single
///         and double" (or the reverse), "Size: more than 2147483647 elements" for both together
PASSBAND_EXPORT void IirInit(const TVec& Num, const TVec& Den, TIirState& State, bool ComplexData = false);

/// Creates a cascade of second-order sections, each with H(z) = (b0 + b1 z^-1 + b2 z^-2) / (a0 + a1 z^-1 + a2 z^-2),
/// with empty (zero) delay lines; the output of a section feeds the next one.
///
/// \param Taps  b0, b1, b2, a0, a1, a2 section after section, as the designs and `ZeroPoleToSOS` give them; Length div 6
///              sections, the rest is not used; of complex taps the real part is taken
/// \throws ECoreError "Taps.Length = 0"; "ippsIirInitAlloc_Biquadd failed to initialize the filter: " (complex data:
///         "ippsIirInitAlloc_Biquaddc failed to initialize the filter: ") and a status in words: "a coefficient that
///         divides is zero" when an a0 = 0, "a length is outside its range" for fewer than 6 taps
/// Precision: the taps are divided by a0 in double. On designed filters the rounding errors are at most 1.1 times those of
/// a cascade of plain sections, usually far below. Silence, NaN and infinities as in `IirInit`.
/// Cost: memory of a fixed size for each section; `IirFilter` afterwards allocates nothing.
/// Literature: Mitra, "Digital Signal Processing", ch. 8 (cascade realisations) and 12 (finite wordlength effects).
PASSBAND_EXPORT void IirInitBQ(const TVec& Taps, TIirState& State, bool ComplexData = false);

/// Filters the next block of the stream.
///
/// \param Src    the block. An empty one empties `Dst` and does nothing else, whatever the state.
/// \param Dst    sized like `Src`, then receives the output; `Dst` may be `Src`, or share memory with it
/// \param State  carries the delay line on; a refused call leaves it as it was, and has sized `Dst` already
/// \throws ECoreError "not IirState.Initialized"; "Src.Complex and not IirState.ComplexImpulse"; "IirState.IsDouble <>
///         Src.IsDouble"
/// Cost: direct form O(N), sections O(sections) operations a sample; no allocation when `Dst` has the capacity and the
/// thread's pool is warm, no lock.
PASSBAND_EXPORT void IirFilter(const TVec& Src, TVec& Dst, TIirState& State);

/// Filters `Data` in place: as the next block of a stream or, with `ZeroPhase`, forward and backward, which leaves the
/// squared magnitude response and no phase shift.
///
/// With `ZeroPhase` the data, continued with zeros to P = Round(1.1 Length) samples (the nearest integer, ties to even),
/// run through the filter, are reversed, run through it again, and are reversed back; the first Length samples remain.
/// The delay line is carried over from the first pass to the second and left behind in `State` by the second. The
/// result is that of an infinitely long stream only as far as the impulse response has died away within 0.1 Length
/// samples; for low cut-offs it has not. A centred unit pulse through a Butterworth lowpass of order 2 at 0.01 of the
/// Nyquist frequency comes out with its peak at 54 instead of 50 of 100 samples, the two sides differing by up to 58 % of
/// the peak; among 1000 samples they differ by 1.3e-7 of it, at a cut-off of 0.2 among 100 samples by 1e-13. Append
/// zeros to the data of slow filters.
/// \throws as the block form; ECoreError "IirFilter: Round(1.1 Data.Length) > 2147483647". A refused call changes
/// nothing.
/// Literature: Gustafsson, "Determining the initial states in forward-backward filtering", IEEE Trans. Signal Process.
/// 44, 1996.
PASSBAND_EXPORT void IirFilter(TVec& Data, TIirState& State, bool ZeroPhase = false);

/// Filters `Data` in place by a filter in direct form that starts at rest and is not kept; `ZeroPhase` as above.
/// \throws as `IirInit` of `Num` and `Den`, and as the in-place form
PASSBAND_EXPORT void IirFilter(TVec& Data, const TVec& Num, const TVec& Den, bool ZeroPhase = false);

/// Filters one sample of a real stream; `State` is of double precision and accepts no complex data.
/// \throws ECoreError "not IirState.Initialized"; "TIirState is initialized with single precision filter structure!";
///         and, after `Dst` has become 0, "TIirState may not have complex impulse response!"
PASSBAND_EXPORT void IirFilter(double Src, double& Dst, TIirState& State);

/// One sample of a real stream in single precision.
/// \throws ECoreError as above, with "TIirState is initialized with double precision filter structure!"
PASSBAND_EXPORT void IirFilter(float Src, float& Dst, TIirState& State);

/// One sample of a complex stream; `State` is of double precision and accepts complex data.
/// \throws ECoreError "not IirState.Initialized"; "TIirState is initialized with single precision filter structure!";
///         and, after `Dst` has become 0, "TIirState needs to have complex impulse response!"
PASSBAND_EXPORT void IirFilter(TCplx Src, TCplx& Dst, TIirState& State);

/// One sample of a complex stream in single precision.
/// \throws ECoreError as above, with "TIirState is initialized with double precision filter structure!"
PASSBAND_EXPORT void IirFilter(TSCplx Src, TSCplx& Dst, TIirState& State);

/// Releases the delay lines and sets `Initialized` = false; harmless on a record that holds nothing.
PASSBAND_EXPORT void IirFree(TIirState& State);

}  // namespace passband::SignalUtils
