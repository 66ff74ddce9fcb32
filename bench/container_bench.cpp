// Writing, loading and opening inspection files, beside what the machine allows for the same bytes.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstring>
#include <fstream>

#include "bench/channels.h"
#include "utdata/fcont.h"

namespace utdata::bench {
namespace {

namespace fs = std::filesystem;

/// Writes the load as a new inspection file; 0 on success.
int WriteLoad(const fs::path& path, const std::vector<Channel>& channels) {
  CFContTypeFileDescr descriptor;
  if (!descriptor.SetPath(path.wstring())) return -1;
  for (const Channel& channel : channels)
    descriptor.channels.AddTail(const_cast<Channel*>(&channel));  // only read
  SCFile::FileHandle file = nullptr;
  const int result = CFCont{}.FileWrite(nullptr, &descriptor, 0, nullptr, &file, 0);
  return result ? result : SCFile::file_Close(file);
}

/// Loads a file and hands its channels over; empty when that fails.
std::vector<std::unique_ptr<Channel>> LoadChannels(const fs::path& path,
                                                   CFContTypeFileDescr*& descriptor) {
  descriptor = CFCont{}.FileLoad(path.wstring().c_str(), nullptr, nullptr);
  std::vector<std::unique_ptr<Channel>> channels;
  if (!descriptor) return channels;
  for (Channel* channel : descriptor->channels) channels.emplace_back(channel);
  return channels;
}

void Close(CFContTypeFileDescr* descriptor) {
  if (!descriptor) return;
  CFCont{}.FileClose(descriptor);
  delete descriptor;
}

void WriteGroups(benchmark::State& state) {
  const Workplace workplace;
  const auto channels = Channels();
  for (auto _ : state) {
    if (WriteLoad(workplace.File("load.fpd"), channels) != 0)
      return state.SkipWithError("the file cannot be written");
  }
  CFContTypeFileDescr* descriptor = nullptr;
  if (!IsTheLoad(LoadChannels(workplace.File("load.fpd"), descriptor)))
    state.SkipWithError("what was written is not the load");
  Close(descriptor);
  PerGroup(state);
}
BENCHMARK(WriteGroups)->Unit(benchmark::kMillisecond);

/// The same bytes in one write and one sync.
void WriteLimit(benchmark::State& state) {
  const Workplace workplace;
  if (WriteLoad(workplace.File("load.fpd"), Channels()) != 0)
    return state.SkipWithError("the file cannot be written");
  const std::string bytes(fs::file_size(workplace.File("load.fpd")), 'x');
  for (auto _ : state) {
    const int file = open(workplace.File("limit").c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
    const bool written =
        write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
        fsync(file) == 0;
    close(file);
    if (!written) return state.SkipWithError("the bytes cannot be written");
  }
  PerGroup(state);
}
BENCHMARK(WriteLimit)->Unit(benchmark::kMillisecond);

void LoadGroups(benchmark::State& state) {
  const Workplace workplace;
  if (WriteLoad(workplace.File("load.fpd"), Channels()) != 0)
    return state.SkipWithError("the file cannot be written");
  CFContTypeFileDescr* descriptor = nullptr;
  const bool right = IsTheLoad(LoadChannels(workplace.File("load.fpd"), descriptor));
  Close(descriptor);
  if (!right) return state.SkipWithError("what was loaded is not the load");
  for (auto _ : state) {
    descriptor = CFCont{}.FileLoad(workplace.File("load.fpd").wstring().c_str(), nullptr, nullptr);
    state.PauseTiming();
    for (Channel* channel : descriptor->channels) delete channel;
    Close(descriptor);
    state.ResumeTiming();
  }
  PerGroup(state);
}
BENCHMARK(LoadGroups)->Unit(benchmark::kMillisecond);

/// One read of the same bytes and one checksum pass over them.
void LoadLimit(benchmark::State& state) {
  const Workplace workplace;
  if (WriteLoad(workplace.File("load.fpd"), Channels()) != 0)
    return state.SkipWithError("the file cannot be written");
  const std::size_t size = fs::file_size(workplace.File("load.fpd"));
  for (auto _ : state) {
    const int file = open(workplace.File("load.fpd").c_str(), O_RDONLY);
    const std::unique_ptr<char[]> bytes(new char[size]);
    const bool whole = read(file, bytes.get(), size) == static_cast<ssize_t>(size);
    benchmark::DoNotOptimize(XXH3_64bits(bytes.get(), size));
    close(file);
    if (!whole) return state.SkipWithError("the bytes cannot be read");
  }
  state.counters["bytes"] = static_cast<double>(size);
  PerGroup(state);
}
BENCHMARK(LoadLimit)->Unit(benchmark::kMillisecond);

/// A kilobyte figure of this process from /proc/self/status.
double StatusKilobytes(const std::string& key) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind(key, 0) == 0) return std::stod(line.substr(key.size() + 1));
  }
  return 0;
}

/// Opens a file whose sample block has 2^range(0) bytes, maps the block and reads one A-scan from
/// its middle.
void OpenAndReadOneAScan(benchmark::State& state) {
  const Workplace workplace;
  const std::uint64_t size = std::uint64_t{1} << state.range(0);
  constexpr std::size_t kScan = 2048;
  void* samples = mmap(
      nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (samples == MAP_FAILED) return state.SkipWithError("no address space for the samples");
  std::memset(static_cast<char*>(samples) + size / 2, 7, kScan);
  CGDataTypeFDD record;
  record.dataPointer = samples;
  record.dataSize = size;
  CFContTypeFileDescr descriptor;
  SCFile::FileHandle file = nullptr;
  descriptor.data.AddTail(&record);
  const bool written = descriptor.SetPath(workplace.File("big.fpd").wstring()) &&
                       CFCont{}.FileWrite(nullptr, &descriptor, 0, nullptr, &file, 0) == 0 &&
                       SCFile::file_Close(file) == 0;
  munmap(samples, size);
  if (!written) return state.SkipWithError("the file cannot be written");

  const double before = StatusKilobytes("VmRSS:");
  double growth = 0;
  for (auto _ : state) {
    CFContTypeFileDescr* loaded =
        CFCont{}.FileLoad(workplace.File("big.fpd").wstring().c_str(), nullptr, nullptr);
    void* mapped = nullptr;
    std::uint64_t mappedSize = 0;
    std::uint64_t sum = 0;
    if (!loaded || gdata_SamplesMap(loaded->data.GetHead(), &mapped, &mappedSize) != 0)
      return state.SkipWithError("cannot be mapped");
    for (std::size_t n = 0; n < kScan; ++n)
      sum += static_cast<unsigned char*>(mapped)[size / 2 + n];
    growth = std::max(growth, StatusKilobytes("VmRSS:") - before);
    if (sum != 7 * kScan) return state.SkipWithError("the A-scan is not what was written");
    CGDataTypeFDD* head = loaded->data.GetHead();
    gdata_Delete(head, 1);
    Close(loaded);
  }
  state.counters["resident_growth_kB"] = growth;
}
BENCHMARK(OpenAndReadOneAScan)->Arg(16)->Arg(26)->Arg(33)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace utdata::bench
