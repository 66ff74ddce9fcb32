// Views of beams in the part: a sector scan of 60 beams of 2,000 samples, and top, side and end
// views of a quarter of a gibibyte, measured in passes over the same memory.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <span>
#include <vector>

#include "utdata/newscan.h"
#include "utdata/views.h"

namespace {

constexpr std::uint32_t beams = 60;
constexpr std::uint32_t quantity = 2000;

std::vector<std::byte> RandomSamples(std::mt19937& random, std::size_t cells) {
  std::vector<std::byte> samples(cells * quantity * sizeof(std::int16_t));
  for (std::size_t index = 0; index < cells * quantity; ++index) {
    const auto value = static_cast<std::int16_t>(random());
    std::memcpy(samples.data() + index * sizeof value, &value, sizeof value);
  }
  return samples;
}

utdata::Inspection MakeInspection(std::uint32_t columns, std::uint32_t rows) {
  utdata::Inspection inspection = utdata::Inspection::New("bench.fpd");
  std::mt19937 random(7);
  const utdata::SampleType& type = *utdata::FindSampleType("i16");
  for (std::uint32_t beam = 1; beam <= beams; ++beam) {
    CGDataTypeFDD record = utdata::NominalRecord(type);
    utdata::SetLayout(record, type, {.columns = columns, .rows = rows, .samples = quantity});
    record.SetDataBookmarkType(bookmark_MultiChannel);
    record.subChannelId = beam;
    record.probeAngle = 40 + 0.5F * static_cast<float>(beam);
    record.partThickness = 0.02F;
    inspection.AddData(record, RandomSamples(random, std::size_t{columns} * rows));
  }
  return inspection;
}

void Sector(benchmark::State& state) {
  const utdata::Inspection inspection = MakeInspection(1, 1);
  const utdata::DataGroup master = inspection.Masters().front();
  for (auto _ : state) {
    const utdata::SectorView view = utdata::MakeSector(master);
    benchmark::DoNotOptimize(view.pixels.data());
    if (!view.strongest || std::abs(view.strongest->percent) < 99)
      return state.SkipWithError("the strongest sample was not found");
  }
}
BENCHMARK(Sector)->Name("sector/60_beams_of_2000_samples")->Unit(benchmark::kMillisecond);

/// The shortest time of reading all samples of some data groups once, seconds.
double TimeOfPass(const std::vector<utdata::DataGroup>& groups) {
  double shortest = std::numeric_limits<double>::infinity();
  for (int turn = 0; turn < 5; ++turn) {
    const auto begin = std::chrono::steady_clock::now();
    for (const utdata::DataGroup& group : groups) {
      std::uint64_t sum = 0, word = 0;
      const std::span<const std::byte> bytes = group.Table();
      for (std::size_t at = 0; at + sizeof word <= bytes.size(); at += sizeof word) {
        std::memcpy(&word, bytes.data() + at, sizeof word);
        sum += word;
      }
      benchmark::DoNotOptimize(sum);
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    shortest = std::min(shortest, taken.count());
  }
  return shortest;
}

/// Of so many columns, and rows that make 256 MiB of all beams together.
void Projection(benchmark::State& state, utdata::PartView view) {
  const auto columns = static_cast<std::uint32_t>(state.range(0));
  const utdata::Inspection inspection = MakeInspection(columns, 1120 / columns);
  const std::vector<utdata::DataGroup> groups = {inspection.Masters().front()};
  const double pass = TimeOfPass(groups.front().Elements());
  for (auto _ : state) {
    const utdata::ProjectionView shown = utdata::MakeProjection(groups, view);
    benchmark::DoNotOptimize(shown.pixels.data());
    const auto strongest = shown.Strongest();
    if (!strongest || std::abs(strongest->percent) < 99.9)
      return state.SkipWithError("the strongest sample was not found");
  }
  state.counters["passes"] =
      benchmark::Counter(pass * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK_CAPTURE(Projection, top, utdata::PartView::Top)
    ->Name("projection/top")
    ->ArgName("columns")
    ->Arg(1)
    ->Arg(16)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Projection, side, utdata::PartView::Side)
    ->Name("projection/side")
    ->ArgName("columns")
    ->Arg(1)
    ->Arg(16)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Projection, end, utdata::PartView::End)
    ->Name("projection/end")
    ->ArgName("columns")
    ->Arg(1)
    ->Arg(16)
    ->Unit(benchmark::kMillisecond);

}  // namespace
