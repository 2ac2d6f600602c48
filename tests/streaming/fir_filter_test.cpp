#include "passband/streaming/fir_filter.h"

#include <limits>
#include <thread>

#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using test::Noise;
using test::SameBits;
using test::Slice;
using enum TMtxFloatPrecision;

struct Reference {
  std::int32_t up;
  std::int32_t up_phase;
  std::int32_t down;
  std::int32_t down_phase;
  bool complex_taps;
  bool complex_data;
  std::vector<double> taps;
  std::vector<double> data;
  std::vector<double> outputs;
};

const std::vector<Reference>& References() {
  static const std::vector<Reference> references{
#include "tests/streaming/fir_filter_reference.inc"
  };
  return references;
}

TVec MakeVec(const std::vector<double>& numbers, bool complex, bool is_double) {
  TVec v;
  v.Size(0, complex, is_double);
  v.SetIt(complex, numbers);
  return v;
}

// Same type and equal values; a zero of either sign is a zero.
bool SameValues(const TVec& a, const TVec& b) {
  bool same = a.Length() == b.Length() && a.FloatPrecision() == b.FloatPrecision();
  for (std::int32_t n = 0; same && n < a.Length(); ++n) same = At(a, n) == At(b, n);
  return same;
}

// Integers are exact in every precision, so every path gives them exactly, however the stream is cut.
TEST(FirFilter, ExactOnIntegersInEveryPath) {
  for (const bool is_double : {true, false}) {
    for (const Reference& row : References()) {
      const TVec taps = MakeVec(row.taps, row.complex_taps, is_double);
      const TVec x = MakeVec(row.data, row.complex_data, is_double);
      const TVec expected = MakeVec(row.outputs, row.complex_taps || row.complex_data, is_double);
      for (const std::int32_t block : {18, 6}) {
        TFirState state{};
        FirInit(taps, state, row.up, row.up_phase, row.down, row.down_phase);
        for (std::int32_t done = 0; done < 18; done += block) {
          TVec y;
          FirFilter(Slice(x, done, block), y, state);
          const std::int32_t from = done * row.up / row.down;
          EXPECT_TRUE(SameValues(y, Slice(expected, from, block * row.up / row.down)))
              << row.up << "/" << row.down << " from " << from << ": " << y << " for " << expected;
        }
      }
      if (row.complex_taps || row.complex_data) continue;
      TFirState state{};
      FirInitReal(taps, state, row.up, row.up_phase, row.down, row.down_phase);
      TVec y;
      FirFilter(x, y, state);
      EXPECT_TRUE(SameValues(y, expected));
    }
  }
}

TEST(FirFilter, RealAndComplexDataShareTheRealDelayLine) {
  const TVec taps = Noise(9, DoubleReal, 1);
  const TVec x = Noise(40, DoubleComplex, 2);
  TVec re;
  re.RealPart(x);
  TFirState whole{};
  TFirState mixed{};
  FirInit(taps, whole);
  FirInit(taps, mixed);
  TVec expected;
  FirFilter(re, expected, whole);
  TVec y;
  FirFilter(Slice(x, 0, 10), y, mixed);
  FirFilter(Slice(re, 10, 10), y, mixed);
  EXPECT_TRUE(SameBits(y, Slice(expected, 10, 10)));
  FirFilter(Slice(x, 20, 20), y, mixed);
  y.RealPart(TVec(static_cast<const TVec&>(y)));
  EXPECT_TRUE(SameBits(y, Slice(expected, 20, 20)));
}

TEST(FirFilter, FieldsTellWhatTheStateHolds) {
  TFirState state{};
  FirInit(Noise(3, SingleComplex, 1), state, 3, 1, 2, 0);
  EXPECT_TRUE(state.State_Re && state.State_Im && state.Statec);
  EXPECT_TRUE(state.Initialized && state.ComplexImpulse && !state.IsDouble);
  EXPECT_EQ(state.UpSample, 3);
  EXPECT_EQ(state.DownSample, 2);
  EXPECT_EQ(state.FloatPrecision, SingleComplex);
  FirInitReal(Noise(3, DoubleReal, 1), state);
  EXPECT_TRUE(state.State_Re && !state.State_Im && !state.Statec);
  EXPECT_FALSE(state.ComplexImpulse);
  TFirState moved = std::move(state);
  TVec y;
  FirFilter(TVec{1}, y, moved);
  EXPECT_RAISES(FirFilter(TVec{1}, y, state), ECoreError, "FirState.Initialized = false");
  FirFree(moved);
  FirFree(moved);
  EXPECT_RAISES(FirFilter(TVec{1}, y, moved), ECoreError, "FirState.Initialized = false");
}

TEST(FirFilter, EmptyBlocks) {
  TFirState state{};
  TVec src;
  src.Size(0, SingleComplex);
  TVec y{1, 2};
  FirFilter(src, y, state);  // even without Init
  EXPECT_EQ(y.Length(), 0);
  EXPECT_EQ(y.FloatPrecision(), SingleComplex);
  TVec data;
  FirFilter(data, TVec{1, 2});
  FirFilter(data, TVec{});
  EXPECT_EQ(data.Length(), 0);
}

TEST(FirFilter, LengthThatIsDivisibleWithoutBeingAMultiple) {
  // L = 2, M = 4, six samples: one whole step gives two outputs, the third is filled with zero.
  TFirState state{};
  FirInit(TVec{1}, state, 2, 0, 4, 0);
  TVec y;
  FirFilter(TVec{1, 2, 3, 4, 5, 6}, y, state);
  EXPECT_TRUE(SameBits(y, TVec{1, 3, 0})) << y;
  FirFilter(TVec{7, 8}, y, state);
  EXPECT_TRUE(SameBits(y, TVec{0})) << y;
}

TEST(FirFilter, EqualFactorsWorkInPlaceToo) {
  TFirState state{};
  FirInit(TVec{1, 1}, state, 2, 0, 2,
          1);  // keeps the second sample of each pair: the first tap meets the inserted zero
  TVec data{1, 2, 3, 4};
  FirFilter(data, data, state);
  EXPECT_TRUE(SameValues(data, TVec{1, 2, 3, 4})) << data;
}

TEST(FirFilter, SamplesEqualBlocks) {
  for (const TMtxFloatPrecision precision : test::kPrecisions) {
    const TVec taps = Noise(17, precision, 3);
    const TVec x = Noise(50, MakePrecision(true, taps.IsDouble()), 4);
    TFirState blocks{};
    TFirState samples{};
    FirInit(taps, blocks);
    FirInit(taps, samples);
    TVec expected;
    FirFilter(x, expected, blocks);
    for (std::int32_t n = 0; n < x.Length(); ++n) {
      TCplx y;
      FirFilter(At(x, n), y, samples);
      ASSERT_EQ(y, At(expected, n)) << test::Name(precision) << " " << n;
    }
  }
}

TEST(FirFilter, SingleStateRoundsItsSample) {
  TFirState state{};
  FirInit(TVec(std::vector<float>{1}), state);
  double y = 0;
  FirFilter(0.1, y, state);
  EXPECT_EQ(y, static_cast<double>(0.1F));
}

TEST(FirFilter, Refusals) {
  TFirState state{};
  EXPECT_RAISES(FirInit(TVec{}, state, 0, 0, 0, 0), Exception, "FIRTaps.Length = 0");
  EXPECT_RAISES(FirInit(TVec{1}, state, 0), Exception, "(DownSample < 1) or (UpSample < 1)");
  EXPECT_RAISES(FirInit(TVec{1}, state, 1, 0, -1), Exception, "(DownSample < 1) or (UpSample < 1)");
  EXPECT_RAISES(FirInitReal(TVec{{1, 2}}, state), Exception, "Use FirInit to initialize complex filters!");
  EXPECT_RAISES(FirInit(TVec{1}, state, 3, 3), Exception, "ippsFirMRInitAllocd failed with error -27");
  EXPECT_RAISES(FirInit(TVec{1}, state, 1, 0, 2, -1), Exception, "ippsFirMRInitAllocd failed with error -27");
  EXPECT_FALSE(state.Initialized);
  double y = 7;
  TCplx z(7, 7);
  TVec block{7};
  EXPECT_RAISES(FirFilter(1.0, y, state), ECoreError, "FirState.Initialized = false");
  EXPECT_RAISES(FirFilter(TCplx(1, 0), z, state), ECoreError, "FirState.Initialized = false");

  constexpr const char* kRealOnly =
      "FirFilter: Real taps are used to filter complex signal. Use FirInit to initializate the Filter!";
  FirInitReal(TVec{1, 2}, state);
  EXPECT_RAISES(FirFilter(TVec{{1, 2}}, block, state), ECoreError, kRealOnly);
  EXPECT_RAISES(FirFilter(TCplx(1, 0), z, state), ECoreError, kRealOnly);
  EXPECT_RAISES(FirFilter(TVec(std::vector<float>{1}), block, state), ECoreError, "FirState.IsDouble <> Src.IsDouble");
  FirInit(TVec{{1, 2}}, state);
  EXPECT_RAISES(FirFilter(1.0, y, state), ECoreError,
                "TFirState may not have complex impulse response for real valued data!");
  FirInit(TVec{1, 2}, state, 1, 0, 3);
  EXPECT_RAISES(FirFilter(TVec{1, 2, 3, 4}, block, state), ECoreError,
                "FirFilter: (Input.Length mod FirSate.DownSample) <> 0");
  EXPECT_RAISES(FirFilter(1.0, y, state), ECoreError, "FirFilter: single samples need a single-rate state");
  EXPECT_RAISES(FirFilter(TCplx(1, 0), z, state), ECoreError, "FirFilter: single samples need a single-rate state");
  EXPECT_EQ(y, 7);
  EXPECT_EQ(z, TCplx(7, 7));
  EXPECT_TRUE(SameBits(block, TVec{7}));
}

TEST(FirFilter, RefusedInitKeepsTheFilterInWork) {
  TFirState state{};
  FirInit(TVec{1, 1}, state);
  TVec y;
  FirFilter(TVec{5}, y, state);
  EXPECT_THROW(FirInit(TVec{1}, state, 2, 2), Exception);
  EXPECT_THROW(FirInitReal(TVec{{1, 1}}, state), Exception);
  FirFilter(TVec{0}, y, state);
  EXPECT_EQ(y[0], 5);
}

TEST(FirFilter, OneShotIsAlignedByHalfTheFilter) {
  TVec data{1, 0, 0, 0, 0, 0};
  FirFilter(data, TVec{1, 2, 3, 2, 1});
  EXPECT_TRUE(SameValues(data, TVec{3, 2, 1, 0, 0, 0})) << data;
  TVec twice{1, 0, 0, 0};
  FirFilter(twice, TVec{1, 2, 1}, 2);  // D = 6, from output 3 of 1 2 1 0 0 ..
  EXPECT_TRUE(SameValues(twice, TVec{0, 0, 0, 0})) << twice;
  TVec complex{1, 0, 0};
  FirFilter(complex, TVec{{0, 1}, {2, 0}, {0, 3}});
  EXPECT_TRUE(SameValues(complex, TVec{{2, 0}, {0, 3}, {0, 0}})) << complex;
  TVec short_data{1, 2, 3, 4};
  EXPECT_RAISES(FirFilter(short_data, TVec{1, 1, 1, 1}, 1, 2), ECoreError,
                "Index = 1, Len = 4 is outside a vector of length 4");
  EXPECT_TRUE(SameValues(short_data, TVec{1, 2, 3, 4}));
}

TEST(FirFilter, DistinctStatesOnDistinctThreads) {
  const TVec taps = Noise(1500, DoubleReal, 1);
  const TVec x = Noise(4000, DoubleReal, 2);
  TFirState reference{};
  FirInit(taps, reference);
  TVec expected;
  FirFilter(x, expected, reference);
  std::vector<TVec> results(4);
  {
    std::vector<std::jthread> threads;
    for (TVec& result : results) {
      threads.emplace_back([&] {
        TFirState state{};
        FirInit(taps, state);
        FirFilter(x, result, state);
      });
    }
  }
  for (const TVec& result : results) EXPECT_TRUE(SameBits(result, expected));
}

}  // namespace
}  // namespace passband::SignalUtils
