#include "src/inspection/celltable.h"

#include <algorithm>
#include <cstring>
#include <utility>

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
                     const std::string& name,
                     TableCheck check)
    : m_table(table),
      m_cells(std::uint64_t{record.rowQuantity} * record.columnQuantity),
      m_samples(utdata::SamplesPerCell(record)),
      m_vectorBytes(std::uint64_t{m_samples} * record.sampleSize),
      m_stride(std::max<std::uint64_t>(m_vectorBytes, record.cellSize)),
      m_indexed(record.storageMode == kvt_StorIndexed),
      m_check(std::move(check)),
      m_index(table.data()) {
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
  if (!m_indexed) return;
  CheckIndex();
  CheckOffsets(name, record.sampleSize);
}

std::uint32_t CellTable::Offset(std::uint64_t cell) const {
  std::uint32_t offset = 0;
  std::memcpy(&offset, m_index + cell * sizeof offset, sizeof offset);
  return offset;
}

const std::byte* CellTable::Refused(std::uint64_t at) const {
  m_check.refuse(at, m_vectorBytes);
  return nullptr;
}

bool CellTable::IsDamaged(std::uint64_t cell) const {
  if (!m_check.chunks) return false;
  if (!m_indexed) return !m_check.chunks->IsWhole(cell * m_stride, m_vectorBytes);
  constexpr std::uint64_t size = sizeof(std::uint32_t);
  const std::uint64_t at = Offset(cell);
  return !m_check.chunks->IsWhole(cell * size, size) ||
         (at != 0 && !m_check.chunks->IsWhole(at, m_vectorBytes));
}

/// Where damaged offsets are accepted, their cells have no samples.
void CellTable::CheckIndex() {
  constexpr std::uint64_t size = sizeof(std::uint32_t);
  if (!m_check.chunks || m_check.chunks->IsWhole(0, m_cells * size)) return;
  m_check.refuse(0, m_cells * size);
  m_repairedIndex.assign(m_table.begin(),
                         m_table.begin() + static_cast<std::ptrdiff_t>(m_cells * size));
  for (std::uint64_t cell = 0; cell < m_cells; ++cell)
    if (!m_check.chunks->IsWhole(cell * size, size))
      std::fill_n(
          m_repairedIndex.begin() + static_cast<std::ptrdiff_t>(cell * size), size, std::byte{});
  m_index = m_repairedIndex.data();
}

CellTable::CellsInRange CellTable::CellsIn(std::uint64_t from, std::uint64_t size) const {
  CellsInRange found;
  const auto add = [&](std::uint64_t cell) {
    if (found.quantity++ == 0) found.first = cell;
    found.last = cell;
  };
  const std::uint64_t end = from + size;
  if (!m_indexed && m_stride != 0) {
    const std::uint64_t first = from / m_stride;
    const std::uint64_t past = std::min(m_cells, end / m_stride + (end % m_stride != 0));
    if (first < past) found = {past - first, first, past - 1};
  }
  for (std::uint64_t cell = 0; m_indexed && cell < m_cells; ++cell) {
    const std::uint64_t at = Offset(cell);
    const std::uint64_t entry = cell * sizeof(std::uint32_t);
    const bool isNamed = entry < end && entry + sizeof(std::uint32_t) > from;
    if (isNamed || (at != 0 && at < end && at + m_vectorBytes > from)) add(cell);
  }
  return found;
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
