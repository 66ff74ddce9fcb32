// Every way in which a creation, a save or a closing can fail: the status, the lines in the trace,
// and what is left of the file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>

#include "tests/src/acquisition/acquisition_reader.h"
#include "tests/src/acquisition/acquisition_samples.h"
#include "tests/support/failing_file_system.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/file_folder.h"
#include "tests/support/report_capture.h"
#include "tests/support/small_disk.h"
#include "utdata/gdatamanager.h"

namespace {

using namespace utdata::test;
using Call = FailingFileSystem::Call;
namespace os = utdata::os;
using testing::MatchesRegex;

constexpr std::uint64_t unit = CViewMapManager::granularity;

/// The nine lines of a memory report, and nothing else.
void ExpectMemoryReport(const ReportCapture& capture,
                        std::uint64_t fileSize,
                        std::uint32_t status) {
  const std::string lines[] = {
      "m_fileSize = " + std::to_string(fileSize) + "\n",
      "MemoryStatus.dwMemoryLoad: [0-9]+ \n",
      "MemoryStatus.dwTotalPhys: [0-9]+ \n",
      "MemoryStatus.dwAvailPhys: [0-9]+ \n",
      "MemoryStatus.dwTotalPageFile: [0-9]+ \n",
      "MemoryStatus.dwAvailPageFile: [0-9]+ \n",
      "MemoryStatus.dwTotalVirtual: [0-9]+ \n",
      "MemoryStatus.dwAvailVirtual: [0-9]+ \n",
      "MACQ: GetLastError: " + std::to_string(static_cast<std::int32_t>(status)) + " \n"};
  ASSERT_EQ(capture.Reports().size(), std::size(lines));
  for (std::size_t n = 0; n < std::size(lines); ++n) {
    EXPECT_EQ(capture.Reports()[n].kind, utdata::ReportKind::Trace);
    EXPECT_THAT(utdata::NarrowFromWide(capture.Reports()[n].text), MatchesRegex(lines[n]));
  }
}

TEST(FailedCreation, OfAFileThatIsTooLargeCreatesNothing) {
  const FileFolder folder;
  FailingFileSystem system;
  const FileSystemInPlace inPlace(system);
  system.SetFreeSpace(1000000);
  const struct {
    std::uint64_t size;
    std::uint32_t status;
  } cases[] = {
      {0xFFFF0001u, 8}, {~std::uint64_t{0}, 8}, {0xFFFF0000u, 0xC0380013}, {1000001, 0xC0380013}};
  for (const auto& each : cases) {
    GDataManager writer(folder / L"f");
    const ReportCapture capture;
    EXPECT_EQ(writer.FileCreate(Estimate(each.size)), each.status) << each.size;
    ExpectMemoryReport(capture, each.size, each.status);
    EXPECT_EQ(writer.GetMapViewOfFile(), nullptr);
    EXPECT_EQ(folder.Names(), std::vector<std::wstring>{});
  }
  GDataManager writer(folder / L"f");
  EXPECT_EQ(writer.FileCreate(Estimate(1000000)), 0u) << "exactly what is free";
  EXPECT_EQ(writer.FileClose(), 0u);
  system.Let(Call::FreeSpace, os::Error::Other);
  const ReportCapture capture;
  GDataManager unknown(folder / L"g");
  EXPECT_EQ(unknown.FileCreate(Estimate(1)), 0xC0380013) << "what is unknown counts as nothing";
}

TEST(FailedCreation, OfAFileThatExistsLeavesItAsItIs) {
  const FileFolder folder;
  const std::wstring path = folder / L"f";
  WriteBytes(path, std::vector<std::byte>(100, std::byte{7}));
  const ReportCapture capture;
  GDataManager writer(path);
  EXPECT_EQ(writer.FileCreate(Estimate(5000)), static_cast<std::uint32_t>(EEXIST));
  EXPECT_EQ(BytesOf(path), std::vector<std::byte>(100, std::byte{7}));
  GDataManager nowhere(folder / L"missing/f");
  EXPECT_EQ(nowhere.FileCreate(Estimate(5000)), static_cast<std::uint32_t>(ENOENT));
  GDataManager unnamed(L"");
  EXPECT_EQ(unnamed.FileCreate(Estimate(5000)), static_cast<std::uint32_t>(ENOENT));
  EXPECT_TRUE(capture.Reports().empty()) << "no memory report";
}

TEST(FailedCreation, AfterTheFileWasMadeLeavesItEmpty) {
  const struct {
    Call call;
    os::Error error;
    int status;
  } cases[] = {{Call::Write, os::Error::Other, EIO},
               {Call::Allocate, os::Error::DiskFull, ENOSPC},
               {Call::CreateMapping, os::Error::DiskFull, ENOSPC},
               {Call::Reserve, os::Error::NoMemory, ENOMEM},
               {Call::MapAt, os::Error::AccessDenied, EACCES}};
  for (const auto& each : cases) {
    SCOPED_TRACE(static_cast<int>(each.call));
    const ReservedSize reserved(unit);  // forgets the range, so that it is reserved again
    const FileFolder folder;
    FailingFileSystem system;
    const FileSystemInPlace inPlace(system);
    system.Let(each.call, each.error);
    GDataManager writer(folder / L"f");
    {
      const ReportCapture capture;
      EXPECT_EQ(writer.FileCreate(Estimate(5000)), static_cast<std::uint32_t>(each.status));
      ExpectMemoryReport(capture, 5000, static_cast<std::uint32_t>(each.status));
    }
    EXPECT_EQ(AcquisitionReader(folder / L"f").Size(), 0u);
    EXPECT_EQ(writer.GetWrittenSize(), 0u);
    EXPECT_EQ(writer.SavePatchBuffer(MakeAscans(MakePatch(0, 0, 1, 1), 1, 1)),
              GDataManager::ascan_Refused);

    std::filesystem::remove(folder.Path() / "f");
    system.Let(each.call, os::Error::None);
    EXPECT_EQ(writer.FileCreate(Estimate(5000)), 0u) << "the writer can be used on";
  }
}

TEST(RefusedBlock, DoesNotFitTheMappedSize) {
  const ReservedSize reserved(unit);
  const FileFolder folder;
  GDataManager writer(folder / L"f");
  ASSERT_EQ(writer.FileCreate(Estimate(2048)), 0u);
  const auto rest = static_cast<int>(unit - 2048);
  const auto before = BytesOf(folder / L"f");
  EXPECT_EQ(writer.SavePatchBuffer(MakeAscans(MakePatch(0, 0, 1, 1), 1, rest - 3)), 0u)
      << "the table needs 4 bytes";
  EXPECT_EQ(writer.SavePatchBuffer(MakeAscans(MakePatch(0, 0, 1000, 1000), 1, 0)), 0u);
  EXPECT_EQ(writer.SaveCscanBuffer(MakeCscans(MakePatch(0, 0, 1, rest / 2 + 1)),
                                   &utdata::CscanRecord::amplitude),
            -1);
  EXPECT_EQ(writer.GetWrittenSize(), 2048u);
  EXPECT_EQ(BytesOf(folder / L"f"), before) << "refused before a byte was written";
  const HasAscan one = [](auto column, auto) { return column == 1; };
  EXPECT_EQ(writer.SavePatchBuffer(MakeAscans(MakePatch(0, 0, 2, 1), 1, rest - 12, one)), 2048u)
      << "empty cells need none";
  EXPECT_EQ(writer.GetWrittenSize(), unit - 4);
  EXPECT_EQ(
      writer.SaveCscanBuffer(MakeCscans(MakePatch(0, 0, 1, 1)), &utdata::CscanRecord::amplitude),
      unit - 4);
  EXPECT_EQ(
      writer.SaveCscanBuffer(MakeCscans(MakePatch(0, 0, 1, 1)), &utdata::CscanRecord::amplitude),
      -1);
  EXPECT_EQ(writer.FileClose(), 0u);
  EXPECT_EQ(AcquisitionReader(folder / L"f").Size(), unit - 2);
}

TEST(RefusedBlock, HasNoCellsOrNoField) {
  const FileFolder folder;
  GDataManager writer(folder / L"f");
  ASSERT_EQ(writer.FileCreate(Estimate(2048)), 0u);
  constexpr int lowest = std::numeric_limits<int>::min();
  constexpr int highest = std::numeric_limits<int>::max();
  const Aurelis::Patch::Box boxes[] = {
      Aurelis::Patch::Box(),
      {Eigen::Vector2i(0, 5), Eigen::Vector2i(3, 4)},
      {Eigen::Vector2i(lowest, lowest), Eigen::Vector2i(highest, highest)}};
  /// Of any size, with nothing in it.
  struct Endless final : utdata::AscanPatchBuffer {
    explicit Endless(const Aurelis::Patch::Box& box) : patch(box) {}
    const Aurelis::Ultrasound::AscanDataDescriptor& GetDescriptor() const override {
      return descriptor;
    }
    const Aurelis::Patch& GetPatch() const override { return patch; }
    const std::shared_ptr<Instrumentation::IAscan>& GetCell(std::uint32_t,
                                                            std::uint32_t) const override {
      return nothing;
    }
    Aurelis::Ultrasound::AscanDataDescriptor descriptor;
    Aurelis::Patch patch;
    std::shared_ptr<Instrumentation::IAscan> nothing;
  };
  for (const auto& box : boxes)
    EXPECT_EQ(writer.SavePatchBuffer(Endless(box)), GDataManager::ascan_Refused);
  EXPECT_EQ(writer.SaveCscanBuffer(MakeCscans(MakePatch(0, 0, 2, 2)), nullptr),
            GDataManager::cscan_Refused);
  EXPECT_EQ(writer.GetWrittenSize(), 2048u);
  Aurelis::MemoryData memory;
  memory.AddAscanBlocks(Aurelis::Patch(boxes[2]),
                        Aurelis::Ultrasound::AscanDataDescriptor(2, Aurelis::Axis(highest)),
                        9);
  EXPECT_EQ(memory.EstimateDataFileSize(), ~std::uint64_t{0}) << "more than 64 bits hold";
}

TEST(RefusedBlock, HasAStorageThatIsUnknown) {
  const FileFolder folder;
  const std::wstring path = folder / L"f";
  GDataManager writer(path);
  ASSERT_EQ(writer.FileCreate(Estimate(2048)), 0u);
  for (const int storage : {0, 3, 4, -1}) try {
      static_cast<void>(writer.SavePatchBuffer(MakeAscans(MakePatch(0, 0, 3, 2), storage, 4)));
      ADD_FAILURE() << "nothing was thrown for " << storage;
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "Pas les bons bits.");
    }
  EXPECT_EQ(writer.GetWrittenSize(), 2048u + 4 * 24) << "behind the tables";
  EXPECT_EQ(writer.SavePatchBuffer(MakeAscans(MakePatch(0, 0, 1, 1), 1, 4)), 2048u + 96);
  EXPECT_EQ(writer.FileClose(), 0u);
  AcquisitionReader file(path);
  EXPECT_EQ(file.Table(2048, 24), std::vector<std::uint32_t>(24, 0));
  EXPECT_EQ(file.Size(), 2048u + 96 + 8);
}

/// Disk space beyond the estimate is allocated when a block needs it, or the block is refused; the
/// process lives on.
TEST(FullDisk, RefusesTheBlockAndKeepsTheFile) {
  const SmallDisk disk(1 << 20);
  if (!disk.IsMounted()) GTEST_SKIP() << "this machine mounts no file systems for a test";
  const std::wstring path = disk / L"f";
  GDataManager writer(path);
  {
    const ReportCapture capture;
    EXPECT_EQ(writer.FileCreate(Estimate((1 << 20) + 1)), GDataManager::status_DiskTooSmall);
    ExpectMemoryReport(capture, (1 << 20) + 1, GDataManager::status_DiskTooSmall);
  }
  ASSERT_EQ(writer.FileCreate(Estimate(500000)), 0u);
  std::uint64_t free = 0;
  EXPECT_EQ(os::CurrentFileSystem().FreeSpace(path, free), os::Error::None);
  EXPECT_LE(free, (1u << 20) - 500000) << "the estimate is really allocated";
  WriteBytes(disk / L"other", std::vector<std::byte>(static_cast<std::size_t>(free) - 300000));
  const auto ascans = MakeAscans(MakePatch(0, 0, 10, 1), 2, 5000);
  std::vector<std::uint32_t> offsets;
  for (std::uint32_t offset = 0;
       (offset = writer.SavePatchBuffer(ascans)) != GDataManager::ascan_Refused;) {
    offsets.push_back(offset);
    ASSERT_LT(offsets.size(), 20u);
  }
  EXPECT_GE(offsets.size(), 7u) << "beyond the estimate, until the disk was full";
  EXPECT_EQ(writer.SaveCscanBuffer(MakeCscans(MakePatch(0, 0, 100, 1000)),
                                   &utdata::CscanRecord::position),
            -1);
  EXPECT_EQ(writer.GetWrittenSize(), 2048 + offsets.size() * 100040);
  EXPECT_EQ(writer.FileClose(), 0u);
  AcquisitionReader file(path);
  EXPECT_EQ(file.Size(), writer.GetWrittenSize());
  const auto table = file.Table(offsets.back(), 10);
  EXPECT_EQ(file.Samples(table[9], 5000, 2)[4999],
            static_cast<std::uint32_t>(SampleAt(9, 0, 4999)) & 0xFFFF);
}

/// Where the file system cannot allocate, zeros are really written.
TEST(FullDisk, IsMetInTimeWithoutAllocation) {
  const SmallDisk disk(1 << 20);
  if (!disk.IsMounted()) GTEST_SKIP() << "this machine mounts no file systems for a test";
  FailingFileSystem system;
  const FileSystemInPlace inPlace(system);
  system.Let(Call::Allocate, os::Error::NotSupported);
  GDataManager writer(disk / L"f");
  ASSERT_EQ(writer.FileCreate(Estimate(600000)), 0u);
  std::uint64_t free = 0;
  EXPECT_EQ(system.FreeSpace(disk / L"f", free), os::Error::None);
  EXPECT_LE(free, (1u << 20) - 600000);
  const auto ascans = MakeAscans(MakePatch(0, 0, 10, 1), 1, 10000);
  int saved = 0;
  while (saved < 20 && writer.SavePatchBuffer(ascans) != GDataManager::ascan_Refused) ++saved;
  EXPECT_EQ(saved, 10);
  EXPECT_EQ(writer.FileClose(), 0u);
  EXPECT_EQ(AcquisitionReader(disk / L"f").Size(), 2048u + 10 * 100040);
}

TEST(FailedClosing, ReportsWhatFailedAndClosesAllTheSame) {
  const struct {
    Call call;
    os::Error error;
    int status;
    std::uint64_t length;
  } cases[] = {{Call::Seek, os::Error::Other, EIO, 2048 + 44},
               {Call::Truncate, os::Error::AccessDenied, EACCES, 0xFFFF0000}};
  for (const auto& each : cases) {
    const FileFolder folder;
    FailingFileSystem system;
    const FileSystemInPlace inPlace(system);
    GDataManager writer(folder / L"f");
    ASSERT_EQ(writer.FileCreate(Estimate(5000)), 0u);
    EXPECT_NE(writer.SavePatchBuffer(MakeAscans(MakePatch(0, 0, 1, 1), 1, 40)), 0u);
    system.Let(each.call, each.error);
    EXPECT_EQ(writer.FileClose(), static_cast<std::uint32_t>(each.status));
    EXPECT_EQ(AcquisitionReader(folder / L"f").Size(), each.length);
    EXPECT_EQ(writer.GetWrittenSize(), 2048u + 44) << "where a host may cut it later";
    EXPECT_EQ(writer.GetMapViewOfFile(), nullptr);
    EXPECT_EQ(writer.FileClose(), 0u) << "closed already";
  }
}

}  // namespace
