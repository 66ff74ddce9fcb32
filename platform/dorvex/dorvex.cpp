#include "interfaces/dorvex.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr std::uint64_t endless = std::numeric_limits<std::uint64_t>::max();

std::uint64_t Sum(std::uint64_t a, std::uint64_t b) { return a > endless - b ? endless : a + b; }
std::uint64_t Product(std::uint64_t a, std::uint64_t b) {
  return b != 0 && a > endless / b ? endless : a * b;
}
/// Up to a multiple of 4; endless stays endless.
std::uint64_t RoundUp(std::uint64_t bytes) {
  return bytes > endless - 3 ? endless : (bytes + 3) / 4 * 4;
}

std::uint64_t CellsOf(const Aurelis::Patch& patch) {
  return Product(patch.CellQuantity(0), patch.CellQuantity(1));
}

}  // namespace

namespace Aurelis {

MemoryData::~MemoryData() = default;

void MemoryData::AddAscanBlocks(const Patch& patch,
                                const Ultrasound::AscanDataDescriptor& descriptor,
                                std::uint64_t blocks) {
  constexpr std::uint64_t entry = 4;
  const auto sampleBytes =
      static_cast<std::uint64_t>(std::max(descriptor.AscanStorageDataBytes(), 0));
  const std::uint64_t samples = RoundUp(
      Product(static_cast<std::uint64_t>(descriptor.UltrasoundAxis().DiscreteSize()), sampleBytes));
  m_blockBytes = Sum(m_blockBytes, Product(blocks, Product(CellsOf(patch), Sum(entry, samples))));
}

void MemoryData::AddCscanBlocks(const Patch& patch, std::uint64_t blocks) {
  // An odd number of values leaves 2 bytes before the next C-scan block.
  m_blockBytes = Sum(m_blockBytes, Product(blocks, RoundUp(Product(CellsOf(patch), 2))));
}

std::uint64_t MemoryData::EstimateDataFileSize() const { return Sum(fileHeaderSize, m_blockBytes); }

}  // namespace Aurelis

namespace Instrumentation {

IAscan::~IAscan() = default;

}  // namespace Instrumentation

namespace utdata {

bool MemoryAscanPatchBuffer::SetAscan(std::uint32_t first,
                                      std::uint32_t second,
                                      std::vector<std::int32_t> samples) {
  const auto expected = static_cast<std::size_t>(GetDescriptor().UltrasoundAxis().DiscreteSize());
  const bool isCell = first < GetPatch().CellQuantity(0) && second < GetPatch().CellQuantity(1);
  if (!isCell || samples.size() != expected) return false;
  Record(first, second) = std::make_shared<MemoryAscan>(std::move(samples));
  return true;
}

}  // namespace utdata
