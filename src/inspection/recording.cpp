#include "utdata/recording.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "interfaces/dorvex.h"
#include "utdata/fileadjuster.h"
#include "utdata/rdata.h"

namespace utdata {
namespace {

constexpr const char* recordingUnreadable = "cannot be read";
constexpr std::uint64_t headerSize = Aurelis::MemoryData::fileHeaderSize;
constexpr std::uint64_t entrySize = sizeof(std::uint32_t);

std::unique_ptr<os::Mapping> MapWhole(const std::string& path) {
  const auto check = [&](os::Error error) {
    if (error != os::Error::None)
      throw Error(path, recordingUnreadable, std::string(os::ErrorText(error)));
  };
  std::unique_ptr<os::File> file;
  std::uint64_t size = 0;
  std::unique_ptr<os::Mapping> mapping;
  check(os::CurrentFileSystem().Open(ToWide(path), os::OpenMode::Read, file));
  check(file->Size(size));
  if (size < headerSize)
    throw Error(path, recordingUnreadable, "it is too short for an acquisition file");
  if (size > std::numeric_limits<std::size_t>::max() / 2)
    throw Error(path, recordingUnreadable, "it is too large");
  check(file->Map(0, static_cast<std::size_t>(size), mapping));
  return mapping;
}

std::uint64_t CellsOf(const CGDataTypeFDD& record) {
  return std::uint64_t{record.columnQuantity} * record.rowQuantity;
}

/// The index table of a block, whose offsets count from the start of the file until Relocate.
class IndexTable {
 public:
  IndexTable(std::span<std::byte> block, std::uint64_t place, const CGDataTypeFDD& record)
      : m_base(reinterpret_cast<void*>(static_cast<std::uintptr_t>(place))),
        m_descriptor(&record, nullptr, nullptr) {
    m_descriptor.dataPointer = block.data();
    m_descriptor.dataSize = block.size();
    m_descriptor.SetDiskTable(reinterpret_cast<char*>(block.data()), true);
    m_descriptors.AddTail(&m_descriptor);
  }

  // The base is the table's place in the file. With addresses instead, an offset whose sum with the
  // file's address is a multiple of 2^32 would be taken for an empty cell.
  void Relocate() { CFileAdjuster().FileAdjust(m_descriptors, m_base); }
  void Restore() { CFileAdjuster().FileUnadjust(m_descriptors, m_base); }

 private:
  void* m_base;
  CRDataTypeDD m_descriptor;
  CList<CRDataTypeDD*> m_descriptors;
};

}  // namespace

Recording::Recording(const std::string& path) : m_path(path), m_mapping(MapWhole(path)) {
  const std::span header(m_mapping->Data(), headerSize);
  if (std::any_of(
          header.begin(), header.end(), [](std::byte byte) { return byte != std::byte{0}; }))
    Refuse("it is not an acquisition file");
}

Recording::Recording(Recording&&) noexcept = default;
Recording& Recording::operator=(Recording&&) noexcept = default;
Recording::~Recording() = default;

void Recording::Refuse(const std::string& why) const {
  throw Error(m_path, recordingUnreadable, why);
}

std::span<std::byte> Recording::Part(std::uint64_t offset,
                                     std::uint64_t size,
                                     const std::string& what) const {
  const std::uint64_t end = Size();
  if (offset < headerSize || offset > end || size > end - offset)
    Refuse(what + " at byte " + std::to_string(offset) + " does not lie in its " +
           std::to_string(end) + " bytes");
  return {m_mapping->Data() + offset, static_cast<std::size_t>(size)};
}

std::span<std::byte> Recording::AScanBlock(const CGDataTypeFDD& record,
                                           std::uint64_t offset) const {
  const std::uint64_t cells = CellsOf(record);
  const std::uint64_t bytes = std::uint64_t{record.sampleQuantity} * record.sampleSize;
  if (offset % entrySize != 0 || cells > Size() / entrySize || bytes > Size() ||
      record.sampleSize == 0)
    Refuse("no A-scan block can be read at byte " + std::to_string(offset));
  const std::span<std::byte> table = Part(offset, cells * entrySize, "the index table");
  const std::uint64_t behindTable = offset + table.size();
  std::uint64_t end = behindTable;
  for (std::uint64_t cell = 0; cell < cells; ++cell) {
    std::uint32_t entry = 0;
    std::memcpy(&entry, table.data() + cell * entrySize, entrySize);
    if (entry == 0) continue;
    const std::string what = "the A-scan of cell " + std::to_string(cell);
    if (entry < behindTable) Refuse(what + " lies before its block's samples");
    if ((entry - offset) % record.sampleSize != 0)
      Refuse(what + " begins inside a sample, at byte " + std::to_string(entry));
    static_cast<void>(Part(entry, bytes, what));
    end = std::max(end, entry + bytes);
  }
  return Part(offset, end - offset, "the A-scan block");
}

DataGroup Recording::AddAScans(Inspection& inspection, CGDataTypeFDD record, std::uint64_t offset) {
  record.storageMode = kvt_StorIndexed;
  if (std::find(m_relocated.begin(), m_relocated.end(), offset) != m_relocated.end())
    Refuse("the A-scan block at byte " + std::to_string(offset) + " is handed over already");
  const std::span<std::byte> block = AScanBlock(record, offset);
  IndexTable table(block, offset, record);
  table.Relocate();
  try {
    const DataGroup added = inspection.AddData(record, block);
    m_relocated.push_back(offset);
    return added;
  } catch (const Error&) {
    table.Restore();
    throw;
  }
}

DataGroup Recording::AddCScan(Inspection& inspection, CGDataTypeFDD record, std::uint64_t offset) {
  record.storageMode = kvt_StorCells;
  const std::uint64_t cells = CellsOf(record);
  if (record.sampleSize != sizeof(std::uint16_t) || offset % sizeof(std::uint16_t) != 0 ||
      cells > Size() / sizeof(std::uint16_t))
    Refuse("no C-scan block can be read at byte " + std::to_string(offset));
  return inspection.AddData(record,
                            Part(offset, cells * sizeof(std::uint16_t), "the C-scan block"));
}

}  // namespace utdata
