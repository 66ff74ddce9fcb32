// The file set: how data items and their multi-channel masters come and go.
#include <algorithm>
#include <iterator>
#include <memory>
#include <new>

#include "src/fileset/contents.h"
#include "src/fileset/data_lists.h"
#include "src/foundation/dataclass.h"
#include "utdata/supplier.h"

using utdata::WriterScope;

namespace {

constexpr const wchar_t* masterName = L"MSC_Data_Group";

using Text = wchar_t[CGDataTypeFDD::nameSize];

void CopyText(Text& target, const Text& source) {
  std::copy(std::begin(source), std::end(source), std::begin(target));
  target[CGDataTypeFDD::nameSize - 1] = L'\0';
}

/// Makes an item of a record and appends it.
CIData* AddTo(utdata::DataList& list,
              CGDataTypeFDD& record,
              void* context,
              CVolumeSet* volumeSet,
              int isNew) {
  auto item = std::make_unique<CIData>(&record, context, volumeSet, isNew, nullptr);
  list.Add(item.get());
  return item.release();
}

struct DeleteRecord {
  void operator()(CGDataTypeFDD* record) const { gdata_Delete(record, 1); }
};

}  // namespace

CIData* CFSet::fset_AddGData(CGDataTypeFDD* descriptor,
                             void* context,
                             CVolumeSet* volumeSet,
                             int isNew) {
  return fset_AddGData(descriptor, context, volumeSet, isNew, nullptr);
}

CIData* CFSet::fset_AddGData(CGDataTypeFDD* descriptor,
                             void* context,
                             CVolumeSet* volumeSet,
                             int isNew,
                             bool* isAdded) {
  if (isAdded) *isAdded = false;
  if (!descriptor || !volumeSet || (descriptor->dataClass & gdata_MultiChannelMaster))
    return nullptr;
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  CIData* const present = c.data.First(fset_All,
                                       {descriptor->GetDataBookmarkType(),
                                        descriptor->GetPatchID(),
                                        descriptor->channelId,
                                        descriptor->subChannelId,
                                        descriptor->gateId,
                                        descriptor->dataClass});
  if (present) return utdata::IsShared(descriptor->dataClass) ? present : nullptr;
  CIData* const item = utdata::OrNull([&]() UTDATA_NO_THREAD_SAFETY_ANALYSIS {
    return c.AddDataItem(*descriptor, context, volumeSet, isNew);
  });
  if (!item) return nullptr;
  if (isAdded) *isAdded = true;
  c.masters.CatchUp();  // that of its master, whose sub-channel id may have changed
  if (IGDataSupplier* const document = item->GetDocument())
    document->OnDataGroupAdded(descriptor->GetPatchID() != 0 ? 1 : 0);
  return item;
}

/// Makes a data item and brings it under its master, or changes nothing.
CIData* CFSet::Contents::AddDataItem(CGDataTypeFDD& descriptor,
                                     void* context,
                                     CVolumeSet* volumeSet,
                                     int isNew) {
  CIData* const item = AddTo(data, descriptor, context, volumeSet, isNew);
  if (descriptor.subChannelId == 0 || !utdata::IsGathered(descriptor.dataClass)) return item;
  CIData* master = nullptr;
  try {
    master = MasterFor(descriptor, context, volumeSet, isNew);
    master->idata1_SubChannelAdd(item);
    return item;
  } catch (...) {
    data.Remove(item);
    item->idata9_DeferDelete();
    if (master) DestroyIfEmpty(master);
    throw;
  }
}

/// The master of a new element, whose descriptor has its bookmark type by now.
CIData* CFSet::Contents::MasterFor(CGDataTypeFDD& element,
                                   void* context,
                                   CVolumeSet* volumeSet,
                                   int isNew) {
  const bool isCScan = utdata::IsCScan(element.dataClass);
  const std::uint32_t gateNumber = isCScan ? utdata::GateNumber(element.gateId) : 0;
  CIData* const master = masters.First(fset_All,
                                       {element.GetDataBookmarkType(),
                                        element.GetPatchID(),
                                        element.channelId,
                                        fset_AnyId,
                                        isCScan ? gateNumber : fset_AnyId,
                                        utdata::WithMasterBit(element.dataClass)});
  if (!master) return AddMaster(element, gateNumber, context, volumeSet, isNew);
  if (isCScan && element.GetDataBookmarkType() == bookmark_Coupling) {
    CopyText(master->idata1_GetGInfoRef()->gateName, element.gateName);
    CopyText(utdata::ItemAccess::DescriptorOf(*master)->gateName, element.gateName);
  }
  return master;
}

/// A master is made of its first element's descriptor. It has no samples of its own in any file.
CIData* CFSet::Contents::AddMaster(CGDataTypeFDD& element,
                                   std::uint32_t gateId,
                                   void* context,
                                   CVolumeSet* volumeSet,
                                   int isNew) {
  const std::unique_ptr<CGDataTypeFDD, DeleteRecord> record(gdata_Allocate(0, masterName));
  if (!record) throw std::bad_alloc();
  Text name;
  CopyText(name, record->dataName);
  gdata_Duplicate(record.get(), &element);
  CopyText(record->dataName, name);
  record->dataClass = utdata::WithMasterBit(element.dataClass);
  record->subChannelId = 0;
  record->gateId = gateId;
  record->samples = {};
  return AddTo(masters, *record, context, volumeSet, isNew);
}

std::uint32_t CFSet::fset_RemoveGData(fset_enumFilters filter,
                                      std::uint32_t bookmarkType,
                                      std::uint32_t patchId,
                                      std::uint32_t chanId,
                                      std::uint32_t subChanId,
                                      std::uint32_t gateId,
                                      std::uint32_t dataClass) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  const auto destroy = [&c](CIData* item)
                           UTDATA_NO_THREAD_SAFETY_ANALYSIS { c.DestroyDataItem(item); };
  return c.data.Remove(
             filter, {bookmarkType, patchId, chanId, subChanId, gateId, dataClass}, destroy)
             ? 0
             : 1;
}

void CFSet::RemoveItem(CIData* item) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  if (c.data.Remove(item)) c.DestroyDataItem(item);
}

/// A master is destroyed with its last element, if it is in the master list.
void CFSet::Contents::DestroyDataItem(CIData* item) {
  CIData* const master = utdata::TakeFromMaster(item);
  item->idata9_DeferDelete();
  if (master) DestroyIfEmpty(master);
}

void CFSet::Contents::DestroyIfEmpty(CIData* master) {
  if (master->idata1_SubChannelQty() != 0) return;
  const bool wasThere = masters.Remove(master);
  UTDATA_ASSERT(wasThere);
  if (wasThere) master->idata9_DeferDelete();
}
