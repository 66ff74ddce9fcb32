#include "acquisition/acquisition_file.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "interfaces/dorvex.h"
#include "terminal/failure.h"
#include "terminal/text.h"
#include "utdata/fileadjuster.h"
#include "utdata/rdata.h"

namespace utdata::program {
namespace {

constexpr const char* cannotBeRead = "cannot be read";
constexpr std::uint64_t entrySize = sizeof(std::uint32_t);

struct DestroyDescriptor {
  void operator()(CRDataTypeDD* descriptor) const { descriptor->Destroy(); }
};

std::unique_ptr<os::Mapping> MapWhole(const std::string& path) {
  std::unique_ptr<os::File> file;
  std::uint64_t size = 0;
  std::unique_ptr<os::Mapping> mapping;
  os::Error error = os::CurrentFileSystem().Open(ToWide(path), os::OpenMode::Read, file);
  if (error == os::Error::None) error = file->Size(size);
  if (error != os::Error::None) throw Failure(path, cannotBeRead, os::ErrorText(error));
  if (size < Aurelis::MemoryData::fileHeaderSize)
    throw Failure(path, cannotBeRead, "it is too short for an acquisition file");
  if (size > std::numeric_limits<std::size_t>::max() / 2)
    throw Failure(path, cannotBeRead, "it is too large");
  error = file->Map(0, static_cast<std::size_t>(size), mapping);
  if (error != os::Error::None) throw Failure(path, cannotBeRead, os::ErrorText(error));
  return mapping;
}

}  // namespace

AcquisitionFile::AcquisitionFile(const std::string& path)
    : m_path(path), m_mapping(MapWhole(path)) {
  const std::span header(m_mapping->Data(), Aurelis::MemoryData::fileHeaderSize);
  if (std::any_of(
          header.begin(), header.end(), [](std::byte byte) { return byte != std::byte{0}; }))
    Refuse("it is not an acquisition file");
}

void AcquisitionFile::Refuse(const std::string& why) const {
  throw Failure(m_path, cannotBeRead, why);
}

std::span<std::byte> AcquisitionFile::Part(std::uint64_t offset,
                                           std::uint64_t size,
                                           const char* what) const {
  const std::uint64_t end = m_mapping->Size();
  if (offset < Aurelis::MemoryData::fileHeaderSize || offset > end || size > end - offset)
    Refuse(std::string(what) + " at byte " + std::to_string(offset) + " does not lie in its " +
           std::to_string(end) + " bytes");
  return {m_mapping->Data() + offset, static_cast<std::size_t>(size)};
}

std::span<std::byte> AcquisitionFile::AscanBlock(std::uint64_t offset,
                                                 std::uint64_t cells,
                                                 std::uint64_t bytes) const {
  if (offset % entrySize != 0 || cells > m_mapping->Size() / entrySize || bytes > m_mapping->Size())
    Refuse("no A-scan block can be read at byte " + std::to_string(offset));
  const std::span<std::byte> table = Part(offset, cells * entrySize, "the index table");
  const std::uint64_t behindTable = offset + table.size();
  std::uint64_t end = behindTable;
  for (std::uint64_t cell = 0; cell < cells; ++cell) {
    std::uint32_t entry = 0;
    std::memcpy(&entry, table.data() + cell * entrySize, entrySize);
    if (entry == 0) continue;
    if (entry < behindTable)
      Refuse("the A-scan of cell " + std::to_string(cell) + " lies before its block's samples");
    (void)Part(entry, bytes, "an A-scan");
    end = std::max(end, entry + bytes);
  }
  return Part(offset, end - offset, "the A-scan block");
}

std::span<const std::uint16_t> AcquisitionFile::CscanBlock(std::uint64_t offset,
                                                           std::uint64_t cells) const {
  if (offset % entrySize != 0 || cells > m_mapping->Size() / sizeof(std::uint16_t))
    Refuse("no C-scan block can be read at byte " + std::to_string(offset));
  const std::span<std::byte> values =
      Part(offset, cells * sizeof(std::uint16_t), "the C-scan block");
  return {reinterpret_cast<const std::uint16_t*>(values.data()), static_cast<std::size_t>(cells)};
}

void AcquisitionFile::HandOver(std::span<std::byte> block, CGDataTypeFDD& group) const {
  group.storageMode = kvt_StorIndexed;
  group.dataPointer = block.data();
  group.dataSize = block.size();
  const std::unique_ptr<CRDataTypeDD, DestroyDescriptor> descriptor(
      new CRDataTypeDD(&group, nullptr, nullptr));
  descriptor->SetDiskTable(reinterpret_cast<char*>(block.data()), true);
  CList<CRDataTypeDD*> descriptors;
  descriptors.AddTail(descriptor.get());
  // The table's place in the file is what its entries get ahead of themselves; going by way of
  // addresses, an entry whose sum with the base address is a multiple of 2^32 would be taken for an
  // empty cell.
  const auto place = static_cast<std::uintptr_t>(block.data() - m_mapping->Data());
  CFileAdjuster().FileAdjust(descriptors, reinterpret_cast<void*>(place));
}

}  // namespace utdata::program
