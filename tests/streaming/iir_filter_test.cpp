// Streaming IIR filters against 50-digit arithmetic, and the life of a record.
#include "passband/streaming/iir_filter.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/test_support.h"

namespace passband::SignalUtils {
namespace {

using test::At;
using test::Noise;
using test::Put;
using test::SameBits;
using test::Slice;
using enum TMtxFloatPrecision;

struct ReferenceRow {
  std::string name;
  bool sections;
  bool single;
  std::vector<double> taps, data, outputs, zero_phase;
  double bound, zero_phase_bound;  // of rounding errors, in half an epsilon and operations on the way
};
const std::vector<ReferenceRow>& ReferenceRows() {
  static const std::vector<ReferenceRow> rows{
#include "tests/streaming/iir_filter_reference.inc"
  };
  return rows;
}

TVec OfPrecision(const std::vector<double>& values, TMtxFloatPrecision precision) {
  TVec v{std::span<const double>(values)};
  v.SetFloatPrecision(precision);
  return v;
}

// Real data, or the same data as real part and its halves in reversed order as imaginary part.
TVec Data(const ReferenceRow& row, const std::vector<double>& values, bool complex) {
  TVec x;
  x.Size(static_cast<std::int32_t>(values.size()), complex, !row.single);
  for (std::int32_t n = 0; n < x.Length(); ++n) {
    const auto i = static_cast<std::size_t>(n);
    Put(x, n, {values[i], values[i] / -2});
  }
  return x;
}

void Init(const ReferenceRow& row, TIirState& state, bool complex) {
  const TVec taps = OfPrecision(row.taps, row.single ? SingleReal : DoubleReal);
  if (row.sections) {
    IirInitBQ(taps, state, complex);
  } else {
    IirInit(taps, state, complex);
  }
}

// Every operation may round to `epsilon`, the result to its precision.
void ExpectClose(const ReferenceRow& row, const TVec& y, const std::vector<double>& expected, double bound,
                 double epsilon) {
  const double operations = static_cast<double>(row.taps.size()) + 4;
  ASSERT_EQ(static_cast<std::size_t>(y.Length()), expected.size());
  for (std::int32_t n = 0; n < y.Length(); ++n) {
    const double value = expected[static_cast<std::size_t>(n)];
    const double tolerance = operations * epsilon / 2 * bound + (row.single ? 0x1p-24 : 0x1p-53) * std::abs(value);
    EXPECT_NEAR(At(y, n).Re, value, tolerance) << row.name << " " << n;
    EXPECT_NEAR(At(y, n).Im, y.Complex() ? value / -2 : 0, tolerance) << row.name << " " << n;
  }
}

TEST(IirFilter, AgreesWithTheDefinition) {
  for (const ReferenceRow& row : ReferenceRows()) {
    for (const bool complex : {false, true}) {
      const TVec x = Data(row, row.data, complex);
      TIirState state{};
      Init(row, state, complex);
      TVec y;
      IirFilter(x, y, state);
      EXPECT_EQ(y.FloatPrecision(), x.FloatPrecision());
      // Sections of single precision may be computed in single precision; the direct form never is.
      ExpectClose(row, y, row.outputs, row.bound, row.single && row.sections ? 0x1p-23 : 0x1p-52);

      TVec data = x;
      Init(row, state, complex);
      IirFilter(data, state);
      EXPECT_TRUE(SameBits(data, y)) << row.name;

      data = x;
      Init(row, state, complex);
      IirFilter(data, state, true);
      // Between the passes the data have their own precision.
      ExpectClose(row, data, row.zero_phase, row.zero_phase_bound, row.single ? 0x1p-23 : 0x1p-52);
      EXPECT_EQ(data.FloatPrecision(), x.FloatPrecision());
    }
  }
}

TEST(IirFilter, NumeratorAndDenominatorApart) {
  const TVec x = Noise(40, DoubleReal, 1);
  const auto filtered = [&](const TVec& taps) {
    TIirState state{};
    IirInit(taps, state);
    TVec y;
    IirFilter(x, y, state);
    return y;
  };
  const struct {
    TVec num, den, taps;
  } cases[] = {
      {TVec{1}, TVec{1}, TVec{1, 1}},
      {TVec{1, 2, 3}, TVec{4, 1, 2}, TVec{1, 2, 3, 4, 1, 2}},
      {TVec{1}, TVec{2, -1, 0.5}, TVec{1, 0, 0, 2, -1, 0.5}},
      {TVec{1, 2, 3}, TVec{2}, TVec{1, 2, 3, 2, 0, 0}},
      {TVec{{1, 9}, {2, 9}}, TVec{{4, 9}, {1, 9}}, TVec{1, 2, 4, 1}},
      {TVec{{1, 9}, {2, 9}}, TVec{4, 1}, TVec{1, 2, 4, 1}},
  };
  for (const auto& c : cases) {
    TIirState state{};
    IirInit(c.num, c.den, state);
    TVec y;
    IirFilter(x, y, state);
    EXPECT_TRUE(SameBits(y, filtered(c.taps)));
    TVec data = x;
    IirFilter(data, c.num, c.den);
    EXPECT_TRUE(SameBits(data, y));
  }
  EXPECT_TRUE(SameBits(filtered(TVec{1, 1}), x));
  EXPECT_TRUE(SameBits(filtered(TVec{{1, 5}, {0.5, 5}, {2, 5}, {1, 5}}), filtered(TVec{1, 0.5, 2, 1})));
}

TEST(IirFilter, OneShotMayTakeItsTapsFromTheData) {
  TVec data{1, 0.5, 0, 0};
  IirFilter(data, data, TVec{1, -0.5});
  EXPECT_TRUE(SameBits(data, TVec{1, 1.5, 1, 0.5})) << data;
}

TEST(IirFilter, ZeroPhaseKeepsASymmetricPulseCentred) {
  TVec data;
  data.Size(100, DoubleReal);
  data.SetZero();
  for (std::int32_t k = -6; k <= 6; ++k) data.SetDefault(50 + k, 7.0 - std::abs(k));
  TVec num{0.25, 0.5, 0.25};
  TVec den{1, 0, 0.25};
  IirFilter(data, num, den, true);
  for (std::int32_t k = 0; k < 45; ++k) EXPECT_NEAR(data[50 + k], data[50 - k], 1e-14) << k;
  EXPECT_EQ(data.Max(), data[50]);
}

// A delay by two and back is no delay, but for the ends: the second pass begins with the last two of the P samples.
TEST(IirFilter, ZeroPhasePadsAndCarriesItsStateOver) {
  const struct {
    std::int32_t length;
    double before_last, last;  // of the result for 1, 2, 3, ..
  } cases[] = {{2, 2, 1},      // P = Length: the two change places
               {4, 4, 3},      //
               {5, 4, 0},      // 5.5 to 6, P = Length + 1
               {14, 13, 0},    // 15.4 to 15
               {15, 14, 0},    // 16.5 to 16
               {16, 15, 16},   // 17.6 to 18
               {100, 99, 100}};
  for (const auto& c : cases) {
    TVec data;
    data.Size(c.length, DoubleReal);
    data.Ramp(1, 1);
    TVec expected = data;
    expected.SetDefault(c.length - 2, c.before_last);
    expected.SetDefault(c.length - 1, c.last);
    IirFilter(data, TVec{0, 0, 1}, TVec{1}, true);
    EXPECT_TRUE(SameBits(data, expected)) << data;
  }
  TVec one{3};
  IirFilter(one, TVec{0, 1}, TVec{1}, true);
  EXPECT_TRUE(SameBits(one, TVec{3}));
  TVec empty;
  empty.Size(0, SingleComplex);
  TIirState none{};
  IirFilter(empty, none, true);
  EXPECT_EQ(empty.FloatPrecision(), SingleComplex);
}

template <class T>
void ExpectSamplesEqualBlocks(const TVec& taps, bool sections, const TVec& x) {
  TIirState blocks{};
  TIirState samples{};
  const auto init = [&](TIirState& state) {
    if (sections) {
      IirInitBQ(taps, state, x.Complex());
    } else {
      IirInit(taps, state, x.Complex());
    }
  };
  init(blocks);
  init(samples);
  TVec expected;
  IirFilter(x, expected, blocks);
  for (std::int32_t n = 0; n < x.Length(); ++n) {
    T y = x.Elements<T>()[static_cast<std::size_t>(n)];
    IirFilter(y, y, samples);
    ASSERT_EQ(y, expected.Elements<T>()[static_cast<std::size_t>(n)]) << n;
  }
}

TEST(IirFilter, SamplesEqualBlocks) {
  for (const bool sections : {false, true}) {
    const TVec taps = sections ? TVec{1, 0.5, 0.2, 1, -1, 0.5, 2, -1, 1, 4, 1, 1} : TVec{1, 2, 3, 4, 8, -4, 2, 0.5};
    const TVec single = OfPrecision({taps.Values().begin(), taps.Values().end()}, SingleReal);
    ExpectSamplesEqualBlocks<double>(taps, sections, Noise(50, DoubleReal, 1));
    ExpectSamplesEqualBlocks<float>(single, sections, Noise(50, SingleReal, 2));
    ExpectSamplesEqualBlocks<TCplx>(taps, sections, Noise(50, DoubleComplex, 3));
    ExpectSamplesEqualBlocks<TSCplx>(single, sections, Noise(50, SingleComplex, 4));
  }
}

TEST(IirFilter, RealAndComplexStreamsDoNotMeet) {
  TIirState state{};
  IirInit(TVec{1, 0, 1, -1}, state, true);  // running sums
  TVec real;
  TVec complex;
  IirFilter(TVec{1, 1}, real, state);
  IirFilter(TVec{{10, 20}}, complex, state);
  IirFilter(TVec{1}, real, state);
  EXPECT_TRUE(SameBits(real, TVec{3}));
  IirFilter(TVec{{1, 1}}, complex, state);
  EXPECT_TRUE(SameBits(complex, TVec{{11, 21}}));
}

TEST(IirFilter, ARecordMovesInMidStream) {
  for (const bool sections : {false, true}) {
    TIirState state{};
    if (sections) {
      IirInitBQ(TVec{1, 0, 0, 1, -1, 0}, state, true);
    } else {
      IirInit(TVec{1, 0, 1, -1}, state, true);
    }
    TVec y;
    IirFilter(TVec{{1, 2}}, y, state);
    TIirState moved = std::move(state);
    IirFilter(TVec{{1, 2}}, y, moved);
    EXPECT_TRUE(SameBits(y, TVec{{2, 4}}));
    EXPECT_RAISES(IirFilter(TVec{1}, y, state), ECoreError, "not IirState.Initialized");
    std::vector<TIirState> records;
    records.push_back(std::move(moved));
    records.emplace_back();
    records.emplace_back();
    IirFilter(TVec{{1, 2}}, y, records[0]);
    EXPECT_TRUE(SameBits(y, TVec{{3, 6}}));
    std::swap(records[0], records[1]);
    IirFilter(TVec{{1, 2}}, y, records[1]);
    EXPECT_TRUE(SameBits(y, TVec{{4, 8}}));
  }
}

TEST(IirFilter, FieldsTellWhatIsHeld) {
  TIirState state{};
  IirFree(state);
  for (const bool single : {false, true}) {
    for (const bool complex : {false, true}) {
      IirInit(OfPrecision({1, 1}, single ? SingleReal : DoubleReal), state, complex);
      EXPECT_TRUE(state.Initialized);
      EXPECT_EQ(state.IsDouble, !single);
      EXPECT_EQ(state.ComplexImpulse, complex);
      EXPECT_NE(state.NSPIirState, nullptr);
      EXPECT_EQ(state.NSPIirStatec != nullptr, complex);
      EXPECT_FALSE(state.Buffer.empty());
      EXPECT_EQ(state.Bufferc.empty(), !complex);
    }
  }
  IirFree(state);
  IirFree(state);
  EXPECT_FALSE(state.Initialized);
  EXPECT_EQ(state.NSPIirState, nullptr);
  EXPECT_EQ(state.NSPIirStatec, nullptr);
  EXPECT_EQ(state.Buffer.capacity() + state.Bufferc.capacity(), 0U);
  TVec y;
  EXPECT_RAISES(IirFilter(TVec{1}, y, state), ECoreError, "not IirState.Initialized");
}

TEST(IirInit, Refusals) {
  constexpr const char* kZero = "a coefficient that divides is zero";
  constexpr const char* kLength = "a length is outside its range";
  const std::string direct = "ippsIIRInit failed to initialize the filter: ";
  const std::string cascade = "ippsIirInitAlloc_Biquadd failed to initialize the filter: ";
  TIirState state{};
  IirInit(TVec{1, 0, 1, -1}, state);  // a running sum, which goes on after all that
  TVec y;
  IirFilter(TVec{5}, y, state);
  const TVec single = OfPrecision({1}, SingleReal);
  EXPECT_RAISES(IirInit(TVec{}, state), ECoreError, "Taps.Length = 0");
  EXPECT_RAISES(IirInitBQ(TVec{}, state, true), ECoreError, "Taps.Length = 0");
  EXPECT_RAISES(IirInit(TVec{}, TVec{}, state), Exception, "Num.Length = 0");
  EXPECT_RAISES(IirInit(TVec{1}, TVec{}, state), Exception, "Den.Length = 0");
  EXPECT_RAISES(IirInit(TVec{1}, single, state), ECoreError, "the operands have precisions double and single");
  EXPECT_RAISES(IirInit(TVec{1}, state), ECoreError, (direct + kLength).c_str());
  EXPECT_RAISES(IirInit(TVec{1, 0}, state), ECoreError, (direct + kZero).c_str());
  EXPECT_RAISES(IirInit(TVec{1, 1, 0, 1}, state, true), ECoreError, (direct + kZero).c_str());
  EXPECT_RAISES(IirInit(TVec{{1, 1}, {0, 1}}, state, true), ECoreError, (direct + kZero).c_str());
  EXPECT_RAISES(IirInit(TVec{1}, TVec{0, 1}, state), ECoreError, (direct + kZero).c_str());
  EXPECT_RAISES(IirInitBQ(TVec{1, 2, 3, 4, 5}, state), ECoreError, (cascade + kLength).c_str());
  EXPECT_RAISES(IirInitBQ(TVec{1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 1, 1}, state, true), ECoreError,
                (cascade + kZero).c_str());
  IirFilter(TVec{1}, y, state);
  EXPECT_TRUE(SameBits(y, TVec{6}));
}

TEST(IirFilter, RefusedBlocksAndSamples) {
  TIirState state{};
  TVec y{7, 7, 7};
  double d = 7;
  float f = 7;
  TCplx z(7, 7);
  TSCplx s(7, 7);
  EXPECT_RAISES(IirFilter(TVec{1}, y, state), ECoreError, "not IirState.Initialized");
  EXPECT_EQ(y.Length(), 1);
  EXPECT_RAISES(IirFilter(1.0, d, state), ECoreError, "not IirState.Initialized");
  EXPECT_RAISES(IirFilter(1.0F, f, state), ECoreError, "not IirState.Initialized");
  EXPECT_RAISES(IirFilter(TCplx(1, 1), z, state), ECoreError, "not IirState.Initialized");
  EXPECT_RAISES(IirFilter(TSCplx(1, 1), s, state), ECoreError, "not IirState.Initialized");

  IirInit(TVec{1, 0, 1, -1}, state);
  IirFilter(TVec{5}, y, state);
  const TVec complex{{1, 2}, {3, 4}};
  TVec data = complex;
  EXPECT_RAISES(IirFilter(complex, y, state), ECoreError, "Src.Complex and not IirState.ComplexImpulse");
  EXPECT_RAISES(IirFilter(data, state), ECoreError, "Src.Complex and not IirState.ComplexImpulse");
  EXPECT_RAISES(IirFilter(data, state, true), ECoreError, "Src.Complex and not IirState.ComplexImpulse");
  EXPECT_TRUE(SameBits(data, complex));
  data.SetFloatPrecision(SingleReal);
  const TVec single = data;
  EXPECT_RAISES(IirFilter(data, state), ECoreError, "IirState.IsDouble <> Src.IsDouble");
  EXPECT_RAISES(IirFilter(data, state, true), ECoreError, "IirState.IsDouble <> Src.IsDouble");
  EXPECT_RAISES(IirFilter(data, TVec{1}, TVec{1}), ECoreError, "IirState.IsDouble <> Src.IsDouble");
  EXPECT_TRUE(SameBits(data, single));
  constexpr const char* kDouble = "TIirState is initialized with double precision filter structure!";
  EXPECT_RAISES(IirFilter(1.0F, f, state), ECoreError, kDouble);
  EXPECT_RAISES(IirFilter(TSCplx(1, 1), s, state), ECoreError, kDouble);
  EXPECT_EQ(f, 7);
  EXPECT_EQ(s, TSCplx(7, 7));
  EXPECT_RAISES(IirFilter(TCplx(1, 1), z, state), ECoreError, "TIirState needs to have complex impulse response!");
  EXPECT_EQ(z, TCplx(0, 0));
  IirFilter(1.0, d, state);
  EXPECT_EQ(d, 6);

  IirInit(OfPrecision({1, 1}, SingleReal), state, true);
  constexpr const char* kSingle = "TIirState is initialized with single precision filter structure!";
  EXPECT_RAISES(IirFilter(1.0, d, state), ECoreError, kSingle);
  EXPECT_RAISES(IirFilter(TCplx(1, 1), z, state), ECoreError, kSingle);
  EXPECT_EQ(d, 6);
  EXPECT_RAISES(IirFilter(1.0F, f, state), ECoreError, "TIirState may not have complex impulse response!");
  EXPECT_EQ(f, 0);
  IirFilter(single, y, state);
  EXPECT_TRUE(SameBits(y, single));
}

TEST(IirFilter, SourceAndDestinationMayShareMemory) {
  const TVec taps{1, 2, 1, -0.5};
  const TVec x = Noise(60, DoubleReal, 9);
  TIirState state{};
  IirInit(taps, state);
  TVec expected;
  IirFilter(x, expected, state);
  for (const std::int32_t shift : {0, 1, 30}) {
    TVec memory;
    memory.Size(100, DoubleReal);
    TVec src;
    TVec dst;
    src.SetSubRange(memory, 5, 60);
    dst.SetSubRange(memory, 5 + shift, 60);
    src.Copy(x);
    IirInit(taps, state);
    IirFilter(src, dst, state);
    EXPECT_TRUE(SameBits(dst, expected)) << shift;
  }
  TVec empty;
  TVec y{1, 2};
  empty.Size(0, SingleComplex);
  IirFilter(empty, y, state);
  EXPECT_EQ(y.Length(), 0);
  EXPECT_EQ(y.FloatPrecision(), SingleComplex);
}

TEST(IirFilter, DistinctStatesOnDistinctThreads) {
  const TVec taps{0.1, 0.2, 0.1, 1, -1.2, 0.5};
  const TVec x = Noise(4000, DoubleReal, 2);
  TIirState reference{};
  IirInitBQ(taps, reference);
  TVec expected;
  IirFilter(x, expected, reference);
  std::vector<TVec> results(4);
  {
    std::vector<std::jthread> threads;
    for (TVec& result : results) {
      threads.emplace_back([&] {
        TIirState state{};
        IirInitBQ(taps, state);
        IirFilter(x, result, state);
      });
    }
  }
  for (const TVec& result : results) EXPECT_TRUE(SameBits(result, expected));
}

}  // namespace
}  // namespace passband::SignalUtils
