// Generators as a host sees them: records, blocks, messages. The kernels' values are tested with the kernels.
#include <cmath>
#include <limits>
#include <numbers>

#include "passband/analysis/circular.h"
#include "passband/analysis/square_tone.h"
#include "passband/analysis/tone.h"
#include "passband/analysis/triangle_tone.h"
#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using test::SameBits;

constexpr double kPi = std::numbers::pi;
constexpr double kInf = std::numeric_limits<double>::infinity();

class GeneratorTest : public testing::TestWithParam<TMtxFloatPrecision> {
 protected:
  bool Complex() const { return IsComplexPrecision(GetParam()); }
  double Tolerance() const { return IsDoublePrecision(GetParam()) ? 1e-14 : 1e-6; }
  TVec Block(std::int32_t length) const {
    TVec v;
    v.Size(length, GetParam());
    v.SetVal(7.0);
    return v;
  }
};
INSTANTIATE_TEST_SUITE_P(All, GeneratorTest, testing::ValuesIn(test::kPrecisions),
                         [](const auto& precision) { return test::Name(precision.param); });

TEST(CircularFrequency, IsTheExactRestOfWholeNumbers) {
  EXPECT_EQ(CircularFrequency(0.1), 0.1);
  EXPECT_EQ(CircularFrequency(0.7, true), 0.7 - 1);
  EXPECT_EQ(CircularFrequency(0.7), 1 - 0.7);
  EXPECT_EQ(CircularFrequency(-0.7, true), 1 - 0.7);
  EXPECT_EQ(CircularFrequency(1e15 + 0.25, true), 0.25);
  for (const double whole : {0.0, 1.0, 2.0, 7.0}) {
    EXPECT_EQ(CircularFrequency(whole), 0);
    EXPECT_EQ(CircularFrequency(whole + 0.5), 0.5);
    EXPECT_EQ(CircularFrequency(whole + 0.5, true), -0.5);
    EXPECT_EQ(CircularFrequency(-whole - 0.5, true), 0.5);
  }
  EXPECT_TRUE(std::isnan(CircularFrequency(kInf, true)));
}

TEST(CircularPhase, LiesInOneTurn) {
  EXPECT_EQ(CircularPhase(0), 0);
  EXPECT_EQ(CircularPhase(1.5), 1.5);
  EXPECT_EQ(CircularPhase(7), 7 - 2 * kPi);
  EXPECT_EQ(CircularPhase(-0.5), 2 * kPi - 0.5);
  EXPECT_EQ(CircularPhase(-1e-20), 0);
  EXPECT_EQ(CircularPhase(2 * kPi), 0);
  EXPECT_NEAR(CircularPhase(-100), 32 * kPi - 100, 2e-14);
  for (const double phase : {-1e300, 1e300, -1e9, 1e9}) {
    EXPECT_GE(CircularPhase(phase), 0);
    EXPECT_LT(CircularPhase(phase), 2 * kPi);
  }
  EXPECT_TRUE(std::isnan(CircularPhase(-kInf)));
}

TEST_P(GeneratorTest, ToneIsASineOfItsPhaseAndItsConjugateOfNegativeFrequency) {
  TToneState state{};
  TVec x = Block(40);
  ToneInit(0.0625, 0.4, 1.5, state, Complex());
  Tone(x, state);
  for (std::int32_t n = 0; n < 40; ++n) {
    const double angle = 2 * kPi * 0.0625 * n + 0.4;
    EXPECT_NEAR(At(x, n).Re, 1.5 * std::sin(angle), Tolerance());
    if (Complex()) {
      EXPECT_NEAR(At(x, n).Im, -1.5 * std::cos(angle), Tolerance());
    }
  }
  EXPECT_NEAR(state.Phase, CircularPhase(2 * kPi * 0.0625 * 40 + 0.4 - kPi / 2), Tolerance());
  TVec mirrored = Block(40);
  ToneInit(-0.0625, 0.4, 1.5, state, Complex());
  EXPECT_EQ(state.Negative, Complex());
  Tone(mirrored, state);
  mirrored.Conj();
  EXPECT_TRUE(SameBits(mirrored, x));
}

TEST_P(GeneratorTest, AnyCutGivesTheSameBits) {
  const auto run = [this](const auto& init, const auto& generate) {
    auto state = init();
    TVec whole = Block(3000);
    generate(whole, state);
    for (const std::int32_t block : {1, 2, 3, 64, 100, 1023}) {
      auto cut = init();
      for (std::int32_t n = 0; n < 3000; n += block) {
        const std::int32_t length = std::min(block, 3000 - n);
        TVec part = Block(length);
        generate(part, cut);
        ASSERT_TRUE(SameBits(part, test::Slice(whole, n, length))) << block << " at " << n;
      }
    }
  };
  run(
      [this] {
        TToneState state;
        ToneInit(-0.123, 0.4, 1.5, state, Complex());
        return state;
      },
      [](TVec& x, TToneState& state) { Tone(x, state); });
  run(
      [this] {
        TSquareToneState state;
        SquareToneInit(-0.0123, 0.4, 1.5, state, Complex());
        return state;
      },
      [](TVec& x, TSquareToneState& state) { SquareTone(x, state); });
  run(
      [this] {
        TTriangleState state;
        TriangleToneInit(-0.123, 0.4, 1.5, 0.6, state, Complex());
        return state;
      },
      [](TVec& x, TTriangleState& state) { TriangleTone(x, state); });
}

TEST(Tone, StaysExactForAHundredMillionSamples) {
  // The numbers after 10^8 samples come from 60-digit arithmetic: f n of the double nearest to 0.1 is 10^7 + 5.55e-10.
  TToneState state{};
  ToneInit(0.1, kPi / 2, 1, state);
  TVec x;
  x.Size(10000, false, true);
  for (int block = 0; block < 10000; ++block) Tone(x, state);
  EXPECT_NEAR(state.Phase, 2 * kPi * 5.551115123125783e-10, 4e-15);
  // Single precision goes on from the exact phase, whatever its record shows: 0.25 + 2^-25 is a frequency of both.
  const double freq = 0.25 + 0x1p-25;
  ToneInit(freq, kPi / 2, 1, state);
  x.Size(1 << 15, false, false);
  for (int block = 0; block < 1 << 10; ++block) Tone(x, state);  // 2^25 samples: one turn more than 2^23
  EXPECT_NEAR(state.Phase, 0, 1e-15);
  EXPECT_EQ(x[(1 << 15) - 4], static_cast<double>(static_cast<float>(std::cos(2 * kPi * 4 * 0x1p-25))));
}

TEST(Tone, OfAnEdgeFrequencyIsConstantOrAlternates) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    const bool complex = IsComplexPrecision(precision);
    for (const double freq : {0.0, 1.0, -0.5}) {
      TToneState state{};
      ToneInit(freq, 0.6, 3, state, complex);
      EXPECT_TRUE(state.EdgeFreq);
      TVec x;
      double sign = 1;
      for (const std::int32_t length : {5, 1, 4}) {
        x.Size(length, precision);
        Tone(x, state);
        for (std::int32_t n = 0; n < length; ++n) {
          EXPECT_NEAR(At(x, n).Re, sign * 3 * std::sin(0.6), 3 * (0x1p-51 + test::Epsilon(precision)));
          if (freq == -0.5) sign = -sign;
        }
      }
      EXPECT_EQ(state.Freq, std::abs(CircularFrequency(freq)));
    }
  }
  TToneState state{};
  ToneInit(0.5, 0, 1, state, true);  // folds to -0.5
  EXPECT_TRUE(state.Negative && !state.EdgeFreq);
}

TEST(Tone, SinglePrecisionRoundsTheRecordAndStaysInRange) {
  TVec x;
  x.Size(3, false, false);
  TToneState state{};
  ToneInit(0.1234567891, 0.7, 1.1, state);
  Tone(x, state);
  for (const double number : {state.Freq, state.Mag, state.Phase}) EXPECT_EQ(number, static_cast<float>(number));
  // Just below their ends, frequency and phase round to what the tone does not take.
  ToneInit(0.49999999999, kPi / 2 - 1e-12, 1, state);
  EXPECT_FALSE(state.EdgeFreq);
  Tone(x, state);
  EXPECT_EQ(state.Freq, 0.5 - 0x1p-25);
  EXPECT_NEAR(x[0], 1, 1e-6);
  EXPECT_NEAR(x[1], -1, 1e-6);
  TTriangleState triangle{};
  TriangleToneInit(0.49999999999, -1e-12, 1, 5, triangle);
  EXPECT_EQ(triangle.Asym, kPi);
  TriangleTone(x, triangle);
  EXPECT_EQ(triangle.Freq, 0.5 - 0x1p-25);
  EXPECT_EQ(triangle.Asym, std::numbers::pi_v<float>);
  EXPECT_NEAR(x[0], 1, 1e-6);
}

TEST(Tone, FollowsChangesOfItsRecord) {
  TVec x;
  x.Size(10, false, true);
  TToneState state{};
  ToneInit(0.05, 0, 1, state);
  Tone(x, state);
  state.Mag = 2;
  state.Phase = 0;  // of a cosine
  Tone(x, state);
  EXPECT_EQ(x[0], 2);
  const double phase = state.Phase;
  state.Freq = 0.25;
  Tone(x, state);
  EXPECT_NEAR(x[0], 2 * std::cos(phase), 1e-15);
  EXPECT_NEAR(x[1], -2 * std::sin(phase), 2e-15);
  state.Freq = 0.6;  // refused: the block stays, and so does the phase
  const double before = state.Phase;
  x.SetVal(7.0);
  Tone(x, state);
  EXPECT_EQ(x[9], 7);
  EXPECT_EQ(state.Phase, before);
  for (const double magnitude : {0.0, -1.0}) {
    ToneInit(0, 1, magnitude, state);
    Tone(x, state);
    EXPECT_EQ(x[0], 7);
  }
}

TEST(Tone, RefusesInOrderAndSkipsEmptyBlocks) {
  TToneState state{};
  TVec real(std::vector<double>{1, 2});
  TVec complex;
  complex.Size(2, true, true);
  complex.SetVal(3.0);
  TVec none;
  Tone(none, state);
  EXPECT_RAISES(Tone(real, state), ECoreError, "not ToneState.Initialized");
  EXPECT_RAISES(Tone(complex, state), ECoreError, "Dst.Complex <> ToneState.Complex");
  ToneInit(0.1, 0, 1, state);
  EXPECT_RAISES(Tone(complex, state), ECoreError, "Dst.Complex <> ToneState.Complex");
  TTriangleState triangle{};
  TriangleTone(none, triangle);
  EXPECT_RAISES(TriangleTone(real, triangle), ECoreError, "not ToneState.Initialized");
  EXPECT_RAISES(TriangleTone(complex, triangle), ECoreError, "Dst.Complex <> ToneState.Complex");
  TSquareToneState square{};
  SquareTone(none, square);
  EXPECT_RAISES(SquareTone(complex, square), ECoreError, "State.Initialized = false");
  SquareToneInit(0, 0, 1, square);
  EXPECT_RAISES(SquareTone(complex, square), ECoreError, "Length(State.Tones) = 0");
  SquareToneInit(0.1, 0, 1, square);
  EXPECT_RAISES(SquareTone(complex, square), ECoreError, "Dst.Complex <> ToneState.Complex");
  EXPECT_RAISES(SquareToneInit(1e-12, 0, 1, square), ECoreError, "SquareToneInit: more than 1048576 harmonics");
  EXPECT_EQ(square.Tones.size(), 2U);
  SquareToneInit(1e-12, 0, 1, square, false, 3);
  EXPECT_EQ(square.Tones.size(), 3U);
  EXPECT_THROW(Tone(real, -1, 0.1, 0, 1), ECoreError);
  EXPECT_THROW(SquareTone(real, -1, 0.1, 0, 1), ECoreError);
  EXPECT_EQ(real[1], 2);
  EXPECT_EQ(At(complex, 1).Re, 3);
}

TEST_P(GeneratorTest, SquareWaveIsItsFourierSeries) {
  // 5 harmonics of 0.05; the last is the half-way case 0.25 / (1/6) = 1.5, whose second harmonic alternates.
  for (const double freq : {0.05, 0.0123, 1.0 / 6}) {
    TSquareToneState state{};
    SquareToneInit(freq, 0.4, 2, state, Complex());
    EXPECT_EQ(state.Tones.size(), freq == 0.05 ? 5U : freq == 0.0123 ? 20U : 2U);
    TVec x = Block(1500);
    SquareTone(x, state);
    const double f = IsDoublePrecision(GetParam()) ? freq : static_cast<double>(static_cast<float>(freq));
    for (const std::int32_t n : {0, 1, 2, 30}) {
      TCplx sum{};
      for (std::size_t k = 0; k < state.Tones.size(); ++k) {
        const double h = 2.0 * static_cast<double>(k) + 1;
        const double angle = h * (2 * kPi * f * n + 0.4);
        sum += TCplx{std::sin(angle), -std::cos(angle)} * (8 / kPi / h);
      }
      EXPECT_NEAR(At(x, n).Re, sum.Re, 40 * Tolerance()) << freq;
      if (Complex() && freq < 0.1) {  // the complex harmonic at 0.5 has become the conjugate one at -0.5
        EXPECT_NEAR(At(x, n).Im, sum.Im, 40 * Tolerance()) << freq;
      }
    }
    TVec one_shot = Block(1);
    SquareTone(one_shot, 1500, freq, 0.4, 2, Complex());
    EXPECT_TRUE(SameBits(one_shot, x));
  }
  TSquareToneState silent{};
  SquareToneInit(0.05, 0, 0, silent, Complex());
  TVec x = Block(3);
  SquareTone(x, silent);
  EXPECT_EQ(At(x, 2).Re, 7);
}

TEST_P(GeneratorTest, TriangleHasItsKneeAndItsQuarter) {
  TTriangleState state{};
  TriangleToneInit(0.0625, kPi / 4, 2, kPi / 2, state, Complex());  // knee at three quarters of a period
  TVec x = Block(16);
  TriangleTone(x, state);
  const auto expected = [](double turns) {
    turns -= std::floor(turns);
    return turns <= 0.75 ? 2 - turns * 16 / 3 : 2 - (1 - turns) * 16;
  };
  for (std::int32_t n = 0; n < 16; ++n) {
    EXPECT_NEAR(At(x, n).Re, expected(0.125 + n / 16.0), 4 * Tolerance()) << n;
    if (Complex()) {
      EXPECT_NEAR(At(x, n).Im, expected(0.125 + n / 16.0 - 0.25), 4 * Tolerance()) << n;
    }
  }
  EXPECT_NEAR(state.Phase, kPi / 4, Tolerance());
  TVec mirrored = Block(16);
  TriangleToneInit(-0.0625, kPi / 4, 2, kPi / 2, state, Complex());
  EXPECT_EQ(state.Freq, Complex() ? -0.0625 : 0.0625);
  TriangleTone(mirrored, state);
  mirrored.Conj();
  EXPECT_TRUE(SameBits(mirrored, x));
  EXPECT_EQ(state.Freq, Complex() ? -0.0625 : 0.0625);
}

}  // namespace
}  // namespace passband::SignalUtils
