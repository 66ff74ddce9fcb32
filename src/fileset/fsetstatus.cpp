// The file set: its general-information item, its weld descriptors, and the modified and new flags
// of all items.
#include <memory>
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

/// Appends a copy. @return the descriptor; null without memory
template <class Descriptor>
Descriptor* AddWeld(Descriptor& descriptor,
                    std::vector<Descriptor*>& stored,
                    Descriptor* (*allocate)(int, const wchar_t*),
                    void (*remove)(Descriptor*, int)) {
  return utdata::OrNull([&]() -> Descriptor* {
    const auto whole = [remove](Descriptor* copy) { remove(copy, 1); };
    std::unique_ptr<Descriptor, decltype(whole)> copy(allocate(0, nullptr), whole);
    if (!copy) return nullptr;
    *copy = descriptor;
    stored.push_back(copy.get());
    copy.release();
    return &descriptor;
  });
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
  c.info = utdata::OrNull([&] { return new CIInfo(descriptor, isNew); });
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
  CIInfo* const info = c.info;
  return utdata::OrNull([=] {
    if (info) info->iinfo1_ReplaceGInfo(descriptor);
    return info;
  });
}

// Weld descriptors.

CGWeldFillDescr* CFSet::fset_AddGWeldFill(CGWeldFillDescr* descriptor) {
  if (!descriptor) return nullptr;
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  if (CGWeldFillDescr* stored = fset_GetGWeldFill(descriptor->weldId, descriptor->fillId))
    return stored;
  const utdata::MutexScope weld(c.weldLock);
  return AddWeld(*descriptor, c.weldFills, gweldFill_Allocate, gweldFill_Delete);
}

CGWeldScanPlanDescr* CFSet::fset_AddGWeldScanPlan(CGWeldScanPlanDescr* descriptor) {
  if (!descriptor) return nullptr;
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  if (CGWeldScanPlanDescr* stored = fset_GetGWeldScanPlan(descriptor->weldId, descriptor->planId))
    return stored;
  const utdata::MutexScope weld(c.weldLock);
  return AddWeld(*descriptor, c.weldScanPlans, gweldsp_Allocate, gweldsp_Delete);
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
