// Reads acquisition files: finds the blocks again whose offsets were noted while they were
// recorded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "interfaces/kvtiff19.h"
#include "interfaces/os.h"

namespace utdata::program {

/// The blocks of a finished acquisition file, mapped: what is changed in them stays in this
/// process. Used by one thread.
class AcquisitionFile {
 public:
  /// Throws Failure when the file cannot be read or is no acquisition file: shorter than its header
  /// area, or with something in it.
  explicit AcquisitionFile(const std::string& path);

  [[nodiscard]] std::uint64_t Size() const { return m_mapping->Size(); }

  /// The A-scan block at an offset: its index table, and the A-scans that the table leads to.
  /// @param offset bytes from the start of the file; a multiple of 4, as it is for every block that
  ///               is not saved right behind a C-scan of an odd number of cells
  /// @param cells  of its grid
  /// @param bytes  of one A-scan's samples
  /// Throws Failure when the block does not lie in the file, or the table leads out of it.
  [[nodiscard]] std::span<std::byte> AscanBlock(std::uint64_t offset,
                                                std::uint64_t cells,
                                                std::uint64_t bytes) const;

  /// The C-scan block at an offset: one 16-bit value for each cell.
  /// @param offset bytes from the start of the file, a multiple of 4
  /// Throws Failure when it does not lie in the file.
  [[nodiscard]] std::span<const std::uint16_t> CscanBlock(std::uint64_t offset,
                                                          std::uint64_t cells) const;

  /// Gives a data group an A-scan block for its samples: the offsets of the block's table, which
  /// count from the start of the acquisition file, are turned to count from the table.
  /// @param group an A-scan data group with the block's grid; its storage mode, data pointer and
  ///              data size are set. The block stays this file's
  void HandOver(std::span<std::byte> block, CGDataTypeFDD& group) const;

 private:
  [[noreturn]] void Refuse(const std::string& why) const;
  [[nodiscard]] std::span<std::byte> Part(std::uint64_t offset,
                                          std::uint64_t size,
                                          const char* what) const;

  std::string m_path;
  std::unique_ptr<os::Mapping> m_mapping;
};

}  // namespace utdata::program
