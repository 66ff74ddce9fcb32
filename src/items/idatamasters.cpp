// The data item: a multi-channel master and its elements.
#include <algorithm>
#include <tuple>
#include <vector>

#include "src/foundation/dataclass.h"
#include "src/items/idatainside.h"
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
  return (Ids()[5] & gdata_MultiChannelMaster) != 0;
}

bool CIData::idata1_IsMultiChannelElement() const {
  const std::array<std::uint32_t, 6> ids = Ids();
  return ids[3] != 0 && utdata::IsGathered(static_cast<gdata_enumDataClass>(ids[5])) &&
         m_inside->master.Get();
}

/// The item whose list this one is in, or null.
CIData* CIData::ListedBy() const {
  const LockScope lock(*this);
  return m_inside->placeAmongElements ? m_inside->master.Get() : nullptr;
}

/// Whether this item is in an item's list, or in that of one that is.
bool CIData::IsUnder(const CIData& item) const {
  int levels = 64;  // nobody nests that deep
  for (const CIData* up = ListedBy(); up && levels > 0; up = up->ListedBy(), --levels)
    if (up == &item) return true;
  return false;
}

bool CIData::idata1_SubChannelAdd(CIData* element) {
  const bool isFit = element && element != this && element->m_descriptor && m_descriptor &&
                     m_elements && !IsUnder(*element);
  UTDATA_ASSERT(isFit);
  if (!isFit) return true;
  for (;;) {
    // The locks of two masters are taken one after the other, never both.
    if (CIData* const former = element->ListedBy()) former->TakeOut(*element);
    const LockScope lock(*this);
    const LockScope elementLock(*element);
    if (element->m_inside->placeAmongElements) continue;  // another thread has added it meanwhile
    CheckLayout(*m_descriptor, *element->m_descriptor);
    element->m_inside->placeAmongElements = m_elements->AddTail(element);
    element->m_inside->master = this;
    m_descriptor->SetDataType(element->m_descriptor->GetDataType());
    {
      const utdata::MutexScope ids(m_inside->idLock);
      m_descriptor->subChannelId =
          std::max(m_descriptor->subChannelId, element->m_descriptor->subChannelId);
    }
    PublishIds();
    return true;
  }
}

/// Takes an element out of this item's list. Whether it was there.
bool CIData::TakeOut(CIData& element) {
  const LockScope lock(*this);
  const LockScope elementLock(element);
  if (!element.m_inside->placeAmongElements || element.m_inside->master.Get() != this) return false;
  m_elements->RemoveAt(element.m_inside->placeAmongElements);
  element.m_inside->placeAmongElements = nullptr;
  return true;
}

bool CIData::idata1_SubChannelRemove(CIData* element) {
  const bool wasElement = element && TakeOut(*element);
  UTDATA_ASSERT(wasElement);
  return true;
}

CIDataLst* CIData::idata1_SubChannelGetList() const { return m_elements.get(); }

CIData* CIData::idata1_SubChannelMaster() const { return m_inside->master.Get(); }

CIData* CIData::idata1_SubChannelLastModifiedGet() const { return nullptr; }

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
  std::vector<CIData*> ordered;
  if (m_elements) ordered.assign(m_elements->begin(), m_elements->end());
  std::stable_sort(ordered.begin(), ordered.end(), [](const CIData* a, const CIData* b) {
    return SubChannelOrder(a) < SubChannelOrder(b);
  });
  out->RemoveAll();
  out->Reserve(static_cast<std::ptrdiff_t>(ordered.size()));
  for (CIData* element : ordered) out->AddTail(element);
}

void CIData::idata1_UpdateMasterChannel() {
  if (!idata1_IsMultiChannelMaster() || !m_elements) return;
  const LockScope lock(*this);
  if (m_elements->IsEmpty()) return;
  const CIData& first = *m_elements->GetHead();
  const LockScope elementLock(first);
  CRDataTypeDD next(*first.m_descriptor);
  const std::uint32_t c = utdata::ClassOfElements(m_descriptor->dataClass);
  if (c == gdata_CScanAmplitude || c == gdata_CScanPosition) {
    next.SetMatchedCScan(m_descriptor->GetMatchedCScan());
    next.SetMeridioAmpCscan(m_descriptor->GetMeridioAmpCscan());
  }
  next.dataClass = utdata::WithMasterBit(next.dataClass);
  next.subChannelId = m_descriptor->subChannelId;
  next.dataPointer = nullptr;
  if (!m_external) m_descriptor->Flush(0);
  {
    const utdata::MutexScope ids(m_inside->idLock);  // queries see the master before or after
    *m_descriptor = next;
  }
  PublishIds();
  UpdateUnits();  // the descriptor has taken over the element's point units
}

void CIData::NotifyChangeToConsList() {}

void CIData::SetDataBookmarkTypeofAssociatedChannel(const eDataBookmarkType& type) {
  CIData* const master = m_inside->master.Get();
  if (!master) return;
  const eDataBookmarkType given = type;  // may stand in one of the records that change
  const LockScope lock(*master);
  for (std::uint32_t number = 1; number <= master->idata1_SubChannelQty(); ++number) {
    CIData* const element = master->idata1_SubChannelGet(static_cast<long>(number));
    UTDATA_ASSERT(element != nullptr);
    if (element) element->GiveBookmarkType(given);
  }
  master->GiveBookmarkType(given);
}

void CIData::GiveBookmarkType(eDataBookmarkType type) {
  const LockScope lock(*this);
  m_record->SetDataBookmarkType(type);
  {
    const utdata::MutexScope ids(m_inside->idLock);
    m_descriptor->SetDataBookmarkType(type);
  }
  PublishIds();
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
      m_inside->master.Get();  // null where that is the item itself, which counts as gone by now
  if (!master) return;
  if (m_inside->placeAmongElements) master->idata1_SubChannelRemove(this);
  master->ReturnTableOf(*this);
}

void CIData::LetElementsGo() {
  if (!m_elements) return;
  for (CIData* element : *m_elements) {
    const LockScope lock(*element);
    element->m_inside->master = nullptr;
    element->m_inside->placeAmongElements = nullptr;
  }
}
