// Data items: what remains when one goes before another, who frees a table, and the order of locks.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"
#include "utdata/idatalst.h"

namespace {

using utdata::test::DataHost;
using utdata::test::ReportCapture;
using utdata::test::SoundRecord;

constexpr gdata_enumDataClass masterClass =
    static_cast<gdata_enumDataClass>(gdata_AScan | gdata_MultiChannelMaster);

std::unique_ptr<CIData> Element(DataHost& host, std::uint32_t subChannelId) {
  return host.Make(SoundRecord({.subChannelId = subChannelId, .dataClass = gdata_AScan}));
}

TEST(DataLife, MasterAndElementsGoInAnyOrder) {
  DataHost host;
  std::array<std::size_t, 4> order = {0, 1, 2, 3};  // 0 is the master
  const ReportCapture reports;
  do {
    std::vector<std::unique_ptr<CIData>> items;
    items.push_back(host.Make(SoundRecord({.dataClass = masterClass})));
    for (std::uint32_t number = 1; number <= 3; ++number) {
      items.push_back(Element(host, number));
      items[0]->idata1_SubChannelAdd(items.back().get());
    }
    items[0]->idata1_SubChannelRemove(items[2].get());  // still names its master
    for (const std::size_t place : order) {
      items[place].release()->idata9_DeferDelete();
      for (std::size_t number = 1; number <= 3; ++number) {
        if (!items[number]) continue;
        EXPECT_EQ(items[0].get(), items[number]->idata1_SubChannelMaster());
        EXPECT_EQ(items[0] != nullptr, items[number]->idata1_IsMultiChannelElement());
      }
      if (!items[0]) continue;
      const auto left = (items[1] ? 1U : 0U) + (items[3] ? 1U : 0U);
      EXPECT_EQ(left, items[0]->idata1_SubChannelQty());
    }
  } while (std::next_permutation(order.begin(), order.end()));
  EXPECT_EQ(0U, reports.Assertions());
}

TEST(DataLife, AnElementLetGoCanBeAddedAgain) {
  DataHost host;
  auto first = host.Make(SoundRecord({.dataClass = masterClass}));
  const auto second = host.Make(SoundRecord({.dataClass = masterClass}));
  const auto element = Element(host, 1);
  const ReportCapture reports;
  first->idata1_SubChannelAdd(element.get());
  first.reset();
  second->idata1_SubChannelAdd(element.get());
  second->idata1_SubChannelRemove(element.get());
  second->idata1_SubChannelAdd(element.get());
  EXPECT_EQ(second.get(), element->idata1_SubChannelMaster());
  EXPECT_EQ(0U, reports.Assertions());
}

TEST(DataLife, AMatchedPartnerThatGoesFirstLeavesNoLink) {
  for (const bool isPositionFirst : {true, false}) {
    DataHost host;
    std::array<CGDataTypeFDD, 2> records = {
        SoundRecord({.gateId = 1, .dataClass = gdata_CScanAmplitude}),
        SoundRecord({.gateId = 1, .dataClass = gdata_CScanPosition})};
    std::array<CIData*, 2> items{};
    for (std::size_t n : {0U, 1U})
      items[n] = host.set.fset_AddGData(&records[n], nullptr, &host.volumes, 0);
    const std::size_t gone = isPositionFirst ? 1 : 0;
    CIData* const left = items[1 - gone];
    ASSERT_EQ(items[gone], left->idata1_GetInfoRef()->GetMatchedCScan());
    EXPECT_EQ(0U, host.set.fset_RemoveGData(fset_All, 0, 0, 0, 0, 1, records[gone].dataClass));
    EXPECT_FALSE(CIData::IsValidObject(items[gone]));
    EXPECT_EQ(nullptr, left->idata1_GetInfoRef()->GetMatchedCScan());
    CIData* const again = host.set.fset_AddGData(&records[gone], nullptr, &host.volumes, 0);
    EXPECT_EQ(again, left->idata1_GetInfoRef()->GetMatchedCScan());
  }
}

TEST(DataLife, AMeridioPartnerThatGoesFirstLeavesNoLink) {
  DataHost host;
  CGDataTypeFDD amplitude = SoundRecord({.gateId = 10, .dataClass = gdata_CScanAmplitude});
  CGDataTypeFDD position = SoundRecord({.gateId = 11, .dataClass = gdata_CScanPosition});
  host.set.fset_AddGData(&amplitude, nullptr, &host.volumes, 0);
  const CIData* const item = host.set.fset_AddGData(&position, nullptr, &host.volumes, 0);
  ASSERT_NE(nullptr, item->idata1_GetInfoRef()->GetMeridioAmpCscan());
  host.set.fset_RemoveGData(fset_All, 0, 0, 0, 0, 10, gdata_CScanAmplitude);
  EXPECT_EQ(nullptr, item->idata1_GetInfoRef()->GetMeridioAmpCscan());
}

TEST(DataLife, ATableOfTheCallersIsAttachedAndNeverFreed) {
  DataHost host;
  std::vector<char> samples(5000, 'x');  // as long as the layout says
  CGDataTypeFDD record = SoundRecord();
  record.dataPointer = samples.data();
  auto external = host.Make(record, 1);
  const CRDataTypeDD& descriptor = *external->idata1_GetInfoRef();
  EXPECT_EQ(samples.data(), reinterpret_cast<char*>(descriptor.GetDiskTable()));
  EXPECT_TRUE(descriptor.IsDataLoaded() && descriptor.IsVolumeLoaded());
  EXPECT_EQ(0, external->IsDiskOrigin());
  external.reset();
  EXPECT_EQ(5000, std::count(samples.begin(), samples.end(), 'x'));

  record.dataClass = masterClass;
  external = host.Make(record, 1);
  const auto element = Element(host, 1);
  external->idata1_SubChannelAdd(element.get());
  external->idata1_UpdateMasterChannel();
  external.reset();
  EXPECT_EQ(5000, std::count(samples.begin(), samples.end(), 'x'));
}

TEST(DataLife, AMasterGivesUpItsOwnTableForItsElements) {
  DataHost host;
  const auto master = host.Make(SoundRecord({.dataClass = masterClass}));
  const auto element = Element(host, 1);
  master->idata1_SubChannelAdd(element.get());
  for (CIData* item : {master.get(), element.get()})
    item->idata1_GetInfoRef()->SetDiskTable(reinterpret_cast<char*>(new std::byte[5000]{}), false);
  for (int times = 0; times < 2; ++times) {
    master->idata1_UpdateMasterChannel();
    EXPECT_EQ(element->idata1_GetInfoRef()->GetDiskTable(),
              master->idata1_GetInfoRef()->GetDiskTable());
  }
  auto other = Element(host, 2);
  other->idata1_GetInfoRef()->SetDiskTable(reinterpret_cast<char*>(new std::byte[5000]{}), false);
  master->idata1_SubChannelAdd(other.get());
  other.reset();
  EXPECT_EQ(element->idata1_GetInfoRef()->GetDiskTable(),
            master->idata1_GetInfoRef()->GetDiskTable())
      << "it was not of the element that went";
}

TEST(DataLife, OnlyLiveItemsAreValid) {
  DataHost host;
  EXPECT_FALSE(CIData::IsValidObject(nullptr));
  EXPECT_FALSE(CIData::IsValidObject(reinterpret_cast<CIData*>(&host)));
  EXPECT_FALSE(CIData::IsValidObject(reinterpret_cast<CIData*>(~std::uintptr_t{0})));
  auto item = host.Make(SoundRecord());
  CIData* const address = item.get();
  EXPECT_TRUE(CIData::IsValidObject(address));
  item.reset();
  EXPECT_FALSE(CIData::IsValidObject(address));
}

// The thread sanitizer would report the order that is wrong on purpose.
#if defined(UTDATA_CHECKED) && !defined(__SANITIZE_THREAD__)
TEST(DataLife, AMastersLockTakenAfterItsElementsIsReported) {
  DataHost host;
  host.scanning[0] = {escan_Mode2, true};
  const auto master = host.Make(SoundRecord({.dataClass = masterClass}));
  const auto element = Element(host, 1);
  master->idata1_SubChannelAdd(element.get());
  // An axis that is reported calls back while its item's lock is held.
  const auto reportedInside = [](CIData* held, CIData* asked) {
    const utdata::ReportSink before = utdata::SetReportSink([asked](const utdata::Report&) {
      asked->idata3_Modified();
      return utdata::ReportAnswer::Continue;
    });
    testing::internal::CaptureStderr();
    static_cast<void>(held->idata3_GetDimQty(kvt_AxisFifth));
    utdata::SetReportSink(before);
    return !testing::internal::GetCapturedStderr().empty();
  };
  EXPECT_FALSE(reportedInside(master.get(), element.get()));
  EXPECT_FALSE(reportedInside(master.get(), master.get()));
  EXPECT_TRUE(reportedInside(element.get(), master.get()));
  EXPECT_EQ(1, master->idata3_IsModified()) << "reported, and done all the same";
}
#endif

}  // namespace
