#include "utdata/gdatamanager.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <cwchar>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "interfaces/framework.h"
#include "interfaces/ostrin.h"
#include "src/acquisition/narrow.h"

using utdata::os::Error;

namespace {

// What is stored into the mapping is the file, whose numbers are little-endian.
static_assert(std::endian::native == std::endian::little);

constexpr std::uint64_t entrySize = 4;  ///< of an A-scan block's table
constexpr std::uint64_t valueSize = 2;  ///< of a C-scan block
/// Disk space is allocated in steps of this many bytes once the estimate is used up.
constexpr std::uint64_t growth = 16u << 20;

constexpr std::uint64_t RoundUp(std::uint64_t bytes) { return (bytes + 3) / 4 * 4; }

/// The platform's number of what failed last. Never 0, which would pass for a success.
std::uint32_t PlatformStatus() {
  const int number = utdata::os::LastErrorNumber();
  return static_cast<std::uint32_t>(number != 0 ? number : EIO);
}

/// Cells along both dimensions of a grid that has some, but fewer than an address space of 32 bits.
struct Cells {
  std::uint32_t columns;
  std::uint32_t rows;
  [[nodiscard]] std::uint64_t Quantity() const { return std::uint64_t{columns} * rows; }
};

std::optional<Cells> CellsOf(const Aurelis::Patch& patch) {
  constexpr std::uint64_t most = CViewMapManager::largestSize;
  const std::uint64_t columns = patch.CellQuantity(0);
  const std::uint64_t rows = patch.CellQuantity(1);
  if (columns == 0 || rows == 0 || columns > most || rows > most / columns) return std::nullopt;
  return Cells{static_cast<std::uint32_t>(columns), static_cast<std::uint32_t>(rows)};
}

std::uint64_t CountAscans(const utdata::AscanPatchBuffer& buffer, const Cells& cells) {
  std::uint64_t count = 0;
  for (std::uint32_t row = 0; row < cells.rows; ++row)
    for (std::uint32_t column = 0; column < cells.columns; ++column)
      count += buffer.GetCell(column, row) != nullptr;
  return count;
}

/// Stores table and samples of an A-scan block into the file at `view`, from the offset `table` on.
/// @return the offset of its end
std::uint64_t StoreAscans(const utdata::AscanPatchBuffer& buffer,
                          const Cells& cells,
                          std::uint64_t ascanBytes,
                          std::byte* view,
                          std::uint64_t table) {
  const auto& descriptor = buffer.GetDescriptor();
  const auto samples = static_cast<std::size_t>(descriptor.UltrasoundAxis().DiscreteSize());
  const auto narrow =
      descriptor.AscanStorageDataBytes() == 1 ? utdata::NarrowToBytes : utdata::NarrowToWords;
  const utdata::VectorPath path = utdata::FastestPath();
  std::byte* entry = view + table;
  std::uint64_t next = table + cells.Quantity() * entrySize;
  for (std::uint32_t row = 0; row < cells.rows; ++row)
    for (std::uint32_t column = 0; column < cells.columns; ++column, entry += entrySize) {
      const auto& ascan = buffer.GetCell(column, row);
      const std::int32_t* elements = ascan ? ascan->GetSamples() : nullptr;
      std::uint32_t offset = 0;
      if (ascan && (elements || samples == 0)) {
        narrow(path, elements, samples, view + next);
        offset = static_cast<std::uint32_t>(next);
        next += ascanBytes;
      }
      std::memcpy(entry, &offset, sizeof offset);
    }
  return next;
}

/// One line to the debug trace.
template <class Value>
void Trace(const wchar_t* format, Value value) {
  wchar_t line[96];
  if (std::swprintf(line, std::size(line), format, value) >= 0) utdata::DebugTrace(line);
}

/// Why a creation may have failed: what was asked for, and what memory was left.
void ReportMemory(std::uint64_t fileSize, std::uint32_t status) {
  const utdata::os::MemoryStatus memory = utdata::os::QueryMemoryStatus();
  using Number = unsigned long long;  // sizes are printed whole, however many bits they have
  Trace<Number>(L"m_fileSize = %llu\n", fileSize);
  Trace<unsigned>(L"MemoryStatus.dwMemoryLoad: %u \n", memory.loadPercent);
  Trace<Number>(L"MemoryStatus.dwTotalPhys: %llu \n", memory.totalPhysical);
  Trace<Number>(L"MemoryStatus.dwAvailPhys: %llu \n", memory.availablePhysical);
  Trace<Number>(L"MemoryStatus.dwTotalPageFile: %llu \n", memory.totalPaged);
  Trace<Number>(L"MemoryStatus.dwAvailPageFile: %llu \n", memory.availablePaged);
  Trace<Number>(L"MemoryStatus.dwTotalVirtual: %llu \n", memory.totalVirtual);
  Trace<Number>(L"MemoryStatus.dwAvailVirtual: %llu \n", memory.availableVirtual);
  Trace<int>(L"MACQ: GetLastError: %d \n", static_cast<int>(status));
}

}  // namespace

GDataManager::GDataManager(std::wstring path) : m_path(std::move(path)) {}

GDataManager::~GDataManager() { FileClose(); }

std::uint64_t GDataManager::GetMaxAcqFileSize() const {
  return GetMapViewManager().GetReservedSize();
}

/// 0 when unknown.
std::uint64_t GDataManager::GetFreeSpaceDiskAvailable(const std::wstring& path) {
  std::uint64_t bytes = 0;
  return utdata::os::CurrentFileSystem().FreeSpace(path, bytes) == Error::None ? bytes : 0;
}

std::uint32_t GDataManager::FileCreate(const Aurelis::MemoryData& memory) {
  FileClose();
  m_writePosition = 0;
  m_fileSize = memory.EstimateDataFileSize();
  const std::uint64_t maximum = GetMaxAcqFileSize();
  std::uint32_t status = 0;
  bool isToReport = true;
  if (m_fileSize > maximum) {
    status = status_TooLarge;
  } else if (m_fileSize > GetFreeSpaceDiskAvailable(m_path)) {
    status = status_DiskTooSmall;
  } else {
    status = OpenAndMap(maximum, isToReport);
  }
  if (status == 0) return 0;
  if (isToReport) ReportMemory(m_fileSize, status);
  FileClose();
  m_fileSize = 0;
  return status;
}

/// @param isOpen receives whether the file could be created
std::uint32_t GDataManager::OpenAndMap(std::uint64_t size, bool& isOpen) try {
  isOpen = utdata::os::CurrentFileSystem().Open(m_path, utdata::os::OpenMode::Create, m_file) ==
           Error::None;
  if (!isOpen) return PlatformStatus();
  // Only advice to others, which a file system without locks cannot give.
  static_cast<void>(m_file->TryLock());
  static constexpr std::byte header[headerSize] = {};
  if (m_file->WriteAt(0, header) != Error::None) return PlatformStatus();
  m_allocated = headerSize;
  // Before disk space is allocated: a file that is longer than its header and not of full length is
  // a finished one.
  if (m_file->CreateMapping(size, m_mapping) != Error::None) return PlatformStatus();
  if (Allocate(m_fileSize) != Error::None) return PlatformStatus();
  m_view = static_cast<std::byte*>(
      GetMapViewManager().MapViewForData(m_mapping.get(), size, view_ReadWrite));
  if (!m_view) return PlatformStatus();
  m_mappedSize = size;
  m_writePosition = headerSize;
  return 0;
} catch (const std::bad_alloc&) {
  utdata::os::Fail(Error::NoMemory);
  return PlatformStatus();
}

std::uint32_t GDataManager::FileClose() {
  std::uint32_t status = 0;
  const std::uint64_t written = m_view ? m_writePosition : 0;
  GetMapViewManager().UnmapViewOfFileToReservedSpace(m_view,
                                                     static_cast<std::uint32_t>(m_fileSize));
  m_view = nullptr;
  m_mapping.reset();
  if (!m_file) return status;
  if (m_file->Seek(written) != Error::None) status = PlatformStatus();
  if (m_file->Truncate(written) != Error::None && status == 0) status = PlatformStatus();
  m_file.reset();
  return status;
}

/// Allocates disk space for the file up to `end`.
Error GDataManager::Allocate(std::uint64_t end) {
  if (end <= m_allocated) return Error::None;
  Error error = m_file->Allocate(m_allocated, end - m_allocated);
  if (error == Error::NotSupported) {
    // This part of the file reads as zeros already.
    static constexpr std::byte zeros[1 << 16] = {};
    error = Error::None;
    for (std::uint64_t at = m_allocated; at < end && error == Error::None; at += sizeof zeros)
      error =
          m_file->WriteAt(at, std::span(zeros, std::min<std::uint64_t>(end - at, sizeof zeros)));
  }
  if (error == Error::None) m_allocated = end;
  return error;
}

/// Whether `bytes` more fit the mapping and the disk, which are then allocated. Storing into a
/// mapping without disk space behind it would end the process.
bool GDataManager::MakeRoom(std::uint64_t bytes) {
  if (!m_view || bytes > m_mappedSize - m_writePosition) return false;
  const std::uint64_t end = m_writePosition + bytes;
  if (end <= m_allocated) return true;
  const std::uint64_t ahead = std::min(std::max(end, m_allocated + growth), m_mappedSize);
  return Allocate(ahead) == Error::None || Allocate(end) == Error::None;
}

std::uint32_t GDataManager::SavePatchBuffer(const utdata::AscanPatchBuffer& buffer) {
  const std::optional<Cells> cells = CellsOf(buffer.GetPatch());
  if (!cells) return ascan_Refused;
  const std::uint64_t tableBytes = cells->Quantity() * entrySize;
  if (!MakeRoom(tableBytes)) return ascan_Refused;

  const std::int32_t storageBytes = buffer.GetDescriptor().AscanStorageDataBytes();
  if (storageBytes != 1 && storageBytes != 2) {
    m_writePosition += tableBytes;
    throw std::runtime_error("Pas les bons bits.");
  }
  const auto samples =
      static_cast<std::size_t>(buffer.GetDescriptor().UltrasoundAxis().DiscreteSize());
  const std::uint64_t ascanBytes = RoundUp(samples * static_cast<std::uint64_t>(storageBytes));
  // Counting costs a pass over the cells, needed only when not all of them may have an A-scan.
  std::uint64_t blockBytes = tableBytes + cells->Quantity() * ascanBytes;
  if (blockBytes > m_allocated - m_writePosition)
    blockBytes = tableBytes + CountAscans(buffer, *cells) * ascanBytes;
  if (!MakeRoom(blockBytes)) return ascan_Refused;

  const std::uint64_t table = m_writePosition;
  m_writePosition = StoreAscans(buffer, *cells, ascanBytes, m_view, table);
  return static_cast<std::uint32_t>(table);
}

std::int64_t GDataManager::SaveCscanBuffer(const utdata::CscanPatchBuffer& buffer,
                                           int utdata::CscanRecord::*field) {
  const std::optional<Cells> cells = CellsOf(buffer.GetPatch());
  if (!cells || !field) return cscan_Refused;
  const std::uint64_t start = RoundUp(m_writePosition);
  const std::uint64_t blockBytes = cells->Quantity() * valueSize;
  if (!MakeRoom(start - m_writePosition + blockBytes)) return cscan_Refused;

  std::byte* stored = m_view + start;
  for (std::uint32_t row = 0; row < cells->rows; ++row)
    for (std::uint32_t column = 0; column < cells->columns; ++column, stored += valueSize) {
      const auto value = static_cast<std::uint16_t>(buffer.GetCell(column, row).*field);
      std::memcpy(stored, &value, sizeof value);
    }
  m_writePosition = start + blockBytes;
  return static_cast<std::int64_t>(start);
}
