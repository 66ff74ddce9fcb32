// The load that acquisition files are measured with: blocks of 512 A-scans of 1000 samples,
// appended until the file has 125 MB.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

namespace utdata::bench {

inline constexpr int kColumns = 64;
inline constexpr int kRows = 8;
inline constexpr int kCells = kColumns * kRows;
inline constexpr int kSamples = 1000;
inline constexpr std::int64_t kFileBytes = 125'000'000;

/// Blocks that make up the file, of samples of 1 or 2 bytes.
inline std::int64_t Blocks(int storageBytes) {
  return kFileBytes / (kCells * kSamples * storageBytes);
}

/// The samples of one block, cell by cell, one in 4 bytes as an instrument delivers them.
inline std::vector<std::int32_t> BlockSamples(int storageBytes) {
  std::vector<std::int32_t> samples(kCells * kSamples);
  const std::uint32_t mask = storageBytes == 1 ? 0xFF : 0xFFFF;
  for (std::size_t n = 0; n < samples.size(); ++n)
    samples[n] =
        static_cast<std::int32_t>((2654435761u * static_cast<std::uint32_t>(n + 1) >> 8) & mask);
  return samples;
}

/// Reports the stored bytes a second.
inline void PerStoredByte(benchmark::State& state, int storageBytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * Blocks(storageBytes) *
                          kCells * kSamples * storageBytes);
}

}  // namespace utdata::bench
