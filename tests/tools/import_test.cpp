#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "run_program.h"
#include "utdata/fcont.h"

namespace utdata::test {
namespace {

constexpr std::array<std::uint32_t, 3> importQuantities = {
    5,
    37,
    70};  // rows, columns, samples: no multiple of a block of the transposition
constexpr std::array<const char*, 3> axisNames = {"row", "column", "sample"};

/// A value that no other place of the array shares within its last two bytes, and that uses the
/// sign bit.
std::uint16_t ValueAt(std::uint32_t row, std::uint32_t column, std::uint32_t sample) {
  return static_cast<std::uint16_t>((row * importQuantities[1] + column) * importQuantities[2] +
                                    sample + 30000);
}

void Append(std::string& bytes, std::uint16_t value, std::uint32_t size, bool bigEndian) {
  const char low = static_cast<char>(value & 0xFFU);
  const char high = static_cast<char>(value >> 8U);
  if (size == 1)
    bytes += low;
  else
    bytes.append({bigEndian ? high : low, bigEndian ? low : high});
}

/// The array with its axes in the order given, outermost first; `places` is a permutation of 0 row,
/// 1 column, 2 sample.
std::string ArrayBytes(const std::array<std::size_t, 3>& places,
                       std::uint32_t size,
                       bool bigEndian) {
  std::string bytes;
  std::array<std::uint32_t, 3> at{};
  for (at[places[0]] = 0; at[places[0]] < importQuantities[places[0]]; ++at[places[0]])
    for (at[places[1]] = 0; at[places[1]] < importQuantities[places[1]]; ++at[places[1]])
      for (at[places[2]] = 0; at[places[2]] < importQuantities[places[2]]; ++at[places[2]])
        Append(bytes, ValueAt(at[0], at[1], at[2]), size, bigEndian);
  return bytes;
}

/// The samples of the only data group of a file, read back through the library.
std::string SamplesOf(const std::filesystem::path& path) {
  CFCont container;
  const std::unique_ptr<CFContTypeFileDescr> file(
      container.FileLoad(path.wstring().c_str(), nullptr, nullptr));
  if (!file || file->data.GetCount() != 1) return "no data group";
  void* samples = nullptr;
  std::uint64_t size = 0;
  if (gdata_SamplesMap(file->data.GetHead(), &samples, &size) != SCFile::status_Ok)
    return "no samples";
  const std::string bytes(static_cast<const char*>(samples), size);
  const auto removeAll = [](auto& list, auto remove) {
    for (auto* group : list) remove(group);
  };
  removeAll(file->data, [](CGDataTypeFDD* group) { gdata_Delete(group, 1); });
  removeAll(file->channels, [](CGChanTypeDescr* group) { gchan_Delete(group, 1); });
  removeAll(file->probes, [](CGProbeTypeDescr* group) { gprobe_Delete(group, 1); });
  removeAll(file->infos, [](CGInfoTypeDescr* group) { ginfo_Delete(group, 1); });
  container.FileClose(file.get());
  return bytes;
}

class ImportTest : public ProgramTest {
 protected:
  /// The samples after the import of the array with the axes in the order given.
  std::string Imported(const std::array<std::size_t, 3>& places,
                       const std::string& dtype,
                       bool bigEndian) {
    const std::uint32_t size = dtype.ends_with("16") ? 2 : 1;
    WriteFile(At("scan.raw"), ArrayBytes(places, size, bigEndian));
    std::string shape;
    std::string axes;
    for (const std::size_t place : places) {
      shape += (shape.empty() ? "" : ",") + std::to_string(importQuantities[place]);
      axes += std::string(axes.empty() ? "" : ",") + axisNames[place];
    }
    const ProgramResult result =
        Run("import scan.raw -o scan.fpd --force --shape " + shape + " --axes " + axes +
            " --dtype " + dtype + (bigEndian ? " --big-endian" : ""));
    EXPECT_EQ(result.status, 0) << result.error;
    return SamplesOf(At("scan.fpd"));
  }
};

TEST_F(ImportTest, GathersAScansFromEveryOrderOfAxesAndSampleType) {
  std::array<std::size_t, 3> places = {0, 1, 2};
  const std::string ascans16 = ArrayBytes(places, 2, false);
  const std::string ascans8 = ArrayBytes(places, 1, false);
  do {
    SCOPED_TRACE(std::to_string(places[0]) + std::to_string(places[1]) + std::to_string(places[2]));
    for (const std::string dtype : {"u8", "i8"})
      EXPECT_EQ(Imported(places, dtype, false) == ascans8, true) << dtype;
    for (const std::string dtype : {"u16", "i16"})
      for (const bool bigEndian : {false, true})
        EXPECT_EQ(Imported(places, dtype, bigEndian) == ascans16, true)
            << dtype << (bigEndian ? " big-endian" : "");
  } while (std::next_permutation(places.begin(), places.end()));
}

TEST_F(ImportTest, GathersMatricesLargerThanTheReadBuffer) {
  constexpr std::uint32_t samples = 40;
  constexpr std::uint32_t cells = 450000;
  std::vector<std::uint16_t> array(std::size_t{samples} * cells);
  std::string ascans(array.size() * 2, 0);
  for (std::uint32_t cell = 0; cell < cells; ++cell)
    for (std::uint32_t sample = 0; sample < samples; ++sample) {
      const auto value = static_cast<std::uint16_t>(cell * 31 + sample * 7);
      array[std::size_t{sample} * cells + cell] = value;
      reinterpret_cast<std::uint16_t*>(ascans.data())[std::size_t{cell} * samples + sample] = value;
    }
  WriteFile(At("scan.raw"),
            std::string(reinterpret_cast<const char*>(array.data()), array.size() * 2));
  ASSERT_EQ(
      Run("import scan.raw -o scan.fpd --shape 40,1000,450 --axes sample,row,column --dtype u16")
          .status,
      0);
  EXPECT_TRUE(SamplesOf(At("scan.fpd")) == ascans);
}

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
  EXPECT_EQ(SamplesOf(At("scan.fpd")), "abcdefgh");
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
    for (std::uint32_t sample = 0; sample < 4; ++sample)
      Append(bytes, static_cast<std::uint16_t>(100 * beam + 10 * cell + sample), 2, false);
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
