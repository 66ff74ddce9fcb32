#include "platform/kvtiff19/block.h"

#include <algorithm>
#include <limits>

#include "platform/kvtiff19/items.h"
#include "platform/kvtiff19/reader.h"
#include "platform/kvtiff19/writer.h"

namespace utdata::kvtiff19 {
namespace {

using os::Error;

/// The view of a block without bytes: an address of its own, so that each view is unmapped once.
class EmptyMapping final : public os::Mapping {
 public:
  std::byte* Data() const noexcept override { return const_cast<std::byte*>(&m_place); }
  std::size_t Size() const noexcept override { return 0; }

 private:
  std::byte m_place{};
};

/// Writes one chunk unless it is all zeros, and returns its checksum.
Error WriteChunk(OpenFile& file, std::uint64_t offset, Bytes chunk, std::uint64_t& checksum) {
  checksum = Checksum(chunk);
  return AllZero(chunk) ? Error::None : file.handle->WriteAt(offset, chunk);
}

std::vector<std::byte> EncodeTable(const std::vector<std::uint64_t>& checksums) {
  std::vector<std::byte> table(checksums.size() * sizeof(std::uint64_t));
  for (std::size_t index = 0; index < checksums.size(); ++index)
    Store(table.data() + index * sizeof(std::uint64_t), checksums[index]);
  return table;
}

}  // namespace

int WriteBlock(OpenFile& file, Bytes data, BlockRef& block) {
  block.offset = RoundUp(file.writeEnd, pageSize);
  block.size = data.size();
  if (block.size > std::uint64_t{std::numeric_limits<std::int64_t>::max()} - block.offset)
    return FailWrite(file, SCFile::status_TooLarge, "a block is larger than a file can be");
  std::vector<std::uint64_t> checksums(static_cast<std::size_t>(block.ChunkCount()));
  for (std::size_t index = 0; index < checksums.size(); ++index) {
    const std::size_t from = index * static_cast<std::size_t>(chunkSize);
    const Bytes chunk = data.subspan(from, std::min<std::size_t>(chunkSize, data.size() - from));
    if (const Error error = WriteChunk(file, block.offset + from, chunk, checksums[index]);
        error != Error::None)
      return FailWrite(file, error, "a block cannot be written");
  }
  const std::vector<std::byte> table = EncodeTable(checksums);
  block.tableOffset = RoundUp(block.offset + block.size, 8);
  block.tableChecksum = Checksum(table);
  if (const Error error = file.handle->WriteAt(block.tableOffset, table); error != Error::None)
    return FailWrite(file, error, "a block cannot be written");
  file.writeEnd = block.tableOffset + table.size();
  return SCFile::status_Ok;
}

int ReadBlockTable(const OpenFile& file,
                   const BlockRef& block,
                   std::vector<std::uint64_t>& checksums) {
  std::vector<std::byte> table(static_cast<std::size_t>(block.TableSize()));
  if (const int status = ReadWhole(file, block.tableOffset, table)) return status;
  if (Checksum(table) != block.tableChecksum) {
    const std::string what = "block at byte " + std::to_string(block.offset) +
                             ": the checksum of its table does not match";
    return FailAt(file, SCFile::status_Damaged, what);
  }
  checksums.resize(table.size() / sizeof(std::uint64_t));
  for (std::size_t index = 0; index < checksums.size(); ++index)
    checksums[index] = Load<std::uint64_t>(table.data() + index * sizeof(std::uint64_t));
  return SCFile::status_Ok;
}

int ReadBlock(const OpenFile& file,
              const BlockRef& block,
              std::uint64_t from,
              std::span<std::byte> buffer) {
  if (const int status = ReadWhole(file, block.offset + from, buffer)) return status;
  const std::uint64_t to = from + buffer.size();
  const std::uint64_t firstWhole = from / block.chunk + (from % block.chunk != 0);
  const std::uint64_t endWhole = to == block.size ? block.ChunkCount() : to / block.chunk;
  if (firstWhole >= endWhole) return SCFile::status_Ok;
  std::vector<std::uint64_t> checksums;
  if (const int status = ReadBlockTable(file, block, checksums)) return status;
  for (std::uint64_t chunk = firstWhole; chunk < endWhole; ++chunk) {
    const std::uint64_t start = chunk * block.chunk;
    const Bytes bytes =
        Bytes(buffer).subspan(static_cast<std::size_t>(start - from),
                              static_cast<std::size_t>(std::min(block.chunk, block.size - start)));
    if (Checksum(bytes) == checksums[static_cast<std::size_t>(chunk)]) continue;
    const std::string what = "block at byte " + std::to_string(block.offset) +
                             ": the checksum of the chunk at byte " +
                             std::to_string(block.offset + start) + " does not match";
    return FailAt(file, SCFile::status_Damaged, what);
  }
  return SCFile::status_Ok;
}

int MapBlock(OpenFile& file, const BlockRef& block, void** data) {
  if (block.size > std::numeric_limits<std::size_t>::max())
    return FailAt(file, SCFile::status_TooLarge, "a block is larger than the machine's memory");
  std::unique_ptr<os::Mapping> mapping;
  if (block.size == 0) {
    mapping = std::make_unique<EmptyMapping>();
  } else if (const Error error =
                 file.handle->Map(block.offset, static_cast<std::size_t>(block.size), mapping);
             error != Error::None) {
    return FailOs(file.path, error, "a block cannot be mapped");
  }
  *data = mapping->Data();
  file.mappings.push_back(std::move(mapping));
  return SCFile::status_Ok;
}

bool UnmapBlock(OpenFile& file, const void* data) {
  const auto isView = [&](const auto& mapping) { return mapping->Data() == data; };
  const auto found = std::find_if(file.mappings.begin(), file.mappings.end(), isView);
  if (found == file.mappings.end()) return false;
  file.mappings.erase(found);
  return true;
}

}  // namespace utdata::kvtiff19
