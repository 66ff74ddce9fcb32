// Writes a new acquisition file: blocks of A-scans and C-scans, stored straight into a mapping of
// the file.
//
// docs/acquisition-file.md draws the file; docs/hosting.md says how a host finds its blocks again
// and recovers a file after a crash. No lock: a writer is used by one thread. Several writers may
// be at work in several threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "interfaces/dorvex.h"
#include "interfaces/export.h"
#include "interfaces/os.h"

class UTDATA_API GDataManager {
 public:
  static constexpr std::uint64_t headerSize =
      Aurelis::MemoryData::fileHeaderSize;  ///< zeros before the first block
  // Statuses of FileCreate; any other but 0 is the platform's own number of an error (errno).
  static constexpr std::uint32_t status_TooLarge = 8;  ///< the estimate is above GetMaxAcqFileSize
  static constexpr std::uint32_t status_DiskTooSmall =
      0xC0380013;  ///< the estimate is above what is free on the disk
  // Results of the save operations for a block that was not saved.
  static constexpr std::uint32_t ascan_Refused = 0;
  static constexpr std::int64_t cscan_Refused = -1;

  /// A writer without a file. @param path of the file to be created
  explicit GDataManager(std::wstring path);
  GDataManager(const GDataManager&) = delete;
  GDataManager& operator=(const GDataManager&) = delete;
  /// FileClose.
  ~GDataManager();

  /// Creates the file, after closing the one before: it must not exist yet. Disk space for the
  /// estimated size is allocated, and the advisory lock is taken, by which others see that a writer
  /// is at work. Until FileClose the file is GetMaxAcqFileSize bytes long, most of them a hole.
  /// @param memory what will be saved; asked once for EstimateDataFileSize
  /// @return 0, or why there is no file. status_TooLarge and status_DiskTooSmall come before
  ///         anything is created. Of the platform's errors, one of creating the file leaves
  ///         whatever is at the path as it is; a later one leaves an empty file. Every failure but
  ///         that of creating the file sends a memory report to the debug trace, nine lines.
  [[nodiscard]] std::uint32_t FileCreate(const Aurelis::MemoryData& memory);

  /// Cuts the file to what was written and closes it. Nothing happens without a file. What is in
  /// the file survives this process; whether it survives the machine is up to the system, which
  /// writes it to the medium in its own time.
  /// @return 0, or the platform's error of positioning or cutting the file, which is closed all the
  ///         same. A file that could not be cut still has the length it had while it was open.
  std::uint32_t FileClose();

  /// Bytes of the largest acquisition file: the reserved size of the view manager.
  [[nodiscard]] std::uint64_t GetMaxAcqFileSize() const;
  /// Where the file is mapped: its first byte, GetMaxAcqFileSize of them; valid until FileClose.
  /// Null without a file.
  [[nodiscard]] const std::byte* GetMapViewOfFile() const { return m_view; }
  /// Bytes from the start of the file that hold the header area and all saved blocks: FileClose
  /// cuts here. Keeps its value after FileClose; 0 before the first creation and after a failed
  /// one. A host that notes it after each save can recover the file when the process is killed.
  [[nodiscard]] std::uint64_t GetWrittenSize() const { return m_writePosition; }

  /// Appends an A-scan block: a table of the A-scans' offsets, then their samples, each the low 8
  /// or 16 bits of its element.
  /// @param buffer read during the call only; its operations must not throw. A cell without an
  ///               A-scan, or with one that has no samples to point to, gets the offset 0.
  /// @return offset of the table in the file; ascan_Refused, and nothing is written, when there is
  ///         no file, the grid has no cell, the block does not fit the mapped size or the disk has
  ///         no room for it
  /// @throws std::runtime_error "Pas les bons bits." for a storage that is neither 1 nor 2 bytes.
  ///         The table, all zero, has been appended then; the writer can be used on.
  [[nodiscard]] std::uint32_t SavePatchBuffer(const utdata::AscanPatchBuffer& buffer);
  /// Appends a C-scan block, at the next multiple of 4: one field of every cell, its low 16 bits.
  /// @param buffer read during the call only; its operations must not throw
  /// @param field  of the record, as &utdata::CscanRecord::amplitude
  /// @return offset of the first value in the file; cscan_Refused, and nothing is written, for a
  ///         null field and when SavePatchBuffer would refuse
  [[nodiscard]] std::int64_t SaveCscanBuffer(const utdata::CscanPatchBuffer& buffer,
                                             int utdata::CscanRecord::*field);

 private:
  [[nodiscard]] static std::uint64_t GetFreeSpaceDiskAvailable(const std::wstring& path);
  [[nodiscard]] std::uint32_t OpenAndMap(std::uint64_t size, bool& isOpen);
  [[nodiscard]] utdata::os::Error Allocate(std::uint64_t end);
  [[nodiscard]] bool MakeRoom(std::uint64_t bytes);

  std::unique_ptr<utdata::os::File> m_file;            ///< null without a file
  std::unique_ptr<utdata::os::FileMapping> m_mapping;  ///< of the whole file
  std::byte* m_view = nullptr;                         ///< start of the file in memory
  std::uint64_t m_fileSize = 0;                        ///< estimated; 0 after a failed creation
  std::wstring m_path;
  std::uint64_t m_writePosition = 0;  ///< offset where the next block goes
  std::uint64_t m_mappedSize = 0;
  std::uint64_t m_allocated =
      0;  ///< the disk has room for the file up to here, at least to the write position
};
