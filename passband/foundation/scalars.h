// Real scalar mathematics: ranges, tolerant comparisons, rounding, powers and the functions of the usual names.
#pragma once

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <numbers>
#include <type_traits>
#include <utility>

#include "passband/foundation/export.h"

namespace passband {

inline constexpr double PI = std::numbers::pi;
/// The spacing of single precision numbers at 1, 2^-23.
inline constexpr float EPS_SINGLE = 1.1920928955078125e-7F;

namespace detail {
template <class T>
concept RangeScalar = std::same_as<T, double> || std::same_as<T, std::int32_t> || std::same_as<T, std::int64_t>;
}  // namespace detail

/// Low <= Value <= High; false for a NaN. Raises nothing.
template <detail::RangeScalar T>
constexpr bool CheckRange(std::type_identity_t<T> Low, T Value, std::type_identity_t<T> High) {
  return Low <= Value && Value <= High;
}
/// Value clamped into [Low, High]; a NaN stays one.
template <detail::RangeScalar T>
constexpr T EnsureRange(std::type_identity_t<T> Low, T Value, std::type_identity_t<T> High) {
  return Value < Low ? Low : (Value > High ? High : Value);
}
/// Clamps Value into [Low, High] in place.
template <detail::RangeScalar T>
constexpr void LimitRange(std::type_identity_t<T> Low, T& Value, std::type_identity_t<T> High) {
  Value = EnsureRange<T>(Low, Value, High);
}

/// True for a NaN or an infinity.
inline bool IsNanInf(double x) { return !std::isfinite(x); }
/// |a - b| <= tolerance; equal infinities are equal, a NaN equals nothing.
inline bool Equal(double a, double b, double tolerance = 0) { return a == b || std::abs(a - b) <= tolerance; }
/// a > b + tolerance, and a < b - tolerance.
inline bool Bigger(double a, double b, double tolerance) { return a > b + tolerance; }
inline bool Smaller(double a, double b, double tolerance) { return a < b - tolerance; }

template <detail::RangeScalar T>
constexpr T Max(T a, T b) {
  return a < b ? b : a;
}
template <detail::RangeScalar T>
constexpr T Min(T a, T b) {
  return b < a ? b : a;
}
template <class T>
  requires std::is_trivially_copyable_v<T>
constexpr void Swap(T& a, T& b) {
  std::swap(a, b);
}

/// x rounded to single precision, and back without change: what a single precision path sees of a double.
inline float ToSingle(double x) { return static_cast<float>(x); }
inline double ToDouble(float x) { return x; }

/// Rounding to 32-bit integers: up, to the nearest with ties to even, toward zero. A result that does not fit is
/// clamped to the nearest representable integer; a NaN gives 0.
PASSBAND_EXPORT std::int32_t Ceil(double x);
PASSBAND_EXPORT std::int32_t Round(double x);
PASSBAND_EXPORT std::int32_t Trunc(double x);
/// The smallest power of two that is not less than n; 1 for n <= 1. At most 2^30: larger n raise "LargestExp2: n > 2^30".
PASSBAND_EXPORT std::int32_t LargestExp2(std::int32_t n);

/// x^y, and x^n by repeated multiplication.
PASSBAND_EXPORT double Power(double x, double y);
PASSBAND_EXPORT double IntPower(double x, std::int32_t n);
/// 10^x, exact where a double can hold the result of an integer x.
PASSBAND_EXPORT double Exp10(double x);
inline double Log10(double x) { return std::log10(x); }
/// The remainder of x / y with the sign of x.
inline double Rem(double x, double y) { return std::fmod(x, y); }
inline double Tan(double x) { return std::tan(x); }
inline double Cot(double x) { return 1 / std::tan(x); }
inline double Sinh(double x) { return std::sinh(x); }
inline double Cosh(double x) { return std::cosh(x); }
inline double Tanh(double x) { return std::tanh(x); }
inline double ArcSinh(double x) { return std::asinh(x); }
inline double ArcCosh(double x) { return std::acosh(x); }
/// The angle of the point (x, y) in (-pi, pi].
inline double ArcTan2(double y, double x) { return std::atan2(y, x); }
inline double DegToRad(double degrees) { return degrees * (PI / 180); }

}  // namespace passband
