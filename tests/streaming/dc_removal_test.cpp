// Removal of constants, and the notch filter.
#include "passband/streaming/dc_removal.h"

#include <cmath>
#include <complex>
#include <numbers>

#include "passband/streaming/iir_filter.h"
#include "passband/streaming/notch_filter.h"
#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using test::Noise;
using test::SameBits;

constexpr double kPi = std::numbers::pi;

// |H| at an angular frequency.
double Gain(const TVec& num, const TVec& den, double w) {
  std::complex<double> top = 0;
  std::complex<double> bottom = 0;
  for (std::int32_t k = 0; k < num.Length(); ++k) top += num[k] * std::polar(1.0, -w * k);
  for (std::int32_t k = 0; k < den.Length(); ++k) bottom += den[k] * std::polar(1.0, -w * k);
  return std::abs(top / bottom);
}

TEST(DcFilter, DesignBlocksConstantsAndHasTheDocumentedGain) {
  TVec num;
  TVec den;
  DcFilter(0.9, num, den);
  EXPECT_TRUE(SameBits(num, TVec{0.9 / (0.9 + (1 - 0.9) * 0.5), -0.9 / (0.9 + (1 - 0.9) * 0.5)}));
  EXPECT_TRUE(SameBits(den, TVec{1, -0.9}));
  for (const double alpha : {0.5, 0.9, 0.99}) {
    DcFilter(alpha, num, den);
    EXPECT_EQ(Gain(num, den, 0), 0);
    EXPECT_NEAR(Gain(num, den, kPi), 4 * alpha / ((1 + alpha) * (1 + alpha)), 1e-15);
  }
  DcFilter(2.0, 1000.0, num, den);
  EXPECT_NEAR(den[1], -(1 - kPi * 2 / 1000), 1e-16);
  EXPECT_NEAR(Gain(num, den, 2 * kPi * 1 / 1000), std::sqrt(0.5), 2e-3);  // half the bandwidth: 3 dB
  const TVec before = num;
  for (const double bad : {-1.0, 501.0, std::nan("")}) {
    EXPECT_RAISES(DcFilter(bad, 1000, num, den), ECoreError, "0 < TransitionBandwidth < FS/2");
  }
  EXPECT_TRUE(SameBits(num, before));
  DcFilter(500, 1000, num, den);  // both ends are accepted
  DcFilter(0, 1000, num, den);
}

TEST(DcFilter, SampleFormIsTheDesignWithoutItsScale) {
  TVec num;
  TVec den;
  DcFilter(0.9, num, den);
  TIirState iir{};
  IirInit(num, den, iir);
  const TVec x = Noise(200, TMtxFloatPrecision::DoubleReal, 2);
  TVec y;
  IirFilter(x, y, iir);
  TCplx state;
  for (std::int32_t n = 0; n < 200; ++n) EXPECT_NEAR(DcFilter(x[n], state, 0.9) * num[0], y[n], 1e-15);
  EXPECT_EQ(state.Im, x[199]);
}

TEST(RemoveDc, SubtractsTheMeanOfItsStretch) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    TVec x = Noise(100, precision, 2);
    x.Offset(1000.0);
    long double re = 0;
    long double im = 0;
    for (std::int32_t n = 20; n < 70; ++n) {
      re += At(x, n).Re;
      im += At(x, n).Im;
    }
    TVec y = x;
    RemoveDC(y, 20, 50);
    for (std::int32_t n = 20; n < 70; ++n) {
      // The mean is right to a unit of 1000 in double, and the rest is rounded once.
      EXPECT_NEAR(At(y, n).Re, static_cast<double>(At(x, n).Re - re / 50), 3e-13 + test::Epsilon(precision));
      EXPECT_NEAR(At(y, n).Im, static_cast<double>(At(x, n).Im - im / 50), 3e-13 + test::Epsilon(precision));
    }
    TVec to;
    RemoveDC(x, to);
    TVec whole = x;
    RemoveDC(whole);
    EXPECT_TRUE(SameBits(whole, to));
    // Overlapping stretches of one vector.
    TVec moved = x;
    RemoveDC(moved, moved, 20, 25, 50);
    EXPECT_TRUE(SameBits(test::Slice(moved, 25, 50), test::Slice(y, 20, 50)));
    EXPECT_TRUE(SameBits(test::Slice(moved, 0, 25), test::Slice(x, 0, 25)));
    RemoveDC(x, x);
    EXPECT_TRUE(SameBits(x, to));
  }
  TVec constant;
  constant.Size(10, TMtxFloatPrecision::DoubleReal);
  constant.SetVal(0.1);
  RemoveDC(constant);
  EXPECT_LE(test::MaxAbs(constant), 3e-17);
  TVec none;
  RemoveDC(none);
  TVec single = Noise(5, TMtxFloatPrecision::SingleReal, 1);
  EXPECT_RAISES(RemoveDC(constant, single, 0, 0, 5), ECoreError, "the elements are single, not double");
  EXPECT_THROW(RemoveDC(constant, 5, 6), ECoreError);
}

TEST(NotchFilter, HasItsZerosOnTheCircleAndItsPolesBehindThem) {
  TVec num;
  TVec den;
  NotchFilter(50, 0.9, num, den, 1000);
  const double c = std::cos(kPi / 10);
  EXPECT_TRUE(SameBits(num, TVec{1, -2 * c, 1}));
  EXPECT_NEAR(den[1], -1.8 * c, 1e-16);
  EXPECT_EQ(den[2], 0.9 * 0.9);
  EXPECT_LE(Gain(num, den, kPi / 10), 1e-14);
  NotchFilter(50, 0.99, num, den, 1000);
  EXPECT_NEAR(Gain(num, den, kPi / 10 + 0.01), std::sqrt(0.5), 0.01);  // 3 dB at half of (1 - r) FS / pi
  EXPECT_NEAR(Gain(num, den, kPi), (2 + 2 * c) / (1 + 2 * 0.99 * c + 0.99 * 0.99), 1e-12);
  NotchFilter(0.5, 0.9, num, den);  // FS = 2
  EXPECT_NEAR(num[1], 0, 1e-15);
  const TVec before = den;
  for (const double bad : {-0.1, 1.1, std::nan("")}) {
    EXPECT_RAISES(NotchFilter(50, bad, num, den), ECoreError, "not (0 < r < 1)");
    EXPECT_RAISES(NotchFilter(bad * 10, 0.9, num, den, 20), ECoreError, "not (0 < NotchFrequency < FS/2)");
  }
  EXPECT_TRUE(SameBits(den, before));
}

}  // namespace
}  // namespace passband::SignalUtils
