// The lock of a data item, and the order in which two of them are taken.
#include <algorithm>
#include <cstddef>
#include <span>

#include "src/items/idatainside.h"

#ifdef UTDATA_CHECKED

namespace {

/// The items whose locks this thread holds, in the order of their taking; one that is held twice
/// stands here twice. Those beyond the most that are noted are not checked. Takes no memory.
constexpr std::size_t mostNoted = 256;
thread_local const CIData* heldItems[mostNoted];
thread_local std::size_t heldQuantity = 0;

std::span<const CIData* const> HeldItems() {
  return {heldItems, std::min(heldQuantity, mostNoted)};
}

bool IsHeld(const CIData* item) {
  return std::ranges::find(HeldItems(), item) != HeldItems().end();
}

/// Whether `item` may be locked now: it is held already, or no element of it is.
bool IsInOrder(const CIData* item) {
  const auto isElement = [item](const CIData* held) {
    return held->idata1_SubChannelMaster() == item;
  };
  return IsHeld(item) || std::ranges::none_of(HeldItems(), isElement);
}

}  // namespace

CIData::LockScope::LockScope(const CIData& item) : m_item(item) {
  UTDATA_ASSERT(IsInOrder(&item));
  item.m_inside->lock.lock();
  if (heldQuantity < mostNoted) heldItems[heldQuantity] = &item;
  ++heldQuantity;
}

CIData::LockScope::~LockScope() {
  --heldQuantity;
  m_item.m_inside->lock.unlock();
}

#else

CIData::LockScope::LockScope(const CIData& item) : m_item(item) { item.m_inside->lock.lock(); }

CIData::LockScope::~LockScope() { m_item.m_inside->lock.unlock(); }

#endif
