// The same load in a general scientific container: a group per channel, its values as 40 attributes
// or as one compound attribute.
#ifdef UTDATA_BENCH_PEERS
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <hdf5.h>
#include <unistd.h>

#include "bench/channels.h"
#include "bench/hdf5_id.h"

namespace utdata::bench {
namespace {

namespace fs = std::filesystem;

/// A value of a row: its name, type in memory and on disk, and place in the row.
struct Value {
  std::string name;
  hid_t type;
  std::size_t offset;
};

std::vector<Value> Values(hid_t textType) {
  std::vector<Value> values;
  const auto add =
      [&](const char* prefix, std::size_t count, std::size_t from, std::size_t size, hid_t type) {
        for (std::size_t n = 0; n < count; ++n)
          values.push_back({prefix + std::to_string(n), type, from + n * size});
      };
  add("whole", Row::wholes, offsetof(Row, whole), sizeof(std::uint32_t), H5T_NATIVE_UINT32);
  add("real", Row::reals, offsetof(Row, real), sizeof(float), H5T_NATIVE_FLOAT);
  add("text", Row::texts, offsetof(Row, text), Row::textSize, textType);
  return values;
}

hid_t NewTextType() {
  const hid_t type = H5Tcopy(H5T_C_S1);
  H5Tset_size(type, Row::textSize);
  return type;
}

hid_t NewCompoundType(const std::vector<Value>& values) {
  const hid_t type = H5Tcreate(H5T_COMPOUND, sizeof(Row));
  for (const Value& value : values) H5Tinsert(type, value.name.c_str(), value.offset, value.type);
  return type;
}

bool WriteValue(hid_t group, const char* name, hid_t type, hid_t scalar, const void* value) {
  const Id attribute(H5Acreate2(group, name, type, scalar, H5P_DEFAULT, H5P_DEFAULT), H5Aclose);
  return attribute >= 0 && H5Awrite(attribute, type, value) >= 0;
}

bool ReadValue(hid_t group, const char* name, hid_t type, void* value) {
  const Id attribute(H5Aopen(group, name, H5P_DEFAULT), H5Aclose);
  return attribute >= 0 && H5Aread(attribute, type, value) >= 0;
}

/// Runs `use(file, values, compound)` on an open file.
template <class Use>
bool WithTypes(hid_t openFile, Use use) {
  const Id file(openFile, H5Fclose);
  const Id text(NewTextType(), H5Tclose);
  const auto values = Values(text);
  const Id compound(NewCompoundType(values), H5Tclose);
  return file >= 0 && use(file, values, static_cast<hid_t>(compound));
}

bool WriteGroupsTo(const fs::path& path, const std::vector<Row>& rows, bool asCompound) {
  const Id scalar(H5Screate(H5S_SCALAR), H5Sclose);
  const bool done = WithTypes(
      H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT),
      [&](hid_t file, const std::vector<Value>& values, hid_t compound) {
        for (std::size_t n = 0; n < rows.size(); ++n) {
          const Id group(
              H5Gcreate2(file, std::to_string(n).c_str(), H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT),
              H5Gclose);
          if (asCompound && !WriteValue(group, "record", compound, scalar, &rows[n])) return false;
          for (std::size_t v = 0; !asCompound && v < values.size(); ++v) {
            const auto* bytes = reinterpret_cast<const char*>(&rows[n]) + values[v].offset;
            if (!WriteValue(group, values[v].name.c_str(), values[v].type, scalar, bytes))
              return false;
          }
        }
        return true;
      });
  const int file = open(path.c_str(), O_RDONLY);
  const bool synced = fsync(file) == 0;
  close(file);
  return done && synced;
}

std::vector<std::unique_ptr<Channel>> LoadGroupsFrom(const fs::path& path, bool asCompound) {
  std::vector<std::unique_ptr<Channel>> channels;
  WithTypes(H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT),
            [&](hid_t file, const std::vector<Value>& values, hid_t compound) {
              for (std::size_t n = 0; n < kGroups; ++n) {
                const Id group(H5Gopen2(file, std::to_string(n).c_str(), H5P_DEFAULT), H5Gclose);
                Row row{};
                if (asCompound && !ReadValue(group, "record", compound, &row)) return false;
                for (std::size_t v = 0; !asCompound && v < values.size(); ++v) {
                  auto* bytes = reinterpret_cast<char*>(&row) + values[v].offset;
                  if (!ReadValue(group, values[v].name.c_str(), values[v].type, bytes))
                    return false;
                }
                channels.push_back(FromRow(row));
              }
              return true;
            });
  return channels;
}

void Hdf5Write(benchmark::State& state, bool asCompound) {
  const Workplace workplace;
  const auto rows = Rows();
  for (auto _ : state) {
    if (!WriteGroupsTo(workplace.File("load.h5"), rows, asCompound))
      return state.SkipWithError("the file cannot be written");
  }
  if (!IsTheLoad(LoadGroupsFrom(workplace.File("load.h5"), asCompound)))
    state.SkipWithError("what was written is not the load");
  PerGroup(state);
}
BENCHMARK_CAPTURE(Hdf5Write, attributes, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Hdf5Write, compound, true)->Unit(benchmark::kMillisecond);

void Hdf5Load(benchmark::State& state, bool asCompound) {
  const Workplace workplace;
  if (!WriteGroupsTo(workplace.File("load.h5"), Rows(), asCompound))
    return state.SkipWithError("the file cannot be written");
  if (!IsTheLoad(LoadGroupsFrom(workplace.File("load.h5"), asCompound)))
    return state.SkipWithError("what was loaded is not the load");
  for (auto _ : state) {
    auto channels = LoadGroupsFrom(workplace.File("load.h5"), asCompound);
    state.PauseTiming();
    channels.clear();
    state.ResumeTiming();
  }
  PerGroup(state);
}
BENCHMARK_CAPTURE(Hdf5Load, attributes, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Hdf5Load, compound, true)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace utdata::bench
#endif
