// Queries of a file set's data items, each against what it has to find.
#include <gmock/gmock.h>

#include <iterator>

#include "tests/src/fileset/data_fixture.h"
#include "tests/support/report_capture.h"

namespace utdata::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(DataGroups, AreFoundByClassAmongMastersOrAmongItems) {
  CIData* const element = Add(Id(gdata_CScanAmplitude, 1, 2003));
  CIData* const single = Add(Id(gdata_CScanAmplitude, 0, 3));
  CIData* const master = Masters().front();
  const auto find = [this](std::uint32_t dataClass, std::uint32_t gateId) {
    return set.fset_GetIData(fset_All, 0, fset_AnyId, 4, fset_AnyId, gateId, dataClass);
  };
  EXPECT_EQ(master, find(MasterOf(gdata_CScanAmplitude), 4003));
  EXPECT_EQ(nullptr, find(MasterOf(gdata_CScanPosition), 3));
  EXPECT_EQ(element, find(gdata_CScanAmplitude, 3));
  EXPECT_EQ(element, find(fset_AnyId, fset_AnyId));
  const idata_typeId ids{0, 4, 0, 4003, gdata_CScanAmplitude, bookmark_Single};
  EXPECT_EQ(single, set.fset_GetIData(&ids));
  EXPECT_EQ(nullptr, set.fset_GetIData(nullptr));

  const auto list = [this](std::uint32_t dataClass) {
    CIDataLst out;
    set.fset_GetIDataLst(
        &out, fset_All, 0, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId, dataClass, 1, 2);
    return Content(out);
  };
  EXPECT_THAT(list(MasterOf(gdata_CScanAmplitude)), ElementsAre(master));
  EXPECT_THAT(list(gdata_CScanAmplitude), ElementsAre(element, single));
  EXPECT_THAT(list(fset_AnyId), ElementsAre(element, single));
}

TEST_F(DataGroups, OfAGateAreFoundByItsNumberItself) {
  CIData* const low = Add(Id(gdata_CScanAmplitude, 0, 3));
  CIData* const high = Add(Id(gdata_CScanPosition, 0, 2003));
  CIData* const element = Add(Id(gdata_CScanPosition, 1, 4003));
  const auto find = [this](std::uint32_t gateId, std::uint32_t dataClass) {
    CIDataLst out;
    const std::uint32_t count = set.fset_GetGateSpecificIDataList(
        &out, fset_All, fset_AnyId, 4, fset_AnyId, gateId, dataClass);
    EXPECT_EQ(out.GetCount(), static_cast<std::ptrdiff_t>(count));
    return Content(out);
  };
  EXPECT_THAT(find(3, fset_AnyId), ElementsAre(low, high, element));
  EXPECT_THAT(find(fset_AnyId, gdata_CScanPosition), ElementsAre(high, element));
  EXPECT_THAT(find(2003, fset_AnyId), IsEmpty());
  EXPECT_THAT(find(3, MasterOf(gdata_CScanPosition)), ElementsAre(Masters().front()));
}

TEST_F(DataGroups, AreFoundByTheFirstProbeOfTheirChannel) {
  CGChanTypeDescr channels[2];
  channels[0].channelId = 4;
  channels[0].firstProbeId = 2;
  channels[1].channelId = 5;
  channels[1].firstProbeId = 3;
  channels[1].secondProbeId = 2;
  for (CGChanTypeDescr& channel : channels) set.fset_AddGChan(&channel, 0);
  CIData* const ofTwo = Add(Id(gdata_AScan, 0, 0));
  Add({.channelId = 5, .dataClass = gdata_AScan});
  Add({.channelId = 6, .dataClass = gdata_AScan});
  CIDataLst out;
  EXPECT_EQ(1U, set.fset_GetIDataLst(&out, 2));
  EXPECT_THAT(Content(out), ElementsAre(ofTwo));
  EXPECT_EQ(1U, set.fset_GetIDataLst(&out, fset_AnyId)) << "no wildcard";
}

TEST_F(DataGroups, OfAChannelAreSortedBySubChannelAndGateOrder) {
  const auto at =
      [this](std::uint32_t subChannelId, std::uint32_t gateId, gdata_enumDataClass dataClass) {
        return Add(Id(dataClass, subChannelId, gateId));
      };
  Add({.channelId = 5, .dataClass = gdata_CScanAmplitude});
  CIData* const d = at(2, 2010, gdata_CScanAmplitude);
  CIData* const b = at(1, 140, gdata_CScanAmplitude);
  CIData* const a = at(1, 0, gdata_CScanAmplitude);
  CIData* const c = at(2, 3, gdata_CScanAmplitude);
  CIData* const beforeA = at(1, 7, gdata_CScanAmplitude);
  CIData* const afterA = at(1, 0, gdata_CScanPosition);
  CIDataLst out;
  EXPECT_EQ(6U, set.fset_GetSpecificChannelSortedIDataList(4, &out));
  EXPECT_THAT(Content(out), ElementsAre(beforeA, a, afterA, b, c, d));
  EXPECT_EQ(6U, set.fset_GetSpecificChannelSortedIDataList(fset_AnyId, &out)) << "no wildcard";
}

/// The display order of every gate that has one, and of one that has none, as the list sorts them.
TEST_F(DataGroups, GatesHaveTheirDisplayOrder) {
  const std::uint32_t inOrder[] = {999, 0,   1,   2,   3,  10, 11,  20, 21, 30, 31, 120,
                                   130, 140, 100, 300, 80, 90, 110, 40, 50, 60, 150};
  std::vector<CIData*> expected;
  // Added backwards, so that the order of adding cannot be taken for it.
  for (auto gate = std::rbegin(inOrder); gate != std::rend(inOrder); ++gate)
    expected.insert(expected.begin(), Add(Id(gdata_CScanAmplitude, 0, *gate)));
  CIDataLst out;
  set.fset_GetSpecificChannelSortedIDataList(4, &out);
  EXPECT_EQ(expected, Content(out));
}

TEST_F(DataGroups, TheirClassesAreTestedFor) {
  struct Case {
    std::uint32_t dataClass;
    bool isSpecial, advanced, analog, beam, eddy;
  };
  const Case cases[] = {{1, false, false, false, false, false},
                        {2, false, false, false, false, false},
                        {5, true, false, false, false, true},
                        {6, false, false, false, false, false},
                        {7, true, false, true, false, false},
                        {8, true, false, true, false, false},
                        {9, true, false, true, false, false},
                        {17, false, false, false, false, false},
                        {2000, true, false, false, true, false},
                        {2001, true, true, false, false, false}};
  const ReportCapture reports;  // some classes have sample types of their own
  for (const Case& each : cases) {
    SCOPED_TRACE(each.dataClass);
    Add(Id(gdata_CScanThickness, 0, 0));
    CIData* const item = Add(Id(static_cast<gdata_enumDataClass>(each.dataClass), 0, 0));
    ASSERT_NE(nullptr, item);
    EXPECT_EQ(each.advanced, set.fset_HasAdvancedViewData());
    EXPECT_EQ(each.analog ? 1 : 0, set.fset_HasAnalogData());
    EXPECT_EQ(each.beam, set.fset_HasBeamSimulationData());
    EXPECT_EQ(each.eddy, set.fset_HasEddyCurrentData());
    CIDataLst special;
    EXPECT_EQ(each.isSpecial ? 1U : 0U, set.fset_GetSpecialIDataList(&special));
    RemoveAll();
  }
}

TEST_F(DataGroups, QueriesWithoutAPlaceForTheirAnswerGiveNone) {
  Add(Id(gdata_Analog, 0, 0));
  const ReportCapture reports;
  EXPECT_EQ(0U, set.fset_GetIDataLst(nullptr));
  EXPECT_EQ(0U, set.fset_GetIDataLst(nullptr, 0));
  EXPECT_EQ(0U, set.fset_GetMSCIDataLst(nullptr));
  EXPECT_EQ(0U, set.fset_GetSpecificChannelSortedIDataList(4, nullptr));
  EXPECT_EQ(0U, reports.Assertions());
  EXPECT_EQ(0U, set.fset_GetSpecialIDataList(nullptr));
  EXPECT_EQ(0U, set.fset_GetGateSpecificIDataList(nullptr, fset_All, 0, 0, 0, 0, 0));
  EXPECT_EQ(2U, reports.Assertions());
}

}  // namespace
}  // namespace utdata::test
