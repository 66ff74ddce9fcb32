// The lock of a data item, and the order in which two of them are taken.
#include <algorithm>
#include <vector>

#include "src/items/idatainside.h"

#ifdef UTDATA_CHECKED

namespace {

/// The items whose locks this thread holds, in the order of their taking; one that is held twice
/// stands here twice.
thread_local std::vector<const CIData*> heldItems;

bool IsHeld(const CIData* item) {
  return std::find(heldItems.begin(), heldItems.end(), item) != heldItems.end();
}

/// Whether `item` may be locked now: it is held already, or no element of it is.
bool IsInOrder(const CIData* item) {
  const auto isElement = [item](const CIData* held) {
    return held->idata1_SubChannelMaster() == item;
  };
  return IsHeld(item) || std::none_of(heldItems.begin(), heldItems.end(), isElement);
}

}  // namespace

CIData::LockScope::LockScope(const CIData& item) : m_item(item) {
  UTDATA_ASSERT(IsInOrder(&item));
  item.m_inside->lock.lock();
  heldItems.push_back(&item);
}

CIData::LockScope::~LockScope() {
  heldItems.pop_back();
  m_item.m_inside->lock.unlock();
}

#else

CIData::LockScope::LockScope(const CIData& item) : m_item(item) { item.m_inside->lock.lock(); }

CIData::LockScope::~LockScope() { m_item.m_inside->lock.unlock(); }

#endif
