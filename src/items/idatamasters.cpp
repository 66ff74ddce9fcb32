// The data item: a multi-channel master and its elements.
#include <algorithm>
#include <tuple>
#include <vector>

#include "src/items/idatarecord.h"
#include "utdata/idata.h"
#include "utdata/idatalst.h"

namespace {

void CheckLayout(const CRDataTypeDD& master, const CRDataTypeDD& element) {
  UTDATA_ASSERT(std::equal(
      std::begin(master.layoutWords), std::end(master.layoutWords), element.layoutWords));
  UTDATA_ASSERT(master.columnQuantity == element.columnQuantity);
  UTDATA_ASSERT(master.columnResolution == element.columnResolution);
  UTDATA_ASSERT(master.columnUnits == element.columnUnits);
  UTDATA_ASSERT(master.rowQuantity == element.rowQuantity);
  UTDATA_ASSERT(master.rowResolution == element.rowResolution);
  UTDATA_ASSERT(master.rowUnits == element.rowUnits);
}

auto SubChannelOrder(const CIData* item) {
  idata_typeId id;
  item->idata1_GetId(id);
  return std::tuple(
      static_cast<std::int32_t>(id.bookmarkType), id.channelId, id.subChannelId, id.gateId);
}

}  // namespace

bool CIData::idata1_IsMultiChannelMaster() const {
  return m_descriptor && (m_descriptor->GetDataClass() & gdata_MultiChannelMaster);
}

bool CIData::idata1_IsMultiChannelElement() const {
  if (!m_descriptor || m_descriptor->GetSubChannelID() == 0) return false;
  return utdata::IsGathered(m_descriptor->GetDataClass()) && m_master.Get();
}

bool CIData::idata1_SubChannelAdd(CIData* element) {
  const bool isFit = element && element != this && element->m_descriptor &&
                     !element->m_placeAmongElements && element->idata1_SubChannelQty() == 0 &&
                     m_descriptor && m_elements;
  UTDATA_ASSERT(isFit);
  if (!isFit) return true;
  const HomeScope home(*this);
  const LockScope lock(*this);
  const LockScope elementLock(*element);
  CheckLayout(*m_descriptor, *element->m_descriptor);
  m_descriptor->SetDataType(element->m_descriptor->GetDataType());
  element->m_master = this;
  element->m_placeAmongElements = m_elements->AddTail(element);
  m_descriptor->subChannelId =
      std::max(m_descriptor->subChannelId, element->m_descriptor->subChannelId);
  return true;
}

bool CIData::idata1_SubChannelRemove(CIData* element) {
  const LockScope lock(*this);
  const bool isElement =
      element && element->m_placeAmongElements && element->m_master.Get() == this;
  UTDATA_ASSERT(isElement);
  if (!isElement) return true;
  m_elements->RemoveAt(element->m_placeAmongElements);
  element->m_placeAmongElements = nullptr;
  return true;
}

CIData* CIData::idata1_SubChannelGet(long n) {
  if (!m_elements) return this;
  if (n <= static_cast<long>(m_elements->GetCount()))
    for (CIData* element : *m_elements)
      if (n == static_cast<long>(element->m_descriptor->GetSubChannelID())) return element;
  return m_elements->IsEmpty() ? nullptr : m_elements->GetHead();
}

std::uint32_t CIData::idata1_SubChannelQty() const {
  return m_elements ? static_cast<std::uint32_t>(m_elements->GetCount()) : 0;
}

void CIData::GetOrderedSubChannelList(CIDataLst* out) const {
  UTDATA_ASSERT(out != nullptr && out != m_elements.get());
  if (!out || out == m_elements.get()) return;
  out->RemoveAll();
  if (!m_elements) return;
  std::vector<CIData*> ordered(m_elements->begin(), m_elements->end());
  std::stable_sort(ordered.begin(), ordered.end(), [](const CIData* a, const CIData* b) {
    return SubChannelOrder(a) < SubChannelOrder(b);
  });
  for (CIData* element : ordered) out->AddTail(element);
}

void CIData::idata1_UpdateMasterChannel() {
  if (!idata1_IsMultiChannelMaster() || !m_elements) return;
  const HomeScope home(*this);
  const LockScope lock(*this);
  if (m_elements->IsEmpty()) return;
  const CIData& first = *m_elements->GetHead();
  const LockScope elementLock(first);
  const std::uint32_t subChannelId = m_descriptor->subChannelId;
  const std::uint32_t c = utdata::ClassOfElements(m_descriptor->dataClass);
  const bool keepsLinks = c == gdata_CScanAmplitude || c == gdata_CScanPosition;
  const utdata::DataItemLink matched(m_descriptor->GetMatchedCScan());
  const utdata::DataItemLink meridio(m_descriptor->GetMeridioAmpCscan());
  if (!m_external) m_descriptor->Flush(0);
  *m_descriptor = *first.m_descriptor;
  if (keepsLinks) {
    m_descriptor->SetMatchedCScan(matched.Get());
    m_descriptor->SetMeridioAmpCscan(meridio.Get());
  }
  m_descriptor->dataClass =
      static_cast<gdata_enumDataClass>(m_descriptor->dataClass | gdata_MultiChannelMaster);
  m_descriptor->subChannelId = subChannelId;
  m_descriptor->dataPointer = nullptr;
  UpdateUnits();  // the descriptor has taken over the element's point units
}

void CIData::SetDataBookmarkTypeofAssociatedChannel(const eDataBookmarkType& type) {
  CIData* const master = m_master.Get();
  if (!master) return;
  const eDataBookmarkType given = type;  // may stand in one of the records that change
  for (std::uint32_t number = 1; number <= master->idata1_SubChannelQty(); ++number) {
    CIData* const element = master->idata1_SubChannelGet(static_cast<long>(number));
    UTDATA_ASSERT(element != nullptr);
    if (element) element->GiveBookmarkType(given);
  }
  master->GiveBookmarkType(given);
}

void CIData::GiveBookmarkType(eDataBookmarkType type) {
  const HomeScope home(*this);
  const LockScope lock(*this);
  m_record->SetDataBookmarkType(type);
  m_descriptor->SetDataBookmarkType(type);
}

/// The master's table may be one that it shares with an element, which must not be followed once
/// the element is destroyed.
void CIData::ReturnTableOf(const CIData& element) {
  const LockScope lock(*this);
  std::uint32_t* const table = m_descriptor->GetDiskTable();
  if (!table || m_descriptor->IsDataOwned() || table != element.m_descriptor->GetDiskTable())
    return;
  m_descriptor->SetDiskTable(nullptr, m_descriptor->GetUseMemoryMappedFilePointer());
  m_descriptor->SetDataLoaded(false);
  m_descriptor->SetVolumeLoaded(false);
}

void CIData::LeaveMaster() {
  CIData* const master =
      m_master.Get();  // null where that is the item itself, which counts as gone by now
  if (!master) return;
  if (m_placeAmongElements) master->idata1_SubChannelRemove(this);
  master->ReturnTableOf(*this);
}

void CIData::LetElementsGo() {
  if (!m_elements) return;
  for (CIData* element : *m_elements) {
    const LockScope lock(*element);
    element->m_master = nullptr;
    element->m_placeAmongElements = nullptr;
  }
}
