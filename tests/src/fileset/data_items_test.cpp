// Data groups of a file set: what is added and what is refused, and how masters come and go with
// their elements.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cwchar>
#include <functional>
#include <memory>
#include <string>

#include "tests/src/fileset/data_fixture.h"
#include "tests/support/report_capture.h"

namespace utdata::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

enum class Outcome { Added, Refused, Same };

struct SecondAddition {
  const char* what;
  idata_typeId first;
  idata_typeId second;
  Outcome expected;
};

TEST_F(DataGroups, AreAddedOnceByTheirIds) {
  constexpr auto amplitude = gdata_CScanAmplitude;
  const SecondAddition cases[] = {
      {"the same", Id(amplitude, 0, 3), Id(amplitude, 0, 3), Outcome::Refused},
      {"the same gate number", Id(amplitude, 0, 3), Id(amplitude, 0, 4003), Outcome::Refused},
      {"another gate", Id(amplitude, 0, 3), Id(amplitude, 0, 4), Outcome::Added},
      {"another class", Id(amplitude, 0, 3), Id(gdata_CScanPosition, 0, 3), Outcome::Added},
      {"another sub-channel", Id(amplitude, 1, 3), Id(amplitude, 2, 3), Outcome::Added},
      {"the same element", Id(amplitude, 1, 3), Id(amplitude, 1, 3), Outcome::Refused},
      {"angles", Id(gdata_CScanAngle, 1, 3), Id(gdata_CScanAngle, 1, 2003), Outcome::Same},
      {"beam simulation",
       Id(gdata_BeamSimulation, 0, 0),
       Id(gdata_BeamSimulation, 0, 0),
       Outcome::Same},
      {"any patch",
       {.patchId = 7, .dataClass = amplitude},
       {.patchId = fset_AnyId, .dataClass = amplitude},
       Outcome::Refused},
      {"any patch first",
       {.patchId = fset_AnyId, .dataClass = amplitude},
       {.patchId = 7, .dataClass = amplitude},
       Outcome::Added},
      {"no bookmark type is any",
       {.dataClass = amplitude, .bookmarkType = bookmark_Tofd},
       {.dataClass = amplitude},
       Outcome::Refused},
      {"another bookmark type",
       {.dataClass = amplitude},
       {.dataClass = amplitude, .bookmarkType = bookmark_Tofd},
       Outcome::Added},
      {"all ones are no bookmark type that an item has",
       {.dataClass = amplitude, .bookmarkType = anyBookmark},
       {.dataClass = amplitude, .bookmarkType = anyBookmark},
       Outcome::Added},
  };
  for (const SecondAddition& each : cases) {
    SCOPED_TRACE(each.what);
    CIData* const first = Add(each.first);
    ASSERT_NE(nullptr, first);
    CGDataTypeFDD other = SoundRecord(each.second);
    other.columnQuantity = 1000;
    bool isAdded = each.expected != Outcome::Added;
    CIData* const second = set.fset_AddGData(&other, nullptr, &host.volumes, 0, &isAdded);
    EXPECT_EQ(each.expected == Outcome::Added, isAdded);
    EXPECT_EQ(each.expected == Outcome::Refused, second == nullptr);
    EXPECT_EQ(each.expected == Outcome::Same, second == first);
    EXPECT_EQ(10U, first->idata3_GetColQty()) << "whatever its second group has";
    EXPECT_THAT(All(), SizeIs(each.expected == Outcome::Added ? 2 : 1));
    EXPECT_EQ(0U, RemoveAll());
    EXPECT_EQ(1U, RemoveAll());
    EXPECT_THAT(Masters(), IsEmpty());
  }
}

TEST_F(DataGroups, AreNotMadeOfNothingOrOfMasters) {
  CGDataTypeFDD record = SoundRecord();
  bool isAdded = true;
  EXPECT_EQ(nullptr, set.fset_AddGData(nullptr, nullptr, &host.volumes, 0, &isAdded));
  EXPECT_FALSE(isAdded);
  EXPECT_EQ(nullptr, set.fset_AddGData(&record, nullptr, nullptr, 0));
  EXPECT_EQ(nullptr, Add(Id(MasterOf(gdata_AScan), 0, 0)));
  EXPECT_THAT(All(), IsEmpty());
  EXPECT_THAT(host.additions, IsEmpty());
}

TEST_F(DataGroups, ANewOneTakesTheHostsTable) {
  std::vector<std::byte> table(5000);
  CGDataTypeFDD record = SoundRecord();
  record.dataPointer = table.data();
  CIData* const item = Add(record, 1);
  EXPECT_EQ(static_cast<void*>(table.data()), item->Descriptor()->GetDiskTable());
  EXPECT_EQ(1, item->Descriptor()->IsDataLoaded());
  item->AttachTable(nullptr, true);
  EXPECT_EQ(nullptr, item->Descriptor()->GetDiskTable());
  EXPECT_EQ(0, item->Descriptor()->IsDataLoaded());
  EXPECT_EQ(bookmark_Single, record.GetDataBookmarkType()) << "the host's record is completed";
}

TEST_F(DataGroups, TheHostIsCalledForEachOnceItHasItsPlace) {
  struct Host : DataHost {
    std::function<void()> told;
    void OnDataGroupAdded(std::int32_t hasPatch) override {
      DataHost::OnDataGroupAdded(hasPatch);
      if (told) told();
    }
  } asking;
  std::uint32_t elements = 0;
  asking.told = [&] {
    CIData* const item =
        asking.set.fset_GetIData(fset_All, 0, 9, fset_AnyId, 2, fset_AnyId, gdata_AScan);
    if (item) elements = item->idata1_SubChannelMaster()->idata1_SubChannelQty();
  };
  const auto add = [&asking](const idata_typeId& id) {
    CGDataTypeFDD record = SoundRecord(id);
    return asking.set.fset_AddGData(&record, nullptr, &asking.volumes, 0);
  };
  add({.patchId = 9, .subChannelId = 1, .dataClass = gdata_AScan});
  add({.patchId = 9, .subChannelId = 2, .dataClass = gdata_AScan});
  EXPECT_EQ(2U, elements) << "the element is under its master by then, and the set can be queried";
  add({.patchId = 9, .subChannelId = 2, .dataClass = gdata_AScan});
  add({.dataClass = gdata_CScanAngle});
  add({.dataClass = gdata_CScanAngle});
  EXPECT_THAT(asking.additions, ElementsAre(1, 1, 0))
      << "not of masters, refused groups and those that were there";
}

TEST_F(DataGroups, ThoseOfTheSubChannelsAreGatheredUnderAMaster) {
  CIData* const first = Add(Id(gdata_CScanAmplitude, 1, 2003));
  CIData* const second = Add(Id(gdata_CScanAmplitude, 2, 2003));
  ASSERT_THAT(Masters(), SizeIs(1));
  CIData* const master = Masters().front();
  EXPECT_EQ(master, first->idata1_SubChannelMaster());
  EXPECT_THAT(Content(*master->idata1_SubChannelGetList()), ElementsAre(first, second));
  const CGDataTypeFDD& record = *master->idata1_GetGInfoRef();
  EXPECT_EQ(MasterOf(gdata_CScanAmplitude), record.dataClass);
  EXPECT_EQ(0U, record.subChannelId);
  EXPECT_EQ(3U, record.gateId);
  EXPECT_STREQ(L"MSC_Data_Group", record.dataName);
  EXPECT_EQ(gdata_typeSampleRef::none, record.samples.offset);
  EXPECT_EQ(bookmark_MultiChannel, record.GetDataBookmarkType());
  EXPECT_EQ(0U, Remove(Id(gdata_CScanAmplitude, 1, 3)));
  EXPECT_THAT(Masters(), ElementsAre(master));
  EXPECT_EQ(0U, Remove(Id(gdata_CScanAmplitude, 2, 3)));
  EXPECT_THAT(Masters(), IsEmpty());
  EXPECT_FALSE(CIData::IsValidObject(master));
}

/// Which groups share a master.
TEST_F(DataGroups, MastersAreDistinguishedAsTheirClassAsks) {
  const auto with =
      [](gdata_enumDataClass dataClass, std::uint32_t subChannelId, std::uint32_t gateId) {
        return SoundRecord(Id(dataClass, subChannelId, gateId));
      };
  const auto tofd = [](CGDataTypeFDD record) {
    record.tofd = 1;
    return record;
  };
  const auto onPatch = [](CGDataTypeFDD record) {
    record.SetPatchID(8);
    return record;
  };
  const auto onChannel = [](CGDataTypeFDD record) {
    record.channelId = 5;
    return record;
  };
  struct Case {
    const char* what;
    CGDataTypeFDD first, second;
    std::size_t masters;
  } cases[] = {
      {"no sub-channel", with(gdata_AScan, 0, 0), with(gdata_CScanAmplitude, 0, 0), 0},
      {"A-scans of two gates", with(gdata_AScan, 1, 1), with(gdata_AScan, 2, 2), 1},
      {"merged A-scans", with(gdata_AScanMerged, 1, 1), with(gdata_AScanMerged, 2, 2), 1},
      {"processed A-scans", with(gdata_AScanProcessed, 1, 1), with(gdata_AScan, 2, 2), 2},
      {"amplitudes of two gates",
       with(gdata_CScanAmplitude, 1, 1),
       with(gdata_CScanAmplitude, 2, 2),
       2},
      {"amplitudes of one gate number",
       with(gdata_CScanAmplitude, 1, 1),
       with(gdata_CScanAmplitude, 2, 4001),
       1},
      {"amplitudes and positions",
       with(gdata_CScanAmplitude, 1, 1),
       with(gdata_CScanPosition, 1, 1),
       2},
      {"other C-scans", with(gdata_CScanPositionFirst, 1, 1), with(gdata_CScanThickness, 1, 1), 0},
      {"angles and beams", with(gdata_CScanAngle, 1, 1), with(gdata_BeamSimulation, 1, 1), 0},
      {"two patches", with(gdata_AScan, 1, 0), onPatch(with(gdata_AScan, 1, 0)), 2},
      {"two channels", with(gdata_AScan, 1, 0), onChannel(with(gdata_AScan, 1, 0)), 2},
      {"bookmark types that construction assigns",
       tofd(with(gdata_AScan, 1, 0)),
       with(gdata_AScan, 2, 0),
       2},
      {"TOFD alike", tofd(with(gdata_AScan, 1, 0)), tofd(with(gdata_AScan, 2, 0)), 1},
      {"the coupling gate apart",
       with(gdata_CScanAmplitude, 1, 140),
       with(gdata_CScanAmplitude, 2, 2140),
       2},
  };
  for (Case& each : cases) {
    SCOPED_TRACE(each.what);
    EXPECT_TRUE(Add(each.first) && Add(each.second));
    EXPECT_THAT(Masters(), SizeIs(each.masters));
    EXPECT_EQ(0U, RemoveAll());
    EXPECT_THAT(Masters(), IsEmpty());
  }
}

TEST_F(DataGroups, OnlyACouplingMasterTakesTheGateNamesOfLaterElements) {
  for (const std::uint32_t gateId : {140U, 1U}) {
    for (const wchar_t* name : {L"first", L"second"}) {
      CGDataTypeFDD record = SoundRecord(Id(gdata_CScanAmplitude, *name == L'f' ? 1 : 2, gateId));
      std::wcscpy(record.gateName, name);
      ASSERT_NE(nullptr, Add(record));
    }
    ASSERT_THAT(Masters(), SizeIs(1));
    const std::wstring expected = gateId == 140 ? L"second" : L"first";
    EXPECT_EQ(expected, Masters().front()->idata1_GetGInfoRef()->gateName);
    EXPECT_EQ(expected, Masters().front()->idata1_GetInfoRef()->gateName);
    RemoveAll();
  }
}

TEST_F(DataGroups, RemovalLooksAtTheDataListAloneAndTakesWhatPasses) {
  CIData* const modified = Add(Id(gdata_AScan, 1, 0));
  CIData* const fresh = Add(Id(gdata_AScan, 2, 0));
  modified->idata3_Modified();
  fresh->idata3_New();
  EXPECT_EQ(
      1U,
      set.fset_RemoveGData(
          fset_All, 0, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId, MasterOf(gdata_AScan)));
  EXPECT_EQ(0U,
            set.fset_RemoveGData(
                fset_New, 0, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId));
  EXPECT_THAT(All(), ElementsAre(modified));
  EXPECT_THAT(Masters(), SizeIs(1));
}

TEST_F(DataGroups, AMasterThatTheSetDidNotMakeIsLeftToItsOwner) {
  host.scanning[4] = {escan_Mode2, true};
  CIData* const merged = Add(Id(gdata_AScan, 0, 0));
  CIData* const element = Add({.channelId = 6, .subChannelId = 1, .dataClass = gdata_AScan});
  element->idata1_SubChannelMaster()->idata1_SubChannelRemove(element);
  merged->idata1_SubChannelAdd(element);
  const ReportCapture reports;
  EXPECT_EQ(0U, Remove({.channelId = 6, .subChannelId = 1, .dataClass = gdata_AScan}));
  EXPECT_EQ(1U, reports.Assertions());
  EXPECT_TRUE(CIData::IsValidObject(merged));
  EXPECT_THAT(All(), ElementsAre(merged));
}

/// Whatever is still there goes with the set, in every order in which partners and elements came;
/// no link follows what has gone.
TEST(DataGroupLife, ASetDestroysWhatIsInIt) {
  std::array<gdata_enumDataClass, 3> classes{
      gdata_CScanAmplitude, gdata_CScanPosition, gdata_AScan};
  std::sort(classes.begin(), classes.end());
  do {
    for (const bool removeFirst : {false, true}) {
      auto host = std::make_unique<DataHost>();
      const ReportCapture reports;
      for (const gdata_enumDataClass dataClass : classes)
        for (const std::uint32_t subChannelId : {0U, 2U, 1U}) {
          CGDataTypeFDD record = SoundRecord(Id(dataClass, subChannelId, 1));
          ASSERT_NE(nullptr, host->set.fset_AddGData(&record, nullptr, &host->volumes, 0));
        }
      CIData* const position =
          host->set.fset_GetIData(fset_All, 0, 0, 4, 2, 1, gdata_CScanPosition);
      EXPECT_NE(nullptr, position->idata1_GetInfoRef()->GetMatchedCScan());
      CIDataLst all;
      host->set.fset_GetMSCIDataLst(&all);
      host->set.fset_GetIDataLst(&all);
      EXPECT_EQ(12, all.GetCount());
      if (removeFirst) {
        host->set.fset_RemoveGData(
            fset_All, 0, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId, gdata_CScanAmplitude);
        EXPECT_EQ(nullptr, position->idata1_GetInfoRef()->GetMatchedCScan());
      }
      host.reset();
      for (CIData* item : all) EXPECT_FALSE(CIData::IsValidObject(item));
      EXPECT_EQ(0U, reports.Assertions());
    }
  } while (std::next_permutation(classes.begin(), classes.end()));
}

}  // namespace
}  // namespace utdata::test
