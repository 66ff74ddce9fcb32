#include "platform/kvtiff19/block.h"

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

#include "interfaces/thread_safety.h"
#include "platform/kvtiff19/guard.h"
#include "platform/kvtiff19/reader.h"
#include "platform/kvtiff19/writer.h"

namespace utdata::kvtiff19 {
namespace {

using os::Error;

/// The sizes of all views, by address.
class ViewSizes {
 public:
  void Add(const void* data, std::uint64_t size) {
    const MutexScope lock(m_lock);
    m_sizes.emplace(data, size);
  }
  void Remove(const void* data) {
    const MutexScope lock(m_lock);
    m_sizes.erase(data);
  }
  bool Find(const void* data, std::uint64_t& size) {
    const MutexScope lock(m_lock);
    const auto found = m_sizes.find(data);
    if (found == m_sizes.end()) return false;
    size = found->second;
    return true;
  }

 private:
  Mutex m_lock;
  std::map<const void*, std::uint64_t> m_sizes UTDATA_GUARDED_BY(m_lock);
};

/// Never destroyed: a host's static objects may close files after the library's own have gone.
ViewSizes& AllViews() {
  static ViewSizes& views = *new ViewSizes;
  return views;
}

/// A view of a block, known to AllViews while it lasts. That of a block without bytes has an
/// address of its own, so that each view is unmapped once.
class View final : public os::Mapping {
 public:
  explicit View(std::unique_ptr<os::Mapping> mapping) : m_mapping(std::move(mapping)) {
    AllViews().Add(Data(), Size());
  }
  ~View() override { AllViews().Remove(Data()); }
  View(const View&) = delete;
  View& operator=(const View&) = delete;

  std::byte* Data() const noexcept override {
    return m_mapping ? m_mapping->Data() : const_cast<std::byte*>(&m_place);
  }
  std::size_t Size() const noexcept override { return m_mapping ? m_mapping->Size() : 0; }

 private:
  std::unique_ptr<os::Mapping> m_mapping;  ///< null: no bytes
  std::byte m_place{};
};

/// Writes bytes in chunks, all but those of zeros only, and gives back their checksums.
Error WriteChunks(OpenFile& file,
                  std::uint64_t offset,
                  Bytes data,
                  std::vector<std::uint64_t>& checksums) {
  constexpr std::size_t atOnce = std::size_t{1} << 20;
  std::size_t from = 0;  // of what is still to be written
  const auto writeTo = [&](std::size_t to) {
    const Bytes gathered = data.subspan(from, to - from);
    const Error error =
        gathered.empty() ? Error::None : file.handle->WriteAt(offset + from, gathered);
    from = to;
    return error;
  };
  for (std::size_t at = 0; at < data.size(); at += chunkSize) {
    const Bytes chunk = data.subspan(at, std::min<std::size_t>(chunkSize, data.size() - at));
    checksums.push_back(Checksum(chunk));
    const bool isHole = AllZero(chunk);
    if (isHole || at - from >= atOnce)
      if (const Error error = writeTo(at); error != Error::None) return error;
    if (isHole) from = at + chunk.size();
  }
  return writeTo(data.size());
}

std::string NameOf(const BlockRef& block) {
  return "block at byte " + std::to_string(block.offset);
}

int RefuseTable(const OpenFile& file, const BlockRef& block) {
  return FailAt(
      file, SCFile::status_Damaged, NameOf(block) + ": the checksum of its table does not match");
}

/// @param from of the chunk in the block
int RefuseChunk(const OpenFile& file, const BlockRef& block, std::uint64_t from) {
  return FailAt(file,
                SCFile::status_Damaged,
                NameOf(block) + ": the checksum of the chunk at byte " +
                    std::to_string(block.offset + from) + " does not match");
}

/// A table has a checksum for each chunk, hole or not, and writers leave no holes in it; a file
/// system may make some of its zeros.
int CheckTableClaim(const OpenFile& file, const BlockRef& block) {
  constexpr std::uint64_t alwaysFine = 1u << 20;
  const std::uint64_t size = block.TableSize();
  if (size <= alwaysFine) return SCFile::status_Ok;
  bool isStored = true;
  if (const Error error = file.handle->IsStored(block.tableOffset, size, size / 2, isStored);
      error != Error::None)
    return FailOs(file.path, error, "cannot be read");
  if (isStored) return SCFile::status_Ok;
  return FailAt(file,
                SCFile::status_Damaged,
                NameOf(block) + ": its table is larger than what is stored of it");
}

std::vector<std::byte> EncodeTable(const std::vector<std::uint64_t>& checksums) {
  std::vector<std::byte> table(checksums.size() * sizeof(std::uint64_t));
  for (std::size_t index = 0; index < checksums.size(); ++index)
    Store(table.data() + index * sizeof(std::uint64_t), checksums[index]);
  return table;
}

std::uint64_t ChecksumOfTable(const std::vector<std::uint64_t>& checksums) {
  if constexpr (std::endian::native == std::endian::little)
    return Checksum(std::as_bytes(std::span(checksums)));
  else
    return Checksum(EncodeTable(checksums));
}

}  // namespace

int WriteBlock(OpenFile& file, Bytes data, BlockRef& block) {
  block.offset = RoundUp(file.writeEnd, pageSize);
  block.size = data.size();
  if (block.size > std::uint64_t{std::numeric_limits<std::int64_t>::max()} - block.offset)
    return FailWrite(file, SCFile::status_TooLarge, "a block is larger than a file can be");
  std::vector<std::uint64_t> checksums;
  checksums.reserve(static_cast<std::size_t>(block.ChunkCount()));
  if (const Error error = WriteChunks(file, block.offset, data, checksums); error != Error::None)
    return FailWrite(file, error, "a block cannot be written");
  const std::vector<std::byte> table = EncodeTable(checksums);
  block.tableOffset = RoundUp(block.offset + block.size, 8);
  block.tableChecksum = Checksum(table);
  if (const Error error = file.handle->WriteAt(block.tableOffset, table); error != Error::None)
    return FailWrite(file, error, "a block cannot be written");
  file.writeEnd = block.tableOffset + table.size();
  return SCFile::status_Ok;
}

int FindBlock(const Node* group, std::uint32_t index, BlockRef& block) {
  if (!IsGroup(group)) return BadCall("not a group");
  if (group->state != NodeState::Committed || index >= group->itemCount)
    return FailAt(*group->file, SCFile::status_BadArgument, "no committed item has that index");
  const std::byte* item = ItemAt(*group, index);
  if (DecodeItemHeader(item).type != SCFile::value_Block)
    return FailAt(*group->file, SCFile::status_BadArgument, "the item is not a block");
  block = DecodeBlockRef(item + itemHeaderSize);
  return SCFile::status_Ok;
}

int ReadChecksums(const OpenFile& file,
                  const BlockRef& block,
                  std::vector<std::uint64_t>& checksums) {
  if (const int status = CheckTableClaim(file, block)) return status;
  checksums.resize(static_cast<std::size_t>(block.ChunkCount()));
  if (const int status =
          ReadWhole(file, block.tableOffset, std::as_writable_bytes(std::span(checksums))))
    return status;
  for (std::uint64_t& checksum : checksums)
    checksum = Load<std::uint64_t>(reinterpret_cast<const std::byte*>(&checksum));
  return SCFile::status_Ok;
}

int ReadBlockTable(const OpenFile& file,
                   const BlockRef& block,
                   std::vector<std::uint64_t>& checksums) {
  if (const int status = ReadChecksums(file, block, checksums)) return status;
  return ChecksumOfTable(checksums) == block.tableChecksum ? static_cast<int>(SCFile::status_Ok)
                                                           : RefuseTable(file, block);
}

int TableReader::ReadPiece() {
  constexpr std::uint64_t pieceSize = 1u << 16;
  m_offset = m_at;
  m_piece.resize(static_cast<std::size_t>(std::min(pieceSize, m_block.TableSize() - m_offset)));
  return ReadWhole(m_file, m_block.tableOffset + m_offset, m_piece);
}

int TableReader::Check() {
  if (const int status = CheckTableClaim(m_file, m_block)) return status;
  ChecksumStream checksum;
  for (m_at = 0; m_at < m_block.TableSize(); m_at += m_piece.size()) {
    if (const int status = ReadPiece()) return status;
    checksum.Add(m_piece);
  }
  m_at = m_offset = 0;
  m_piece.clear();
  return checksum.Value() == m_block.tableChecksum ? static_cast<int>(SCFile::status_Ok)
                                                   : RefuseTable(m_file, m_block);
}

int TableReader::Next(std::uint64_t& checksum) {
  if (m_at >= m_offset + m_piece.size())
    if (const int status = ReadPiece()) return status;
  checksum = Load<std::uint64_t>(m_piece.data() + (m_at - m_offset));
  m_at += sizeof checksum;
  return SCFile::status_Ok;
}

int CheckView(const OpenFile& file, const BlockRef& block, const void* view) {
  TableReader table(file, block);
  if (const int status = table.Check()) return status;
  const Bytes bytes(static_cast<const std::byte*>(view), static_cast<std::size_t>(block.size));
  for (std::uint64_t from = 0; from < block.size; from += block.chunk) {
    std::uint64_t checksum = 0;
    if (const int status = table.Next(checksum)) return status;
    const auto size = static_cast<std::size_t>(std::min(block.chunk, block.size - from));
    if (Checksum(bytes.subspan(static_cast<std::size_t>(from), size)) != checksum)
      return RefuseChunk(file, block, from);
  }
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
    if (Checksum(bytes) != checksums[static_cast<std::size_t>(chunk)])
      return RefuseChunk(file, block, start);
  }
  return SCFile::status_Ok;
}

bool BlockHolds(const OpenFile& file, const BlockRef& block, Bytes data, AsRead asRead) {
  if (block.size != data.size()) return false;
  std::vector<std::uint64_t> checksums;
  if (ReadBlockTable(file, block, checksums) != SCFile::status_Ok) return false;
  std::vector<std::byte> stored;
  for (std::size_t index = 0; index < checksums.size(); ++index) {
    const std::uint64_t start = index * block.chunk;
    const Bytes chunk =
        data.subspan(static_cast<std::size_t>(start),
                     static_cast<std::size_t>(std::min(block.chunk, block.size - start)));
    if (Checksum(chunk) == checksums[index]) continue;
    stored.resize(chunk.size());
    if (ReadWhole(file, block.offset + start, stored) != SCFile::status_Ok) return false;
    if (start == 0) asRead(stored);
    if (!std::equal(chunk.begin(), chunk.end(), stored.begin())) return false;
  }
  return true;
}

int MapBlock(OpenFile& file, const BlockRef& block, void** data) {
  if (block.size > std::numeric_limits<std::size_t>::max())
    return FailAt(file, SCFile::status_TooLarge, "a block is larger than the machine's memory");
  std::unique_ptr<os::Mapping> mapping;
  if (block.size != 0) {
    const Error error =
        file.handle->Map(block.offset, static_cast<std::size_t>(block.size), mapping);
    if (error != Error::None) return FailOs(file.path, error, "a block cannot be mapped");
  }
  file.mappings.push_back(std::make_unique<View>(std::move(mapping)));
  *data = file.mappings.back()->Data();
  return SCFile::status_Ok;
}

bool UnmapBlock(OpenFile& file, const void* data) {
  const auto isView = [&](const auto& mapping) { return mapping->Data() == data; };
  const auto found = std::find_if(file.mappings.begin(), file.mappings.end(), isView);
  if (found == file.mappings.end()) return false;
  file.mappings.erase(found);
  return true;
}

bool FindView(const void* data, std::uint64_t& size) { return AllViews().Find(data, size); }

}  // namespace utdata::kvtiff19
