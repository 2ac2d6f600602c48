// Copies, orders and ramps: every result is told by the place that each element comes from.
#include <algorithm>
#include <functional>
#include <limits>

#include "passband/foundation/scalars.h"
#include "passband/foundation/text.h"
#include "passband/vector_core/pool.h"
#include "tests/test_support.h"

namespace passband {
namespace {

using test::At;
using test::SameBits;
using test::Slice;

constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kZero = -1;  // in a list of places: the element is zero

class RearrangementTest : public testing::TestWithParam<TMtxFloatPrecision> {
 protected:
  static TVec Marked(std::int32_t length) {
    TVec v;
    v.Size(length, GetParam());
    for (std::int32_t i = 0; i < length; ++i) test::Put(v, i, Cplx(i + 1, -0.5 * i));
    return v;
  }
  static TVec Taken(const TVec& src, const std::vector<std::int32_t>& places) {
    TVec v;
    v.Size(static_cast<std::int32_t>(places.size()), src);
    for (std::int32_t i = 0; i < v.Length(); ++i) {
      const std::int32_t from = places[static_cast<std::size_t>(i)];
      test::Put(v, i, from == kZero ? Cplx(0) : At(src, from));
    }
    return v;
  }
};

INSTANTIATE_TEST_SUITE_P(All, RearrangementTest, testing::ValuesIn(test::kPrecisions),
                         [](const auto& suite) { return test::Name(suite.param); });

TEST_P(RearrangementTest, PutsEveryElementInItsPlace) {
  struct Case {
    const char* name;
    std::function<void(TVec&, const TVec&)> apply;  // to a copy of the six marked elements, or from them
    std::vector<std::int32_t> places;
  };
  const Case cases[] = {
      {"Reverse", [](TVec& v, const TVec&) { v.Reverse(); }, {5, 4, 3, 2, 1, 0}},
      {"Reverse of a stretch", [](TVec& v, const TVec& x) { v.Reverse(x, 0, 2, 3); }, {0, 1, 2, 1, 0, 5}},
      {"Reverse, -1", [](TVec& v, const TVec& x) { v.Reverse(x, 4, 1, -1); }, {0, 5, 4, 3, 4, 5}},
      {"Reverse of itself", [](TVec& v, const TVec&) { v.Reverse(v, 0, 1, 4); }, {0, 3, 2, 1, 0, 5}},
      {"Copy up", [](TVec& v, const TVec&) { v.Copy(v, 0, 2, 4); }, {0, 1, 0, 1, 2, 3}},
      {"Copy down", [](TVec& v, const TVec&) { v.Copy(v, 2, 0, -1); }, {2, 3, 4, 5, 4, 5}},
      {"Shift up", [](TVec& v, const TVec&) { v.Shift(2); }, {kZero, kZero, 0, 1, 2, 3}},
      {"Shift down", [](TVec& v, const TVec&) { v.Shift(-1); }, {1, 2, 3, 4, 5, kZero}},
      {"Shift far", [](TVec& v, const TVec&) { v.Shift(kMost); }, {kZero, kZero, kZero, kZero, kZero, kZero}},
      {"Shift far down", [](TVec& v, const TVec&) { v.Shift(kLeast); }, {kZero, kZero, kZero, kZero, kZero, kZero}},
      {"Rotate", [](TVec& v, const TVec&) { v.Rotate(2); }, {4, 5, 0, 1, 2, 3}},
      {"Rotate by 2^31 - 1 = 1 mod 6", [](TVec& v, const TVec&) { v.Rotate(kMost); }, {5, 0, 1, 2, 3, 4}},
      {"Rotate by -2^31 = -2 mod 6", [](TVec& v, const TVec&) { v.Rotate(kLeast); }, {2, 3, 4, 5, 0, 1}},
      {"Scatter", [](TVec& v, const TVec& x) { v.Scatter(x, 2, 1, 3); }, {0, 0, 2, 1, 4, 2}},
      {"Scatter, -1", [](TVec& v, const TVec& x) { v.Scatter(x, 4, 1, -1); }, {0, 0, 2, 3, 4, 1}},
      {"Scatter of itself", [](TVec& v, const TVec&) { v.Scatter(v, 2, 0, 3); }, {0, 1, 1, 3, 2, 5}},
      {"Scatter, great step", [](TVec& v, const TVec& x) { v.Scatter(x, kMost, 5, -1); }, {0, 1, 2, 3, 4, 0}},
      {"DownSample", [](TVec& v, const TVec& x) { v.DownSample(x, 2, 1); }, {1, 3, 5}},
      {"DownSample of itself", [](TVec& v, const TVec&) { v.DownSample(v, 4); }, {0, 4}},
      {"DownSample, great factor", [](TVec& v, const TVec& x) { v.DownSample(x, kMost, 5); }, {5}},
      {"DownSample past the end", [](TVec& v, const TVec& x) { v.DownSample(x, 2, kMost); }, {}},
      {"both", [](TVec& v, const TVec& x) { v.Copy(x, x); }, {0, 1, 2, 3, 4, 5, 0, 1, 2, 3, 4, 5}},
      {"itself twice", [](TVec& v, const TVec&) { v.Copy(v, v); }, {0, 1, 2, 3, 4, 5, 0, 1, 2, 3, 4, 5}},
  };
  for (const Case& c : cases) {
    const TVec src = Marked(6);
    TVec v = src;
    c.apply(v, src);
    EXPECT_TRUE(SameBits(v, Taken(src, c.places))) << c.name << ": " << v;
  }
  TVec memory = Marked(6);  // two views change places within one memory
  TVec head;
  TVec tail;
  head.SetSubRange(memory, 0, 2);
  tail.SetSubRange(memory, 2, 4);
  memory.Copy(tail, head);
  EXPECT_TRUE(SameBits(memory, Taken(Marked(6), {2, 3, 4, 5, 0, 1}))) << memory;
  TVec empty = Marked(0);
  empty.Reverse();
  empty.Shift(1);
  empty.Rotate(kLeast);
  empty.DownSample(empty, 3);
  empty.Difference(empty, kMost);
  EXPECT_EQ(empty.Length(), 0);
}

TEST_P(RearrangementTest, RefusedCallsChangeNothing) {
  TVec v = Marked(9);
  const TVec before = v;
  const TVec three = Marked(3);
  TVec other = three;
  other.SetFloatPrecision(MakePrecision(!three.Complex(), three.IsDouble()));
  const std::string precisions = "the operands have precisions " + PrecisionToStr(v.FloatPrecision()) + " and " +
                                 PrecisionToStr(other.FloatPrecision());
  EXPECT_RAISES(v.Copy(other, 0, 0, 1), ECoreError, precisions.c_str());
  EXPECT_RAISES(v.Copy(v, other), ECoreError, precisions.c_str());
  EXPECT_RAISES(v.Reverse(other, 0, 0, 1), ECoreError, precisions.c_str());
  EXPECT_RAISES(v.Scatter(other, 1, 0, 1), ECoreError, precisions.c_str());
  EXPECT_RAISES(v.Copy(three, 0, 7, 3), ECoreError, "Index = 7, Len = 3 is outside a vector of length 9");
  EXPECT_RAISES(v.Copy(three, 2, 0, kMost), ECoreError, "Index = 2, Len = 2147483647 is outside a vector of length 3");
  EXPECT_RAISES(v.Scatter(three, 0, 0, 1), ECoreError, "Scatter: Step < 1");
  EXPECT_RAISES(v.Scatter(three, 4, 1, 3), ECoreError,
                "Scatter: Index = 1, Step = 4, Len = 3 is outside a vector of length 9");
  EXPECT_RAISES(v.Scatter(three, kMost, 1, 2), ECoreError,
                "Scatter: Index = 1, Step = 2147483647, Len = 2 is outside a vector of length 9");
  EXPECT_RAISES(v.Scatter(three, 1, kLeast, -1), ECoreError,
                "Scatter: Index = -2147483648, Step = 1, Len = -1 is outside a vector of length 9");
  EXPECT_RAISES(v.Scatter(three, 2, 0, 4), ECoreError, "Index = 0, Len = 4 is outside a vector of length 3");
  EXPECT_RAISES(v.DownSample(three, 0), ECoreError, "DownSample: Factor < 1");
  EXPECT_RAISES(v.DownSample(three, 2, -1), ECoreError, "DownSample: Phase < 0");
  EXPECT_RAISES(v.Difference(three, -1), ECoreError, "Difference: Lag < 0");
  EXPECT_RAISES(v.Ramp(0, 1, 3, 7), ECoreError, "Index = 3, Len = 7 is outside a vector of length 9");
  if (v.Complex()) EXPECT_RAISES(v.SortAscend(), ECoreError, "SortAscend: complex elements");
  EXPECT_RAISES(v.SetIt(true, {1, 2, 3}), ECoreError, "SetIt: 3 numbers do not fill 2 elements");
  EXPECT_RAISES(v.SetIt(-1, {1, 2, 3}), ECoreError, "SetIt: 3 numbers do not fill -1 elements");
  const std::vector<double> array(10);
  EXPECT_RAISES(v.CopyFromArray(array, 3, 0, 9), ECoreError,
                "ArrayIndex = 3, Len = 9 is outside an array of length 10");
  EXPECT_RAISES(v.CopyFromArray(array, kMost, 0, -1), ECoreError,
                "ArrayIndex = 2147483647, Len = -1 is outside an array of length 10");
  EXPECT_RAISES(v.CopyFromArray(array, -1, 0, 1), ECoreError,
                "ArrayIndex = -1, Len = 1 is outside an array of length 10");
  EXPECT_RAISES(v.CopyFromArray(array, 0, 5, 5), ECoreError, "Index = 5, Len = 5 is outside a vector of length 9");
  if (!v.Complex()) {
    EXPECT_RAISES(v.CopyFromArray(std::vector<TSCplx>(1), 0, 0, 1), ECoreError,
                  "CopyFromArray: complex elements into a real vector");
  }
  EXPECT_TRUE(SameBits(v, before));
  EXPECT_EQ(PoolStatistics().Borrowed, 0);
}

TEST_P(RearrangementTest, Differences) {
  for (const std::int32_t lag : {0, 1, 3, 10, 11, kMost}) {
    TVec v = Marked(10);
    const TVec src = v;
    v.Difference(v, lag);
    ASSERT_EQ(v.Length(), std::max(10 - lag, 0));
    for (std::int32_t i = 0; i < v.Length(); ++i) {
      EXPECT_EQ(At(v, i), Cplx(lag, src.Complex() ? -0.5 * lag : 0)) << lag;
    }
  }
}

TEST_P(RearrangementTest, RampsAreComputedElementByElement) {
  TVec v = Marked(100);
  v.Ramp(0.5, 0.1, 2);
  for (std::int32_t k = 0; k < 98; ++k) {
    const double expected = 0.5 + k * 0.1;
    EXPECT_EQ(At(v, k + 2), Cplx(v.IsDouble() ? expected : ToSingle(expected)));
  }
  EXPECT_EQ(At(v, 1), At(Marked(2), 1));
  if (!v.Complex()) return;
  v.Ramp(Cplx(1, 2), Cplx(-1, 0.25), 0, 50);
  EXPECT_EQ(At(v, 49), Cplx(-48, 14.25));
}

TEST_P(RearrangementTest, SortsAStretchWithNanLast) {
  if (IsComplexPrecision(GetParam())) return;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  TVec v{9, 3, nan, -1, 2, -5};
  v.SetFloatPrecision(GetParam());
  v.SortAscend(1, 4);
  TVec expected{9, -1, 2, 3, nan, -5};
  expected.SetFloatPrecision(GetParam());
  EXPECT_TRUE(SameBits(v, expected)) << v;
}

TEST_P(RearrangementTest, ArraysComeInAndGoOut) {
  const bool complex = IsComplexPrecision(GetParam());
  TVec v = Marked(3);
  std::vector<double> out;
  v.CopyToArray(out);
  EXPECT_EQ(out, complex ? (std::vector<double>{1, 0, 2, -0.5, 3, -1}) : (std::vector<double>{1, 2, 3}));
  TVec back;
  back.Size(0, GetParam());
  back.SetIt(3, out);
  EXPECT_TRUE(SameBits(back, v));
  back.SetIt(!complex, {1, 2, 3, 4});
  EXPECT_EQ(back.Complex(), !complex);
  EXPECT_EQ(back.IsDouble(), v.IsDouble());
  EXPECT_EQ(back.Length(), complex ? 4 : 2);

  v.CopyFromArray(std::vector<double>{7, 8, 9}, 1, 0, 2);
  EXPECT_EQ(At(v, 1), Cplx(9));
  EXPECT_EQ(At(v, 2), At(Marked(3), 2));
  if (complex) {
    v.CopyFromArray(std::vector<TCplx>{{1, 2}, {3, 4}}, 0, 1, -1);
    v.CopyFromArray(std::vector<TSCplx>{{5, 6}}, 0, 0, 1);
    EXPECT_TRUE(v.Complex() && At(v, 0) == Cplx(5, 6) && At(v, 2) == Cplx(3, 4));
  }
  if (GetParam() == TMtxFloatPrecision::DoubleReal) {  // the array may be the vector's own memory
    TVec own = Marked(6);
    own.CopyFromArray(own.Values(), 0, 2, 4);
    EXPECT_TRUE(SameBits(own, Taken(Marked(6), {0, 1, 0, 1, 2, 3})));
    own.SetIt(true, own.Values());
    EXPECT_EQ(At(own, 1), Cplx(1, 2));
  }
}

}  // namespace
}  // namespace passband
