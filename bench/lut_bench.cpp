// 16-bit samples to display codes: the bulk conversion, beside a table read a sample and beside the
// limit, which only moves the same bytes: the high byte of every sample, packed, with the same
// vectors. Sizes: in the first-level cache, in the second, in memory.

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "utdata/lut.h"

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define UTDATA_BENCH_AVX2 1
#endif

namespace {

std::vector<std::uint16_t> RandomSamples(std::size_t count) {
  std::mt19937 random(7);
  std::vector<std::uint16_t> samples(count);
  for (auto& sample : samples) sample = static_cast<std::uint16_t>(random());
  return samples;
}

CRDataTypeDD Descriptor(kvt_enumDataType type, float minimum, float maximum) {
  CRDataTypeDD descriptor;
  descriptor.dataClass = gdata_AScan;
  descriptor.SetDataType(type);
  descriptor.SetDataRectification(type == kvt_Int16 ? gdata_RectifNone : gdata_RectifFull);
  descriptor.dataMinimum = minimum;
  descriptor.dataMaximum = maximum;
  return descriptor;
}

void Count(benchmark::State& state, std::size_t samples) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(samples));
}

#if defined(UTDATA_BENCH_AVX2)
__attribute__((target("avx2"))) void ShiftVectors(const std::uint16_t* in,
                                                  std::size_t count,
                                                  std::uint8_t* out) {
  for (std::size_t i = 0; i + 32 <= count; i += 32) {
    const __m256i a =
        _mm256_srli_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i)), 8);
    const __m256i b =
        _mm256_srli_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i + 16)), 8);
    const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), packed);
  }
}
#endif

void ShiftAndPack(const std::uint16_t* in, std::size_t count, std::uint8_t* out) {
#if defined(UTDATA_BENCH_AVX2)
  if (__builtin_cpu_supports("avx2")) return ShiftVectors(in, count, out);
#endif
  for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<std::uint8_t>(in[i] >> 8);
}

void Limit(benchmark::State& state) {
  const auto samples = RandomSamples(static_cast<std::size_t>(state.range(0)));
  std::vector<std::uint8_t> codes(samples.size());
  for (auto _ : state) {
    ShiftAndPack(samples.data(), samples.size(), codes.data());
    benchmark::DoNotOptimize(codes.data());
    benchmark::ClobberMemory();
  }
  Count(state, samples.size());
}

template <class Sample>
void TableLoop(benchmark::State& state, kvt_enumDataType type, float minimum, float maximum) {
  CRDataTypeDD descriptor = Descriptor(type, minimum, maximum);
  const CLookUpTable table(&descriptor, nullptr);
  const auto samples = RandomSamples(static_cast<std::size_t>(state.range(0)));
  std::vector<std::uint8_t> codes(samples.size());
  for (auto _ : state) {
    for (std::size_t i = 0; i < samples.size(); ++i)
      codes[i] = table.Convert(static_cast<Sample>(samples[i]));
    benchmark::DoNotOptimize(codes.data());
    benchmark::ClobberMemory();
  }
  Count(state, samples.size());
}

template <class Sample>
void Block(benchmark::State& state, kvt_enumDataType type, float minimum, float maximum) {
  CRDataTypeDD descriptor = Descriptor(type, minimum, maximum);
  const CLookUpTable table(&descriptor, nullptr);
  const auto raw = RandomSamples(static_cast<std::size_t>(state.range(0)));
  std::vector<Sample> samples(raw.size());
  std::memcpy(samples.data(), raw.data(), raw.size() * sizeof(Sample));
  std::vector<std::uint8_t> codes(samples.size());
  for (auto _ : state) {
    if (!table.ConvertBlock(samples.data(), samples.size(), codes.data()))
      state.SkipWithError("refused");
    benchmark::DoNotOptimize(codes.data());
    benchmark::ClobberMemory();
  }
  for (std::size_t i = 0; i < samples.size(); ++i)
    if (codes[i] != table.Convert(samples[i]))
      return state.SkipWithError("a code differs from the table's");
  Count(state, samples.size());
}

template <class Sample>
void BuildTable(benchmark::State& state, kvt_enumDataType type, float minimum, float maximum) {
  CRDataTypeDD descriptor = Descriptor(type, minimum, maximum);
  for (auto _ : state)
    benchmark::DoNotOptimize(CLookUpTable(&descriptor, nullptr).Convert(Sample{1}));
}

void Sizes(benchmark::internal::Benchmark* bench) {
  bench->Arg(1 << 13)->Arg(1 << 19)->Arg(1 << 25);
}

BENCHMARK(Limit)->Name("codes/shift_and_pack_limit")->Apply(Sizes);
template <class Sample>
void Register(const std::string& kind, kvt_enumDataType type, float minimum, float maximum) {
  benchmark::RegisterBenchmark(
      ("codes/table_loop/" + kind).c_str(), TableLoop<Sample>, type, minimum, maximum)
      ->Apply(Sizes);
  benchmark::RegisterBenchmark(
      ("codes/block/" + kind).c_str(), Block<Sample>, type, minimum, maximum)
      ->Apply(Sizes);
  benchmark::RegisterBenchmark(
      ("codes/build_table/" + kind).c_str(), BuildTable<Sample>, type, minimum, maximum);
}

const bool isRegistered = [] {
  Register<unsigned short>("u16", kvt_UInt16, 0, 65535);
  Register<short>("i16", kvt_Int16, -32768, 32767);
  Register<unsigned short>("u16_12bit_range", kvt_UInt16, 0, 4095);
  Register<unsigned short>("u16_odd_range", kvt_UInt16, 123.5f, 54321.25f);
  Register<short>("i16_odd_range", kvt_Int16, -31234, 29999);
  return true;
}();

}  // namespace
