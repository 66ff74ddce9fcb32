// Values and blocks of groups: read and written.
#include <algorithm>
#include <limits>

#include "platform/kvtiff19/block.h"
#include "platform/kvtiff19/guard.h"
#include "platform/kvtiff19/text.h"

namespace utdata::kvtiff19 {
namespace {

int ReadText(const Node& group, std::string_view utf8, wchar_t* buffer, std::uint32_t& count) {
  const std::size_t length = WideLength(utf8).value_or(0) + 1;
  if (length > count)
    return FailAt(*group.file, SCFile::status_BufferTooSmall, "the buffer does not hold the text");
  CopyWide(utf8, {buffer, length});
  count = static_cast<std::uint32_t>(length);
  return SCFile::status_Ok;
}

int ReadValue(const Node& group,
              std::uint32_t index,
              std::uint32_t valueType,
              void* buffer,
              std::uint32_t& count) {
  if (group.state != NodeState::Committed || index >= group.itemCount)
    return FailAt(*group.file, SCFile::status_BadArgument, "no committed item has that index");
  const std::byte* item = ItemAt(group, index);
  const ItemHeader header = DecodeItemHeader(item);
  if (header.type != valueType || valueType == 0 || valueType == SCFile::value_Block)
    return FailAt(*group.file, SCFile::status_BadArgument, "the item has another value type");
  const std::byte* data = item + itemHeaderSize;
  if (valueType == SCFile::value_Text)
    return ReadText(group,
                    {reinterpret_cast<const char*>(data), header.count},
                    static_cast<wchar_t*>(buffer),
                    count);
  if (header.count > count)
    return FailAt(*group.file, SCFile::status_BufferTooSmall, "the buffer does not hold the value");
  CopyNumbers(static_cast<std::byte*>(buffer), data, header.count, ElementSize(valueType));
  count = header.count;
  return SCFile::status_Ok;
}

int WriteText(Node& group, std::uint16_t code, std::wstring_view text) {
  if (text.empty() || text.back() != L'\0')
    return FailWrite(*group.file, SCFile::status_BadArgument, "a text has no terminator");
  text.remove_suffix(1);
  std::string utf8;
  if (!AppendUtf8(utf8, text))
    return FailWrite(
        *group.file, SCFile::status_BadText, "a text holds something that is not a character");
  if (utf8.size() > maxBodySize)
    return FailWrite(
        *group.file, SCFile::status_TooLarge, "a text is larger than the format allows");
  return AppendStored(group,
                      code,
                      SCFile::value_Text,
                      static_cast<std::uint32_t>(utf8.size()),
                      std::as_bytes(std::span(utf8)));
}

int WriteValue(Node& group,
               std::uint32_t code,
               std::uint32_t valueType,
               std::uint32_t count,
               const void* data) {
  OpenFile& file = *group.file;
  const std::size_t size = ElementSize(valueType);
  if (group.state != NodeState::Pending || code > 0xFFFF || size == 0 ||
      valueType == SCFile::value_Block || (!data && count > 0))
    return FailWrite(file, SCFile::status_BadArgument, "a value cannot be written like this");
  const auto itemCode = static_cast<std::uint16_t>(code);
  if (valueType == SCFile::value_Text)
    return WriteText(group, itemCode, {static_cast<const wchar_t*>(data), count});
  const Bytes bytes(static_cast<const std::byte*>(data), count * size);
  if constexpr (std::endian::native == std::endian::little)
    return AppendStored(group, itemCode, static_cast<std::uint8_t>(valueType), count, bytes);
  std::vector<std::byte> stored(bytes.size());
  CopyNumbers(stored.data(), bytes.data(), count, size);
  return AppendStored(group, itemCode, static_cast<std::uint8_t>(valueType), count, stored);
}

}  // namespace
}  // namespace utdata::kvtiff19

using namespace utdata::kvtiff19;

namespace SCFile {

int file_IndexValueRead(const Node* group,
                        std::uint32_t index,
                        std::uint32_t valueType,
                        void* buffer,
                        std::uint32_t* count) {
  if (!IsGroup(group) || !count || (!buffer && *count > 0)) return BadCall("no group or no buffer");
  return Guarded([&] { return ReadValue(*group, index, valueType, buffer, *count); });
}

int file_ItemValueWrite(GroupHandle group,
                        std::uint32_t itemCode,
                        std::uint32_t valueType,
                        std::uint32_t count,
                        const void* data) {
  if (!IsGroup(group)) return BadCall("not a group");
  return Guarded([&] { return WriteValue(*group, itemCode, valueType, count, data); }, group->file);
}

int file_BlockWrite(GroupHandle group,
                    std::uint32_t itemCode,
                    std::uint64_t size,
                    const void* data) {
  if (!IsGroup(group)) return BadCall("not a group");
  OpenFile& file = *group->file;
  const auto write = [&] {
    if (!group->pending || itemCode > 0xFFFF || (!data && size > 0) ||
        size > std::numeric_limits<std::size_t>::max())
      return FailWrite(file, status_BadArgument, "a block cannot be written like this");
    BlockRef block;
    if (const int status = WriteBlock(
            file, {static_cast<const std::byte*>(data), static_cast<std::size_t>(size)}, block))
      return status;
    return AppendStored(
        *group, static_cast<std::uint16_t>(itemCode), value_Block, 1, EncodeBlockRef(block));
  };
  return Guarded(write, &file);
}

int file_BlockInfo(const Node* group,
                   std::uint32_t index,
                   std::uint64_t* offset,
                   std::uint64_t* size) {
  return Guarded([&] {
    BlockRef block;
    if (const int status = FindBlock(group, index, block)) return status;
    Give(offset, block.offset);
    Give(size, block.size);
    return static_cast<int>(status_Ok);
  });
}

int file_BlockRead(const Node* group,
                   std::uint32_t index,
                   std::uint64_t from,
                   std::uint64_t size,
                   void* buffer) {
  return Guarded([&] {
    BlockRef block;
    if (const int status = FindBlock(group, index, block)) return status;
    if (from > block.size || size > block.size - from || (!buffer && size > 0))
      return FailAt(*group->file, status_BadArgument, "the part lies outside the block");
    return ReadBlock(*group->file,
                     block,
                     from,
                     {static_cast<std::byte*>(buffer), static_cast<std::size_t>(size)});
  });
}

int file_BlockMap(Node* group, std::uint32_t index, void** data) {
  if (!data) return BadCall("no place for the view");
  *data = nullptr;
  return Guarded([&] {
    BlockRef block;
    if (const int status = FindBlock(group, index, block)) return status;
    return MapBlock(*group->file, block, data);
  });
}

int file_BlockUnmap(FileHandle file, void* data) {
  if (!IsFile(file)) return BadCall("not a file");
  return UnmapBlock(*file->file, data)
             ? status_Ok
             : FailAt(*file->file, status_BadArgument, "no view starts there");
}

bool file_ViewSize(const void* data, std::uint64_t* size) noexcept {
  std::uint64_t found = 0;
  if (!FindView(data, found)) return false;
  Give(size, found);
  return true;
}

int file_BlockChunks(const Node* group, std::uint32_t index, BlockChunks* chunks) {
  if (!chunks) return BadCall("no place for the checksums");
  return Guarded([&] {
    BlockRef block;
    if (const int status = FindBlock(group, index, block)) return status;
    *chunks = {block.size, block.chunk, {}};
    return ReadChecksums(*group->file, block, chunks->checksums);
  });
}

bool file_IsChunkWhole(const BlockChunks& chunks, std::uint64_t index, const void* block) noexcept {
  const std::uint64_t from = index * chunks.chunk;
  const std::uint64_t size = std::min(chunks.chunk, chunks.size - from);
  const Bytes chunk(static_cast<const std::byte*>(block) + from, static_cast<std::size_t>(size));
  return Checksum(chunk) == chunks.checksums[static_cast<std::size_t>(index)];
}

}  // namespace SCFile
