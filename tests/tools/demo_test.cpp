#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <utility>

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

/// The strongest sample of an A-scan, as `export` has it.
struct Strongest {
  long sample = 0;
  int value = 0;
};

/// Each flaw is recorded where its sound path says: of the beam that looks at it, in the middle of
/// its length, the strongest sample.
TEST_F(DemoTest, TheBeamsSeeTheFlawsWhereTheyWerePut) {
  ASSERT_EQ(Run("demo --out . --scans phased").status, 0);
  EXPECT_FALSE(std::filesystem::exists(At("weld.fpd")));
  const nlohmann::json info = RunJson("info paut.fpd --json");
  EXPECT_EQ(info["groups"]["channel"], 3);
  EXPECT_EQ(info["groups"]["sub_channel"], 62);
  EXPECT_EQ(info["groups"]["weld"], 1);
  ASSERT_EQ(info["masters"].size(), 2U);
  EXPECT_EQ(info["masters"][1]["elements"].size(), 31U);
  EXPECT_EQ(info["data"][62]["bookmark"], 3);

  const nlohmann::json part = nlohmann::json::parse(ReadFile(At("flaws.json")));
  std::map<std::string, std::string> exported;
  const auto strongest = [&](const std::string& group, double y, double around) {
    if (!exported.contains(group)) {
      EXPECT_EQ(Run("export paut.fpd --force -o beam.npy --data " + group).status, 0);
      exported[group] = ReadFile(At("beam.npy"));
    }
    const bool isTofd = group == "channel=2";
    const long samples = isTofd ? 400 : 926;
    const double step = isTofd ? 10e-9 : 40e-9;
    const double start = isTofd ? 9.5e-6 : 40e-3 / 3240;
    const double speed = isTofd ? 5920 : 3240;
    const std::string& bytes = exported[group];
    const std::size_t table =
        bytes.size() - std::size_t{60} * static_cast<std::size_t>(samples) * 2;
    Strongest found;
    for (long sample = 0; sample < samples; ++sample) {
      const double path = (start + static_cast<double>(sample) * step) * speed / 2 * 1000;
      if (std::abs(path - around) > 1.5) continue;
      std::int16_t value = 0;
      std::memcpy(&value,
                  bytes.data() + table +
                      static_cast<std::size_t>((std::lround(y / 2) * samples + sample) * 2),
                  2);
      if (std::abs(value) > std::abs(found.value)) found = {sample, value};
    }
    return std::pair(found, (start + static_cast<double>(found.sample) * step) * speed / 2 * 1000);
  };
  std::size_t seen = 0;
  for (const auto& flaw : part["flaws"]) {
    const double y = (flaw["from"].get<double>() + flaw["to"].get<double>()) / 2;
    for (const auto& sight : flaw["seen"]) {
      SCOPED_TRACE(flaw.dump());
      ++seen;
      const auto [echo, path] = strongest(
          "channel=" + sight["channel"].dump() + ",sub_channel=" + sight["sub_channel"].dump(),
          y,
          sight["half_path"]);
      EXPECT_NEAR(path, sight["half_path"].get<double>(), 0.1);
      EXPECT_GT(echo.value, 0.05 * 32767);
    }
    if (!flaw.contains("tofd")) continue;
    const auto [echo, path] = strongest("channel=2", y, flaw["tofd"]["half_path"]);
    EXPECT_GT(std::abs(echo.value), 0.03 * 32767) << flaw;
  }
  EXPECT_GE(seen, 2 * part["flaws"].size());
  // The triangle of the tip: 40 mm beside it, 17 mm deep.
  const auto& tip = part["flaws"][1];
  EXPECT_NEAR(tip["seen"][0]["half_path"], 43.463, 1e-3);
  EXPECT_NEAR(tip["seen"][0]["angle"], 66.97, 1e-2);
  EXPECT_NEAR(tip["tofd"]["depth_if_midway"], 17, 1e-6);
}

}  // namespace
}  // namespace utdata::test
