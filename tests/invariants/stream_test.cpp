// The laws of every streaming routine.
#include <cmath>
#include <limits>
#include <random>

#include "tests/invariants/allocations.h"
#include "tests/invariants/rows.h"

namespace passband::test {
namespace {

class StreamLaws : public testing::TestWithParam<StreamRow> {
 protected:
  const StreamRow& Row() const { return GetParam(); }
  std::int32_t Length() const {
    const std::int32_t wanted = 3 * Row().memory + 600;
    return (wanted + Row().granule - 1) / Row().granule * Row().granule;
  }
  TVec Input() const { return Noise(Length(), Row().data, 11); }

  TVec FilterWhole(const TVec& x) const {
    const auto stream = Row().make();
    stream->Init();
    TVec y;
    stream->Filter(x, y);
    return y;
  }
};

TEST_P(StreamLaws, AnyCutGivesTheSameBits) {
  const TVec x = Input();
  const TVec whole = FilterWhole(x);
  std::mt19937 random(5);
  const std::function<std::int32_t()> cuts[] = {
      [] { return 1; },   [] { return 7; },
      [] { return 64; },  [n = 0]() mutable { return ++n % 40 + 1; },
      [] { return 512; }, [&] { return static_cast<std::int32_t>(random() % 700); },
  };
  for (const auto& next : cuts) {
    const auto stream = Row().make();
    stream->Init();
    TVec y;
    y.Size(0, whole);
    std::int32_t done = 0;
    while (done < x.Length()) {
      const std::int32_t len = std::min(x.Length() - done, next() * Row().granule);
      TVec out;
      stream->Filter(Slice(x, done, len), out);
      if (len > 0) y.Copy(TVec(static_cast<const TVec&>(y)), out);
      done += len;
    }
    ASSERT_TRUE(SameBits(y, whole));
  }
}

TEST_P(StreamLaws, SingleSamplesGiveTheSameBits) {
  const TVec x = Input();
  const TVec whole = FilterWhole(x);
  const auto stream = Row().make();
  stream->Init();
  TVec y;
  y.Size(whole);
  TVec block;
  for (std::int32_t n = 0; n < x.Length();) {
    TCplx out;
    if (n % 100 == 50) {  // blocks in between
      const std::int32_t len = std::min(23, x.Length() - n);
      if (Row().granule != 1) return;
      stream->Filter(Slice(x, n, len), block);
      y.Copy(block, 0, n, len);
      n += len;
      continue;
    }
    if (!stream->FilterSample(At(x, n), out)) return;
    Put(y, n, out);
    ++n;
  }
  EXPECT_TRUE(SameBits(y, whole));
}

TEST_P(StreamLaws, WarmCallsAllocateNothing) {
  const auto stream = Row().make();
  stream->Init();
  const TVec block = Slice(Input(), 0, 32 * Row().granule > Length() ? Row().granule : 32 * Row().granule);
  TVec y;
  const auto round = [&] {
    for (std::int32_t n = 0; n < Row().memory + 600; n += block.Length()) stream->Filter(block, y);
    TCplx out;
    for (int n = 0; n < 600 && stream->FilterSample({0.5, 0}, out); ++n) {
    }
  };
  round();
  const std::int64_t before = AllocationCount();
  round();
  EXPECT_EQ(AllocationCount(), before);
}

TEST_P(StreamLaws, DstMayBeSrc) {
  if (!Row().in_place) return;
  const TVec x = Input();
  const TVec whole = FilterWhole(x);
  TVec data = x;
  const auto stream = Row().make();
  stream->Init();
  stream->Filter(data, data);
  EXPECT_TRUE(SameBits(data, whole));

  // Source and destination overlap, one element apart.
  TVec memory;
  memory.Size(x.Length() + 1, x);
  TVec src;
  TVec dst;
  src.SetSubRange(memory, 0, x.Length());
  dst.SetSubRange(memory, 1, x.Length());
  src.Copy(x, 0, 0, x.Length());
  stream->Init();
  stream->Filter(src, dst);
  EXPECT_TRUE(SameBits(dst, whole));
}

TEST_P(StreamLaws, NonFiniteInputReachesNoEarlierOutput) {
  const TVec x = Input();
  const TVec whole = FilterWhole(x);
  for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    for (const std::int32_t place : {0, 1, Length() / 2 + 3, Length() - 1}) {
      TVec damaged = x;
      Put(damaged, place, {bad, bad});
      const TVec y = FilterWhole(damaged);
      ASSERT_EQ(y.Length(), whole.Length());
      const auto untouched = static_cast<std::int32_t>(
          std::floor(static_cast<double>(place / Row().granule) * Row().granule * Row().rate));
      EXPECT_TRUE(SameBits(Slice(y, 0, untouched), Slice(whole, 0, untouched))) << "place " << place;
    }
  }
}

TEST_P(StreamLaws, RefusedCallChangesNothing) {
  const TVec x = Input();
  const TVec whole = FilterWhole(x);
  const auto stream = Row().make();
  TVec y{1, 2, 3};
  const TVec untouched = y;
  const auto expect_untouched = [&](const TVec& src) {
    if (Row().refusal_sizes) {
      EXPECT_EQ(y.Length(), src.Length());
      EXPECT_EQ(y.FloatPrecision(), src.FloatPrecision());
    } else {
      EXPECT_TRUE(SameBits(y, untouched));
    }
  };
  if (Row().needs_init) {
    EXPECT_THROW(stream->Filter(x, y), Exception);  // before Init
    expect_untouched(x);
  }
  stream->Init();
  if (Row().one_precision) {
    TVec other = x;
    other.SetFloatPrecision(MakePrecision(x.Complex(), !x.IsDouble()));
    EXPECT_THROW(stream->Filter(other, y), Exception);
    expect_untouched(other);
  }
  if (Row().granule > 1 && std::floor(Row().rate) != Row().rate) {
    EXPECT_THROW(stream->Filter(Slice(x, 0, 1), y), Exception);
    EXPECT_TRUE(SameBits(y, untouched));
  }
  stream->Filter(x, y);
  EXPECT_TRUE(SameBits(y, whole));
}

// Every allocation of Init and of the first Filter fails once. Afterwards the pool is whole, the output is as it was,
// and the same call succeeds and gives the same bits.
TEST_P(StreamLaws, FailedAllocationLosesNothing) {
  const TVec x = Slice(Input(), 0, 64 * Row().granule > Length() ? Row().granule : 64 * Row().granule);
  const TVec expected = FilterWhole(x);
  const auto retry = [](const std::function<void()>& call) {
    for (std::int64_t nth = 0;; ++nth) {
      const std::int64_t borrowed = PoolStatistics().Borrowed;
      const FailingAllocation failing(nth);
      try {
        call();
        return;
      } catch (const std::exception&) {
        EXPECT_TRUE(failing.HasFailed());
      }
      EXPECT_EQ(PoolStatistics().Borrowed, borrowed);
    }
  };
  const auto stream = Row().make();
  retry([&] { stream->Init(); });
  TVec y{1, 2, 3};
  retry([&] {
    const TVec before = y;
    try {
      stream->Filter(x, y);
    } catch (...) {
      EXPECT_TRUE(SameBits(y, before));
      throw;
    }
  });
  EXPECT_TRUE(SameBits(y, expected));
}

INSTANTIATE_TEST_SUITE_P(All, StreamLaws, testing::ValuesIn(StreamRows()), RowName<StreamRow>);

}  // namespace
}  // namespace passband::test
