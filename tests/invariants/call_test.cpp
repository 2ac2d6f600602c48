// The laws of all other calls.
#include "tests/invariants/allocations.h"
#include "tests/invariants/rows.h"

namespace passband::test {
namespace {

class CallLaws : public testing::TestWithParam<CallRow> {};

TEST_P(CallLaws, FailedAllocationLosesNothing) {
  TVec expected = GetParam().output();
  GetParam().call(expected);
  TVec v = GetParam().output();
  const TVec input = v;
  for (std::int64_t nth = 0;; ++nth) {
    const std::int64_t borrowed = PoolStatistics().Borrowed;
    bool failed = false;
    {
      const FailingAllocation failing(nth);
      try {
        GetParam().call(v);
      } catch (const std::exception&) {
        failed = true;
        EXPECT_TRUE(failing.HasFailed());
      }
    }
    EXPECT_EQ(PoolStatistics().Borrowed, borrowed) << "allocation " << nth;
    if (!failed) break;
    ASSERT_TRUE(SameBits(v, input)) << "allocation " << nth;
  }
  EXPECT_TRUE(SameBits(v, expected));
}

INSTANTIATE_TEST_SUITE_P(All, CallLaws, testing::ValuesIn(CallRows()), RowName<CallRow>);

class RefusedCallLaws : public testing::TestWithParam<CallRow> {};

TEST_P(RefusedCallLaws, ChangesNothing) {
  TVec v = GetParam().output();
  const TVec input = v;
  const std::int64_t borrowed = PoolStatistics().Borrowed;
  EXPECT_THROW(GetParam().call(v), Exception);
  EXPECT_TRUE(SameBits(v, input));
  EXPECT_EQ(PoolStatistics().Borrowed, borrowed);
}

INSTANTIATE_TEST_SUITE_P(All, RefusedCallLaws, testing::ValuesIn(RefusedRows()), RowName<CallRow>);

}  // namespace
}  // namespace passband::test
