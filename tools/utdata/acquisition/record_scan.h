// Records a scan into an acquisition file, as the host of an instrument does.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace utdata::program {

/// What the instrument was set to: a grid of cells, and an A-scan of 16-bit samples in each.
struct ScanGrid {
  std::uint32_t columns = 0;
  std::uint32_t rows = 0;
  std::uint32_t samples = 0;
  double sampleStep = 0;  ///< s, two-way
};

/// What a gate of the instrument saw in each cell, in row-major order.
struct InstrumentGate {
  std::uint32_t gateId = 0;
  std::span<const std::uint16_t> amplitudes;
  std::span<const std::uint16_t> positions;  ///< sample indices
};

/// Where the blocks of a recorded scan are: bytes from the start of the file.
struct RecordedBlocks {
  std::uint64_t ascans = 0;
  std::uint64_t amplitudes = 0;
  std::uint64_t positions = 0;
  std::uint64_t size = 0;  ///< of the file
};

/// Writes an acquisition file: a block of A-scans, and two C-scan blocks of a gate.
/// @param path    of a file that does not exist yet
/// @param samples one A-scan after the other, cells in row-major order
/// Throws Failure, and leaves no file, when one cannot be made; throws Interrupted.
[[nodiscard]] RecordedBlocks RecordScan(const std::string& path,
                                        const ScanGrid& grid,
                                        std::span<const std::int16_t> samples,
                                        const InstrumentGate& gate);

}  // namespace utdata::program
