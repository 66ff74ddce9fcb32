// Acquisition files: a scan recorded into one, and the blocks of a finished one, whose offsets were
// noted while they were recorded, handed over to an inspection.
//
// Used by one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "interfaces/os.h"
#include "utdata/inspection.h"

namespace utdata {

/// A finished acquisition file, mapped: what is changed in its blocks stays in this process. Moved,
/// never copied.
class UTDATA_API Recording {
 public:
  /// Throws Error when the file cannot be read or is no acquisition file: shorter than its header
  /// area, or with something in it.
  explicit Recording(const std::string& path);
  Recording(Recording&&) noexcept;
  Recording& operator=(Recording&&) noexcept;
  ~Recording();

  [[nodiscard]] const std::string& Path() const { return m_path; }
  [[nodiscard]] std::uint64_t Size() const { return m_mapping->Size(); }  ///< bytes

  // Data groups of blocks. Their samples stay in the recording, which must live as long as the
  // inspection. Throw Error, and change nothing, when the block does not lie in the file.

  /// Adds a data group of a block of A-scans, each block once: its index table, whose offsets count
  /// from the start of the recording, is turned to count from the start of the table.
  /// @param record layout and scaling; its storage mode is set here
  /// @param offset of the block's index table, bytes from the start of the file; a multiple of 4,
  ///               as that of every block but one saved right behind a C-scan of an odd number of
  ///               cells
  DataGroup AddAScans(Inspection& inspection, CGDataTypeFDD record, std::uint64_t offset);
  /// Adds a data group of a block of a C-scan: one 16-bit value for each cell.
  /// @param record layout and scaling, with samples of 2 bytes; its storage mode is set here
  /// @param offset bytes from the start of the file, even
  DataGroup AddCScan(Inspection& inspection, CGDataTypeFDD record, std::uint64_t offset);

 private:
  [[noreturn]] void Refuse(const std::string& why) const;
  [[nodiscard]] std::span<std::byte> Part(std::uint64_t offset,
                                          std::uint64_t size,
                                          const std::string& what) const;
  [[nodiscard]] std::span<std::byte> AScanBlock(const CGDataTypeFDD& record,
                                                std::uint64_t offset) const;

  std::string m_path;
  std::unique_ptr<os::Mapping> m_mapping;
  std::vector<std::uint64_t> m_relocated;  ///< places of the A-scan blocks that are handed over
};

/// What the instrument was set to: a grid of cells, and an A-scan of 16-bit samples in each.
struct ScanGrid {
  std::uint32_t columns = 0;
  std::uint32_t rows = 0;
  std::uint32_t samples = 0;
  double sampleStep = 0;  ///< s, two-way
};

/// What a gate of the instrument measured in each cell, in row-major order.
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

/// Writes an acquisition file as the host of an instrument does: a block of A-scans, and two C-scan
/// blocks of a gate. Throws Error, and leaves no file, when one cannot be made.
/// REQUIRES: no quantity of the grid is 0, and all spans have the elements that it says.
/// @param path    of a file that does not exist yet
/// @param samples one A-scan after the other, cells in row-major order
[[nodiscard]] UTDATA_API RecordedBlocks RecordScan(const std::string& path,
                                                   const ScanGrid& grid,
                                                   std::span<const std::int16_t> samples,
                                                   const InstrumentGate& gate,
                                                   const Watch& watch = {});

/// The A-scans of one beam, to be recorded as a block.
struct AScanBlock {
  ScanGrid grid;
  std::span<const std::int16_t> samples;  ///< one A-scan after the other, cells in row-major order
};

/// Writes an acquisition file of several blocks of A-scans, as the host of an instrument with many
/// beams does. Throws Error, and leaves no file, when one cannot be made.
/// REQUIRES: no quantity of a grid is 0, and all spans have the elements that it says.
/// @param path of a file that does not exist yet
/// @return where each block is, bytes from the start of the file
[[nodiscard]] UTDATA_API std::vector<std::uint64_t> RecordBeams(const std::string& path,
                                                                std::span<const AScanBlock> blocks,
                                                                const Watch& watch = {});

}  // namespace utdata
