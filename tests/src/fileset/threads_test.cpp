// The file set under several threads: readers beside a writer that does everything, a writer that
// is slow, edits of items beside both, and nested grants of the lock.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <tuple>
#include <vector>

#include "interfaces/framework.h"
#include "tests/src/fileset/document.h"
#include "utdata/fset.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto unknownFilter = static_cast<fset_enumFilters>(7);

/// What a file set holds beside the items that come and go: one of each type, number 0, which stay.
struct Inspection {
  CDocument document;
  CGChanTypeDescr channel;
  CGGateTypeDescr gate;
  CGPatchTypeDescr patch;
  CGProbeTypeDescr probe;
  CGSubchanTypeDescr subChannel;
  CGInfoTypeDescr info;
  CFSet set{&document};
  CIChan* iChannel = set.fset_AddGChan(&channel, 0);
  CIGate* iGate = set.fset_AddGGate(&gate, 0);
  CIPatch* iPatch = set.fset_AddGPatch(&patch, 0);
  CIProbe* iProbe = set.fset_AddGProbe(&probe, 0);
  CISubChan* iSubChannel = set.fset_AddGSubChan(&subChannel, 0);
  CIInfo* iInfo = set.fset_AddGInfo(&info, 0);
};

/// A record of which one id is set.
template <class Record>
Record WithId(std::uint32_t Record::*id, std::uint32_t value) {
  Record record;
  record.*id = value;
  return record;
}

/// Calls `action` from inside the set's writer side: a removal by an unknown filter reports while
/// it holds that.
void InsideTheWriterSide(CFSet& set, const std::function<void()>& action) {
  const utdata::ReportSink before = utdata::SetReportSink([&](const utdata::Report&) {
    action();
    return utdata::ReportAnswer::Continue;
  });
  set.fset_RemoveGInfo(unknownFilter);
  utdata::SetReportSink(before);
}

/// Every query once. Returns how many did not find an item that is always there.
int QueryAll(CFSet& set) {
  int missed = 0;
  missed += !set.fset_GetIChan(fset_All, 0);
  missed += !set.fset_GetIGate(fset_All, 0, 0);
  missed += !set.fset_GetIPatch(fset_All, 0);
  missed += !set.fset_GetIProbe(fset_All, fset_AnyId);
  missed += !set.fset_GetISubChan(fset_All, fset_AnyId, 0);
  missed += !set.fset_GetIInfo(fset_All);
  CIChanLst channels;
  CIGateLst gates;
  CIPatchLst patches;
  CIProbeLst probes;
  CISubChanLst subChannels;
  CIDataLst data;
  missed += set.fset_GetIChanLst(&channels, fset_All, fset_AnyId) == 0;
  missed += set.fset_GetIGateLst(&gates, fset_All, fset_AnyId, 0) == 0;
  missed += set.fset_GetIPatchLst(&patches, fset_All, 0) == 0;
  missed += set.fset_GetIProbeLst(&probes, fset_All, fset_AnyId) == 0;
  missed += set.fset_GetISubChanLst(&subChannels, fset_All, 0, 0) == 0;
  // What these answer changes all the time.
  std::ignore = set.fset_GetIChan(fset_New, 3);
  std::ignore = set.fset_GetIGate(fset_Modified, fset_AnyId, 0);
  std::ignore = set.fset_IsModified();
  std::ignore = set.fset_GetGWeldFill(0, 1);
  std::ignore = set.fset_GetGWeldScanPlan(0, 1);
  set.fset_GetIDataLst(
      &data, fset_All, 0, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId, 0, 0);
  for (const CGWeldFillDescr* fill : set.fset_GetGWeldFillList()) missed += fill->fillId > 8;
  missed += set.fset_GetIChanCount() == 0;
  return missed;
}

/// Every change once, with ids from 1 to 8.
void ChangeAll(Inspection& inspection, std::uint32_t round) {
  CFSet& set = inspection.set;
  const std::uint32_t id = 1 + round % 8;
  auto channel = WithId(&CGChanTypeDescr::channelId, id);
  auto gate = WithId(&CGGateTypeDescr::gateId, id);
  auto patch = WithId(&CGPatchTypeDescr::patchId, id);
  auto probe = WithId(&CGProbeTypeDescr::probeId, id);
  auto subChannel = WithId(&CGSubchanTypeDescr::subChannelId, id);
  auto fill = WithId(&CGWeldFillDescr::fillId, id);
  auto plan = WithId(&CGWeldScanPlanDescr::planId, id);
  set.fset_AddGChan(&channel, 1);
  set.fset_AddGGate(&gate, 1);
  set.fset_AddGPatch(&patch, 1);
  set.fset_AddGProbe(&probe, 1);
  set.fset_AddGSubChan(&subChannel, 1);
  set.fset_AddGWeldFill(&fill);
  set.fset_AddGWeldScanPlan(&plan);
  channel.name = gate.name = patch.name = probe.name = subChannel.name = std::to_wstring(round);
  set.fset_ReplaceGChan(&channel);
  set.fset_ReplaceGGate(&gate);
  set.fset_ReplaceGPatch(&patch);
  set.fset_ReplaceGProbe(&probe);
  set.fset_ReplaceGSubChan(&subChannel);
  inspection.iGate->Start(static_cast<float>(round));
  auto edited = WithId(&CGChanTypeDescr::channelId, round % 3 == 0 ? 0 : 9);
  edited.name = channel.name;
  if (CIChan* other = set.fset_GetIChan(fset_All, id)) other->ichan1_SetInfoCopy(&edited);
  edited.channelId = 0;
  inspection.iChannel->ichan1_SetInfoCopy(&edited);
  if (CIGate* other = set.fset_GetIGate(fset_All, id, 0)) other->igate9_OnLineUpdate(&gate, 0);
  subChannel.subChannelId = 0;
  inspection.iSubChannel->ischa1_SetInfoCopy(&subChannel);
  inspection.iInfo->iinfo1_ModifClear();
  set.fset_ClearModified();
  set.fset_ClearNew();
  set.fset_RemoveGChan(fset_New, fset_AnyId);
  set.fset_RemoveGGate(fset_All, id, 0);
  set.fset_RemoveGPatch(fset_All, id);
  set.fset_RemoveGProbe(fset_New, fset_AnyId);
  set.fset_RemoveGSubChan(fset_All, id, fset_AnyId);
}

TEST(FileSetThreads, ReadersNeverMissWhatStaysWhileAWriterChangesAllElse) {
  Inspection inspection;
  std::atomic<bool> stop{false};
  std::atomic<int> missed{0}, queries{0};
  std::vector<std::thread> readers;
  for (int reader = 0; reader < 8; ++reader)
    readers.emplace_back([&] {
      while (!stop) {
        missed += QueryAll(inspection.set);
        std::ignore = inspection.iGate->Start();
        ++queries;
      }
    });
  std::uint32_t round = 0;
  // Two seconds, or more where the machine is too busy for the writer to get anywhere.
  for (const auto start = Clock::now(); Clock::now() < start + (round > 16 ? 2s : 60s); ++round) {
    ChangeAll(inspection, round);
    if (round % 16 == 0)
      InsideTheWriterSide(inspection.set, [] { std::this_thread::sleep_for(40ms); });
  }
  stop = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_EQ(0, missed) << "of " << queries << " rounds of queries";
  EXPECT_GT(queries, 8);
  EXPECT_GT(round, 16U);
}

/// A query of a list that answers nothing.
template <class List, class Query>
void Gather(Query query) {
  List out;
  EXPECT_EQ(0U, query(out));
  EXPECT_TRUE(out.IsEmpty());
}

TEST(FileSetThreads, AWriterOf700MillisecondsMakesQueriesAnswerNothingAfter500) {
  Inspection inspection;
  CFSet& set = inspection.set;
  std::atomic<bool> inside{false}, answered{false};
  std::thread writer([&] {
    InsideTheWriterSide(set, [&] {
      inside = true;
      std::this_thread::sleep_for(700ms);
      while (!answered) std::this_thread::sleep_for(1ms);  // a busy machine may be late
    });
  });
  while (!inside) std::this_thread::yield();
  const auto start = Clock::now();
  const std::function<void()> queries[] = {
      [&] { EXPECT_EQ(nullptr, set.fset_GetIInfo(fset_All)); },
      [&] { EXPECT_EQ(nullptr, set.fset_GetIChan(fset_All, 0)); },
      [&] { EXPECT_EQ(nullptr, set.fset_GetIPatch(fset_All, 0)); },
      [&] { EXPECT_EQ(nullptr, set.fset_GetIProbe(fset_All, 0)); },
      [&] { EXPECT_EQ(nullptr, set.fset_GetISubChan(fset_All, 0, 0)); },
      [&] { EXPECT_EQ(nullptr, set.fset_GetIData(fset_All, 0, 0, 0, 0, 0, 0)); },
      [&] { EXPECT_EQ(nullptr, set.fset_GetGWeldFill(0, 0)); },
      [&] { EXPECT_EQ(nullptr, set.fset_GetGWeldScanPlan(0, 0)); },
      [&] { EXPECT_EQ(0, set.fset_IsModified()); },
      [&] {
        Gather<CIChanLst>([&](auto& out) { return set.fset_GetIChanLst(&out, fset_All, 0); });
      },
      [&] {
        Gather<CIPatchLst>([&](auto& out) { return set.fset_GetIPatchLst(&out, fset_All, 0); });
      },
      [&] {
        Gather<CIProbeLst>([&](auto& out) { return set.fset_GetIProbeLst(&out, fset_All, 0); });
      },
      [&] {
        Gather<CIGateLst>([&](auto& out) { return set.fset_GetIGateLst(&out, fset_All, 0, 0); });
      },
      [&] {
        Gather<CISubChanLst>(
            [&](auto& out) { return set.fset_GetISubChanLst(&out, fset_All, 0, 0); });
      },
      [&] { Gather<CIDataLst>([&](auto& out) { return set.fset_GetIDataLst(&out); }); },
      [&] { Gather<CIDataLst>([&](auto& out) { return set.fset_GetIDataLst(&out, 0); }); },
      [&] { Gather<CIDataLst>([&](auto& out) { return set.fset_GetMSCIDataLst(&out); }); },
      [&] { Gather<CIDataLst>([&](auto& out) { return set.fset_GetSpecialIDataList(&out); }); },
      [&] {
        Gather<CIDataLst>(
            [&](auto& out) { return set.fset_GetSpecificChannelSortedIDataList(0, &out); });
      },
      [&] {
        Gather<CIDataLst>([&](auto& out) {
          return set.fset_GetGateSpecificIDataList(&out, fset_All, 0, 0, 0, 0, 1);
        });
      },
  };
  std::vector<std::thread> others;
  for (const auto& query : queries) others.emplace_back(query);
  EXPECT_EQ(nullptr, set.fset_GetIGate(fset_All, 0, 0));
  const auto waited = Clock::now() - start;
  for (std::thread& other : others) other.join();
  answered = true;
  EXPECT_EQ(1U, set.fset_GetIChanCount()) << "takes no lock";
  EXPECT_TRUE(set.fset_GetGWeldFillList().empty()) << "takes no lock";
  writer.join();
  EXPECT_GE(waited, 495ms);
  EXPECT_LT(waited, 5s);
  EXPECT_EQ(0, QueryAll(set));
}

/// Calls `action` from inside the set's reader side: a query by an unknown filter reports while it
/// holds that.
void InsideTheReaderSide(CFSet& set, const std::function<void()>& action) {
  const utdata::ReportSink before = utdata::SetReportSink([&](const utdata::Report&) {
    action();
    return utdata::ReportAnswer::Continue;
  });
  std::ignore = set.fset_GetIInfo(unknownFilter);
  utdata::SetReportSink(before);
}

/// Every edit of an item as a whole.
void EditAll(Inspection& inspection) {
  auto channel = WithId(&CGChanTypeDescr::channelId, 5);
  auto gate = WithId(&CGGateTypeDescr::gateId, 5);
  auto patch = WithId(&CGPatchTypeDescr::patchId, 5);
  auto probe = WithId(&CGProbeTypeDescr::probeId, 5);
  auto subChannel = WithId(&CGSubchanTypeDescr::subChannelId, 5);
  CGInfoTypeDescr info;
  info.title = L"edited";
  inspection.iChannel->ichan1_SetInfoCopy(&channel);
  inspection.iPatch->ipatch1_SetInfoCopy(&patch);
  inspection.iProbe->iprob1_SetInfoCopy(&probe);
  inspection.iSubChannel->ischa1_SetInfoCopy(&subChannel);
  inspection.iInfo->iinfo1_SetInfoCopy(&info);
  inspection.iGate->igate9_OnLineUpdate(&gate, 0);
  channel.channelId = patch.patchId = probe.probeId = subChannel.subChannelId = gate.gateId = 6;
  inspection.iChannel->ichan1_ReplaceGInfo(&channel);
  inspection.iPatch->ipatch1_ReplaceGInfo(&patch);
  inspection.iProbe->iprob1_ReplaceGInfo(&probe);
  inspection.iSubChannel->ischa1_ReplaceGInfo(&subChannel);
  inspection.iInfo->iinfo1_ReplaceGInfo(&info);
  inspection.iGate->igate1_ReplaceGInfo(&gate);
  inspection.iGate->Start(2);
}

TEST(FileSetThreads, EditsOfItemsDoNotWaitForTheSet) {
  for (const auto& holdTheSet : {InsideTheWriterSide, InsideTheReaderSide}) {
    Inspection inspection;
    CFSet& set = inspection.set;
    std::atomic<bool> inside{false}, edited{false};
    std::thread holder([&] {
      holdTheSet(set, [&] {
        inside = true;
        const auto start = Clock::now();
        while (!edited && Clock::now() < start + 3s) std::this_thread::sleep_for(1ms);
      });
    });
    while (!inside) std::this_thread::yield();
    const auto start = Clock::now();
    EditAll(inspection);
    const auto waited = Clock::now() - start;
    edited = true;
    holder.join();
    EXPECT_LT(waited, 200ms);
    EXPECT_EQ(inspection.iChannel, set.fset_GetIChan(fset_Modified, 6));
    EXPECT_EQ(inspection.iGate, set.fset_GetIGate(fset_Modified, 6, 0));
    EXPECT_EQ(inspection.iPatch, set.fset_GetIPatch(fset_Modified, 6));
    EXPECT_EQ(inspection.iProbe, set.fset_GetIProbe(fset_Modified, 6));
    EXPECT_EQ(inspection.iSubChannel, set.fset_GetISubChan(fset_Modified, 6, 0));
    EXPECT_EQ(nullptr, set.fset_GetIChan(fset_All, 0));
    EXPECT_EQ(nullptr, set.fset_GetIGate(fset_All, 5, 0));
  }
}

/// Both ids of a sub-channel change at once, in a list that is walked and in one that is indexed,
/// with the working copy handed out and without.
TEST(FileSetThreads, IdsThatChangeTogetherAreNeverSeenApart) {
  for (const bool isLong : {false, true})
    for (const bool isHandedOut : {false, true}) {
      Inspection inspection;
      CFSet& set = inspection.set;
      for (std::uint32_t number = 10; isLong && number < 110; ++number) {
        auto other = WithId(&CGSubchanTypeDescr::subChannelId, number);
        set.fset_AddGSubChan(&other, 1);
      }
      CISubChan* const item = inspection.iSubChannel;
      CGSubchanTypeDescr first;
      first.name = L"0";
      item->ischa1_SetInfoCopy(&first);
      if (isHandedOut) std::ignore = item->ischa1_GetInfoRef();
      std::atomic<bool> stop{false};
      std::atomic<int> torn{0}, missed{0};
      std::vector<std::thread> readers;
      for (int reader = 0; reader < 3; ++reader)
        readers.emplace_back([&] {
          while (!stop) {
            ischa_id id;
            item->ischa1_GetId(&id);
            torn += id.subChannelId != id.channelId;
            torn += set.fset_GetISubChan(fset_All, 1, 0) != nullptr;
            torn += set.fset_GetISubChan(fset_All, 0, 1) != nullptr;
            missed += set.fset_GetISubChan(fset_All, fset_AnyId, fset_AnyId) != item;
            CGSubchanTypeDescr copy;
            item->ischa1_GetInfoCopy(&copy);
            torn += copy.name != std::to_wstring(copy.channelId);
          }
        });
      for (std::uint32_t round = 1; round < 20'000; ++round) {
        CGSubchanTypeDescr record;
        record.subChannelId = record.channelId = round % 2;
        record.name = std::to_wstring(round % 2);
        item->ischa1_SetInfoCopy(&record);
        if (set.fset_GetISubChan(fset_Modified, round % 2, round % 2) != item) ++missed;
      }
      stop = true;
      for (std::thread& reader : readers) reader.join();
      EXPECT_EQ(0, torn) << isLong << isHandedOut;
      EXPECT_EQ(0, missed) << isLong << isHandedOut;
    }
}

}  // namespace
