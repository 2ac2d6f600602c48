// Warm steps of the Kalman filters allocate nothing, whatever the number of states.
#include <gtest/gtest.h>

#include <cstdint>

#include "passband/kalman/kalman.h"
#include "tests/invariants/allocations.h"
#include "tests/test_support.h"

namespace passband::test {
namespace {

using namespace AdaptiveFiltering;

void Fill(TBaseKalmanFilter& filter, std::int32_t n, std::int32_t m, TMtxFloatPrecision precision) {
  filter.x.Size(n, 1, precision).SetZero();
  for (TMtx* matrix : {&filter.A, &filter.P, &filter.Q}) matrix->Eye(n, n, filter.x);
  filter.H.Eye(m, n, filter.x);
  filter.R.Eye(m, m, filter.x);
  filter.z.Size(m, 1, precision).SetVal(1);
}

void ExpectNoAllocation(TBaseKalmanFilter& filter) {
  filter.Update();
  const std::int64_t before = AllocationCount();
  for (int step = 0; step < 5; ++step) filter.Update();
  EXPECT_EQ(AllocationCount(), before);
}

TEST(Kalman, WarmStepsAllocateNothing) {
  for (const auto precision : {TMtxFloatPrecision::SingleReal, TMtxFloatPrecision::DoubleReal}) {
    for (const std::int32_t n : {2, 20}) {
      for (const bool joseph : {false, true}) {
        TKalmanFilter linear;
        linear.SetJosephForm(joseph);
        Fill(linear, n, n / 2, precision);
        ExpectNoAllocation(linear);
        linear.B.Eye(n, n, linear.x);
        linear.SetOnDrivingFunction([&linear](TMtx& u) { u.Copy(linear.x); });
        ExpectNoAllocation(linear);

        TExtendedKalmanFilter extended;
        extended.SetJosephForm(joseph);
        Fill(extended, n, n / 2, precision);
        extended.W.Eye(n, n, extended.x);
        extended.V.Eye(n / 2, n / 2, extended.x);
        extended.SetOnGenerateProcess([](TMtx&) {});
        extended.SetOnGenerateMeasurement([&extended](TMtx& z) { z.Mul(extended.H, extended.x); });
        ExpectNoAllocation(extended);
      }
    }
  }
}

}  // namespace
}  // namespace passband::test
