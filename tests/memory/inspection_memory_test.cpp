// Whole inspections while memory is short: opened, read, gated, edited and saved.
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <set>

#include "tests/memory/campaign.h"
#include "tests/support/scratch_directory.h"
#include "utdata/companions.h"
#include "utdata/edits.h"
#include "utdata/gating.h"
#include "utdata/history.h"
#include "utdata/idata.h"
#include "utdata/inspection.h"
#include "utdata/newscan.h"
#include "utdata/readout.h"
#include "utdata/rescue.h"
#include "utdata/samples.h"

namespace utdata {
namespace {

using test::Outcome;
using test::RunCampaign;
using test::ScratchDirectory;
using test::Trial;

std::vector<std::byte> scan(3 * 4 * 50 * 2, std::byte{17});

std::string BytesAt(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// A scan of A-scans with its companion, in which a gate was added.
class Folder {
 public:
  Folder() {
    static const auto files = [] {
      const ScratchDirectory scratch;
      const std::string base = (scratch.Path() / "weld.fpd").string();
      Inspection made = Inspection::New(base);
      const SampleType& type = *FindSampleType("i16");
      CGDataTypeFDD record = NominalRecord(type);
      SetLayout(record, type, {4, 3, 50, true});
      AddScan(made, record, scan, {"a title of some length", "a test program", "comment"});
      made.SaveAs(base);
      Inspection opened = Inspection::Open(base);
      Gate(opened, {.channel = 0, .gate = 1, .start = 1e-7, .width = 1e-7, .threshold = 20});
      return std::pair(BytesAt(base), BytesAt(opened.SaveCompanion({.author = "somebody"})));
    }();
    std::ofstream(path, std::ios::binary) << files.first;
    std::ofstream(Companion(1), std::ios::binary) << files.second;
  }
  [[nodiscard]] std::string Companion(int number) const {
    return (m_scratch.Path() / ("weld.A0" + std::to_string(number))).string();
  }
  [[nodiscard]] std::ptrdiff_t Quantity() const {
    return std::distance(std::filesystem::directory_iterator(m_scratch.Path()), {});
  }

 private:
  const ScratchDirectory m_scratch;

 public:
  const std::string path = (m_scratch.Path() / "weld.fpd").string();
  const std::string other = (m_scratch.Path() / "other.fpd").string();
};

/// Everything that an inspection lists of itself.
std::string Describe(const Inspection& inspection) {
  std::string text;
  for (const std::string& warning : inspection.Warnings()) text += warning + "\n";
  for (const auto& [key, count] : inspection.CountGroups())
    text += key + " " + std::to_string(count) + "\n";
  for (const DataGroup& group : inspection.Data())
    text += group.Label() + group.ClassName() + (group.IsListed() ? "\n" : " not listed\n");
  return text;
}

TEST(NoMemory, Opening) {
  RunCampaign("inspection opened", [](Trial& trial) {
    const Folder folder;
    const std::string whole = Describe(Inspection::Open(folder.path));
    std::optional<Inspection> inspection;
    const auto open = [&] {
      inspection.emplace(Inspection::Open(folder.path));
      return true;
    };
    if (trial.Run(open) != Outcome::Done) {
      EXPECT_FALSE(inspection);
      open();
    }
    EXPECT_EQ(Describe(*inspection), whole);
  });
}

TEST(NoMemory, Reading) {
  for (const SampleTables tables : {SampleTables::Mapped, SampleTables::InMemory})
    RunCampaign("inspection read", [tables](Trial& trial) {
      const Folder folder;
      const Inspection inspection = Inspection::Open(folder.path, {.tables = tables});
      std::string read;
      const auto use = [&] {
        const DataGroup ascans = inspection.Data({.dataClass = gdata_AScan});
        Samples samples = ascans.Samples();
        const auto strongest = samples.FindPeaks(ascans.AllCells()).strongest;
        read = std::to_string(samples.Codes({strongest.cell, 1}).size()) + ascans.Label() +
               std::to_string(ascans.ReadOut(0, 1, 2).percent) +
               std::to_string(inspection.Masters().size()) +
               std::to_string(inspection.DataByChannel().size()) +
               std::to_string(HistoryOf(inspection).size());
        return true;
      };
      if (trial.Run(use) != Outcome::Done) use();
      EXPECT_EQ(read.substr(0, 2), "50");
    });
}

TEST(NoMemory, Gating) {
  RunCampaign("gate", [](Trial& trial) {
    const Folder folder;
    Inspection inspection = Inspection::Open(folder.path);
    const std::string before = Describe(inspection);
    const auto gate = [&] {
      Gate(inspection, {.channel = 0, .gate = 2, .start = 1e-7, .width = 1e-7, .threshold = 20});
      return true;
    };
    if (trial.Run(gate) != Outcome::Done) {
      EXPECT_EQ(Describe(inspection), before);
      EXPECT_FALSE(inspection.IsModified());
      gate();
    }
    EXPECT_EQ(inspection.Data().size(), 5U);
    EXPECT_EQ(inspection.SaveCompanion(), folder.Companion(2));
    EXPECT_EQ(Describe(Inspection::Open(folder.path)), Describe(inspection));
  });
}

TEST(NoMemory, NewScans) {
  RunCampaign("new scan", [](Trial& trial) {
    const Folder folder;
    Inspection inspection = Inspection::New(folder.other);
    const SampleType& type = *FindSampleType("i16");
    CGDataTypeFDD record = NominalRecord(type);
    SetLayout(record, type, {4, 3, 50, true});
    CGDataTypeFDD sector = record;
    SetLayout(sector, type, {2, 3, 50, true});
    sector.channelId = 1;
    ChannelSetup setup = SetupOf(sector);
    setup.beams = BeamsOf(sector, std::array{40.0, 41.0});
    bool hasSector = false;
    const auto add = [&] {
      if (!hasSector) AddBeams(inspection, sector, setup, scan);
      hasSector = true;
      AddScan(inspection, record, scan, {"a title of some length", "a test program", "comment"});
      return true;
    };
    if (trial.Run(add) != Outcome::Done) {
      EXPECT_EQ(inspection.Data().size(), hasSector ? 2U : 0U);
      for (const auto& [key, count] : inspection.CountGroups())
        EXPECT_LE(count, hasSector && key != "info" ? 2U : 0U) << key;
      add();
    }
    inspection.SaveAs(folder.other);
    const Inspection saved = Inspection::Open(folder.other);
    EXPECT_EQ(saved.Data().size(), 3U);
    ASSERT_EQ(saved.Masters().size(), 1U);
    EXPECT_EQ(saved.Masters().front().Elements().size(), 2U);
  });
}

TEST(NoMemory, Saving) {
  struct Form {
    const char* name;
    std::function<void(Inspection&, const Folder&)> save;
    std::ptrdiff_t files;  ///< then in the folder
  };
  const Signature signed_{.author = "somebody with a name", .reason = "a reason of some length"};
  const Form forms[] = {
      {"save companion", [&](auto& i, auto&) { i.SaveCompanion(signed_); }, 3},
      {"save appended", [&](auto& i, auto&) { i.SaveAppended(signed_); }, 2},
      {"save as", [&](auto& i, auto& folder) { i.SaveAs(folder.other, false, signed_); }, 3}};
  for (const Form& form : forms)
    RunCampaign(form.name, [&form](Trial& trial) {
      const Folder folder;
      Inspection inspection = Inspection::Open(folder.path);
      inspection.Gate(0, 1).SetStart(2e-7);
      const auto written = [&] { return HistoryOf(Inspection::Open(folder.path)).size(); };
      const std::size_t writes = written();
      const auto save = [&] {
        form.save(inspection, folder);
        return true;
      };
      if (trial.Run(save) != Outcome::Done) {
        EXPECT_EQ(folder.Quantity(), 2);
        EXPECT_EQ(written(), writes);
        EXPECT_TRUE(inspection.IsModified());
        save();
      }
      EXPECT_EQ(folder.Quantity(), form.files);
      const bool isOther = std::filesystem::exists(folder.other);
      EXPECT_EQ(inspection.IsModified(), isOther);
      const Inspection again = Inspection::Open(isOther ? folder.other : folder.path);
      EXPECT_EQ(static_cast<float>(again.Gate(0, 1).Start()), 2e-7F);
    });
}

TEST(NoMemory, Edits) {
  RunCampaign("edit", [](Trial& trial) {
    const Folder folder;
    Inspection inspection = Inspection::Open(folder.path);
    const std::pair<std::string, std::string> values[] = {{"soundSpeed", "3240"},
                                                          {"name", "a channel of some length"}};
    const auto edit = [&] {
      EditableGroups(inspection, SCFile::file_GroupTypeOf<CGChanTypeDescr>())[0].Change(values);
      return true;
    };
    const auto speeds = [&] {
      std::set<double> all = {inspection.Descriptor().channels.GetHead()->soundSpeed};
      for (const DataGroup& group : inspection.Data())
        all.insert(group.Descriptor().GetSoundSpeed());
      return all;
    };
    if (trial.Run(edit) != Outcome::Done) {
      EXPECT_EQ(speeds(), std::set<double>{5900});
      EXPECT_FALSE(inspection.IsModified());
      edit();
    }
    for (const DataGroup& group : inspection.Data())
      EXPECT_EQ(group.Descriptor().GetSoundSpeed(), 3240);
    inspection.SaveCompanion();
    const Inspection again = Inspection::Open(folder.path);
    for (const DataGroup& group : again.Data()) EXPECT_EQ(group.Descriptor().GetSoundSpeed(), 3240);
  });
}

TEST(NoMemory, Rescue) {
  RunCampaign("rescue", [](Trial& trial) {
    const Folder folder;
    const auto rescue = [&] { return Rescue(folder.path, folder.other).IsComplete(); };
    if (trial.Run(rescue) != Outcome::Done) {
      EXPECT_EQ(folder.Quantity(), 2);
      EXPECT_TRUE(rescue());
    }
    EXPECT_EQ(Inspection::Open(folder.other).Data().size(), 1U);
  });
}

TEST(NoMemory, Companions) {
  RunCampaign("companions checked and adopted", [](Trial& trial) {
    const Folder folder;
    std::filesystem::rename(folder.path, folder.other);
    const auto adopt = [&] {
      Rename(PlanAdoption(folder.other));
      return CheckCompanions(folder.other).files.size() == 1;
    };
    if (trial.Run(adopt) != Outcome::Done) {
      EXPECT_TRUE(adopt());
    }
    EXPECT_EQ(folder.Quantity(), 2);
  });
}

}  // namespace
}  // namespace utdata
