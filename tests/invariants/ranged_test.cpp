// The laws of every routine on a stretch of a vector.
#include <cmath>
#include <limits>
#include <tuple>

#include "tests/invariants/allocations.h"
#include "tests/invariants/rows.h"

namespace passband::test {
namespace {

using Case = std::tuple<RangedRow, TMtxFloatPrecision>;

class RangedLaws : public testing::TestWithParam<Case> {
 protected:
  const RangedRow& Row() const { return std::get<0>(GetParam()); }
  TMtxFloatPrecision Precision() const { return std::get<1>(GetParam()); }
  TVec Input() const { return Noise(100, Precision(), 3); }
  void Call(TVec& v, std::int32_t index, std::int32_t len) const { Row().call(v, index, len); }
};

TEST_P(RangedLaws, TouchesItsStretchOnly) {
  const TVec input = Input();
  for (const auto& [index, len] : std::vector<std::pair<std::int32_t, std::int32_t>>{
           {0, 100}, {0, 41}, {17, 40}, {60, 40}, {99, 1}, {100, 0}, {5, 0}}) {
    TVec v = input;
    Call(v, index, len);
    EXPECT_TRUE(SameBits(Slice(v, 0, index), Slice(input, 0, index))) << index;
    EXPECT_TRUE(SameBits(Slice(v, index + len, 100 - index - len), Slice(input, index + len, 100 - index - len)))
        << index;
    TVec alone = Slice(input, index, len);
    Call(alone, 0, len);
    EXPECT_TRUE(SameBits(Slice(v, index, len), alone)) << "from " << index << ", " << len << " elements";
    TVec view;
    TVec parent = input;
    view.SetSubRange(parent, index, len);
    Call(view, 0, -1);
    EXPECT_TRUE(SameBits(parent, v)) << "through a view";
  }
}

TEST_P(RangedLaws, RangeOutsideIsRefusedAndChangesNothing) {
  constexpr std::int32_t kLow = std::numeric_limits<std::int32_t>::min();
  constexpr std::int32_t kHigh = std::numeric_limits<std::int32_t>::max();
  const TVec input = Input();
  TVec v = input;
  for (const auto& [index, len] : std::vector<std::pair<std::int32_t, std::int32_t>>{{0, 101},
                                                                                     {1, 100},
                                                                                     {100, 1},
                                                                                     {101, 0},
                                                                                     {-1, 5},
                                                                                     {5, -2},
                                                                                     {kLow, kLow},
                                                                                     {kLow, 1},
                                                                                     {0, kLow},
                                                                                     {kHigh, 1},
                                                                                     {1, kHigh},
                                                                                     {kHigh, kHigh},
                                                                                     {101, -1},
                                                                                     {-1, -1}}) {
    EXPECT_THROW(Call(v, index, len), ECoreError) << index << ", " << len;
    EXPECT_TRUE(SameBits(v, input)) << index << ", " << len;
  }
}

TEST_P(RangedLaws, NonFiniteElementsStayWhereTheyAre) {
  TVec v = Input();
  Put(v, 30, {std::nan(""), std::nan("")});
  Put(v, 60, {std::numeric_limits<double>::infinity(), 0});
  TVec clean = Input();
  Call(v, 10, 10);
  Call(clean, 10, 10);
  EXPECT_TRUE(SameBits(Slice(v, 0, 30), Slice(clean, 0, 30)));
  Call(v, 0, 100);  // neither crashes nor hangs
}

TEST_P(RangedLaws, WarmCallsAllocateNothing) {
  TVec v = Input();
  Call(v, 3, 77);
  const std::int64_t before = AllocationCount();
  Call(v, 3, 77);
  EXPECT_EQ(AllocationCount(), before);
}

TEST_P(RangedLaws, FailedAllocationLosesNothing) {
  TVec expected = Input();
  Call(expected, 3, 77);
  const TVec input = Input();
  // A fresh length needs larger temporaries than the pool has, a few times at least.
  TVec large = Noise(5000, Precision(), 9);
  const TVec large_input = large;
  for (std::int64_t nth = 0;; ++nth) {
    const std::int64_t borrowed = PoolStatistics().Borrowed;
    bool failed = false;
    {
      const FailingAllocation failing(nth);
      try {
        Call(large, 0, 5000);
      } catch (const std::exception&) {
        failed = true;
        EXPECT_TRUE(failing.HasFailed());
      }
    }
    EXPECT_EQ(PoolStatistics().Borrowed, borrowed);
    if (!failed) break;
    ASSERT_TRUE(SameBits(large, large_input)) << "allocation " << nth;
  }
  TVec v = input;
  Call(v, 3, 77);
  EXPECT_TRUE(SameBits(v, expected));
}

std::string CaseName(const testing::TestParamInfo<Case>& info) {
  return RowName<RangedRow>({std::get<0>(info.param), info.index}) + "_" + Name(std::get<1>(info.param));
}
INSTANTIATE_TEST_SUITE_P(All, RangedLaws,
                         testing::Combine(testing::ValuesIn(RangedRows()), testing::ValuesIn(kPrecisions)), CaseName);

}  // namespace
}  // namespace passband::test
