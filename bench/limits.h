// What the core can do at best, as a peer in benchmarks: rows with `;against=limit` in their params have it.
#pragma once

#include <hwy/targets.h>

#include <cmath>
#include <type_traits>

namespace passband::bench {

/// True where MultiplyAdds measures something: x86 with fused multiply-adds.
inline bool HasMultiplyAdds() {
#if defined(__x86_64__)
  return (hwy::SupportedTargets() & (HWY_AVX2 | HWY_AVX3)) != 0;
#else
  return false;
#endif
}

/// Makes `count` independent multiply-adds of elements R in the widest vectors, at full throughput, and nothing else.
template <class R>
void MultiplyAdds(double count) {
  static_assert(std::is_floating_point_v<R>);
#if defined(__x86_64__)
  constexpr long kChains = 10;  // more than latency times throughput
  static const bool wide = (hwy::SupportedTargets() & HWY_AVX3) != 0;
  const double lanes = (wide ? 64.0 : 32.0) / sizeof(R);
  const long turns = std::lround(std::ceil(count / lanes / kChains));
  if (wide) {
    for (long i = 0; i < turns; ++i) {
      asm volatile(
          "vfmadd231ps %%zmm14,%%zmm14,%%zmm0\n vfmadd231ps %%zmm14,%%zmm14,%%zmm1\n"
          "vfmadd231ps %%zmm14,%%zmm14,%%zmm2\n vfmadd231ps %%zmm14,%%zmm14,%%zmm3\n"
          "vfmadd231ps %%zmm14,%%zmm14,%%zmm4\n vfmadd231ps %%zmm14,%%zmm14,%%zmm5\n"
          "vfmadd231ps %%zmm14,%%zmm14,%%zmm6\n vfmadd231ps %%zmm14,%%zmm14,%%zmm7\n"
          "vfmadd231ps %%zmm14,%%zmm14,%%zmm8\n vfmadd231ps %%zmm14,%%zmm14,%%zmm9\n" ::
              : "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9");
    }
  } else {
    for (long i = 0; i < turns; ++i) {
      asm volatile(
          "vfmadd231ps %%ymm14,%%ymm14,%%ymm0\n vfmadd231ps %%ymm14,%%ymm14,%%ymm1\n"
          "vfmadd231ps %%ymm14,%%ymm14,%%ymm2\n vfmadd231ps %%ymm14,%%ymm14,%%ymm3\n"
          "vfmadd231ps %%ymm14,%%ymm14,%%ymm4\n vfmadd231ps %%ymm14,%%ymm14,%%ymm5\n"
          "vfmadd231ps %%ymm14,%%ymm14,%%ymm6\n vfmadd231ps %%ymm14,%%ymm14,%%ymm7\n"
          "vfmadd231ps %%ymm14,%%ymm14,%%ymm8\n vfmadd231ps %%ymm14,%%ymm14,%%ymm9\n" ::
              : "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9");
    }
  }
#else
  static_cast<void>(count);
#endif
}

}  // namespace passband::bench
