// What a data item hides of itself: its locks, and its links to other items.
#pragma once

#include "interfaces/framework.h"
#include "interfaces/thread_safety.h"
#include "utdata/idata.h"
#include "utdata/idatalst.h"
#include "utdata/itemlink.h"

struct UTDATA_LOCAL CIData::Inside {
  explicit Inside(CIData* item) : live(item) {}

  utdata::LiveDataItem live;  ///< from the start, so that links to an item under construction hold
  utdata::RecursiveMutex lock;
  /// Held while the library changes ids of the descriptor, and while they are read once that was
  /// handed out. Taken last; nothing of the host runs under it.
  utdata::Mutex idLock;
  utdata::DataItemLink master;  ///< of an element its master, of a master itself
  /// In the master's list, null: in none; written under both items' locks.
  POSITION placeAmongElements = nullptr;
};

/// The C-scans that an item under construction is matched with.
struct UTDATA_LOCAL CIData::Partners {
  CIData* matched = nullptr;
  CIData* meridio = nullptr;
  CIDataLst linked;  ///< those that are to name the item as their match
};

/// Holds an item's lock for a scope. A checked build reports a master's lock that is asked for
/// while one of its element's is held.
class UTDATA_LOCAL UTDATA_SCOPED_CAPABILITY CIData::LockScope {
 public:
  explicit LockScope(const CIData& item) UTDATA_ACQUIRE(item.m_inside->lock);
  ~LockScope() UTDATA_RELEASE();
  LockScope(const LockScope&) = delete;
  LockScope& operator=(const LockScope&) = delete;

 private:
  const CIData& m_item;
};
