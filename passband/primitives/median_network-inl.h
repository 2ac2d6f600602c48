// Medians of short windows by networks of minima and maxima, each output in a lane of its own.
#if defined(PASSBAND_PRIMITIVES_MEDIAN_NETWORK_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_MEDIAN_NETWORK_INL_H_
#undef PASSBAND_PRIMITIVES_MEDIAN_NETWORK_INL_H_
#else
#define PASSBAND_PRIMITIVES_MEDIAN_NETWORK_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <utility>

#include "hwy/highway.h"
#include "passband/primitives/median_keys-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

// Two of the values, the smaller of which comes to be `low`.
struct Exchange {
  std::uint8_t low;
  std::uint8_t high;
};

// The exchanges after which the value in the middle is the median. Of 3 to 7 from Paeth, "Median finding on a 3 x 3 grid",
// Graphics Gems, 1990, of 9 from Smith, "Implementing median filters in XC4000E FPGAs", Xcell 23, 1996.
template <std::size_t kMask>
struct Network;
template <>
struct Network<3> {
  static constexpr Exchange kExchanges[] = {{0, 1}, {1, 2}, {0, 1}};
};
template <>
struct Network<5> {
  static constexpr Exchange kExchanges[] = {{0, 1}, {3, 4}, {0, 3}, {1, 4}, {1, 2}, {2, 3}, {1, 2}};
};
template <>
struct Network<7> {
  static constexpr Exchange kExchanges[] = {{0, 5}, {0, 3}, {1, 6}, {2, 4}, {0, 1}, {3, 5}, {2, 6},
                                            {2, 3}, {3, 6}, {4, 5}, {1, 4}, {1, 3}, {3, 4}};
};
template <>
struct Network<9> {
  static constexpr Exchange kExchanges[] = {{1, 2}, {4, 5}, {7, 8}, {0, 1}, {3, 4}, {6, 7}, {1, 2},
                                            {4, 5}, {7, 8}, {0, 3}, {5, 8}, {4, 7}, {3, 6}, {1, 4},
                                            {2, 5}, {4, 7}, {4, 2}, {6, 4}, {4, 2}};
};

// The medians of the windows that begin at line[0], line[1], ..
template <std::size_t kMask, class D, std::size_t... kStep>
HWY_INLINE hn::Vec<D> MedianOf(D d, const hn::TFromD<D>* line, std::index_sequence<kStep...>) {
  hn::Vec<D> x[kMask];
#pragma GCC unroll 9
  for (std::size_t k = 0; k < kMask; ++k) x[k] = hn::LoadU(d, line + k);
  const auto exchange = [&x](Exchange e) __attribute__((always_inline)) HWY_ATTR {
    const auto low = hn::Min(x[e.low], x[e.high]);
    x[e.high] = hn::Max(x[e.low], x[e.high]);
    x[e.low] = low;
  };
  (exchange(Network<kMask>::kExchanges[kStep]), ...);
  return x[kMask / 2];
}

// The medians of windows that end at line[0] .. line[count - 1].
template <class R, std::size_t kMask>
void ByNetwork(const KeyOf<R>* line, R* y, std::size_t count) {
  using Steps = std::make_index_sequence<sizeof(Network<kMask>::kExchanges) / sizeof(Exchange)>;
  const KeyOf<R>* const first = line - (kMask - 1);
  ToSamples(y, count, [first](auto d, std::size_t n) HWY_ATTR { return MedianOf<kMask>(d, first + n, Steps()); });
}

template <class R>
void ByNetwork(std::size_t mask, const KeyOf<R>* line, R* y, std::size_t count) {
  switch (mask) {
    case 1:
      return ToSamples(y, count, [line](auto d, std::size_t n) HWY_ATTR { return hn::LoadU(d, line + n); });
    case 3:
      return ByNetwork<R, 3>(line, y, count);
    case 5:
      return ByNetwork<R, 5>(line, y, count);
    case 7:
      return ByNetwork<R, 7>(line, y, count);
    default:
      return ByNetwork<R, 9>(line, y, count);
  }
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggled once per target
