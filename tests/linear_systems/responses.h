// Responses of systems in any form, in extended precision: whatever a conversion or a mapping does must show there.
#pragma once

#include <complex>
#include <utility>
#include <vector>

#include "tests/test_support.h"

namespace passband::test {

using Wide = std::complex<long double>;

inline Wide WideAt(const TVec& v, std::int32_t i) { return {At(v, i).Re, At(v, i).Im}; }

inline Wide Response(const TVec& z, const TVec& p, double k, Wide x) {
  Wide h = static_cast<long double>(k);
  for (std::int32_t i = 0; i < std::max(z.Length(), p.Length()); ++i) {
    if (i < z.Length()) h *= x - WideAt(z, i);
    if (i < p.Length()) h /= x - WideAt(p, i);
  }
  return h;
}

inline Wide Polynomial(const TVec& coefficients, Wide x) {
  Wide sum = 0;
  for (std::int32_t i = 0; i < coefficients.Length(); ++i) sum = sum * x + WideAt(coefficients, i);
  return sum;
}

inline Wide Response(const TVec& num, const TVec& den, Wide x) { return Polynomial(num, x) / Polynomial(den, x); }

inline Wide SectionsResponse(const TVec& sos, Wide z) {
  Wide h = 1;
  for (std::int32_t i = 0; i < sos.Length(); i += 6) {
    h *= (WideAt(sos, i) * z * z + WideAt(sos, i + 1) * z + WideAt(sos, i + 2)) /
         (WideAt(sos, i + 3) * z * z + WideAt(sos, i + 4) * z + WideAt(sos, i + 5));
  }
  return h;
}

/// C (x I - A)^-1 B + D by elimination with pivots.
inline Wide Response(const TMtx& A, const TVec& B, const TVec& C, double D, Wide x) {
  const std::int32_t n = A.Rows();
  std::vector<std::vector<Wide>> m;
  for (std::int32_t i = 0; i < n; ++i) {
    m.emplace_back();
    for (std::int32_t j = 0; j < n; ++j) m.back().push_back((i == j ? x : Wide(0)) - static_cast<long double>(A(i, j)));
    m.back().push_back(WideAt(B, i));
  }
  const auto size = static_cast<std::size_t>(n);
  for (std::size_t k = 0; k < size; ++k) {
    std::size_t pivot = k;
    for (std::size_t i = k; i < size; ++i) pivot = std::abs(m[i][k]) > std::abs(m[pivot][k]) ? i : pivot;
    std::swap(m[k], m[pivot]);
    for (std::size_t i = 0; i < size; ++i) {
      if (i == k) continue;
      const Wide factor = m[i][k] / m[k][k];
      for (std::size_t j = k; j <= size; ++j) m[i][j] -= factor * m[k][j];
    }
  }
  Wide sum = static_cast<long double>(D);
  for (std::size_t i = 0; i < size; ++i) sum += WideAt(C, static_cast<std::int32_t>(i)) * m[i][size] / m[i][i];
  return sum;
}

/// Relative to the expected value.
inline double Deviation(Wide found, Wide expected) {
  return static_cast<double>(std::abs(found - expected) / std::abs(expected));
}

/// A stable system of `order` poles and `zeros` zeros, in conjugate pairs in no particular order, a real one where a
/// number is odd.
struct System {
  TVec z;
  TVec p;
  double k = 0.75;

  System(std::int32_t order, std::int32_t zeros, bool digital, bool is_double = true) {
    Fill(p, order, digital ? 0.6 : -0.5, is_double);
    Fill(z, zeros, digital ? -0.9 : 0.2, is_double);
  }

 private:
  static void Fill(TVec& v, std::int32_t count, double real, bool is_double) {
    v.Size(count, true, is_double);
    for (std::int32_t i = 0; i < count; ++i) {
      const std::int32_t pair = i % ((count + 1) / 2);  // the conjugate of root i stands (count + 1) / 2 places further
      const bool upper = i < (count + 1) / 2;
      const bool alone = count % 2 == 1 && pair == count / 2;
      const double im = alone ? 0 : 0.7 * (pair + 1) / (count + 1);
      Put(v, i, {real * (1 - 0.5 * pair / (count + 1)), upper ? im : -im});
    }
  }
};

/// Points on the unit circle or the imaginary axis and off them.
inline std::vector<Wide> Points(bool digital) {
  std::vector<Wide> points;
  for (const long double t : {0.05L, 0.4L, 1.1L, 2.0L, 3.0L}) {
    points.push_back(digital ? std::polar(1.0L, t) : Wide(0, t));
    points.push_back(digital ? std::polar(1.5L, -t) : Wide(1, t));
  }
  return points;
}

}  // namespace passband::test
