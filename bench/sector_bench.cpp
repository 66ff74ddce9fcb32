// A sector scan of 60 beams of 2,000 samples, from samples in memory to the picture.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "utdata/newscan.h"
#include "utdata/views.h"

namespace {

constexpr std::uint32_t beams = 60;
constexpr std::uint32_t quantity = 2000;

std::vector<std::byte> RandomAScan(std::mt19937& random) {
  std::vector<std::byte> samples(quantity * sizeof(std::int16_t));
  for (std::uint32_t index = 0; index < quantity; ++index) {
    const auto value = static_cast<std::int16_t>(random());
    std::memcpy(samples.data() + index * sizeof value, &value, sizeof value);
  }
  return samples;
}

utdata::Inspection MakeInspection() {
  utdata::Inspection inspection = utdata::Inspection::New("bench.fpd");
  std::mt19937 random(7);
  const utdata::SampleType& type = *utdata::FindSampleType("i16");
  for (std::uint32_t beam = 1; beam <= beams; ++beam) {
    CGDataTypeFDD record = utdata::NominalRecord(type);
    utdata::SetLayout(record, type, {.columns = 1, .rows = 1, .samples = quantity});
    record.SetDataBookmarkType(bookmark_MultiChannel);
    record.subChannelId = beam;
    record.probeAngle = 40 + 0.5F * static_cast<float>(beam);
    record.partThickness = 0.02F;
    inspection.AddData(record, RandomAScan(random));
  }
  return inspection;
}

void Sector(benchmark::State& state) {
  const utdata::Inspection inspection = MakeInspection();
  const utdata::DataGroup master = inspection.Masters().front();
  for (auto _ : state) {
    const utdata::SectorView view = utdata::MakeSector(master);
    benchmark::DoNotOptimize(view.pixels.data());
    if (!view.strongest || std::abs(view.strongest->percent) < 99)
      return state.SkipWithError("the strongest sample was not found");
  }
}
BENCHMARK(Sector)->Name("sector/60_beams_of_2000_samples")->Unit(benchmark::kMillisecond);

}  // namespace
