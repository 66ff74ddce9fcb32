// Queries of a file set's data items: each against what it has to find, and all look-ups by ids
// against a walk of the list.
#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <random>
#include <utility>

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

class RandomDataGroups : public DataGroups {
 protected:
  std::uint32_t Pick(std::uint32_t count) { return static_cast<std::uint32_t>(random() % count); }
  /// Ids of few values each, the wildcard among them.
  idata_typeId PickIds() {
    constexpr std::uint32_t classes[] = {1, 2, 3, 10, 11, 12, 17};
    const auto id = [this](std::uint32_t count) {
      return Pick(12) == 0 ? fset_AnyId : Pick(count);
    };
    return {id(2),
            id(3),
            id(4),
            Pick(3) + 2000 * Pick(2),
            static_cast<gdata_enumDataClass>(classes[Pick(7)]),
            static_cast<eDataBookmarkType>(id(4))};
  }
  std::mt19937 random{20250611};
};

/// What a walk of all items says decides about additions and answers look-ups.
TEST_F(RandomDataGroups, LookupsAnswerAsTheWalkDoes) {
  const ReportCapture reports;  // elements of one master need not agree
  for (int step = 0; step < 1500; ++step) {
    CIDataLst all, masters;
    set.fset_GetIDataLst(&all);
    set.fset_GetMSCIDataLst(&masters);
    const idata_typeId id = PickIds();
    const auto filter = static_cast<fset_enumFilters>(Pick(3));
    const std::uint32_t any = Pick(64);  // bits: which ids to leave open
    const auto open = [any](unsigned bit, std::uint32_t value) {
      return any >> bit & 1U ? fset_AnyId : value;
    };
    const std::uint32_t bookmark = any & 1U ? 0 : std::uint32_t{id.bookmarkType};
    const std::uint32_t dataClass = open(5, Pick(3) == 0 ? MasterOf(id.dataClass) : id.dataClass);
    const auto ask = [&](auto lookup, auto&&... first) {
      return lookup(std::forward<decltype(first)>(first)...,
                    bookmark,
                    open(1, id.patchId),
                    open(2, id.channelId),
                    open(3, id.subChannelId),
                    open(4, id.gateId),
                    dataClass);
    };
    const CIDataLst& walked =
        dataClass != fset_AnyId && (dataClass & gdata_MultiChannelMaster) ? masters : all;
    CIDataLst expected, actual;
    ask([&](auto... ids) { walked.GetIDataLst(filter, &expected, ids...); });
    ask([&](auto... ids) { set.fset_GetIDataLst(&actual, filter, ids..., 0, 0); });
    ASSERT_EQ(Content(expected), Content(actual)) << "at step " << step;
    CIData* const first = ask([&](auto... ids) { return set.fset_GetIData(filter, ids...); });
    ASSERT_EQ(expected.IsEmpty() ? nullptr : expected.GetHead(), first) << "at step " << step;

    if (step % 50 == 0 && &walked == &all) {
      ask([&](auto... ids) { return set.fset_RemoveGData(filter, ids...); });
      continue;
    }
    CIData* const there = all.GetIData(fset_All,
                                       id.bookmarkType,
                                       id.patchId,
                                       id.channelId,
                                       id.subChannelId,
                                       id.gateId,
                                       id.dataClass);
    CIData* const added = Add(id);
    ASSERT_EQ(there && id.dataClass != gdata_CScanAngle, added == nullptr) << "at step " << step;
    if (there && added) {
      ASSERT_EQ(there, added);
    }
    if (added && Pick(2)) added->idata3_Modified();
    if (added && Pick(3) == 0) added->idata3_New();
  }
}

/// Every gathered item is under exactly one master that is there, and every master has one.
TEST_F(RandomDataGroups, MastersAreThoseOfTheElementsThatAreLeft) {
  const ReportCapture reports;
  for (int step = 0; step < 600; ++step) {
    const idata_typeId id = PickIds();
    if (step % 5 == 4)
      Remove(id);
    else
      Add(id);
    if (step % 20 != 0) continue;
    std::map<CIData*, std::vector<CIData*>> elements;
    for (CIData* item : All())
      if (item->idata1_IsMultiChannelElement())
        elements[item->idata1_SubChannelMaster()].push_back(item);
    std::vector<CIData*> masters = Masters();
    ASSERT_EQ(masters.size(), elements.size());
    for (CIData* master : masters) {
      EXPECT_EQ(elements[master], Content(*master->idata1_SubChannelGetList()));
      idata_typeId of, own;
      master->idata1_GetId(of);
      for (CIData* element : elements[master]) {
        element->idata1_GetId(own);
        EXPECT_EQ(of.dataClass, MasterOf(own.dataClass));
        EXPECT_EQ(of.bookmarkType, own.bookmarkType);
        EXPECT_TRUE(own.channelId == of.channelId || own.channelId == fset_AnyId);
      }
    }
  }
}

}  // namespace
}  // namespace utdata::test
