// The file set: how data items and their multi-channel masters come and go.
#include <algorithm>
#include <iterator>
#include <memory>

#include "src/fileset/data_lists.h"
#include "src/items/idatarecord.h"
#include "utdata/fset.h"
#include "utdata/supplier.h"

using utdata::WriterScope;

namespace {

constexpr const wchar_t* masterName = L"MSC_Data_Group";

/// Classes of which the item that is there already is as good as a new one.
bool IsShared(gdata_enumDataClass dataClass) {
  return dataClass == gdata_CScanAngle || dataClass == gdata_BeamSimulation;
}

bool IsCScan(gdata_enumDataClass dataClass) {
  return dataClass == gdata_CScanAmplitude || dataClass == gdata_CScanPosition;
}

using Text = wchar_t[CGDataTypeFDD::nameSize];

void CopyText(Text& target, const Text& source) {
  std::copy(std::begin(source), std::end(source), std::begin(target));
  target[CGDataTypeFDD::nameSize - 1] = L'\0';
}

struct DeleteRecord {
  void operator()(CGDataTypeFDD* record) const { gdata_Delete(record, 1); }
};

}  // namespace

CIData* CFSet::fset_AddGData(CGDataTypeFDD* descriptor,
                             void* context,
                             CVolumeSet* volumeSet,
                             int isNew) {
  if (!descriptor || !volumeSet || (descriptor->dataClass & gdata_MultiChannelMaster))
    return nullptr;
  const WriterScope writer(m_lock);
  CIData* const present = m_data.First(fset_All,
                                       {descriptor->GetDataBookmarkType(),
                                        descriptor->GetPatchID(),
                                        descriptor->channelId,
                                        descriptor->subChannelId,
                                        descriptor->gateId,
                                        descriptor->dataClass});
  if (present) return IsShared(descriptor->dataClass) ? present : nullptr;
  auto* const item = new CIData(descriptor, context, volumeSet, isNew, nullptr);
  m_data.Add(item);
  if (descriptor->subChannelId != 0 && utdata::IsGathered(descriptor->dataClass))
    if (CIData* const master = MasterFor(*descriptor, context, volumeSet, isNew))
      master->idata1_SubChannelAdd(item);
  if (IGDataSupplier* const document = item->GetDocument())
    document->OnDataGroupAdded(descriptor->GetPatchID() != 0 ? 1 : 0);
  return item;
}

/// The master of a new element, whose descriptor has its bookmark type by now; null when there is
/// no memory for one.
CIData* CFSet::MasterFor(CGDataTypeFDD& element, void* context, CVolumeSet* volumeSet, int isNew) {
  const bool isCScan = IsCScan(element.dataClass);
  const std::uint32_t gateNumber = isCScan ? utdata::GateNumber(element.gateId) : 0;
  CIData* const master = m_masters.First(fset_All,
                                         {element.GetDataBookmarkType(),
                                          element.GetPatchID(),
                                          element.channelId,
                                          fset_AnyId,
                                          isCScan ? gateNumber : fset_AnyId,
                                          utdata::WithMasterBit(element.dataClass)});
  if (!master) return AddMaster(element, gateNumber, context, volumeSet, isNew);
  if (isCScan && element.GetDataBookmarkType() == bookmark_Coupling) {
    CopyText(master->idata1_GetGInfoRef()->gateName, element.gateName);
    CopyText(master->idata1_GetInfoRef()->gateName, element.gateName);
  }
  return master;
}

/// A master is made of its first element's descriptor. It has no samples of its own in any file.
CIData* CFSet::AddMaster(CGDataTypeFDD& element,
                         std::uint32_t gateId,
                         void* context,
                         CVolumeSet* volumeSet,
                         int isNew) {
  const std::unique_ptr<CGDataTypeFDD, DeleteRecord> record(gdata_Allocate(0, masterName));
  if (!record) return nullptr;
  Text name;
  CopyText(name, record->dataName);
  gdata_Duplicate(record.get(), &element);
  CopyText(record->dataName, name);
  record->dataClass = utdata::WithMasterBit(element.dataClass);
  record->subChannelId = 0;
  record->gateId = gateId;
  record->samples = {};
  auto* const master = new CIData(record.get(), context, volumeSet, isNew, nullptr);
  m_masters.Add(master);
  return master;
}

std::uint32_t CFSet::fset_RemoveGData(fset_enumFilters filter,
                                      std::uint32_t bookmarkType,
                                      std::uint32_t patchId,
                                      std::uint32_t chanId,
                                      std::uint32_t subChanId,
                                      std::uint32_t gateId,
                                      std::uint32_t dataClass) {
  const WriterScope writer(m_lock);
  CIDataLst removed;
  m_data.Move(filter, removed, {bookmarkType, patchId, chanId, subChanId, gateId, dataClass});
  for (CIData* item : removed) DestroyDataItem(item);
  return removed.IsEmpty() ? 1 : 0;
}

/// A master goes with its last element. One that is not in the master list is another's to destroy.
void CFSet::DestroyDataItem(CIData* item) {
  CIData* const master = utdata::TakeFromMaster(item);
  item->idata9_DeferDelete();
  if (!master || master->idata1_SubChannelQty() != 0) return;
  const bool wasThere = m_masters.Remove(master);
  UTDATA_ASSERT(wasThere);
  if (wasThere) master->idata9_DeferDelete();
}
