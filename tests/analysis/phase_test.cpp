// Unwrapping, wrapping, the analytic signal and envelopes: closed forms.
#include "passband/analysis/phase.h"

#include <cmath>
#include <limits>
#include <vector>

#include "passband/analysis/envelope.h"
#include "passband/foundation/scalars.h"
#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using enum TRunningPhase;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TVec Rounded(TVec v, bool is_double) {
  v.SetFloatPrecision(MakePrecision(v.Complex(), is_double));
  return v;
}

void ExpectNear(const TVec& v, const std::vector<double>& expected, double tolerance) {
  ASSERT_EQ(v.Length(), static_cast<std::int32_t>(expected.size()));
  for (std::int32_t i = 0; i < v.Length(); ++i)
    EXPECT_NEAR(v[i], expected[static_cast<std::size_t>(i)], tolerance) << i;
}

TEST(PhaseUnwrap, RemovesOnePeriodAStep) {
  TVec y;
  for (const bool is_double : {false, true}) {
    const TVec degrees = Rounded({0.0, 170.0, -170.0, -10.0}, is_double);
    EXPECT_EQ(PhaseUnwrap(degrees, y, rpDefault, 1, false), 0);
    EXPECT_TRUE(test::SameBits(y, Rounded({0.0, 170.0, 190.0, 350.0}, is_double)));
    PhaseUnwrap(degrees, y, rpDefault, 1, false, 10);  // only steps of more than 350 degrees are jumps
    EXPECT_TRUE(test::SameBits(y, degrees));
    PhaseUnwrap(Rounded({0.0, 1000.0, 1000.0}, is_double), y, rpDefault, 1, false);
    EXPECT_TRUE(test::SameBits(y, Rounded({0.0, 640.0, 640.0}, is_double)));
    PhaseUnwrap(Rounded({5.0, 185.0, 5.0}, is_double), y, rpDefault, 1, false);  // half a period is no jump
    EXPECT_TRUE(test::SameBits(y, Rounded({5.0, 185.0, 5.0}, is_double)));
  }
  PhaseUnwrap({1.0, kNan, 8.0, 1.0}, y);
  EXPECT_EQ(y[0], 1);
  EXPECT_TRUE(std::isnan(y[1]));
  EXPECT_NEAR(y[3] - y[2], 2 * PI - 7, 1e-15);  // goes on behind a NaN
}

TEST(PhaseUnwrap, LongRampsComeBackWithoutDrift) {
  TVec ramp;
  ramp.Size(1000000, TMtxFloatPrecision::DoubleReal);
  for (const double slope : {2.9, -2.9}) {
    ramp.Ramp(0.3, slope);
    TVec wrapped = ramp;
    for (double& value : wrapped.Values()) value = std::remainder(value, 2 * PI);
    PhaseUnwrap(wrapped, wrapped);
    wrapped.Sub(ramp);
    EXPECT_LE(test::MaxAbs(wrapped), 2e-9);  // 3e6 radians, to the last digits
  }
}

TEST(PhaseUnwrap, CarriesOnARunningPhase) {
  for (const bool is_double : {false, true}) {
    const double tolerance = is_double ? 1e-13 : 1e-4;
    TVec y;
    // Constant phase: half a period over the zero padding, per element.
    EXPECT_NEAR(PhaseUnwrap(Rounded({1.0, 2.0, 3.0}, is_double), y, rpConstPhase, 4, false), 90, tolerance);
    ExpectNear(y, {1, 47, 93}, tolerance);
    EXPECT_EQ(PhaseUnwrap(Rounded({1.0}, is_double), y, rpConstPhase, 0, false), 0);
    EXPECT_EQ(y[0], 1);
    // The integer lag: -ceil(10 / pi) half periods over all elements.
    const TVec rising = Rounded({0.0, 2.5, 5.0, 7.5, 10.0}, is_double);
    TVec unwrapped;
    PhaseUnwrap(rising, unwrapped);
    ExpectNear(unwrapped, {0, 2.5, 5, 7.5, 10}, tolerance);
    EXPECT_EQ(PhaseUnwrap(rising, y, rpIntegerLag), -4);
    ExpectNear(y, {0, 2.5 - 0.8 * PI, 5 - 1.6 * PI, 7.5 - 2.4 * PI, 10 - 3.2 * PI}, tolerance);
    PhaseWrap(y, y, -4);
    ExpectNear(y, {0, 2.5, 5, 7.5, 10}, tolerance);
    EXPECT_EQ(PhaseUnwrap(Rounded({0.0, -100.0, -200.0}, is_double), y, rpIntegerLag, 1, false), 2);
    ExpectNear(y, {0, 20, 40}, tolerance);
    EXPECT_EQ(PhaseUnwrap(Rounded({0.0, 0.99}, is_double), y, rpIntegerLag), 0);
    EXPECT_NEAR(y[1], 0.99, 1e-7);
    // Partial: a sawtooth of q elements, of the phase as it is; what exceeds half a period goes down.
    PhaseUnwrap(Rounded({0.0, 0.0, 0.0, 170.0, 0.0, 0.0, 0.0, 0.0}, is_double), y, rpPartial, 4, false);
    ExpectNear(y, {0, 45, 90, -55, 0, 45, 90, 135}, tolerance);
    PhaseUnwrap(Rounded({0.0, 0.0, 0.0}, is_double), y, rpPartial, 3, false);  // q = 2
    ExpectNear(y, {0, 60, 0}, tolerance);
    for (const double padding : {1.3, 0.0, -2.0}) {  // q = 1
      PhaseUnwrap(Rounded({200.0, 20.0, -200.0}, is_double), y, rpPartial, padding, false);
      ExpectNear(y, {-160, 20, -200}, tolerance);
    }
  }
}

TEST(PhaseUnwrap, EmptyDataAndRefusals) {
  TVec none;
  none.Size(0, TMtxFloatPrecision::SingleReal);
  TVec y = {7.0};
  const TVec complex = test::Noise(3, TMtxFloatPrecision::DoubleComplex, 1);
  EXPECT_RAISES(PhaseUnwrap(complex, y), ECoreError, "Src.Complex");
  EXPECT_RAISES(PhaseWrap(complex, y, 1), ECoreError, "Src.Complex");
  EXPECT_RAISES(PhaseUnwrap({1.0}, y, rpPartial, 2e9), ECoreError, "LargestExp2: n > 2^30");
  EXPECT_TRUE(test::SameBits(y, {7.0}));
  for (const TRunningPhase running : {rpDefault, rpConstPhase, rpIntegerLag, rpPartial}) {
    EXPECT_EQ(PhaseUnwrap(none, y, running), 0);
    EXPECT_EQ(y.Length(), 0);
    EXPECT_EQ(y.FloatPrecision(), TMtxFloatPrecision::SingleReal);
  }
  PhaseWrap(none, y, 3);
  EXPECT_EQ(y.Length(), 0);
}

TEST(Hilbert, TurnsCosinesIntoPhasors) {
  for (const bool is_double : {false, true}) {
    TVec x;
    x.Size(60, MakePrecision(false, is_double));
    for (std::int32_t n = 0; n < 60; ++n) x.SetDefault(n, std::cos(2 * PI * 7 * n / 60));
    TVec& same = Hilbert(x);
    EXPECT_EQ(&same, &x);
    ASSERT_EQ(x.FloatPrecision(), MakePrecision(true, is_double));
    for (std::int32_t n = 0; n < 60; ++n) {
      EXPECT_LE(CAbs(test::At(x, n) - Expj(2 * PI * 7 * n / 60)), is_double ? 1e-14 : 1e-6) << n;
    }
    const TVec kept = x;
    EXPECT_RAISES(Hilbert(x), Exception, "Complex = True");
    EXPECT_TRUE(test::SameBits(x, kept));
  }
}

TEST(EnvelopeDetector, AveragesMagnitudesInFrames) {
  TVec y;
  EnvelopeDetector({1.0, -3.0, 2.0, -2.0}, y, 2);
  EXPECT_TRUE(test::SameBits(y, {2.0, 2.0}));
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    const TVec x = test::Noise(5000, precision, 3);
    for (const std::int32_t frame : {1, 5, 1250, 5000}) {
      EnvelopeDetector(x, y, frame);
      ASSERT_EQ(y.Length(), 5000 / frame);
      ASSERT_EQ(y.FloatPrecision(), MakePrecision(false, x.IsDouble()));
      for (std::int32_t i = 0; i < y.Length(); i += 1 + y.Length() / 5) {
        long double sum = 0;
        for (std::int32_t n = i * frame; n < (i + 1) * frame; ++n) {
          const TCplx z = test::At(x, n);
          sum += std::hypot(static_cast<long double>(z.Re), static_cast<long double>(z.Im));
        }
        const double mean = static_cast<double>(sum / frame);
        EXPECT_NEAR(y[i], mean, 2 * test::Epsilon(precision) * mean);
      }
    }
    TVec in_place = x;
    EnvelopeDetector(in_place, in_place, 50);
    EnvelopeDetector(x, y, 50);
    EXPECT_TRUE(test::SameBits(in_place, y));
  }
  EnvelopeDetector(TVec{}, y, 3);
  EXPECT_EQ(y.Length(), 0);
  y = {7.0};
  EXPECT_RAISES(EnvelopeDetector({1.0, 2.0}, y, 0), ECoreError, "FrameSize < 1");
  EXPECT_RAISES(EnvelopeDetector({1.0, 2.0}, y, -2), ECoreError, "FrameSize < 1");
  EXPECT_RAISES(EnvelopeDetector({1.0, 2.0, 3.0}, y, 2), ECoreError, "(Src.Length mod FrameSize) <> 0");
  EXPECT_TRUE(test::SameBits(y, {7.0}));
}

}  // namespace
}  // namespace passband::SignalUtils
