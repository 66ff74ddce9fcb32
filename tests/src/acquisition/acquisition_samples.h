// What acquisition tests record: patches, buffers filled with numbers that show where they come
// from, and estimates.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "interfaces/dorvex.h"
#include "interfaces/ostrin.h"

namespace utdata::test {

inline Aurelis::Patch MakePatch(int firstColumn, int firstRow, int columns, int rows) {
  return Aurelis::Patch({Eigen::Vector2i(firstColumn, firstRow),
                         Eigen::Vector2i(firstColumn + columns - 1, firstRow + rows - 1)});
}

/// Sample `n` of a cell: uses all 32 bits, so that every way to cut it differs.
inline std::int32_t SampleAt(std::uint32_t column, std::uint32_t row, std::size_t n) {
  return static_cast<std::int32_t>(
      2654435761u * (column * 7919 + row * 104729 + static_cast<std::uint32_t>(n) + 1));
}

using HasAscan = std::function<bool(std::uint32_t column, std::uint32_t row)>;

inline MemoryAscanPatchBuffer MakeAscans(
    const Aurelis::Patch& patch,
    int storageBytes,
    int samples,
    const HasAscan& hasAscan = [](auto, auto) { return true; }) {
  MemoryAscanPatchBuffer buffer(
      Aurelis::Ultrasound::AscanDataDescriptor(storageBytes, Aurelis::Axis(samples, 1e-8)), patch);
  for (std::uint32_t row = 0; row < patch.CellQuantity(1); ++row)
    for (std::uint32_t column = 0; column < patch.CellQuantity(0); ++column) {
      std::vector<std::int32_t> values(static_cast<std::size_t>(samples));
      for (std::size_t n = 0; n < values.size(); ++n) values[n] = SampleAt(column, row, n);
      if (hasAscan(column, row)) buffer.SetAscan(column, row, std::move(values));
    }
  return buffer;
}

inline MemoryCscanPatchBuffer MakeCscans(const Aurelis::Patch& patch) {
  MemoryCscanPatchBuffer buffer(Aurelis::Ultrasound::CscanDataDescriptor(1), patch);
  for (std::uint32_t row = 0; row < patch.CellQuantity(1); ++row)
    for (std::uint32_t column = 0; column < patch.CellQuantity(0); ++column)
      buffer.Record(column, row) = {SampleAt(column, row, 0), SampleAt(column, row, 1)};
  return buffer;
}

/// An acquisition that needs this many bytes.
class Estimate final : public Aurelis::MemoryData {
 public:
  explicit Estimate(std::uint64_t bytes) : m_bytes(bytes) {}
  [[nodiscard]] std::uint64_t EstimateDataFileSize() const override { return m_bytes; }

 private:
  std::uint64_t m_bytes;
};

/// Another reserved size while it lives. REQUIRES: no view is mapped.
class ReservedSize {
 public:
  explicit ReservedSize(std::uint64_t bytes) { GetMapViewManager().SetReservedSize(bytes); }
  ReservedSize(const ReservedSize&) = delete;
  ReservedSize& operator=(const ReservedSize&) = delete;
  ~ReservedSize() { GetMapViewManager().SetReservedSize(CViewMapManager::largestSize); }
};

}  // namespace utdata::test
