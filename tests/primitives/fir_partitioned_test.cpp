#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "passband/primitives/fir_partitioned_internal.h"
#include "passband/primitives/fir_state_internal.h"

namespace passband::primitives {
namespace {

using WideCplx = BasicCplx<long double>;

template <class T>
WideCplx Widen(T value) {
  if constexpr (std::is_arithmetic_v<T>) {
    return {static_cast<long double>(value), 0};
  } else {
    return static_cast<WideCplx>(value);
  }
}
template <class T>
double Magnitude(T value) {
  const WideCplx z = Widen(value);
  return static_cast<double>(std::hypot(z.Re, z.Im));
}

template <class T>
std::vector<T> Noise(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  std::vector<T> x(size);
  for (T& value : x) {
    if constexpr (IsComplex<T>) {
      value = static_cast<T>(TCplx{normal(random), normal(random)});
    } else {
      value = static_cast<T>(normal(random));
    }
  }
  return x;
}

template <class T>
using Filter = std::unique_ptr<FirStateOf<T>>;
template <class T>
Filter<T> Make(const std::vector<T>& taps) {
  return Filter<T>(static_cast<FirStateOf<T>*>(NewPartitionedFir(taps.data(), static_cast<std::int32_t>(taps.size()))));
}
template <class T>
Filter<T> Make(const std::vector<T>& taps, const std::vector<std::size_t>& blocks) {
  return Filter<T>(static_cast<FirStateOf<T>*>(detail::NewPartitionedFir(taps.data(), taps.size(), blocks)));
}
template <class T>
std::vector<T> Run(FirStateOf<T>& filter, const std::vector<T>& x) {
  std::vector<T> y(x.size());
  filter.Filter(x.data(), y.data(), static_cast<std::int32_t>(x.size()));
  return y;
}

template <class T>
bool SameBits(const T* a, const T* b, std::size_t count) {
  return std::memcmp(a, b, count * sizeof(T)) == 0;
}

// The largest |y - h * x| over a sample of outputs, in eps |h| |x|, x over the samples that the noise bound names.
template <class T>
double LargestError(const std::vector<T>& h, const std::vector<T>& x, const std::vector<T>& y, std::size_t reach) {
  std::vector<double> energy(x.size() + 1);
  for (std::size_t n = 0; n < x.size(); ++n) energy[n + 1] = energy[n] + Magnitude(x[n]) * Magnitude(x[n]);
  double tap_energy = 0;
  for (const T& tap : h) tap_energy += Magnitude(tap) * Magnitude(tap);
  std::mt19937 random(17);
  double worst = 0;
  for (int sample = 0; sample < 400; ++sample) {
    const std::size_t n = random() % x.size();
    WideCplx sum;
    for (std::size_t k = 0; k <= std::min(n, h.size() - 1); ++k) sum += Widen(h[k]) * Widen(x[n - k]);
    const double norm = std::sqrt(tap_energy * (energy[n + 1] - energy[n + 1 - std::min(n + 1, reach)]));
    const double error = Magnitude(sum + -Widen(y[n]));
    worst = std::max(worst, norm > 0 ? error / norm : (error > 0 ? 1e300 : 0));
  }
  return worst / std::numeric_limits<RealOf<T>>::epsilon();
}

template <class T>
class PartitionedFirTest : public ::testing::Test {};
struct Words {
  template <class T>
  static std::string GetName(int) {
    return std::string(std::is_same_v<RealOf<T>, float> ? "Single" : "Double") + (IsComplex<T> ? "Complex" : "Real");
  }
};
using Elements = ::testing::Types<float, double, TSCplx, TCplx>;
TYPED_TEST_SUITE(PartitionedFirTest, Elements, Words);

TYPED_TEST(PartitionedFirTest, IsTheConvolutionWithinTheNoiseBound) {
  for (const std::size_t taps : {512U, 1024U, 1500U, 2048U, 5000U, 8192U, 20001U}) {
    const auto h = Noise<TypeParam>(taps, 1);
    auto x = Noise<TypeParam>(2 * taps + 3000, 2);
    const std::size_t reach = taps + 2 * detail::PartitionedFirBlocks<TypeParam>(taps).back();
    EXPECT_LT(LargestError(h, x, Run(*Make(h), x), reach), 1) << taps;
    // Quiet samples near a loud one.
    for (auto& value : x) value *= RealOf<TypeParam>{1e-6F};
    x[taps] = x[taps] + x[taps] * RealOf<TypeParam>{1e6F};
    EXPECT_LT(LargestError(h, x, Run(*Make(h), x), reach), 1) << taps;
  }
}

TYPED_TEST(PartitionedFirTest, AnyLevelsServeAnyNumberOfTaps) {
  const std::vector<std::vector<std::size_t>> levels = {{64}, {128}, {1024}, {64, 128}, {64, 512}, {64, 256, 2048}};
  for (const auto& blocks : levels) {
    for (const std::size_t taps : {65U, 128U, 129U, 1024U, 1025U, 2047U, 2049U, 4500U}) {
      if (taps <= blocks[0]) continue;
      const auto h = Noise<TypeParam>(taps, 3);
      const auto x = Noise<TypeParam>(2 * taps + 4500, 4);
      EXPECT_LT(LargestError(h, x, Run(*Make(h, blocks), x), taps + 2 * blocks.back()), 1)
          << taps << " taps, blocks from " << blocks[0] << " to " << blocks.back();
    }
  }
}

TYPED_TEST(PartitionedFirTest, GivesTheSameBitsForEveryCut) {
  for (const std::size_t taps : {512U, 1500U, 2048U, 4100U, 9000U, 33000U}) {
    const auto h = Noise<TypeParam>(taps, 5);
    const auto x = Noise<TypeParam>(3 * taps + 777, 6);
    const auto whole = Run(*Make(h), x);
    for (const std::size_t cut : {std::size_t{0}, std::size_t{1}, std::size_t{7}, std::size_t{64}, std::size_t{512}}) {
      std::mt19937 random(7);
      const auto filter = Make(h);
      auto y = x;  // filtered in place
      for (std::size_t n = 0; n < y.size();) {
        const std::size_t piece = std::min(cut == 0 ? random() % 1500 : cut, y.size() - n);
        filter->Filter(y.data() + n, y.data() + n, static_cast<std::int32_t>(piece));
        n += piece;
      }
      EXPECT_TRUE(SameBits(y.data(), whole.data(), y.size())) << taps << " taps, cut " << cut;
    }
    const auto filter = Make(h);
    auto y = x;
    for (std::size_t n = 0; n < y.size(); ++n) {
      if (n % 1000 < 500) {
        y[n] = filter->One(x[n]);
      } else {
        filter->Filter(&x[n], &y[n], 1);
      }
    }
    EXPECT_TRUE(SameBits(y.data(), whole.data(), y.size())) << taps << " taps, single samples";
  }
}

TYPED_TEST(PartitionedFirTest, NanAndInfinityReachNoEarlierOutputAndLeaveAfterTheStatedOne) {
  using R = RealOf<TypeParam>;
  for (const std::size_t taps : {512U, 2000U, 3000U, 8192U}) {
    const auto h = Noise<TypeParam>(taps, 8);
    const std::size_t block = detail::PartitionedFirBlocks<TypeParam>(taps).back();
    const std::size_t reach = (taps + block - 1) / block * block + block - 1;
    const auto x = Noise<TypeParam>(2 * block + 2 * reach, 9);
    const auto clean = Run(*Make(h), x);
    for (const R bad : {std::numeric_limits<R>::quiet_NaN(), std::numeric_limits<R>::infinity()}) {
      for (const std::size_t p : {std::size_t{0}, block - 1, block, block + 333}) {
        auto poisoned = x;
        poisoned[p] = TypeParam{} + poisoned[p];
        if constexpr (IsComplex<TypeParam>) {
          poisoned[p].Im = bad;
        } else {
          poisoned[p] = bad;
        }
        const auto y = Run(*Make(h), poisoned);
        EXPECT_TRUE(SameBits(y.data(), clean.data(), p)) << taps << " taps, at " << p;
        const std::size_t free = p + reach + 1;
        EXPECT_TRUE(SameBits(y.data() + free, clean.data() + free, y.size() - free)) << taps << " taps, at " << p;
        for (std::size_t n = p; n < p + taps; ++n) ASSERT_FALSE(std::isfinite(Magnitude(y[n]))) << taps << " at " << n;
      }
    }
  }
}

TYPED_TEST(PartitionedFirTest, InstructionSetsAgree) {
  const auto h = Noise<TypeParam>(5000, 10);
  const auto x = Noise<TypeParam>(20000, 11);
  std::vector<TypeParam> fused;
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    hwy::SetSupportedTargetsForTest(target);
    const auto filter = Make(h, {64, 512, 2048});
    hwy::SetSupportedTargetsForTest(0);  // a state keeps the kernels that it was made with
    const auto y = Run(*filter, x);
    EXPECT_LT(LargestError(h, x, y, 5000 + 2 * 2048), 1) << hwy::TargetName(target);
    if (target == HWY_AVX2 || target == HWY_AVX3) {
      if (fused.empty()) fused = y;
      EXPECT_TRUE(SameBits(y.data(), fused.data(), y.size())) << hwy::TargetName(target);
    }
  }
}

}  // namespace
}  // namespace passband::primitives
