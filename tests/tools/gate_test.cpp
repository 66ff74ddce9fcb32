// The verb gate: which file it changes, what it says, and what it refuses.
#include <map>
#include <vector>

#include "run_program.h"

namespace utdata::test {
namespace {

class GateTest : public ProgramTest {
 protected:
  /// weld.fpd: six A-scans of 83 samples, 20 ns each from 1 µs on; the second has an echo of 20 %.
  void SetUp() override {
    ProgramTest::SetUp();
    std::string samples(2 * 3 * 83 * 2, '\0');
    samples[2 * (83 + 41)] = '\x33';
    samples[2 * (83 + 41) + 1] = '\x33';
    WriteFile(At("scan.raw"), samples);
    ASSERT_EQ(Run("import scan.raw -o weld.fpd --shape 2,3,83 --axes row,column,sample --dtype u16 "
                  "--rectified --sample-step 20 --sample-offset 1000")
                  .status,
              0);
  }
  [[nodiscard]] ProgramResult Gate(const std::string& more) const {
    return Run("gate weld.fpd --channel 0 --gate 3 " + more);
  }
  [[nodiscard]] std::map<std::string, std::string> Bytes() const {
    std::map<std::string, std::string> bytes;
    for (const std::string& name : Names()) bytes[name] = ReadFile(At(name));
    return bytes;
  }
};

TEST_F(GateTest, ChangesOnlyTheFileItSaysAndSaysWhatItSaw) {
  const auto before = Bytes();
  const nlohmann::json result = RunJson(
      "gate weld.fpd --channel 0 --gate 3 --start 1 --width 1 --threshold 20 --json --as "
      "companion");
  EXPECT_EQ(result["gated"][0]["strongest"]["amplitude"], 13107);
  EXPECT_EQ(result["gated"][0]["strongest"]["column"], 1);
  EXPECT_EQ(result["written"], "weld.A01");
  const nlohmann::json info = RunJson("info weld.fpd --json");
  EXPECT_EQ(info["data"].size(), 3U);
  EXPECT_EQ(info["data"][1]["gate"], 3);
  EXPECT_EQ(Gate("--start 1.2 --width 0.4 --as new -o other.fpd").status, 1)
      << "its C-scans are in the companion";
  EXPECT_EQ(Gate("--start 1 --width 1 --as append").status, 1);
  std::filesystem::remove(At("weld.A01"));
  EXPECT_EQ(Bytes() == before, true);
  ASSERT_EQ(Gate("--start 1.2 --width 0.4 --as new -o other.fpd").status, 0);
  std::filesystem::rename(At("other.fpd"), At("moved"));
  EXPECT_EQ(RunJson("info moved --json")["data"].size(), 3U);
  std::filesystem::remove(At("moved"));
  EXPECT_EQ(Bytes() == before, true);
  ASSERT_EQ(Gate("--start 1 --width 1 --as append").status, 0);
  EXPECT_EQ(Names(), std::set<std::string>({"scan.raw", "weld.fpd"}));
}

TEST_F(GateTest, RefusesWhatItCannotGateAndWritesNothing) {
  const auto before = Bytes();
  struct Case {
    std::string arguments;
    int status;
    std::string named;
  };
  for (const Case& bad :
       std::vector<Case>{{"--start 2.66 --width 1", 1, "no sample lies in the gate"},
                         {"--start 1 --width 1 --as new -o weld.fpd --force", 1, "weld.fpd"},
                         {"--start 1 --width 1 --as new -o scan.raw", 1, "the file exists"},
                         {"--start 1 --width 1 --as new", 2, "-o OUT"},
                         {"--start nan --width 1", 2, "--start"},
                         {"--start 1 --width 0", 2, "--width"},
                         {"--start 1 --width 1 --threshold 101", 2, "--threshold"}}) {
    SCOPED_TRACE(bad.arguments);
    ExpectOneLine(Gate(bad.arguments), bad.status, bad.named);
  }
  ExpectOneLine(Run("gate weld.fpd --channel 0 --gate 2003 --start 1 --width 1"), 2, "--gate");
  ExpectOneLine(Run("gate scan.raw --channel 0 --gate 3 --start 1 --width 1"), 1, "scan.raw");
  EXPECT_EQ(Bytes() == before, true);
}

}  // namespace
}  // namespace utdata::test
