// What a file set holds, and the lock over it.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <new>
#include <vector>

#include "interfaces/ostrin.h"
#include "interfaces/thread_safety.h"
#include "src/items/itemindex.h"
#include "utdata/fset.h"

namespace utdata {

/// How long a query of a file set waits for the reader side, in milliseconds.
inline constexpr std::uint32_t queryTimeoutMs = 500;

/// Ids that match every data item.
inline constexpr CIDataLst::Ids everyDataItem{bookmark_None,
                                              fset_AnyId,
                                              fset_AnyId,
                                              fset_AnyId,
                                              fset_AnyId,
                                              fset_AnyId};

using DataList = IndexedItemList<CIDataLst>;

}  // namespace utdata

struct UTDATA_LOCAL CFSet::Contents {
  struct Range {
    float minimum = std::numeric_limits<float>::max();
    float maximum = std::numeric_limits<float>::lowest();
  };

  CReaderWriterLock lock UTDATA_ACQUIRED_BEFORE(weldLock);
  utdata::IndexedItemList<CIPatchLst> patches UTDATA_GUARDED_BY(lock);
  utdata::IndexedItemList<CIProbeLst> probes UTDATA_GUARDED_BY(lock);
  utdata::IndexedItemList<CIChanLst> channels UTDATA_GUARDED_BY(lock);
  utdata::IndexedItemList<CISubChanLst> subChannels UTDATA_GUARDED_BY(lock);
  utdata::IndexedItemList<CIGateLst> gates UTDATA_GUARDED_BY(lock);
  utdata::Mutex weldLock;  ///< lets the weld lists be copied while the set is being changed
  std::vector<CGWeldScanPlanDescr*> weldScanPlans UTDATA_GUARDED_BY(weldLock);
  std::vector<CGWeldFillDescr*> weldFills UTDATA_GUARDED_BY(weldLock);
  utdata::DataList data UTDATA_GUARDED_BY(lock);
  utdata::DataList masters UTDATA_GUARDED_BY(lock);
  CIInfo* info UTDATA_GUARDED_BY(lock) = nullptr;
  std::array<Range, 6> ranges;  ///< start empty; nothing in the library reads or changes them

  /// The list that look-ups of a data class go to.
  [[nodiscard]] utdata::DataList Contents::*ListOf(std::uint32_t dataClass) const {
    const bool isMaster = dataClass != fset_AnyId && (dataClass & gdata_MultiChannelMaster) != 0;
    return isMaster ? &Contents::masters : &Contents::data;
  }
  [[nodiscard]] bool HasDataOfClass(std::initializer_list<gdata_enumDataClass> classes);
  CIData* AddDataItem(CGDataTypeFDD& descriptor, void* context, CVolumeSet* volumeSet, int isNew)
      UTDATA_REQUIRES(lock);
  CIData* MasterFor(CGDataTypeFDD& element, void* context, CVolumeSet* volumeSet, int isNew)
      UTDATA_REQUIRES(lock);
  CIData* AddMaster(CGDataTypeFDD& element,
                    std::uint32_t gateId,
                    void* context,
                    CVolumeSet* volumeSet,
                    int isNew) UTDATA_REQUIRES(lock);
  void DestroyDataItem(CIData* item) UTDATA_REQUIRES(lock);
  void DestroyIfEmpty(CIData* master) UTDATA_REQUIRES(lock);
};

namespace utdata {

/// What `change` answers; null when memory runs out, and then it has changed nothing.
template <class Change>
auto OrNull(Change change) -> decltype(change()) {
  try {
    return change();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

/// Holds the reader side for a query of one list; ask whether it was obtained before touching
/// anything. The list files the items that edits have changed first, when no other thread holds the
/// lock.
class UTDATA_SCOPED_CAPABILITY QueryScope {
 public:
  template <class Contents, class Items>
  QueryScope(Contents& contents, Items Contents::*items)
      UTDATA_ACQUIRE_SHARED(contents.lock) UTDATA_NO_THREAD_SAFETY_ANALYSIS
      : m_reader(CatchUp(contents, items), queryTimeoutMs) {}
  ~QueryScope() UTDATA_RELEASE_GENERIC() UTDATA_NO_THREAD_SAFETY_ANALYSIS {}
  QueryScope(const QueryScope&) = delete;
  QueryScope& operator=(const QueryScope&) = delete;
  [[nodiscard]] explicit operator bool() const { return static_cast<bool>(m_reader); }

 private:
  template <class Contents, class Items>
  static CReaderWriterLock& CatchUp(Contents& contents,
                                    Items Contents::*items) UTDATA_NO_THREAD_SAFETY_ANALYSIS {
    if ((contents.*items).IsBehind() && contents.lock.LockBufferWriter(0)) {
      (contents.*items).CatchUp();
      contents.lock.UnlockBufferWriter();
    }
    return contents.lock;
  }

  const ReaderScope m_reader;
};

}  // namespace utdata
