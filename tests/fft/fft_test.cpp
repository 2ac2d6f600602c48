#include "passband/fft/fft.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>
#include <thread>
#include <vector>

namespace passband::fft {
namespace {

using Wide = BasicCplx<long double>;

// The definition, summed in extended precision with angles reduced as integers.
std::vector<Wide> Dft(const std::vector<Wide>& x, int sign) {
  const std::size_t n = x.size();
  std::vector<Wide> roots(n);
  for (std::size_t i = 0; i < n; ++i) {
    const long double angle =
        2 * std::numbers::pi_v<long double> * static_cast<long double>(i) / static_cast<long double>(n);
    roots[i] = {std::cos(angle), static_cast<long double>(sign) * std::sin(angle)};
  }
  std::vector<Wide> result(n);
  for (std::size_t k = 0; k < n; ++k) {
    for (std::size_t i = 0; i < n; ++i) result[k] += x[i] * roots[i * k % n];
  }
  return result;
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
std::vector<Wide> Widen(const std::vector<T>& x) {
  std::vector<Wide> wide;
  for (const T& value : x) {
    if constexpr (IsComplex<T>) {
      wide.push_back(static_cast<Wide>(value));
    } else {
      wide.push_back({static_cast<long double>(value), 0});
    }
  }
  return wide;
}

// Root mean square of got - want over that of want, in units of epsilon.
template <class R, class T>
double ErrorInEps(const T* got, const std::vector<Wide>& want, std::size_t count) {
  long double error = 0;
  long double norm = 0;
  for (std::size_t i = 0; i < count; ++i) {
    Wide difference = want[i];
    if constexpr (IsComplex<T>) {
      difference += Wide{-static_cast<long double>(got[i].Re), -static_cast<long double>(got[i].Im)};
    } else {
      difference.Re -= static_cast<long double>(got[i]);
    }
    error += difference.Re * difference.Re + difference.Im * difference.Im;
    norm += want[i].Re * want[i].Re + want[i].Im * want[i].Im;
  }
  return static_cast<double>(std::sqrt(error / norm)) / std::numeric_limits<R>::epsilon();
}

// The rounding of a fast transform grows at most like log2 N; a prime length is three transforms, of about twice the
// length (Bluestein, Rader), with twiddles that are themselves a few eps wrong.
double Bound(std::int32_t length) { return 2 + 0.6 * std::log2(static_cast<double>(length)); }

std::vector<std::int32_t> Lengths() {
  std::vector<std::int32_t> lengths;
  for (std::int32_t n = 1; n <= 40; ++n) lengths.push_back(n);
  for (const std::int32_t n : {64, 97, 194, 441, 1000, 1009, 2018, 4095, 4096}) lengths.push_back(n);
  return lengths;
}

template <class R>
class FftTest : public ::testing::Test {};
struct Words {
  template <class R>
  static std::string GetName(int) {
    return std::is_same_v<R, float> ? "Single" : "Double";
  }
};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(FftTest, Precisions, Words);

TYPED_TEST(FftTest, ComplexTransformsFollowTheDefinitionAndKeepTheirInput) {
  using C = ComplexOf<TypeParam>;
  for (const std::int32_t length : Lengths()) {
    const auto n = static_cast<std::size_t>(length);
    const auto x = Noise<C>(n, 1);
    const auto plan = ComplexPlan<TypeParam>::Get(length);
    ASSERT_EQ(plan->Length(), length);
    auto input = x;
    std::vector<C> X(n);
    plan->Forward(input.data(), X.data());
    EXPECT_LT(ErrorInEps<TypeParam>(X.data(), Dft(Widen(x), -1), n), Bound(length)) << length;
    plan->Inverse(input.data(), X.data());
    EXPECT_LT(ErrorInEps<TypeParam>(X.data(), Dft(Widen(x), 1), n), Bound(length)) << length;
    EXPECT_EQ(input, x) << length;
  }
}

TYPED_TEST(FftTest, RealTransformsFollowTheDefinitionAndComeBack) {
  using C = ComplexOf<TypeParam>;
  for (const std::int32_t length : Lengths()) {
    const auto n = static_cast<std::size_t>(length);
    const auto x = Noise<TypeParam>(n, 2);
    const auto plan = RealPlan<TypeParam>::Get(length);
    ASSERT_EQ(plan->Length(), length);
    auto input = x;
    std::vector<C> X(n / 2 + 1);
    plan->Forward(input.data(), X.data());
    EXPECT_EQ(input, x) << length;
    EXPECT_LT(ErrorInEps<TypeParam>(X.data(), Dft(Widen(x), -1), X.size()), Bound(length)) << length;
    EXPECT_EQ(X[0].Im, 0) << length;

    std::vector<Wide> scaled = Widen(x);
    for (Wide& value : scaled) value.Re *= length;
    X[0].Im = 3;  // counts as zero
    if (length % 2 == 0) X[n / 2].Im = 3;
    plan->Inverse(X.data(), input.data());
    EXPECT_LT(ErrorInEps<TypeParam>(input.data(), scaled, n), 2 * Bound(length)) << length;
  }
}

TYPED_TEST(FftTest, ArraysMayLieAnywhere) {
  using C = ComplexOf<TypeParam>;
  for (const std::int32_t length : {64, 97, 1000}) {
    const auto n = static_cast<std::size_t>(length);
    const auto x = Noise<C>(n, 3);
    const auto want = Dft(Widen(x), -1);
    std::vector<TypeParam> in(2 * n + 32);
    std::vector<TypeParam> out(2 * n + 32);
    for (std::size_t offset = 0; offset < 16; ++offset) {
      C* const shifted_in = reinterpret_cast<C*>(in.data() + offset);
      C* const shifted_out = reinterpret_cast<C*>(out.data() + (7 * offset) % 16);
      std::copy(x.begin(), x.end(), shifted_in);
      ComplexPlan<TypeParam>::Get(length)->Forward(shifted_in, shifted_out);
      EXPECT_LT(ErrorInEps<TypeParam>(shifted_out, want, n), Bound(length)) << length << " at " << offset;

      std::vector<Wide> real = Widen(x);
      for (Wide& value : real) value.Im = 0;
      TypeParam* const samples = in.data() + offset;
      for (std::size_t i = 0; i < n; ++i) samples[i] = x[i].Re;
      const auto plan = RealPlan<TypeParam>::Get(length);
      plan->Forward(samples, shifted_out);
      EXPECT_LT(ErrorInEps<TypeParam>(shifted_out, Dft(real, -1), n / 2 + 1), Bound(length)) << length;
      plan->Inverse(shifted_out, samples);
      for (Wide& value : real) value.Re *= length;
      EXPECT_LT(ErrorInEps<TypeParam>(samples, real, n), 2 * Bound(length)) << length << " at " << offset;
    }
  }
}

TYPED_TEST(FftTest, OnePlanServesAllRequestsForItsLengthAndOutlivesTheCache) {
  const auto plan = RealPlan<TypeParam>::Get(48);
  EXPECT_EQ(plan, RealPlan<TypeParam>::Get(48));
  for (std::int32_t length = 1; length <= 300; ++length) EXPECT_EQ(RealPlan<TypeParam>::Get(length)->Length(), length);
  const auto x = Noise<TypeParam>(48, 4);
  std::vector<ComplexOf<TypeParam>> X(25);
  plan->Forward(x.data(), X.data());
  EXPECT_LT(ErrorInEps<TypeParam>(X.data(), Dft(Widen(x), -1), 25), Bound(48));
}

TYPED_TEST(FftTest, ThreadsGetAndExecuteAtTheSameTime) {
  using C = ComplexOf<TypeParam>;
  // Lengths nobody else asks for, so that the threads also plan at the same time; primes need work space.
  const std::vector<std::int32_t> lengths = {120, 127, 128, 211, 1021, 1024};
  std::vector<std::vector<C>> inputs;
  std::vector<std::vector<Wide>> wanted;
  for (const std::int32_t length : lengths) {
    inputs.push_back(Noise<C>(static_cast<std::size_t>(length), 5));
    wanted.push_back(Dft(Widen(inputs.back()), -1));
  }
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (std::size_t round = 0; round < 60; ++round) {
        const std::size_t i = (round + t) % lengths.size();
        std::vector<C> X(inputs[i].size());
        ComplexPlan<TypeParam>::Get(lengths[i])->Forward(inputs[i].data(), X.data());
        if (!(ErrorInEps<TypeParam>(X.data(), wanted[i], X.size()) < Bound(lengths[i]))) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace passband::fft
