// The file set: its general-information item, its weld descriptors, and the modified and new flags
// of all items.
#include <utility>

#include "src/fileset/contents.h"
#include "src/fileset/data_lists.h"

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
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  if (c.info) return nullptr;
  c.info = new CIInfo(descriptor, isNew);
  return c.info;
}

CIInfo* CFSet::fset_GetIInfo(fset_enumFilters filter) {
  Contents& c = *m_contents;
  const ReaderScope reader(c.lock, queryTimeoutMs);
  return reader && Passes(c.info, filter) ? c.info : nullptr;
}

std::uint32_t CFSet::fset_RemoveGInfo(fset_enumFilters filter) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  if (!Passes(c.info, filter)) return 1;
  delete std::exchange(c.info, nullptr);
  return 0;
}

CIInfo* CFSet::fset_ReplaceGInfo(CGInfoTypeDescr* descriptor) {
  if (!descriptor) return nullptr;
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  if (c.info) c.info->iinfo1_ReplaceGInfo(descriptor);
  return c.info;
}

// Weld descriptors.

CGWeldFillDescr* CFSet::fset_AddGWeldFill(CGWeldFillDescr* descriptor) {
  if (!descriptor) return nullptr;
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  if (CGWeldFillDescr* stored = fset_GetGWeldFill(descriptor->weldId, descriptor->fillId))
    return stored;
  CGWeldFillDescr* copy = gweldFill_Allocate(0, nullptr);
  if (!copy) return nullptr;
  *copy = *descriptor;
  const utdata::MutexScope weld(c.weldLock);
  c.weldFills.push_back(copy);
  return descriptor;
}

CGWeldScanPlanDescr* CFSet::fset_AddGWeldScanPlan(CGWeldScanPlanDescr* descriptor) {
  if (!descriptor) return nullptr;
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  if (CGWeldScanPlanDescr* stored = fset_GetGWeldScanPlan(descriptor->weldId, descriptor->planId))
    return stored;
  CGWeldScanPlanDescr* copy = gweldsp_Allocate(0, nullptr);
  if (!copy) return nullptr;
  *copy = *descriptor;
  const utdata::MutexScope weld(c.weldLock);
  c.weldScanPlans.push_back(copy);
  return descriptor;
}

CGWeldFillDescr* CFSet::fset_GetGWeldFill(std::uint32_t weldId, std::uint32_t fillId) const {
  Contents& c = *m_contents;
  const ReaderScope reader(c.lock, queryTimeoutMs);
  if (!reader) return nullptr;
  const utdata::MutexScope weld(c.weldLock);
  return FindWeld(c.weldFills, weldId, fillId);
}

CGWeldScanPlanDescr* CFSet::fset_GetGWeldScanPlan(std::uint32_t weldId,
                                                  std::uint32_t planId) const {
  Contents& c = *m_contents;
  const ReaderScope reader(c.lock, queryTimeoutMs);
  if (!reader) return nullptr;
  const utdata::MutexScope weld(c.weldLock);
  return FindWeld(c.weldScanPlans, weldId, planId);
}

std::vector<CGWeldFillDescr*> CFSet::fset_GetGWeldFillList() const {
  Contents& c = *m_contents;
  const utdata::MutexScope weld(c.weldLock);
  return c.weldFills;
}

std::vector<CGWeldScanPlanDescr*> CFSet::fset_GetGWeldScanPlanList() const {
  Contents& c = *m_contents;
  const utdata::MutexScope weld(c.weldLock);
  return c.weldScanPlans;
}

// Status.

int CFSet::fset_IsModified() const {
  Contents& c = *m_contents;
  const ReaderScope reader(c.lock, queryTimeoutMs);
  if (!reader) return 0;
  return HasAny(c.patches, fset_Modified, everyId) || HasAny(c.probes, fset_Modified, everyId) ||
                 HasAny(c.channels, fset_Modified, everyId) ||
                 HasAny(c.subChannels, fset_Modified, everyIdPair) ||
                 HasAny(c.gates, fset_Modified, everyIdPair) ||
                 HasAny(c.data, fset_Modified, utdata::everyDataItem) ||
                 HasAny(c.data, fset_New, utdata::everyDataItem) || Passes(c.info, fset_Modified)
             ? 1
             : 0;
}

void CFSet::fset_ClearModified() {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  utdata::ClearEach(c.patches, fset_Modified, everyId, &CIPatch::ipatch1_ModifClear);
  utdata::ClearEach(c.probes, fset_Modified, everyId, &CIProbe::iprob1_ModifClear);
  utdata::ClearEach(c.channels, fset_Modified, everyId, &CIChan::ichan1_ModifClear);
  utdata::ClearEach(c.subChannels, fset_Modified, everyIdPair, &CISubChan::ischa1_ModifClear);
  utdata::ClearEach(c.gates, fset_Modified, everyIdPair, &CIGate::igate1_ModifClear);
  utdata::ClearEach(c.data, fset_Modified, utdata::everyDataItem, &CIData::idata1_ModifClear);
  if (Passes(c.info, fset_Modified)) c.info->iinfo1_ModifClear();
}

void CFSet::fset_ClearNew() {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  utdata::ClearEach(c.data, fset_New, utdata::everyDataItem, &CIData::idata1_NewClear);
}
