#include <cmath>

#include "passband/fir_design/ideal_response_internal.h"
#include "passband/foundation/exceptions.h"
#include "passband/foundation/scalars.h"

namespace passband::SignalUtils::detail {
namespace {

using enum TFilterType;

// sin(pi x) and cos(pi x), exact at the multiples of one half: the argument is reduced before it meets the rounded pi.
double SinPi(double x) {
  const double r = std::remainder(x, 2.0);  // exact
  const double a = std::abs(r);
  const double s = a <= 0.25 ? std::sin(PI * a) : (a <= 0.75 ? std::cos(PI * (0.5 - a)) : std::sin(PI * (1 - a)));
  return std::copysign(s, r);
}
double CosPi(double x) {
  const double a = std::abs(std::remainder(x, 2.0));
  if (a <= 0.25) return std::cos(PI * a);
  return a <= 0.75 ? std::sin(PI * (0.5 - a)) : -std::cos(PI * (1 - a));
}

// sin(pi f x) without the rounding of the product, which costs digits far from the centre: pi f x is some thousands.
double SinPiOfProduct(double f, double x) {
  const double product = f * x;
  const double rest = std::fma(f, x, -product);
  return SinPi(product) + PI * rest * CosPi(product);
}

// sin(pi f x) / (pi x), the response of the ideal lowpass; its limit at 0 is f.
double Lowpass(double f, double x) { return x == 0 ? f : SinPiOfProduct(f, x) / (PI * x); }

// The ideal allpass: 1 at the centre, 0 at whole distances.
double Allpass(double x) { return x == 0 ? 1 : 0; }

// cos(pi x) / x - sin(pi x) / (pi x^2). Both terms grow like 1/x toward the centre while their sum vanishes like x, so
// the power series takes over there: pi times the sum of (-1)^k u^(2k-1) 2k / (2k+1)!, u = pi x.
double Differentiator(double x) {
  const double u = PI * x;
  if (std::abs(u) > 1) return CosPi(x) / x - SinPi(x) / (PI * x * x);
  double power = u;  // u^(2k-1) / (2k+1)! up to the sign
  double sum = 0;
  for (int k = 1; k <= 12; ++k) {
    power = k == 1 ? -u / 6 : -power * (u * u) / (2.0 * k * (2.0 * k + 1));
    sum += 2.0 * k * power;
  }
  return PI * sum;
}

double Hilbert(double x) {
  if (x == 0) return 0;
  const double s = SinPi(x / 2);
  return 2 * s * s / (PI * x);
}

// Rounding noise in place of an exact zero.
double WithoutNoise(double tap) { return std::abs(tap) < 1e-25 ? 0 : tap; }

}  // namespace

CutOffs PlaceCutOffs(OpenArray W, TFilterType FilterType, double FS) {
  const std::int32_t n = W.Length();
  const bool one_band = FilterType == ftLowpass || FilterType == ftHighpass;
  const bool two_bands = FilterType == ftBandpass || FilterType == ftBandstop;
  if (one_band && !CheckRange(1, n, 2)) ERaise("not (1 < Length(W) < 2)");
  if (two_bands && !CheckRange(2, n, 4)) ERaise("not (2 < Length(W) < 4)");
  switch (n) {
    case 1:
      return {W[0] / (FS / 2), 0};
    case 2:
      if (one_band) return {(W[0] + W[1]) / FS, 0};
      if (two_bands) return {W[0] / (FS / 2), W[1] / (FS / 2)};
      return {};
    case 4:
      return {(W[0] + W[1]) / FS, (W[2] + W[3]) / FS};
    default:
      throw Exception("Length(W) must be 1,2 or 4");
  }
}

bool HasIdealResponse(TFilterType FilterType) { return FilterType <= ftDifferentiatorIV; }

double IdealTap(TFilterType FilterType, double x, CutOffs cut, double FS) {
  switch (FilterType) {
    case ftLowpass:
      return Lowpass(cut.f1, x);
    case ftHighpass:
      return Allpass(x) - Lowpass(cut.f1, x);
    case ftBandpass:
      return Lowpass(cut.f2, x) - Lowpass(cut.f1, x);
    case ftBandstop:
      return Allpass(x) - (Lowpass(cut.f2, x) - Lowpass(cut.f1, x));
    case ftHilbertIII:
    case ftHilbertIV:
      return WithoutNoise(Hilbert(x));
    case ftDifferentiatorIII:
    case ftDifferentiatorIV:
      return x == 0 ? 0 : WithoutNoise(Differentiator(x) * FS);
    default:
      return 0;
  }
}

std::int64_t AdjustParity(std::int64_t length, TFilterType FilterType) {
  const bool odd = length % 2 != 0;
  switch (FilterType) {
    case ftLowpass:
    case ftBandpass:
      return length;
    case ftHighpass:
    case ftBandstop:
    case ftHilbertIII:
    case ftDifferentiatorIII:
      return odd ? length : length + 1;
    case ftHilbertIV:
    case ftDifferentiatorIV:
      return odd ? length + 1 : length;
    default:
      ERaise("FilterType not supported!");
  }
}

}  // namespace passband::SignalUtils::detail
