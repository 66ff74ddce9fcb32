// The file set: its general-information item, its weld descriptors, and the status of everything in
// it.
#include <utility>

#include "src/fileset/data_lists.h"
#include "utdata/fset.h"

using utdata::queryTimeoutMs;
using utdata::ReaderScope;
using utdata::WriterScope;

namespace {

constexpr std::array everyId{fset_AnyId};
constexpr std::array everyIdPair{fset_AnyId, fset_AnyId};

template <class Descriptor>
Descriptor* FindWeld(const std::vector<Descriptor*>& stored,
                     std::uint32_t first,
                     std::uint32_t second) {
  const SCFile::GroupIdentity wanted = {{first, second}};
  for (Descriptor* descriptor : stored)
    if (SCFile::file_Identity(*descriptor) == wanted) return descriptor;
  return nullptr;
}

bool Passes(const CIInfo* info, fset_enumFilters filter) {
  return info && utdata::PassesFilter(
                     filter,
                     [info] { return info->iinfo1_ModifGetStatus(); },
                     [info] { return info->iinfo1_NewGetStatus(); },
                     false);
}

template <class Items, class Ids>
bool HasAny(const Items& items, fset_enumFilters filter, const Ids& every) {
  return items.First(filter, every) != nullptr;
}

}  // namespace

// General information.

CIInfo* CFSet::fset_AddGInfo(CGInfoTypeDescr* descriptor, int isNew) {
  if (!descriptor) return nullptr;
  const WriterScope writer(m_lock);
  if (m_info) return nullptr;
  m_info = new CIInfo(descriptor, isNew);
  return m_info;
}

CIInfo* CFSet::fset_GetIInfo(fset_enumFilters filter) {
  const ReaderScope reader(m_lock, queryTimeoutMs);
  return reader && Passes(m_info, filter) ? m_info : nullptr;
}

std::uint32_t CFSet::fset_RemoveGInfo(fset_enumFilters filter) {
  const WriterScope writer(m_lock);
  if (!Passes(m_info, filter)) return 1;
  delete std::exchange(m_info, nullptr);
  return 0;
}

CIInfo* CFSet::fset_ReplaceGInfo(CGInfoTypeDescr* descriptor) {
  if (!descriptor) return nullptr;
  const WriterScope writer(m_lock);
  if (m_info) m_info->iinfo1_ReplaceGInfo(descriptor);
  return m_info;
}

// Weld descriptors.

CGWeldFillDescr* CFSet::fset_AddGWeldFill(CGWeldFillDescr* descriptor) {
  if (!descriptor) return nullptr;
  const WriterScope writer(m_lock);
  if (CGWeldFillDescr* stored = fset_GetGWeldFill(descriptor->weldId, descriptor->fillId))
    return stored;
  CGWeldFillDescr* copy = gweldFill_Allocate(0, nullptr);
  if (!copy) return nullptr;
  *copy = *descriptor;
  const utdata::MutexScope weld(m_weldLock);
  m_weldFills.push_back(copy);
  return descriptor;
}

CGWeldScanPlanDescr* CFSet::fset_AddGWeldScanPlan(CGWeldScanPlanDescr* descriptor) {
  if (!descriptor) return nullptr;
  const WriterScope writer(m_lock);
  if (CGWeldScanPlanDescr* stored = fset_GetGWeldScanPlan(descriptor->weldId, descriptor->planId))
    return stored;
  CGWeldScanPlanDescr* copy = gweldsp_Allocate(0, nullptr);
  if (!copy) return nullptr;
  *copy = *descriptor;
  const utdata::MutexScope weld(m_weldLock);
  m_weldScanPlans.push_back(copy);
  return descriptor;
}

CGWeldFillDescr* CFSet::fset_GetGWeldFill(std::uint32_t weldId, std::uint32_t fillId) const {
  const ReaderScope reader(m_lock, queryTimeoutMs);
  if (!reader) return nullptr;
  const utdata::MutexScope weld(m_weldLock);
  return FindWeld(m_weldFills, weldId, fillId);
}

CGWeldScanPlanDescr* CFSet::fset_GetGWeldScanPlan(std::uint32_t weldId,
                                                  std::uint32_t planId) const {
  const ReaderScope reader(m_lock, queryTimeoutMs);
  if (!reader) return nullptr;
  const utdata::MutexScope weld(m_weldLock);
  return FindWeld(m_weldScanPlans, weldId, planId);
}

std::vector<CGWeldFillDescr*> CFSet::fset_GetGWeldFillList() const {
  const utdata::MutexScope weld(m_weldLock);
  return m_weldFills;
}

std::vector<CGWeldScanPlanDescr*> CFSet::fset_GetGWeldScanPlanList() const {
  const utdata::MutexScope weld(m_weldLock);
  return m_weldScanPlans;
}

// Status.

int CFSet::fset_IsModified() const {
  const ReaderScope reader(m_lock, queryTimeoutMs);
  if (!reader) return 0;
  return HasAny(m_patches, fset_Modified, everyId) || HasAny(m_probes, fset_Modified, everyId) ||
                 HasAny(m_channels, fset_Modified, everyId) ||
                 HasAny(m_subChannels, fset_Modified, everyIdPair) ||
                 HasAny(m_gates, fset_Modified, everyIdPair) ||
                 HasAny(m_data, fset_Modified, utdata::everyDataItem) ||
                 HasAny(m_data, fset_New, utdata::everyDataItem) || Passes(m_info, fset_Modified)
             ? 1
             : 0;
}

void CFSet::fset_ClearModified() {
  const WriterScope writer(m_lock);
  utdata::ClearEach(m_patches, fset_Modified, everyId, &CIPatch::ipatch1_ModifClear);
  utdata::ClearEach(m_probes, fset_Modified, everyId, &CIProbe::iprob1_ModifClear);
  utdata::ClearEach(m_channels, fset_Modified, everyId, &CIChan::ichan1_ModifClear);
  utdata::ClearEach(m_subChannels, fset_Modified, everyIdPair, &CISubChan::ischa1_ModifClear);
  utdata::ClearEach(m_gates, fset_Modified, everyIdPair, &CIGate::igate1_ModifClear);
  utdata::ClearEach(m_data, fset_Modified, utdata::everyDataItem, &CIData::idata1_ModifClear);
  if (Passes(m_info, fset_Modified)) m_info->iinfo1_ModifClear();
}

void CFSet::fset_ClearNew() {
  const WriterScope writer(m_lock);
  utdata::ClearEach(m_data, fset_New, utdata::everyDataItem, &CIData::idata1_NewClear);
}
