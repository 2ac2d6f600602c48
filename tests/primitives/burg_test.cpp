// The walks of Burg's lattice on every instruction set: all lengths past a few vectors, all alignments, against sums in
// extended precision.
#include "passband/primitives/burg.h"

#include <gtest/gtest.h>

#include <complex>
#include <cstdint>
#include <limits>
#include <vector>

#include "tests/primitives/every_target.h"
#include "tests/test_support.h"

namespace passband::primitives {
namespace {

using Wide = std::complex<long double>;

template <class T>
Wide Widened(T x) {
  if constexpr (IsComplex<T>) {
    return {x.Re, x.Im};
  } else {
    return {x, 0};
  }
}

template <class T>
struct Sums {
  Wide product = 0;
  long double power = 0;

  Sums(const T* f, const T* b, std::int32_t count) {
    for (std::int32_t i = 0; i + 1 < count; ++i) {
      product += Widened(f[i + 1]) * std::conj(Widened(b[i]));
      power += std::norm(Widened(f[i + 1])) + std::norm(Widened(b[i]));
    }
  }
  void Expect(const BurgSums& found) const {
    // Lanes are summed over 64 vectors in the precision of the data, at random rounding errors.
    const double tolerance = 4 * test::Epsilon(PrecisionOf<T>) * static_cast<double>(power);
    EXPECT_NEAR(found.product.Re, static_cast<double>(product.real()), tolerance);
    EXPECT_NEAR(found.product.Im, static_cast<double>(product.imag()), tolerance);
    EXPECT_NEAR(found.power, static_cast<double>(power), tolerance);
  }
};

// Errors of one direction between guards, `shift` elements off the start of their memory.
template <class T>
std::vector<T> Errors(std::int32_t count, std::size_t shift, std::uint32_t seed) {
  const TVec noise = test::Noise(count, PrecisionOf<T>, seed);
  std::vector<T> all(static_cast<std::size_t>(count) + shift + 1, T{});
  std::ranges::copy(noise.Elements<T>(), all.begin() + static_cast<std::ptrdiff_t>(shift));
  return all;
}

template <class T>
void CheckStage(std::int32_t count, std::size_t shift) {
  SCOPED_TRACE(testing::Message() << count << " elements, shifted by " << shift);
  std::vector<T> f = Errors<T>(count, shift, 1);
  std::vector<T> b = Errors<T>(count, 2 * shift, 2);
  const TCplx k{0.625, IsComplex<T> ? -0.25 : 0};
  const std::vector<T> f_before(f.begin() + static_cast<std::ptrdiff_t>(shift), f.end());
  const std::vector<T> b_before(b.begin() + static_cast<std::ptrdiff_t>(2 * shift), b.end());
  T* const first_f = f.data() + shift;
  T* const first_b = b.data() + 2 * shift;
  BurgSums sums;
  ASSERT_EQ(BurgSum(first_f, first_b, count, sums), Status::Ok);
  Sums<T>(first_f, first_b, count).Expect(sums);
  ASSERT_EQ(BurgStage(first_f, first_b, count, k, first_f, first_b, sums), Status::Ok);
  Sums<T>(first_f, first_b, count - 1).Expect(sums);
  const Wide factor(k.Re, k.Im);
  for (std::int32_t i = 0; i + 1 < count; ++i) {
    const auto n = static_cast<std::size_t>(i);
    const Wide x = Widened(f_before[n + 1]);
    const Wide y = Widened(b_before[n]);
    ASSERT_LE(std::abs(Widened(first_f[i]) - (x + factor * y)), 3 * test::Epsilon(PrecisionOf<T>)) << i;
    ASSERT_LE(std::abs(Widened(first_b[i]) - (y + std::conj(factor) * x)), 3 * test::Epsilon(PrecisionOf<T>)) << i;
  }
  // The last element of each array and the guard behind it are not the stage's.
  for (const std::int32_t i : {count - 1, count}) {
    if (i < 0) continue;
    EXPECT_EQ(first_f[i], f_before[static_cast<std::size_t>(i)]);
    EXPECT_EQ(first_b[i], b_before[static_cast<std::size_t>(i)]);
  }
}

template <class T>
class BurgKernelTest : public testing::Test {};
using Elements = testing::Types<float, double, TSCplx, TCplx>;
TYPED_TEST_SUITE(BurgKernelTest, Elements);

TYPED_TEST(BurgKernelTest, StagesAndSumsOfAllLengthsOnEveryTarget) {
  OnEveryTarget([&] {
    for (std::int32_t count = 0; count <= 70; ++count) {
      for (const std::size_t shift : {0U, 1U, 3U}) CheckStage<TypeParam>(count, shift);
    }
    for (const std::int32_t count : {520, 1031, 4096}) CheckStage<TypeParam>(count, 1);  // past blocks of 64 vectors
  });
}

TYPED_TEST(BurgKernelTest, RefusesWithoutTouching) {
  using T = TypeParam;
  BurgSums sums{{1, 2}, 3};
  T x[2] = {};
  T* const none = nullptr;
  EXPECT_EQ(BurgSum(x, x, -1, sums), Status::BadSize);
  EXPECT_EQ(BurgSum<T>(none, x, 2, sums), Status::NullPointer);
  EXPECT_EQ(BurgStage(x, x, -1, {}, x, x, sums), Status::BadSize);
  EXPECT_EQ(BurgStage(x, x, 2, {}, none, x, sums), Status::NullPointer);
  EXPECT_EQ(sums.power, 3);
  EXPECT_EQ(BurgSum<T>(none, none, 0, sums), Status::Ok);
  EXPECT_EQ(sums.power, 0);
}

}  // namespace
}  // namespace passband::primitives
