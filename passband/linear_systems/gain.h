// The gain of a system of zeros and poles at a point.
#pragma once

#include <complex>

#include "passband/foundation/export.h"
#include "passband/vector_core/vec.h"

namespace passband::LinearSystems {

/// Re(prod(s - z[i])) / Re(prod(s - p[j])), empty products being 1: at a real point `s` the gain of the real system with
/// k = 1. At a complex point both products are complex and this quotient of their real parts is no response.
///
/// \param z, p  real or complex, of any precision
/// Precision: in double; the products leave its range only where the quotient does. A pole at `s` gives an infinity, or a
/// NaN with a zero there. Cost: O(z.Length + p.Length).
PASSBAND_EXPORT double ComputeGain(const TVec& z, const TVec& p, double s);
PASSBAND_EXPORT double ComputeGain(const TVec& z, const TVec& p, TCplx s);
inline double ComputeGain(const TVec& z, const TVec& p, std::complex<double> s) { return ComputeGain(z, p, TCplx(s)); }
inline double ComputeGain(const TVec& z, const TVec& p, int s) { return ComputeGain(z, p, static_cast<double>(s)); }

}  // namespace passband::LinearSystems
