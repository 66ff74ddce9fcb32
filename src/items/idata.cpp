// The data item: its construction and destruction, identity and status.
#include "utdata/idata.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "src/items/idatainside.h"
#include "src/items/idatarecord.h"
#include "src/items/itemplace.h"
#include "src/items/recordids.h"
#include "utdata/idatalst.h"
#include "utdata/vset.h"

namespace {

/// Texts of a record that a host has filled may lack their terminators.
void TerminateTexts(CGDataTypeFDD& record) {
  for (wchar_t* text : {record.dataName,
                        record.dataNameText,
                        record.channelName,
                        record.subChannelName,
                        record.gateName})
    text[CGDataTypeFDD::nameSize - 1] = L'\0';
}

}  // namespace

CIData::CIData(void* data, CVolumeSet* volumes, int external)
    : m_inside(std::make_unique<Inside>(this)),
      m_external(external),
      m_data(data),
      m_volumes(volumes),
      m_document(volumes ? volumes->vol_GetDocument() : nullptr) {}

// Other items change last, when nothing can fail any more.
CIData::CIData(CGDataTypeFDD* record, void* data, CVolumeSet* volumes, int external, long*)
    : CIData(data, volumes, external) {
  UTDATA_ASSERT(record && volumes);
  if (!record || !volumes) return;
  TerminateTexts(*record);
  utdata::NormaliseDataRecord(*record);
  Partners partners;
  FindPartners(*record, *volumes, partners);
  const ChannelScanning scanning = ReadChannelScanning(record->channelId);
  UpdateBookmarkType(scanning.mode, record);
  m_record = std::make_unique<CGDataTypeFDD>(*record);
  m_descriptor.reset(new CRDataTypeDD(m_record.get(), partners.matched, partners.meridio));
  m_descriptor->SetMatchedCScan(nullptr);
  utdata::ItemAccess::PublishIds(*this, utdata::IdsOf(*m_descriptor));
  if (m_external) {
    m_descriptor->SetDataLoaded(true);
    m_descriptor->SetVolumeLoaded(true);
    auto* const table = static_cast<char*>(m_descriptor->dataPointer);
    const bool isMapped = m_descriptor->GetUseMemoryMappedFilePointer();
    if (m_descriptor->dataSize != 0)
      m_descriptor->SetDiskTable(table, isMapped, m_descriptor->dataSize);
    else
      m_descriptor->SetDiskTable(table, isMapped);
  }
  m_descriptor->SetSampleAxisScale(1.0);
  InitializeUnits();
  UpdateUnits();
  ChooseInitialUnits();
  const bool isMerged =
      (scanning.mode == escan_Mode2 || scanning.mode == escan_Mode4) && scanning.isLinearMerged;
  if (idata1_IsMultiChannelMaster() || isMerged) {
    m_elements = std::make_unique<CIDataLst>();
    m_inside->master = this;
  }
  Link(partners);
}

CIData::CIData(void* data, CVolumeSet* volumes) : CIData(data, volumes, 1) {}

CIData::~CIData() {
  [[maybe_unused]] const bool wasLive = m_inside->live.End();
  UTDATA_ASSERT(wasLive);
  LeaveMaster();
  LetElementsGo();
  if (m_external && m_descriptor) {
    m_descriptor->SetDiskTable(nullptr, m_descriptor->GetUseMemoryMappedFilePointer());
    m_descriptor->SetDataLoaded(false);
    m_descriptor->SetVolumeLoaded(false);
  }
  m_descriptor.reset();
  if (m_volumes) m_volumes->vol_DeleteUnitSet(&m_pUnitInfo);
}

void CIData::DestroyDescriptor::operator()(CRDataTypeDD* descriptor) const {
  descriptor->Destroy();
}

void CIData::idata9_DeferDelete() { delete this; }

bool CIData::IsValidObject(CIData* item) { return utdata::LiveDataItem::IsLive(item); }

CRDataTypeDD* utdata::ItemAccess::DescriptorOf(const CIData& item) {
  return item.m_descriptor.get();
}

void utdata::ItemAccess::TakeTofdFlag(CIData& item, std::int32_t tofd) { item.TakeTofdFlag(tofd); }

std::array<std::uint32_t, 6> CIData::Ids() const {
  const utdata::ItemPlace& place = utdata::ItemAccess::PlaceOf(*this);
  if (!m_descriptor || !place.isHandedOut.load()) return place.ids.Load<6>();
  const utdata::MutexScope ids(m_inside->idLock);
  return utdata::IdsOf(*m_descriptor);
}

void CIData::PublishIds() { utdata::ItemAccess::PublishIds(*this, utdata::IdsOf(*m_descriptor)); }

void CIData::idata1_GetId(idata_typeId& id) const {
  if (!m_descriptor) return;
  const std::array<std::uint32_t, 6> ids = Ids();
  id = {ids[1],
        ids[2],
        ids[3],
        ids[4],
        static_cast<gdata_enumDataClass>(ids[5]),
        static_cast<eDataBookmarkType>(ids[0])};
}

CGDataTypeFDD* CIData::idata1_GetGInfoRef() { return m_record.get(); }

const CGDataTypeFDD* CIData::idata1_GetGInfoRef() const { return m_record.get(); }

CRDataTypeDD* CIData::idata1_GetInfoRef() const {
  HandOut();
  return m_descriptor.get();
}

const CRDataTypeDD* CIData::Descriptor() const { return m_descriptor.get(); }

void CIData::AttachTable(char* table, bool memoryMapped) {
  if (!m_descriptor) return;
  m_descriptor->SetDiskTable(table, memoryMapped);
  m_descriptor->SetDataLoaded(m_descriptor->GetDiskTable() != nullptr);
}

bool CIData::AttachTable(char* table, bool memoryMapped, std::uint64_t size) {
  if (!m_descriptor) return false;
  const bool isAttached = m_descriptor->SetDiskTable(table, memoryMapped, size) && table;
  m_descriptor->SetDataLoaded(isAttached);
  m_descriptor->SetVolumeLoaded(isAttached);
  return isAttached;
}

int CIData::idata0_Init() { return 0; }

IGDataSupplier* CIData::GetDocument() const { return m_document; }

int CIData::idata3_IsModified() const { return m_modified.load(std::memory_order_relaxed); }

int CIData::idata3_IsNew() const { return m_new.load(std::memory_order_relaxed); }

int CIData::idata1_ModifGetStatus() const {
  if (!m_descriptor) return 0;
  const LockScope lock(*this);
  return idata3_IsModified();
}

void CIData::idata1_ModifClear() {
  if (m_descriptor) idata3_ClearModified();
}

int CIData::idata1_NewGetStatus() const {
  if (!m_descriptor) return 1;
  const LockScope lock(*this);
  return idata3_IsNew();
}

void CIData::idata1_NewClear() {
  if (m_descriptor) idata3_ClearNew();
}

void CIData::idata3_Modified() {
  const LockScope lock(*this);
  m_modified.store(1, std::memory_order_relaxed);
}

void CIData::idata3_New() {
  const LockScope lock(*this);
  m_new.store(1, std::memory_order_relaxed);
}

void CIData::idata3_ClearModified() {
  const LockScope lock(*this);
  m_modified.store(0, std::memory_order_relaxed);
}

void CIData::idata3_ClearNew() {
  const LockScope lock(*this);
  m_new.store(0, std::memory_order_relaxed);
}
