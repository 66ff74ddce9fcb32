// The program on small real disks, full at many points: every verb that writes does it whole, or
// fails with a message and leaves what was there as it was, and nothing else.
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "platform/os/path.h"
#include "run_program.h"
#include "tests/support/effort.h"
#include "tests/support/small_disk.h"

namespace utdata::test {
namespace {

namespace fs = std::filesystem;

/// What writes, in the disk's folder.
struct Writing {
  const char* arguments;
  const char* made;  ///< what --force replaces; empty for what knows no --force
};

constexpr Writing writings[] = {
    {"import scan.raw -o out.fpd --shape 16,16,400 --axes row,column,sample --dtype u8", "out.fpd"},
    {"edit weld.fpd channel 0 gain=20 --as new -o out.fpd", "out.fpd"},
    {"edit weld.fpd channel 0 gain=20 --as append", ""},
    {"edit weld.fpd channel 0 gain=20 --as companion", ""},
    {"gate weld.fpd --channel 0 --gate 5 --start 0.1 --width 0.2 --as new -o out.fpd", "out.fpd"},
    {"gate weld.fpd --channel 0 --gate 5 --start 0.1 --width 0.2 --as append", ""},
    {"gate weld.fpd --channel 0 --gate 5 --start 0.1 --width 0.2 --as companion", ""},
    {"export weld.fpd --data 0 -o out.npy", "out.npy"},
    {"export weld.fpd --data 0 -o out.h5", "out.h5"},
    {"render weld.fpd --data 0 --view c -o out.png", "out.png"},
    {"report weld.fpd -o out.html", "out.html"},
    {"rescue weld.A01 -o out.A01", "out.A01"},
    {"adopt tube.fpd", ""},
};

bool IsInspectionName(const std::string& name) {
  return name.ends_with(".fpd") || name.find(".A0") == name.size() - 4;
}

class FullDisk : public ProgramTest {
 protected:
  /// Makes what the verbs read in a folder of the test's own.
  void SetUp() override {
    ProgramTest::SetUp();
    std::string samples(16 * 16 * 400, '\0');
    for (std::size_t at = 0; at < samples.size(); ++at)
      samples[at] = static_cast<char>(at * at % 251);  // nothing that packs well
    WriteFile(At("scan.raw"), samples);
    const ProgramResult made = RunShell(
        "sh -e",
        "utdata import scan.raw -o weld.fpd --shape 16,16,400 --axes row,column,sample --dtype u8\n"
        "utdata edit weld.fpd channel 0 gain=1 --as companion\n"
        "utdata import scan.raw -o pipe.fpd --shape 16,16,400 --axes row,column,sample --dtype u8\n"
        "utdata edit pipe.fpd channel 0 gain=1 --as companion\nmv pipe.fpd tube.fpd");
    ASSERT_EQ(made.status, 0) << made.error;
    for (const std::string& name : Names()) m_prepared[name] = ReadFile(At(name));
    m_hasHdf5 =
        Run("export none.fpd --data 0 -o none.h5").error.find("needs HDF5") == std::string::npos;
  }

  /// The disk holds what was prepared and nothing else, but an earlier output where there is one.
  void Restore(const std::string& earlier) const {
    fs::remove(m_disk / "filler");
    for (const auto& entry : fs::directory_iterator(m_disk))
      if (!m_prepared.contains(entry.path().filename().string()) &&
          entry.path().filename() != "lost+found")
        fs::remove_all(entry.path());
    for (const auto& [name, bytes] : m_prepared)
      if (ReadFile(m_disk / name) != bytes) WriteFile(m_disk / name, bytes);
    if (!earlier.empty()) WriteFile(m_disk / earlier, std::string(5000, 'e'));
  }

  [[nodiscard]] ProgramResult RunThere(const std::string& arguments) const {
    return RunShell("sh", "cd '" + m_disk.string() + "' && utdata " + arguments);
  }

  /// What the files of the disk hold, by name.
  [[nodiscard]] std::map<std::string, std::string> Held() const {
    std::map<std::string, std::string> held;
    for (const auto& entry : fs::directory_iterator(m_disk)) {
      const std::string name = entry.path().filename().string();
      if (name == "filler" || name == "lost+found") continue;
      const auto prepared = m_prepared.find(name);
      std::string bytes = ReadFile(entry.path());
      if (prepared != m_prepared.end() && prepared->second == bytes)
        held[name] = "as before";
      else if (bytes.size() == 5000 && bytes.find_first_not_of('e') == std::string::npos)
        held[name] = "an earlier file";
      else if (IsInspectionName(name))
        held[name] = std::to_string(Run("verify '" + entry.path().string() + "'").status) +
                     RunThere("info --json --hash " + name).out;
      else if (name.ends_with(".h5"))
        held[name] = Run("import '" + entry.path().string() + "' -o h5.fpd --force").error +
                     Run("info h5.fpd --json --hash").out;
      else
        held[name] = std::move(bytes);
    }
    return held;
  }

  /// One verb on a disk that is full at `points` points. @return how often something was lost
  std::uint64_t Try(const SmallDisk& disk, const Writing& writing, bool isForced, int points) {
    const std::string arguments = std::string(writing.arguments) + (isForced ? " --force" : "");
    const std::string earlier = isForced ? writing.made : "";
    Restore(earlier);
    const auto before = Held();
    const std::uint64_t free = fs::space(m_disk).available;
    const ProgramResult whole = RunThere(arguments);
    EXPECT_EQ(whole.status, 0) << arguments << ": " << whole.error;
    const auto done = Held();
    const std::uint64_t need = free - std::min<std::uint64_t>(free, fs::space(m_disk).available);
    std::uint64_t lost = 0;
    for (int point = 0; point < points; ++point) {
      Restore(earlier);
      const auto share = static_cast<std::uint64_t>(point);
      disk.FillUpTo((need + 40960) * share / static_cast<std::uint64_t>(points));
      const ProgramResult result = RunThere(arguments);
      fs::remove(m_disk / "filler");
      ++m_runs;
      m_refused += result.status == 1;
      SCOPED_TRACE(arguments + ", point " + std::to_string(point) + ": " + result.error);
      const bool isRight = result.status == 0   ? Held() == done
                           : result.status == 1 ? Held() == before
                                                : false;
      EXPECT_TRUE(isRight) << "status " << result.status;
      if (result.status == 1) ExpectOneLine(result, 1, "");
      lost += !isRight;
    }
    return lost;
  }

  std::map<std::string, std::string> m_prepared;
  fs::path m_disk;
  bool m_hasHdf5 = true;
  std::uint64_t m_runs = 0;
  std::uint64_t m_refused = 0;
};

class FullDiskOf : public FullDisk, public testing::WithParamInterface<const char*> {};

TEST_P(FullDiskOf, LosesNothing) {
  const std::string kind = GetParam();
  const bool isLong = CampaignFactor() > 0;
  const bool isShort = kind == "tmpfs" || (kind == "ext4" && Repetitions(10) == 10);
  if (!isLong && !isShort) GTEST_SKIP() << "in the long form only";
  const SmallDisk disk(std::uint64_t{kind == "xfs" ? 320U : 12U} << 20, kind);
  if (!disk.IsMounted()) GTEST_SKIP() << "this machine mounts no " << kind << " for a test";
  m_disk = disk.Path();
  const int points = Rounds(2, 12);
  std::uint64_t lost = 0;
  for (const Writing& writing : writings) {
    if (!m_hasHdf5 && std::string(writing.made).ends_with(".h5")) continue;
    lost += Try(disk, writing, false, points);
    if (isLong && *writing.made) lost += Try(disk, writing, true, points);
  }
  ReportCampaign(
      kind + ": " + std::to_string(m_runs) + " runs, " + std::to_string(m_refused) + " refused",
      lost);
}

INSTANTIATE_TEST_SUITE_P(Disks,
                         FullDiskOf,
                         testing::Values("tmpfs", "ext4", "ext2", "xfs"),
                         [](const auto& each) { return std::string(each.param); });

/// A demonstration is many jobs: what those before the failure made stays, and is whole.
TEST_F(FullDisk, LeavesADemonstrationWholeAsFarAsItWent) {
  const SmallDisk disk(16 << 20);
  if (!disk.IsMounted()) GTEST_SKIP() << "this machine mounts no file systems for a test";
  m_disk = disk.Path();
  const int points = Rounds(2, 30);
  std::uint64_t lost = 0;
  for (int point = 1; point <= points; ++point) {
    fs::remove_all(m_disk / "demo");
    disk.FillUpTo((std::uint64_t{12} << 20) * static_cast<std::uint64_t>(point) /
                  static_cast<std::uint64_t>(points));
    const ProgramResult result = RunThere("demo --out demo --quiet --scans raster");
    EXPECT_TRUE(result.status == 0 || result.status == 1) << result.status;
    m_refused += result.status == 1;
    std::uint64_t made = 0;
    for (const auto& entry : fs::directory_iterator(m_disk / "demo")) {
      const std::string name = entry.path().filename().string();
      const bool isWhole = !name.ends_with(".part") &&
                           (!IsInspectionName(name) || RunThere("verify demo/" + name).status == 0);
      EXPECT_TRUE(isWhole) << name << ", point " << point << ": " << result.error;
      lost += !isWhole;
      ++made;
    }
    if (result.status == 0 && made != 5) ++lost;
  }
  ReportCampaign(
      "demo: " + std::to_string(points) + " runs, " + std::to_string(m_refused) + " refused", lost);
}

}  // namespace
}  // namespace utdata::test
