// Blocks: large values outside the metadata, page-aligned, with a table of checksums of their
// chunks.
#pragma once

#include <vector>

#include "platform/kvtiff19/node.h"

namespace utdata::kvtiff19 {

/// Writes a block and its table to the end of a file being written; whole chunks of zeros stay
/// holes.
[[nodiscard]] int WriteBlock(OpenFile& file, Bytes data, BlockRef& block);

/// Reads and checks the checksums of a block's chunks.
[[nodiscard]] int ReadBlockTable(const OpenFile& file,
                                 const BlockRef& block,
                                 std::vector<std::uint64_t>& checksums);

/// Reads part of a block. Chunks that are read whole are verified. REQUIRES: the part lies within
/// the block.
[[nodiscard]] int ReadBlock(const OpenFile& file,
                            const BlockRef& block,
                            std::uint64_t from,
                            std::span<std::byte> buffer);

/// Maps a whole block for as long as the file is open, or until UnmapBlock.
[[nodiscard]] int MapBlock(OpenFile& file, const BlockRef& block, void** data);
[[nodiscard]] bool UnmapBlock(OpenFile& file, const void* data);

}  // namespace utdata::kvtiff19
