// The blocks of an acquisition appended to a chunked data set of a general scientific container, a
// chunk a block.
#ifdef UTDATA_BENCH_PEERS
#include <filesystem>

#include "bench/acquisition_load.h"
#include "bench/channels.h"
#include "bench/hdf5_id.h"

namespace utdata::bench {
namespace {

constexpr hsize_t kBlock[2] = {kCells, kSamples};

hid_t NewDataSet(hid_t file, hid_t type) {
  const hsize_t none[2] = {0, kSamples};
  const hsize_t most[2] = {H5S_UNLIMITED, kSamples};
  const Id space(H5Screate_simple(2, none, most), H5Sclose);
  const Id layout(H5Pcreate(H5P_DATASET_CREATE), H5Pclose);
  H5Pset_chunk(layout, 2, kBlock);
  return H5Dcreate2(file, "ascans", type, space, H5P_DEFAULT, layout, H5P_DEFAULT);
}

/// The part of the data set that one block fills.
hid_t BlockSpace(hid_t data, std::int64_t block) {
  const hid_t space = H5Dget_space(data);
  const hsize_t start[2] = {static_cast<hsize_t>(block) * kCells, 0};
  H5Sselect_hyperslab(space, H5S_SELECT_SET, start, nullptr, kBlock, nullptr);
  return space;
}

bool Append(hid_t data, std::int64_t block, const std::vector<std::int32_t>& samples) {
  const hsize_t extent[2] = {static_cast<hsize_t>(block + 1) * kCells, kSamples};
  if (H5Dset_extent(data, extent) < 0) return false;
  const Id inFile(BlockSpace(data, block), H5Sclose);
  const Id inMemory(H5Screate_simple(2, kBlock, nullptr), H5Sclose);
  return H5Dwrite(data, H5T_NATIVE_INT32, inMemory, inFile, H5P_DEFAULT, samples.data()) >= 0;
}

bool HoldsTheBlock(hid_t data, std::int64_t block, const std::vector<std::int32_t>& samples) {
  std::vector<std::int32_t> stored(samples.size());
  const Id inFile(BlockSpace(data, block), H5Sclose);
  const Id inMemory(H5Screate_simple(2, kBlock, nullptr), H5Sclose);
  return H5Dread(data, H5T_NATIVE_INT32, inMemory, inFile, H5P_DEFAULT, stored.data()) >= 0 &&
         stored == samples;
}

void Hdf5Append(benchmark::State& state) {
  const int storageBytes = static_cast<int>(state.range(0));
  const Workplace workplace;
  const std::filesystem::path path = workplace.File("load.h5");
  const std::vector<std::int32_t> samples = BlockSamples(storageBytes);
  for (auto _ : state) {
    state.PauseTiming();
    {
      const Id file(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT), H5Fclose);
      const Id data(NewDataSet(file, storageBytes == 1 ? H5T_STD_U8LE : H5T_STD_U16LE), H5Dclose);
      state.ResumeTiming();
      bool done = true;
      for (std::int64_t n = 0; n < Blocks(storageBytes); ++n)
        done = done && Append(data, n, samples);
      H5Dflush(data);  // the last blocks may still be in the container's own memory
      state.PauseTiming();
      if (!done || !HoldsTheBlock(data, Blocks(storageBytes) - 1, samples))
        return state.SkipWithError("what was stored is not the load");
    }
    std::filesystem::remove(path);
    state.ResumeTiming();
  }
  PerStoredByte(state, storageBytes);
}
BENCHMARK(Hdf5Append)->ArgName("bytes_a_sample")->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace utdata::bench
#endif
