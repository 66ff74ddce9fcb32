// Blocks: large values outside the metadata, page-aligned, with a table of checksums of their
// chunks.
#pragma once

#include <vector>

#include "platform/kvtiff19/node.h"

namespace utdata::kvtiff19 {

/// Writes a block and its table to the end of a file being written; whole chunks of zeros stay
/// holes.
[[nodiscard]] int WriteBlock(OpenFile& file, Bytes data, BlockRef& block);

/// The block at an index of a committed group.
[[nodiscard]] int FindBlock(const Node* group, std::uint32_t index, BlockRef& block);

/// Reads the checksums of a block's chunks, and does not check them. A few bytes can claim a table
/// of any size: one that is not stored is refused before memory is asked for.
[[nodiscard]] int ReadChecksums(const OpenFile& file,
                                const BlockRef& block,
                                std::vector<std::uint64_t>& checksums);
/// The same, and checks them.
[[nodiscard]] int ReadBlockTable(const OpenFile& file,
                                 const BlockRef& block,
                                 std::vector<std::uint64_t>& checksums);

/// A block's checksums in order, a piece of them in memory at a time.
class TableReader {
 public:
  TableReader(const OpenFile& file, const BlockRef& block) : m_file(file), m_block(block) {}
  /// Checks the whole table.
  [[nodiscard]] int Check();
  /// Reads the checksum of the next chunk. REQUIRES: there is one.
  [[nodiscard]] int Next(std::uint64_t& checksum);

 private:
  [[nodiscard]] int ReadPiece();

  const OpenFile& m_file;
  const BlockRef& m_block;
  std::vector<std::byte> m_piece;
  std::uint64_t m_offset = 0;  ///< of the piece in the table
  std::uint64_t m_at = 0;      ///< of the next checksum in the table
};

/// Checks every chunk of a block against the bytes of a view of it.
[[nodiscard]] int CheckView(const OpenFile& file, const BlockRef& block, const void* view);

/// Reads part of a block. Chunks that are read whole are verified. REQUIRES: the part lies within
/// the block.
[[nodiscard]] int ReadBlock(const OpenFile& file,
                            const BlockRef& block,
                            std::uint64_t from,
                            std::span<std::byte> buffer);

/// Makes of a block's first bytes what its readers take them for.
using AsRead = void (*)(std::span<std::byte> start);

/// Whether a block holds exactly these bytes, by the checksums of its chunks. A chunk whose
/// checksum does not match is read and compared: the bytes may come from it all the same, when it
/// is damaged on disk or has a start that readers change.
[[nodiscard]] bool BlockHolds(const OpenFile& file,
                              const BlockRef& block,
                              Bytes data,
                              AsRead asRead);

/// Maps a whole block for as long as the file is open, or until UnmapBlock.
[[nodiscard]] int MapBlock(OpenFile& file, const BlockRef& block, void** data);
[[nodiscard]] bool UnmapBlock(OpenFile& file, const void* data);
/// The size of the view that starts at an address, of whatever file; false when none does. Any
/// thread.
[[nodiscard]] bool FindView(const void* data, std::uint64_t& size);

}  // namespace utdata::kvtiff19
