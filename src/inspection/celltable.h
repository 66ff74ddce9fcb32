// Where the samples of each cell of a data group lie in its table, whatever the storage mode.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "src/inspection/chunkcheck.h"
#include "utdata/datagroup.h"

namespace utdata {

/// Samples of one cell: those of an A-scan, or the one value of a C-scan's cell.
[[nodiscard]] std::uint32_t SamplesPerCell(const CGDataTypeFDD& record);

/// How the bytes of a table are held against their checksums; of a table that has none, not at all.
struct TableCheck {
  ChunkCheck* chunks = nullptr;
  /// Called with a range of the table of which a chunk is damaged. Throws, unless cells with
  /// damaged samples are to count as cells without samples.
  std::function<void(std::uint64_t from, std::uint64_t size)> refuse;
};

/// Finds cells in a table that it does not own. With storage mode 1 the table begins with one
/// 32-bit offset per cell, counted in bytes from the table's start; 0 stands for a cell without
/// samples. Every place is checked once, so that asking is free of checks; of the samples, the
/// chunks of the cell that is asked for.
class CellTable {
 public:
  /// Throws Error about `name` when the layout needs more than the table has, or an offset leads
  /// out of it or to a place that no sample can begin at.
  CellTable(const CGDataTypeFDD& record,
            std::span<const std::byte> table,
            const std::string& name,
            TableCheck check = {});
  CellTable(const CellTable&) = delete;
  CellTable& operator=(const CellTable&) = delete;

  [[nodiscard]] std::uint64_t Cells() const { return m_cells; }
  [[nodiscard]] std::uint32_t SamplesPerCell() const { return m_samples; }
  /// Bytes of a cell's samples.
  [[nodiscard]] std::uint64_t VectorBytes() const { return m_vectorBytes; }

  /// The samples of a cell, aligned as their type; null when it has none, or they are damaged and
  /// that is accepted. REQUIRES: cell < Cells().
  [[nodiscard]] const std::byte* Cell(std::uint64_t cell) const {
    std::uint64_t at = cell * m_stride;
    if (m_indexed && (at = Offset(cell)) == 0) return nullptr;
    if (m_check.chunks && !m_check.chunks->IsWhole(at, m_vectorBytes)) return Refused(at);
    return m_table.data() + at;
  }
  /// Whether a cell counts as one without samples because they, or where they lie, are damaged.
  [[nodiscard]] bool IsDamaged(std::uint64_t cell) const;

  /// The cells that have samples in a range of the table, or whose offsets stand there.
  struct CellsInRange {
    std::uint64_t quantity = 0;
    std::uint64_t first = 0;
    std::uint64_t last = 0;
  };
  [[nodiscard]] CellsInRange CellsIn(std::uint64_t from, std::uint64_t size) const;

 private:
  [[nodiscard]] std::uint32_t Offset(std::uint64_t cell) const;
  [[nodiscard]] const std::byte* Refused(std::uint64_t at) const;
  void CheckIndex();
  void CheckOffsets(const std::string& name, std::uint32_t sampleSize) const;

  std::span<const std::byte> m_table;
  std::uint64_t m_cells;
  std::uint32_t m_samples;
  std::uint64_t m_vectorBytes;
  std::uint64_t m_stride;  ///< bytes from one cell to the next, where there are no offsets
  bool m_indexed;
  TableCheck m_check;
  const std::byte* m_index;                ///< the offsets, where there are any
  std::vector<std::byte> m_repairedIndex;  ///< theirs without the damaged ones
};

}  // namespace utdata
