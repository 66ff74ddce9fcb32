// Groups changed by the names of their fields, and what agrees with the change.
#include "utdata/edits.h"

#include <gtest/gtest.h>

#include <map>

#include "tests/support/scratch_directory.h"
#include "utdata/history.h"
#include "utdata/idata.h"
#include "utdata/newscan.h"
#include "utdata/readout.h"
#include "utdata/views.h"

namespace utdata {
namespace {

using test::ScratchDirectory;
using Texts = std::vector<std::pair<std::string, std::string>>;

/// Two channels with A-scans at 45 degrees in a wall of 20 mm; the first has a C-scan of positions
/// too, of unknown thickness, and a beam at 50 degrees, over a wall of 12 mm.
class EditsTest : public testing::Test {
 protected:
  void SetUp() override {
    Inspection made = Inspection::New(m_path);
    const SampleType& type = *FindSampleType("i16");
    for (std::uint32_t id = 0; id < 2; ++id) {
      CGChanTypeDescr* channel = gchan_Allocate(1, L"");
      channel->channelId = id;
      channel->soundSpeed = 3240;
      channel->refractedAngle = 45;
      made.Descriptor().channels.AddTail(channel);
      CGDataTypeFDD record = NominalRecord(type);
      SetLayout(record, type, {3, 2, 50, true});
      record.channelId = id;
      record.probeAngle = 45;
      record.soundSpeed = 3240;
      record.partThickness = 0.02F;
      Add(made, record, 300);
      if (id != 0) continue;
      record.subChannelId = 7;
      record.probeAngle = 50;
      record.soundSpeed = 5900;
      record.partThickness = 0.012F;
      Add(made, record, 300);
      record.subChannelId = 0;
      record.dataClass = gdata_CScanPosition;
      record.gateId = 1;
      record.partThickness = 0;
      record.sampleQuantity = 1;
      Add(made, record, 6);
    }
    made.SaveAs(m_path);
  }

  static void Add(Inspection& inspection, const CGDataTypeFDD& record, std::size_t samples) {
    inspection.AddData(record, std::vector<std::byte>(2 * samples));
  }

  GroupHandle Channel(Inspection& inspection, std::size_t index) {
    return EditableGroups(inspection, SCFile::file_GroupTypeOf<CGChanTypeDescr>())[index];
  }

  /// A field of all data groups, as a list that fits a line.
  static std::string OfData(const Inspection& inspection, std::string_view key) {
    std::string text;
    for (const DataGroup& group : inspection.Data())
      text += Fields(*group.Item().idata1_GetGInfoRef())[key].Show() + "; ";
    return text;
  }

  const std::string m_bookmarks = "single; multi-channel; single; single; ";
  const ScratchDirectory m_scratch;
  const std::string m_path = m_scratch.Path().string() + "/edited.fpd";
};

TEST_F(EditsTest, AChannelsSoundSpeedIsThatOfEveryPathMeasuredWithIt) {
  {
    Inspection inspection = Inspection::Open(m_path);
    const auto changes = Channel(inspection, 0).Change(Texts{{"soundSpeed", "3000"}});
    ASSERT_EQ(changes.size(), 4U);
    EXPECT_EQ(changes[0].group, "channel 0");
    EXPECT_EQ(changes[0].shownBefore + " to " + changes[0].shownAfter, "3240 m/s to 3000 m/s");
    EXPECT_EQ(changes[2].shownBefore, "5900 m/s") << "a channel has one sound speed";
    inspection.SaveCompanion();
  }
  const Inspection again = Inspection::Open(m_path);
  EXPECT_EQ(OfData(again, "soundSpeed"), "3000 m/s; 3000 m/s; 3000 m/s; 3240 m/s; ");
  const ReadOut at = again.Data().front().ReadOut(0, 0, 40);
  const double path = at.time.In(unit_Microsecond) / 2 * 3.0;
  EXPECT_NEAR(at.halfPath.In(unit_Millimetre), path, 1e-5);
  EXPECT_NEAR(at.depth.In(unit_Millimetre), path * std::sqrt(0.5), 1e-5);
}

TEST_F(EditsTest, WhatDataGroupsRepeatFollowsWhereItWasTheSame) {
  Inspection inspection = Inspection::Open(m_path);
  const auto data = [&](std::size_t index) {
    return EditableGroup(inspection, inspection.Data()[index]);
  };
  EXPECT_EQ(data(3).Change(Texts{{"soundSpeed", "3100"}}).back().group, "channel 1");
  EXPECT_EQ(Channel(inspection, 1).Values()["soundSpeed"].Number(), 3100);
  EXPECT_EQ(data(0).Change(Texts{{"partThickness", "21"}}).size(), 3U);
  EXPECT_EQ(OfData(inspection, "partThickness"), "21 mm; 12 mm; 21 mm; 21 mm; ");
  EXPECT_EQ(data(1).Change(Texts{{"partThickness", "12.5"}}).size(), 1U);
  Channel(inspection, 0).Change(Texts{{"refractedAngle", "46"}});
  EXPECT_EQ(OfData(inspection, "probeAngle"), "46°; 50°; 50°; 45°; ");
  Channel(inspection, 1).Change(Texts{{"refractedAngle", "90"}});
  EXPECT_EQ(OfData(inspection, "probeAngle"), "46°; 50°; 50°; 45°; ") << "data have no such angle";
}

// Probes 90 mm apart on a plate of 3 mm: half paths of 45 mm, and of the back wall 45.0999 mm.
TEST_F(EditsTest, ADataGroupBecomesTofdAndAgainWhatItWas) {
  const auto sampleUnit = [](const Inspection& inspection) {
    const CIData& item = inspection.Data().front().Item();
    return item.idata3_GetCurrentUnit(kvt_AxisSample, 0);
  };
  const auto expectTofd = [&](const Inspection& inspection) {
    const DataGroup group = inspection.Data().front();
    EXPECT_EQ(OfData(inspection, "tofd"), "yes; yes; yes; no; ");
    EXPECT_EQ(OfData(inspection, "bookmarkType"), m_bookmarks) << "the type stays";
    EXPECT_EQ(OfData(inspection, "probeSeparation"), "90 mm; 1 mm; 90 mm; 1 mm; ");
    EXPECT_EQ(sampleUnit(inspection),
              group.Item().idata3_GetUnit(kvt_AxisSample, unit_TofdDepth, unit_Millimetre));
    const auto scale = TofdScaleOf(group);
    ASSERT_TRUE(scale);
    const AxisScale paths = group.HalfPaths().value();
    EXPECT_NEAR(paths.At(scale->lateralWave), 45, 1e-3);
    EXPECT_NEAR(paths.At(scale->backWall.value()), 45.0999, 1e-3);
    EXPECT_EQ(WhyNoTofdScale(inspection.Data()[1]), "the probe separation is not known");
  };
  const auto expectPlain = [&](const Inspection& inspection) {
    EXPECT_EQ(OfData(inspection, "tofd"), "no; no; no; no; ");
    EXPECT_EQ(OfData(inspection, "bookmarkType"), m_bookmarks);
    EXPECT_EQ(sampleUnit(inspection), nullptr);
    EXPECT_TRUE(inspection.Data().front().TofdDepths().empty());
    EXPECT_FALSE(inspection.Masters().empty());
  };
  {
    Inspection inspection = Inspection::Open(m_path);
    const GroupHandle group = EditableGroup(inspection, inspection.Data().front());
    group.Change(Texts{{"sampleOffset", "27.5"}, {"partThickness", "3"}});
    const auto changes = group.Change(Texts{{"tofd", "yes"}, {"probeSeparation", "90"}});
    ASSERT_GE(changes.size(), 2U);
    EXPECT_EQ(changes[0].shownAfter + " " + changes[1].shownAfter, "90 mm yes");
    expectTofd(inspection);
    EXPECT_EQ(Channel(inspection, 0).Values()["tofd"].Number(), 1);
    EXPECT_EQ(Channel(inspection, 0).Values()["probeSeparation"].Show(), "90 mm");
    inspection.SaveAppended();
    expectTofd(inspection);
  }
  {
    Inspection inspection = Inspection::Open(m_path);
    expectTofd(inspection);
    EXPECT_EQ(Channel(inspection, 0).Change(Texts{{"tofd", "no"}}).size(), 4U);
    expectPlain(inspection);
    inspection.SaveCompanion();
  }
  Inspection inspection = Inspection::Open(m_path);
  expectPlain(inspection);
  std::string events;
  for (const WriteEvent& write : HistoryOf(inspection))
    for (const GroupEvent& group : write.groups)
      for (const FieldChange& change : group.changes)
        if (change.field->key == "tofd" && group.group == "channel 0")
          events += change.shownBefore + " to " + change.shownAfter + "; ";
  EXPECT_EQ(events, "no to yes; yes to no; ");
}

// Of a file that gives no bookmark type, one follows from the flag when it is loaded.
TEST_F(EditsTest, ABookmarkTypeThatTheFileLacksStaysWithAnotherFlag) {
  {
    Inspection inspection = Inspection::Open(m_path);
    for (CGDataTypeFDD* record : inspection.Descriptor().data)
      record->SetDataBookmarkType(bookmark_None);
    inspection.SaveAs(m_path + "2");
  }
  for (const bool asCompanion : {false, true}) {
    {
      Inspection inspection = Inspection::Open(m_path + "2");
      EXPECT_EQ(inspection.Data()[3].Stored().GetDataBookmarkType(),
                asCompanion ? bookmark_Single : bookmark_None);
      EditableGroup(inspection, inspection.Data()[3])
          .Change(Texts{{"tofd", asCompanion ? "no" : "yes"}, {"probeSeparation", "90"}});
      asCompanion ? inspection.SaveCompanion() : inspection.SaveAppended();
      EXPECT_EQ(inspection.Data()[3].BookmarkName(), "single");
    }
    const Inspection again = Inspection::Open(m_path + "2");
    ASSERT_EQ(again.Data().size(), 4U);
    EXPECT_EQ(again.Data()[3].BookmarkName(), "single");
    EXPECT_EQ(again.Data()[3].IsTofd(), !asCompanion);
  }
}

TEST_F(EditsTest, WhatIsRefusedChangesNothing) {
  Inspection inspection = Inspection::Open(m_path);
  const std::map<std::string, Texts> cases = {
      {"begin", {{"gain", "1"}, {"begin", "1"}}},
      {"channelId", {{"gain", "1"}, {"channelId", "4"}}},
      {"soundSpeed", {{"gain", "1"}, {"soundSpeed", "0"}}},
      {"name", {{"gain", "1"}, {"name", "\xFF"}}},
  };
  for (const auto& [named, values] : cases) {
    try {
      Channel(inspection, 0).Change(values);
      FAIL() << named;
    } catch (const Error& error) {
      EXPECT_EQ(error.What(), named == "name" ? "cannot be used" : named) << error.what();
    }
  }
  EXPECT_TRUE(Channel(inspection, 0).Change(Texts{{"soundSpeed", "3240"}}).empty());
  const auto& welds = SCFile::file_GroupTypeOf<CGWeldTypeDescr>();
  EXPECT_THROW(static_cast<void>(EditableGroups(inspection, welds)), Error);
  EXPECT_FALSE(inspection.IsModified());
}

// Loading gives such an axis a step of its own: an edit would be gone.
TEST_F(EditsTest, ASingleRowOrColumnTakesNoStep) {
  const std::string path = m_scratch.Path().string() + "/line.fpd";
  for (const bool isRow : {true, false}) {
    Inspection inspection = Inspection::New(path);
    const SampleType& type = *FindSampleType("i16");
    CGDataTypeFDD record = NominalRecord(type);
    SetLayout(record, type, {isRow ? 3U : 1U, isRow ? 1U : 3U, 50, true});
    Add(inspection, record, 150);
    const GroupHandle group = EditableGroup(inspection, inspection.Data()[0]);
    const char* single = isRow ? "rowResolution" : "columnResolution";
    const char* other = isRow ? "columnResolution" : "rowResolution";
    EXPECT_THROW(group.Change(Texts{{single, "2"}}), Error);
    EXPECT_EQ(group.Change(Texts{{other, "2"}}).size(), 1U);
  }
}

// The file counts its beams from 0; in memory they count from 1.
TEST_F(EditsTest, ABeamsAngleGoesToItsOwnDataGroup) {
  const std::string path = m_scratch.Path().string() + "/beams.fpd";
  {
    Inspection made = Inspection::New(path);
    for (std::uint32_t beam = 0; beam < 3; ++beam) {
      CGSubchanTypeDescr* subChannel = gsubchan_Allocate(1, L"");
      subChannel->subChannelId = beam;
      subChannel->refractedAngle = 40;
      made.Descriptor().subChannels.AddTail(subChannel);
      CGDataTypeFDD record = NominalRecord(*FindSampleType("i16"));
      SetLayout(record, *FindSampleType("i16"), {3, 2, 50, true});
      record.subChannelId = beam;
      record.SetDataBookmarkType(bookmark_MultiChannel);
      record.probeAngle = 40;
      Add(made, record, 300);
    }
    made.SaveAs(path);
  }
  const auto& type = SCFile::file_GroupTypeOf<CGSubchanTypeDescr>();
  {
    Inspection inspection = Inspection::Open(path);
    const auto changes =
        EditableGroups(inspection, type)[1].Change(Texts{{"refractedAngle", "55"}});
    ASSERT_EQ(changes.size(), 2U) << "a master's change is none of the inspection";
    EXPECT_EQ(inspection.Masters()[0].Elements().size(), 3U);
    inspection.SaveCompanion();
  }
  Inspection again = Inspection::Open(path);
  EXPECT_EQ(OfData(again, "probeAngle"), "40°; 55°; 40°; ");
  EXPECT_EQ(EditableGroups(again, type)[1].Values()["refractedAngle"].Number(), 55);
}

TEST_F(EditsTest, ChangedGeneralInformationIsWrittenWholeOnly) {
  const std::string copy = m_scratch.Path().string() + "/copy.fpd";
  {
    Inspection made = Inspection::New(copy);
    made.Descriptor().infos.AddTail(ginfo_Allocate(1, L""));
    made.SaveAs(copy);
  }
  const std::string whole = m_scratch.Path().string() + "/whole.fpd";
  const auto& type = SCFile::file_GroupTypeOf<CGInfoTypeDescr>();
  Inspection inspection = Inspection::Open(copy);
  EditableGroups(inspection, type)[0].Change(Texts{{"title", "Seam"}});
  EXPECT_THROW(inspection.SaveCompanion(), Error);
  EXPECT_THROW(inspection.SaveAppended(), Error);
  inspection.SaveAs(whole);
  Inspection again = Inspection::Open(whole);
  EXPECT_EQ(EditableGroups(again, type)[0].Values()["title"].Text(), "Seam");
}

}  // namespace
}  // namespace utdata
