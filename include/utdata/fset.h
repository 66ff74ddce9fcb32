// The file set: one opened inspection in memory, as items that are added, found, edited, replaced and removed.
//
// The set owns its items and lists; an item lives until it is removed or the set is destroyed. Descriptors that are added with isNew 0
// stay the caller's and have to outlive their items; utdata/item.h tells what an item keeps of them.
//
// Locks. One reader-writer lock guards all lists. Queries take the reader side, wait 500 ms for it at most and then answer as if nothing
// matched; additions, removals, replacements and the clearing of flags take the writer side and wait as long as it takes. Order of
// locks: the file set's before an item's. A host called back from inside a change may query and change the set on the same thread.
// Operations that take no lock say so.
//
// Status filters and ids are those of utdata/enum.h: fset_AnyId matches every id, gate ids are compared exactly. A lookup that names
// all ids costs the same however many items there are. An unknown filter value is reported as an assertion and passes every item (but
// not the single general-information item).
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <vector>

#include "interfaces/kvtiff19.h"
#include "interfaces/ostrin.h"
#include "utdata/enum.h"
#include "utdata/ichanlst.h"
#include "utdata/idatalst.h"
#include "utdata/igatelist.h"
#include "utdata/iinfo.h"
#include "utdata/ipatchlst.h"
#include "utdata/iprobelst.h"
#include "utdata/ischanlst.h"
#include "utdata/itemindex.h"

class CDocument;

/// What others need of a file set.
class UTDATA_API IFSet {
 public:
  [[nodiscard]] virtual CIChan* fset_GetIChan(fset_enumFilters filter, std::uint32_t chanId) = 0;
  [[nodiscard]] virtual CIGate* fset_GetIGate(fset_enumFilters filter, std::uint32_t gateId, std::uint32_t chanId) = 0;
  virtual std::uint32_t fset_GetIDataLst(CIDataLst* out,
                                         fset_enumFilters filter,
                                         std::uint32_t bookmarkType,
                                         std::uint32_t patchId,
                                         std::uint32_t chanId,
                                         std::uint32_t subChanId,
                                         std::uint32_t gateId,
                                         std::uint32_t dataClass,
                                         unsigned,
                                         unsigned) = 0;

 protected:
  ~IFSet() = default;
};

namespace utdata {

/// How long a query of a file set waits for the reader side, in milliseconds.
inline constexpr std::uint32_t queryTimeoutMs = 500;

using DataList = IndexedItemList<CIDataLst>;

}  // namespace utdata

class UTDATA_API CFSet final : public IFSet {
 public:
  /// Makes an empty set. @param document the host's, not owned; null is reported
  explicit CFSet(CDocument* document);
  CFSet(const CFSet&) = delete;
  CFSet& operator=(const CFSet&) = delete;
  /// Destroys every item and weld descriptor. Takes no lock: no other thread may use the set any more.
  ~CFSet();

  /// Takes no lock.
  [[nodiscard]] CDocument* fset_GetDocument() const { return m_document; }
  /// The number of channels. Takes no lock.
  [[nodiscard]] std::uint32_t fset_GetIChanCount() const;

  // One family of operations for each of six types, told on channels.

  /// Makes an item of a descriptor and appends it. Null when the descriptor is null or an item with its ids is there already.
  /// @param isNew 0 for a group of the file: the item then refers to the descriptor; else the host's own: only its content is taken
  CIChan* fset_AddGChan(CGChanTypeDescr* descriptor, int isNew);
  /// The first match, or null.
  [[nodiscard]] CIChan* fset_GetIChan(fset_enumFilters filter, std::uint32_t chanId) override;
  /// Appends every match to `out`. Returns the number of items in `out` then, 0 when it is null.
  std::uint32_t fset_GetIChanLst(CIChanLst* out, fset_enumFilters filter, std::uint32_t chanId);
  /// Destroys every match. 0, or 1 when there was none.
  std::uint32_t fset_RemoveGChan(fset_enumFilters filter, std::uint32_t chanId);
  /// Gives the first item with the descriptor's ids its content (ReplaceGInfo); null when the descriptor is null or there is none.
  CIChan* fset_ReplaceGChan(CGChanTypeDescr* descriptor);

  CIGate* fset_AddGGate(CGGateTypeDescr* descriptor, int isNew);
  [[nodiscard]] CIGate* fset_GetIGate(fset_enumFilters filter, std::uint32_t gateId, std::uint32_t chanId) override;
  std::uint32_t fset_GetIGateLst(CIGateLst* out, fset_enumFilters filter, std::uint32_t gateId, std::uint32_t chanId);
  std::uint32_t fset_RemoveGGate(fset_enumFilters filter, std::uint32_t gateId, std::uint32_t chanId);
  CIGate* fset_ReplaceGGate(CGGateTypeDescr* descriptor);

  CIPatch* fset_AddGPatch(CGPatchTypeDescr* descriptor, int isNew);
  [[nodiscard]] CIPatch* fset_GetIPatch(fset_enumFilters filter, std::uint32_t patchId);
  std::uint32_t fset_GetIPatchLst(CIPatchLst* out, fset_enumFilters filter, std::uint32_t patchId);
  std::uint32_t fset_RemoveGPatch(fset_enumFilters filter, std::uint32_t patchId);
  CIPatch* fset_ReplaceGPatch(CGPatchTypeDescr* descriptor);

  CIProbe* fset_AddGProbe(CGProbeTypeDescr* descriptor, int isNew);
  [[nodiscard]] CIProbe* fset_GetIProbe(fset_enumFilters filter, std::uint32_t probeId);
  std::uint32_t fset_GetIProbeLst(CIProbeLst* out, fset_enumFilters filter, std::uint32_t probeId);
  std::uint32_t fset_RemoveGProbe(fset_enumFilters filter, std::uint32_t probeId);
  CIProbe* fset_ReplaceGProbe(CGProbeTypeDescr* descriptor);

  CISubChan* fset_AddGSubChan(CGSubchanTypeDescr* descriptor, int isNew);
  [[nodiscard]] CISubChan* fset_GetISubChan(fset_enumFilters filter, std::uint32_t subChanId, std::uint32_t chanId);
  std::uint32_t fset_GetISubChanLst(CISubChanLst* out,
                                    fset_enumFilters filter,
                                    std::uint32_t subChanId,
                                    std::uint32_t chanId);
  std::uint32_t fset_RemoveGSubChan(fset_enumFilters filter, std::uint32_t subChanId, std::uint32_t chanId);
  CISubChan* fset_ReplaceGSubChan(CGSubchanTypeDescr* descriptor);

  // There is one general-information item at most.

  CIInfo* fset_AddGInfo(CGInfoTypeDescr* descriptor, int isNew);
  [[nodiscard]] CIInfo* fset_GetIInfo(fset_enumFilters filter);
  std::uint32_t fset_RemoveGInfo(fset_enumFilters filter);
  CIInfo* fset_ReplaceGInfo(CGInfoTypeDescr* descriptor);

  /// Appends every data item that matches to `out`: of the multi-channel masters when the class is given and has its master bit set,
  /// else of the data items. Gate ids are compared by gate number; a bookmark type of 0 matches all. A null `out` is reported.
  /// Returns the number of items in `out` then. The last two arguments have no effect.
  std::uint32_t fset_GetIDataLst(CIDataLst* out,
                                 fset_enumFilters filter,
                                 std::uint32_t bookmarkType,
                                 std::uint32_t patchId,
                                 std::uint32_t chanId,
                                 std::uint32_t subChanId,
                                 std::uint32_t gateId,
                                 std::uint32_t dataClass,
                                 unsigned,
                                 unsigned) override;

  // Weld fills and weld scan plans are kept as descriptors, known by two ids: the weld's, and the fill's or plan's.

  /// Stores a copy of the record at the end and returns the caller's own pointer; when one with its ids is stored already, returns that
  /// one and stores nothing. Null for null.
  CGWeldFillDescr* fset_AddGWeldFill(CGWeldFillDescr* descriptor);
  CGWeldScanPlanDescr* fset_AddGWeldScanPlan(CGWeldScanPlanDescr* descriptor);
  /// The first stored one with these ids, or null. Owned by the set, for its life.
  [[nodiscard]] CGWeldFillDescr* fset_GetGWeldFill(std::uint32_t weldId, std::uint32_t fillId) const;
  [[nodiscard]] CGWeldScanPlanDescr* fset_GetGWeldScanPlan(std::uint32_t weldId, std::uint32_t planId) const;
  /// Everything stored so far, in order. Does not take the set's lock.
  [[nodiscard]] std::vector<CGWeldFillDescr*> fset_GetGWeldFillList() const;
  [[nodiscard]] std::vector<CGWeldScanPlanDescr*> fset_GetGWeldScanPlanList() const;

  /// 1 when an item is modified or a data item is new, else 0. A new item of another type counts once it is modified too.
  [[nodiscard]] int fset_IsModified() const;
  /// Clears the modified flag of every item.
  void fset_ClearModified();
  /// Clears the new flag of every data item; other new items stay new.
  void fset_ClearNew();

  virtual void AssertValid() const;
  virtual void Dump(CDumpContext& context) const;  ///< writes nothing

 private:
  struct Range {
    float minimum = std::numeric_limits<float>::max();
    float maximum = std::numeric_limits<float>::lowest();
  };

  /// Display order of a gate, by gate number; 0 for one that is not here. Filled once, then only read.
  static std::map<std::uint32_t, std::int32_t> mapGateIDOrdering;

  static void FillGateOrdering();

  CDocument* const m_document;
  mutable CReaderWriterLock m_lock UTDATA_ACQUIRED_BEFORE(m_weldLock);
  utdata::IndexedItemList<CIPatchLst> m_patches UTDATA_GUARDED_BY(m_lock){m_lock};
  utdata::IndexedItemList<CIProbeLst> m_probes UTDATA_GUARDED_BY(m_lock){m_lock};
  utdata::IndexedItemList<CIChanLst> m_channels UTDATA_GUARDED_BY(m_lock){m_lock};
  utdata::IndexedItemList<CISubChanLst> m_subChannels UTDATA_GUARDED_BY(m_lock){m_lock};
  utdata::IndexedItemList<CIGateLst> m_gates UTDATA_GUARDED_BY(m_lock){m_lock};
  mutable utdata::Mutex m_weldLock;  ///< lets the weld lists be copied while the set is being changed
  std::vector<CGWeldScanPlanDescr*> m_weldScanPlans UTDATA_GUARDED_BY(m_weldLock);
  std::vector<CGWeldFillDescr*> m_weldFills UTDATA_GUARDED_BY(m_weldLock);
  utdata::DataList m_data UTDATA_GUARDED_BY(m_lock){m_lock};
  utdata::DataList m_masters UTDATA_GUARDED_BY(m_lock){m_lock};
  CIInfo* m_info UTDATA_GUARDED_BY(m_lock) = nullptr;
  std::array<Range, 6> m_ranges;  ///< start empty; nothing in the library reads or changes them
};
