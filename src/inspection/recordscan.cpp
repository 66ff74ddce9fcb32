// Records a scan into an acquisition file.
#include <memory>
#include <system_error>
#include <vector>

#include "interfaces/dorvex.h"
#include "interfaces/os.h"
#include "utdata/failure.h"
#include "utdata/gdatamanager.h"
#include "utdata/recording.h"

namespace utdata {
namespace {

constexpr const char* cannotBeRecorded = "cannot be recorded";
constexpr std::int32_t storedBytes = 2;

Aurelis::Patch PatchOf(const ScanGrid& grid) {
  const Eigen::Vector2i last(static_cast<int>(grid.columns) - 1, static_cast<int>(grid.rows) - 1);
  return Aurelis::Patch(Aurelis::Patch::Box(Eigen::Vector2i(0, 0), last));
}

Aurelis::Ultrasound::AscanDataDescriptor DescriptorOf(const ScanGrid& grid) {
  const Aurelis::Axis time(static_cast<std::int32_t>(grid.samples), grid.sampleStep);
  return Aurelis::Ultrasound::AscanDataDescriptor(storedBytes, time);
}

/// The A-scans as the instrument delivers them: 4 bytes a sample.
MemoryAscanPatchBuffer AscansOf(const ScanGrid& grid,
                                std::span<const std::int16_t> samples,
                                const Watch& watch) {
  MemoryAscanPatchBuffer buffer(DescriptorOf(grid), PatchOf(grid));
  for (std::uint32_t row = 0; row < grid.rows; ++row) {
    if (watch) watch("recording", std::uint64_t{row} * grid.columns, samples.size() / grid.samples);
    for (std::uint32_t column = 0; column < grid.columns; ++column) {
      const auto ascan =
          samples.subspan((std::size_t{row} * grid.columns + column) * grid.samples, grid.samples);
      buffer.SetAscan(column, row, std::vector<std::int32_t>(ascan.begin(), ascan.end()));
    }
  }
  return buffer;
}

MemoryCscanPatchBuffer ReadingsOf(const ScanGrid& grid, const InstrumentGate& gate) {
  MemoryCscanPatchBuffer buffer(Aurelis::Ultrasound::CscanDataDescriptor(gate.gateId),
                                PatchOf(grid));
  for (std::uint32_t row = 0; row < grid.rows; ++row)
    for (std::uint32_t column = 0; column < grid.columns; ++column) {
      const std::size_t cell = std::size_t{row} * grid.columns + column;
      buffer.Record(column, row) = {gate.amplitudes[cell], gate.positions[cell]};
    }
  return buffer;
}

std::string RecordingReason(std::uint32_t status) {
  if (status == GDataManager::status_TooLarge)
    return "the scan is larger than an acquisition file may be";
  if (status == GDataManager::status_DiskTooSmall) return "there is not enough room on the disk";
  return std::system_category().message(static_cast<int>(status));
}

/// Removes the file that a creation which failed later has left empty.
void RemoveEmpty(const std::string& path) {
  os::FileSystem& fileSystem = os::CurrentFileSystem();
  std::unique_ptr<os::File> file;
  std::uint64_t size = 1;
  if (fileSystem.Open(ToWide(path), os::OpenMode::ReadWriteHere, file) == os::Error::None &&
      file->TryLock() == os::Error::None && file->Size(size) == os::Error::None && size == 0)
    static_cast<void>(fileSystem.Remove(ToWide(path)));
}

/// Writes an acquisition file.
/// @param save puts the blocks into it, in turn, and says whether none was refused
template <class Save>
void Record(const std::string& path, const Aurelis::MemoryData& memory, Save&& save) {
  const bool wasThere = os::CurrentFileSystem().Exists(ToWide(path));
  GDataManager writer(ToWide(path));
  std::uint32_t status = writer.FileCreate(memory);
  if (status != 0) {
    if (!wasThere) RemoveEmpty(path);
    throw Error(path, cannotBeRecorded, RecordingReason(status));
  }
  // An unusable file is not left behind; if removing it fails too, the first failure is reported.
  const auto remove = [&] { (void)os::CurrentFileSystem().Remove(ToWide(path)); };
  bool saved = false;
  try {
    saved = save(writer);
  } catch (...) {
    writer.FileClose();
    remove();
    throw;
  }
  status = writer.FileClose();
  if (saved && status == 0) return;
  remove();
  throw Error(
      path, cannotBeRecorded, saved ? RecordingReason(status) : "there is no room for a block");
}

}  // namespace

RecordedBlocks RecordScan(const std::string& path,
                          const ScanGrid& grid,
                          std::span<const std::int16_t> samples,
                          const InstrumentGate& gate,
                          const Watch& watch) {
  const MemoryAscanPatchBuffer ascans = AscansOf(grid, samples, watch);
  const MemoryCscanPatchBuffer readings = ReadingsOf(grid, gate);
  Aurelis::MemoryData memory;
  memory.AddAscanBlocks(ascans.GetPatch(), ascans.GetDescriptor());
  memory.AddCscanBlocks(readings.GetPatch(), 2);
  RecordedBlocks blocks;
  Record(path, memory, [&](GDataManager& writer) {
    blocks.ascans = writer.SavePatchBuffer(ascans);
    const std::int64_t amplitudes = writer.SaveCscanBuffer(readings, &CscanRecord::amplitude);
    const std::int64_t positions = writer.SaveCscanBuffer(readings, &CscanRecord::position);
    blocks.amplitudes = static_cast<std::uint64_t>(amplitudes);
    blocks.positions = static_cast<std::uint64_t>(positions);
    blocks.size = writer.GetWrittenSize();
    return blocks.ascans != GDataManager::ascan_Refused &&
           amplitudes != GDataManager::cscan_Refused && positions != GDataManager::cscan_Refused;
  });
  return blocks;
}

std::vector<std::uint64_t> RecordBeams(const std::string& path,
                                       std::span<const AScanBlock> blocks,
                                       const Watch& watch) {
  Aurelis::MemoryData memory;
  for (const AScanBlock& block : blocks)
    memory.AddAscanBlocks(PatchOf(block.grid), DescriptorOf(block.grid));
  std::vector<std::uint64_t> places;
  Record(path, memory, [&](GDataManager& writer) {
    for (const AScanBlock& block : blocks) {
      if (watch) watch("recording", places.size(), blocks.size());
      places.push_back(writer.SavePatchBuffer(AscansOf(block.grid, block.samples, {})));
      if (places.back() == GDataManager::ascan_Refused) return false;
    }
    return true;
  });
  return places;
}

}  // namespace utdata
