// Window kernels on every instruction set: all lengths past two unrolled steps, unaligned, with guards on both sides.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>
#include <vector>

#include "passband/primitives/cosine_window.h"
#include "passband/primitives/window_multiply.h"
#include "tests/primitives/every_target.h"

namespace passband::primitives {
namespace {

constexpr std::int32_t kLongest = 150;  // two steps of four vectors of sixteen singles, and a rest
constexpr double kGuard = 12345;

template <class T>
T Sample(double re, double im) {
  using R = RealOf<T>;
  if constexpr (IsComplex<T>) {
    return {static_cast<R>(re), static_cast<R>(im)};
  } else {
    return static_cast<R>(re);
  }
}

// Samples between guards, `shift` elements off the alignment of the heap.
template <class T>
struct Guarded {
  Guarded(std::int32_t count, std::size_t shift) : first(1 + shift), all(first + static_cast<std::size_t>(count) + 1) {
    std::fill(all.begin(), all.end(), Sample<T>(kGuard, kGuard));
    for (std::int32_t n = 0; n < count; ++n) data()[n] = Sample<T>(1 + n, -0.5 * n);
  }
  T* data() { return all.data() + first; }
  bool GuardsStand() const {
    return std::all_of(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(first),
                       [](T v) { return v == Sample<T>(kGuard, kGuard); }) &&
           all.back() == Sample<T>(kGuard, kGuard);
  }

  std::size_t first;
  std::vector<T> all;
};

template <class T>
class WindowKernelTest : public testing::Test {};

struct ElementNames {
  template <class T>
  static std::string GetName(int) {
    return std::string(IsDoublePrecision(PrecisionOf<T>) ? "Double" : "Single") + (IsComplex<T> ? "Complex" : "Real");
  }
};
using Elements = testing::Types<float, double, TSCplx, TCplx>;
TYPED_TEST_SUITE(WindowKernelTest, Elements, ElementNames);

TYPED_TEST(WindowKernelTest, MultiplyGivesTheExactProducts) {
  using T = TypeParam;
  using R = RealOf<T>;
  OnEveryTarget([] {
    for (std::int32_t count = 0; count <= kLongest; ++count) {
      for (std::size_t shift = 0; shift < 4; ++shift) {
        Guarded<T> x(count, shift);
        std::vector<R> w(static_cast<std::size_t>(count) + shift);
        for (std::size_t n = 0; n < w.size(); ++n) w[n] = static_cast<R>(0.37 + 0.11 * static_cast<double>(n));
        ASSERT_EQ(WindowMultiply(x.data(), w.data() + shift, count), Status::Ok);
        for (std::int32_t n = 0; n < count; ++n) {
          const R gain = w[static_cast<std::size_t>(n) + shift];
          ASSERT_EQ(x.data()[n], gain * Sample<T>(1 + n, -0.5 * n)) << count << ' ' << n;
        }
        ASSERT_TRUE(x.GuardsStand()) << count;
      }
    }
  });
}

// s = sin(pi n / D)^2 with the digits of a long double, from the nearer end.
long double SineSquare(std::int32_t n, std::int32_t d) {
  const long double s = std::sin(std::numbers::pi_v<long double> * std::min(n, d - n) / d);
  return s * s;
}

template <class T>
void CheckCosineWindow(std::int32_t d, bool periodic) {
  constexpr bool kSingle = sizeof(RealOf<T>) == sizeof(float);
  const CosineWindowShape shape{0.0625, -0.5, 1.4375};
  const std::int32_t count = periodic ? d : d + 1;
  Guarded<T> x(count, 1);
  std::fill_n(x.data(), count, Sample<T>(1, -2));
  const auto period = periodic ? WindowPeriod::Periodic : WindowPeriod::Symmetric;
  ASSERT_EQ(CosineWindow(x.data(), count, shape, period), Status::Ok);
  for (std::int32_t n = 0; n < count; ++n) {
    const long double s = SineSquare(n, d);
    const long double w = shape.c0 + shape.c1 * s + shape.c2 * s * s;
    const auto slope = static_cast<double>(std::abs(shape.c1 + 2 * shape.c2 * s));  // what an error of s makes of w
    const double tolerance =
        kSingle ? 0x1.0001p-24 * static_cast<double>(std::abs(w)) + 4e-15 : 2.5e-16 * slope + 3e-16;
    const T value = x.data()[n];
    if constexpr (IsComplex<T>) {
      ASSERT_LE(std::abs(value.Re - w), tolerance) << d << ' ' << n;
      ASSERT_EQ(value.Im, -2 * value.Re) << d << ' ' << n;
    } else {
      ASSERT_LE(std::abs(value - w), tolerance) << d << ' ' << n;
    }
    if (n > 0 && d - n < count) {
      ASSERT_EQ(value, x.data()[d - n]) << d << ' ' << n;
    }
  }
  ASSERT_TRUE(x.GuardsStand()) << d;
}

TYPED_TEST(WindowKernelTest, CosineWindowHasItsValuesAndSymmetryAtEveryLength) {
  OnEveryTarget([] {
    for (std::int32_t d = 1; d <= kLongest; ++d) {
      CheckCosineWindow<TypeParam>(d, false);
      CheckCosineWindow<TypeParam>(d, true);
    }
    for (std::int32_t d = 630; d < 1200; d += 13) CheckCosineWindow<TypeParam>(d, d % 2 == 0);  // blocks of 64
  });
}

// The squared sine itself: no cancellation beside the ends, no drift in long windows, exact in the middle.
TEST(CosineWindowTest, SineSquareKeepsItsDigitsNextToTheEndsAndInLongWindows) {
  OnEveryTarget([] {
    for (const std::int32_t d : {2, 3, 4, 100, 639, 1024, 4095, 65537, 3000000}) {
      std::vector<double> x(static_cast<std::size_t>(d) + 1, 1.0);
      ASSERT_EQ(CosineWindow(x.data(), d + 1, {0, 1, 0}, WindowPeriod::Symmetric), Status::Ok);
      EXPECT_EQ(x.front(), 0);
      EXPECT_EQ(x.back(), 0);
      const std::int32_t step = d > 100000 ? 97 : 1;
      for (std::int32_t n = 1; n < d; n += step) {
        const long double s = SineSquare(n, d);
        const long double relative = n < d / 32 ? 8e-16L : 1e-14L;
        ASSERT_LE(std::abs(x[static_cast<std::size_t>(n)] - s), std::min(relative * s, 2.5e-16L)) << d << ' ' << n;
      }
      if (d % 2 == 0) {
        EXPECT_EQ(x[static_cast<std::size_t>(d) / 2], 1);
      }
    }
  });
}

TYPED_TEST(WindowKernelTest, TriangleIsTheRoundedRatio) {
  using T = TypeParam;
  using R = RealOf<T>;
  OnEveryTarget([] {
    for (std::int32_t count = 2; count <= kLongest; ++count) {
      Guarded<T> x(count, 1);
      ASSERT_EQ(TriangleWindow(x.data(), count), Status::Ok);
      for (std::int32_t n = 0; n < count; ++n) {
        const auto w = static_cast<R>(2.0 * std::min(n, count - 1 - n) / (count - 1));
        ASSERT_EQ(x.data()[n], w * Sample<T>(1 + n, -0.5 * n)) << count << ' ' << n;
      }
      ASSERT_TRUE(x.GuardsStand()) << count;
    }
  });
}

TEST(CosineWindowTest, LengthsWithoutADenominatorAreRefused) {
  double x = 3;
  const double w = 2;
  EXPECT_EQ(CosineWindow(&x, 1, {0, 1, 0}, WindowPeriod::Symmetric), Status::BadSize);
  EXPECT_EQ(CosineWindow(&x, 0, {0, 1, 0}, WindowPeriod::Symmetric), Status::BadSize);
  EXPECT_EQ(CosineWindow(&x, -1, {0, 1, 0}, WindowPeriod::Periodic), Status::BadSize);
  EXPECT_EQ(CosineWindow(&x, 0, {0, 1, 0}, WindowPeriod::Periodic), Status::Ok);
  EXPECT_EQ(TriangleWindow(&x, 1), Status::BadSize);
  EXPECT_EQ(WindowMultiply(&x, &w, -1), Status::BadSize);
  EXPECT_EQ(x, 3);
}

}  // namespace
}  // namespace passband::primitives
