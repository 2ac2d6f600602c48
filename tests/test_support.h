// What tests of all folders share.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <typeinfo>
#include <vector>

#include "passband/vector_core/vector_core.h"

namespace passband::test {

inline constexpr std::array kPrecisions{TMtxFloatPrecision::SingleReal, TMtxFloatPrecision::DoubleReal,
                                        TMtxFloatPrecision::SingleComplex, TMtxFloatPrecision::DoubleComplex};

/// "SingleReal" and so on, for the names of parameterised tests.
inline std::string Name(TMtxFloatPrecision precision) {
  return std::string(IsDoublePrecision(precision) ? "Double" : "Single") +
         (IsComplexPrecision(precision) ? "Complex" : "Real");
}

/// The machine epsilon of the precision.
inline double Epsilon(TMtxFloatPrecision precision) { return IsDoublePrecision(precision) ? 0x1p-52 : 0x1p-23; }

/// An element widened to a double complex number, whatever the precision.
inline TCplx At(const TVec& v, std::int32_t i) {
  return ForAny(v, [&]<Element T>(ElementTag<T>) {
    const T x = v.Elements<T>()[static_cast<std::size_t>(i)];
    if constexpr (IsComplex<T>) {
      return static_cast<TCplx>(x);
    } else {
      return Cplx(x);
    }
  });
}

/// Writes an element, rounding to the precision of the vector; real vectors take the real part.
inline void Put(TVec& v, std::int32_t i, TCplx value) {
  ForAny(v, [&]<Element T>(ElementTag<T>) {
    T& x = v.Elements<T>()[static_cast<std::size_t>(i)];
    if constexpr (IsComplex<T>) {
      x = static_cast<T>(value);
    } else {
      x = static_cast<T>(value.Re);
    }
  });
}

/// Uniform noise in [-1, 1), the same for the same seed.
inline TVec Noise(std::int32_t length, TMtxFloatPrecision precision, std::uint32_t seed) {
  std::mt19937_64 generator(seed);
  const auto next = [&] { return static_cast<double>(generator() >> 11) * 0x1p-52 - 1; };
  TVec v;
  v.Size(length, precision);
  for (std::int32_t i = 0; i < length; ++i) {
    const double re = next();
    Put(v, i, {re, next()});
  }
  return v;
}

/// True when both have the same length, precision and bits; two NaN count as equal.
inline bool SameBits(const TVec& a, const TVec& b) {
  if (a.Length() != b.Length() || a.FloatPrecision() != b.FloatPrecision()) return false;
  const auto same = [](double x, double y) {
    return std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y) || (std::isnan(x) && std::isnan(y));
  };
  for (std::int32_t i = 0; i < a.Length(); ++i) {
    const TCplx x = At(a, i);
    const TCplx y = At(b, i);
    if (!same(x.Re, y.Re) || !same(x.Im, y.Im)) return false;
  }
  return true;
}

/// The stretch v[index .. index + len) as a vector of its own.
inline TVec Slice(const TVec& v, std::int32_t index, std::int32_t len) {
  TVec view;
  view.SetSubRange(v, index, len);
  return TVec(static_cast<const TVec&>(view));
}

inline double MaxAbs(const TVec& v) {
  double largest = 0;
  for (std::int32_t i = 0; i < v.Length(); ++i) largest = std::max(largest, CAbs(At(v, i)));
  return largest;
}

}  // namespace passband::test

/// The call raises exactly this exception with exactly this text.
#define EXPECT_RAISES(call, Type, text)               \
  try {                                               \
    call;                                             \
    ADD_FAILURE() << #call << " raises nothing";      \
  } catch (const passband::Exception& raised) {       \
    EXPECT_STREQ(raised.what(), text);                \
    EXPECT_EQ(typeid(raised), typeid(Type)) << #call; \
  }                                                   \
  static_assert(true)
