// What the analog prototypes share: roots in extended precision, so that they are right after the rounding to double.
#pragma once

#include <complex>
#include <cstdint>
#include <string_view>
#include <vector>

#include "passband/vector_core/vec.h"

namespace passband::IIRFilters::detail {

using Wide = long double;
using WideComplex = std::complex<Wide>;

struct Prototype {
  std::vector<WideComplex> zeros;
  std::vector<WideComplex> poles;
  Wide k = 1;
};

/// \throws ECoreError "z.IsDouble <> p.IsDouble"
void CheckPrecisions(const TVec& z, const TVec& p);
/// \throws ECoreError "not (1 <= Order <= 1000)"
void CheckOrder(std::int32_t order);
/// \throws ECoreError `text`, unless 0 < decibels <= 3000: the powers stay in the range of a double
void CheckDecibels(double decibels, std::string_view text);

/// 10^(decibels / 10) - 1, without cancellation.
Wide ExcessPower(double decibels);

/// sin(pi m / (2 n)) for whole numbers |m| <= n: 0 for m = 0, 1 for m = n.
Wide QuarterWave(std::int32_t m, std::int32_t n);

/// The angles of a Butterworth prototype: the cosine and sine of pi (2 i - 1) / (2 n) + pi / 2, i = 1 .. n.
WideComplex ButterworthPole(std::int32_t i, std::int32_t n);

/// Re(prod(-p) / prod(-z)), which makes the gain at zero frequency 1.
Wide UnitGain(const Prototype& prototype);

/// Rounds the prototype to the precision of `z` and `p`; without zeros `z` stays real or complex.
void Store(const Prototype& prototype, TVec& z, TVec& p, double& k);

}  // namespace passband::IIRFilters::detail
