#include <fcntl.h>
#include <sys/file.h>

#include <map>
#include <memory>
#include <vector>

#include "run_program.h"
#include "utdata/fcont.h"

namespace utdata::test {
namespace {

using Json = nlohmann::json;

/// Two groups of each type that has several, so that a change of the wrong one shows.
void WriteInspection(const std::filesystem::path& path) {
  std::vector<std::unique_ptr<CGChanTypeDescr>> channels(2);
  std::vector<std::unique_ptr<CGGateTypeDescr>> gates(2);
  std::vector<std::unique_ptr<CGProbeTypeDescr>> probes(2);
  std::vector<std::unique_ptr<CGPatchTypeDescr>> patches(2);
  std::vector<std::unique_ptr<CGSubchanTypeDescr>> subChannels(2);
  CGInfoTypeDescr info;
  CGSpecmatTypeDescr material;
  CFCont container;
  const auto groups = std::make_unique<CFContTypeFileDescr>();
  ASSERT_TRUE(groups->SetPath(path.wstring()));
  for (std::uint32_t at = 0; at < 2; ++at) {
    groups->channels.AddTail((channels[at] = std::make_unique<CGChanTypeDescr>()).get());
    groups->gates.AddTail((gates[at] = std::make_unique<CGGateTypeDescr>()).get());
    groups->probes.AddTail((probes[at] = std::make_unique<CGProbeTypeDescr>()).get());
    groups->patches.AddTail((patches[at] = std::make_unique<CGPatchTypeDescr>()).get());
    groups->subChannels.AddTail((subChannels[at] = std::make_unique<CGSubchanTypeDescr>()).get());
    channels[at]->channelId = gates[at]->channelId = probes[at]->probeId = patches[at]->patchId =
        at;
    channels[at]->soundSpeed = 5920;
    gates[at]->gateId = 1;
    subChannels[at]->subChannelId = at + 1;
  }
  patches[1]->columnUnits = kvt_UnitDegree;
  patches[0]->columnResolution = patches[1]->columnResolution = 1e-3F;
  CGWeldFillDescr fill, laterFill;  // of the same ids: the later one counts
  groups->weldFills.AddTail(&fill);
  groups->weldFills.AddTail(&laterFill);
  groups->infos.AddTail(&info);
  groups->specimenMaterials.AddTail(&material);
  SCFile::GroupHandle top = nullptr;
  SCFile::FileHandle file = nullptr;
  ASSERT_EQ(container.FileWrite(nullptr, groups.get(), 1, &top, &file, 0), SCFile::status_Ok);
  ASSERT_EQ(SCFile::file_Close(file), SCFile::status_Ok);
}

class EditTest : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    WriteInspection(At("weld.fpd"));
  }

  [[nodiscard]] Json Values(const std::string& group) const {
    return RunJson("edit weld.fpd " + group + " --json")["values"];
  }

  /// Every field of every group, by what selects it.
  [[nodiscard]] Json Everything(const std::string& file = "weld.fpd") const {
    Json all = Json::object();
    for (const std::string group : {"channel 0",
                                    "channel 1",
                                    "gate 0",
                                    "gate 1",
                                    "probe 0",
                                    "probe 1",
                                    "patch 0",
                                    "patch 1",
                                    "sub-channel 0",
                                    "sub-channel 1",
                                    "info",
                                    "material"})
      all[group] = RunJson("edit " + file + " " + group + " --json")["values"];
    return all;
  }

  [[nodiscard]] std::map<std::string, std::string> Bytes() const {
    std::map<std::string, std::string> bytes;
    for (const std::string& name : Names()) bytes[name] = ReadFile(At(name));
    return bytes;
  }
};

struct Edit {
  std::string group;     ///< as listed by its number
  std::string selector;  ///< the same by its ids
  std::string value;     ///< KEY=VALUE in the user's unit
  std::string key;
  Json stored;  ///< in base units
};

const std::vector<Edit> edits = {
    {"channel 1", "channel channel=1", "soundSpeed=3240", "soundSpeed", 3240.0},
    {"channel 0", "channel 0", "delay=6.5", "delay", 6.5e-6},
    {"gate 1", "gate gate=1,channel=1", "start=2.4", "start", 2.4e-6},
    {"gate 0", "gate channel=0", "positiveLevel=35", "positiveLevel", 35.0},
    {"gate 0", "gate 0", "peakSelection=first", "peakSelection", 1},
    {"probe 1", "probe probe=1", "frequency=5", "frequency", 5e6},
    {"patch 0", "patch patch=0", "columnResolution=0.5", "columnResolution", 5e-4},
    {"patch 1", "patch patch=1", "columnResolution=0.5", "columnResolution", 0.5},
    {"patch 1", "patch 1", "firstRow=-3", "firstRow", -3},
    {"sub-channel 1", "sub-channel sub_channel=2", "refractedAngle=-45", "refractedAngle", -45.0},
    {"sub-channel 0", "sub-channel sub-channel=1,channel=0", "gainOffset=1.5", "gainOffset", 1.5},
    {"material", "material", "density=7850", "density", 7850.0},
    {"material", "material 0", "name=\"a = 'b', ä\"", "name", "a = 'b', ä"},
    {"channel 1", "channel 1", "color=0xFF8000", "color", 0xFF8000},
};

TEST_F(EditTest, ReloadShowsEachChangeAndNothingElse) {
  Json expected = Everything();
  int companions = 0;
  for (std::size_t at = 0; at < edits.size(); ++at) {
    const Edit& edit = edits[at];
    SCOPED_TRACE(edit.selector + " " + edit.value);
    const bool asCompanion = at % 2 == 1;
    const ProgramResult result = Run("edit weld.fpd " + edit.selector + " " + edit.value +
                                     " --as " + (asCompanion ? "companion" : "append"));
    ASSERT_EQ(result.status, 0) << result.error;
    if (asCompanion) ++companions;
    const std::string last = companions == 0 ? "weld.fpd" : "weld.A0" + std::to_string(companions);
    EXPECT_NE(result.out.find("written to " + last), std::string::npos) << result.out;
    EXPECT_NE(result.out.find(edit.key + " "), std::string::npos) << result.out;
    expected[edit.group][edit.key] = edit.stored;
  }
  EXPECT_EQ(Everything(), expected);
  EXPECT_EQ(Run("verify weld.fpd weld.A01 weld.A07").status, 0);
}

TEST_F(EditTest, SeveralValuesGoInOneWrite) {
  const Json result = RunJson(
      "edit weld.fpd gate 1 start=1.2 width=3 polarity=negative name=Flaws --as companion --json");
  EXPECT_EQ(result["written"], "weld.A01");
  EXPECT_EQ(result["changes"].size(), 4U);
  EXPECT_EQ(result["changes"][1], Json({{"key", "start"}, {"from", 0.0}, {"to", 1.2e-6}}));
  EXPECT_EQ(Values("gate 1"), result["values"]);
  const Json counts = RunJson("info weld.fpd --json")["groups"];
  EXPECT_EQ(counts["gate"], 2);
  EXPECT_EQ(counts["weld_fill"], 1);
}

TEST_F(EditTest, ANewFileHoldsTheWholeInspectionWithItsSamples) {
  ASSERT_EQ(Run("demo --quiet --out . --force").status, 0);
  const Json before = RunJson("info weld.fpd --json --hash");
  const auto bytes = Bytes();
  ASSERT_EQ(Run("edit weld.fpd info title=Seam --as new -o new.fpd").status, 0);
  ASSERT_EQ(Run("edit new.fpd gate gate=2 start=6 --as new -o other.fpd").status, 0);
  for (const auto& [name, content] : bytes) EXPECT_TRUE(ReadFile(At(name)) == content) << name;
  const Json after = RunJson("info other.fpd --json --hash");
  EXPECT_EQ(after["groups"], before["groups"]);
  EXPECT_EQ(after["data"], before["data"]);
  EXPECT_EQ(after["files"], Json({"other.fpd"}));
  EXPECT_EQ(RunJson("edit other.fpd info --json")["values"]["title"], "Seam");
  EXPECT_EQ(RunJson("edit other.fpd gate gate=2 --json")["values"]["start"], 6e-6);
  EXPECT_EQ(RunJson("edit other.fpd gate gate=1 --json")["values"],
            RunJson("edit weld.fpd gate gate=1 --json")["values"]);
  EXPECT_EQ(Run("verify other.fpd").status, 0);
}

TEST_F(EditTest, RefusesBeforeAnythingIsWritten) {
  struct Case {
    std::string arguments;
    int status;
    std::string named;
  };
  const std::vector<Case> cases = {
      {"weld.fpd gate 0 begin=1", 2, "begin"},
      {"weld.fpd gate 0 gateId=7", 2, "gateId"},
      {"weld.fpd gate 0 start=nan", 2, "start"},
      {"weld.fpd gate 0 start=inf", 2, "start"},
      {"weld.fpd gate 0 start=1e30", 2, "start"},
      {"weld.fpd gate 0 start=1.2us", 2, "start"},
      {"weld.fpd gate 0 start=", 2, "start"},
      {"weld.fpd gate 0 width=3 start=' 1'", 2, "start"},
      {"weld.fpd gate 0 width=-1", 2, "width"},
      {"weld.fpd gate 0 start=1 start=2", 2, "start"},
      {"weld.fpd gate 0 start", 2, "KEY=VALUE"},
      {"weld.fpd gate 0 peakSelection=largest", 2, "maximum, first, last, crossing"},
      {"weld.fpd channel 0 averaging=1.5", 2, "averaging"},
      {"weld.fpd channel 0 color=0x1000000", 2, "color"},
      {"weld.fpd channel 0 gain=3 --as new", 2, "-o"},
      {"weld.fpd channel 0 gain=3 -o new.fpd", 2, "-o"},
      {"weld.fpd channel 0 gain=3 --as other", 2, "--as"},
      {"weld.fpd weld 0 name=x", 2, "GROUP"},
      {"weld.fpd gate", 2, "SELECTOR"},
      {"weld.fpd gate 2 start=1", 1, "'2'"},
      {"weld.fpd gate -1 start=1", 1, "'-1'"},
      {"weld.fpd gate gate=1 start=1", 1, "matches 2 gates"},
      {"weld.fpd gate probe=1 start=1", 1, "probe=1"},
      {"weld.fpd gate gate=1, start=1", 1, "gate=1,"},
      {"weld.fpd info title=x", 1, "--as new"},
      {"weld.fpd info title=x --as companion", 1, "--as new"},
      {"weld.fpd channel 0 name=\"$(printf 'a\\377')\"", 1, "UTF-8"},
      {"weld.fpd channel 0 gain=3 --as new -o weld.fpd", 1, "weld.fpd"},
      {"weld.fpd channel 0 gain=3 --as new -o weld.fpd --force", 1, "itself"},
      {"missing.fpd channel 0 gain=3", 1, "missing.fpd"},
  };
  const auto before = Bytes();
  for (const Case& bad : cases) {
    SCOPED_TRACE(bad.arguments);
    ExpectOneLine(Run("edit " + bad.arguments), bad.status, bad.named);
    EXPECT_EQ(Bytes() == before, true);
  }
  const std::string keys = Run("edit weld.fpd gate 0 begin=1").out;
  EXPECT_NE(keys.find("positiveLevel  0 %"), std::string::npos) << keys;
  const ProgramResult same = Run("edit weld.fpd channel 0 soundSpeed=5920");
  EXPECT_EQ(same.status, 0);
  EXPECT_NE(same.out.find("nothing is written"), std::string::npos) << same.out;
  EXPECT_EQ(Bytes() == before, true);
}

TEST_F(EditTest, AFileThatCannotBeWrittenStaysAsItIs) {
  const std::string append = "edit weld.fpd channel 0 gain=3";
  const auto before = Bytes();
  const int held = open(At("weld.fpd").c_str(), O_RDWR);
  ASSERT_EQ(flock(held, LOCK_EX | LOCK_NB), 0);
  ExpectOneLine(Run(append), 1, "weld.fpd");
  EXPECT_EQ(Bytes() == before, true);
  close(held);
  // A companion that is missing between others would hide those behind it.
  ASSERT_EQ(Run(append + " --as companion").status, 0);
  std::filesystem::copy_file(At("weld.A01"), At("weld.A03"));
  const auto gapped = Bytes();
  const ProgramResult refused = Run("edit weld.fpd channel 0 gain=4 --as companion");
  EXPECT_EQ(refused.status, 1);
  EXPECT_TRUE(refused.error.starts_with("warning: ")) << refused.error;
  EXPECT_NE(refused.error.find("weld.A02 is missing; weld.A03 was not read"), std::string::npos)
      << refused.error;
  EXPECT_EQ(Bytes() == gapped, true);
}

}  // namespace
}  // namespace utdata::test
