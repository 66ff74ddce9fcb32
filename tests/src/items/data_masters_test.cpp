// Data items: multi-channel masters and their elements.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"
#include "utdata/idatalst.h"
#include "utdata/unitset.h"

namespace {

using testing::ElementsAre;
using utdata::test::DataHost;
using utdata::test::EditableItem;
using utdata::test::ReportCapture;
using utdata::test::SoundRecord;

constexpr gdata_enumDataClass masterOfAScans =
    static_cast<gdata_enumDataClass>(gdata_AScan | gdata_MultiChannelMaster);
constexpr gdata_enumDataClass masterOfCScans =
    static_cast<gdata_enumDataClass>(gdata_CScanAmplitude | gdata_MultiChannelMaster);

std::vector<CIData*> Content(const CIDataLst& list) { return {list.begin(), list.end()}; }

class DataMasters : public testing::Test {
 protected:
  std::unique_ptr<CIData> Element(std::uint32_t subChannelId, gdata_enumDataClass c = gdata_AScan) {
    return host.Make(SoundRecord({.channelId = 4, .subChannelId = subChannelId, .dataClass = c}));
  }
  std::unique_ptr<CIData> Master(gdata_enumDataClass c = masterOfAScans) {
    return host.Make(SoundRecord({.channelId = 4, .dataClass = c}));
  }

  DataHost host;
};

TEST_F(DataMasters, AnElementIsGatheredOnlyInSomeClasses) {
  for (const std::uint32_t c : {1U, 2U, 3U, 4U, 5U, 7U, 10U, 11U, 12U, 13U, 17U, 2000U, 0x8001U}) {
    const auto master = Master();
    EditableItem element(host,
                         {.subChannelId = 1, .dataClass = static_cast<gdata_enumDataClass>(c)});
    master->idata1_SubChannelAdd(&element);
    EXPECT_EQ(c <= 3 || c == 10 || c == 11, element.idata1_IsMultiChannelElement()) << c;
    element.SetId({.subChannelId = 0, .dataClass = gdata_AScan});
    EXPECT_FALSE(element.idata1_IsMultiChannelElement());
  }
}

TEST_F(DataMasters, ElementsAreFoundByNumberUpToTheirQuantity) {
  const auto master = Master();
  const auto five = Element(5), one = Element(1), two = Element(2), otherTwo = Element(2);
  for (const auto* element : {&five, &one, &two, &otherTwo})
    master->idata1_SubChannelAdd(element->get());
  EXPECT_EQ(4U, master->idata1_SubChannelQty());
  EXPECT_EQ(one.get(), master->idata1_SubChannelGet(1));
  EXPECT_EQ(two.get(), master->idata1_SubChannelGet(2)) << "the first of two";
  for (const long number : {-1L, 0L, 3L, 4L, 5L, 4294967297L})
    EXPECT_EQ(five.get(), master->idata1_SubChannelGet(number));
  EXPECT_EQ(five.get(), five->idata1_SubChannelGet(1))
      << "an item without a list answers with itself";
  EXPECT_EQ(0U, five->idata1_SubChannelQty());
}

TEST_F(DataMasters, AddingTakesTheDataTypeAndReportsAnotherLayout) {
  using Change = void (*)(CGDataTypeFDD&);
  const Change differences[] = {[](CGDataTypeFDD& r) { r.layoutWords[3] = 7; },
                                [](CGDataTypeFDD& r) { r.columnQuantity = 7; },
                                [](CGDataTypeFDD& r) { r.columnResolution = 7; },
                                [](CGDataTypeFDD& r) { r.columnUnits = kvt_UnitDegree; },
                                [](CGDataTypeFDD& r) { r.rowQuantity = 7; },
                                [](CGDataTypeFDD& r) { r.rowResolution = 7; },
                                [](CGDataTypeFDD& r) { r.rowUnits = kvt_UnitDegree; }};
  const Change allowed[] = {[](CGDataTypeFDD& r) { r.columnOffset = 7; },
                            [](CGDataTypeFDD& r) { r.rowOffset = 7; },
                            [](CGDataTypeFDD& r) { r.sampleQuantity = 7; }};
  const auto reportsOf = [this](Change change) {
    const auto master = Master();
    CGDataTypeFDD record = SoundRecord({.subChannelId = 3, .dataClass = gdata_AScan});
    record.SetDataType(kvt_UInt16);
    change(record);
    const auto element = host.Make(record);
    const ReportCapture reports;
    master->idata1_SubChannelAdd(element.get());
    EXPECT_EQ(1U, master->idata1_SubChannelQty()) << "added all the same";
    EXPECT_EQ(kvt_UInt16, master->idata1_GetInfoRef()->GetDataType());
    return reports.Assertions();
  };
  for (const Change change : differences) EXPECT_EQ(1U, reportsOf(change)) << &change - differences;
  for (const Change change : allowed) EXPECT_EQ(0U, reportsOf(change)) << &change - allowed;
}

TEST_F(DataMasters, AnElementLeavesTheListThatItWasIn) {
  const auto master = Master(), other = Master();
  const auto one = Element(1), two = Element(2), three = Element(3);
  const ReportCapture reports;
  for (const auto* element : {&one, &two, &three}) master->idata1_SubChannelAdd(element->get());
  EXPECT_TRUE(other->idata1_SubChannelAdd(two.get()));
  EXPECT_THAT(Content(*master->idata1_SubChannelGetList()), ElementsAre(one.get(), three.get()));
  EXPECT_THAT(Content(*other->idata1_SubChannelGetList()), ElementsAre(two.get()));
  EXPECT_EQ(other.get(), two->idata1_SubChannelMaster());
  EXPECT_EQ(2U, other->idata1_GetInfoRef()->GetSubChannelID());
  EXPECT_TRUE(master->idata1_SubChannelAdd(one.get()));
  EXPECT_THAT(Content(*master->idata1_SubChannelGetList()), ElementsAre(three.get(), one.get()))
      << "appended again, once";
  EXPECT_TRUE(other->idata1_SubChannelAdd(master.get())) << "with elements of its own";
  EXPECT_THAT(Content(*other->idata1_SubChannelGetList()), ElementsAre(two.get(), master.get()));
  EXPECT_EQ(other.get(), master->idata1_SubChannelMaster());
  EXPECT_THAT(Content(*master->idata1_SubChannelGetList()), ElementsAre(three.get(), one.get()));
  EXPECT_EQ(0U, reports.Assertions());
}

TEST_F(DataMasters, WhatCannotBeAnElementIsRefused) {
  const auto master = Master(), inner = Master(), outer = Master();
  const auto element = Element(1), plain = Element(2);
  CIData bare(nullptr, &host.volumes);
  inner->idata1_SubChannelAdd(element.get());
  master->idata1_SubChannelAdd(inner.get());
  outer->idata1_SubChannelAdd(master.get());
  ReportCapture reports;
  for (CIData* refused : {static_cast<CIData*>(nullptr), master.get(), &bare})
    EXPECT_TRUE(master->idata1_SubChannelAdd(refused));
  plain->idata1_SubChannelAdd(element.get());  // gathers none
  inner->idata1_SubChannelAdd(outer.get());    // lists it through another
  plain->idata1_SubChannelRemove(element.get());
  master->idata1_SubChannelRemove(element.get());
  master->idata1_SubChannelRemove(nullptr);
  EXPECT_EQ(8U, reports.Assertions());
  EXPECT_THAT(Content(*inner->idata1_SubChannelGetList()), ElementsAre(element.get()));
  EXPECT_THAT(Content(*master->idata1_SubChannelGetList()), ElementsAre(inner.get()));
  EXPECT_EQ(inner.get(), element->idata1_SubChannelMaster());
}

TEST_F(DataMasters, TheOrderedListIsSortedByFourIdsAndStable) {
  const auto master = Master();
  const idata_typeId ids[] = {
      {0, 0, 3, 0, gdata_AScan, bookmark_MultiChannel},
      {0, 0, 1, 7, gdata_AScan, bookmark_MultiChannel},
      {0, 0, 1, 2, gdata_AScan, bookmark_MultiChannel},
      {0, 1, 0, 0, gdata_AScan, bookmark_MultiChannel},
      {0, 9, 9, 9, gdata_AScan, bookmark_None},
      {0, 0, 1, 7, gdata_AScanMerged, bookmark_MultiChannel},
      {0, 0, 0, 0, gdata_AScan, static_cast<eDataBookmarkType>(0xFFFFFFFF)},  // less than 0
      {0, 0, 0, 0xFFFFFFFF, gdata_AScan, bookmark_Single},
      {0, 0, 0, 1, gdata_AScan, bookmark_Single}};
  std::vector<std::unique_ptr<EditableItem>> items;
  for (const idata_typeId& id : ids) {
    items.push_back(std::make_unique<EditableItem>(host, id));
    master->idata1_SubChannelAdd(items.back().get());
  }
  CIDataLst out;
  out.AddTail(master.get());
  master->GetOrderedSubChannelList(&out);
  std::vector<CIData*> expected;
  for (const std::size_t n : {6U, 4U, 2U, 1U, 5U, 0U, 3U, 8U, 7U})
    expected.push_back(items[n].get());
  EXPECT_EQ(expected, Content(out));
  items[0]->GetOrderedSubChannelList(&out);
  EXPECT_TRUE(out.IsEmpty());
}

TEST_F(DataMasters, AMasterTakesItsFirstElementsDescriptorAndStaysAMaster) {
  for (const auto c : {gdata_AScan, gdata_CScanAmplitude, gdata_CScanPosition}) {
    const auto masterClass = static_cast<gdata_enumDataClass>(c | gdata_MultiChannelMaster);
    const auto master = Master(masterClass), partner = Master(), meridio = Master();
    master->idata1_UpdateMasterChannel();
    EXPECT_EQ(10U, master->idata1_GetInfoRef()->GetColQty()) << "without elements nothing changes";
    CGDataTypeFDD record =
        SoundRecord({.channelId = 4, .subChannelId = 3, .gateId = 2007, .dataClass = c});
    record.columnQuantity = 33;
    record.columnResolution = 0.002f;
    record.dataPointer = &record;
    auto first = host.Make(record);
    const auto second = Element(6, c);
    std::array<char, 64> table{};
    CRDataTypeDD& taken = *first->idata1_GetInfoRef();
    taken.SetDiskTable(table.data(), true);
    taken.SetDataLoaded(true);
    taken.SetMatchedCScan(second.get());
    CRDataTypeDD& own = *master->idata1_GetInfoRef();
    own.SetMatchedCScan(partner.get());
    own.SetMeridioAmpCscan(meridio.get());
    CUnit* const point = own.GetPointUnit(kvt_AxisColumn);
    {
      const ReportCapture layoutsDiffer;
      for (CIData* element : {first.get(), second.get()}) master->idata1_SubChannelAdd(element);
    }
    master->idata1_UpdateMasterChannel();
    EXPECT_EQ(33U, own.GetColQty());
    EXPECT_EQ(2007U, own.GetGateId());
    EXPECT_EQ(masterClass, own.GetDataClass());
    EXPECT_EQ(6U, own.GetSubChannelID());
    EXPECT_EQ(nullptr, own.dataPointer);
    EXPECT_EQ(c == gdata_AScan ? second.get() : partner.get(), own.GetMatchedCScan());
    EXPECT_EQ(c == gdata_AScan ? nullptr : meridio.get(), own.GetMeridioAmpCscan());
    EXPECT_EQ(point, own.GetPointUnit(kvt_AxisColumn)) << "its own, not the element's";
    EXPECT_NEAR(0.002, point->ConvertToBase(1), 1e-9) << "with the new resolution";
    EXPECT_EQ(taken.GetDiskTable(), own.GetDiskTable());
    EXPECT_EQ(0, own.IsDataOwned());
    EXPECT_EQ(1, own.IsDataLoaded());
    first.reset();
    EXPECT_EQ(nullptr, own.GetDiskTable())
        << "nothing follows the table of an element that has gone";
    EXPECT_EQ(0, own.IsDataLoaded());
  }
  const auto element = Element(1);
  element->idata1_UpdateMasterChannel();
  EXPECT_EQ(gdata_AScan, element->idata1_GetInfoRef()->GetDataClass());
}

TEST_F(DataMasters, ABookmarkTypeIsGivenToTheMasterAndTheElementsItCounts) {
  const auto master = Master(masterOfCScans);
  const auto one = Element(1, gdata_CScanAmplitude), two = Element(2, gdata_CScanAmplitude),
             nine = Element(9, gdata_CScanAmplitude);
  for (const auto* element : {&one, &two, &nine}) master->idata1_SubChannelAdd(element->get());
  two->SetDataBookmarkTypeofAssociatedChannel(two->idata1_GetInfoRef()->GetDataBookmarkType());
  two->SetDataBookmarkTypeofAssociatedChannel(bookmark_Coupling);
  const auto typeOf = [](const CIData* item) {
    EXPECT_EQ(item->idata1_GetInfoRef()->GetDataBookmarkType(),
              item->idata1_GetGInfoRef()->GetDataBookmarkType());
    return item->idata1_GetInfoRef()->GetDataBookmarkType();
  };
  for (const CIData* item : {master.get(), one.get(), two.get()})
    EXPECT_EQ(bookmark_Coupling, typeOf(item));
  EXPECT_EQ(bookmark_MultiChannel, typeOf(nine.get())) << "number 9 is not among 1 to 3";
}

}  // namespace
