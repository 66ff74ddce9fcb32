// What the file set does with its lists of data items as a whole.
#pragma once

#include "src/fileset/contents.h"

namespace utdata {

/// Takes a sub-channel out of its master's list. Returns the master; null for an item that has none
/// or is its own.
inline CIData* TakeFromMaster(CIData* item) {
  CIData* const master =
      item->idata1_IsMultiChannelElement() ? item->idata1_SubChannelMaster() : nullptr;
  if (!master || master == item) return nullptr;
  master->idata1_SubChannelRemove(item);
  return master;
}

/// Destroys every item of an indexed list; a sub-channel is taken out of its master's list first.
/// Masters have to outlive their sub-channels: the data list goes before the masters'.
template <class IndexedList>
void DeleteDataItems(IndexedList& items) {
  items.Remove(fset_All, everyDataItem, [](CIData* item) {
    TakeFromMaster(item);
    item->idata9_DeferDelete();
  });
}

/// Calls an operation of each item of an indexed list that passes the filter.
template <class IndexedList, class Ids, class Item>
void ClearEach(IndexedList& items,
               fset_enumFilters filter,
               const Ids& every,
               void (Item::*clear)()) {
  Walk(items.Items(), filter, every, rulesOf<Item>, [clear](POSITION, Item* item) {
    (item->*clear)();
    return true;
  });
}

}  // namespace utdata
