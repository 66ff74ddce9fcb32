#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <vector>

#include "run_program.h"
#include "utdata/fcont.h"

namespace utdata::test {
namespace {

using Json = nlohmann::json;

constexpr std::uint32_t rowCount = 2, columnCount = 3, sampleCount = 50;

/// What distinguishes data groups.
struct Group {
  gdata_enumDataClass dataClass;
  std::uint32_t channel;
  std::uint32_t subChannel;
  std::uint32_t gate;
};

/// Data groups without a bookmark type, as an instrument may leave it to the reader.
void WriteInspection(const std::filesystem::path& path, const std::vector<Group>& groups) {
  const auto file = std::make_unique<CFContTypeFileDescr>();
  ASSERT_TRUE(file->SetPath(path.wstring()));
  std::deque<CGDataTypeFDD> records;
  std::vector<std::uint16_t> table(std::size_t{rowCount} * columnCount * sampleCount);
  for (std::size_t at = 0; at < table.size(); ++at) table[at] = static_cast<std::uint16_t>(at * 7);
  for (const Group& group : groups) {
    CGDataTypeFDD& record = records.emplace_back();
    record.dataClass = group.dataClass;
    record.channelId = group.channel;
    record.subChannelId = group.subChannel;
    record.gateId = group.gate;
    record.columnQuantity = columnCount;
    record.columnResolution = 1e-3F;
    record.rowQuantity = rowCount;
    record.rowResolution = 2e-3F;
    record.sampleQuantity = group.dataClass == gdata_AScan ? sampleCount : 1;
    record.sampleResolution = record.dataResolution = 20e-9F;
    record.SetDataType(kvt_UInt16);
    record.SetDataRectification(gdata_RectifFull);
    record.dataMaximum = group.dataClass == gdata_CScanPosition ? sampleCount : 65535;
    record.sampleSize = 2;
    record.cellSize = 2 * record.sampleQuantity;
    record.soundSpeed = 5900;
    record.dataPointer = table.data();
    file->data.AddTail(&record);
  }
  CFCont container;
  SCFile::GroupHandle top = nullptr;
  SCFile::FileHandle handle = nullptr;
  ASSERT_EQ(container.FileWrite(nullptr, file.get(), 1, &top, &handle, 0), SCFile::status_Ok);
  ASSERT_EQ(SCFile::file_Close(handle), SCFile::status_Ok);
}

class DataItemsTest : public ProgramTest {
 protected:
  [[nodiscard]] Json Row(std::size_t index) const {
    return RunJson("info weld.fpd --json --hash")["data"][index];
  }
};

TEST_F(DataItemsTest, GatedCScansMatchEachOther) {
  WriteInspection(At("weld.fpd"), {{gdata_AScan, 0, 0, 0}});
  ASSERT_EQ(Run("gate weld.fpd --channel 0 --gate 1 --start 0.1 --width 0.5 --as companion").status,
            0);
  ASSERT_EQ(Run("gate weld.fpd --channel 0 --gate 140 --start 0.1 --width 0.5 --in-memory").status,
            0);
  const Json info = RunJson("info weld.fpd --json");
  ASSERT_EQ(info["data"].size(), 5U);
  EXPECT_EQ(info["groups"]["data"], 5);
  const std::array<Json, 5> matched = {nullptr, 2, 1, 4, 3};
  const std::array<int, 5> bookmarks = {2, 2, 2, 10, 10};
  for (std::size_t row = 0; row < 5; ++row) {
    EXPECT_EQ(info["data"][row]["matched"], matched[row]) << row;
    EXPECT_EQ(info["data"][row]["bookmark"], bookmarks[row]) << row;
  }
  const std::string text = Run("info weld.fpd").out;
  for (const std::string wanted : {"row 2", "row 1", "row 3", "single", "coupling"})
    EXPECT_NE(text.find(wanted), std::string::npos) << text;
}

TEST_F(DataItemsTest, InfoShowsMastersAndTheOrderOfAChannel) {
  WriteInspection(At("weld.fpd"),
                  {{gdata_CScanAmplitude, 4, 2, 2010},
                   {gdata_CScanAmplitude, 4, 1, 140},
                   {gdata_CScanAmplitude, 4, 1, 0},
                   {gdata_CScanAmplitude, 4, 2, 3},
                   {gdata_CScanAmplitude, 4, 1, 10},
                   {gdata_CScanPosition, 4, 1, 10},
                   {gdata_CScanPosition, 4, 1, 11},
                   {gdata_AScan, 3, 0, 0},
                   {gdata_AScan, 3, 0, 0}});
  const Json info = RunJson("info weld.fpd --json --sorted");
  EXPECT_EQ(info["sorted"],
            Json::parse(
                R"([{"channel": 3, "data": [7]}, {"channel": 4, "data": [2, 4, 5, 6, 1, 3, 0]}])"));
  EXPECT_EQ(info["groups"]["data"], 8);
  EXPECT_EQ(info["data"][8]["item"], false);
  EXPECT_EQ(info["data"][5]["matched"], 4);
  EXPECT_EQ(info["data"][6]["matched"], nullptr);
  EXPECT_EQ(info["data"][6]["meridio"], 4);
  std::map<Json, Json> elements;  // by class and gate
  for (const Json& master : info["masters"])
    elements[{master["class"], master["gate"]}] = master["elements"];
  const std::map<Json, Json> expected = {{{2, 0}, {2}},
                                         {{2, 3}, {3}},
                                         {{2, 10}, {4, 0}},
                                         {{2, 140}, {1}},
                                         {{3, 10}, {5}},
                                         {{3, 11}, {6}}};
  EXPECT_EQ(elements, expected);
  const Json number = info["data"][0]["master_number"];
  EXPECT_EQ(info["masters"][number.get<std::size_t>()]["elements"], Json({4, 0}));
  EXPECT_EQ(info["data"][7]["master_number"], nullptr);
  const std::string text = Run("info weld.fpd --sorted").out;
  EXPECT_NE(text.find("gathers rows"), std::string::npos) << text;
  EXPECT_NE(text.find("no item"), std::string::npos) << text;
}

TEST_F(DataItemsTest, EditRefusesWhatADataGroupDoesNotTake) {
  WriteInspection(
      At("weld.fpd"),
      {{gdata_AScan, 0, 0, 0}, {gdata_AScan, 0, 0, 0}, {gdata_CScanAmplitude, 0, 0, 1}});
  const std::string before = ReadFile(At("weld.fpd"));
  ExpectOneLine(Run("edit weld.fpd data 2 sampleOffset=1"), 1, "position C-scan");
  ExpectOneLine(Run("edit weld.fpd data 1 soundSpeed=3000"), 1, "another data group has its ids");
  ExpectOneLine(Run("edit weld.fpd data 9 soundSpeed=3000"), 1, "'9' matches no data group");
  ExpectOneLine(Run("edit weld.fpd data 0 probeAngle=90"), 2, "probeAngle");
  EXPECT_EQ(ReadFile(At("weld.fpd")), before);
}

}  // namespace
}  // namespace utdata::test
