// A disk that fails, fills up or loses power at any moment leaves every file as it was last
// committed.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <vector>

#include "interfaces/kvtiff19.h"
#include "tests/support/effort.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/file_snapshot.h"

namespace {

using namespace SCFile;
using utdata::os::Error;
using utdata::test::FaultyFileSystem;
using utdata::test::FileSystemInPlace;
using utdata::test::ReportCampaign;
using utdata::test::SnapshotOf;
using utdata::test::Tearing;

#if defined(UTDATA_SANITIZED)
constexpr std::uint64_t seeds = 2;
#else
constexpr std::uint64_t seeds = 12;
#endif

constexpr std::uint32_t anyGroup = 60000;  ///< a type code without a family
const std::wstring basePath = L"/weld.fpd";
const std::wstring companionPath = L"/weld.A01";

/// What may stand at a path: the snapshots of its content, nothing for "no file".
using Outcomes = std::set<std::optional<std::string>>;

/// A group given by a few numbers.
struct Content {
  std::uint32_t mark;
  std::size_t blockSize;  ///< 0 for none
  std::uint32_t values;
};

/// Appends a group; returns the first status that is not 0, as a careful caller finds it.
int Fill(FileHandle file, const Content& content) {
  GroupHandle group = nullptr;
  if (const int status = file_GroupCreate(file, &group, anyGroup, L"groupe \x00E9")) return status;
  int status = file_ItemValueWrite(group, 1, value_UInt32, 1, &content.mark);
  const std::vector<unsigned char> block(content.blockSize,
                                         static_cast<unsigned char>(content.mark));
  if (!status && content.blockSize > 0)
    status = file_BlockWrite(group, 2, block.size(), block.data());
  const std::vector<double> values(content.values, content.mark / 3.0);
  if (!status) status = file_ItemValueWrite(group, 3, value_Double, content.values, values.data());
  return status;
}

/// The snapshot of a file that holds this group alone, as a disk without faults gives it.
const std::string& TextOf(const Content& content) {
  static std::map<std::uint32_t, std::string> texts;
  if (const auto known = texts.find(content.mark); known != texts.end()) return known->second;
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  FileHandle file = nullptr;
  EXPECT_EQ(file_Create(L"/one", &file), status_Ok);
  EXPECT_EQ(Fill(file, content), status_Ok);
  EXPECT_EQ(file_Commit(file), status_Ok);
  const std::string& text = texts[content.mark] = utdata::test::Snapshot(file);
  file_Close(file);
  return text;
}

/// Writes files step by step and keeps account of what has to be found afterwards.
class Workload {
 public:
  /// @param powerFails whether a commit that failed may be found all the same
  explicit Workload(bool powerFails) : m_powerFails(powerFails) {}

  void Run() {
    Write(basePath, file_Create, {1, 40, 0});
    Write(basePath, file_Open, {2, 0, 0});
    Write(basePath, file_Open, {3, 9000, 20});
    Write(companionPath, file_Create, {4, 5000, 1});
    Write(basePath, file_Open, {5, 0, 300});
    Write(basePath, file_CreateEx, {6, 4096, 2});
    Write(basePath, file_Open, {7, 10, 2});
  }

  [[nodiscard]] const std::map<std::wstring, Outcomes>& Expected() const { return m_expected; }
  [[nodiscard]] bool EveryStepSucceeded() const { return m_succeeded; }
  [[nodiscard]] bool PowerFails() const { return m_powerFails; }

 private:
  using Opening = int (*)(const wchar_t*, FileHandle*);

  /// Two commits by one handle, so that a handle that went through a failure is used on.
  void Write(const std::wstring& path, Opening opening, Content content) {
    Outcomes& expected = m_expected.try_emplace(path, Outcomes{std::nullopt}).first->second;
    FileHandle file = nullptr;
    if (opening(path.c_str(), &file) != status_Ok) {
      m_succeeded = false;
      return;
    }
    std::string text = opening == file_Open ? m_texts[path] : std::string();
    for (int part = 0; part < 2; ++part, content.mark += 100)
      CommitOne(file, content, text, expected);
    if (file_CommitNumber(file) > 0) m_texts[path] = text;
    file_Close(file);
  }

  /// @param text what the handle's file holds
  void CommitOne(FileHandle file, const Content& content, std::string& text, Outcomes& expected) {
    const std::string after = text + TextOf(content);
    const std::uint64_t before = file_CommitNumber(file);
    const int filled = Fill(file, content);
    const int committed = file_Commit(file);
    if (committed == status_Ok) {
      EXPECT_EQ(filled, status_Ok) << "a commit succeeded after a write that failed";
    } else {
      m_succeeded = false;
      EXPECT_FALSE(file_LastError().empty());
      if (m_powerFails && filled == status_Ok) expected.insert(after);
    }
    if (file_CommitNumber(file) == before) return;
    text = after;
    if (committed == status_Ok || !m_powerFails) expected = {after};
  }

  bool m_powerFails;
  bool m_succeeded = true;
  std::map<std::wstring, Outcomes> m_expected;
  std::map<std::wstring, std::string> m_texts;
};

/// Each file holds one of the states it may hold, is whole in every byte, and takes the next
/// writer's group.
void CheckFiles(FaultyFileSystem& disk, const Workload& workload) {
  for (const auto& [path, outcomes] : workload.Expected()) {
    const bool exists = disk.Get(path).has_value();
    const std::optional<std::string> found = exists ? SnapshotOf(path) : std::nullopt;
    if (exists) {
      ASSERT_TRUE(found.has_value()) << file_LastError();
    }
    ASSERT_TRUE(outcomes.contains(found)) << found.value_or("no file");
    std::string problem;
    if (exists) {
      ASSERT_EQ(file_Verify(path.c_str(), &problem), status_Ok) << problem;
    }
    FileHandle file = nullptr;
    int status = exists ? file_Open(path.c_str(), &file) : file_Create(path.c_str(), &file);
    if (status == status_InTheWay && workload.PowerFails()) {
      // The power failed before the unfinished file's mark was on the medium.
      ASSERT_EQ(disk.Remove(path + L".part"), Error::None);
      status = file_Create(path.c_str(), &file);
    }
    ASSERT_EQ(status, status_Ok) << file_LastError();
    const Content next{900, 70000, 3};
    ASSERT_EQ(Fill(file, next), status_Ok) << file_LastError();
    ASSERT_EQ(file_Commit(file), status_Ok) << file_LastError();
    ASSERT_EQ(file_Close(file), status_Ok);
    ASSERT_EQ(SnapshotOf(path), found.value_or("") + TextOf(next));
    ASSERT_EQ(file_Verify(path.c_str(), &problem), status_Ok) << problem;
  }
}

std::uint64_t CallsOfUndisturbedRun() {
  FaultyFileSystem disk;
  const FileSystemInPlace inPlace(disk);
  Workload workload(false);
  workload.Run();
  EXPECT_TRUE(workload.EveryStepSucceeded());
  const std::uint64_t calls = disk.Calls();
  CheckFiles(disk, workload);
  return calls;
}

TEST(Crash, EveryCallFailsInTurnWithEveryError) {
  const std::uint64_t calls = CallsOfUndisturbedRun();
  std::uint64_t failed = 0;
  for (const Error error : {Error::Other,
                            Error::DiskFull,
                            Error::AccessDenied,
                            Error::Busy,
                            Error::NotFound,
                            Error::Exists}) {
    for (std::uint64_t call = 1; call <= calls; ++call) {
      SCOPED_TRACE("call " + std::to_string(call) +
                   " fails: " + std::string(utdata::os::ErrorText(error)));
      FaultyFileSystem disk;
      const FileSystemInPlace inPlace(disk);
      Workload workload(false);
      disk.FailAt(call, error);
      workload.Run();
      ++failed;
      SCOPED_TRACE(disk.FailedCall());
      ASSERT_NO_FATAL_FAILURE(CheckFiles(disk, workload));
      // A file of which it is not known whose it is stays, and so does another writer's.
      if (std::set<std::string>{"remove", "identify", "identify name"}.contains(
              disk.FailedCall()) ||
          (disk.FailedCall() == "lock" && error == Error::Busy))
        continue;
      for (const std::wstring& path : {basePath, companionPath})
        ASSERT_FALSE(disk.Get(path + L".part").has_value());
    }
  }
  ReportCampaign(std::to_string(failed) + " failing calls of the file layer", 0);
}

TEST(Crash, PowerFailsAfterEveryCall) {
  const std::uint64_t calls = CallsOfUndisturbedRun();
  for (const Tearing tearing : {Tearing::Sectors, Tearing::Bytes}) {
    for (std::uint64_t call = 0; call <= calls; ++call) {
      for (std::uint64_t seed = 0; seed < seeds; ++seed) {
        SCOPED_TRACE("power fails after call " + std::to_string(call) + ", seed " +
                     std::to_string(seed) +
                     (tearing == Tearing::Bytes ? ", bytes torn" : ", sectors torn"));
        FaultyFileSystem disk;
        const FileSystemInPlace inPlace(disk);
        Workload workload(true);
        disk.CutPowerAfter(call);
        workload.Run();
        disk.Restart(seed * 7919 + call, tearing);
        ASSERT_NO_FATAL_FAILURE(CheckFiles(disk, workload));
      }
    }
  }
}

/// The repair that a writer makes after one crash is itself interrupted.
TEST(Crash, PowerFailsAgainWhileTheNextWriterIsAtWork) {
  const std::uint64_t calls = CallsOfUndisturbedRun();
  std::mt19937_64 dice(20);
  for (std::uint64_t round = 0; round < 150 * seeds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    FaultyFileSystem disk;
    const FileSystemInPlace inPlace(disk);
    Workload workload(true);
    disk.CutPowerAfter(dice() % calls);
    workload.Run();
    disk.Restart(dice(), round % 2 ? Tearing::Bytes : Tearing::Sectors);
    Outcomes allowed = {SnapshotOf(basePath)};
    if (!allowed.begin()->has_value()) continue;
    ASSERT_TRUE(workload.Expected().at(basePath).contains(*allowed.begin()));
    const std::string before = **allowed.begin();
    for (std::uint32_t crash = 0; crash < 3; ++crash) {
      const Content content{1000 + crash, 100 * crash, crash};
      disk.CutPowerAfter(dice() % 25);
      FileHandle file = nullptr;
      if (file_Open(basePath.c_str(), &file) == status_Ok) {
        const bool committed = Fill(file, content) == status_Ok && file_Commit(file) == status_Ok;
        Outcomes next;
        for (const auto& each : allowed) next.insert(*each + TextOf(content));
        committed ? allowed = next : (allowed.merge(next), allowed);
        file_Close(file);
      }
      disk.Restart(dice(), round % 2 ? Tearing::Bytes : Tearing::Sectors);
      const auto found = SnapshotOf(basePath);
      ASSERT_TRUE(found.has_value()) << file_LastError();
      ASSERT_TRUE(allowed.contains(found)) << *found;
      allowed = {found};
    }
  }
}

TEST(Crash, DiskFillsUp) {
  FaultyFileSystem measured;
  std::uint64_t enough = 0;
  {
    const FileSystemInPlace inPlace(measured);
    Workload workload(false);
    workload.Run();
    enough = measured.Get(basePath)->size() + measured.Get(companionPath)->size();
  }
  for (std::uint64_t capacity = 0; capacity < 3 * enough; capacity += 499) {
    SCOPED_TRACE("room for " + std::to_string(capacity) + " bytes");
    FaultyFileSystem disk;
    const FileSystemInPlace inPlace(disk);
    Workload workload(false);
    disk.SetCapacity(capacity);
    workload.Run();
    disk.SetCapacity(std::nullopt);
    ASSERT_NO_FATAL_FAILURE(CheckFiles(disk, workload));
  }
}

}  // namespace
