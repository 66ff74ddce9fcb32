// Where the samples of each cell of a data group lie in its table, whatever its storage mode.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "interfaces/kvtiff19.h"

namespace utdata::program {

/// Some cells of a group, in row-major order: cell = row x columns + column.
struct CellRange {
  std::uint64_t first = 0;
  std::uint64_t count = 0;
  std::uint64_t step = 1;  ///< from one cell to the next

  [[nodiscard]] std::uint64_t At(std::uint64_t index) const { return first + index * step; }
};

/// A row, a column, and all cells of a group.
[[nodiscard]] CellRange CellsOfRow(const CGDataTypeFDD& group, std::uint32_t row);
[[nodiscard]] CellRange CellsOfColumn(const CGDataTypeFDD& group, std::uint32_t column);
[[nodiscard]] CellRange AllCells(const CGDataTypeFDD& group);

/// Samples of one cell: those of an A-scan, or the one value of a C-scan's cell.
[[nodiscard]] std::uint32_t SamplesPerCell(const CGDataTypeFDD& group);

/// Finds cells in a table that it does not own. With storage mode 1 the table begins with one
/// 32-bit offset per cell, counted in bytes from the table's start; 0 stands for a cell without
/// samples. Every place is checked once, so that asking is free of checks.
class CellTable {
 public:
  /// Throws Failure, which begins with `name`, when the layout needs more than the table has, or an
  /// offset leads out of it or to a place that no sample can begin at.
  CellTable(const CGDataTypeFDD& group, std::span<const std::byte> table, const std::string& name);

  [[nodiscard]] std::uint64_t Cells() const { return m_cells; }
  [[nodiscard]] std::uint32_t SamplesPerCell() const { return m_samples; }

  /// The samples of a cell, aligned as their type; null when it has none. REQUIRES: cell < Cells().
  [[nodiscard]] const std::byte* Cell(std::uint64_t cell) const {
    if (!m_indexed) return m_table.data() + cell * m_cellBytes;
    const std::uint32_t offset = Offset(cell);
    return offset == 0 ? nullptr : m_table.data() + offset;
  }

 private:
  [[nodiscard]] std::uint32_t Offset(std::uint64_t cell) const;
  void CheckOffsets(const std::string& name, std::uint32_t sampleSize) const;

  std::span<const std::byte> m_table;
  std::uint64_t m_cells;
  std::uint32_t m_samples;
  std::uint64_t m_cellBytes = 0;
  bool m_indexed;
};

}  // namespace utdata::program
