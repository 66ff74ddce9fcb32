// The file set: adding, finding by ids, and querying beside a writer. Figures with a count of items
// are to be compared across counts.
#include <benchmark/benchmark.h>

#include <atomic>
#include <deque>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "bench/data_document.h"
#include "utdata/fset.h"

class CDocument {};

namespace {

/// Gates of up to `count` (gate, channel) ids, several gates to a channel.
std::deque<CGGateTypeDescr> MakeGates(std::uint32_t count) {
  std::deque<CGGateTypeDescr> gates(count);
  for (std::uint32_t index = 0; index < count; ++index) {
    gates[index].gateId = index % 4;
    gates[index].channelId = index / 4;
  }
  return gates;
}

struct FilledSet {
  explicit FilledSet(std::uint32_t count) : records(MakeGates(count)) {
    for (CGGateTypeDescr& record : records) set.fset_AddGGate(&record, 0);
  }
  CDocument document;
  std::deque<CGGateTypeDescr> records;
  CFSet set{&document};
};

/// Time of one item in a set of the given size.
void FileSetAdd(benchmark::State& state) {
  const auto count = static_cast<std::uint32_t>(state.range(0));
  std::deque<CGGateTypeDescr> records = MakeGates(count);
  CDocument document;
  for (auto _ : state) {
    auto set = std::make_unique<CFSet>(&document);
    for (CGGateTypeDescr& record : records)
      if (!set->fset_AddGGate(&record, 0)) return state.SkipWithError("an item was refused");
    state.PauseTiming();
    set.reset();
    state.ResumeTiming();
  }
  state.counters["item"] = benchmark::Counter(
      static_cast<double>(count),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(FileSetAdd)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);

void FileSetFind(benchmark::State& state) {
  const auto count = static_cast<std::uint32_t>(state.range(0));
  FilledSet filled(count);
  CIGateLst all;
  filled.set.fset_GetIGateLst(&all, fset_All, fset_AnyId, fset_AnyId);
  std::mt19937 random(1);
  std::vector<const CGGateTypeDescr*> wanted(4096);
  for (auto& record : wanted) record = &filled.records[random() % count];
  for (std::size_t index = 0; index < 64; ++index)
    if (all.GetIGate(fset_All, wanted[index]->gateId, wanted[index]->channelId) !=
        filled.set.fset_GetIGate(fset_All, wanted[index]->gateId, wanted[index]->channelId))
      return state.SkipWithError("another item than the walk finds");
  std::size_t next = 0;
  for (auto _ : state) {
    const CGGateTypeDescr& record = *wanted[next++ % wanted.size()];
    benchmark::DoNotOptimize(filled.set.fset_GetIGate(fset_All, record.gateId, record.channelId));
  }
}
BENCHMARK(FileSetFind)->RangeMultiplier(10)->Range(1000, 100000);

/// Amplitudes and positions that match, each an element of a master of four.
idata_typeId MatchedIds(std::uint32_t index) {
  return {.channelId = index / 32,
          .subChannelId = 1 + index / 2 % 4,
          .gateId = index / 8 % 4,
          .dataClass = index % 2 ? gdata_CScanPosition : gdata_CScanAmplitude};
}

/// What a damaged or hostile file may hold: ids that are the wildcard, in all but one place, and
/// that one different in every group.
idata_typeId WildIds(std::uint32_t index) {
  idata_typeId id{
      fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId, gdata_CScanThickness, bookmark_None};
  if (index % 4 == 0) {
    id.bookmarkType = static_cast<eDataBookmarkType>(fset_AnyId);  // found by no look-up
  } else if (index % 4 == 1) {
    id.dataClass = static_cast<gdata_enumDataClass>(0x10000 * (1 + index / 4));
  } else if (index % 4 == 2) {
    id.channelId = index;
    id.dataClass = gdata_CScanAmplitude;
  } else {
    id.bookmarkType = static_cast<eDataBookmarkType>(index);
  }
  return id;
}

/// Time of one data group in a set of the given size. As many groups are added in every case, to as
/// many sets as that takes, which all stay: the memory that items take, most of it fresh pages,
/// counts alike.
void AddData(benchmark::State& state,
             idata_typeId (*idsOf)(std::uint32_t),
             std::size_t masters,
             std::size_t partners) {
  constexpr std::size_t groups = 100'000;
  const auto count = static_cast<std::uint32_t>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    std::deque<utdata::bench::DataDocument> documents(groups / count);
    state.ResumeTiming();
    for (auto& document : documents)
      for (std::uint32_t index = 0; index < count; ++index) document.Add(idsOf(index));
    state.PauseTiming();
    CIDataLst items, ofMasters;
    for (auto& document : documents) {
      document.set.fset_GetIDataLst(&items);
      document.set.fset_GetMSCIDataLst(&ofMasters);
    }
    std::size_t matched = 0;
    for (const CIData* item : items)
      matched += item->idata1_GetInfoRef()->GetMatchedCScan() != nullptr;
    if (static_cast<std::size_t>(ofMasters.GetCount()) != groups * masters / 4 ||
        matched != groups * partners)
      state.SkipWithError("other masters or partners than the groups have");
    documents.clear();
    state.ResumeTiming();
  }
  state.counters["group"] = benchmark::Counter(
      static_cast<double>(groups),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void FileSetAddData(benchmark::State& state) { AddData(state, MatchedIds, 1, 1); }
BENCHMARK(FileSetAddData)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);

void FileSetAddWildData(benchmark::State& state) { AddData(state, WildIds, 1, 0); }
BENCHMARK(FileSetAddWildData)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond);

void FileSetFindData(benchmark::State& state) {
  const auto count = static_cast<std::uint32_t>(state.range(0));
  utdata::bench::DataDocument document;
  for (std::uint32_t index = 0; index < count; ++index) document.Add(MatchedIds(index));
  CIDataLst all;
  document.set.fset_GetIDataLst(&all);
  std::mt19937 random(1);
  std::vector<idata_typeId> wanted(4096);
  for (idata_typeId& id : wanted) id = MatchedIds(static_cast<std::uint32_t>(random() % count));
  for (std::size_t index = 0; index < 64; ++index) {
    const idata_typeId& id = wanted[index];
    if (all.GetIData(fset_All, 0, 0, id.channelId, id.subChannelId, id.gateId, id.dataClass) !=
        document.set.fset_GetIData(&id))
      return state.SkipWithError("another item than the walk finds");
  }
  std::size_t next = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(document.set.fset_GetIData(&wanted[next++ % wanted.size()]));
}
BENCHMARK(FileSetFindData)->RangeMultiplier(10)->Range(1000, 100000);

/// Eight readers; with an argument of 1 beside a writer that edits, adds and removes without a
/// pause.
class Readers : public benchmark::Fixture {
 public:
  void SetUp(const benchmark::State& state) override {
    if (state.thread_index() != 0) return;
    filled = std::make_unique<FilledSet>(10000);
    stop = false;
    missed = 0;
    if (state.range(0))
      writer = std::thread([this] {
        CGChanTypeDescr channel;
        CIGate* gate = filled->set.fset_GetIGate(fset_All, 0, 0);
        for (std::uint32_t round = 0; !stop; ++round) {
          channel.channelId = round % 100;
          filled->set.fset_AddGChan(&channel, 1);
          gate->Start(static_cast<float>(round));
          filled->set.fset_RemoveGChan(fset_All, channel.channelId);
          std::this_thread::yield();
        }
      });
  }
  void TearDown(const benchmark::State& state) override {
    if (state.thread_index() != 0) return;
    stop = true;
    if (writer.joinable()) writer.join();
    filled.reset();
  }

 protected:
  std::unique_ptr<FilledSet> filled;
  std::thread writer;
  std::atomic<bool> stop{false};
  std::atomic<std::int64_t> missed{0};
};

BENCHMARK_DEFINE_F(Readers, FileSetQuery)(benchmark::State& state) {
  std::mt19937 random(static_cast<unsigned>(state.thread_index()));
  for (auto _ : state) {
    const auto index = static_cast<std::uint32_t>(random() % 10000);
    if (!filled->set.fset_GetIGate(fset_All, index % 4, index / 4)) ++missed;
  }
  if (missed != 0) state.SkipWithError("a reader timed out");
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK_REGISTER_F(Readers, FileSetQuery)
    ->ArgName("writer")
    ->Arg(0)
    ->Arg(1)
    ->Threads(8)
    ->UseRealTime();

}  // namespace
