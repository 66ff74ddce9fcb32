// The ways a bulk loop can run on this machine: plain C++, or vector instructions that not every
// machine has.
//
// A source that holds such loops compiles each for its instructions (UTDATA_TARGET_AVX2), where
// UTDATA_HAS_AVX2 says that it can.
#pragma once

#include <cstdint>

#if defined(__x86_64__) && defined(__GNUC__)
#define UTDATA_HAS_AVX2 1
#define UTDATA_TARGET_AVX2 __attribute__((target("avx2")))
#endif

namespace utdata {

enum class VectorPath : std::uint8_t { Portable, Avx2 };

/// Whether this machine can run a path.
[[nodiscard]] inline bool IsPathAvailable(VectorPath path) noexcept {
  if (path == VectorPath::Portable) return true;
#if defined(UTDATA_HAS_AVX2)
  return __builtin_cpu_supports("avx2") != 0;
#else
  return false;
#endif
}

/// The fastest path of this machine.
[[nodiscard]] inline VectorPath FastestPath() noexcept {
  static const VectorPath path =
      IsPathAvailable(VectorPath::Avx2) ? VectorPath::Avx2 : VectorPath::Portable;
  return path;
}

}  // namespace utdata
