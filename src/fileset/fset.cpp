// The file set: its construction and destruction, and five types of descriptor items.
#include "utdata/fset.h"

#include "src/fileset/contents.h"
#include "src/fileset/data_lists.h"
#include "src/items/recordids.h"

using utdata::IdsOf;
using utdata::QueryScope;
using utdata::WriterScope;

namespace {

void ReplaceIn(CIChan& item, const CGChanTypeDescr& d) { item.ichan1_ReplaceGInfo(&d); }
void ReplaceIn(CIPatch& item, const CGPatchTypeDescr& d) { item.ipatch1_ReplaceGInfo(&d); }
void ReplaceIn(CIProbe& item, const CGProbeTypeDescr& d) { item.iprob1_ReplaceGInfo(&d); }
void ReplaceIn(CIGate& item, const CGGateTypeDescr& d) { item.igate1_ReplaceGInfo(&d); }
void ReplaceIn(CISubChan& item, const CGSubchanTypeDescr& d) { item.ischa1_ReplaceGInfo(&d); }

// The operations that all types share; the caller holds the side that each needs.

template <class Items, class Descriptor>
auto* AddTo(Items& items, Descriptor* descriptor, int isNew) {
  using Item = typename Items::Item;
  return utdata::OrNull([&]() -> Item* {
    if (!descriptor || items.First(fset_All, IdsOf(*descriptor))) return nullptr;
    auto item = std::make_unique<Item>(descriptor, isNew);
    items.Add(item.get());
    return item.release();
  });
}

template <class Items, class Ids>
std::uint32_t RemoveFrom(Items& items, fset_enumFilters filter, const Ids& ids) {
  return items.Remove(filter, ids, [](auto* item) { delete item; }) ? 0 : 1;
}

template <class Items, class Descriptor>
auto* ReplaceAmong(Items& items, const Descriptor* descriptor) {
  using Item = typename Items::Item;
  return utdata::OrNull([&]() -> Item* {
    Item* const item = descriptor ? items.First(fset_All, IdsOf(*descriptor)) : nullptr;
    if (item) ReplaceIn(*item, *descriptor);
    return item;
  });
}

template <class List>
std::uint32_t CountOf(const List& list) {
  return static_cast<std::uint32_t>(list.GetCount());
}

}  // namespace

CFSet::CFSet(CDocument* document) : m_document(document), m_contents(std::make_unique<Contents>()) {
  UTDATA_ASSERT(document != nullptr);
  FillGateOrdering();
}

CFSet::CFSet(IGDataSupplier* supplier)
    : m_document(nullptr), m_contents(std::make_unique<Contents>()) {
  UTDATA_ASSERT(supplier != nullptr);
  FillGateOrdering();
}

// No other thread uses the set, so that no lock is needed.
CFSet::~CFSet() UTDATA_NO_THREAD_SAFETY_ANALYSIS {
  Contents& c = *m_contents;
  RemoveFrom(c.probes, fset_All, std::array{fset_AnyId});
  RemoveFrom(c.channels, fset_All, std::array{fset_AnyId});
  RemoveFrom(c.subChannels, fset_All, std::array{fset_AnyId, fset_AnyId});
  RemoveFrom(c.patches, fset_All, std::array{fset_AnyId});
  utdata::DeleteDataItems(c.data);
  utdata::DeleteDataItems(c.masters);
  RemoveFrom(c.gates, fset_All, std::array{fset_AnyId, fset_AnyId});
  for (CGWeldScanPlanDescr* plan : c.weldScanPlans) gweldsp_Delete(plan, 1);
  for (CGWeldFillDescr* fill : c.weldFills) gweldFill_Delete(fill, 1);
  delete c.info;
}

CDocument* CFSet::fset_GetDocument() const { return m_document; }

// The count is kept for reading without the lock.
std::uint32_t CFSet::fset_GetIChanCount() const UTDATA_NO_THREAD_SAFETY_ANALYSIS {
  return static_cast<std::uint32_t>(m_contents->channels.Count());
}

void CFSet::AssertValid() const {}

void CFSet::Dump(CDumpContext&) const {}

CIChan* CFSet::fset_AddGChan(CGChanTypeDescr* descriptor, int isNew) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return AddTo(c.channels, descriptor, isNew);
}

CIChan* CFSet::fset_GetIChan(fset_enumFilters filter, std::uint32_t chanId) {
  Contents& c = *m_contents;
  const QueryScope query(c, &Contents::channels);
  return query ? c.channels.First(filter, {chanId}) : nullptr;
}

std::uint32_t CFSet::fset_GetIChanLst(CIChanLst* out,
                                      fset_enumFilters filter,
                                      std::uint32_t chanId) {
  if (!out) return 0;
  Contents& c = *m_contents;
  const QueryScope query(c, &Contents::channels);
  if (query) c.channels.Append(filter, *out, {chanId});
  return CountOf(*out);
}

std::uint32_t CFSet::fset_RemoveGChan(fset_enumFilters filter, std::uint32_t chanId) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return RemoveFrom(c.channels, filter, std::array{chanId});
}

CIChan* CFSet::fset_ReplaceGChan(CGChanTypeDescr* descriptor) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return ReplaceAmong(c.channels, descriptor);
}

CIGate* CFSet::fset_AddGGate(CGGateTypeDescr* descriptor, int isNew) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return AddTo(c.gates, descriptor, isNew);
}

CIGate* CFSet::fset_GetIGate(fset_enumFilters filter, std::uint32_t gateId, std::uint32_t chanId) {
  Contents& c = *m_contents;
  const QueryScope query(c, &Contents::gates);
  return query ? c.gates.First(filter, {gateId, chanId}) : nullptr;
}

std::uint32_t CFSet::fset_GetIGateLst(CIGateLst* out,
                                      fset_enumFilters filter,
                                      std::uint32_t gateId,
                                      std::uint32_t chanId) {
  if (!out) return 0;
  Contents& c = *m_contents;
  const QueryScope query(c, &Contents::gates);
  if (query) c.gates.Append(filter, *out, {gateId, chanId});
  return CountOf(*out);
}

std::uint32_t CFSet::fset_RemoveGGate(fset_enumFilters filter,
                                      std::uint32_t gateId,
                                      std::uint32_t chanId) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return RemoveFrom(c.gates, filter, std::array{gateId, chanId});
}

CIGate* CFSet::fset_ReplaceGGate(CGGateTypeDescr* descriptor) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return ReplaceAmong(c.gates, descriptor);
}

CIPatch* CFSet::fset_AddGPatch(CGPatchTypeDescr* descriptor, int isNew) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return AddTo(c.patches, descriptor, isNew);
}

CIPatch* CFSet::fset_GetIPatch(fset_enumFilters filter, std::uint32_t patchId) {
  Contents& c = *m_contents;
  const QueryScope query(c, &Contents::patches);
  return query ? c.patches.First(filter, {patchId}) : nullptr;
}

std::uint32_t CFSet::fset_GetIPatchLst(CIPatchLst* out,
                                       fset_enumFilters filter,
                                       std::uint32_t patchId) {
  if (!out) return 0;
  Contents& c = *m_contents;
  const QueryScope query(c, &Contents::patches);
  if (query) c.patches.Append(filter, *out, {patchId});
  return CountOf(*out);
}

std::uint32_t CFSet::fset_RemoveGPatch(fset_enumFilters filter, std::uint32_t patchId) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return RemoveFrom(c.patches, filter, std::array{patchId});
}

CIPatch* CFSet::fset_ReplaceGPatch(CGPatchTypeDescr* descriptor) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return ReplaceAmong(c.patches, descriptor);
}

CIProbe* CFSet::fset_AddGProbe(CGProbeTypeDescr* descriptor, int isNew) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return AddTo(c.probes, descriptor, isNew);
}

CIProbe* CFSet::fset_GetIProbe(fset_enumFilters filter, std::uint32_t probeId) {
  Contents& c = *m_contents;
  const QueryScope query(c, &Contents::probes);
  return query ? c.probes.First(filter, {probeId}) : nullptr;
}

std::uint32_t CFSet::fset_GetIProbeLst(CIProbeLst* out,
                                       fset_enumFilters filter,
                                       std::uint32_t probeId) {
  if (!out) return 0;
  Contents& c = *m_contents;
  const QueryScope query(c, &Contents::probes);
  if (query) c.probes.Append(filter, *out, {probeId});
  return CountOf(*out);
}

std::uint32_t CFSet::fset_RemoveGProbe(fset_enumFilters filter, std::uint32_t probeId) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return RemoveFrom(c.probes, filter, std::array{probeId});
}

CIProbe* CFSet::fset_ReplaceGProbe(CGProbeTypeDescr* descriptor) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return ReplaceAmong(c.probes, descriptor);
}

CISubChan* CFSet::fset_AddGSubChan(CGSubchanTypeDescr* descriptor, int isNew) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return AddTo(c.subChannels, descriptor, isNew);
}

CISubChan* CFSet::fset_GetISubChan(fset_enumFilters filter,
                                   std::uint32_t subChanId,
                                   std::uint32_t chanId) {
  Contents& c = *m_contents;
  const QueryScope query(c, &Contents::subChannels);
  return query ? c.subChannels.First(filter, {subChanId, chanId}) : nullptr;
}

std::uint32_t CFSet::fset_GetISubChanLst(CISubChanLst* out,
                                         fset_enumFilters filter,
                                         std::uint32_t subChanId,
                                         std::uint32_t chanId) {
  if (!out) return 0;
  Contents& c = *m_contents;
  const QueryScope query(c, &Contents::subChannels);
  if (query) c.subChannels.Append(filter, *out, {subChanId, chanId});
  return CountOf(*out);
}

std::uint32_t CFSet::fset_RemoveGSubChan(fset_enumFilters filter,
                                         std::uint32_t subChanId,
                                         std::uint32_t chanId) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return RemoveFrom(c.subChannels, filter, std::array{subChanId, chanId});
}

CISubChan* CFSet::fset_ReplaceGSubChan(CGSubchanTypeDescr* descriptor) {
  Contents& c = *m_contents;
  const WriterScope writer(c.lock);
  return ReplaceAmong(c.subChannels, descriptor);
}
