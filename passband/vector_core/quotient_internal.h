// Division of elements, fast where the operands allow it.
#pragma once

#include <algorithm>
#include <cmath>

#include "passband/foundation/complex.h"
#include "passband/foundation/element_types.h"

namespace passband::detail {

template <RealElement R>
R Quotient(R a, R b) {
  return a / b;
}

/// a / b: a conj(b) / |b|^2 in double while no part of it can leave its range, else the scaled division of the scalars.
template <class R>
BasicCplx<R> Quotient(BasicCplx<R> a, BasicCplx<R> b) {
  constexpr double kSmall = 0x1p-480;
  constexpr double kLarge = 0x1p480;
  const TCplx p(a);
  const TCplx q(b);
  const double size_p = std::max(std::abs(p.Re), std::abs(p.Im));
  const double size_q = std::max(std::abs(q.Re), std::abs(q.Im));
  const bool plain = (size_p >= kSmall || size_p == 0) && size_p <= kLarge && size_q >= kSmall && size_q <= kLarge;
  if (!plain) return CDiv(a, b);
  const double square = q.Re * q.Re + q.Im * q.Im;
  return BasicCplx<R>(TCplx((p.Re * q.Re + p.Im * q.Im) / square, (p.Im * q.Re - p.Re * q.Im) / square));
}

}  // namespace passband::detail
