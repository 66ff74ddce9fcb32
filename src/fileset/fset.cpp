// The file set: its life, its six types of descriptor items, and their status as a whole.
#include "utdata/fset.h"

#include <type_traits>

#include "src/fileset/data_lists.h"

using utdata::queryTimeoutMs;
using utdata::ReaderScope;
using utdata::WriterScope;

namespace {

// The ids of a descriptor, in the order of its type's lookups.
std::array<std::uint32_t, 1> IdsOf(const CGChanTypeDescr& d) { return {d.channelId}; }
std::array<std::uint32_t, 1> IdsOf(const CGPatchTypeDescr& d) { return {d.patchId}; }
std::array<std::uint32_t, 1> IdsOf(const CGProbeTypeDescr& d) { return {d.probeId}; }
std::array<std::uint32_t, 2> IdsOf(const CGGateTypeDescr& d) { return {d.gateId, d.channelId}; }
std::array<std::uint32_t, 2> IdsOf(const CGSubchanTypeDescr& d) {
  return {d.subChannelId, d.channelId};
}

void ReplaceIn(CIChan& item, const CGChanTypeDescr& d) { item.ichan1_ReplaceGInfo(&d); }
void ReplaceIn(CIPatch& item, const CGPatchTypeDescr& d) { item.ipatch1_ReplaceGInfo(&d); }
void ReplaceIn(CIProbe& item, const CGProbeTypeDescr& d) { item.iprob1_ReplaceGInfo(&d); }
void ReplaceIn(CIGate& item, const CGGateTypeDescr& d) { item.igate1_ReplaceGInfo(&d); }
void ReplaceIn(CISubChan& item, const CGSubchanTypeDescr& d) { item.ischa1_ReplaceGInfo(&d); }

// The operations that all types share; the caller holds the side that each needs.

template <class Items, class Descriptor>
auto* AddTo(Items& items, Descriptor* descriptor, int isNew) {
  using Item = typename Items::Item;
  if (!descriptor || items.First(fset_All, IdsOf(*descriptor))) return static_cast<Item*>(nullptr);
  auto* item = new Item(descriptor, isNew);
  items.Add(item);
  return item;
}

template <class Items, class Ids>
std::uint32_t RemoveFrom(Items& items, fset_enumFilters filter, const Ids& ids) {
  std::remove_cvref_t<decltype(items.Items())> removed;
  items.Move(filter, removed, ids);
  for (auto* item : removed) delete item;
  return removed.IsEmpty() ? 1 : 0;
}

template <class Items, class Descriptor>
auto* ReplaceAmong(Items& items, const Descriptor* descriptor) {
  auto* item = descriptor ? items.First(fset_All, IdsOf(*descriptor)) : nullptr;
  if (item) ReplaceIn(*item, *descriptor);
  return item;
}

template <class List>
std::uint32_t CountOf(const List& list) {
  return static_cast<std::uint32_t>(list.GetCount());
}

}  // namespace

CFSet::CFSet(CDocument* document) : m_document(document) {
  UTDATA_ASSERT(document != nullptr);
  FillGateOrdering();
}

CFSet::CFSet(IGDataSupplier* supplier) : m_document(nullptr) {
  UTDATA_ASSERT(supplier != nullptr);
  FillGateOrdering();
}

// Nobody else uses the set any more, so no lock is needed.
CFSet::~CFSet() UTDATA_NO_THREAD_SAFETY_ANALYSIS {
  RemoveFrom(m_probes, fset_All, std::array{fset_AnyId});
  RemoveFrom(m_channels, fset_All, std::array{fset_AnyId});
  RemoveFrom(m_subChannels, fset_All, std::array{fset_AnyId, fset_AnyId});
  RemoveFrom(m_patches, fset_All, std::array{fset_AnyId});
  utdata::DeleteDataItems(m_data);
  utdata::DeleteDataItems(m_masters);
  RemoveFrom(m_gates, fset_All, std::array{fset_AnyId, fset_AnyId});
  for (CGWeldScanPlanDescr* plan : m_weldScanPlans) gweldsp_Delete(plan, 1);
  for (CGWeldFillDescr* fill : m_weldFills) gweldFill_Delete(fill, 1);
  delete m_info;
}

// The count is kept for reading without the lock.
std::uint32_t CFSet::fset_GetIChanCount() const UTDATA_NO_THREAD_SAFETY_ANALYSIS {
  return static_cast<std::uint32_t>(m_channels.Count());
}

void CFSet::AssertValid() const {}

void CFSet::Dump(CDumpContext&) const {}

CIChan* CFSet::fset_AddGChan(CGChanTypeDescr* descriptor, int isNew) {
  const WriterScope writer(m_lock);
  return AddTo(m_channels, descriptor, isNew);
}

CIChan* CFSet::fset_GetIChan(fset_enumFilters filter, std::uint32_t chanId) {
  const ReaderScope reader(m_lock, queryTimeoutMs);
  return reader ? m_channels.First(filter, {chanId}) : nullptr;
}

std::uint32_t CFSet::fset_GetIChanLst(CIChanLst* out,
                                      fset_enumFilters filter,
                                      std::uint32_t chanId) {
  if (!out) return 0;
  const ReaderScope reader(m_lock, queryTimeoutMs);
  if (reader) m_channels.Append(filter, *out, {chanId});
  return CountOf(*out);
}

std::uint32_t CFSet::fset_RemoveGChan(fset_enumFilters filter, std::uint32_t chanId) {
  const WriterScope writer(m_lock);
  return RemoveFrom(m_channels, filter, std::array{chanId});
}

CIChan* CFSet::fset_ReplaceGChan(CGChanTypeDescr* descriptor) {
  const WriterScope writer(m_lock);
  return ReplaceAmong(m_channels, descriptor);
}

CIGate* CFSet::fset_AddGGate(CGGateTypeDescr* descriptor, int isNew) {
  const WriterScope writer(m_lock);
  return AddTo(m_gates, descriptor, isNew);
}

CIGate* CFSet::fset_GetIGate(fset_enumFilters filter, std::uint32_t gateId, std::uint32_t chanId) {
  const ReaderScope reader(m_lock, queryTimeoutMs);
  return reader ? m_gates.First(filter, {gateId, chanId}) : nullptr;
}

std::uint32_t CFSet::fset_GetIGateLst(CIGateLst* out,
                                      fset_enumFilters filter,
                                      std::uint32_t gateId,
                                      std::uint32_t chanId) {
  if (!out) return 0;
  const ReaderScope reader(m_lock, queryTimeoutMs);
  if (reader) m_gates.Append(filter, *out, {gateId, chanId});
  return CountOf(*out);
}

std::uint32_t CFSet::fset_RemoveGGate(fset_enumFilters filter,
                                      std::uint32_t gateId,
                                      std::uint32_t chanId) {
  const WriterScope writer(m_lock);
  return RemoveFrom(m_gates, filter, std::array{gateId, chanId});
}

CIGate* CFSet::fset_ReplaceGGate(CGGateTypeDescr* descriptor) {
  const WriterScope writer(m_lock);
  return ReplaceAmong(m_gates, descriptor);
}

CIPatch* CFSet::fset_AddGPatch(CGPatchTypeDescr* descriptor, int isNew) {
  const WriterScope writer(m_lock);
  return AddTo(m_patches, descriptor, isNew);
}

CIPatch* CFSet::fset_GetIPatch(fset_enumFilters filter, std::uint32_t patchId) {
  const ReaderScope reader(m_lock, queryTimeoutMs);
  return reader ? m_patches.First(filter, {patchId}) : nullptr;
}

std::uint32_t CFSet::fset_GetIPatchLst(CIPatchLst* out,
                                       fset_enumFilters filter,
                                       std::uint32_t patchId) {
  if (!out) return 0;
  const ReaderScope reader(m_lock, queryTimeoutMs);
  if (reader) m_patches.Append(filter, *out, {patchId});
  return CountOf(*out);
}

std::uint32_t CFSet::fset_RemoveGPatch(fset_enumFilters filter, std::uint32_t patchId) {
  const WriterScope writer(m_lock);
  return RemoveFrom(m_patches, filter, std::array{patchId});
}

CIPatch* CFSet::fset_ReplaceGPatch(CGPatchTypeDescr* descriptor) {
  const WriterScope writer(m_lock);
  return ReplaceAmong(m_patches, descriptor);
}

CIProbe* CFSet::fset_AddGProbe(CGProbeTypeDescr* descriptor, int isNew) {
  const WriterScope writer(m_lock);
  return AddTo(m_probes, descriptor, isNew);
}

CIProbe* CFSet::fset_GetIProbe(fset_enumFilters filter, std::uint32_t probeId) {
  const ReaderScope reader(m_lock, queryTimeoutMs);
  return reader ? m_probes.First(filter, {probeId}) : nullptr;
}

std::uint32_t CFSet::fset_GetIProbeLst(CIProbeLst* out,
                                       fset_enumFilters filter,
                                       std::uint32_t probeId) {
  if (!out) return 0;
  const ReaderScope reader(m_lock, queryTimeoutMs);
  if (reader) m_probes.Append(filter, *out, {probeId});
  return CountOf(*out);
}

std::uint32_t CFSet::fset_RemoveGProbe(fset_enumFilters filter, std::uint32_t probeId) {
  const WriterScope writer(m_lock);
  return RemoveFrom(m_probes, filter, std::array{probeId});
}

CIProbe* CFSet::fset_ReplaceGProbe(CGProbeTypeDescr* descriptor) {
  const WriterScope writer(m_lock);
  return ReplaceAmong(m_probes, descriptor);
}

CISubChan* CFSet::fset_AddGSubChan(CGSubchanTypeDescr* descriptor, int isNew) {
  const WriterScope writer(m_lock);
  return AddTo(m_subChannels, descriptor, isNew);
}

CISubChan* CFSet::fset_GetISubChan(fset_enumFilters filter,
                                   std::uint32_t subChanId,
                                   std::uint32_t chanId) {
  const ReaderScope reader(m_lock, queryTimeoutMs);
  return reader ? m_subChannels.First(filter, {subChanId, chanId}) : nullptr;
}

std::uint32_t CFSet::fset_GetISubChanLst(CISubChanLst* out,
                                         fset_enumFilters filter,
                                         std::uint32_t subChanId,
                                         std::uint32_t chanId) {
  if (!out) return 0;
  const ReaderScope reader(m_lock, queryTimeoutMs);
  if (reader) m_subChannels.Append(filter, *out, {subChanId, chanId});
  return CountOf(*out);
}

std::uint32_t CFSet::fset_RemoveGSubChan(fset_enumFilters filter,
                                         std::uint32_t subChanId,
                                         std::uint32_t chanId) {
  const WriterScope writer(m_lock);
  return RemoveFrom(m_subChannels, filter, std::array{subChanId, chanId});
}

CISubChan* CFSet::fset_ReplaceGSubChan(CGSubchanTypeDescr* descriptor) {
  const WriterScope writer(m_lock);
  return ReplaceAmong(m_subChannels, descriptor);
}
