// The program while memory is short: it does its job, or says so and ends with 1.
#ifndef UTDATA_SANITIZED  // a sanitizer has allocation functions of its own

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <vector>

#include "run_program.h"
#include "tests/support/effort.h"

namespace utdata::test {
namespace {

struct Job {
  const char* arguments;
  bool changes = false;  ///< the inspection
};

constexpr Job jobs[] = {{"info --json weld.fpd"},
                        {"info --history weld.fpd"},
                        {"render weld.fpd --data 0 --view c -o made.png --force"},
                        {"export weld.fpd --data 0 -o made.npy --force"},
                        {"report weld.fpd -o made.html --force"},
                        {"verify weld.fpd"},
                        {"edit weld.fpd channel 0 gain=12 --as append", true},
                        {"gate weld.fpd --channel 0 --gate 3 --start 5 --width 1", true}};

class NoMemory : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    ASSERT_EQ(Run("demo --out . --scans raster").status, 0);
    for (const std::string& name : Names()) m_files[name] = ReadFile(At(name));
    ASSERT_EQ(Run(jobs[2].arguments).status, 0);
    m_picture = ReadFile(At("made.png"));
    Restore();
  }

  void Restore() const {
    for (const std::string& name : Names())
      if (!m_files.contains(name)) std::filesystem::remove(At(name));
    for (const auto& [name, bytes] : m_files)
      if (ReadFile(At(name)) != bytes) WriteFile(At(name), bytes);
  }

  /// What holds after a run, however it ended.
  void Check(const Job& job, const ProgramResult& result, const std::string& whole) {
    ++m_runs;
    if (result.status == 1) {
      ++m_answered;
      EXPECT_NE(result.error.find("out of memory"), std::string::npos) << result.error;
    } else {
      EXPECT_EQ(result.status, 0) << result.error;
      EXPECT_EQ(result.out, whole);
      if (std::filesystem::exists(At("made.png"))) {
        EXPECT_EQ(ReadFile(At("made.png")), m_picture) << "a text may be missing";
      }
    }
    const bool isWritten =
        result.status == 0 || result.error.find("is written") != std::string::npos;
    for (const std::string& name : Names()) {
      EXPECT_FALSE(name.ends_with(".part")) << name;
      if (!isWritten) {
        EXPECT_TRUE(m_files.contains(name)) << name;
      }
    }
    if (job.changes) {
      const bool hasChanged = std::ranges::any_of(Names(), [&](const std::string& name) {
        return !m_files.contains(name) || ReadFile(At(name)) != m_files.at(name);
      });
      EXPECT_EQ(hasChanged, isWritten) << result.error;
    }
    Restore();
  }

  /// The next of some places between 1 and `last`, evenly spread.
  static std::vector<long> Places(long last) {
    const long step = std::max(1L, last / Rounds(6, 400));
    std::vector<long> places;
    for (long at = 1 + static_cast<long>(std::random_device()()) % step; at <= last; at += step)
      places.push_back(at);
    return places;
  }

  void Report(const std::string& what) const {
    ReportCampaign(what + ": " + std::to_string(m_runs) + " runs, " + std::to_string(m_answered) +
                       " answered \"out of memory\", the others done",
                   HasFailure() ? 1 : 0);
  }

  std::map<std::string, std::string> m_files;
  std::string m_picture;  ///< as it is with memory
  long m_runs = 0;
  long m_answered = 0;
};

TEST_F(NoMemory, EveryAllocation) {
  const std::string preload = "LD_PRELOAD='" UTDATA_FAILING_MALLOC "' ";
  for (const Job& job : jobs) {
    const std::string program = "'" UTDATA_PROGRAM "' " + std::string(job.arguments);
    const ProgramResult whole = RunShell("sh",
                                         preload + "UTDATA_COUNT_ALLOCATIONS=../" +
                                             m_folder.filename().string() + ".count " + program);
    const std::filesystem::path counted = m_folder.string() + ".count";
    const long quantity = std::atol(ReadFile(counted).c_str());
    std::filesystem::remove(counted);
    ASSERT_EQ(whole.status, 0) << whole.error;
    ASSERT_GT(quantity, 1000) << job.arguments;
    Restore();
    for (const char* shortage : {"", "+"})
      for (const long place : Places(quantity)) {
        SCOPED_TRACE(job.arguments + (": allocation " + std::to_string(place)) + shortage);
        Check(job,
              RunShell("sh",
                       preload + "UTDATA_FAIL_ALLOCATION=" + std::to_string(place) + shortage +
                           " " + program),
              whole.out);
        if (HasFatalFailure()) return;
      }
  }
  Report("every allocation of the program");
}

TEST_F(NoMemory, EverySizeOfAddresses) {
  const auto limited = [](long kilobytes, const std::string& arguments) {
    return "ulimit -v " + std::to_string(kilobytes) + "; ulimit -c 0; '" UTDATA_PROGRAM "' " +
           arguments;
  };
  long least = 20000;  // below that the system cannot load it
  while (RunShell("sh", limited(least, "--version")).status != 0) least += 1000;
  for (const Job& job : jobs) {
    const ProgramResult whole = Run(job.arguments);
    Restore();
    long enough = least;
    while (RunShell("sh", limited(enough, job.arguments)).status != 0) {
      Restore();
      enough += 4000;
      ASSERT_LT(enough, 2000000) << job.arguments;
    }
    Restore();
    for (const long above : Places(enough - least)) {
      SCOPED_TRACE(job.arguments + (": " + std::to_string(least + above)) + " KiB");
      Check(job, RunShell("sh", limited(least + above, job.arguments)), whole.out);
    }
  }
  Report("every size of addresses");
}

}  // namespace
}  // namespace utdata::test

#endif
