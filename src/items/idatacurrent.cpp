// The data item: the units that are chosen to show its axes, and how a choice reaches the other
// data groups of its channel.
#include <algorithm>
#include <limits>

#include "src/items/idatainside.h"
#include "utdata/fset.h"
#include "utdata/idata.h"
#include "utdata/idatalst.h"
#include "utdata/supplier.h"
#include "utdata/unitset.h"

namespace {

/// The place of an axis's current unit, of which the sample axis has two.
std::size_t SlotOf(kvt_enumAxis axis, int alternative) {
  constexpr std::size_t alternativeSample = 6;
  return axis == kvt_AxisSample && alternative ? alternativeSample : std::size_t{axis};
}

int DigitsOf(long precision) {
  return static_cast<int>(std::clamp<long>(
      precision, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

}  // namespace

CUnitSet* CIData::idata3_UnitsGet() const { return m_pUnitInfo; }

CVolumeSet* CIData::idata3_GetVSet() const { return m_volumes; }

CUnit* CIData::idata3_GetUnit(kvt_enumAxis axis,
                              unit_enumUnits family,
                              unit_enumDataUnit unit) const {
  if (axis >= m_pointUnits.size()) return nullptr;
  if (family == unit_Point) return m_pointUnits[axis];
  return m_pUnitInfo ? m_pUnitInfo->GetUnit(axis, family, unit) : nullptr;
}

CUnit* CIData::idata3_GetCurrentUnit(kvt_enumAxis axis, int alternative) const {
  if (axis >= m_pointUnits.size()) return nullptr;
  const CUnit* const chosen = m_currentUnits[SlotOf(axis, alternative)];
  if (!chosen) return nullptr;
  unit_enumUnits family;
  unit_enumDataUnit dataUnit;
  chosen->GetUnitType(family, dataUnit);
  return idata3_GetUnit(axis, family, dataUnit);
}

void CIData::SetCurrentUnitType(kvt_enumAxis axis,
                                unit_enumUnits family,
                                unit_enumDataUnit unit,
                                int alternative,
                                int) {
  CUnit* const chosen = idata3_GetUnit(axis, family, unit);
  if (chosen) m_currentUnits[SlotOf(axis, alternative)] = chosen;
}

template <class Operation>
void CIData::ForMasterAndElements(Operation operation) {
  CIData* const master = idata1_IsMultiChannelElement() ? idata1_SubChannelMaster() : nullptr;
  CIData& head = master ? *master : *this;
  const LockScope lock(head);
  if (head.m_elements)
    for (CIData* element : *head.m_elements) operation(*element);
  operation(head);
}

void CIData::SetMasterCurrentUnitType(kvt_enumAxis axis,
                                      unit_enumUnits family,
                                      unit_enumDataUnit unit,
                                      int alternative,
                                      int notify) {
  ForMasterAndElements(
      [=](CIData& item) { item.SetCurrentUnitType(axis, family, unit, alternative, notify); });
}

void CIData::UpdateLinkedDatagroup(kvt_enumAxis axis,
                                   unit_enumUnits family,
                                   unit_enumDataUnit unit,
                                   int alternative,
                                   int notify) {
  CFSet* const set = m_document ? m_document->GetFileSet() : nullptr;
  if (!set || !m_descriptor) return;
  const std::uint32_t channelId = Ids()[2];
  CIDataLst masters;
  set->fset_GetMSCIDataLst(&masters);
  for (CIData* master : masters)
    if (master->Ids()[2] == channelId)
      master->SetMasterCurrentUnitType(axis, family, unit, alternative, notify);
}

void CIData::idata3_SetCurrentUnit(kvt_enumAxis axis, CUnit* unit, int alternative) {
  UTDATA_ASSERT(unit != nullptr);
  if (!unit) return;
  unit_enumUnits family;
  unit_enumDataUnit dataUnit;
  unit->GetUnitType(family, dataUnit);
  SetMasterCurrentUnitType(axis, family, dataUnit, alternative, 1);
  UpdateLinkedDatagroup(axis, family, dataUnit, alternative, 1);
}

void CIData::idata3_SetCurrentUnitWithoutNotification(kvt_enumAxis axis,
                                                      CUnit* unit,
                                                      int alternative) {
  UTDATA_ASSERT(unit != nullptr);
  if (!unit) return;
  unit_enumUnits family;
  unit_enumDataUnit dataUnit;
  unit->GetUnitType(family, dataUnit);
  SetMasterCurrentUnitType(axis, family, dataUnit, alternative, 0);
}

void CIData::SetUnitPrecision(kvt_enumAxis axis, int alternative, long precision) {
  if (CUnit* const current = idata3_GetCurrentUnit(axis, alternative))
    current->SetDisplayPrecision(DigitsOf(precision));
}

void CIData::SetMasterUnitPrecision(kvt_enumAxis axis, int alternative, long precision) {
  ForMasterAndElements([=](CIData& item) { item.SetUnitPrecision(axis, alternative, precision); });
}

void CIData::idata3_RestoreUnit(kvt_enumAxis axis,
                                unit_enumUnits family,
                                unit_enumDataUnit unit,
                                long precision,
                                int alternative) {
  SetMasterCurrentUnitType(axis, family, unit, alternative, 0);
  SetMasterUnitPrecision(axis, alternative, precision);
  SetUnitPrecision(axis, alternative, precision);
  SetUnitRestored(1);
}

int CIData::IsUnitRestored() const {
  const CIData* const master = idata1_IsMultiChannelElement() ? idata1_SubChannelMaster() : nullptr;
  return (master ? master : this)->m_unitRestored.load(std::memory_order_relaxed);
}

void CIData::SetUnitRestored(int restored) {
  ForMasterAndElements(
      [=](CIData& item) { item.m_unitRestored.store(restored, std::memory_order_relaxed); });
}
