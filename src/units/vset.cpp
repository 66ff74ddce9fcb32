#include "utdata/vset.h"

#include <algorithm>
#include <memory>
#include <new>

namespace {

constexpr std::uint32_t privateKind = 6;  ///< identities that are never shared
constexpr double limitBound = 1e15;

bool IsLimit(double value) { return value > -limitBound && value < limitBound; }

}  // namespace

CVolumeSet::CVolumeSet(IGDataSupplier* document,
                       unit_enumUnits,
                       const wchar_t*,
                       unit_enumUnits,
                       const wchar_t*)
    : m_document(document) {
  UTDATA_ASSERT(document != nullptr);
  m_baseSet = vol_CreateUnitSet(vset_groupId(privateKind, 0, 0, 0, 0), nullptr);
  if (!m_baseSet) throw std::bad_alloc();
}

CVolumeSet::~CVolumeSet() {
  DeleteUnitListContents();
  m_document = nullptr;
  m_baseSet = nullptr;
}

CUnitSet* CVolumeSet::vol_CreateUnitSet(const vset_groupId& identity, int* created) {
  CUnitSet* set = identity.kind == privateKind ? nullptr : GetUnitSet(identity);
  if (created) *created = 0;
  if (set) {
    ++set->m_referenceCount;
    return set;
  }
  try {
    auto newSet = std::make_unique<CUnitSet>(identity, this, m_baseSet);
    newSet->m_place = m_unitSets.AddTail(newSet.get());
    if (created) *created = 1;
    return newSet.release();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

CUnitSet* CVolumeSet::GetUnitSet(const vset_groupId& identity) const {
  const auto isEqual = [&identity](const CUnitSet* set) {
    const vset_groupId& other = set->GetIdentity();
    return other.kind == identity.kind && other.first == identity.first &&
           other.second == identity.second && other.third == identity.third;
  };
  const auto found = std::find_if(m_unitSets.begin(), m_unitSets.end(), isEqual);
  return found == m_unitSets.end() ? nullptr : *found;
}

void CVolumeSet::vol_DeleteUnitSet(CUnitSet** set) {
  CUnitSet* const released = set ? std::exchange(*set, nullptr) : nullptr;
  if (!released) return;
  const bool isOwn = released->m_volumeSet == this && released->m_place;
  UTDATA_ASSERT(isOwn && released->m_referenceCount > 0);
  if (--released->m_referenceCount != 0 || !isOwn) return;
  m_unitSets.RemoveAt(released->m_place);
  delete released;
}

void CVolumeSet::DeleteUnitListContents() {
  while (!m_unitSets.IsEmpty()) delete m_unitSets.RemoveHead();
  m_unitSets.RemoveAll();
}

CAxe* CVolumeSet::vol_GetAxis(kvt_enumAxis axis) {
  return axis < m_axes.size() ? &m_axes[axis] : nullptr;
}

CUnit* CVolumeSet::vol_GetBaseUnit(kvt_enumAxis axis) const {
  // Units of the base set itself are made before there is one.
  const CList<CUnit*>* units = m_baseSet ? m_baseSet->GetUnits(axis) : nullptr;
  return units && !units->IsEmpty() ? units->GetHead() : nullptr;
}

void CVolumeSet::vol_SetLimits(kvt_enumAxis axis, double start, double end) {
  if (axis >= m_axes.size() || !IsLimit(start) || !IsLimit(end)) return;
  m_limits[axis] = {start, end};
  m_axes[axis].SetStart(start);
  m_axes[axis].SetEnd(end);
}

std::pair<double, double> CVolumeSet::vol_GetLimits(kvt_enumAxis axis) const {
  return axis < m_limits.size() ? m_limits[axis] : std::pair<double, double>{};
}

IGDataSupplier* CVolumeSet::vol_GetDocument() const { return m_document; }

int CVolumeSet::vol_FillBaseUnits(std::span<const kvt_enumAxis> angleAxes) {
  int added = 0;
  const auto add = [this, &added](
                       kvt_enumAxis axis, unit_enumUnits family, unit_enumDataUnit dataUnit) {
    if (vol_GetBaseUnit(axis)) return;
    if (!m_baseSet->AppendUnit(
            axis,
            std::make_unique<CUnit>(family, dataUnit, unit_ConversionLinear, 1.0, 0.0, nullptr)))
      throw std::bad_alloc();
    ++added;
  };
  for (const kvt_enumAxis axis : {kvt_AxisColumn, kvt_AxisRow, kvt_AxisFifth, kvt_AxisSixth}) {
    const bool isAngle = std::find(angleAxes.begin(), angleAxes.end(), axis) != angleAxes.end();
    add(axis, isAngle ? unit_Angle : unit_Length, isAngle ? unit_Degree : unit_Metre);
  }
  add(kvt_AxisSample, unit_HalfPath, unit_Metre);
  add(kvt_AxisAmplitude, unit_Percent, unit_DataPercent);
  return added;
}
