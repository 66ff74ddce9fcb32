#include <string>

#include "run_program.h"

namespace utdata::test {
namespace {

class ImportTest : public ProgramTest {};

TEST_F(ImportTest, InfoShowsWhatTheCommandLineSaid) {
  WriteFile(At("scan.raw"), std::string(2 * 3 * 4 * 2, 'x'));
  ASSERT_EQ(Run("import scan.raw -o scan.fpd --shape 2,3,4 --axes row,column,sample --dtype i16 "
                "--rectified --column-step 1 "
                "--row-step 10 --sample-step 20 --sample-offset -40 --channel-name Links° --title "
                "'Naht 7'")
                .status,
            0);
  const nlohmann::json info = RunJson("info scan.fpd --json --hash");
  EXPECT_EQ(info["path"], "scan.fpd");
  EXPECT_EQ(info["files"], nlohmann::json({"scan.fpd"}));
  EXPECT_EQ(info["groups"].size(), 19U);
  for (const auto& [name, count] : info["groups"].items())
    EXPECT_EQ(count,
              name == "data" || name == "channel" || name == "probe" || name == "info" ? 1 : 0)
        << name;
  ASSERT_EQ(info["data"].size(), 1U);
  const nlohmann::json expected = nlohmann::json::parse(R"({
      "label": "Links° G0 ", "id_label": "C 1 G0 ", "class": 1, "master": false, "channel": 0,
      "sub_channel": 0, "gate": 0, "patch": 0, "bookmark": 2, "type": "i16", "rectified": true,
      "columns": {"quantity": 3, "resolution": 0.001, "offset": 0.0},
      "rows": {"quantity": 2, "resolution": 0.01, "offset": 0.0},
      "samples": {"quantity": 4, "resolution": 2e-8, "offset": -4e-8},
      "minimum": -32768, "maximum": 32767, "sample_bytes": 2, "table_bytes": 48,
      "table_sha256": "23b3634e2751a892cddd80e42c0027949226cffdb231c42cba9361fce2a3021e"})");
  for (const auto& [field, value] : expected.items())
    EXPECT_EQ(info["data"][0][field], value) << field;
  EXPECT_NE(Run("info scan.fpd").out.find("Naht 7"), std::string::npos);
}

TEST_F(ImportTest, NeverReplacesAFileUnlessForced) {
  WriteFile(At("scan.raw"), "12345678");
  const std::string import =
      "import scan.raw -o scan.fpd --shape 2,2,2 --axes row,column,sample --dtype u8";
  ASSERT_EQ(Run(import).status, 0);
  const std::string first = ReadFile(At("scan.fpd"));
  WriteFile(At("scan.raw"), "abcdefgh");
  ExpectOneLine(Run(import), 1, "scan.fpd");
  EXPECT_EQ(ReadFile(At("scan.fpd")), first);
  EXPECT_EQ(Run(import + " --force").status, 0);
  EXPECT_NE(ReadFile(At("scan.fpd")).find("abcdefgh"), std::string::npos);
  // A stray companion would change what a reader sees in the new file.
  WriteFile(At("scan.A01"), "");
  ExpectOneLine(Run(import + " --force"), 1, "scan.A01");
}

/// A sector of three beams with two cells of four samples each; sample k of cell c of beam b is
/// 100 b + 10 c + k.
std::string SectorBytes(bool beamIsInside) {
  std::string bytes;
  for (std::uint32_t outer = 0; outer < 6; ++outer) {
    const std::uint32_t beam = beamIsInside ? outer % 3 : outer / 2;
    const std::uint32_t cell = beamIsInside ? outer / 3 : outer % 2;
    for (std::uint32_t sample = 0; sample < 4; ++sample) {
      const std::uint32_t value = 100 * beam + 10 * cell + sample;
      bytes += {static_cast<char>(value & 0xFFU), static_cast<char>(value >> 8U)};
    }
  }
  return bytes;
}

TEST_F(ImportTest, AnArrayWithABeamAxisBecomesAChannelOfBeams) {
  for (const bool beamIsInside : {false, true}) {
    WriteFile(At("sector.raw"), SectorBytes(beamIsInside));
    const ProgramResult result =
        Run(std::string("import sector.raw -o sector.fpd --force --dtype i16 --shape ") +
            (beamIsInside ? "2,3,4 --axes column,beam,sample" : "3,2,4 --axes beam,column,sample") +
            " --channel 2 --sub-channel 5 --angle -10:2.5 --skew 90 --sound-speed 3240");
    ASSERT_EQ(result.status, 0) << result.error;
    const nlohmann::json info = RunJson("info sector.fpd --json");
    EXPECT_EQ(info["groups"]["channel"], 1);
    EXPECT_EQ(info["groups"]["sub_channel"], 3);
    ASSERT_EQ(info["data"].size(), 3U);
    for (std::size_t beam = 0; beam < 3; ++beam) {
      const nlohmann::json& data = info["data"][beam];
      EXPECT_EQ(data["channel"], 2);
      EXPECT_EQ(data["sub_channel"], 5 + beam);
      EXPECT_EQ(data["probe_angle"], -10 + 2.5 * static_cast<double>(beam));
      EXPECT_EQ(data["probe_skew"], 90.0);
      ASSERT_EQ(Run("export sector.fpd --force -o beam.npy --data " + std::to_string(beam)).status,
                0);
      const std::string npy = ReadFile(At("beam.npy"));
      EXPECT_TRUE(npy.substr(npy.size() - 16) == SectorBytes(false).substr(beam * 16, 16)) << beam;
    }
    ASSERT_EQ(info["masters"].size(), 1U);
    EXPECT_EQ(info["masters"][0]["elements"], nlohmann::json({0, 1, 2}));
  }
}

/// Transmitters, receivers and pairs are numbers, not millimetres, also after an export and another
/// import.
TEST_F(ImportTest, AxesOfAFullMatrixCaptureAreCounted) {
  WriteFile(At("fmc.raw"), SectorBytes(false));
  for (const auto& [axes, shape, columns] :
       {std::tuple("tx,rx,sample", "3,2,4", 2), std::tuple("pair,sample", "6,4", 6)}) {
    ASSERT_EQ(Run(std::string("import fmc.raw -o fmc.fpd --force --dtype i16 --shape ") + shape +
                  " --axes " + axes)
                  .status,
              0);
    ASSERT_EQ(Run("export fmc.fpd --data 0 -o fmc.npy --force").status, 0);
    ASSERT_EQ(Run("import fmc.npy -o again.fpd --force").status, 0);
    for (const char* file : {"fmc.fpd", "again.fpd"}) {
      const nlohmann::json info = RunJson(std::string("info ") + file + " --json");
      EXPECT_TRUE(info["warnings"].empty()) << info;
      EXPECT_EQ(info["data"][0]["columns"]["quantity"], columns);
      EXPECT_EQ(info["data"][0]["columns"]["resolution"], 0.0);
      const ProgramResult picture =
          Run(std::string("render ") + file + " --data 0 --view b --row 0 -o b.png --force --json");
      EXPECT_EQ(picture.status, 0) << picture.error;
      EXPECT_EQ(picture.error, "");
    }
  }
}

TEST_F(ImportTest, AListOfArraysIsAddedAtOnceBesideWhatIsThere) {
  std::filesystem::create_directory(At("raw"));
  WriteFile(At("raw/sector.raw"), SectorBytes(false));
  WriteFile(At("raw/list.json"), R"([
      {"array": "sector.raw", "shape": [3, 2, 4], "axes": ["beam", "column", "sample"],
       "channel": 0, "angle": [40, 50, 60], "sound_speed": 3240},
      {"array": "sector.raw", "shape": "6,4", "axes": "row,sample", "channel": 1, "tofd": true,
       "pcs": 60, "sound_speed": 5920},
      {"array": "sector.raw", "shape": "6,4", "axes": "column,sample", "rectified": true,
       "channel": 2, "sub_channel": 9, "angle": 45}])");
  ASSERT_EQ(Run("import raw/list.json -o all.fpd --dtype i16").status, 0);
  ASSERT_EQ(Run("import raw/sector.raw -o one.fpd --channel 7 --dtype i16 --shape 6,4 --axes "
                "row,sample")
                .status,
            0);
  for (const std::string as : {"append", "companion"}) {
    std::filesystem::copy_file(At("one.fpd"), At(as + ".fpd"));
    const ProgramResult result =
        Run("import raw/list.json --dtype i16 --into " + as + ".fpd --as " + as);
    ASSERT_EQ(result.status, 0) << result.error;
    const nlohmann::json all = RunJson("info all.fpd --json");
    const nlohmann::json into = RunJson("info " + as + ".fpd --json");
    EXPECT_EQ(into["files"].size(), as == "append" ? 1U : 2U);
    ASSERT_EQ(into["data"].size(), 6U);
    for (std::size_t index = 0; index < 5; ++index)
      for (const char* field :
           {"channel", "sub_channel", "probe_angle", "tofd", "probe_separation"})
        EXPECT_EQ(into["data"][index + 1][field], all["data"][index][field]) << index << field;
    EXPECT_EQ(into["data"][4]["bookmark"], 3);
    EXPECT_EQ(into["masters"].size(), 2U);
    EXPECT_EQ(Run("verify " + as + ".fpd").status, 0);
  }
}

TEST_F(ImportTest, WhatCannotBeAddedLeavesTheInspectionAsItWas) {
  WriteFile(At("sector.raw"), SectorBytes(false));
  const std::string array = "import sector.raw --dtype i16 ";
  const std::string sector = "--shape 3,2,4 --axes beam,column,sample ";
  ASSERT_EQ(Run(array + sector + "-o scan.fpd --angle 40:10 --sound-speed 3240").status, 0);
  const std::string before = ReadFile(At("scan.fpd"));
  WriteFile(At("list.json"), R"([
      {"array": "sector.raw", "shape": "6,4", "axes": "row,sample", "channel": 3},
      {"array": "sector.raw", "shape": "6,5", "axes": "row,sample", "channel": 4}])");
  WriteFile(At("odd.json"), R"([{"array": "sector.raw", "shapes": "6,4"}])");
  const std::string into = "--into scan.fpd ";
  for (const auto& [arguments, named] : {
           std::pair(array + sector + into + "--angle 40:10", "has its ids"),
           std::pair(array + sector + into + "--angle 40:10 --sub-channel 4 --sound-speed 5900",
                     "soundSpeed"),
           std::pair(std::string("import list.json --dtype i16 ") + into, "6 x 5"),
           std::pair(std::string("import odd.json --dtype i16 ") + into, "entry 1"),
           std::pair(std::string("import scan.fpd.json ") + into, "scan.fpd.json"),
       })
    ExpectOneLine(Run(arguments), 1, named);
  for (const std::string& wrong : {
           array + sector + into,
           array + sector + into + "--angle 40,50",
           array + sector + into + "--angle 40:x",
           array + sector + into + "--angle 40:30",
           array + sector + into + "--angle 40:10 --force",
           array + sector + into + "--angle 40:10 -o other.fpd",
           array + sector + "-o other.fpd --as append --angle 40:10",
           array + into + "--shape 6,4 --axes row,sample --channel 1 --tofd",
           array + into + "--shape 6,4 --axes row,sample --channel 1 --pcs 60",
       })
    ExpectOneLine(Run(wrong), 2, "--help'");
  EXPECT_TRUE(ReadFile(At("scan.fpd")) == before);
  EXPECT_FALSE(std::filesystem::exists(At("scan.A01")));
}

}  // namespace
}  // namespace utdata::test
