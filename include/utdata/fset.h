// The file set: one opened inspection in memory, as items that are added, found, edited, replaced
// and removed.
//
// The set owns its items and lists; an item lives until it is removed or the set is destroyed.
// Descriptors that are added with isNew 0 stay the caller's and have to outlive their items;
// utdata/item.h documents what an item keeps of them.
//
// Locks. One reader-writer lock guards all lists. Queries take the reader side, wait 500 ms for it
// at most and then answer as if nothing matched; additions, removals, replacements and the clearing
// of flags take the writer side and wait as long as it takes. Order of locks: the file set's before
// an item's. What a host may do that is called back from inside fset_AddGData is documented on
// IGDataSupplier::OnDataGroupAdded. Operations that take no lock say so.
//
// Status filters and ids are those of utdata/enum.h: fset_AnyId matches every id; gate ids are
// compared exactly, those of data items by gate number. The cost of a lookup that names an id grows
// with what it finds, not with the items that there are. An unknown filter value is reported as an
// assertion and passes every item (but not the single general-information item).
//
// Memory. Without it additions and replacements answer null and change nothing; queries that append
// to a list, and constructors, may let std::bad_alloc pass, and the list is then as it was. Single
// look-ups, removals, the clearing of flags and the set's own end take none.
//
// Data groups become data items in the data list. Those of one channel's sub-channels are gathered
// under multi-channel masters: data items that the set itself makes and destroys, in a master list.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "interfaces/kvtiff19.h"
#include "utdata/enum.h"
#include "utdata/ichanlst.h"
#include "utdata/idatalst.h"
#include "utdata/igatelist.h"
#include "utdata/iinfo.h"
#include "utdata/ipatchlst.h"
#include "utdata/iprobelst.h"
#include "utdata/ischanlst.h"

class CDocument;
class CVolumeSet;
class IGDataSupplier;

namespace utdata {
struct InspectionState;
}

/// Copies of a data group and of the groups that belong to it, independent of the file set; all
/// owned by the record.
struct fset_typeDataInfoDescr {
  std::int32_t complete = 0;  ///< 1 when everything but the sub-channel is there
  CGPatchTypeDescr* patch = nullptr;
  CGChanTypeDescr* channel = nullptr;
  CGSubchanTypeDescr* subChannel = nullptr;
  CGProbeTypeDescr* firstProbe = nullptr;  ///< both probes or none
  CGProbeTypeDescr* secondProbe = nullptr;
  void* reserved = nullptr;
  CGGateTypeDescr* gate = nullptr;
  CGDataTypeFDD* data = nullptr;
  idata_typeTOFD* tofd = nullptr;
};

/// What others need of a file set.
class UTDATA_API IFSet {
 public:
  [[nodiscard]] virtual CIChan* fset_GetIChan(fset_enumFilters filter, std::uint32_t chanId) = 0;
  [[nodiscard]] virtual CIGate* fset_GetIGate(fset_enumFilters filter,
                                              std::uint32_t gateId,
                                              std::uint32_t chanId) = 0;
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

class UTDATA_API CFSet final : public IFSet {
 public:
  /// Makes an empty set. @param document the host's, not owned; null is reported
  explicit CFSet(CDocument* document);
  /// The same for a host without a class of that name; fset_GetDocument then answers null.
  explicit CFSet(IGDataSupplier* supplier);
  CFSet(const CFSet&) = delete;
  CFSet& operator=(const CFSet&) = delete;
  /// Destroys every item and weld descriptor. Takes no lock: no other thread may use the set any
  /// more.
  ~CFSet();

  /// Takes no lock.
  [[nodiscard]] CDocument* fset_GetDocument() const;
  /// The number of channels. Takes no lock.
  [[nodiscard]] std::uint32_t fset_GetIChanCount() const;

  // One family of operations for each of five types, documented on channels.

  /// Makes an item of a descriptor and appends it. Null when the descriptor is null or an item with
  /// its ids is there already.
  /// @param isNew 0 for a group of the file: the item then refers to the descriptor; else the
  ///   host's own: only its content is taken
  CIChan* fset_AddGChan(CGChanTypeDescr* descriptor, int isNew);
  /// The first match, or null.
  [[nodiscard]] CIChan* fset_GetIChan(fset_enumFilters filter, std::uint32_t chanId) override;
  /// Appends every match to `out`. Returns the number of items in `out` then, 0 when it is null.
  std::uint32_t fset_GetIChanLst(CIChanLst* out, fset_enumFilters filter, std::uint32_t chanId);
  /// Destroys every match. 0, or 1 when there was none.
  std::uint32_t fset_RemoveGChan(fset_enumFilters filter, std::uint32_t chanId);
  /// Gives the first item with the descriptor's ids its content (ReplaceGInfo); null when the
  /// descriptor is null or there is none.
  CIChan* fset_ReplaceGChan(CGChanTypeDescr* descriptor);

  CIGate* fset_AddGGate(CGGateTypeDescr* descriptor, int isNew);
  [[nodiscard]] CIGate* fset_GetIGate(fset_enumFilters filter,
                                      std::uint32_t gateId,
                                      std::uint32_t chanId) override;
  std::uint32_t fset_GetIGateLst(CIGateLst* out,
                                 fset_enumFilters filter,
                                 std::uint32_t gateId,
                                 std::uint32_t chanId);
  std::uint32_t fset_RemoveGGate(fset_enumFilters filter,
                                 std::uint32_t gateId,
                                 std::uint32_t chanId);
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
  [[nodiscard]] CISubChan* fset_GetISubChan(fset_enumFilters filter,
                                            std::uint32_t subChanId,
                                            std::uint32_t chanId);
  std::uint32_t fset_GetISubChanLst(CISubChanLst* out,
                                    fset_enumFilters filter,
                                    std::uint32_t subChanId,
                                    std::uint32_t chanId);
  std::uint32_t fset_RemoveGSubChan(fset_enumFilters filter,
                                    std::uint32_t subChanId,
                                    std::uint32_t chanId);
  CISubChan* fset_ReplaceGSubChan(CGSubchanTypeDescr* descriptor);

  // There is one general-information item at most.

  CIInfo* fset_AddGInfo(CGInfoTypeDescr* descriptor, int isNew);
  [[nodiscard]] CIInfo* fset_GetIInfo(fset_enumFilters filter);
  std::uint32_t fset_RemoveGInfo(fset_enumFilters filter);
  CIInfo* fset_ReplaceGInfo(CGInfoTypeDescr* descriptor);

  // Data items. Lookups that name a data class with its master bit set are of the masters, all
  // others of the data list.

  /// Makes a data item of a data group and appends it, gathers it under its master when it is a
  /// sub-channel of a class that is gathered (1, 2, 3, 10, 11), and calls the document's
  /// OnDataGroupAdded. A master is found, or made, by class, bookmark type, patch and channel, for
  /// classes 2 and 3 by gate number too; a master of these takes the gate name of a group with
  /// bookmark type 10.
  ///
  /// The writer side is held throughout: the host's answers to the item's requests and
  /// OnDataGroupAdded run inside, under the rule of IGDataSupplier::OnDataGroupAdded. An id of the
  /// descriptor that is fset_AnyId, and a bookmark type of 0, match any when its ids are searched.
  /// @param descriptor normalised in place, and given a bookmark type when it has none; only its
  ///   content is taken
  /// @param context    kept in the item, the host's
  /// @param volumeSet  gives the item its units and its document; not owned, outlives the set
  /// @param isNew      not 0: the descriptor's data pointer is a table of the host's, see CIData
  /// @param isAdded    receives whether the descriptor has become an item; may be null
  /// @return the item, owned by the set. For ids that are there already null, but for classes 17
  ///         and 2000 the item that has them, which is that of another group, with another layout
  ///         perhaps: the samples of this one must not be attached to it. Null when an argument is
  ///         missing or the class has the master bit
  CIData* fset_AddGData(CGDataTypeFDD* descriptor,
                        void* context,
                        CVolumeSet* volumeSet,
                        int isNew,
                        bool* isAdded);
  /// The same without isAdded: the host compares the item's record (CIData::idata1_GetGInfoRef)
  /// with the descriptor instead.
  CIData* fset_AddGData(CGDataTypeFDD* descriptor, void* context, CVolumeSet* volumeSet, int isNew);
  /// Destroys every match in the data list, and each master with its last sub-channel. 0, or 1 when
  /// there was no match.
  std::uint32_t fset_RemoveGData(fset_enumFilters filter,
                                 std::uint32_t bookmarkType,
                                 std::uint32_t patchId,
                                 std::uint32_t chanId,
                                 std::uint32_t subChanId,
                                 std::uint32_t gateId,
                                 std::uint32_t dataClass);

  /// The first match, or null. Where no master matches, the data list is searched.
  [[nodiscard]] CIData* fset_GetIData(fset_enumFilters filter,
                                      std::uint32_t bookmarkType,
                                      std::uint32_t patchId,
                                      std::uint32_t chanId,
                                      std::uint32_t subChanId,
                                      std::uint32_t gateId,
                                      std::uint32_t dataClass);
  /// The same by a record of ids; null for null.
  [[nodiscard]] CIData* fset_GetIData(const idata_typeId* id);

  // Each of these appends to `out` and returns the number of items in it then; a null `out` is
  // answered with 0.

  /// Every data item.
  std::uint32_t fset_GetIDataLst(CIDataLst* out);
  /// Every data item whose channel has this first probe.
  std::uint32_t fset_GetIDataLst(CIDataLst* out, std::uint32_t probeId);
  /// Every match. A null `out` is reported. The last two arguments have no effect.
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
  /// Every match of any bookmark type whose gate number is `gateId` itself. A null `out` is
  /// reported.
  std::uint32_t fset_GetGateSpecificIDataList(CIDataLst* out,
                                              fset_enumFilters filter,
                                              std::uint32_t patchId,
                                              std::uint32_t chanId,
                                              std::uint32_t subChanId,
                                              std::uint32_t gateId,
                                              std::uint32_t dataClass);
  /// Every master.
  std::uint32_t fset_GetMSCIDataLst(CIDataLst* out);
  /// Every data item that is neither A-scans nor a C-scan of the ordinary kinds: classes 5, 7, 8,
  /// 9, 2000 and 2001. A null `out` is reported.
  std::uint32_t fset_GetSpecialIDataList(CIDataLst* out);
  /// The data items of one channel (fset_AnyId is an id like others here) by sub-channel id, then
  /// by the display order of their gates.
  std::uint32_t fset_GetSpecificChannelSortedIDataList(std::uint32_t chanId, CIDataLst* out);

  [[nodiscard]] bool fset_HasAdvancedViewData() const;
  [[nodiscard]] int fset_HasAnalogData() const;  ///< 0 or 1
  [[nodiscard]] bool fset_HasBeamSimulationData() const;
  [[nodiscard]] bool fset_HasEddyCurrentData() const;  ///< class 5; class 6 alone does not count

  /// Copies a data item's group, its TOFD parameters, and its patch, channel, sub-channel, gate (by
  /// its exact id) and probes, as far as they are there. Takes no lock: the set must not be changed
  /// meanwhile. Null for null, which is reported.
  /// @return owned by the caller, released with fset_DataInfoReleaseCopy
  [[nodiscard]] fset_typeDataInfoDescr* fset_DataInfoRequestCopy(CIData* item);
  /// Null is reported and changes nothing. Takes no lock.
  void fset_DataInfoReleaseCopy(fset_typeDataInfoDescr* info);

  // Weld fills and weld scan plans are kept as descriptors, known by two ids: the weld's, and the
  // fill's or plan's.

  /// Stores a copy of the record at the end and returns the caller's own pointer; when one with its
  /// ids is stored already, returns that one and stores nothing. Null for null.
  CGWeldFillDescr* fset_AddGWeldFill(CGWeldFillDescr* descriptor);
  CGWeldScanPlanDescr* fset_AddGWeldScanPlan(CGWeldScanPlanDescr* descriptor);
  /// The first stored one with these ids, or null. Owned by the set, for its life.
  [[nodiscard]] CGWeldFillDescr* fset_GetGWeldFill(std::uint32_t weldId,
                                                   std::uint32_t fillId) const;
  [[nodiscard]] CGWeldScanPlanDescr* fset_GetGWeldScanPlan(std::uint32_t weldId,
                                                           std::uint32_t planId) const;
  /// Everything stored so far, in order. Does not take the set's lock.
  [[nodiscard]] std::vector<CGWeldFillDescr*> fset_GetGWeldFillList() const;
  [[nodiscard]] std::vector<CGWeldScanPlanDescr*> fset_GetGWeldScanPlanList() const;

  // Masters do not count in these three.

  /// 1 when an item is modified or a data item is new, else 0. A new item of another type counts
  /// once it is modified too.
  [[nodiscard]] int fset_IsModified() const;
  /// Clears the modified flag of every item.
  void fset_ClearModified();
  /// Clears the new flag of every data item; other new items stay new.
  void fset_ClearNew();

  virtual void AssertValid() const;
  virtual void Dump(CDumpContext& context) const;  ///< writes nothing

 private:
  friend struct utdata::InspectionState;
  /// Takes out and destroys a data item of the set.
  void RemoveItem(CIData* item);

  struct Contents;

  /// Display order of a gate, by gate number; 0 for one that is not here. Filled once, then only
  /// read.
  static std::map<std::uint32_t, std::int32_t> mapGateIDOrdering;

  static void FillGateOrdering();
  static std::int32_t GateOrder(std::uint32_t gateId);

  CDocument* const m_document;
  const std::unique_ptr<Contents> m_contents;  ///< the lists and the lock over them
};
