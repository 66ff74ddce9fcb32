// The file set under several threads: readers beside a writer that does everything, a writer that
// is slow, and a host called back.
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
  CIChanLst out;
  std::thread others[] = {
      std::thread([&] { EXPECT_EQ(nullptr, set.fset_GetIInfo(fset_All)); }),
      std::thread([&] { EXPECT_EQ(0U, set.fset_GetIChanLst(&out, fset_All, 0)); }),
      std::thread([&] { EXPECT_EQ(0, set.fset_IsModified()); })};
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

TEST(FileSetThreads, AHostCalledBackFromAChangeMayQueryAndChange) {
  Inspection inspection;
  CFSet& set = inspection.set;
  bool called = false;
  InsideTheWriterSide(set, [&] {
    called = true;
    EXPECT_EQ(0, QueryAll(set));
    auto added = WithId(&CGChanTypeDescr::channelId, 1),
         edited = WithId(&CGChanTypeDescr::channelId, 2);
    CIChan* channel = set.fset_AddGChan(&added, 0);
    channel->ichan1_SetInfoCopy(&edited);
    EXPECT_EQ(channel, set.fset_GetIChan(fset_Modified, 2));
    EXPECT_EQ(0U, set.fset_RemoveGChan(fset_All, 2));
    EXPECT_EQ(0, set.fset_IsModified());
  });
  EXPECT_TRUE(called);
}

}  // namespace
