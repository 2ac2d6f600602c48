// Equiripple linear-phase FIR filters: optimal in the weighted Chebyshev sense, by the method of Parks and McClellan.
#pragma once

#include <cstdint>

#include "passband/foundation/enumerations.h"
#include "passband/foundation/export.h"
#include "passband/foundation/open_array.h"
#include "passband/vector_core/vec.h"

namespace passband::OptimalFir {

/// Points of the frequency grid for each tap of half a filter: a filter of N taps is optimal on frequencies that are
/// 0.5 / (GridDensity (N div 2)) apart, in cycles per sample. 16 at first. Read once by each design, without a guard: a
/// thread that changes it changes the designs that other threads begin.
PASSBAND_EXPORT extern std::int32_t GridDensity;

/// Designs the filter whose largest weighted error over the bands is the smallest possible: the amplitude A(f) of `H`
/// minimises
///
///     max |W(f) (D(f) - A(f))|      f on the grid of the bands
///
/// Between the bands nothing is asked for, and where a gap is wide the amplitude may grow large in it. With w = 2 pi f,
/// D and W follow from the gain g and the weight v of a band:
///
///     rmtBandPass                      D = g          W = v
///     rmtHilbert                       D = g          W = v           (the phase is that of a Hilbert transformer)
///     rmtDifferentiator                D = g w        W = v FS / f
///     rmtIntegrator                    D = g / w      W = v f / FS
///     rmtDoubleDifferentiator          D = g w^2      W = v (FS / f)^2
///     rmtDoubleIntegrator              D = g / w^2    W = v (f / FS)^2
///
/// so that errors are relative to D. `FixedWeights` leaves W = v, and so do frequencies up to 1e-6 of FS. Taps are
/// symmetric for rmtBandPass and antisymmetric for all other types. An antisymmetric amplitude is 0 at 0, and at FS/2
/// for odd lengths: bands that reach there end one grid distance before.
///
/// \param H             in: the length, 3 .. 10000, and `IsDouble`; out: the taps, real
/// \param bands         two edges for each band in ascending order, 0 .. FS/2, in the unit of `FS`
/// \param gains         the gain g of each band, finite
/// \param weights       the weight v of each band, positive and finite
/// \param RemezType     see the table
/// \param Deviation     out: the largest weighted error. It is that of the optimum, which the stored taps reach to 1e-6
///                      of it where it is above 1e-9 of the desired amplitude; where their rounding shows, it is the
///                      error measured with the stored taps. Taps in single precision deviate further
/// \param FS            sampling frequency
/// \param FixedWeights  true: the weights are not shaped by the type
/// \returns the exchange iterations, below 50 when the taps are the optimum, or as close to it as the rounding of taps
///          allows. 50 otherwise: there are fewer grid points than coefficients and one, or the optimum grows so large
///          between the bands that no double taps can express it. The taps are then finite, and a good approximation
///          with fewer coefficients
/// \throws ECoreError "Length(weights) <> Length(gains)"; "remez: Length(bands) <> 2*Length(gains)"; "remez: no bands";
///         "Remez: Overlapping bands!" for an edge that is below the one before, or not a number; "Too long/short
///         filter specified!"; "OptimalFir.GridDensity = 16. This parameter is too small to calculate the filter. .."
///         for a band with fewer than two grid points; "remez: a band edge is outside 0 .. FS/2"; "remez: a gain is not
///         finite"; "remez: a weight is not positive and finite"; in this order. `H` is then as it was, `Deviation` is
///         0.
///
/// Bands may touch. Where they do with a step in the gain, no filter is better at the common edge than half of the
/// step, weighted; the design holds the mean there, and `Deviation` is at least that error. The same goes for FS/2
/// where a symmetric filter of even length, which is 0 there, is to have a gain.
/// Precision: in double where that is enough, else with more digits, down to the rounding of the taps.
/// Cost: O(N^2) for each of usually 5 to 15 iterations, whatever the grid; 10000 taps take some tenths of a second, up
/// to some seconds where the optimum is below 1e-12 or cannot be expressed.
/// Literature: Parks, McClellan, "Chebyshev approximation for nonrecursive digital filters with linear phase", IEEE
/// Trans. Circuit Theory 19, 1972; Pachon, Trefethen, "Barycentric-Remez algorithms for best polynomial approximation
/// in the chebfun system", BIT 49, 2009; Filip, "A robust and scalable implementation of the Parks-McClellan algorithm
/// for designing FIR filters", ACM Trans. Math. Software 43, 2016.
PASSBAND_EXPORT std::int32_t remez(TVec& H, OpenArray bands, OpenArray gains, OpenArray weights, TRemezType RemezType,
                                   double& Deviation, double FS = 2, bool FixedWeights = false);

}  // namespace passband::OptimalFir
