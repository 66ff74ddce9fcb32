// Samples to and from the blocks of data groups.
#include "platform/kvtiff19/families/data_samples.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "platform/kvtiff19/block.h"
#include "platform/kvtiff19/families/data_table.h"

namespace utdata::kvtiff19 {
namespace {

bool HasBlock(const CGDataTypeFDD& record) {
  return record.samples.group && record.samples.offset != gdata_typeSampleRef::none;
}

int FailWrite(SCFile::Node& group, int status) {
  MarkFailed(group, status);
  return status;
}

/// Checks and writes what is mapped, so that what is written is what was checked.
int CheckAndWrite(SCFile::Node& group, const gdata_typeSampleRef& samples, const void* data) {
  BlockRef block;
  int status = FindBlock(samples.group, samples.item, block);
  if (status == SCFile::status_Ok) status = CheckView(*samples.group->file, block, data);
  if (status != SCFile::status_Ok) return FailWrite(group, status);
  return SCFile::file_BlockWrite(&group, sampleBlockCode, samples.size, data);
}

/// Copies a block from its file into `group`. Samples that are damaged where they lie are refused:
/// a copy would get good checksums.
int CopyBlock(SCFile::Node& group, const gdata_typeSampleRef& block) {
  void* data = nullptr;
  if (const int status = SCFile::file_BlockMap(block.group, block.item, &data);
      status != SCFile::status_Ok)
    return FailWrite(group, status);
  const int status = CheckAndWrite(group, block, data);
  const int unmapped = SCFile::file_BlockUnmap(SCFile::file_OfGroup(block.group), data);
  return status != SCFile::status_Ok ? status : unmapped;
}

void ClearOldHeader(std::span<std::byte> start) {
  std::fill_n(start.begin(), gdata_OldHeaderSize(start.data(), start.size()), std::byte{});
}

bool SizeInMemory(const CGDataTypeFDD& record, std::uint64_t& size) {
  size = record.dataSize;
  return size != 0 || SCFile::file_ViewSize(record.dataPointer, &size) || record.LayoutSize(size);
}

/// Whether a block on disk has what the record's data pointer leads to. That of the base is in an
/// open file; it may have been written by the same commit as the base, or not yet.
bool HoldsBlock(const CGDataTypeFDD& base, const void* data, std::uint64_t size) {
  BlockRef block;
  if (!HasBlock(base) ||
      FindBlock(base.samples.group, base.samples.item, block) != SCFile::status_Ok)
    return false;
  return BlockHolds(*base.samples.group->file,
                    block,
                    {static_cast<const std::byte*>(data), static_cast<std::size_t>(size)},
                    ClearOldHeader);
}

int WriteMemory(SCFile::Node& group, const CGDataTypeFDD* base, const CGDataTypeFDD& record) {
  if (base && !base->GetGroupHandle() && base->dataPointer == record.dataPointer)
    return SCFile::status_Ok;
  std::uint64_t size = 0;
  if (!SizeInMemory(record, size)) {
    MarkFailed(group, SCFile::status_BadArgument);
    return Fail(SCFile::status_BadArgument,
                "the size of a data group's samples is neither given nor known from its layout");
  }
  if (base && HoldsBlock(*base, record.dataPointer, size)) return SCFile::status_Ok;
  return SCFile::file_BlockWrite(&group, sampleBlockCode, size, record.dataPointer);
}

}  // namespace

bool ReferToBlock(SCFile::GroupHandle group,
                  const StoredItem& item,
                  std::uint32_t index,
                  gdata_typeSampleRef& samples) {
  if (item.type != SCFile::value_Block) return false;
  const BlockRef block = DecodeBlockRef(item.data.data());
  samples = {block.offset, block.size, group, index};
  return true;
}

int WriteSamples(SCFile::Node& group, const CGDataTypeFDD* base, const CGDataTypeFDD& record) {
  if (gdata_IsTable(record.dataPointer)) return WriteMemory(group, base, record);
  if (!base && HasBlock(record)) return CopyBlock(group, record.samples);
  return SCFile::status_Ok;
}

}  // namespace utdata::kvtiff19

using namespace utdata::kvtiff19;

std::uint64_t gdata_OldHeaderSize(const void* samples, std::uint64_t size) {
  constexpr std::uint64_t oldHeaderSize = 36;
  constexpr std::uint16_t marks[] = {0x3344, 0x5553};
  if (!samples || size < oldHeaderSize) return 0;
  const auto* word = static_cast<const std::byte*>(samples);
  for (const std::uint16_t mark : marks) {
    std::uint32_t value = 0;
    std::memcpy(&value, word, sizeof value);
    if ((value & 0xFFFFu) != mark) return 0;
    word += sizeof value;
  }
  return oldHeaderSize;
}

int gdata_SamplesMap(const CGDataTypeFDD* descriptor, void** data, std::uint64_t* size) {
  if (!descriptor || !data || !size)
    return Fail(SCFile::status_BadArgument, "no descriptor, or nowhere to put its samples");
  if (!HasBlock(*descriptor))
    return Fail(SCFile::status_NotFound, "the data group has no samples on disk");
  const int status =
      SCFile::file_BlockMap(descriptor->samples.group, descriptor->samples.item, data);
  if (status == SCFile::status_Ok) *size = descriptor->samples.size;
  return status;
}

int gdata_SamplesRead(const CGDataTypeFDD* descriptor, std::byte** data, std::uint64_t* size) {
  if (!descriptor || !data || !size)
    return Fail(SCFile::status_BadArgument, "no descriptor, or nowhere to put its samples");
  if (!HasBlock(*descriptor))
    return Fail(SCFile::status_NotFound, "the data group has no samples on disk");
  const gdata_typeSampleRef& block = descriptor->samples;
  if (block.size > std::numeric_limits<std::size_t>::max() / 2)
    return Fail(SCFile::status_TooLarge, "the samples do not fit the memory of this process");
  std::unique_ptr<std::byte[]> bytes(new (std::nothrow)
                                         std::byte[static_cast<std::size_t>(block.size)]);
  if (!bytes)
    return Fail(SCFile::status_TooLarge, "the samples do not fit the memory of this process");
  const int status = SCFile::file_BlockRead(block.group, block.item, 0, block.size, bytes.get());
  if (status != SCFile::status_Ok) return status;
  *data = bytes.release();
  *size = block.size;
  return SCFile::status_Ok;
}
