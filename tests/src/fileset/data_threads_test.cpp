// Data items under several threads: viewers that query, read and wait for tables beside a loader
// that adds, removes and attaches.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <thread>
#include <tuple>
#include <vector>

#include "tests/src/fileset/data_fixture.h"
#include "tests/support/report_capture.h"
#include "utdata/unitset.h"

namespace utdata::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t stayingElements = 3;

/// Items of channel 4 that stay, a master among them, and what a loader does to all others.
class DataThreads : public DataGroups {
 protected:
  void SetUp() override {
    for (std::uint32_t number = 0; number <= stayingElements; ++number)
      staying.push_back(Add(Id(gdata_AScan, number, 0)));
    master = staying.back()->idata1_SubChannelMaster();
  }

  /// What a viewer does. Returns how much of what stays it did not find.
  int View(std::uint32_t round) {
    int missed = 0;
    CIDataLst all, sorted, masters, found;
    missed += set.fset_GetIDataLst(&all) < staying.size();
    missed += set.fset_GetSpecificChannelSortedIDataList(4, &sorted) != staying.size();
    missed += set.fset_GetMSCIDataLst(&masters) == 0;
    missed +=
        set.fset_GetIDataLst(
            &found, fset_All, 0, fset_AnyId, 4, round % 4, fset_AnyId, gdata_AScan, 0, 0) != 1;
    missed += set.fset_GetIData(fset_All, 0, 0, 4, fset_AnyId, 0, MasterOf(gdata_AScan)) != master;
    std::ignore = set.fset_GetGateSpecificIDataList(
        &found, fset_All, 0, fset_AnyId, fset_AnyId, 1, fset_AnyId);
    std::ignore = set.fset_GetSpecialIDataList(&found);
    std::ignore = set.fset_GetIDataLst(&found, 1);
    CIData& item = *staying[round % staying.size()];
    idata_typeInspParams parameters;
    item.idata3_GetInspParam(&parameters);
    const double base = item.idata3_UnitsGet()
                            ->GetUnit(kvt_AxisColumn, unit_Length, unit_Millimetre)
                            ->ConvertToBase(1);
    missed += parameters.probeAngle != 45 || !(base > 0);
    std::wstring name;
    item.idata3_GetChannelName(&name);
    missed += name.empty() || master->idata1_SubChannelQty() < stayingElements;
    return missed;
  }

  /// Adds and removes matched C-scans with their masters on another channel.
  void Load(std::uint32_t round) {
    for (const gdata_enumDataClass dataClass :
         {gdata_CScanAmplitude, gdata_CScanPosition, gdata_BeamSimulation})
      for (std::uint32_t number = 0; number < 3; ++number)
        Add({.patchId = round % 2,
             .channelId = 5,
             .subChannelId = number,
             .gateId = 1,
             .dataClass = dataClass});
    set.fset_ClearModified();
    for (std::uint32_t number = 0; number < 3; ++number)
      set.fset_RemoveGData(fset_All, 0, round % 2, 5, (round + number) % 3, fset_AnyId, fset_AnyId);
  }

  std::vector<CIData*> staying;
  CIData* master = nullptr;
};

TEST_F(DataThreads, ViewersReadWhileALoaderAddsAndRemovesAndAnEditorEdits) {
  const ReportCapture reports;
  std::atomic<bool> stop{false};
  std::atomic<int> missed{0}, views{0};
  std::vector<std::thread> viewers;
  for (int viewer = 0; viewer < 4; ++viewer)
    viewers.emplace_back([&] {
      for (std::uint32_t round = 0; !stop; ++round, ++views) missed += View(round);
    });
  std::thread editor([&] {
    for (std::uint32_t round = 0; !stop; ++round) {
      master->idata1_UpdateMasterChannel();
      staying[1]->SetDataBookmarkTypeofAssociatedChannel(round % 2 ? bookmark_Single
                                                                   : bookmark_MultiChannel);
    }
  });
  std::uint32_t round = 0;
  for (const auto start = Clock::now(); Clock::now() < start + (round > 16 ? 1s : 60s); ++round)
    Load(round);
  stop = true;
  editor.join();
  for (std::thread& viewer : viewers) viewer.join();
  EXPECT_EQ(0, missed) << "of " << views << " views beside " << round << " loads";
  EXPECT_GT(views, 4);
  EXPECT_EQ(0U, reports.Assertions());
}

/// Each of these takes the locks of a master and of its elements.
TEST_F(DataThreads, MastersAreLockedBeforeTheirElements) {
  const ReportCapture reports;
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  threads.emplace_back([&] {
    while (!stop) master->idata1_UpdateMasterChannel();
  });
  threads.emplace_back([&] {
    while (!stop) master->idata1_DataLoad(0);
  });
  threads.emplace_back([&] {
    for (CGDataTypeFDD out; !stop;) staying.back()->idata1_GetGInfoCopy(&out);
  });
  for (std::uint32_t round = 0; round < 50; ++round) {
    Add(Id(gdata_AScan, stayingElements + 1, 0));
    Remove(Id(gdata_AScan, stayingElements + 1, 0));
    Load(round);
  }
  stop = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(stayingElements, master->idata1_SubChannelQty());
  EXPECT_EQ(0U, reports.Assertions());
}

/// OnDataGroupAdded runs inside the writer side: its own thread may query, others have to wait.
TEST(DataThreadsHost, IsCalledInsideTheWriterSide) {
  struct Host : DataHost {
    void OnDataGroupAdded(std::int32_t) override {
      own = set.fset_HasEddyCurrentData();
      std::thread([this] { others = set.fset_HasEddyCurrentData(); }).join();
    }
    bool own = false, others = true;
  } host;
  CGDataTypeFDD record = SoundRecord({.dataClass = gdata_EddyCurrentX});
  ASSERT_NE(nullptr, host.set.fset_AddGData(&record, nullptr, &host.volumes, 0));
  EXPECT_TRUE(host.own);
  EXPECT_FALSE(host.others) << "not within the 500 ms of a query";
  EXPECT_TRUE(host.set.fset_HasEddyCurrentData());
}

/// Nor does an edit on another thread wait for the set: the host may wait for it.
TEST(DataThreadsHost, MayWaitForAnEditOfAnotherThread) {
  struct Host : DataHost {
    void OnDataGroupAdded(std::int32_t) override {
      if (!element) return;
      editor = std::thread([this] {
        auto* const master = element->idata1_SubChannelMaster();
        element->SetDataBookmarkTypeofAssociatedChannel(bookmark_Tofd);
        master->idata1_UpdateMasterChannel();
        master->idata1_SubChannelRemove(element);
        master->idata1_SubChannelAdd(element);
        gate->igate9_OnLineUpdate(&gateRecord, 0);
        edited = true;
      });
      const auto start = Clock::now();
      while (!edited && Clock::now() < start + 3s) std::this_thread::sleep_for(1ms);
      waited = Clock::now() - start;
    }
    CGGateTypeDescr gateRecord;
    CIGate* gate = set.fset_AddGGate(&gateRecord, 0);
    CIData* element = nullptr;
    std::thread editor;
    std::atomic<bool> edited{false};
    Clock::duration waited{};
  } host;
  const auto add = [&host](std::uint32_t subChannelId) {
    CGDataTypeFDD record = SoundRecord(Id(gdata_AScan, subChannelId, 0));
    return host.set.fset_AddGData(&record, nullptr, &host.volumes, 0);
  };
  host.element = nullptr;
  CIData* const element = add(1);
  host.element = element;
  ASSERT_NE(nullptr, add(2));
  host.editor.join();
  EXPECT_LT(host.waited, 200ms);
  EXPECT_EQ(element,
            host.set.fset_GetIData(fset_All, bookmark_Tofd, 0, 4, 1, fset_AnyId, gdata_AScan));
}

}  // namespace
}  // namespace utdata::test
