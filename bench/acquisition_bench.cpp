// Appending A-scan blocks to an acquisition file, beside a memcpy of the same bytes into the same
// mapping. Every file is new, so that both meet pages that nobody has touched; creating and closing
// it are not measured.
#include <cstring>
#include <filesystem>
#include <fstream>

#include "bench/acquisition_load.h"
#include "bench/channels.h"
#include "utdata/gdatamanager.h"

namespace utdata::bench {
namespace {

using Aurelis::Axis;
using Aurelis::Ultrasound::AscanDataDescriptor;

MemoryAscanPatchBuffer BlockOf(int storageBytes) {
  const Aurelis::Patch patch({Eigen::Vector2i(0, 0), Eigen::Vector2i(kColumns - 1, kRows - 1)});
  MemoryAscanPatchBuffer block(AscanDataDescriptor(storageBytes, Axis(kSamples)), patch);
  const std::vector<std::int32_t> samples = BlockSamples(storageBytes);
  for (int cell = 0; cell < kCells; ++cell) {
    const auto from = samples.begin() + cell * kSamples;
    block.SetAscan(static_cast<std::uint32_t>(cell % kColumns),
                   static_cast<std::uint32_t>(cell / kColumns),
                   {from, from + kSamples});
  }
  return block;
}

std::uint64_t BlockBytes(int storageBytes) {
  return static_cast<std::uint64_t>(kCells * (4 + kSamples * storageBytes));
}

Aurelis::MemoryData EstimateOf(const MemoryAscanPatchBuffer& block, int storageBytes) {
  Aurelis::MemoryData memory;
  memory.AddAscanBlocks(
      block.GetPatch(), block.GetDescriptor(), static_cast<std::uint64_t>(Blocks(storageBytes)));
  return memory;
}

/// Whether the block at `offset` of a file holds the load's samples.
bool HoldsTheBlock(const std::filesystem::path& path, std::uint64_t offset, int storageBytes) {
  std::ifstream file(path, std::ios::binary);
  std::vector<unsigned char> bytes(BlockBytes(storageBytes));
  file.seekg(static_cast<std::streamoff>(offset));
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file) return false;
  const std::vector<std::int32_t> samples = BlockSamples(storageBytes);
  for (std::size_t n = 0; n < samples.size(); ++n) {
    std::uint32_t entry = 0;
    std::memcpy(&entry, &bytes[4 * (n / kSamples)], sizeof entry);
    std::uint32_t stored = 0;
    std::memcpy(&stored,
                &bytes[entry - offset + n % kSamples * static_cast<std::size_t>(storageBytes)],
                static_cast<std::size_t>(storageBytes));
    if (stored != static_cast<std::uint32_t>(samples[n])) return false;
  }
  return true;
}

/// Where the last block of the file starts.
std::uint64_t LastBlock(int storageBytes) {
  return GDataManager::headerSize +
         static_cast<std::uint64_t>(Blocks(storageBytes) - 1) * BlockBytes(storageBytes);
}

/// Fills a new file in each iteration by `append`, which alone is measured.
template <class Append>
void OnNewFiles(benchmark::State& state, int storageBytes, Append append) {
  const Workplace workplace;
  const std::filesystem::path path = workplace.File("load.acq");
  const MemoryAscanPatchBuffer block = BlockOf(storageBytes);
  for (auto _ : state) {
    state.PauseTiming();
    {
      GDataManager writer(path.wstring());
      if (writer.FileCreate(EstimateOf(block, storageBytes)) != 0)
        return state.SkipWithError("the file cannot be created");
      state.ResumeTiming();
      append(writer, block);
      state.PauseTiming();
      if (!HoldsTheBlock(path, LastBlock(storageBytes), storageBytes))
        return state.SkipWithError("what was stored is not the load");
    }
    std::filesystem::remove(path);
    state.ResumeTiming();
  }
  PerStoredByte(state, storageBytes);
}

void AcquisitionAppend(benchmark::State& state) {
  const int storageBytes = static_cast<int>(state.range(0));
  OnNewFiles(state, storageBytes, [&](GDataManager& writer, const MemoryAscanPatchBuffer& block) {
    std::uint32_t offset = 0;
    for (std::int64_t n = 0; n < Blocks(storageBytes); ++n) offset = writer.SavePatchBuffer(block);
    if (offset != LastBlock(storageBytes)) state.SkipWithError("a block was refused");
  });
}
BENCHMARK(AcquisitionAppend)
    ->ArgName("bytes_a_sample")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond);

/// The limit. The bytes are those that the writer would store as the last block, wherever they go.
void AcquisitionMemcpyLimit(benchmark::State& state) {
  const int storageBytes = static_cast<int>(state.range(0));
  std::vector<std::byte> bytes(BlockBytes(storageBytes));
  const std::vector<std::int32_t> samples = BlockSamples(storageBytes);
  for (int cell = 0; cell < kCells; ++cell) {
    const auto entry = static_cast<std::uint32_t>(LastBlock(storageBytes)) +
                       static_cast<std::uint32_t>(4 * kCells + cell * kSamples * storageBytes);
    std::memcpy(&bytes[4 * static_cast<std::size_t>(cell)], &entry, sizeof entry);
  }
  for (std::size_t n = 0; n < samples.size(); ++n)
    std::memcpy(&bytes[4 * kCells + n * static_cast<std::size_t>(storageBytes)],
                &samples[n],
                static_cast<std::size_t>(storageBytes));
  OnNewFiles(state, storageBytes, [&](GDataManager& writer, const MemoryAscanPatchBuffer&) {
    auto* next = const_cast<std::byte*>(writer.GetMapViewOfFile()) + GDataManager::headerSize;
    for (std::int64_t n = 0; n < Blocks(storageBytes); ++n, next += bytes.size())
      std::memcpy(next, bytes.data(), bytes.size());
    benchmark::ClobberMemory();
  });
}
BENCHMARK(AcquisitionMemcpyLimit)
    ->ArgName("bytes_a_sample")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace utdata::bench
