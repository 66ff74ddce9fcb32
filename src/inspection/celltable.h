// Where the samples of each cell of a data group lie in its table, whatever the storage mode.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "utdata/datagroup.h"

namespace utdata {

/// Samples of one cell: those of an A-scan, or the one value of a C-scan's cell.
[[nodiscard]] std::uint32_t SamplesPerCell(const CGDataTypeFDD& record);

/// Finds cells in a table that it does not own. With storage mode 1 the table begins with one
/// 32-bit offset per cell, counted in bytes from the table's start; 0 stands for a cell without
/// samples. Every place is checked once, so that asking is free of checks.
class CellTable {
 public:
  /// Throws Error about `name` when the layout needs more than the table has, or an offset leads
  /// out of it or to a place that no sample can begin at.
  CellTable(const CGDataTypeFDD& record, std::span<const std::byte> table, const std::string& name);

  [[nodiscard]] std::uint64_t Cells() const { return m_cells; }
  [[nodiscard]] std::uint32_t SamplesPerCell() const { return m_samples; }
  /// Bytes of a cell's samples.
  [[nodiscard]] std::uint64_t VectorBytes() const { return m_vectorBytes; }

  /// The samples of a cell, aligned as their type; null when it has none. REQUIRES: cell < Cells().
  [[nodiscard]] const std::byte* Cell(std::uint64_t cell) const {
    if (!m_indexed) return m_table.data() + cell * m_stride;
    const std::uint32_t offset = Offset(cell);
    return offset == 0 ? nullptr : m_table.data() + offset;
  }

 private:
  [[nodiscard]] std::uint32_t Offset(std::uint64_t cell) const;
  void CheckOffsets(const std::string& name, std::uint32_t sampleSize) const;

  std::span<const std::byte> m_table;
  std::uint64_t m_cells;
  std::uint32_t m_samples;
  std::uint64_t m_vectorBytes;
  std::uint64_t m_stride;  ///< bytes from one cell to the next, where there are no offsets
  bool m_indexed;
};

}  // namespace utdata
