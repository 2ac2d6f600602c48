#include "passband/fir_design/savitzky_golay.h"

#include <cmath>
#include <limits>
#include <map>
#include <sstream>

#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;

TVec Weights(std::int32_t frame, bool is_double) {
  TVec weights;
  weights.Size(frame, false, is_double);
  for (std::int32_t j = 0; j < frame; ++j) weights.SetDefault(j, 1 + (5 * j % 7) / 4.0);
  return weights;
}

TMtx Empty(bool is_double) {
  TMtx m;
  m.Size(0, 0, MakePrecision(false, is_double));
  return m;
}

TEST(SavitzkyGolay, AgreesWithExactRationalNumbers) {
  static const std::map<std::string, std::vector<double>> rows{
#include "tests/fir_design/savitzky_golay_reference.inc"
  };
  for (const auto& [name, expected] : rows) {
    SCOPED_TRACE(name);
    std::istringstream words(name);
    std::string kind;
    std::int32_t frame = 0;
    std::int32_t order = 0;
    bool weighted = false;
    words >> kind >> frame >> order >> weighted;
    for (const bool is_double : {true, false}) {
      const TVec weights = Weights(frame, is_double);
      TMtx H = Empty(is_double);
      TMtx Diff = Empty(is_double);
      SavGolayImpulse(H, &Diff, frame, order, weighted ? &weights : nullptr);
      ASSERT_EQ(H.Rows(), frame);
      ASSERT_EQ(Diff.Rows(), order + 1);
      TVec smooth;
      smooth.Size(0, false, is_double);
      SavGolayImpulse(smooth, frame, order, weighted ? &weights : nullptr);
      double largest = 0;
      for (const double x : expected) largest = std::max(largest, std::abs(x));
      const double tolerance = (is_double ? 1e-15 : 6e-8) * largest;
      for (std::int32_t j = 0; j < frame; ++j) {
        const double wanted = expected[static_cast<std::size_t>(j)];
        if (kind == "smooth") {
          EXPECT_NEAR(H(frame / 2, j), wanted, tolerance) << j;
          EXPECT_EQ(smooth[j], H(frame / 2, j)) << j;
        } else {
          EXPECT_NEAR(kind == "edge" ? H(0, j) : Diff(1, j), wanted, tolerance) << j;
        }
      }
    }
  }
}

TEST(SavitzkyGolay, LongFramesOfHighDegreeStayProjections) {
  TMtx H;
  TMtx Diff;
  SavGolayImpulse(H, &Diff, 301, 60);
  TMtx square;
  square.Mul(H, H);
  double largest = 0;
  for (std::int32_t i = 0; i < 301; ++i) {
    for (std::int32_t j = 0; j < 301; ++j) largest = std::max(largest, std::abs(square(i, j) - H(i, j)));
  }
  EXPECT_LE(largest, 1e-14);
}

TEST(SavitzkyGolay, FilterLeavesPolynomialsAsTheyAreEndsIncluded) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    TMtx H = Empty(IsDoublePrecision(precision));
    TMtx Diff = H;
    SavGolayImpulse(H, &Diff, 11, 3);
    TVec data;
    data.Size(40, precision);
    for (std::int32_t i = 0; i < 40; ++i) {
      const double x = (i - 17) / 20.0;
      test::Put(data, i, {1 + x * (2 - x * (1 + 3 * x)), x * x});
    }
    TVec smooth = data;
    SavGolayFilter(smooth, H);
    for (std::int32_t i = 0; i < 40; ++i) {
      EXPECT_NEAR(At(smooth, i).Re, At(data, i).Re, 20 * test::Epsilon(precision)) << i;
      EXPECT_NEAR(At(smooth, i).Im, At(data, i).Im, 20 * test::Epsilon(precision)) << i;
    }
    // Noise: inside the smoothing row over its frame, at the ends the rows of the first and the last frame.
    data = test::Noise(11, precision, 4);
    smooth = data;
    SavGolayFilter(smooth, H);
    for (std::int32_t r = 0; r < 11; ++r) {
      double sum = 0;
      for (std::int32_t j = 0; j < 11; ++j) sum += H(r, j) * At(data, j).Re;
      EXPECT_NEAR(At(smooth, r).Re, sum, 8 * test::Epsilon(precision)) << r;
    }
  }
}

TEST(SavitzkyGolay, RefusesWithItsTextsAndWritesNothing) {
  TMtx H;
  TMtx Diff;
  TVec taps = {1.0};
  const TVec kept = taps;
  const TVec short_weights = {1.0, 2.0};
  TVec complex;
  complex.Size(5, TMtxFloatPrecision::DoubleComplex);
  const TVec zero = {1.0, 1.0, 0.0, 1.0, 1.0};
  const TVec nan = {1.0, 1.0, std::numeric_limits<double>::quiet_NaN(), 1.0, 1.0};
  const TVec infinite = {1.0, 1.0, std::numeric_limits<double>::infinity(), 1.0, 1.0};
  const TVec single = Weights(5, false);
  for (const std::int32_t frame : {4, 0, -2, 1000000000}) {
    EXPECT_RAISES(SavGolayImpulse(H, nullptr, frame, 99), ECoreError, "not Odd(FrameSize)!");
  }
  for (const std::int32_t order : {-1, 5, 1000000000}) {
    EXPECT_RAISES(SavGolayImpulse(H, nullptr, 5, order), ECoreError, "not CheckRange(0,Order,FrameSize-1)");
  }
  EXPECT_RAISES(SavGolayImpulse(taps, -3, 0), ECoreError, "not CheckRange(0,Order,FrameSize-1)");
  EXPECT_RAISES(SavGolayImpulse(H, nullptr, 5, 2, &short_weights), ECoreError, "Diff = nil");
  EXPECT_RAISES(SavGolayImpulse(H, &Diff, 5, 2, &short_weights), ECoreError, "Weights.Length <> FrameSize!");
  EXPECT_RAISES(SavGolayImpulse(taps, 5, 2, &complex), ECoreError, "Weights = complex!");
  EXPECT_RAISES(SavGolayImpulse(taps, 5, 2, &zero), ECoreError, "Weights.Min <= 0");
  EXPECT_RAISES(SavGolayImpulse(taps, 5, 2, &nan), ECoreError, "Weights.Min <= 0");
  EXPECT_RAISES(SavGolayImpulse(taps, 5, 2, &single), ECoreError, "H.IsDouble <> Weights.IsDouble");
  EXPECT_RAISES(SavGolayImpulse(taps, 5, 2, &infinite), ECoreError, "SavGolayImpulse: a weight is not finite");
  EXPECT_RAISES(SavGolayFilter(taps, H), ECoreError, "H.Length = 0");
  SavGolayImpulse(H, &Diff, 5, 2);
  EXPECT_RAISES(SavGolayFilter(taps, Diff), ECoreError, "SavGolayFilter: H of 3 x 5 is not square");
  EXPECT_RAISES(SavGolayFilter(taps, H), ECoreError, "SavGolayFilter: Data.Length < H.Rows");
  EXPECT_TRUE(test::SameBits(taps, kept));
  TVec data = Weights(9, false);
  const TVec before = data;
  EXPECT_THROW(SavGolayFilter(data, H), ECoreError);  // of the other precision
  EXPECT_TRUE(test::SameBits(data, before));
}

}  // namespace
}  // namespace passband::SignalUtils
