// The file set: adding, finding by ids, and querying beside a writer. Figures with a count of items are to be compared across counts.
#include <benchmark/benchmark.h>

#include <atomic>
#include <deque>
#include <memory>
#include <random>
#include <thread>
#include <vector>

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
      static_cast<double>(count), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
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

/// Eight readers; with an argument of 1 beside a writer that edits, adds and removes without a pause.
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
BENCHMARK_REGISTER_F(Readers, FileSetQuery)->ArgName("writer")->Arg(0)->Arg(1)->Threads(8)->UseRealTime();

}  // namespace
