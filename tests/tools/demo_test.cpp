#include <cstdint>
#include <cstring>
#include <string>

#include "run_program.h"

namespace utdata::test {
namespace {

using DemoTest = ProgramTest;

/// The value of a field of the first group of a type, as `tree --json` shows it.
nlohmann::json Field(const nlohmann::json& tree, int typeCode, const std::string& name) {
  for (const auto& group : tree["groups"][0]["items"]) {
    if (group["code"] != typeCode) continue;
    for (const auto& item : group["items"])
      if (item["name"] == name) return item["value"];
    return nullptr;
  }
  return nullptr;
}

/// The samples of a group's block as `tree` places them in its file.
std::string BlockOf(const nlohmann::json& tree, int typeCode, const std::string& file) {
  for (const auto& group : tree["groups"][0]["items"]) {
    if (group["code"] != typeCode) continue;
    for (const auto& item : group["items"])
      if (item.contains("offset")) return file.substr(item["offset"], item["bytes"]);
  }
  return {};
}

TEST_F(DemoTest, TakesAScanFromRecordingToVerification) {
  const ProgramResult demo = Run("demo --out out");
  ASSERT_EQ(demo.status, 0) << demo.error;
  EXPECT_EQ(demo.error, "");

  const nlohmann::json info = RunJson("info out/weld.fpd --json");
  EXPECT_EQ(info["files"], nlohmann::json({"out/weld.fpd", "out/weld.A01"}));
  EXPECT_EQ(info["groups"]["gate"], 2);
  ASSERT_EQ(info["data"].size(), 5U);
  EXPECT_EQ(info["data"][0]["type"], "i16");
  constexpr int cells = 10 * 256;
  EXPECT_EQ(info["data"][0]["table_bytes"],
            cells * 4 + cells * 512 * 2);  // the index table, then the A-scans
  for (const unsigned row : {1U, 2U, 3U, 4U}) {
    EXPECT_EQ(info["data"][row]["class"], row % 2 == 1 ? 2 : 3);
    EXPECT_EQ(info["data"][row]["gate"], row < 3 ? 2 : 1);
    EXPECT_EQ(info["data"][row]["table_bytes"], cells * 2);
  }

  const nlohmann::json base = RunJson("tree out/weld.fpd --json");
  const nlohmann::json companion = RunJson("tree out/weld.A01 --json");
  EXPECT_EQ(Field(base, 10224, "positiveLevel"), 20.0);
  EXPECT_EQ(Field(companion, 10025, "positiveLevel"), 15.0);
  EXPECT_EQ(Field(companion, 10025, "gateId"), 1);
  for (const char* picture : {"out/crack.png", "out/cscan.png"})
    EXPECT_TRUE(std::filesystem::exists(At(picture)));
  EXPECT_EQ(Run("verify out/weld.fpd out/weld.A01").status, 0);
}

/// Every cell of the inspection leads to the samples that stand in the acquisition file, whose
/// offsets count from elsewhere.
TEST_F(DemoTest, TheInspectionHoldsTheRecordedSamples) {
  ASSERT_EQ(Run("demo --out .").status, 0);
  const std::string recorded = ReadFile(At("weld.acq"));
  const std::string block =
      BlockOf(RunJson("tree weld.fpd --json"), 10004, ReadFile(At("weld.fpd")));
  constexpr std::size_t cells = 10 * 256, ascan = 512 * 2, header = 2048;
  ASSERT_EQ(block.size(), cells * (4 + ascan));
  ASSERT_EQ(recorded.size(), header + block.size() + 2 * cells * 2);
  EXPECT_EQ(recorded.substr(0, header), std::string(header, '\0'));
  for (std::size_t cell = 0; cell < cells; ++cell) {
    std::uint32_t before = 0, after = 0;
    std::memcpy(&before, recorded.data() + header + cell * 4, 4);
    std::memcpy(&after, block.data() + cell * 4, 4);
    ASSERT_EQ(after, before - header) << "cell " << cell;
    ASSERT_EQ(recorded.compare(before, ascan, block, after, ascan), 0) << "cell " << cell;
  }
}

TEST_F(DemoTest, IsTheSameEachTimeAndReplacesOnlyWhenForced) {
  ASSERT_EQ(Run("demo").status, 0);
  const nlohmann::json first = RunJson("info utdata-demo/weld.fpd --json --hash");
  ExpectOneLine(Run("demo"), 1, "utdata-demo/weld.fpd");
  ASSERT_EQ(Run("edit utdata-demo/weld.fpd channel 0 gain=40 --as companion").status, 0);
  const ProgramResult again = Run("demo --force --quiet");
  EXPECT_EQ(again.status, 0) << again.error;
  EXPECT_EQ(again.out + again.error, "");
  EXPECT_EQ(RunJson("info utdata-demo/weld.fpd --json --hash"), first);
}

}  // namespace
}  // namespace utdata::test
