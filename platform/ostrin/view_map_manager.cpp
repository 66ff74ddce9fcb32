#include <limits>

#include "interfaces/framework.h"
#include "interfaces/ostrin.h"

using utdata::os::Error;

namespace {

constexpr std::size_t noRoom = std::numeric_limits<std::size_t>::max();

constexpr std::size_t PlaceFor(std::uint64_t size) {
  constexpr std::uint64_t step = CViewMapManager::placeAlignment;
  return static_cast<std::size_t>((size + step - 1) / step * step);
}

}  // namespace

std::uint64_t CViewMapManager::GetReservedSize() const {
  const utdata::MutexScope held(m_mutex);
  return m_reservedSize;
}

bool CViewMapManager::SetReservedSize(std::uint64_t bytes) {
  if (bytes == 0 || bytes > largestSize || bytes % granularity != 0) return false;
  const utdata::MutexScope held(m_mutex);
  if (!m_views.empty()) return false;
  m_reservedSize = bytes;
  m_range.reset();
  return true;
}

bool CViewMapManager::IsReserved() {
  if (m_range) return true;
  const std::size_t size = PlaceFor(m_reservedSize) * viewQuantity +
                           placeAlignment;  // the system aligns to its pages only
  return utdata::os::CurrentFileSystem().Reserve(size, m_range) == Error::None;
}

/// The first gap that is large enough; noRoom when there is none.
std::size_t CViewMapManager::FindRoom(std::size_t size) const {
  const auto misaligned =
      static_cast<std::size_t>(reinterpret_cast<std::uintptr_t>(m_range->Data()) % placeAlignment);
  std::size_t end = misaligned == 0 ? 0 : placeAlignment - misaligned;
  for (const auto& [offset, length] : m_views) {
    if (offset - end >= size) return end;
    end = offset + length;
  }
  return m_range->Size() - end >= size ? end : noRoom;
}

void* CViewMapManager::MapViewForData(utdata::os::FileMapping* mapping,
                                      std::uint64_t size,
                                      std::uint32_t access) {
  const utdata::MutexScope held(m_mutex);
  if (!mapping || access != view_ReadWrite || size == 0 || size > mapping->Size() ||
      size > m_reservedSize) {
    utdata::os::Fail(Error::BadArgument);
    return nullptr;
  }
  if (!IsReserved()) return nullptr;
  const std::size_t place = PlaceFor(size);
  const std::size_t offset = FindRoom(place);
  if (offset == noRoom) {
    utdata::os::Fail(Error::NoMemory);
    return nullptr;
  }
  const auto entry = m_views.emplace(offset, place).first;
  if (mapping->MapAt(*m_range, offset, static_cast<std::size_t>(size)) == Error::None)
    return m_range->Data() + offset;
  m_views.erase(entry);
  return nullptr;
}

void CViewMapManager::UnmapViewOfFileToReservedSpace(void* view, std::uint64_t) {
  if (!view) return;
  const utdata::MutexScope held(m_mutex);
  const auto entry =
      m_range
          ? m_views.find(static_cast<std::size_t>(static_cast<std::byte*>(view) - m_range->Data()))
          : m_views.end();
  UTDATA_ASSERT(entry != m_views.end());
  if (entry == m_views.end()) return;
  // A place that cannot be cleared is not used again.
  if (m_range->Clear(entry->first, entry->second) == Error::None) m_views.erase(entry);
}

CViewMapManager& GetMapViewManager() {
  // Never destroyed: a writer that outlives main still gives its view back.
  static auto* const manager = new CViewMapManager;
  return *manager;
}
