#include "samples/cell_table.h"

#include <cstring>

#include "document/data_group.h"
#include "terminal/failure.h"
#include "utdata/enum.h"

namespace utdata::program {
namespace {

constexpr const char* cannotBeRead = "cannot be read";

}  // namespace

CellRange CellsOfRow(const CGDataTypeFDD& group, std::uint32_t row) {
  return {std::uint64_t{row} * group.columnQuantity, group.columnQuantity, 1};
}

CellRange CellsOfColumn(const CGDataTypeFDD& group, std::uint32_t column) {
  return {column, group.rowQuantity, group.columnQuantity};
}

CellRange AllCells(const CGDataTypeFDD& group) {
  return {0, std::uint64_t{group.rowQuantity} * group.columnQuantity, 1};
}

std::uint32_t SamplesPerCell(const CGDataTypeFDD& group) {
  return enum_IsCscanData(static_cast<gdata_enumDataClass>(PlainClass(group))) != 0
             ? 1
             : group.sampleQuantity;
}

CellTable::CellTable(const CGDataTypeFDD& group,
                     std::span<const std::byte> table,
                     const std::string& name)
    : m_table(table),
      m_cells(AllCells(group).count),
      m_samples(utdata::program::SamplesPerCell(group)),
      m_cellBytes(std::uint64_t{m_samples} * group.sampleSize),
      m_indexed(group.storageMode == kvt_StorIndexed) {
  if (group.storageMode != kvt_StorCells && !m_indexed)
    throw Failure(name, cannotBeRead, "its samples are stored in a way that is not known");
  const std::uint64_t stored = m_indexed ? sizeof(std::uint32_t) : m_cellBytes;
  if (stored != 0 && m_cells > table.size() / stored)
    throw Failure(name,
                  cannotBeRead,
                  "its layout needs " + std::to_string(m_cells) + " cells of " +
                      std::to_string(stored) + " bytes, and its samples have " +
                      std::to_string(table.size()));
  if (m_indexed) CheckOffsets(name, group.sampleSize);
}

std::uint32_t CellTable::Offset(std::uint64_t cell) const {
  std::uint32_t offset = 0;
  std::memcpy(&offset, m_table.data() + cell * sizeof offset, sizeof offset);
  return offset;
}

void CellTable::CheckOffsets(const std::string& name, std::uint32_t sampleSize) const {
  const std::uint64_t behindOffsets = m_cells * sizeof(std::uint32_t);
  for (std::uint64_t cell = 0; cell < m_cells; ++cell) {
    const std::uint32_t offset = Offset(cell);
    if (offset == 0) continue;
    const bool fits = offset >= behindOffsets && offset <= m_table.size() &&
                      m_cellBytes <= m_table.size() - offset;
    if (fits && (sampleSize == 0 || offset % sampleSize == 0)) continue;
    throw Failure(name,
                  cannotBeRead,
                  "cell " + std::to_string(cell) + " is said to begin at byte " +
                      std::to_string(offset) + " of " + std::to_string(m_table.size()));
  }
}

}  // namespace utdata::program
