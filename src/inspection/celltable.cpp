#include "src/inspection/celltable.h"

#include <algorithm>
#include <cstring>

#include "src/foundation/dataclass.h"
#include "utdata/failure.h"

namespace utdata {
namespace {

constexpr const char* cannotBeRead = "cannot be read";

}  // namespace

std::uint32_t SamplesPerCell(const CGDataTypeFDD& record) {
  return IsCScan(record.dataClass) ? 1 : record.sampleQuantity;
}

CellTable::CellTable(const CGDataTypeFDD& record,
                     std::span<const std::byte> table,
                     const std::string& name)
    : m_table(table),
      m_cells(std::uint64_t{record.rowQuantity} * record.columnQuantity),
      m_samples(utdata::SamplesPerCell(record)),
      m_vectorBytes(std::uint64_t{m_samples} * record.sampleSize),
      m_stride(std::max<std::uint64_t>(m_vectorBytes, record.cellSize)),
      m_indexed(record.storageMode == kvt_StorIndexed) {
  if (record.storageMode != kvt_StorCells && !m_indexed)
    throw Error(name, cannotBeRead, "its samples are stored in a way that is not known");
  const std::uint64_t stored = m_indexed ? sizeof(std::uint32_t) : m_stride;
  if (stored != 0 && m_cells > table.size() / stored)
    throw Error(name,
                cannotBeRead,
                "its layout needs " + std::to_string(m_cells) + " cells of " +
                    std::to_string(stored) + " bytes, and its samples have " +
                    std::to_string(table.size()));
  if (!m_indexed && record.sampleSize != 0 && m_stride % record.sampleSize != 0)
    throw Error(name,
                cannotBeRead,
                "cells of " + std::to_string(m_stride) + " bytes do not hold samples of " +
                    std::to_string(record.sampleSize));
  if (m_indexed) CheckOffsets(name, record.sampleSize);
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
                      m_vectorBytes <= m_table.size() - offset;
    if (fits && (sampleSize == 0 || offset % sampleSize == 0)) continue;
    throw Error(name,
                cannotBeRead,
                "cell " + std::to_string(cell) + " is said to begin at byte " +
                    std::to_string(offset) + " of " + std::to_string(m_table.size()));
  }
}

}  // namespace utdata
