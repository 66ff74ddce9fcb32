// Reads finished acquisition files: finds the blocks whose offsets were noted while they were
// recorded, and hands them over to an inspection.
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

}  // namespace utdata
