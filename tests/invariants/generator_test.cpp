// Generators have no input; their laws beside those of the calls.
#include "tests/invariants/allocations.h"
#include "tests/invariants/rows.h"

namespace passband::test {
namespace {

using namespace SignalUtils;

TEST(Generators, BlocksAllocateNothing) {
  for (const TMtxFloatPrecision precision : kPrecisions) {
    const bool complex = IsComplexPrecision(precision);
    TVec x;
    x.Size(3000, precision);
    TToneState tone{};
    TSquareToneState square{};
    TTriangleState triangle{};
    ToneInit(0.1, 0, 1, tone, complex);
    SquareToneInit(0.01, 0, 1, square, complex);
    TriangleToneInit(0.1, 0, 1, 0, triangle, complex);
    const std::int64_t before = AllocationCount();
    Tone(x, tone);
    SquareTone(x, square);
    TriangleTone(x, triangle);
    EXPECT_EQ(AllocationCount(), before) << Name(precision);
  }
}

}  // namespace
}  // namespace passband::test
