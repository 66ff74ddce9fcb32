// The data item: its life, identity and status.
#include "utdata/idata.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "src/items/idatarecord.h"
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

CIData::CIData(CGDataTypeFDD* record, void* data, CVolumeSet* volumes, int external, long*)
    : m_external(external),
      m_data(data),
      m_volumes(volumes),
      m_document(volumes ? volumes->vol_GetDocument() : nullptr) {
  UTDATA_ASSERT(record && volumes);
  if (!record || !volumes) return;
  TerminateTexts(*record);
  utdata::NormaliseDataRecord(*record);
  bool meridio = false;
  CIData* const partner = MatchAmpPosCScans(record, volumes, meridio);
  const ChannelScanning scanning = ReadChannelScanning(record->channelId);
  UpdateBookmarkType(scanning.mode, record);
  m_record = std::make_unique<CGDataTypeFDD>(*record);
  m_descriptor.reset(
      new CRDataTypeDD(m_record.get(), meridio ? nullptr : partner, meridio ? partner : nullptr));
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
    m_master = this;
  }
}

CIData::CIData(void* data, CVolumeSet* volumes)
    : m_external(1),
      m_data(data),
      m_volumes(volumes),
      m_document(volumes ? volumes->vol_GetDocument() : nullptr) {}

CIData::~CIData() {
  [[maybe_unused]] const bool wasLive = m_live.End();
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

void CIData::idata9_DeferDelete() { delete this; }

bool CIData::IsValidObject(CIData* item) { return utdata::LiveDataItem::IsLive(item); }

void CIData::idata1_GetId(idata_typeId& id) const {
  if (!m_descriptor) return;
  id = {m_descriptor->GetPatchID(),
        m_descriptor->GetChannelID(),
        m_descriptor->GetSubChannelID(),
        m_descriptor->GetGateId(),
        m_descriptor->GetDataClass(),
        m_descriptor->GetDataBookmarkType()};
}

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
